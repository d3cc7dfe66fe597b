// The one read timeout, which lives in the line's settings; properties; and the purge that is none.
#include "comm/line.h"
#include "core/lock.h"

using namespace wexelxi;

BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS *timeouts)
{
    LockScope lock;
    return WithLine(port, [&](int, const termios &line) -> BOOL {
        timeouts->VTimeTenths = line.c_cc[VTIME];
        return TRUE;
    });
}

BOOL SetCommTimeouts(HANDLE port, const COMMTIMEOUTS *timeouts)
{
    LockScope lock;
    return WithLine(port, [&](int descriptor, termios &line) -> BOOL {
        line.c_cc[VMIN] = 0;
        line.c_cc[VTIME] = static_cast<cc_t>(timeouts->VTimeTenths);
        return ApplyToLine(descriptor, line);
    });
}

BOOL GetCommProperties(HANDLE port, COMMPROP *properties)
{
    LockScope lock;
    properties->dwReserved = 0;
    properties->dwProvSubType = GetHandlePortType(port);
    return TRUE;
}

BOOL PurgeComm(HANDLE, uint32_t)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return FALSE;
}
