/* Path arithmetic and the current directory. */
#ifndef WEXELXI_PATHS_H
#define WEXELXI_PATHS_H

#include "types.h"

/** \defgroup paths Paths
 *  Paths are POSIX paths: '/' is the only separator, and a backslash or a drive letter is an
 *  ordinary part of a name. The normal form is lexical: no link is followed, nothing need exist.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** Makes a path absolute and normal: no ".", no "..", no repeated and no trailing slash. Only the
 *  empty path, which stands for the current directory, keeps a '/' at its end.
 *  @param path    the path; null gives 0.
 *  @param size    bytes at output; a longer form is cut to size - 1 characters.
 *  @param output  receives the form; null gives 0.
 *  @return the length of what output received. 0, with output untouched, if the form exceeds 4095
 *          characters or the path is relative to a current directory of more than 4092.
 *  Last error: 0; 16 (the current directory could not be read; if it no longer exists, a relative
 *  path then counts from the root); 8 (no memory). Lock: yes. */
WEXELXI_API uint32_t GetFilePath(const char *path, uint32_t size, char *output);

/** As GetFilePath, and finds the file part.
 *  @param filePart  receives the address in output behind the last '/'; not written if the result
 *                   is 0. May be null.
 *  @return as GetFilePath. Last error: as GetFilePath. Lock: yes. */
WEXELXI_API uint32_t GetFullPathName(const char *path, uint32_t size, char *output,
                                     char **filePart);

/** Cuts a path into drive (through the first ':'), directory (through the last '/'), name and
 *  extension (from the last '.' behind that '/'). A ':' behind the last '/' ends no drive, and a
 *  dot in the drive starts no extension. The buffers must have the room; each may be null, and
 *  what it would have held then stays in the part behind it. Without name, extension is not
 *  written.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API void splitpath(const char *path, char *drive, char *directory, char *name,
                           char *extension);

/** Tells the current directory.
 *  @param size    bytes at buffer.
 *  @param buffer  receives it with its NUL; null only asks for the size.
 *  @return its length; if it does not fit, nothing is copied and the size needed, with the NUL,
 *          comes back; 0 if it cannot be read. Last error: 0; 16. Lock: yes. */
WEXELXI_API uint32_t GetCurrentDirectory(uint32_t size, char *buffer);

/** Changes the current directory of the process, for all its threads.
 *  @return TRUE if changed. Last error: 0; what SetUnixError makes of the platform's errno.
 *  Lock: yes. */
WEXELXI_API BOOL SetCurrentDirectory(const char *path);

/** Whether a path is a directory, links followed. Last error: 0; 31 (it cannot be examined).
 *  Lock: no, but its work takes it. */
WEXELXI_API BOOL PathIsDirectory(const char *path);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
