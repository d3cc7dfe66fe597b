// Opening, reading, writing and measuring through file handles. The stream keeps the position and
// the buffer; the record adds only the port type, which decides the road.
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "files/port_io.h"
#include "wexelxi/comm.h"
#include "wexelxi/files.h"
#include "wexelxi/find.h"

using namespace wexelxi;

namespace {

HANDLE NewFileHandle(Stream stream, uint32_t portType)
{
    NewHandle record = MakeHandle(HANDLE_FILE);
    if (!record)
        return FailWith(ERROR_GEN_FAILURE, INVALID_HANDLE_VALUE);
    record->stream = stream.release();
    record->portType = portType;
    return record.release();
}

// A command that the host starts gets none of these: "e".
const char *StreamMode(bool fresh, uint32_t access)
{
    if (access & GENERIC_WRITE)
        return fresh ? "w+e" : "r+e";
    return fresh ? "we" : "re";
}

Stream OpenStream(const char *path, bool fresh, uint32_t access)
{
    Stream stream(fopen(path, StreamMode(fresh, access)));
    if (!stream)
        SetUnixError();
    return stream;
}

Stream OpenFile(const char *path, uint32_t access, uint32_t disposition)
{
    const bool fresh = disposition == CREATE_NEW || disposition == CREATE_ALWAYS;
    Stream stream = OpenStream(path, fresh, access);
    // The first try's last error stays behind a good second one.
    if (!stream && disposition == OPEN_ALWAYS && GetLastError() == ERROR_FILE_NOT_FOUND)
        stream = OpenStream(path, true, access);
    return stream;
}

// Reads until count bytes are there, the file ends or the platform fails; a signal is no failure.
uint32_t ReadStream(FILE *stream, void *buffer, uint32_t count)
{
    fflush(stream); // also drops what was read ahead
    auto *bytes = static_cast<char *>(buffer);
    size_t total = 0;
    for (;;) {
        errno = 0;
        total += fread(bytes + total, 1, count - total, stream);
        if (total == count || !ferror(stream) || errno != EINTR)
            return static_cast<uint32_t>(total);
        clearerr(stream);
    }
}

} // namespace

HANDLE CreateFile(const char *name, uint32_t access, uint32_t, LPVOID, uint32_t disposition,
                  uint32_t, HANDLE)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    char device[255];
    // Upper-cases the name in place if it is a port's, as hosts know it.
    const uint32_t portType = GetPortName(const_cast<char *>(name), device, sizeof device);
    const char *path = portType ? device : name;
    if (disposition == CREATE_NEW && DoesFileExist(path))
        return FailWith(ERROR_FILE_EXISTS, INVALID_HANDLE_VALUE);
    Stream stream = portType ? OpenPort(path) : OpenFile(path, access, disposition);
    if (!stream)
        return INVALID_HANDLE_VALUE;
    return NewFileHandle(std::move(stream), portType);
}

BOOL ReadFile(HANDLE handle, LPVOID buffer, uint32_t count, uint32_t *bytesRead, LPVOID)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return FALSE;
    const bool isLine = IsLineDevice(GetHandlePortType(handle));
    const LineTimeoutCleared cleared(isLine ? handle : nullptr);
    SetLastError(ERROR_SUCCESS);
    const uint32_t received =
        isLine ? ReadLineDevice(stream, buffer, count) : ReadStream(stream, buffer, count);
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

BOOL SetFilePointerEx(HANDLE handle, int64_t offset, int64_t *position, uint32_t method)
{
    LockScope lock;
    FILE *stream = HandleToStream(handle);
    if (!stream)
        return Fail(ERROR_INVALID_HANDLE);
    SetLastError(ERROR_SUCCESS);
    const int origin = method == FILE_CURRENT ? SEEK_CUR : method == FILE_END ? SEEK_END : SEEK_SET;
    if (fseek(stream, offset, origin) != 0)
        return FailWithErrno();
    if (position)
        *position = ftell(stream);
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
    SetLastError(ERROR_SUCCESS);
    int64_t saved = 0;
    if (!SetFilePointerEx(handle, 0, &saved, FILE_CURRENT))
        return FALSE;
    const BOOL measured = SetFilePointerEx(handle, 0, size, FILE_END);
    const BOOL restored = SetFilePointerEx(handle, saved, nullptr, FILE_BEGIN);
    return measured && restored;
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
    SetLastError(ERROR_SUCCESS);
    int64_t position = 0;
    if (!SetFilePointerEx(handle, 0, &position, FILE_CURRENT))
        return FALSE;
    return ftruncate(fileno(stream), position) == 0 ? TRUE : FailWithErrno();
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

static BOOL LockFileRange(HANDLE handle, uint32_t offsetLow, uint32_t offsetHigh,
                          uint32_t lengthLow, uint32_t lengthHigh, short type)
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

BOOL DoesFileExist(const char *name)
{
    LockScope lock;
    WIN32_FIND_DATA data;
    HANDLE find = FindFirstFile(name, &data);
    return find == INVALID_HANDLE_VALUE ? FALSE : FindClose(find);
}

// The calls of the older interface that have no work here; they share the lock and the cleared last
// error.
static uint32_t DoNothing()
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return 0;
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
