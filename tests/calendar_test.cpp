// The calendar's closed form against the walks that it stands for.
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "time/calendar.h"

namespace wexelxi {
namespace {

constexpr int64_t kTicksPerDay = 864'000'000'000;

bool IsLeap(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int MonthLength(int year, int month)
{
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return lengths[month - 1] + (month == 2 && IsLeap(year));
}

// The obvious way: year by year and month by month, from 1601 on.
CalendarFields Walk(int64_t ticks)
{
    const int64_t seconds = ticks / 10'000'000;
    int64_t days = ticks / kTicksPerDay;
    const int64_t second = seconds - seconds / 86'400 * 86'400;
    CalendarFields fields{};
    fields.millisecond = static_cast<uint16_t>((ticks - seconds * 10'000'000) / 10'000);
    fields.hour = static_cast<uint16_t>(second / 3'600);
    fields.minute = static_cast<uint16_t>((second - second / 3'600 * 3'600) / 60);
    fields.second = static_cast<uint16_t>(second % 60);
    fields.dayOfWeek = static_cast<uint16_t>((days + 1) % 7);
    int year = 1601;
    for (; days >= 365 + IsLeap(year); year++)
        days -= 365 + IsLeap(year);
    int month = 1;
    for (; days >= MonthLength(year, month); month++)
        days -= MonthLength(year, month);
    fields.year = static_cast<uint16_t>(year);
    fields.month = static_cast<uint16_t>(month);
    fields.day = static_cast<uint16_t>(days + 1);
    return fields;
}

std::string Text(const CalendarFields &fields)
{
    char text[80];
    snprintf(text, sizeof text, "%u-%02u-%02u %02u:%02u:%02u.%03u day %u", fields.year,
             fields.month, fields.day, fields.hour, fields.minute, fields.second,
             fields.millisecond, fields.dayOfWeek);
    return text;
}

TEST(Calendar, KnowsFamousInstants)
{
    const struct {
        int64_t ticks;
        const char *text;
    } rows[] = {
        {0, "1601-01-01 00:00:00.000 day 1"},
        {116444736000000000, "1970-01-01 00:00:00.000 day 4"},
        {125962560000000000, "2000-02-29 00:00:00.000 day 2"},
        {94405823999999999, "1900-02-28 23:59:59.999 day 3"},
        {94405824000000000, "1900-03-01 00:00:00.000 day 4"},
        {133800768000000000, "2024-12-31 00:00:00.000 day 2"},
        {INT64_MAX, "30828-09-14 02:48:05.477 day 4"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Text(CalendarFromTicks(row.ticks)), row.text) << row.ticks;
}

TEST(Calendar, CountsEveryDayOfItsRange)
{
    int year = 1601, month = 1, day = 1;
    for (int64_t days = 0; days <= INT64_MAX / kTicksPerDay; days++) {
        const CalendarFields fields = CalendarFromTicks(days * kTicksPerDay);
        ASSERT_TRUE(fields.year == year && fields.month == month && fields.day == day &&
                    fields.dayOfWeek == (days + 1) % 7)
            << days << " gives " << Text(fields);
        if (++day > MonthLength(year, month)) {
            day = 1;
            month = month % 12 + 1;
            year += month == 1;
        }
    }
}

TEST(Calendar, EqualsTheWalkOnRandomInstants)
{
    std::mt19937_64 random(1601);
    for (int i = 0; i < 5000; i++) {
        // Of all magnitudes, and before the calendar too: those fields mean nothing, but stay.
        const auto ticks = static_cast<int64_t>(random()) >> random() % 40;
        ASSERT_EQ(Text(CalendarFromTicks(ticks)), Text(Walk(ticks))) << ticks;
    }
}

} // namespace
} // namespace wexelxi
