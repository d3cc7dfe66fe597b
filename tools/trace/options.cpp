#include "tools/trace/options.h"

#include <cstdlib>
#include <cstring>
#include <getopt.h>

#include "tools/trace/settings.h"

namespace trace {

const char kHelp[] =
    "Usage: wexelxi-trace [OPTION]... HOST [ARGUMENT]...\n"
    "Runs HOST and writes a line for each call that it and its plug-ins make to hwexelxi.so.\n"
    "\n"
    "  -e, --trace=LIST         only these families and functions, as 'comm-*,ReadFile';\n"
    "                           '!' in front leaves out, and 'none' is nobody\n"
    "  -o, --output=FILE        write to FILE, not to standard error\n"
    "  -s, --string=LENGTH      show at most LENGTH bytes of a text (32)\n"
    "  -t                       show the time of day\n"
    "  -r                       show the time since the line before\n"
    "  -c, --count              only count and time each function, and tell at the end\n"
    "  -f, --follow             trace the host's children and commands too\n"
    "      --json               write one JSON record a line\n"
    "      --check              keep book of handles, and write what was done wrong\n"
    "      --error-exitcode=N   exit with N if --check found something\n"
    "  -h, --help               write this\n"
    "      --version            write the version\n"
    "\n"
    "Families: those of the headers, such as file-handles, comm-settings, fonts, modules.\n";

namespace {

enum LongOption { kJson = 1000, kCheckOption, kErrorExitCode, kVersion };

const option kLongOptions[] = {
    {"trace", required_argument, nullptr, 'e'},
    {"output", required_argument, nullptr, 'o'},
    {"string", required_argument, nullptr, 's'},
    {"count", no_argument, nullptr, 'c'},
    {"follow", no_argument, nullptr, 'f'},
    {"json", no_argument, nullptr, kJson},
    {"check", no_argument, nullptr, kCheckOption},
    {"error-exitcode", required_argument, nullptr, kErrorExitCode},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, kVersion},
    {},
};

// A whole decimal number up to most, or -1.
int ReadNumber(const char *text, int most)
{
    char *end = nullptr;
    const long number = strtol(text, &end, 10);
    const bool isWhole = *text >= '0' && *text <= '9' && *end == '\0';
    return isWhole && number <= most ? static_cast<int>(number) : -1;
}

std::string MistakeIn(const Options &options)
{
    bool chosen[kCallCount];
    const std::string_view bad = Select(options.select, chosen);
    if (!bad.empty())
        return "no family and no function " + std::string(bad);
    if (ReadNumber(options.length.c_str(), 1000) < 0)
        return "a length is a number up to 1000, not " + options.length;
    if (!options.help && !options.version && !*options.host)
        return "no host to run";
    return "";
}

void ReadOption(Options &options, int found)
{
    switch (found) {
    case 'e':
        options.select += (options.select.empty() ? "" : ",") + std::string(optarg);
        break;
    case 'o':
        options.output = optarg;
        break;
    case 's':
        options.length = optarg;
        break;
    case kErrorExitCode:
        options.errorExitCode = ReadNumber(optarg, 255);
        if (options.errorExitCode < 0)
            options.mistake = std::string("an exit code is a number up to 255, not ") + optarg;
        break;
    case 'h':
        options.help = true;
        break;
    case kVersion:
        options.version = true;
        break;
    default:
        options.flags += found == kJson          ? 'j'
                         : found == kCheckOption ? 'k'
                                                 : static_cast<char>(found);
    }
}

} // namespace

Options ReadOptions(int count, char **arguments)
{
    Options options;
    opterr = 0;
    // The first argument that is no option is the host; what follows is the host's.
    for (int found;
         (found = getopt_long(count, arguments, "+:e:o:s:trcfh", kLongOptions, nullptr)) != -1;) {
        if (found == ':' || found == '?')
            options.mistake = std::string(found == ':' ? "no value for " : "unknown option ") +
                              arguments[optind - 1];
        else
            ReadOption(options, found);
    }
    options.host = arguments + optind;
    if (options.mistake.empty())
        options.mistake = MistakeIn(options);
    return options;
}

} // namespace trace
