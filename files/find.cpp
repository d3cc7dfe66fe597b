// Searches: one open directory and one pattern behind each handle. A plain name is not looked for
// among all entries: the open directory is asked for it once.
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/owners.h"
#include "files/attributes.h"
#include "files/wildcard.h"
#include "wexelxi/find.h"
#include "wexelxi/memory.h"

using namespace wexelxi;

int32_t gFINDFILE = 0;

namespace {

// The block that FILfindData::dir points to.
struct FindDir {
    DIR *directory;
    bool isAnswered; // the one entry that a plain name can match has been told
};
static_assert(offsetof(FindDir, directory) == 0);

FindDir *DirOf(const FILfindData *find)
{
    return reinterpret_cast<FindDir *>(find->dir);
}

// An entry that a search has come to, with its status where finding it told that too.
struct Entry {
    const char *name = nullptr;
    bool examined = false;
    struct stat status = {};
};

// For searches that the caller opens and closes under the lock.
void CloseFindDir(FILfindData *find)
{
    AssertLockHeld();
    if (!find->dir)
        return;
    closedir(DirOf(find)->directory);
    GlobalFree(find->dir);
    find->dir = nullptr;
}

// False with errno if it does not open.
bool OpenFindDir(FILfindData *find)
{
    AssertLockHeld();
    Directory directory(opendir(find->path));
    if (!directory)
        return false;
    find->dir = static_cast<void **>(GlobalAlloc(GLOBAL_ZEROFILL, sizeof(FindDir)));
    if (!find->dir)
        return false;
    DirOf(find)->directory = directory.release();
    return true;
}

// Turns the name in path into a directory and a pattern. False with errno.
bool SplitPattern(FILfindData *find)
{
    char *slash = strrchr(find->path, '/');
    if (!slash) {
        find->filter = find->path;
        find->path = strdup(".");
        return find->path;
    }
    find->filter = strdup(slash + 1);
    slash[slash == find->path ? 1 : 0] = '\0';
    return find->filter;
}

// Opens the name as a directory, or else its directory for the pattern in it. False with errno.
bool OpenSearch(FILfindData *find, const char *name)
{
    find->path = strdup(name);
    if (find->path && OpenFindDir(find))
        return true;
    return errno != ENOMEM && SplitPattern(find) && OpenFindDir(find);
}

bool Accepts(const char *filter, const char *name)
{
    if (!filter)
        return true;
    if (name[0] == '.' && (name[1] == '\0' || name[2] == '\0'))
        return false;
    return MatchesWildcard(filter, name, gFileMode == 0);
}

// Asks the directory for the one entry that a plain name can match. True if that settled it.
bool LookUpPlainName(DIR *directory, const char *name, Entry &entry)
{
    if (fstatat(dirfd(directory), name, &entry.status, AT_SYMLINK_NOFOLLOW) == 0) {
        entry.name = name;
        entry.examined = !S_ISLNK(entry.status.st_mode);
        return true;
    }
    // A directory that may be listed but not entered still shows the name to a scan.
    return errno == ENOENT || errno == ENAMETOOLONG;
}

Entry NextEntry(const FILfindData &find)
{
    Entry entry;
    while (!DirOf(&find)->isAnswered && !entry.name) {
        const dirent *next = readdir(DirOf(&find)->directory);
        if (!next)
            break;
        if (Accepts(find.filter, next->d_name))
            entry.name = next->d_name;
    }
    return entry;
}

Entry FirstEntry(const FILfindData &find)
{
    Entry entry;
    if (!find.filter || gFileMode != 0 || !IsPlainName(find.filter) ||
        !Accepts(find.filter, find.filter) ||
        !LookUpPlainName(DirOf(&find)->directory, find.filter, entry))
        return NextEntry(find);
    DirOf(&find)->isAnswered = true;
    return entry;
}

FILETIME FileTimeFromStatus(time_t seconds)
{
    FILETIME time;
    UnixTimeToFileTime(static_cast<uint32_t>(seconds), &time);
    return time;
}

// A listing of a directory describes that directory with each of its entries.
bool Examine(const FILfindData &find, Entry &entry)
{
    if (entry.examined)
        return true;
    if (!find.filter)
        return stat(find.path, &entry.status) == 0;
    char path[4096 + sizeof(dirent::d_name)]; // that of a directory which opened, and a name in it
    snprintf(path, sizeof path, "%s/%s", find.path, entry.name);
    return stat(path, &entry.status) == 0;
}

// False at the end of the search.
bool Describe(const FILfindData &find, Entry entry, WIN32_FIND_DATA *data)
{
    if (!entry.name)
        return false;
    strcpy(data->cFileName, entry.name);
    data->cAlternateFileName[0] = '\0';
    if (!Examine(find, entry)) {
        data->dwFileAttributes = 0;
        SetLastError(ERROR_GEN_FAILURE);
        return true;
    }
    const struct stat &status = entry.status;
    const uint64_t size = S_ISDIR(status.st_mode) ? 0 : static_cast<uint64_t>(status.st_size);
    data->dwFileAttributes = AttributesFromMode(status.st_mode);
    data->nFileSizeHigh = static_cast<uint32_t>(size >> 32);
    data->nFileSizeLow = static_cast<uint32_t>(size);
    data->dwReserved0 = 0;
    data->dwReserved1 = 0;
    data->ftCreationTime = FileTimeFromStatus(status.st_ctime);
    data->ftLastAccessTime = FileTimeFromStatus(status.st_atime);
    data->ftLastWriteTime = FileTimeFromStatus(status.st_mtime);
    return true;
}

bool IsFindHandle(HANDLE find)
{
    return find && find != INVALID_HANDLE_VALUE;
}

} // namespace

HANDLE FindFirstFile(const char *name, WIN32_FIND_DATA *data)
{
    LockScope lock;
    if (!name)
        return FailWith(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    auto *find = static_cast<FILfindData *>(GlobalAlloc(GLOBAL_ZEROFILL, sizeof(FILfindData)));
    if (!find)
        return INVALID_HANDLE_VALUE;
    gFINDFILE++;
    const bool opened = OpenSearch(find, name);
    const bool starved = !opened && errno == ENOMEM;
    if (opened && Describe(*find, FirstEntry(*find), data))
        return find;
    FindClose(find);
    return FailWith(starved ? ERROR_NOT_ENOUGH_MEMORY : ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
}

BOOL FindNextFile(HANDLE handle, WIN32_FIND_DATA *data)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!IsFindHandle(handle))
        return Fail(ERROR_FILE_NOT_FOUND);
    const auto *find = static_cast<FILfindData *>(handle);
    // The end is told by last error 0.
    return find->dir && Describe(*find, NextEntry(*find), data);
}

BOOL FindClose(HANDLE handle)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!IsFindHandle(handle))
        return Fail(ERROR_GEN_FAILURE);
    auto *find = static_cast<FILfindData *>(handle);
    freeFILfindData(find);
    GlobalFree(find);
    return TRUE;
}

void freeFILfindData(FILfindData *find)
{
    LockScope lock;
    CloseFindDir(find);
    free(find->path);
    free(find->filter);
    find->path = nullptr;
    find->filter = nullptr;
    gFINDFILE--;
}

int32_t CheckFilter(const char *pattern, const char *name, uint32_t caseSensitive)
{
    return MatchesWildcard(pattern, name, caseSensitive != 0);
}

int32_t CheckMultiFilter(const char *list, const char *name, char separator, uint32_t caseSensitive)
{
    return MatchesAnyWildcard(list, name, separator, caseSensitive != 0);
}
