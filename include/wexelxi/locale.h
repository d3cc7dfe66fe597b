/* The current language, the built-in language tables, and text for dates and times. */
#ifndef WEXELXI_LOCALE_H
#define WEXELXI_LOCALE_H

#include "time.h"
#include "types.h"

/** \defgroup locale Languages
 *  Thirteen built-in tables answer what a language calls and writes things. One process-wide
 * number, gLangID, is the current language. It is chosen at first use: from the environment
 * variable WEXELLOCALE, else from the key Locale of section Localize, else en-us.
 *
 *  Choosing reads the environment and the configuration file, which may leave their last errors.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Default languages
 *  @{ */
/** Stands for the current language. */
#define LOCALE_USER_DEFAULT 1024u
#define LOCALE_SYSTEM_DEFAULT 2048u
/** @} */

/** In a key: answer for the current language, whatever the argument says. */
#define LOCALE_NOUSEROVERRIDE 0x80000000u

/** \name Keys of the language tables, in the order of their rows
 *  @{ */
/** A key of GetLocaleInfo. */
#define LOCALE_ILANGUAGE 1u
#define LOCALE_SLANGUAGE 2u
#define LOCALE_SENGLANGUAGE 4097u
#define LOCALE_SABBREVLANGNAME 3u
#define LOCALE_SNATIVELANGNAME 4u
#define LOCALE_ICOUNTRY 5u
#define LOCALE_SCOUNTRY 6u
#define LOCALE_SENGCOUNTRY 4098u
#define LOCALE_SABBREVCTRYNAME 7u
#define LOCALE_SNATIVECTRYNAME 8u
#define LOCALE_IDEFAULTLANGUAGE 9u
#define LOCALE_IDEFAULTCOUNTRY 10u
#define LOCALE_IDEFAULTCODEPAGE 11u
#define LOCALE_IDEFAULTANSICODEPAGE 4100u
#define LOCALE_IDEFAULTMACCODEPAGE 4113u
#define LOCALE_SLIST 12u
#define LOCALE_IMEASURE 13u
#define LOCALE_SDECIMAL 14u
#define LOCALE_STHOUSAND 15u
#define LOCALE_SGROUPING 16u
#define LOCALE_IDIGITS 17u
#define LOCALE_ILZERO 18u
#define LOCALE_INEGNUMBER 4112u
#define LOCALE_SNATIVEDIGITS 19u
#define LOCALE_SCURRENCY 20u
#define LOCALE_SINTLSYMBOL 21u
#define LOCALE_SMONDECIMALSEP 22u
#define LOCALE_SMONTHOUSANDSEP 23u
#define LOCALE_SMONGROUPING 24u
#define LOCALE_ICURRDIGITS 25u
#define LOCALE_IINTLCURRDIGITS 26u
#define LOCALE_ICURRENCY 27u
#define LOCALE_INEGCURR 28u
#define LOCALE_SDATE 29u
#define LOCALE_STIME 30u
#define LOCALE_SSHORTDATE 31u
#define LOCALE_SLONGDATE 32u
#define LOCALE_STIMEFORMAT 4099u
#define LOCALE_IDATE 33u
#define LOCALE_ILDATE 34u
#define LOCALE_ITIME 35u
#define LOCALE_ITIMEMARKPOSN 4101u
#define LOCALE_ICENTURY 36u
#define LOCALE_ITLZERO 37u
#define LOCALE_IDAYLZERO 38u
#define LOCALE_IMONLZERO 39u
#define LOCALE_S1159 40u
#define LOCALE_S2359 41u
#define LOCALE_ICALENDARTYPE 4105u
#define LOCALE_IOPTIONALCALENDAR 4107u
#define LOCALE_IFIRSTDAYOFWEEK 4108u
#define LOCALE_IFIRSTWEEKOFYEAR 4109u
#define LOCALE_SDAYNAME1 42u
#define LOCALE_SDAYNAME2 43u
#define LOCALE_SDAYNAME3 44u
#define LOCALE_SDAYNAME4 45u
#define LOCALE_SDAYNAME5 46u
#define LOCALE_SDAYNAME6 47u
#define LOCALE_SDAYNAME7 48u
#define LOCALE_SABBREVDAYNAME1 49u
#define LOCALE_SABBREVDAYNAME2 50u
#define LOCALE_SABBREVDAYNAME3 51u
#define LOCALE_SABBREVDAYNAME4 52u
#define LOCALE_SABBREVDAYNAME5 53u
#define LOCALE_SABBREVDAYNAME6 54u
#define LOCALE_SABBREVDAYNAME7 55u
#define LOCALE_SMONTHNAME1 56u
#define LOCALE_SMONTHNAME2 57u
#define LOCALE_SMONTHNAME3 58u
#define LOCALE_SMONTHNAME4 59u
#define LOCALE_SMONTHNAME5 60u
#define LOCALE_SMONTHNAME6 61u
#define LOCALE_SMONTHNAME7 62u
#define LOCALE_SMONTHNAME8 63u
#define LOCALE_SMONTHNAME9 64u
#define LOCALE_SMONTHNAME10 65u
#define LOCALE_SMONTHNAME11 66u
#define LOCALE_SMONTHNAME12 67u
#define LOCALE_SMONTHNAME13 4110u
#define LOCALE_SABBREVMONTHNAME1 68u
#define LOCALE_SABBREVMONTHNAME2 69u
#define LOCALE_SABBREVMONTHNAME3 70u
#define LOCALE_SABBREVMONTHNAME4 71u
#define LOCALE_SABBREVMONTHNAME5 72u
#define LOCALE_SABBREVMONTHNAME6 73u
#define LOCALE_SABBREVMONTHNAME7 74u
#define LOCALE_SABBREVMONTHNAME8 75u
#define LOCALE_SABBREVMONTHNAME9 76u
#define LOCALE_SABBREVMONTHNAME10 77u
#define LOCALE_SABBREVMONTHNAME11 78u
#define LOCALE_SABBREVMONTHNAME12 79u
#define LOCALE_SABBREVMONTHNAME13 4111u
#define LOCALE_SPOSITIVESIGN 80u
#define LOCALE_SNEGATIVESIGN 81u
#define LOCALE_IPOSSIGNPOSN 82u
#define LOCALE_INEGSIGNPOSN 83u
#define LOCALE_IPOSSYMPRECEDES 84u
#define LOCALE_IPOSSEPBYSPACE 85u
#define LOCALE_INEGSYMPRECEDES 86u
#define LOCALE_INEGSEPBYSPACE 87u
#define LOCALE_FONTSIGNATURE 88u
#define LOCALE_SISO639LANGNAME 89u
#define LOCALE_SISO3166CTRYNAME 90u
/** @} */

