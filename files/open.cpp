// CreateFile: a port by its device, everything else by its name through a standard I/O stream.
#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "files/port_io.h"
#include "wexelxi/comm.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

// A command that the host starts gets none of these: "e". Only "x" cannot empty what is there.
const char *StreamMode(uint32_t access, uint32_t disposition)
{
    const bool writes = access & GENERIC_WRITE;
    switch (disposition) {
    case CREATE_NEW:
        return writes ? "w+xe" : "wxe";
    case CREATE_ALWAYS:
        return writes ? "w+e" : "we";
    default:
        return writes ? "r+e" : "re";
    }
}

Stream OpenFile(const char *path, uint32_t access, uint32_t disposition)
{
    Stream stream(fopen(path, StreamMode(access, disposition)));
    if (stream)
        return stream;
    SetUnixError();
    // The first try's last error stays behind a good second one.
    if (disposition == OPEN_ALWAYS && GetLastError() == ERROR_FILE_NOT_FOUND)
        return OpenFile(path, access, CREATE_ALWAYS);
    return nullptr;
}

// CreateFile, of which only the caller knows whether a search is to refuse the name.
HANDLE Open(const char *name, uint32_t access, uint32_t disposition, bool searches)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    char device[255];
    // Upper-cases the name in place if it is a port's, as hosts know it.
    const uint32_t portType = GetPortName(const_cast<char *>(name), device, sizeof device);
    if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY)
        return INVALID_HANDLE_VALUE;
    const char *path = portType ? device : name;
    if (searches && DoesFileExist(path))
        return FailWith(ERROR_FILE_EXISTS, INVALID_HANDLE_VALUE);
    // The record comes first: without it a file that exists is not to be emptied.
    NewHandle record = MakeHandle(HANDLE_FILE);
    if (!record)
        return FailWith(ERROR_GEN_FAILURE, INVALID_HANDLE_VALUE);
    Stream stream = portType ? OpenPort(path) : OpenFile(path, access, disposition);
    if (!stream)
        return INVALID_HANDLE_VALUE;
    record->stream = stream.release();
    record->portType = portType;
    return record.release();
}

} // namespace

namespace wexelxi {

OwnedHandle OpenOwned(const char *name, uint32_t access, uint32_t disposition)
{
    HANDLE handle = Open(name, access, disposition, false);
    return OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

} // namespace wexelxi

HANDLE CreateFile(const char *name, uint32_t access, uint32_t, LPVOID, uint32_t disposition,
                  uint32_t, HANDLE)
{
    return Open(name, access, disposition, disposition == CREATE_NEW);
}
