// The zones that have a Win32 name, by what the platform says of them.
#pragma once

#include <cstdint>

namespace wexelxi {

struct TimeZoneRow {
    const char *abbreviation;
    char name[32];
    int32_t bias;      // minutes, UTC minus local time
    uint32_t daylight; // 1: the row holds while daylight saving is in force
};

// The row of an abbreviation, an offset and a daylight flag, all three; null if there is none.
const TimeZoneRow *FindTimeZone(const char *abbreviation, int32_t bias, int daylight);

} // namespace wexelxi