/** One language that can be chosen. */
typedef struct {
    const char *name;   /**< In words; null ends the table. */
    const char *code;   /**< As "en-us"; empty where the language has none. */
    uintptr_t language; /**< The language number. */
} LANGUAGEENTRY;
WEXELXI_LAYOUT(sizeof(LANGUAGEENTRY) == 24);
WEXELXI_FIELD(LANGUAGEENTRY, name, 0);
WEXELXI_FIELD(LANGUAGEENTRY, code, 8);
WEXELXI_FIELD(LANGUAGEENTRY, language, 16);

/** One value of a language table. */
typedef struct {
    uintptr_t key; /**< A LOCALE_ key; 0 ends the table. */
    const char
        *value; /**< Bytes in the code of the table, ended by a zero; empty in the last row. */
} LANGUAGEROW;
WEXELXI_LAYOUT(sizeof(LANGUAGEROW) == 16);
WEXELXI_FIELD(LANGUAGEROW, key, 0);
WEXELXI_FIELD(LANGUAGEROW, value, 8);

/** Chooses the current language.
 *  @param selector  null asks for the configured language, each time anew. Otherwise the address of
 *                   a 32-bit language number up to 0xFFFF, or of a code such as "de-ch", which is
 *                   compared exactly. Four bytes are read to tell the two apart: a code of two
 *                   letters needs a byte behind its terminator that is not zero.
 *  @return 1 if gLanguageTable has the language; 0 if not: the current language then stays, or
 *          becomes 1033 if none was chosen yet.
 *  Last error: unchanged, but see above. Lock: yes. */
