// The line behind a port's handle, as the settings calls find it.
#pragma once

#include <cstdio>
#include <termios.h>

#include "core/last_error.h"
#include "files/handle.h"
#include "wexelxi/comm.h"

namespace wexelxi {

// Runs work(descriptor, settings) on the line behind a handle with the settings that it has, and
// gives its result. FALSE with the last error set on another handle, or if the line cannot be
// asked; TRUE at once on a parallel port, which has no settings.
template <typename Work>
BOOL WithLine(HANDLE port, Work work)
{
    FILE *stream = HandleToStream(port);
    if (!stream)
        return FALSE;
    if (GetHandlePortType(port) == PST_PARALLELPORT)
        return TRUE;
    const int descriptor = fileno(stream);
    termios line;
    if (tcgetattr(descriptor, &line) != 0)
        return FailWithErrno();
    return work(descriptor, line);
}

// Hands settings to the line, once its output has left.
inline BOOL ApplyToLine(int descriptor, const termios &line)
{
    return tcsetattr(descriptor, TCSADRAIN, &line) == 0 ? BOOL{TRUE} : FailWithErrno();
}

} // namespace wexelxi
