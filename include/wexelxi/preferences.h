/* Preferences: settings, system colours and the table of texts, loaded from the configuration
 * file. */
#ifndef WEXELXI_PREFERENCES_H
#define WEXELXI_PREFERENCES_H

#include "types.h"

/** \defgroup preferences Preferences, colours and texts
 *  InitLib loads all of this from the sections "Setup", "Localize" and the one named after the
 *  language, and writes there what is missing. The values survive FreeLib, the texts in force do
 *  not.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

#define WEXELXI_VERSION_MAJOR 1 /**< The library's own version, first number. */
#define WEXELXI_VERSION_MINOR 0 /**< The library's own version, second number. */
#define WEXELXI_VERSION_PATCH 0 /**< The library's own version, third number. */
/** The library's own version as one number to compare: 10203 is 1.2.3. */
#define WEXELXI_VERSION_NUMBER \
    (WEXELXI_VERSION_MAJOR * 10000 + WEXELXI_VERSION_MINOR * 100 + WEXELXI_VERSION_PATCH)

WEXELXI_API extern int32_t gVersion;       /**< The file's version number; 4 at load. */
WEXELXI_API extern int32_t gBellLevel;     /**< Bell level for the host; 100 at load. */
WEXELXI_API extern int32_t gTimerRate;     /**< Timer rate for the host, 1 to 1000; 50 at load. */
WEXELXI_API extern uint8_t gNoFreeLibrary; /**< 1: FreeLibrary keeps modules loaded. */

/** The system colours, index 0 to 62; the profile counts them from "Color1" on. */
WEXELXI_API extern COLORREF WinsysColArr[63];

/** The built-in texts, index 0 to 134; the profile counts them from "1" on. */
WEXELXI_API extern const char *const gDefaultStrings[135];

/** The texts in force: guarded blocks, or null outside a run. */
WEXELXI_API extern char *gStrings[135];

/** Loads all values from the configuration file, and writes what it lacks; on a first run that is
 *  the whole file. Texts that are set already stay. A file that cannot be written leaves the
 *  values in memory, without report. Last error: as the profile functions leave it. Lock: yes. */
WEXELXI_API void gLoadPref(void);

/** Frees the texts in force. Last error: unchanged. Lock: yes. */
WEXELXI_API void gFreePref(void);

/** A text of the table.
 *  @param index  0 to 134.
 *  @return the text, which stays the table's and lives until SetWinString on this index or
 *          gFreePref; null above 134 or while there is none. Last error: unchanged. Lock: no. */
WEXELXI_API const char *GetWinString(uint32_t index);

/** The same text as GetWinString, unconverted. Last error: unchanged. Lock: no. */
WEXELXI_API const char *GetWinStringUtf8(uint32_t index);

/** Replaces a text of the table, not that in the file. A text set before InitLib wins over the
 *  file's.
 *  @param index  0 to 134; any other is ignored.
 *  @param text   copied; null is ignored.
 *  Last error: 0; unchanged if ignored. Lock: no: order it with readers of that text. */
WEXELXI_API void SetWinString(int32_t index, const char *text);

/** A system colour; 0 above index 62. Last error: unchanged. Lock: no. */
WEXELXI_API COLORREF GetSysColor(uint32_t index);

/** Does nothing: no display is asked. Last error: unchanged. Lock: no. */
WEXELXI_API void GetSystemColors(COLORREF *colors);

/** Moves a colour away from another so that both stay distinct: at least one channel ends up 50
 *  or more apart, or the first becomes 0xC0C0C0 where both are dark.
 *  @param color  changed in place if the two are too near.
 *  @param other  the colour to differ from. Last error: unchanged. Lock: no. */
WEXELXI_API void gWidenColorGap(COLORREF *color, COLORREF other);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
