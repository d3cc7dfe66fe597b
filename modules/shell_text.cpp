// What is said to the shell and what its status means.
#include "modules/shell_text.h"

namespace wexelxi {

std::string ShellWord(std::string_view text)
{
    std::string word = "'";
    for (const char c : text) {
        if (c == '\'')
            word += "'\\''";
        else
            word += c;
    }
    return word + "'";
}

uint32_t ResultOfCommand(int status)
{
    switch (status) {
    case 0:
        return 32;
    case 0x7F00: // the shell found no such command
        return 2;
    case 0x7F:
        return 11;
    default:
        return static_cast<uint32_t>(status);
    }
}

std::string_view ProcessName(std::string_view line)
{
    if (!line.empty())
        line.remove_suffix(1);
    const size_t last = line.find_last_not_of(' ');
    return line.substr(0, last + 1);
}

} // namespace wexelxi
