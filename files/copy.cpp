// CopyFile. The kernel copies what it can; whatever it leaves, from nothing to all, goes through a
// buffer, which so meets every end and every error.
#include <cerrno>
#include <cstdio>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

// Whether the target is there for CopyFile's flag: it opens. Stores why it does not.
bool OpensAsExisting(const char *target)
{
    const OwnedHandle handle = OpenOwned(target, GENERIC_READ, OPEN_EXISTING);
    return handle && GetLastError() != ERROR_FILE_NOT_FOUND;
}

// Whether what stands at a name that does not open is a link to nothing, which a copy fills.
bool IsDanglingLink(const char *name)
{
    struct stat link;
    return GetLastError() == ERROR_FILE_NOT_FOUND && lstat(name, &link) == 0 &&
           S_ISLNK(link.st_mode);
}

OwnedHandle OpenTarget(const char *target, const struct stat &source, bool mustBeNew)
{
    if (mustBeNew)
        return OpenOwned(target, GENERIC_WRITE, CREATE_NEW);
    // A folder opens and then cannot be read: nothing is emptied for that.
    const uint32_t disposition = S_ISDIR(source.st_mode) ? OPEN_ALWAYS : CREATE_ALWAYS;
    return OpenOwned(target, GENERIC_WRITE, disposition);
}

struct Range {
    off_t start, end;
};

// The next run of data from a place on; an empty one at the size if only a hole is left. Nothing if
// the file system does not tell.
std::optional<Range> NextData(int source, off_t from, off_t size)
{
    const off_t start = lseek(source, from, SEEK_DATA);
    if (start < 0)
        return errno == ENXIO ? std::optional(Range{size, size}) : std::nullopt;
    const off_t end = lseek(source, start, SEEK_HOLE);
    return end < 0 ? std::nullopt : std::optional(Range{start, end});
}

// Copies one range to the same place; gives where that ended.
off_t CopyRange(int source, int target, Range range)
{
    off_t from = range.start;
    off_t to = range.start;
    while (from < range.end) {
        const auto rest = static_cast<size_t>(range.end - from);
        const ssize_t copied = copy_file_range(source, &from, target, &to, rest, 0);
        if (copied == 0 || (copied < 0 && errno != EINTR))
            break;
    }
    return from;
}

// Copies what the kernel copies to an empty file, data range by data range, so that holes stay;
// gives how far that went. Nothing here is an error: the caller meets the cause.
off_t CopyInKernel(int source, int target, off_t size)
{
    off_t at = 0;
    while (at < size) {
        const std::optional<Range> data = NextData(source, at, size);
        if (!data || (data->start == size && ftruncate(target, size) != 0))
            break;
        at = CopyRange(source, target, *data);
        if (at < data->end)
            break;
    }
    return at;
}

// Each of these gives the last error, 0 if all went well.

// Copies what the kernel copies of an ordinary file to another, and goes to where that ends.
uint32_t CopyAtOnce(int source, int target)
{
    struct stat from;
    struct stat to;
    if (fstat(source, &from) != 0 || !S_ISREG(from.st_mode) || fstat(target, &to) != 0 ||
        !S_ISREG(to.st_mode))
        return ERROR_SUCCESS;
    const off_t end = CopyInKernel(source, target, from.st_size);
    const bool isThere = lseek(source, end, SEEK_SET) == end && lseek(target, end, SEEK_SET) == end;
    return isThere ? ERROR_SUCCESS : ERROR_READ_FAULT;
}

uint32_t CopyBytes(HANDLE from, HANDLE to)
{
    FILE *source = HandleToStream(from);
    FILE *target = HandleToStream(to);
    if (const uint32_t error = CopyAtOnce(fileno(source), fileno(target)))
        return error;
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

uint32_t CopyContents(const char *source, const char *target, bool mustBeNew)
{
    const OwnedHandle from = OpenOwned(source, GENERIC_READ, OPEN_EXISTING);
    if (!from)
        return GetLastError();
    // The same file, by device and inode however the two are named, is not to be emptied.
    struct stat here;
    struct stat there = {};
    if (fstat(fileno(HandleToStream(from.get())), &here) != 0 ||
        (stat(target, &there) != 0 && errno != ENOENT)) {
        SetUnixError();
        return GetLastError();
    }
    if (here.st_dev == there.st_dev && here.st_ino == there.st_ino)
        return ERROR_SHARING_VIOLATION;
    const OwnedHandle to = OpenTarget(target, here, mustBeNew);
    if (!to)
        return GetLastError();
    return CopyBytes(from.get(), to.get());
}

} // namespace

BOOL CopyFile(const char *source, const char *target, BOOL failIfExists)
{
    LockScope lock;
    if (failIfExists && OpensAsExisting(target))
        return Fail(ERROR_FILE_EXISTS);
    // What could not be asked may be there, and so may what another process makes meanwhile; what
    // may not be read does not open for the copy either.
    const bool mustBeNew =
        failIfExists && GetLastError() != ERROR_ACCESS_DENIED && !IsDanglingLink(target);
    const uint32_t attributes = GetFileAttributes(source);
    // Both handles are closed, which stores a last error, before the outcome is stored.
    if (const uint32_t error = CopyContents(source, target, mustBeNew))
        return Fail(error);
    SetFileAttributes(target, attributes);
    return TRUE;
}
