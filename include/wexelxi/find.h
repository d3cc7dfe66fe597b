/* Directory searches and the wildcard matchers. */
#ifndef WEXELXI_FIND_H
#define WEXELXI_FIND_H

#include "time.h"
#include "types.h"

/** \defgroup find Directory searches
 *  A search is one directory and one pattern, in the order of the directory itself. '/' is the only
 *  separator, and a pattern may stand behind the last one only. Names compare exactly, or with case
 *  folded when gFileMode is not 0.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** What a search tells of an entry. The times are whole seconds. */
typedef struct WIN32_FIND_DATA {
    uint32_t dwFileAttributes;   /**< as GetFileAttributes: 0 if the entry cannot be examined. */
    FILETIME ftCreationTime;     /**< last change of the entry's status. */
    FILETIME ftLastAccessTime;   /**< last read. */
    FILETIME ftLastWriteTime;    /**< last write. */
    uint32_t nFileSizeHigh;      /**< size in bytes, high half; 0 for a directory. */
    uint32_t nFileSizeLow;       /**< size in bytes, low half; 0 for a directory. */
    uint32_t dwReserved0;        /**< 0. */
    uint32_t dwReserved1;        /**< 0. */
    char cFileName[4096];        /**< the entry's name without its directory. */
    char cAlternateFileName[14]; /**< empty. */
} WIN32_FIND_DATA;

WEXELXI_LAYOUT(sizeof(WIN32_FIND_DATA) == 4156);
WEXELXI_FIELD(WIN32_FIND_DATA, dwFileAttributes, 0);
WEXELXI_FIELD(WIN32_FIND_DATA, ftCreationTime, 4);
WEXELXI_FIELD(WIN32_FIND_DATA, ftLastAccessTime, 12);
WEXELXI_FIELD(WIN32_FIND_DATA, ftLastWriteTime, 20);
WEXELXI_FIELD(WIN32_FIND_DATA, nFileSizeHigh, 28);
WEXELXI_FIELD(WIN32_FIND_DATA, nFileSizeLow, 32);
WEXELXI_FIELD(WIN32_FIND_DATA, dwReserved0, 36);
WEXELXI_FIELD(WIN32_FIND_DATA, dwReserved1, 40);
WEXELXI_FIELD(WIN32_FIND_DATA, cFileName, 44);
WEXELXI_FIELD(WIN32_FIND_DATA, cAlternateFileName, 4140);

/** What a search handle points to; a guarded block of the library's. */
typedef struct FILfindData {
    char *path;   /**< the directory to list. */
    void **dir;   /**< a guarded block that starts with its DIR pointer; null while not open. */
    char *filter; /**< the pattern; null for a listing of path itself. */
} FILfindData;

WEXELXI_LAYOUT(sizeof(FILfindData) == 24);
WEXELXI_FIELD(FILfindData, path, 0);
WEXELXI_FIELD(FILfindData, dir, 8);
WEXELXI_FIELD(FILfindData, filter, 16);

/** Starts a search and tells its first entry. A name that can be opened as a directory lists it:
 *  the names are its entries, "." and ".." among them, while attributes, times and size are all
 *  those of the directory. Any other name is searched for in its directory, with the part behind
 *  the last '/' as the pattern; names of at most two characters that begin with a dot are then
 *  never found.
 *  @param name  a directory, or a name with or without wildcards (see CheckFilter).
 *  @param data  receives the entry. An entry that cannot be examined, such as a dangling link,
 *               keeps what the record held in its times and size.
 *  @return the search, to be ended with FindClose, or INVALID_HANDLE_VALUE.
 *  Last error: 0, or 31 for an entry that cannot be examined (both found); 2; 8 (no memory).
 *  Lock: yes. */
WEXELXI_API HANDLE FindFirstFile(const char *name, WIN32_FIND_DATA *data);

/** Tells the next entry of a search.
 *  @return TRUE; FALSE with last error 0 at the end, and so at every later call.
 *  Last error: 0, or 31 for an entry that cannot be examined (TRUE); 2 (handle 0 or -1).
 *  Lock: yes. */
WEXELXI_API BOOL FindNextFile(HANDLE find, WIN32_FIND_DATA *data);

/** Ends a search. Last error: 0; 31 (handle 0 or -1). Lock: yes. */
WEXELXI_API BOOL FindClose(HANDLE find);

/** Closes a search's directory, frees its texts and counts it off gFINDFILE; the record itself is
 *  left to GlobalFree. FindClose does both. Last error: unchanged. Lock: yes. */
WEXELXI_API void freeFILfindData(FILfindData *find);

/** Matches a name against a pattern. '*' runs to the first character that equals the one behind it,
 *  for good, and that one is literal, also a '?'; a '*' at the end needs at least one character to
 *  match. '?' is any one character. The pattern "*.*" matches every name.
 *  @param caseSensitive  0 folds case as toupper does.
 *  @return 1 for a match, else 0. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t CheckFilter(const char *pattern, const char *name, uint32_t caseSensitive);

/** Matches a name against a list of patterns of any length; an empty piece matches nothing.
 *  @param separator  stands between two patterns.
 *  @return 1 if any matches, else 0. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t CheckMultiFilter(const char *list, const char *name, char separator,
                                     uint32_t caseSensitive);

/** Searches that are open. */
WEXELXI_API extern int32_t gFINDFILE;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
