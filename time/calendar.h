// From ticks to calendar fields and back to nothing else: pure arithmetic on the 1601 clock.
#pragma once

#include <cstdint>

namespace wexelxi {

constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr int64_t kUnixEpochTicks = 116'444'736'000'000'000; // 1970-01-01

// Ticks of a Unix time. Wraps on inputs that no clock gives.
constexpr int64_t TicksFromUnixTime(int64_t seconds, int64_t microseconds)
{
    const uint64_t ticks = static_cast<uint64_t>(seconds) * kTicksPerSecond +
                           static_cast<uint64_t>(microseconds) * 10 + kUnixEpochTicks;
    return static_cast<int64_t>(ticks);
}

// Ticks moved by a zone's offset, UTC minus local time in minutes. Wraps at the ends of the clock.
constexpr int64_t LocalTicks(int64_t ticks, int32_t biasMinutes)
{
    const uint64_t offset = static_cast<uint64_t>(biasMinutes * kTicksPerMinute);
    return static_cast<int64_t>(static_cast<uint64_t>(ticks) - offset);
}

struct CalendarFields {
    uint16_t year;
    uint16_t month;     // 1 to 12
    uint16_t day;       // 1 to 31
    uint16_t dayOfWeek; // Sunday is 0
    uint16_t hour;
    uint16_t minute;
    uint16_t second;
    uint16_t millisecond;
};

// The fields of a tick count from 0 up, in constant time. A negative count gives January 1601 with
// days and times that mean nothing.
CalendarFields CalendarFromTicks(int64_t ticks);

} // namespace wexelxi
