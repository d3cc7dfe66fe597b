// Running the shell: one call, for process.cpp alone.
#pragma once

#include <string>

namespace wexelxi {

// Runs a command through /bin/sh and waits for the shell. The raw status of wait(), or -1; 0x7F00
// if the shell cannot be run.
int RunShell(const std::string &command);

} // namespace wexelxi
