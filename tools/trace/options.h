// The command line of wexelxi-trace.
#pragma once

#include <string>

namespace trace {

struct Options {
    std::string flags; // as the companion takes them
    std::string select;
    std::string output;
    std::string length = "32";
    int errorExitCode = -1;
    bool help = false;
    bool version = false;
    std::string mistake;
    char **host = nullptr; // with its arguments
};

extern const char kHelp[];

Options ReadOptions(int count, char **arguments);

} // namespace trace
