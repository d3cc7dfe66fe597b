// The sections that the command can tell, in the order in which they are told: a function that
// tells what is there, and for some a function that tells what a host would miss.
#pragma once

#include "tools/info_session.h"
#include "tools/info_value.h"

namespace info {

Value DescribeVersion(const Session &session);
Value DescribeConfiguration(const Session &session);
Value DescribeSettings(const Session &session);
Value DescribeLanguage(const Session &session);
Value DescribeTimeZone(const Session &session);
Value DescribePorts(const Session &session);
Value DescribePrinters(const Session &session);
Value DescribeFonts(const Session &session);
Value DescribeModules(const Session &session);
Value DescribeLocking(const Session &session);

// What is broken, a line each with its remedy.
using Faults = std::vector<std::string>;

Faults CheckConfiguration(const Session &session);
Faults CheckLanguage(const Session &session);
Faults CheckPorts(const Session &session);
Faults CheckPrinters(const Session &session);
Faults CheckFonts(const Session &session);

struct Section {
    const char *name;
    Value (*describe)(const Session &);
    Faults (*check)(const Session &); // or null
};

inline constexpr Section kSections[] = {
    {"version", DescribeVersion, nullptr},
    {"configuration", DescribeConfiguration, CheckConfiguration},
    {"settings", DescribeSettings, nullptr},
    {"language", DescribeLanguage, CheckLanguage},
    {"timezone", DescribeTimeZone, nullptr},
    {"ports", DescribePorts, CheckPorts},
    {"printers", DescribePrinters, CheckPrinters},
    {"fonts", DescribeFonts, CheckFonts},
    {"modules", DescribeModules, nullptr},
    {"locking", DescribeLocking, nullptr},
};

} // namespace info
