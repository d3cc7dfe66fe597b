// The plug-in report.dll: loaded for the object's life, its texts and its template.
#pragma once

#include <string>

#include "wexelxi.h"

class Report {
public:
    // Loads the plug-in that stands beside the host program.
    explicit Report(bool german);
    ~Report();
    Report(const Report &) = delete;
    Report &operator=(const Report &) = delete;

    std::string Text(uint32_t id) const;
    std::string Template() const;

private:
    HMODULE module_;
    bool german_;
};
