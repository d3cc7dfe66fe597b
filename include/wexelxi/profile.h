/* Profile files: texts of the win.ini kind, among them the configuration file. */
#ifndef WEXELXI_PROFILE_H
#define WEXELXI_PROFILE_H

#include "types.h"

/** \defgroup profile Profile files
 *  A profile file holds sections, "[name]" on a line, of lines "key=value". Names are compared
 *  exactly, case included. A line end is a CR or an LF, together with one LF directly behind it.
 *  A section ends at a line whose first byte, taken as signed, is below 33: an empty line, a
 *  blank, or a byte from 0x80 up. A key name runs from the start of its line to the next '=',
 *  across line ends, so a line with no '=' hides the line behind it. Written lines end in CR LF.
 *
 *  The names "win.ini" and "wexelxi.ini" both mean the configuration file; every other name is
 *  opened as it stands. Reads of single keys are served from a cache of one file, which any write,
 *  any read of a section and any read of another file drops: until then a change that others made
 *  to the file is not seen.
 *
 *  Only ordinary files and ports hold a profile; a device takes what is written to it.
 *
 *  These functions set no last error of their own. A call that touches no file leaves the number
 *  as it was; one that does leaves 0, the number of the open that failed (CreateFile), or 8 where
 *  memory ran out.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the folder of the configuration file, which becomes folder + "/wexelxi.ini".
 *  @param folder  at most 4083 characters; a longer one is refused and the old one stays.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API void SetWexelXiFolder(const char *folder);

/** Gives the folder of the configuration file.
 *  @param destination  4096 bytes; receives the folder, the whole path "/wexelxi.ini" for "/", or
 *                      the empty text as long as no folder was set and no profile was used.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API void GetWexelXiFolder(char *destination);

/** Resolves a profile file name. The first call with no folder set takes the host's own folder.
 *  @param destination  4096 bytes; receives the configuration file's path for "win.ini" and
 *                      "wexelxi.ini", any other name as it stands, cut to 4095 characters.
 *  @param name         the name.
 *  Last error: unchanged; 0 when the folder was derived. Lock: yes. */
WEXELXI_API void GetIniName(char *destination, const char *name);

/** The start of the next line of a text, or its terminating NUL.
 *  @param text  any place in a text. Last error: unchanged. Lock: no. */
WEXELXI_API const char *nextLine(const char *text);

/** Finds a key of a section in a text.
 *  @param text      the text; null or empty holds nothing.
 *  @param section   the section's name.
 *  @param key       the key's name.
 *  @param position  null, or receives the start of the key's line when it is found, and else the
 *                   place where the key would be added; untouched when there is no such section.
 *  @return the offset of the value in text, or -1. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t findIniKey(const char *text, const char *section, const char *key,
                               const char **position);

/** Reads a value, exactly as it stands between '=' and the end of its line.
 *  @param section       the section's name.
 *  @param key           the key's name.
 *  @param defaultValue  the value if the key is not there, or null for none. An empty value in the
 *                       file is a value.
 *  @param destination   receives the value, cut to size - 1 characters, with its NUL; untouched if
 *                       there is neither a value nor a default.
 *  @param size          bytes at destination; 0 stores nothing.
 *  @param file          the file's name; null gives 0.
 *  @return characters copied. Last error: see above. Lock: yes. */
WEXELXI_API uint32_t GetPrivateProfileString(const char *section, const char *key,
                                             const char *defaultValue, char *destination,
                                             uint32_t size, const char *file);

/** GetPrivateProfileString on the configuration file. Last error: as it leaves it.
 *  Lock: no, but what it calls. */
WEXELXI_API uint32_t GetProfileString(const char *section, const char *key,
                                      const char *defaultValue, char *destination, uint32_t size);

/** Lists the lines of all sections of a name, each with its NUL, and one more NUL behind them.
 *  Here a line that begins with '[' ends the section too.
 *  @param section      the section's name.
 *  @param destination  receives the list; its first byte is always stored.
 *  @param size         bytes at destination; 0 and 1 give 0.
 *  @param file         the file's name; null gives 0.
 *  @return bytes written without the last NUL; size - 2 if not all lines fitted, and those that
 *          did are there; 0 if there are none. Last error: see above. Lock: yes. */
WEXELXI_API uint32_t GetPrivateProfileSection(const char *section, char *destination, uint32_t size,
                                              const char *file);

/** GetPrivateProfileSection on the configuration file. Last error: as it leaves it.
 *  Lock: no, but what it calls. */
WEXELXI_API uint32_t GetProfileSection(const char *section, char *destination, uint32_t size);

/** Writes a value: in place of the old line, or at the end of the last section of that name, or
 *  in a new section at the end of the file. Every other byte of the file stays. At every moment
 *  the old text or the new one stands there whole, and other processes' writes of the same file
 *  wait for each other, at most 200 ms.
 *  @param section  the section's name.
 *  @param key      the key's name.
 *  @param value    the value; null writes nothing.
 *  @param file     the file's name, made if it is missing; null gives 0.
 *  @return TRUE, or FALSE if the file could not be opened for reading and writing, or not read.
 *  Last error: 0; the number of the open that failed; 8 for no memory; 31 if it could not be read,
 *  or if the disk refused the new text and the old one stands. Lock: yes. */
WEXELXI_API BOOL WritePrivateProfileString(const char *section, const char *key, const char *value,
                                           const char *file);

/** WritePrivateProfileString on the configuration file. Last error: as it leaves it.
 *  Lock: no, but what it calls. */
WEXELXI_API BOOL WriteProfileString(const char *section, const char *key, const char *value);

/** Frees the cache. FreeLib calls it last, when the lock is gone. Last error: unchanged. Lock: no.
 */
WEXELXI_API void TermIni(void);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
