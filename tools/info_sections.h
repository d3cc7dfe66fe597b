// The sections that the command can tell, one function each, in the order in which they are told.
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

struct Section {
    const char *name;
    Value (*describe)(const Session &);
};

inline constexpr Section kSections[] = {
    {"version", DescribeVersion},   {"configuration", DescribeConfiguration},
    {"settings", DescribeSettings}, {"language", DescribeLanguage},
    {"timezone", DescribeTimeZone}, {"ports", DescribePorts},
    {"printers", DescribePrinters}, {"fonts", DescribeFonts},
    {"modules", DescribeModules},   {"locking", DescribeLocking},
};

} // namespace info
