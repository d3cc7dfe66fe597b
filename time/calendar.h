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

struct Date {
    uint32_t year;
    uint32_t month;
    uint32_t day;
};

// The Gregorian date some days after 1601-01-01. Years are counted from the first of March, so that
// the leap day comes last; the quotients of a century, a year and a month are then taken by one
// multiplication each, exact for all days that a tick count reaches.
constexpr Date DateFromDays(uint32_t days)
{
    constexpr uint32_t kDaysFromYearZero = 584'694; // 0000-03-01 to 1601-01-01
    constexpr uint32_t kQuarterDaysPerCentury = 146'097;
    constexpr uint32_t kYearFactor = 2'939'745; // 2^32 / 1461, quarter days to years
    constexpr uint32_t kMonthFactor = 2'141;    // 2^16 / 30.6, days to months
    constexpr uint32_t kMonthOffset = 197'913;
    constexpr uint32_t kDaysFromMarchToJanuary = 306;

    const uint32_t quarters = 4 * (days + kDaysFromYearZero) + 3;
    const uint32_t century = quarters / kQuarterDaysPerCentury;
    const uint64_t inCentury = uint64_t{kYearFactor} * (quarters % kQuarterDaysPerCentury | 3);
    const auto year = static_cast<uint32_t>(inCentury >> 32);
    const uint32_t dayOfYear = static_cast<uint32_t>(inCentury) / kYearFactor / 4;
    const uint32_t inMonths = kMonthFactor * dayOfYear + kMonthOffset;
    const uint32_t month = inMonths >> 16;
    const bool nextYear = dayOfYear >= kDaysFromMarchToJanuary;
    return {100 * century + year + nextYear, nextYear ? month - 12 : month,
            (inMonths & 0xFFFF) / kMonthFactor + 1};
}

// The fields of a tick count from 0 up, in constant time. A negative count gives January 1601 with
// days and times that mean nothing.
constexpr CalendarFields CalendarFromTicks(int64_t ticks)
{
    constexpr int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
    const auto days = static_cast<int32_t>(ticks / kTicksPerDay);
    const auto milliseconds = static_cast<int32_t>(ticks % kTicksPerDay / 10'000);
    const int32_t seconds = milliseconds / 1'000;
    const Date date = days >= 0 ? DateFromDays(static_cast<uint32_t>(days))
                                : Date{1601, 1, static_cast<uint32_t>(days + 1)};
    constexpr auto Low16 = [](int64_t value) { return static_cast<uint16_t>(value); };
    return {Low16(date.year),      Low16(date.month),          Low16(date.day),
            Low16((days + 1) % 7), Low16(seconds / 3'600),     Low16(seconds / 60 % 60),
            Low16(seconds % 60),   Low16(milliseconds % 1'000)};
}

} // namespace wexelxi
