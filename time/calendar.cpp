#include "time/calendar.h"

namespace wexelxi {

namespace {

struct Date {
    uint32_t year;
    uint32_t month;
    uint32_t day;
};

// The Gregorian date some days after 1601-01-01. Years are counted from the first of March, so that
// the leap day comes last: then months have a closed form, and 1600-03-01 begins a cycle of 400
// years.
constexpr Date DateFromDays(uint32_t days)
{
    constexpr uint32_t kDaysFromMarch = 306; // 1600-03-01 to 1601-01-01
    constexpr uint32_t kDaysPerCycle = 146'097;
    constexpr uint32_t kDaysPerCentury = 36'524;
    constexpr uint32_t kDaysPerFourYears = 1'461;

    const uint32_t sinceMarch = days + kDaysFromMarch;
    const uint32_t cycle = sinceMarch / kDaysPerCycle;
    const uint32_t day = sinceMarch % kDaysPerCycle;
    const uint32_t year =
        (day - day / (kDaysPerFourYears - 1) + day / kDaysPerCentury - day / (kDaysPerCycle - 1)) /
        365;
    const uint32_t dayOfYear = day - (year * 365 + year / 4 - year / 100);
    // From March on, months of 31, 30, 31, 30, 31 days repeat: 153 days in five.
    const uint32_t month = (5 * dayOfYear + 2) / 153;
    const bool nextYear = month >= 10;
    return {1600 + cycle * 400 + year + nextYear, nextYear ? month - 9 : month + 3,
            dayOfYear - (153 * month + 2) / 5 + 1};
}

constexpr uint16_t Low16(int64_t value)
{
    return static_cast<uint16_t>(value);
}

} // namespace

CalendarFields CalendarFromTicks(int64_t ticks)
{
    const int64_t seconds = ticks / kTicksPerSecond;
    const int64_t days = seconds / 86'400;
    const int64_t secondOfDay = seconds % 86'400;
    const Date date = days >= 0 ? DateFromDays(static_cast<uint32_t>(days))
                                : Date{1601, 1, static_cast<uint32_t>(days + 1)};
    return {Low16(date.year),
            Low16(date.month),
            Low16(date.day),
            Low16((days + 1) % 7),
            Low16(secondOfDay / 3'600),
            Low16(secondOfDay / 60 % 60),
            Low16(secondOfDay % 60),
            Low16(ticks % kTicksPerSecond / 10'000)};
}

} // namespace wexelxi
