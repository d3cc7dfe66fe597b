// The clock and the zone in force, as a host sees them.
#include <atomic>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/time.h>
#include <thread>
#include <vector>

#include "support/last_error.h"
#include "support/library.h"
#include "time/time_zone.h"
#include "wexelxi.h"

namespace {

constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kTicksPerHour = 3600 * kTicksPerSecond;

int64_t NowInTicks()
{
    int64_t ticks = 0;
    EXPECT_EQ(NtQuerySystemTime(&ticks), 0);
    return ticks;
}

// Whether the fields are those of a millisecond from first to now.
bool IsRecent(const SYSTEMTIME &time, int64_t first, int64_t shift)
{
    for (int64_t ticks = first / 10'000 * 10'000; ticks <= NowInTicks(); ticks += 10'000) {
        const int64_t shifted = ticks + shift;
        FILETIME instant;
        SYSTEMTIME candidate;
        memcpy(&instant, &shifted, sizeof instant);
        FileTimeToSystemTime(&instant, &candidate);
        if (memcmp(&candidate, &time, sizeof time) == 0)
            return true;
    }
    return false;
}

TEST(TimeZone, IsFoundByAbbreviationOffsetAndDaylight)
{
    const struct {
        const char *zone;
        int32_t bias;
        const char *name;
    } rows[] = {
        {"IST-5:30", -330, "India Standard Time"},
        {"IST-2", -120, "Israel Standard Time"},
        {"EST5", 300, "US Eastern Standard Time"},
        {"EST5EDT,0/0,J365/25", 240, "Eastern Standard Time"}, // summer all year
        {"GMT0BST,0/0,J365/25", -60, "GMT Standard Time"},
        {"BST-1", -60, ""}, // the offset of BST, but no daylight saving
        {"est5", 300, ""},
        {"NST3:30:30", 210, ""}, // seconds drop towards zero
        {"AKSTXYZ9", 540, ""},   // an abbreviation of 7 letters is not looked for
        {"MHT-12", -720, "Dateline Standard Time"},
        {"", 0, ""},
    };
    for (const auto &row : rows) {
        setenv("TZ", row.zone, 1); // each change counts at the next call
        TIME_ZONE_INFORMATION zone, expected = {};
        memset(&zone, 0xA5, sizeof zone);
        EXPECT_EQ(RtlQueryTimeZoneInformation(&zone), 0);
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
    for (const char *zone : {"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0", "IST-5:30",
                             "LHST-10:30LHDT-11,M10.1.0,M4.1.0", "NZST-12NZDT,M9.5.0,M4.1.0/3"}) {
        setenv("TZ", zone, 1);
        tzset();
        for (time_t now = 1735689600; now < 1735689600 + 365 * 86400; now += 1200) {
            tm local, utc;
            localtime_r(&now, &local);
            gmtime_r(&now, &utc);
            utc.tm_isdst = local.tm_isdst;
            ASSERT_EQ(wexelxi::SecondsEast(now, local), now - mktime(&utc)) << zone << " " << now;
        }
    }
}

// The zone reads "TZ" without the global lock, and the environment moves as it grows.
TEST(TimeZone, BearsAChangingEnvironment)
{
    setenv("TZ", "IST-2", 1);
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int i = 0; i < 3000; i++)
            SetEnvironmentVariable(("WEXEL" + std::to_string(i)).c_str(), "x");
        done = true;
    });
    while (!done) {
        TIME_ZONE_INFORMATION zone;
        RtlQueryTimeZoneInformation(&zone);
        ASSERT_EQ(zone.Bias, -120);
    }
    writer.join();
}

TEST(TimeZone, IsTheSameForManyThreads)
{
    setenv("TZ", "EST5EDT,0/0,J365/25", 1);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; t++) {
        threads.emplace_back([] {
            for (int i = 0; i < 300; i++) {
                TIME_ZONE_INFORMATION zone;
                RtlQueryTimeZoneInformation(&zone);
                ASSERT_STREQ(zone.StandardName, "Eastern Standard Time");
                int64_t ticks = 0;
                RtlSystemTimeToLocalTime(&ticks, &ticks);
                ASSERT_EQ(ticks, -4 * kTicksPerHour);
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
}

TEST(Clock, TellsTheTimeHereAndThere)
{
    StartedLibrary library;
    setenv("TZ", "EST5", 1);
    SYSTEMTIME time;
    for (const int32_t offset : {0, 86'400, -86'400, INT32_MAX, INT32_MIN}) {
        const int64_t start = NowInTicks();
        EXPECT_LAST_ERROR(offset ? GetLocalTimeWithOffset(&time, offset) : GetLocalTime(&time),
                          kUnchanged);
        EXPECT_TRUE(IsRecent(time, start, offset * kTicksPerSecond - 5 * kTicksPerHour)) << offset;
    }
    const int64_t start = NowInTicks();
    EXPECT_LAST_ERROR(GetSystemTime(&time), ERROR_SUCCESS);
    EXPECT_TRUE(IsRecent(time, start, 0));

    FILETIME instant, local;
    UnixTimeToFileTime(0xFFFFFFFF, &instant);
    EXPECT_OUTCOME(FileTimeToLocalFileTime(&instant, &local), TRUE, kUnchanged);
    int64_t ticks;
    memcpy(&ticks, &local, sizeof ticks);
    EXPECT_EQ(ticks, 116444736000000000 + 0xFFFFFFFF * kTicksPerSecond - 5 * kTicksPerHour);
}

TEST(Clock, OrdersTheFieldsOfBothRecords)
{
    const int64_t ticks = 94405823999999999;
    const FILETIME instant = {static_cast<uint32_t>(ticks), static_cast<uint32_t>(ticks >> 32)};
    SYSTEMTIME time;
    TIME_FIELDS fields;
    EXPECT_OUTCOME(FileTimeToSystemTime(&instant, &time), TRUE, kUnchanged);
    RtlTimeToTimeFields(&ticks, &fields);
    const uint16_t expectedTime[] = {1900, 2, 3, 28, 23, 59, 59, 999};
    const uint16_t expectedFields[] = {1900, 2, 28, 23, 59, 59, 999, 3};
    EXPECT_EQ(memcmp(&time, expectedTime, sizeof time), 0);
    EXPECT_EQ(memcmp(&fields, expectedFields, sizeof fields), 0);
}

TEST(Clock, CountsInStepsAndSleepsUntilASignalWithoutTheLock)
{
    StartedLibrary library;
    timeval before, after;
    do { // within one second
        gettimeofday(&before, nullptr);
        gTickStart = static_cast<uint32_t>(before.tv_sec) * 1000 - 7;
        const uint32_t count = GetTickCount() - 7;
        gettimeofday(&after, nullptr);
        EXPECT_EQ(count % 25, 0u);
        EXPECT_GE(count, static_cast<uint32_t>(before.tv_usec) / 25'000 * 25);
    } while (before.tv_sec != after.tv_sec);

    signal(SIGALRM, [](int) {});
    const itimerval timer = {{0, 0}, {0, 50'000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
    const int64_t start = NowInTicks();
    gEnterWexelxiCriticalSection();
    Sleep(20'000);
    std::thread([] { // would wait for ever if one of these took the lock
        Sleep(60);
        int64_t ticks = GetTickCount();
        RtlSystemTimeToLocalTime(&ticks, &ticks);
    })
        .join();
    gLeaveWexelxiCriticalSection();
    EXPECT_GE(NowInTicks() - start, 110 * 10'000);
    EXPECT_LT(NowInTicks() - start, 10 * kTicksPerSecond);
}

} // namespace
