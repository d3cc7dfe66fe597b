/* The clock, calendar conversions and the time zone in force. */
#ifndef WEXELXI_TIME_H
#define WEXELXI_TIME_H

#include "types.h"

/** \defgroup clock Clock and calendar
 *  Instants are 64-bit counts of 100-nanosecond ticks since 1601-01-01 00:00:00 UTC. A negative
 *  count lies before the calendar: every function takes it, and the fields mean nothing.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** An instant: the low and the high word of one signed 64-bit tick count. */
typedef struct {
    uint32_t dwLowDateTime;  /**< Low half of the ticks. */
    uint32_t dwHighDateTime; /**< High half of the ticks. */
} FILETIME;

WEXELXI_LAYOUT(sizeof(FILETIME) == 8);
WEXELXI_FIELD(FILETIME, dwHighDateTime, 4);

/** Calendar fields, the day of the week third. */
typedef struct {
    uint16_t wYear;         /**< 1601 to 30828. */
    uint16_t wMonth;        /**< 1 to 12. */
    uint16_t wDayOfWeek;    /**< 0 to 6, Sunday is 0. */
    uint16_t wDay;          /**< 1 to 31. */
    uint16_t wHour;         /**< 0 to 23. */
    uint16_t wMinute;       /**< 0 to 59. */
    uint16_t wSecond;       /**< 0 to 59. */
    uint16_t wMilliseconds; /**< 0 to 999. */
} SYSTEMTIME;

WEXELXI_LAYOUT(sizeof(SYSTEMTIME) == 16);
WEXELXI_FIELD(SYSTEMTIME, wDayOfWeek, 4);
WEXELXI_FIELD(SYSTEMTIME, wDay, 6);
WEXELXI_FIELD(SYSTEMTIME, wMilliseconds, 14);

/** The same fields, the day of the week last. */
typedef struct {
    int16_t Year;         /**< 1601 upward. */
    int16_t Month;        /**< 1 to 12. */
    int16_t Day;          /**< 1 to 31. */
    int16_t Hour;         /**< 0 to 23. */
    int16_t Minute;       /**< 0 to 59. */
    int16_t Second;       /**< 0 to 59. */
    int16_t Milliseconds; /**< 0 to 999. */
    int16_t Weekday;      /**< 0 to 6; Sunday is 0. */
} TIME_FIELDS;

WEXELXI_LAYOUT(sizeof(TIME_FIELDS) == 16);
WEXELXI_FIELD(TIME_FIELDS, Day, 4);
WEXELXI_FIELD(TIME_FIELDS, Weekday, 14);

/** Reads the clock, to the microsecond.
 *  @param ticks  receives the tick count.
 *  @return 0. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t NtQuerySystemTime(int64_t *ticks);

/** Breaks a tick count down to calendar fields. Last error: unchanged. Lock: no. */
WEXELXI_API void RtlTimeToTimeFields(const int64_t *ticks, TIME_FIELDS *fields);

/** Reads the clock as calendar fields in UTC. Last error: 0. Lock: yes. */
WEXELXI_API void GetSystemTime(SYSTEMTIME *time);

/** Breaks an instant down to calendar fields.
 *  @return TRUE. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL FileTimeToSystemTime(const FILETIME *instant, SYSTEMTIME *time);

/** Reads the clock as calendar fields in the zone in force. Last error: unchanged. Lock: yes. */
WEXELXI_API void GetLocalTime(SYSTEMTIME *time);

/** GetLocalTime of a moment some time away.
 *  @param time     receives the fields.
 *  @param seconds  added to the clock before the conversion; negative for the past. The zone's
 *                  offset is still that of now.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API void GetLocalTimeWithOffset(SYSTEMTIME *time, int32_t seconds);

/** Moves an instant to the zone in force now, whatever was in force at the instant.
 *  @param instant  the instant in UTC.
 *  @param local    receives the local one; may be the same record.
 *  @return TRUE. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL FileTimeToLocalFileTime(const FILETIME *instant, FILETIME *local);

/** Turns seconds since 1970-01-01, 0 to 4294967295, to an instant.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void UnixTimeToFileTime(uint32_t seconds, FILETIME *instant);

/** Milliseconds since InitLib in steps of 25, wrapping; the count follows the wall clock and its
 *  jumps, and may be just below 2^32 in the first 25 milliseconds.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t GetTickCount(void);

/** Waits. 0 returns at once, and a signal ends the wait early. A global lock that the caller holds
 *  stays held. Last error: unchanged. Lock: no. */
WEXELXI_API void Sleep(uint32_t milliseconds);

/** Origin of GetTickCount: the wall clock in milliseconds at InitLib, 0 before. */
WEXELXI_API extern uint32_t gTickStart;

/** @} */

/** \defgroup timezones Time zones
 *  @{ */

/** The zone in force. The names are 8-bit text. */
typedef struct {
    int32_t Bias;            /**< Minutes, UTC minus local time now, daylight saving included. */
    char StandardName[32];   /**< Name of the zone, also in summer; empty if it is not known. */
    SYSTEMTIME StandardDate; /**< Zero. */
    int32_t StandardBias;    /**< 0. */
    char DaylightName[32];   /**< Empty. */
    SYSTEMTIME DaylightDate; /**< Zero. */
    int32_t DaylightBias;    /**< Always -60; Bias holds it already where it applies. */
} TIME_ZONE_INFORMATION;

WEXELXI_LAYOUT(sizeof(TIME_ZONE_INFORMATION) == 108);
WEXELXI_FIELD(TIME_ZONE_INFORMATION, StandardName, 4);
WEXELXI_FIELD(TIME_ZONE_INFORMATION, StandardDate, 36);
WEXELXI_FIELD(TIME_ZONE_INFORMATION, StandardBias, 52);
WEXELXI_FIELD(TIME_ZONE_INFORMATION, DaylightName, 56);
WEXELXI_FIELD(TIME_ZONE_INFORMATION, DaylightDate, 88);
WEXELXI_FIELD(TIME_ZONE_INFORMATION, DaylightBias, 104);

/** Tells the zone in force now. Nothing is kept: a changed "TZ" counts at the next call.
 *  @param zone  receives all 108 bytes.
 *  @return 0. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t RtlQueryTimeZoneInformation(TIME_ZONE_INFORMATION *zone);

/** Moves a tick count to the zone in force now.
 *  @param ticks  the count in UTC.
 *  @param local  receives the local one; may be the same variable.
 *  @return 0. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t RtlSystemTimeToLocalTime(const int64_t *ticks, int64_t *local);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
