// CopyFile. The kernel copies what it can; whatever it leaves, from nothing to all, goes through a
// buffer, which so meets every end and every error.
#include <cstdio>
#include <sys/stat.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "files/kernel_copy.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

bool OpensAsExisting(const char *name)
{
    const OwnedHandle handle = OpenOwned(name, GENERIC_READ, OPEN_EXISTING);
    return handle && GetLastError() != ERROR_FILE_NOT_FOUND;
}

// By device and inode, so however the two are named.
bool IsSameFile(HANDLE source, const char *target)
{
    struct stat from;
    struct stat to;
    return fstat(fileno(HandleToStream(source)), &from) == 0 && stat(target, &to) == 0 &&
           from.st_dev == to.st_dev && from.st_ino == to.st_ino;
}

// Gives the last error, 0 if all went well.
uint32_t CopyBytes(HANDLE from, HANDLE to)
{
    FILE *source = HandleToStream(from);
    FILE *target = HandleToStream(to);
    CopyInKernel(fileno(source), fileno(target));
    char buffer[65536];
    while (!feof(source)) {
        uint32_t got = 0;
        uint32_t put = 0;
        ReadFile(from, buffer, sizeof buffer, &got, nullptr);
        if (got < sizeof buffer && !feof(source))
            return ERROR_READ_FAULT;
        if (got > 0)
            WriteFile(to, buffer, got, &put, nullptr);
        if (put < got)
            return ERROR_WRITE_FAULT;
    }
    // What the target's stream still holds of a small file counts as written only now.
    return fflush(target) == 0 ? ERROR_SUCCESS : ERROR_WRITE_FAULT;
}

uint32_t CopyContents(const char *source, const char *target)
{
    const OwnedHandle from = OpenOwned(source, GENERIC_READ, OPEN_EXISTING);
    if (!from)
        return GetLastError();
    if (IsSameFile(from.get(), target))
        return ERROR_SHARING_VIOLATION;
    const OwnedHandle to = OpenOwned(target, GENERIC_WRITE, CREATE_ALWAYS);
    if (!to)
        return GetLastError();
    return CopyBytes(from.get(), to.get());
}

} // namespace

BOOL CopyFile(const char *source, const char *target, BOOL failIfExists)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (OpensAsExisting(target) && failIfExists)
        return Fail(ERROR_FILE_EXISTS);
    const uint32_t attributes = GetFileAttributes(source);
    // Both handles are closed, which stores a last error, before the outcome is stored.
    if (const uint32_t error = CopyContents(source, target))
        return Fail(error);
    SetFileAttributes(target, attributes);
    return TRUE;
}