WEXELXI_API uint32_t SetLocale(const void *selector);

/** The current language number. Last error: unchanged, but see above. Lock: yes. */
WEXELXI_API uint32_t GetUserDefaultLCID(void);

/** The same as GetUserDefaultLCID. Last error: as there. Lock: yes. */
WEXELXI_API uint32_t GetUserDefaultLangID(void);

/** The same as GetUserDefaultLCID. Last error: as there. Lock: yes. */
WEXELXI_API uint32_t GetSystemDefaultLCID(void);

/** The same as GetUserDefaultLCID. Last error: as there. Lock: yes. */
WEXELXI_API uint32_t GetSystemDefaultLangID(void);

/** Resolves the two defaults; nothing is validated.
 *  @param language  0, LOCALE_USER_DEFAULT or LOCALE_SYSTEM_DEFAULT give the current language, any
 *                   other number itself.
 *  Last error: unchanged, but see above. Lock: yes. */
WEXELXI_API uintptr_t ValidateLCID(uintptr_t language);

/** Looks up what a language has under a key. A language without a table is served by its primary
 *  language, and what that has not, by English (United States). Allocates nothing.
 *  @param language  a language number or one of the two defaults.
 *  @param key       a LOCALE_ key, with LOCALE_NOUSEROVERRIDE or without; bits 30 and up are
 * dropped.
 *  @param buffer    receives the value, cut to size - 1 bytes and ended; null only with size 0. Its
 *                   first byte is cleared even where nothing is found or size is 0.
 *  @param size      bytes at buffer with the terminator; 0 asks for the length alone.
 *  @return length of the whole value with its terminator, more than size where it was cut; or 0.
 *  Last error: unchanged on success, but see above; 122 for a null buffer with a size; 87 where
 *  neither table has the key. Lock: yes. */
WEXELXI_API int32_t GetLocaleInfo(uintptr_t language, uintptr_t key, char *buffer, int32_t size);

/** The current language number; 0 until it is chosen. */
WEXELXI_API extern uint16_t gLangID;

/** What SetLocale can choose: 112 languages and the end. */
WEXELXI_API extern const LANGUAGEENTRY gLanguageTable[113];

/** Language 1033, English (United States). */
WEXELXI_API extern const LANGUAGEROW Lang_EngUS[102];
/** Language 2057, English (United Kingdom). */
WEXELXI_API extern const LANGUAGEROW Lang_EngUK[102];
/** Language 1031, German. */
WEXELXI_API extern const LANGUAGEROW Lang_German[104];
/** Language 1030, Danish. */
WEXELXI_API extern const LANGUAGEROW Lang_Danish[89];
/** Language 1035, Finnish. */
WEXELXI_API extern const LANGUAGEROW Lang_Finnish[81];
/** Language 1036, French. */
WEXELXI_API extern const LANGUAGEROW Lang_French[70];
/** Language 1040, Italian. */
WEXELXI_API extern const LANGUAGEROW Lang_Italian[78];
/** Language 1042, Korean, in EUC-KR. */
WEXELXI_API extern const LANGUAGEROW Lang_Korean[102];
/** Language 1038, Hungarian. */
WEXELXI_API extern const LANGUAGEROW Lang_Hungarian[78];
/** Language 1045, Polish, partly in ISO 8859-2. */
WEXELXI_API extern const LANGUAGEROW Lang_Polish[78];
/** Language 1046, Portuguese (Brazil), in ISO 8859-1. */
WEXELXI_API extern const LANGUAGEROW Lang_Brazil[102];
/** Language 1053, Swedish. */
WEXELXI_API extern const LANGUAGEROW Lang_Swedish[89];
/** Language 1051, Slovak. */
WEXELXI_API extern const LANGUAGEROW Lang_Slovakian[104];

