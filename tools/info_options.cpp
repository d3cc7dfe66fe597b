// The command line.
#include "tools/info_options.h"

#include <getopt.h>

namespace info {

const char kHelp[] =
    "Usage: wexelxi-info [OPTION]... [SECTION]...\n"
    "Tells what hwexelxi.so sees on this machine, as a host would meet it.\n"
    "\n"
    "Sections, all of them if none is given:\n"
    "  version configuration settings language timezone ports printers fonts modules locking\n"
    "\n"
    "  -f, --folder=DIR  look at this configuration folder\n"
    "      --host=PATH   look as the host program PATH would, whose folder is the default\n"
    "      --check       tell only what is broken for a host, with its remedy\n"
    "      --json        write JSON, for programs\n"
    "  -h, --help        write this text\n"
    "      --version     write the version\n"
    "\n"
    "Without --folder the folder is that of the variable WEXELXIDIR, else the host program's, else\n"
    "that of this command. Nothing is changed: the library is started on a private copy of the\n"
    "configuration file, which is removed at once, so a folder without a file stays without one.\n"
    "Ports are opened without waiting and without a change to the line.\n"
    "\n"
    "Exit status: 0, 1 if the library could not be started, the output not be written, or --check\n"
    "found something, 2 for a wrong command line.\n";

Options ReadOptions(int count, char **arguments)
{
    enum { Json = 256, Version, Host, Check };
    static const option known[] = {
        {"check", no_argument, nullptr, Check},
        {"folder", required_argument, nullptr, 'f'},
        {"help", no_argument, nullptr, 'h'},
        {"host", required_argument, nullptr, Host},
        {"json", no_argument, nullptr, Json},
        {"version", no_argument, nullptr, Version},
        {nullptr, 0, nullptr, 0},
    };
    Options options;
    opterr = 0;
    for (int found; (found = getopt_long(count, arguments, ":f:h", known, nullptr)) != -1;) {
        switch (found) {
        case 'f':
            options.folder = optarg;
            break;
        case Check:
            options.check = true;
            break;
        case Host:
            options.host = optarg;
            break;
        case Json:
            options.json = true;
            break;
        case Version:
            options.version = true;
            break;
        case 'h':
            options.help = true;
            break;
        default:
            options.mistake = std::string(found == ':' ? "no value for " : "unknown option ") +
                              arguments[optind - 1];
        }
    }
    options.sections.assign(arguments + optind, arguments + count);
    return options;
}

} // namespace info
