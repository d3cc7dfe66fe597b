// The calendar's closed form against a plain count of all the days that it knows.
#include <gtest/gtest.h>
#include <random>

#include "time/calendar.h"

namespace wexelxi {
namespace {

constexpr int64_t kTicksPerDay = 864'000'000'000;
constexpr int64_t kLastDay = INT64_MAX / kTicksPerDay;

int MonthLength(int year, int month)
{
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return lengths[month - 1] + (month == 2 && leap);
}

TEST(Calendar, EqualsACountOfEveryDay)
{
    std::mt19937_64 random(1601);
    int year = 1601, month = 1, day = 1;
    for (int64_t days = 0; days < kLastDay; days++) {
        const auto rest = static_cast<int64_t>(random() % kTicksPerDay);
        const CalendarFields fields = CalendarFromTicks(days * kTicksPerDay + rest);
        ASSERT_TRUE(fields.year == year && fields.month == month && fields.day == day) << days;
        ASSERT_EQ(fields.dayOfWeek, (days + 1) % 7) << days;
        const int64_t seconds = (fields.hour * 60 + fields.minute) * 60 + fields.second;
        ASSERT_EQ(seconds * 1000 + fields.millisecond, rest / 10'000) << days;
        ASSERT_TRUE(fields.minute < 60 && fields.second < 60 && fields.millisecond < 1000) << days;
        if (++day > MonthLength(year, month)) {
            day = 1;
            month = month % 12 + 1;
            year += month == 1;
        }
    }
    const CalendarFields last = CalendarFromTicks(INT64_MAX); // 30828-09-14 02:48:05.477
    EXPECT_TRUE(last.year == 30828 && last.month == 9 && last.day == 14 && last.dayOfWeek == 4);
    EXPECT_TRUE(last.hour == 2 && last.minute == 48 && last.second == 5 && last.millisecond == 477);
    EXPECT_EQ(CalendarFromTicks(INT64_MIN).year, 1601) << "before the calendar: no fault";
}

} // namespace
} // namespace wexelxi