/** @} */

/** \defgroup dateformat Date and time text
 *  Text is made after a picture. Items are runs of one letter: d day, dd with a zero in front, ddd
 *  and dddd the name of the weekday; M, MM, MMM, MMMM the month likewise; y, yy the year in two
 *  digits, yyyy whole; h, hh the hour to 12 and H, HH to 24; m, mm minute; s, ss second; t the
 *  letter A or P, tt the word of the language; gg the era AD. A longer run starts a new item. Text
 *  in single quotes stands for itself, two single quotes within it for one. So does every other
 *  character. No field of the time is checked.
 *  @{ */

/** Minutes are left out, as far as the picture writes them ":mm". */
#define TIME_NOMINUTESORSECONDS 1u
/** Seconds are left out, as far as the picture writes them ":ss". */
#define TIME_NOSECONDS 2u

/** \name Flags of GetDateFormat
 *  @{ */
/** A flag: which default picture counts. */
#define DATE_SHORTDATE 1u
#define DATE_LONGDATE 2u
/** @} */

/** Makes text after a picture. Allocates nothing.
 *  @param language  whose names are used; see GetLocaleInfo.
 *  @param reserved  not read.
 *  @param flags     TIME_NOMINUTESORSECONDS and TIME_NOSECONDS, or 0: the first ":mm" or ":ss" of
 * the picture is taken out, quoted or not.
 *  @param time      the time.
 *  @param picture   the picture, of any length; empty if it starts at out, and up to 39 characters
 *                   long if it stands elsewhere in out.
 *  @param out       receives the text, ended. Null stores nothing.
 *  @param size      bytes at out. Below 1 stores nothing.
 *  @return length of the text with its terminator, one less where the text fills out to the last
 *          byte, one more where the picture ends inside a quote and there is room; 0 where the text
 *          did not fit: out then holds its first size - 1 bytes.
 *  Last error: 122 where the text does not fit, out is null or size below 1; otherwise unchanged,
 *  but see GetLocaleInfo. Lock: yes. */
WEXELXI_API int32_t FormatLocaleString(uintptr_t language, uintptr_t reserved, uint32_t flags,
                                       const SYSTEMTIME *time, const char *picture, char *out,
                                       int32_t size);

/** Makes the text of a date.
 *  @param language  0 stands for the current language, as the two defaults do.
 *  @param flags     DATE_LONGDATE asks for the long picture of the language instead of the short
 *                   one; counts only with a null picture.
 *  @param time      the date; null stands for now, in UTC.
 *  @param picture   the picture; null stands for one of the language.
 *  @param out       see FormatLocaleString; size too.
 *  @return see FormatLocaleString.
 *  Last error: the result, 0 on failure. Lock: yes. */
WEXELXI_API int32_t GetDateFormat(uintptr_t language, uint32_t flags, const SYSTEMTIME *time,
                                  const char *picture, char *out, int32_t size);

/** Makes the text of a time of day.
 *  @param language  0 stands for the current language, as the two defaults do.
 *  @param flags     TIME_NOMINUTESORSECONDS and TIME_NOSECONDS; others do nothing.
 *  @param time      the time; null stands for now, in UTC.
 *  @param picture   the picture; null stands for the one of the language.
 *  @param out       see FormatLocaleString; size too.
 *  @return see FormatLocaleString.
 *  Last error: the result, 0 on failure. Lock: yes. */
WEXELXI_API int32_t GetTimeFormat(uintptr_t language, uint32_t flags, const SYSTEMTIME *time,
                                  const char *picture, char *out, int32_t size);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
