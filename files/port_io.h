// The road of a port: how it is opened, and how a line device is read, written and drained. Ports
// of other kinds are opened here and then go through their stream as files do.
#pragma once

#include <cstdint>
#include <cstdio>

#include "core/owners.h"
#include "wexelxi/types.h"

namespace wexelxi {

// Port types 1 and 3 to 6; 2 is a parallel port, and 0 no port at all.
inline bool IsLineDevice(uint32_t portType)
{
    return portType == 1 || (portType >= 3 && portType <= 6);
}

// Opens a device for reading and writing. On failure null, with the last error set.
Stream OpenPort(const char *path);

// Takes what is waiting on the line behind a handle, in one read that waits for no timeout; 0 also
// if that fails.
uint32_t ReadLineDevice(HANDLE line, void *buffer, uint32_t count);

// Writes until all bytes are on their way or a write makes no progress; gives the bytes written.
uint32_t WriteLineDevice(FILE *stream, const void *buffer, uint32_t count);

// Waits for the output to leave, retrying for at most the seconds of key "Delay" in the profile.
void DrainLineDevice(FILE *stream);

} // namespace wexelxi
