// A line's settings, read, written and built from a text.
#include "comm/dcb_text.h"
#include "comm/line.h"
#include "comm/line_mapping.h"
#include "core/lock.h"

using namespace wexelxi;

BOOL GetCommState(HANDLE port, DCB *settings)
{
    LockScope lock;
    return WithLine(port, [&](int, const termios &line) -> BOOL {
        DcbFromTermios(line, settings);
        return TRUE;
    });
}

BOOL SetCommState(HANDLE port, const DCB *settings)
{
    LockScope lock;
    return WithLine(port, [&](int descriptor, termios &line) -> BOOL {
        if (const uint32_t fault = TermiosFromDcb(*settings, &line))
            return Fail(fault);
        if (!ApplyToLine(descriptor, line))
            return FALSE;
        SetLastError(ERROR_SUCCESS);
        return TRUE;
    });
}

BOOL BuildCommDCB(const char *text, DCB *settings)
{
    LockScope lock;
    if (const uint32_t fault = ParseDcbText(text, settings))
        return Fail(fault);
    return TRUE;
}
