// wexelxi-info: what the library sees on this machine.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "tools/info_options.h"
#include "tools/info_sections.h"

using namespace info;

namespace {

enum Exit { kDone = 0, kNotTold = 1, kUsage = 2 };

const Section *FindSection(const std::string &name)
{
    const auto *found = std::find_if(std::begin(kSections), std::end(kSections),
                                     [&](const Section &section) { return name == section.name; });
    return found == std::end(kSections) ? nullptr : found;
}

std::string MistakeIn(const Options &options)
{
    if (!options.mistake.empty())
        return options.mistake;
    for (const std::string &name : options.sections)
        if (!FindSection(name))
            return "no section " + name;
    return "";
}

bool IsWanted(const Section &section, const Options &options)
{
    return options.sections.empty() ||
           std::count(options.sections.begin(), options.sections.end(), section.name) > 0;
}

bool WantsColour()
{
    const char *terminal = getenv("TERM");
    return isatty(STDOUT_FILENO) && !getenv("NO_COLOR") && terminal &&
           strcmp(terminal, "dumb") != 0;
}

void PrintText(const Value::Record &report)
{
    const bool colour = WantsColour();
    bool isFirst = true;
    for (const auto &[name, value] : report) {
        printf("%s%s%s%s\n%s", isFirst ? "" : "\n", colour ? "\033[1m" : "", name.c_str(),
               colour ? "\033[0m" : "", ToText(value, 2).c_str());
        isFirst = false;
    }
}

// A line for each thing that a host would miss.
int Check(const Session &session, const Options &options)
{
    Exit result = kDone;
    for (const Section &section : kSections) {
        if (!section.check || !IsWanted(section, options))
            continue;
        for (const std::string &fault : section.check(session)) {
            printf("%s: %s\n", section.name, fault.c_str());
            result = kNotTold;
        }
    }
    return result;
}

int Report(const Options &options)
{
    const Session session(FindPlace(options));
    if (!session.failure().empty()) {
        fprintf(stderr, "wexelxi-info: %s\n", session.failure().c_str());
        return kNotTold;
    }
    if (options.check)
        return Check(session, options);
    Value::Record report;
    for (const Section &section : kSections)
        if (IsWanted(section, options))
            report.push_back({section.name, section.describe(session)});
    if (options.json)
        printf("%s\n", ToJson(report).c_str());
    else
        PrintText(report);
    return kDone;
}

int Run(const Options &options)
{
    if (options.help)
        fputs(kHelp, stdout);
    else if (options.version)
        puts("wexelxi-info " INFO_VERSION);
    else
        return Report(options);
    return kDone;
}

} // namespace

int main(int count, char **arguments)
{
    const Options options = ReadOptions(count, arguments);
    const std::string mistake = MistakeIn(options);
    if (!mistake.empty()) {
        fprintf(stderr, "wexelxi-info: %s\nTry 'wexelxi-info --help'.\n", mistake.c_str());
        return kUsage;
    }
    const int result = Run(options);
    if (fflush(stdout) == 0 && !ferror(stdout))
        return result;
    fputs("wexelxi-info: the output cannot be written; is its disk full?\n", stderr);
    return kNotTold;
}
