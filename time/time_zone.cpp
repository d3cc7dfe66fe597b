// The zone in force: its offset by the platform's calendar, its name by the table.
#include <cstring>
#include <ctime>

#include "modules/environment.h"
#include "time/calendar.h"
#include "time/time_zone_table.h"
#include "wexelxi/time.h"

using namespace wexelxi;

namespace {

tm LocalTimeAt(time_t when)
{
    tm local;
    localtime_r(&when, &local);
    return local;
}

// UTC's fields, read back as local time in the daylight state of now, lie that far from now. Where
// no clock is changed in between, that is the offset of now.
int32_t SecondsEast(time_t now, const tm &local)
{
    const tm readBack = LocalTimeAt(now - local.tm_gmtoff);
    if (readBack.tm_gmtoff == local.tm_gmtoff && readBack.tm_isdst == local.tm_isdst)
        return static_cast<int32_t>(local.tm_gmtoff);
    tm utc;
    gmtime_r(&now, &utc);
    utc.tm_isdst = local.tm_isdst;
    return static_cast<int32_t>(now - mktime(&utc));
}

} // namespace

int32_t RtlQueryTimeZoneInformation(TIME_ZONE_INFORMATION *zone)
{
    *zone = {};
    const time_t now = time(nullptr);
    const std::scoped_lock environment(gEnvironmentLock);
    tzset(); // localtime_r alone may keep an earlier "TZ"
    const tm local = LocalTimeAt(now);
    zone->Bias = SecondsEast(now, local) / -60;
    zone->DaylightBias = -60;
    // The table has neither the empty abbreviation nor one of more than six letters.
    if (const TimeZoneRow *row = FindTimeZone(local.tm_zone, zone->Bias, local.tm_isdst))
        memcpy(zone->StandardName, row->name, sizeof zone->StandardName);
    return 0;
}

int32_t RtlSystemTimeToLocalTime(const int64_t *ticks, int64_t *local)
{
    TIME_ZONE_INFORMATION zone;
    RtlQueryTimeZoneInformation(&zone);
    *local = LocalTicks(*ticks, zone.Bias);
    return 0;
}
