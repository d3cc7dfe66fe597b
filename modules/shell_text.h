// What is said to the shell and what its status means: pure functions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace wexelxi {

// The text as one word of the shell, whatever is in it.
std::string ShellWord(std::string_view text);

// The result of a command for the raw status of wait(), -1 included.
uint32_t ResultOfCommand(int status);

// The process name in a line of `ps`, without the line end and the blanks that pad it.
std::string_view ProcessName(std::string_view line);

} // namespace wexelxi
