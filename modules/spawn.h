// Running the shell: one call, for process.cpp alone.
#pragma once

namespace wexelxi {

// Runs a command through /bin/sh and waits for the shell; the caller holds the lock. The raw status
// of wait(), or -1; 0x7F00 if the shell cannot be run, as with a command that is longer than an
// argument can be; -1 with last error 8 if there is no process for it.
int RunShell(const char *command);

} // namespace wexelxi
