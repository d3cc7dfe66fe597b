/* Byte strings: the lstr family, case tables, number text and the OEM pair. */
#ifndef WEXELXI_TEXT_H
#define WEXELXI_TEXT_H

#include "types.h"

/** \defgroup strings Strings
 *  One 8-bit character set, with the case pairs of Windows-1252. None of these functions sets a
 *  last error, and none checks a pointer for null.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** Writes a number as text, letters in lower case.
 *  @param value   signed in radix 10, unsigned in every other.
 *  @param buffer  receives the text: 12 bytes serve radix 10, 33 radix 2.
 *  @param radix   2 or more; any other stores the empty text. Digits from 10 up go on behind 'a',
 *                 beyond the letters too.
 *  @return buffer. Last error: unchanged. Lock: yes. */
WEXELXI_API char *itoa(int32_t value, char *buffer, int32_t radix);

/** Appends src to dst, which must have the room. Returns dst. Last error: unchanged. Lock: yes. */
WEXELXI_API char *lstrcat(char *dst, const char *src);

/** Copies src with its NUL; the two may overlap if less than 4096 bytes lie between their starts.
 *  Returns dst. Last error: unchanged. Lock: yes. */
WEXELXI_API char *lstrcpy(char *dst, const char *src);

/** Copies at most count - 1 bytes and a NUL.
 *  @param count  bytes at dst with the NUL; 0 or below stores nothing.
 *  @return dst. Last error: unchanged. Lock: yes. */
WEXELXI_API char *lstrcpyn(char *dst, const char *src, int32_t count);

/** Compares with ASCII letters folded to lower case.
 *  @return the difference of the first two folded bytes that differ, -255 to 255, first minus
 *          second; 0 if equal. Last error: unchanged. Lock: yes. */
WEXELXI_API int32_t lstrcmpi(const char *first, const char *second);

/** As lstrcmpi over at most count bytes; a count of 0 sets no limit.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API int32_t lstrncmpi(const char *first, const char *second, uint32_t count);

/** Compares bytes exactly. Note the sign: 1 when first stands below second, -1 when above, 0 when
 *  equal. Last error: unchanged. Lock: yes. */
WEXELXI_API int32_t lstrcmp(const char *first, const char *second);

/** Bytes in front of the NUL. Last error: unchanged. Lock: yes. */
WEXELXI_API uint32_t lstrlen(const char *string);

/** Upper-cases one character or a whole string in place.
 *  @param value  at most 0xFFFF: a character, of which the low byte counts; else a string.
 *  @return the character, sign-extended from 8 bits; or the string.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API LPSTR AnsiUpper(LPSTR value);

/** Upper-cases count bytes in place, NULs included. Returns count.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API uint32_t AnsiUpperBuff(char *buffer, uint32_t count);

/** Lower-cases count bytes in place, NULs included. Returns count.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API uint32_t AnsiLowerBuff(char *buffer, uint32_t count);

/** TRUE for the ASCII letters of both cases; only the low 8 bits count.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API BOOL IsCharAlpha(uint32_t character);

/** Copies src unchanged up to its NUL, which is not stored. Always TRUE.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL OemToAnsi(const char *src, char *dst);

/** As OemToAnsi, at most count bytes. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL OemToAnsiBuff(const char *src, char *dst, uint32_t count);

/** The same operation as OemToAnsi. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL AnsiToOem(const char *src, char *dst);

/** The same operation as OemToAnsiBuff. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL AnsiToOemBuff(const char *src, char *dst, uint32_t count);

/** Formats as vsprintf does, with no limit of its own.
 *  @param dst     receives the text; must have the room.
 *  @param format  a printf format.
 *  @return characters written without the NUL. Last error: unchanged. Lock: yes. */
WEXELXI_API int32_t wsprintf(char *dst, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/** Upper-case form of each byte. */
WEXELXI_API extern uint8_t gUPPERBUFF[256];
/** Lower-case form of each byte. */
WEXELXI_API extern uint8_t gLOWERBUFF[256];

/** @} */

#ifdef __cplusplus
}
#endif

#endif
