// The clock, the calendar and the zone in force. The platform's clock stands where a case puts it,
// and its waits are only written down.
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/select.h>
#include <sys/time.h>
#include <thread>
#include <vector>

#include "support/last_error.h"
#include "support/library.h"
#include "time/calendar.h"
#include "wexelxi.h"

namespace {

timeval gClock;
std::string gWaits;

} // namespace

extern "C" int gettimeofday(timeval *now, void *) noexcept
{
    *now = gClock;
    return 0;
}

extern "C" time_t time(time_t *) noexcept
{
    return gClock.tv_sec;
}

extern "C" int select(int count, fd_set *in, fd_set *out, fd_set *other, timeval *wait)
{
    EXPECT_TRUE(count == 0 && !in && !out && !other);
    gWaits += std::to_string(wait->tv_sec) + " " + std::to_string(wait->tv_usec) + ", ";
    return -1; // as if a signal had come
}

namespace {

constexpr int64_t kTicksPerHour = 36'000'000'000;
constexpr int64_t kTicksPerDay = 24 * kTicksPerHour;
constexpr time_t kWinter = 1'735'689'600; // 2025-01-01 00:00:00 UTC
constexpr time_t kSummer = 1'751'328'000; // 2025-07-01

FILETIME InstantOf(int64_t ticks)
{
    return {static_cast<uint32_t>(ticks), static_cast<uint32_t>(ticks >> 32)};
}

bool operator==(const SYSTEMTIME &a, const SYSTEMTIME &b)
{
    return memcmp(&a, &b, sizeof a) == 0;
}

int MonthLength(int year, int month)
{
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return lengths[month - 1] + (month == 2 && leap);
}

// The closed form against a plain count of all the days that it knows.
TEST(Calendar, EqualsACountOfEveryDay)
{
    std::mt19937_64 random(1601);
    int year = 1601, month = 1, day = 1;
    for (int64_t days = 0; days < INT64_MAX / kTicksPerDay; days++) {
        const auto rest = static_cast<int64_t>(random() % kTicksPerDay);
        const auto fields = wexelxi::CalendarFromTicks(days * kTicksPerDay + rest);
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
}

TEST(Calendar, HasItsFieldsInBothOrders)
{
    const struct {
        int64_t ticks;
        SYSTEMTIME time;
    } rows[] = {
        {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
        {94'405'823'999'999'999, {1900, 2, 3, 28, 23, 59, 59, 999}},
        {125'962'560'000'000'000, {2000, 2, 2, 29, 0, 0, 0, 0}},
        {INT64_MAX, {30828, 9, 4, 14, 2, 48, 5, 477}},
        {-2 * kTicksPerDay, {1601, 1, 0xFFFF, 0xFFFF, 0, 0, 0, 0}}, // means nothing, and harms none
    };
    for (const auto &row : rows) {
        const FILETIME instant = InstantOf(row.ticks);
        SYSTEMTIME time;
        EXPECT_OUTCOME(FileTimeToSystemTime(&instant, &time), TRUE, kUnchanged);
        EXPECT_TRUE(time == row.time) << row.ticks;
        TIME_FIELDS fields;
        EXPECT_LAST_ERROR(RtlTimeToTimeFields(&row.ticks, &fields), kUnchanged);
        const uint16_t expected[] = {time.wYear,         time.wMonth,    time.wDay,
                                     time.wHour,         time.wMinute,   time.wSecond,
                                     time.wMilliseconds, time.wDayOfWeek};
        EXPECT_EQ(memcmp(&fields, expected, sizeof expected), 0) << row.ticks;
    }
}

TEST(Clock, TellsTheTimeHereAndThere)
{
    setenv("TZ", "EST5", 1);
    gClock = {kWinter, 123'456};
    StartedLibrary library;
    int64_t ticks = 0;
    EXPECT_OUTCOME(NtQuerySystemTime(&ticks), 0, kUnchanged);
    EXPECT_EQ(ticks, 133'801'632'001'234'560);
    SYSTEMTIME time;
    EXPECT_LAST_ERROR(GetSystemTime(&time), ERROR_SUCCESS);
    EXPECT_TRUE(time == (SYSTEMTIME{2025, 1, 3, 1, 0, 0, 0, 123}));
    EXPECT_LAST_ERROR(GetLocalTime(&time), kUnchanged);
    EXPECT_TRUE(time == (SYSTEMTIME{2024, 12, 2, 31, 19, 0, 0, 123}));
    const struct {
        int32_t seconds;
        SYSTEMTIME time;
    } rows[] = {
        {0, {2024, 12, 2, 31, 19, 0, 0, 123}},
        {86'400, {2025, 1, 3, 1, 19, 0, 0, 123}},
        {-1, {2024, 12, 2, 31, 18, 59, 59, 123}},
        {INT32_MAX, {2093, 1, 0, 18, 22, 14, 7, 123}},
    };
    for (const auto &row : rows) {
        EXPECT_LAST_ERROR(GetLocalTimeWithOffset(&time, row.seconds), kUnchanged);
        EXPECT_TRUE(time == row.time) << row.seconds;
    }
    FILETIME instant;
    EXPECT_LAST_ERROR(UnixTimeToFileTime(0xFFFFFFFF, &instant), kUnchanged);
    EXPECT_OUTCOME(FileTimeToLocalFileTime(&instant, &instant), TRUE, kUnchanged);
    ticks = 159'394'408'950'000'000 - 5 * kTicksPerHour;
    const FILETIME local = InstantOf(ticks);
    EXPECT_EQ(memcmp(&instant, &local, sizeof local), 0);
    EXPECT_OUTCOME(RtlSystemTimeToLocalTime(&ticks, &ticks), 0, kUnchanged);
    EXPECT_EQ(ticks, 159'394'408'950'000'000 - 10 * kTicksPerHour);
}

TEST(Clock, CountsInSteps)
{
    EXPECT_EQ(gTickStart, 0u);
    const struct {
        timeval clock;
        uint32_t start, count;
    } rows[] = {
        {{0, 24'999}, 0, 0},
        {{0, 25'000}, 0, 25},
        {{3, 999'999}, 7, 3'968},
        {{4'294'967, 300'000}, 0, 4}, // past 32 bits
    };
    for (const auto &row : rows) {
        gClock = row.clock;
        gTickStart = row.start;
        EXPECT_OUTCOME(GetTickCount(), row.count, kUnchanged) << row.count;
    }
}

TEST(Clock, SleepsUntilASignalWithoutTheLock)
{
    StartedLibrary library;
    gEnterWexelxiCriticalSection();
    std::thread([] { // would wait for ever if one of these took the lock
        int64_t ticks = GetTickCount();
        RtlSystemTimeToLocalTime(&ticks, &ticks);
        for (const uint32_t milliseconds : {0u, 1u, 999u, 1500u, UINT32_MAX})
            EXPECT_LAST_ERROR(Sleep(milliseconds), kUnchanged);
    })
        .join();
    gLeaveWexelxiCriticalSection();
    EXPECT_EQ(gWaits, "0 1000, 0 999000, 1 500000, 4294967 295000, ");
}

TEST(TimeZone, IsFoundByAbbreviationOffsetAndDaylight)
{
    const struct {
        const char *zone;
        time_t now;
        int32_t bias;
        const char *name;
    } rows[] = {
        {"MHT-12", kWinter, -720, "Dateline Standard Time"},
        {"IST-5:30", kSummer, -330, "India Standard Time"},
        {"IST-2", kWinter, -120, "Israel Standard Time"},
        {"TOT-13", kWinter, -780, "Tonga Standard Time"},
        {"EST5EDT,M3.2.0,M11.1.0", kWinter, 300, "US Eastern Standard Time"},
        {"EST5EDT,M3.2.0,M11.1.0", kSummer, 240, "Eastern Standard Time"},
        {"GMT0BST,M3.5.0/1,M10.5.0", kSummer, -60, "GMT Standard Time"},
        {"BST-1", kSummer, -60, ""}, // the offset of BST, but no daylight saving
        {"est5", kWinter, 300, ""},
        {"NST3:30:59", kWinter, 210, ""}, // seconds drop towards zero
        {"AKSTXYZ9", kWinter, 540, ""},   // an abbreviation of 7 letters is not looked for
        {"", kWinter, 0, ""},
    };
    for (const auto &row : rows) {
        setenv("TZ", row.zone, 1); // each change counts at the next call
        gClock.tv_sec = row.now;
        TIME_ZONE_INFORMATION zone, expected = {};
        memset(&zone, 0xA5, sizeof zone);
        EXPECT_OUTCOME(RtlQueryTimeZoneInformation(&zone), 0, kUnchanged);
        expected.Bias = row.bias;
        strcpy(expected.StandardName, row.name);
        expected.DaylightBias = -60;
        EXPECT_EQ(memcmp(&zone, &expected, sizeof zone), 0)
            << row.zone << " gives " << zone.Bias << " and " << zone.StandardName;
    }
}

// Every twenty minutes of a year, the changes of the clock among them.
TEST(TimeZone, OffsetIsThatOfTheFieldsReadBack)
{
    for (const char *name : {"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0", "IST-5:30",
                             "LHST-10:30LHDT-11,M10.1.0,M4.1.0", "NZST-12NZDT,M9.5.0,M4.1.0/3"}) {
        setenv("TZ", name, 1);
        for (time_t now = kWinter; now < kWinter + 365 * 86400; now += 1200) {
            gClock.tv_sec = now;
            TIME_ZONE_INFORMATION zone;
            RtlQueryTimeZoneInformation(&zone);
            tm utc;
            gmtime_r(&now, &utc);
            utc.tm_isdst = localtime(&now)->tm_isdst;
            ASSERT_EQ(zone.Bias, (now - mktime(&utc)) / -60) << name << " " << now;
        }
    }
}

// The zone is read without the global lock, and the environment moves as it grows.
TEST(TimeZone, IsTheSameForManyThreadsInAChangingEnvironment)
{
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    gClock.tv_sec = kSummer;
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&] {
            while (!done) {
                TIME_ZONE_INFORMATION zone;
                RtlQueryTimeZoneInformation(&zone);
                ASSERT_EQ(zone.Bias, 240);
                ASSERT_STREQ(zone.StandardName, "Eastern Standard Time");
            }
        });
    }
    for (int i = 0; i < 3000; i++)
        SetEnvironmentVariable(("WEXEL" + std::to_string(i)).c_str(), "x");
    done = true;
    for (auto &thread : threads)
        thread.join();
}

} // namespace
