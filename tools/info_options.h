// The command line.
#pragma once

#include <string>
#include <vector>

namespace info {

struct Options {
    std::vector<std::string> sections; // empty means all
    std::string folder;                // --folder, or empty
    std::string host;                  // --host, or empty
    bool check = false;
    bool json = false;
    bool help = false;
    bool version = false;
    std::string mistake; // what is wrong with the command line, or empty
};

Options ReadOptions(int count, char **arguments);

extern const char kHelp[];

} // namespace info
