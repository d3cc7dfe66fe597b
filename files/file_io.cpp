// Reading, writing, flushing and locking through file handles. The stream keeps the position and
// the buffer; the record adds the port type, which decides the road.
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "files/port_io.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

// Whether the stream's file is an ordinary one; the platform is asked once.
bool IsOrdinaryFile(HandleRecord *record)
{
    struct stat status;
    if (record->fileType == 0 && fstat(fileno(record->stream), &status) == 0)
        record->fileType = status.st_mode & S_IFMT;
    return S_ISREG(record->fileType);
}

// Reads until count bytes are there, the file ends or the platform fails; a signal is no failure.
// Nothing that was read ahead outlives a read, so that of an ordinary file just the bytes wanted
// are read: fflush makes the descriptor's position the stream's. The end of the file, which a
// stream remembers, and every failure are left to the stream.
uint32_t ReadStream(HandleRecord *record, void *buffer, uint32_t count)
{
    FILE *stream = record->stream;
    auto *bytes = static_cast<char *>(buffer);
    size_t total = 0;
    if (fflush(stream) == 0 && !feof(stream) && IsOrdinaryFile(record))
        total = static_cast<size_t>(std::max<ssize_t>(read(fileno(stream), buffer, count), 0));
    while (total < count) {
        errno = 0;
        total += fread(bytes + total, 1, count - total, stream);
        if (!ferror(stream) || errno != EINTR)
            break;
        clearerr(stream);
    }
    return static_cast<uint32_t>(total);
}

// The calls of the older interface that have no work here; they share the lock and the cleared last
// error.
uint32_t DoNothing()
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return 0;
}

BOOL LockFileRange(HANDLE handle, uint32_t offsetLow, uint32_t offsetHigh, uint32_t lengthLow,
                   uint32_t lengthHigh, short type)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return FALSE;
    if (offsetHigh != 0 || lengthHigh != 0)
        return Fail(ERROR_GEN_FAILURE);
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = offsetLow;
    range.l_len = lengthLow;
    SetLastError(ERROR_SUCCESS);
    fcntl(fileno(stream), F_SETLK, &range);
    return TRUE;
}

} // namespace

BOOL ReadFile(HANDLE handle, LPVOID buffer, uint32_t count, uint32_t *bytesRead, LPVOID)
{
    LockScope lock;
    if (!HandleToStream(handle))
        return FALSE;
    SetLastError(ERROR_SUCCESS);
    HandleRecord *record = HandleToRecord(handle);
    const uint32_t received = IsLineDevice(record->portType) ? ReadLineDevice(handle, buffer, count)
                                                             : ReadStream(record, buffer, count);
    if (bytesRead)
        *bytesRead = received;
    return TRUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, uint32_t count, uint32_t *bytesWritten, LPVOID)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return FALSE;
    SetLastError(ERROR_SUCCESS);
    const uint32_t total = IsLineDevice(GetHandlePortType(handle))
                               ? WriteLineDevice(stream, buffer, count)
                               : static_cast<uint32_t>(fwrite(buffer, 1, count, stream));
    if (bytesWritten)
        *bytesWritten = total;
    return total == count ? TRUE : Fail(ERROR_WRITE_FAULT);
}

BOOL FlushFileBuffers(HANDLE handle)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return FALSE;
    SetLastError(ERROR_SUCCESS);
    fflush(stream);
    return TRUE;
}

BOOL LockFile(HANDLE handle, uint32_t offsetLow, uint32_t offsetHigh, uint32_t lengthLow,
              uint32_t lengthHigh)
{
    return LockFileRange(handle, offsetLow, offsetHigh, lengthLow, lengthHigh, F_WRLCK);
}

BOOL UnlockFile(HANDLE handle, uint32_t offsetLow, uint32_t offsetHigh, uint32_t lengthLow,
                uint32_t lengthHigh)
{
    return LockFileRange(handle, offsetLow, offsetHigh, lengthLow, lengthHigh, F_UNLCK);
}

uint32_t _lopen(const char *, int32_t)
{
    return DoNothing();
}

uint32_t _lread(HANDLE, LPVOID, uint32_t)
{
    return DoNothing();
}

int32_t _llseek(HANDLE, int32_t, int32_t)
{
    return static_cast<int32_t>(DoNothing());
}
