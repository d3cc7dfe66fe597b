// Attributes of files and directories, and what makes, moves and removes them by name.
#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "files/attributes.h"
#include "files/path_text.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

// The result of a platform call that gives 0 for success.
BOOL Done(int result)
{
    return result == 0 ? BOOL{TRUE} : FailWithErrno();
}

} // namespace

uint32_t GetFileAttributes(const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    struct stat status;
    if (stat(name, &status) != 0)
        return FailWith(ERROR_GEN_FAILURE, 0u);
    return AttributesFromMode(status.st_mode);
}

BOOL SetFileAttributes(const char *name, uint32_t attributes)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    struct stat status;
    if (stat(name, &status) != 0)
        return FailWithErrno();
    mode_t mode = status.st_mode & 07777;
    if (attributes & FILE_ATTRIBUTE_READONLY)
        mode = (mode & ~mode_t{0666}) | 0444;
    else
        mode |= 0666;
    return Done(chmod(name, mode));
}

BOOL DeleteFile(const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return Done(remove(name));
}

BOOL CreateDirectory(const char *name, LPVOID)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return Done(mkdir(name, 0777));
}

BOOL RemoveDirectory(const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return Done(rmdir(name));
}

BOOL MoveFile(const char *oldName, const char *newName)
{
    LockScope lock;
    return OrNoMemory(BOOL{FALSE}, [&] {
        std::string target = newName;
        // Only names with exactly these attributes: a read-only directory moves as a file does, and
        // is no target. What the second question leaves as last error stays behind a good move.
        if (GetFileAttributes(oldName) != FILE_ATTRIBUTE_DIRECTORY &&
            GetFileAttributes(newName) == FILE_ATTRIBUTE_DIRECTORY) {
            const PathParts parts = SplitPath(oldName, true, true);
            target.append("/").append(parts.name).append(parts.extension);
        }
        return Done(rename(oldName, target.c_str()));
    });
}
