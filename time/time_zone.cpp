// The zone in force: its offset by the platform's calendar, its name by the table.
#include <cstring>
#include <ctime>

#include "time/calendar.h"
#include "time/time_zone_table.h"
#include "wexelxi/time.h"

using namespace wexelxi;

// Local time at `now`, by "TZ" as it stands: localtime_r alone may keep an earlier one.
static tm LocalTimeOf(time_t now)
{
    tzset();
    tm local;
    localtime_r(&now, &local);
    return local;
}

// Minutes, UTC minus local time: UTC's fields read back as local time lie that far from now.
static int32_t BiasAt(time_t now, int isDaylight)
{
    tm utc;
    gmtime_r(&now, &utc);
    utc.tm_isdst = isDaylight;
    const auto secondsEast = static_cast<int32_t>(now - mktime(&utc));
    return secondsEast / -60;
}

int32_t RtlQueryTimeZoneInformation(TIME_ZONE_INFORMATION *zone)
{
    *zone = {};
    const time_t now = time(nullptr);
    const tm local = LocalTimeOf(now);
    zone->Bias = BiasAt(now, local.tm_isdst);
    zone->DaylightBias = -60;

    char abbreviation[7];
    if (strftime(abbreviation, sizeof abbreviation, "%Z", &local) == 0)
        return 0;
    if (const TimeZoneRow *row = FindTimeZone(abbreviation, zone->Bias, local.tm_isdst))
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
