// CreateFile: a port by its device, everything else by its name through a standard I/O stream.
#include "comm/port_text.h"
#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "files/port_io.h"
#include "wexelxi/comm.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace {

enum class Opening { Existing, Emptied, New };

Opening OpeningOf(uint32_t disposition)
{
    if (disposition == CREATE_NEW)
        return Opening::New;
    return disposition == CREATE_ALWAYS ? Opening::Emptied : Opening::Existing;
}

// A command that the host starts gets none of these: "e". Only "x" cannot empty what is there.
const char *StreamMode(Opening opening, uint32_t access)
{
    const bool writes = access & GENERIC_WRITE;
    if (opening == Opening::New)
        return writes ? "w+xe" : "wxe";
    if (opening == Opening::Emptied)
        return writes ? "w+e" : "we";
    return writes ? "r+e" : "re";
}

Stream OpenStream(const char *path, Opening opening, uint32_t access)
{
    Stream stream(fopen(path, StreamMode(opening, access)));
    if (!stream)
        SetUnixError();
    return stream;
}

Stream OpenFile(const char *path, uint32_t access, uint32_t disposition)
{
    Stream stream = OpenStream(path, OpeningOf(disposition), access);
    // The first try's last error stays behind a good second one.
    if (!stream && disposition == OPEN_ALWAYS && GetLastError() == ERROR_FILE_NOT_FOUND)
        stream = OpenStream(path, Opening::Emptied, access);
    return stream;
}

// CreateFile, of which only the caller knows whether a search is to refuse the name.
HANDLE Open(const char *name, uint32_t access, uint32_t disposition, bool searches)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    char device[255];
    uint32_t portType = PST_UNSPECIFIED;
    if (StartsLikePort(name)) {
        // Upper-cases the name in place if it is a port's, as hosts know it.
        portType = GetPortName(const_cast<char *>(name), device, sizeof device);
        if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY)
            return INVALID_HANDLE_VALUE;
    }
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

OwnedHandle Own(HANDLE handle)
{
    return OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

} // namespace

namespace wexelxi {

OwnedHandle OpenOwned(const char *name, uint32_t access, uint32_t disposition)
{
    return Own(CreateFile(name, access, 0, nullptr, disposition, 0, nullptr));
}

OwnedHandle OpenNewOwned(const char *name, uint32_t access)
{
    return Own(Open(name, access, CREATE_NEW, false));
}

} // namespace wexelxi

HANDLE CreateFile(const char *name, uint32_t access, uint32_t, LPVOID, uint32_t disposition,
                  uint32_t, HANDLE)
{
    return Open(name, access, disposition, disposition == CREATE_NEW);
}
