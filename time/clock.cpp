// The clock in ticks and in calendar fields, the millisecond counter and Sleep.
#include <cstring>
#include <sys/select.h>
#include <sys/time.h>

#include "core/lock.h"
#include "time/calendar.h"
#include "wexelxi/time.h"

using namespace wexelxi;

namespace {

timeval Now()
{
    timeval now;
    gettimeofday(&now, nullptr);
    return now;
}

int64_t ToTicks(const FILETIME *instant)
{
    int64_t ticks;
    memcpy(&ticks, instant, sizeof ticks);
    return ticks;
}

void StoreTicks(int64_t ticks, FILETIME *instant)
{
    memcpy(instant, &ticks, sizeof ticks);
}

SYSTEMTIME SystemTimeFromTicks(int64_t ticks)
{
    const CalendarFields fields = CalendarFromTicks(ticks);
    return {fields.year, fields.month,  fields.dayOfWeek, fields.day,
            fields.hour, fields.minute, fields.second,    fields.millisecond};
}

} // namespace

int32_t NtQuerySystemTime(int64_t *ticks)
{
    const timeval now = Now();
    *ticks = TicksFromUnixTime(now.tv_sec, now.tv_usec);
    return 0;
}

void RtlTimeToTimeFields(const int64_t *ticks, TIME_FIELDS *fields)
{
    const CalendarFields from = CalendarFromTicks(*ticks);
    const auto field = [](uint16_t value) { return static_cast<int16_t>(value); };
    *fields = {field(from.year),        field(from.month),    field(from.day),
               field(from.hour),        field(from.minute),   field(from.second),
               field(from.millisecond), field(from.dayOfWeek)};
}

void GetSystemTime(SYSTEMTIME *time)
{
    BriefLockScope lock;
    SetLastError(ERROR_SUCCESS);
    const timeval now = Now();
    *time = SystemTimeFromTicks(TicksFromUnixTime(now.tv_sec, now.tv_usec));
}

BOOL FileTimeToSystemTime(const FILETIME *instant, SYSTEMTIME *time)
{
    BriefLockScope lock;
    *time = SystemTimeFromTicks(ToTicks(instant));
    return TRUE;
}

void GetLocalTime(SYSTEMTIME *time)
{
    GetLocalTimeWithOffset(time, 0);
}

void GetLocalTimeWithOffset(SYSTEMTIME *time, int32_t seconds)
{
    LockScope lock;
    const timeval now = Now();
    TIME_ZONE_INFORMATION zone;
    RtlQueryTimeZoneInformation(&zone);
    const int64_t ticks = TicksFromUnixTime(now.tv_sec + seconds, now.tv_usec);
    *time = SystemTimeFromTicks(LocalTicks(ticks, zone.Bias));
}

BOOL FileTimeToLocalFileTime(const FILETIME *instant, FILETIME *local)
{
    LockScope lock;
    TIME_ZONE_INFORMATION zone;
    RtlQueryTimeZoneInformation(&zone);
    StoreTicks(LocalTicks(ToTicks(instant), zone.Bias), local);
    return TRUE;
}

void UnixTimeToFileTime(uint32_t seconds, FILETIME *instant)
{
    StoreTicks(TicksFromUnixTime(seconds, 0), instant);
}

uint32_t gTickStart = 0;

uint32_t GetTickCount(void)
{
    const timeval now = Now();
    const auto steps = static_cast<uint32_t>(now.tv_usec) / 25'000 * 25;
    return steps + static_cast<uint32_t>(now.tv_sec) * 1000 - gTickStart;
}

void Sleep(uint32_t milliseconds)
{
    if (milliseconds == 0)
        return;
    timeval timeout = {milliseconds / 1000, static_cast<suseconds_t>(milliseconds % 1000 * 1000)};
    select(0, nullptr, nullptr, nullptr, &timeout);
}
