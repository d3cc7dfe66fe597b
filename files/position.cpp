// Positions and sizes. The descriptor's own position serves: once a stream has handed on what it
// held and dropped what it read ahead (fflush), it knows no position, and the descriptor's is its.
#include <sys/stat.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

// Gives the new position, or -1 with errno.
off_t MoveTo(FILE *stream, off_t offset, int origin)
{
    struct stat status;
    if (fflush(stream) != 0)
        return -1;
    // As a stream does: some files have a size and cannot be sought from their end.
    if (origin == SEEK_END && fstat(fileno(stream), &status) == 0 && S_ISREG(status.st_mode) &&
        !__builtin_add_overflow(offset, status.st_size, &offset))
        origin = SEEK_SET;
    const off_t place = lseek(fileno(stream), offset, origin);
    if (place >= 0)
        clearerr(stream); // what lies behind the end may have changed, as a seek has it
    return place;
}

// The size of an ordinary file, for which nothing need move; -1 for everything else.
off_t SizeWithoutMoving(FILE *stream)
{
    struct stat status;
    if (fflush(stream) != 0 || fstat(fileno(stream), &status) != 0 || !S_ISREG(status.st_mode))
        return -1;
    clearerr(stream);
    return status.st_size;
}

} // namespace

BOOL SetFilePointerEx(HANDLE handle, int64_t offset, int64_t *position, uint32_t method)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return Fail(ERROR_INVALID_HANDLE);
    SetLastError(ERROR_SUCCESS);
    const int origin = method == FILE_CURRENT ? SEEK_CUR : method == FILE_END ? SEEK_END : SEEK_SET;
    const off_t place = MoveTo(stream, offset, origin);
    if (place < 0)
        return FailWithErrno();
    if (position)
        *position = place;
    return TRUE;
}

uint32_t SetFilePointer(HANDLE handle, int32_t offset, int32_t *, uint32_t method)
{
    int64_t position = 0;
    if (!SetFilePointerEx(handle, offset, &position, method))
        return INVALID_SET_FILE_POINTER;
    return static_cast<uint32_t>(position);
}

BOOL GetFileSizeEx(HANDLE handle, int64_t *size)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return Fail(ERROR_INVALID_HANDLE);
    SetLastError(ERROR_SUCCESS);
    if (const off_t told = SizeWithoutMoving(stream); told >= 0) {
        if (size)
            *size = told;
        return TRUE;
    }
    int64_t saved = 0;
    if (!SetFilePointerEx(handle, 0, &saved, FILE_CURRENT))
        return FALSE;
    const BOOL measured = SetFilePointerEx(handle, 0, size, FILE_END);
    return SetFilePointerEx(handle, saved, nullptr, FILE_BEGIN) && measured;
}

uint32_t GetFileSize(HANDLE handle, uint32_t *)
{
    int64_t size = 0;
    if (!GetFileSizeEx(handle, &size))
        return INVALID_FILE_SIZE;
    return static_cast<uint32_t>(size);
}

BOOL SetEndOfFile(HANDLE handle)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return Fail(ERROR_INVALID_HANDLE);
    int64_t position = 0;
    if (!SetFilePointerEx(handle, 0, &position, FILE_CURRENT))
        return FALSE;
    return ftruncate(fileno(stream), position) == 0 ? TRUE : FailWithErrno();
}
