/* Conversions between the 8-bit code page, UTF-8, 32-bit wide characters and UTF-16. */
#ifndef WEXELXI_UNICODE_H
#define WEXELXI_UNICODE_H

#include "types.h"

/** \defgroup conversions Unicode conversions
 *  The 8-bit code page is Windows-1252, whatever the names say. A wide character is one code point
 *  in 32 bits. Each text ends in a zero of its own width; counts leave it out.
 *
 *  The conversions are lenient and never fail: the lead byte alone decides how a sequence is read,
 *  a sequence that the end of the text cuts gives the bits gathered so far, and what the target
 *  cannot hold becomes 0xBF. None reads past the end of its source or stores more than its result
 *  and the end, and ConvertUtf8ToISO8859WithDest may convert in place. They keep no state and take
 *  no lock.
 *
 *  UTF-8 is read so: 00-7F stand alone; 80-DF take one byte more, E0-EF two, F0-F7 three, whatever
 *  bytes these are; F8-FF stand alone for themselves.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** Reads the rest of one UTF-8 sequence.
 *  @param next       the bytes behind the first one.
 *  @param first      the first byte; only the low 8 bits count.
 *  @param codePoint  receives the code point.
 *  @return the byte behind the sequence, or the zero that cut it short.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API const char *gGetNextUtf8Char(const char *next, uint32_t first, uint32_t *codePoint);

/** Converts UTF-8 to the code page in new memory.
 *  @param source  the text, or null.
 *  @return the new text, freed by the caller with free; null for a null source or without memory.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API char *ConvertUtf8ToISO8859(const char *source);

/** Converts UTF-8 to the code page.
 *  @param source  the text; null stands for the empty text. May be destination itself.
 *  @param destination  receives the text; strlen(source) + 1 bytes suffice.
 *  @return bytes stored. A sequence for code point 0 stores a zero byte that counts.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t ConvertUtf8ToISO8859WithDest(const char *source, char *destination);

/** Converts UTF-8 to wide characters.
 *  @param source  the text; null stores nothing at all.
 *  @param destination  receives the text; strlen(source) + 1 units suffice.
 *  @return units stored. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t ConvertUtf8ToWideCharWithDest(const char *source, uint32_t *destination);

/** Converts the code page to UTF-8 in new memory.
 *  @param source  the text, or null.
 *  @return the new text, freed by the caller with free; null for a null source or without memory.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API char *ConvertISO8859ToUtf8(const char *source);

/** Converts the code page to UTF-8.
 *  @param source  the text; null stands for the empty text.
 *  @param destination  receives the text; 3 * strlen(source) + 1 bytes suffice.
 *  @return bytes stored. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t ConvertISO8859ToUtf8WithDest(const char *source, char *destination);

/** Converts wide characters to UTF-8: up to 1FFFFF in the usual form, surrogates too; above, 0xBF.
 *  @param source  the text; null stands for the empty text.
 *  @param destination  receives the text; 4 bytes for each unit, and 1, suffice.
 *  @return bytes stored. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t ConvertWideCharToUtf8WithDest(const uint32_t *source, char *destination);

/** Converts wide characters to UTF-16: surrogates as they stand; above 10FFFF, 0x00BF.
 *  @param source  the text; null stands for the empty text.
 *  @param destination  receives the text; 2 units for each unit, and 1, suffice.
 *  @return units stored. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t ConvertWideCharToUtf16WithDest(const uint32_t *source, uint16_t *destination);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
