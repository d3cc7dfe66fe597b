// What the library tells the host's hook of wrong handles.
#pragma once

#include <string>
#include <utility>
#include <vector>

using Reports = std::vector<std::pair<std::string, int>>;

inline Reports gReports;

// For SetHeadlessErrorProc.
inline void RecordReport(const char *message, int severity)
{
    gReports.emplace_back(message, severity);
}

inline Reports TakeReports()
{
    return std::exchange(gReports, {});
}
