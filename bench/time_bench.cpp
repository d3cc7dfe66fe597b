// The clock, the calendar and the zone.
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <glib.h>
#include <random>
#include <string>
#include <sys/time.h>
#include <vector>

#include "host.h"
#include "rows.h"

namespace {

// Instants of the years 1970 to 2100, so that no branch learns one.
class SomeInstants {
public:
    SomeInstants()
    {
        std::mt19937_64 random(1);
        for (int64_t &value : ticks_)
            value =
                116'444'736'000'000'000 + static_cast<int64_t>(random() % 41'000'000'000'000'000);
    }
    const int64_t &Next() { return ticks_[next_++ % ticks_.size()]; }
    time_t NextSecond() { return Next() / 10'000'000 - 11'644'473'600; }

private:
    std::vector<int64_t> ticks_ = std::vector<int64_t>(4096);
    size_t next_ = 0;
};

void CalendarRows()
{
    SomeInstants instants;
    const Work platform = Do("gmtime_r", [&] {
        const time_t second = instants.NextSecond();
        tm fields;
        Keep(gmtime_r(&second, &fields));
    });
    const Work standard = Do("libstdc++ year_month_day", [&] {
        using namespace std::chrono;
        const sys_seconds second{seconds(instants.NextSecond())};
        const sys_days day = floor<days>(second);
        Keep(year_month_day(day));
        Keep(hh_mm_ss(second - day));
        Keep(weekday(day));
    });
    Row("FileTimeToSystemTime", "the lock; the calendar's divisions", Ours([&] {
            FILETIME instant;
            static_assert(sizeof instant == sizeof(int64_t));
            memcpy(&instant, &instants.Next(), sizeof instant);
            SYSTEMTIME time;
            Keep(FileTimeToSystemTime(&instant, &time));
        }),
        platform, {standard});
    Row("RtlTimeToTimeFields", "the calendar's divisions", Ours([&] {
            TIME_FIELDS fields;
            RtlTimeToTimeFields(&instants.Next(), &fields);
            Keep(fields);
        }),
        platform, {standard});
}

void ClockRows()
{
    Row("GetSystemTime", "the clock, and the calendar", Ours([] {
            SYSTEMTIME time;
            GetSystemTime(&time);
        }),
        Do("gettimeofday",
           [] {
               timeval now;
               Keep(gettimeofday(&now, nullptr));
           }),
        {Do("clock_gettime and gmtime_r",
            [] {
                timespec now;
                clock_gettime(CLOCK_REALTIME, &now);
                tm fields;
                Keep(gmtime_r(&now.tv_sec, &fields));
            }),
         Do("GLib g_date_time_new_now_utc", [] { g_date_time_unref(g_date_time_new_now_utc()); })});
}

// The platform looks at its own zone's file anew at each question unless "TZ" names a zone.
void ZoneRows(const std::string &condition)
{
    const Work local = Do("tzset and localtime_r", [] {
        tzset();
        const time_t now = time(nullptr);
        tm fields;
        Keep(localtime_r(&now, &fields));
    });
    Row("GetLocalTime, " + condition, "the clock, the zone, and the calendar", Ours([] {
            SYSTEMTIME time;
            GetLocalTime(&time);
        }),
        local, {Do("GLib g_date_time_new_now_local", [] {
            g_date_time_unref(g_date_time_new_now_local());
        })});
    Row("RtlQueryTimeZoneInformation, " + condition, "the zone, and its row in the table", Ours([] {
            TIME_ZONE_INFORMATION zone;
            Keep(RtlQueryTimeZoneInformation(&zone));
        }),
        local, {Do("GLib GTimeZone", [] {
            GTimeZone *zone = g_time_zone_new_local();
            Keep(g_time_zone_get_abbreviation(
                zone, g_time_zone_find_interval(zone, G_TIME_TYPE_UNIVERSAL, time(nullptr))));
            g_time_zone_unref(zone);
        })});
}

} // namespace

int main()
{
    const Host host;
    CalendarRows();
    ClockRows();
    setenv("TZ", "Europe/Berlin", 1);
    ZoneRows("\"TZ\" set");
    unsetenv("TZ");
    ZoneRows("\"TZ\" not set");
}
