// Whether a program runs, as `ps` tells it.
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/lock.h"
#include "core/no_memory.h"
#include "core/owners.h"
#include "modules/shell_text.h"
#include "profile/folder.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

namespace {

// Behind the heading, one name a line.
bool ListNamesPartOf(FILE *list, const char *text)
{
    char line[253];
    for (bool isHeading = true; fgets(line, sizeof line, list); isHeading = false) {
        line[ProcessName(line).size()] = '\0';
        if (!isHeading && line[0] != '\0' && strstr(text, line))
            return true;
    }
    return false;
}

int32_t AskForNames(const char *text)
{
    const std::string path = std::string(ConfigurationFolder()) + "/psrep";
    const std::string command = "ps -eo \"%c\" > " + ShellWord(path);
    unlink(path.c_str()); // what a killed process left there, or a link
    const Stream list(fopen(path.c_str(), "w+xe"));
    if (!list)
        return 0;
    [[maybe_unused]] const int status = system(command.c_str()); // the file tells
    unlink(path.c_str());
    return ListNamesPartOf(list.get(), text);
}

} // namespace

int32_t testForProgOpen_Unix(const char *text)
{
    LockScope lock;
    return OrNoMemory(0, [&] { return AskForNames(text); });
}
