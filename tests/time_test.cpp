// The clock and the zone in force, as a host sees them.
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <thread>
#include <vector>

#include "support/library.h"
#include "wexelxi.h"

namespace {

constexpr int64_t kTicksPerSecond = 10'000'000;

void SetZone(const char *zone)
{
    zone ? setenv("TZ", zone, 1) : unsetenv("TZ");
}

int64_t ToTicks(const FILETIME &instant)
{
    return static_cast<int64_t>(uint64_t{instant.dwHighDateTime} << 32 | instant.dwLowDateTime);
}

FILETIME ToFileTime(int64_t ticks)
{
    const auto bits = static_cast<uint64_t>(ticks);
    return {static_cast<uint32_t>(bits), static_cast<uint32_t>(bits >> 32)};
}

int64_t NowInTicks()
{
    int64_t ticks = 0;
    EXPECT_EQ(NtQuerySystemTime(&ticks), 0);
    return ticks;
}

// Whether the fields are those of a millisecond from first to last.
bool IsBetween(const SYSTEMTIME &time, int64_t first, int64_t last)
{
    for (int64_t ticks = first / 10'000 * 10'000; ticks <= last; ticks += 10'000) {
        const FILETIME instant = ToFileTime(ticks);
        SYSTEMTIME candidate;
        FileTimeToSystemTime(&instant, &candidate);
        if (memcmp(&candidate, &time, sizeof time) == 0)
            return true;
    }
    return false;
}

const struct {
    const char *zone;
    int32_t bias;
    const char *name;
} kZones[] = {
    {"IST-5:30", -330, "India Standard Time"},
    {"IST-2", -120, "Israel Standard Time"}, // the offset tells one IST from the other
    {"NPT-5:45", -345, "Nepal Standard Time"},
    {"EST5", 300, "US Eastern Standard Time"},
    {"EST5EDT,0/0,J365/25", 240, "Eastern Standard Time"}, // summer all year
    {"GMT0BST,0/0,J365/25", -60, "GMT Standard Time"},
    {"BST-1", -60, ""}, // the offset of BST, but no daylight saving
    {"est5", 300, ""},
    {"UTC0", 0, ""},
    {"CET-1", -60, ""},
    {"<+0330>-3:30:59", -210, ""},
    {"NST3:30:30", 210, ""}, // seconds drop towards zero
    {"AKSTXYZ9", 540, ""},   // an abbreviation of 7 letters is not looked for
    {"MHT-12", -720, "Dateline Standard Time"},
    {"MHT12", 720, ""},
    {"", 0, ""},
};

TEST(TimeZone, IsFoundByAbbreviationOffsetAndDaylight)
{
    for (const auto &row : kZones) {
        SetZone(row.zone); // each change counts at the next call
        TIME_ZONE_INFORMATION zone, expected = {};
        memset(&zone, 0xA5, sizeof zone);
        SetLastError(77);
        EXPECT_EQ(RtlQueryTimeZoneInformation(&zone), 0);
        EXPECT_EQ(GetLastError(), 77u);
        expected.Bias = row.bias;
        strcpy(expected.StandardName, row.name);
        expected.DaylightBias = -60;
        EXPECT_EQ(memcmp(&zone, &expected, sizeof zone), 0)
            << row.zone << " gives " << zone.Bias << " and " << zone.StandardName;
    }
}

TEST(TimeZone, IsTheSameForManyThreads)
{
    SetZone("EST5EDT,0/0,J365/25");
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; t++) {
        threads.emplace_back([] {
            for (int i = 0; i < 300; i++) {
                TIME_ZONE_INFORMATION zone;
                RtlQueryTimeZoneInformation(&zone);
                ASSERT_EQ(zone.Bias, 240);
                ASSERT_STREQ(zone.StandardName, "Eastern Standard Time");
                int64_t ticks = 0;
                RtlSystemTimeToLocalTime(&ticks, &ticks);
                ASSERT_EQ(ticks, -4 * 3600 * kTicksPerSecond);
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
}

TEST(Clock, ConvertsToLocalTimeByTheOffsetOfNow)
{
    StartedLibrary library;
    SetZone("CET-1");
    const int64_t hour = 3600 * kTicksPerSecond;
    for (const int64_t ticks : {int64_t{0}, int64_t{1}, 116444736000000000, INT64_MAX - hour}) {
        FILETIME instant = ToFileTime(ticks), local;
        EXPECT_EQ(FileTimeToLocalFileTime(&instant, &local), TRUE);
        EXPECT_EQ(ToTicks(local), ticks + hour);
        int64_t moved = ticks;
        EXPECT_EQ(RtlSystemTimeToLocalTime(&moved, &moved), 0);
        EXPECT_EQ(moved, ticks + hour);
    }
}

TEST(Clock, TellsTheTimeHereAndThere)
{
    StartedLibrary library;
    SetZone("EST5");
    const int64_t bias = -5 * 3600 * kTicksPerSecond;
    SYSTEMTIME utc, local;
    int64_t before = NowInTicks();
    SetLastError(77);
    GetLocalTime(&local);
    EXPECT_TRUE(IsBetween(local, before + bias, NowInTicks() + bias));
    EXPECT_EQ(GetLastError(), 77u);
    for (const int32_t offset : {86'400, -86'400, INT32_MAX, INT32_MIN}) {
        const int64_t away = bias + offset * kTicksPerSecond;
        before = NowInTicks();
        GetLocalTimeWithOffset(&local, offset);
        EXPECT_TRUE(IsBetween(local, before + away, NowInTicks() + away)) << offset;
    }
    EXPECT_EQ(GetLastError(), 77u);
    before = NowInTicks();
    GetSystemTime(&utc);
    EXPECT_TRUE(IsBetween(utc, before, NowInTicks()));
    EXPECT_EQ(GetLastError(), 0u);
    timeval now;
    gettimeofday(&now, nullptr);
    EXPECT_NEAR(static_cast<double>(before / kTicksPerSecond - 11'644'473'600),
                static_cast<double>(now.tv_sec), 2);
}

TEST(Clock, OrdersTheFieldsOfBothRecords)
{
    const int64_t ticks = 94405823999999999;
    const FILETIME instant = ToFileTime(ticks);
    SYSTEMTIME time;
    TIME_FIELDS fields;
    EXPECT_EQ(FileTimeToSystemTime(&instant, &time), TRUE);
    RtlTimeToTimeFields(&ticks, &fields);
    const uint16_t expectedTime[] = {1900, 2, 3, 28, 23, 59, 59, 999};
    const uint16_t expectedFields[] = {1900, 2, 28, 23, 59, 59, 999, 3};
    EXPECT_EQ(memcmp(&time, expectedTime, sizeof time), 0);
    EXPECT_EQ(memcmp(&fields, expectedFields, sizeof fields), 0);
}

TEST(Clock, TakesUnixTimesBeyond2038)
{
    for (const uint32_t seconds : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        FILETIME instant;
        UnixTimeToFileTime(seconds, &instant);
        EXPECT_EQ(ToTicks(instant), 116444736000000000 + seconds * kTicksPerSecond);
    }
}

TEST(Clock, CountsTicksInStepsOf25)
{
    const auto wholeSeconds = [](const timeval &time) {
        return static_cast<uint32_t>(time.tv_sec) * 1000;
    };
    timeval before, after;
    uint32_t count;
    do { // within one second
        gettimeofday(&before, nullptr);
        gTickStart = wholeSeconds(before) - 7;
        count = GetTickCount();
        gettimeofday(&after, nullptr);
    } while (before.tv_sec != after.tv_sec);
    EXPECT_EQ((count - 7) % 25, 0u);
    EXPECT_GE(count - 7, static_cast<uint32_t>(before.tv_usec) / 25'000 * 25);
    EXPECT_LE(count - 7, static_cast<uint32_t>(after.tv_usec) / 25'000 * 25);
}

TEST(Clock, SleepsWithoutTheLockUntilASignal)
{
    StartedLibrary library;
    int64_t start = NowInTicks();
    Sleep(60);
    EXPECT_GE(NowInTicks() - start, 60 * 10'000);

    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval timer = {{0, 0}, {0, 50'000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
    start = NowInTicks();
    Sleep(20'000);
    EXPECT_LT(NowInTicks() - start, 10 * kTicksPerSecond);

    gEnterWexelxiCriticalSection();
    std::thread([] { // would wait for ever if one of these took the lock
        int64_t ticks = NowInTicks();
        TIME_FIELDS fields;
        FILETIME instant;
        Sleep(0);
        Sleep(1);
        GetTickCount();
        RtlTimeToTimeFields(&ticks, &fields);
        RtlSystemTimeToLocalTime(&ticks, &ticks);
        UnixTimeToFileTime(0, &instant);
    })
        .join();
    gLeaveWexelxiCriticalSection();
}

} // namespace
