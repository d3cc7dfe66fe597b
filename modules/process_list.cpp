// Whether a program runs, as `ps` tells it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

#include "core/lock.h"
#include "modules/shell_text.h"
#include "profile/folder.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

namespace {

constexpr int kLineBytes = 253;

struct CloseStream {
    void operator()(FILE *stream) const { fclose(stream); }
};
using ListStream = std::unique_ptr<FILE, CloseStream>;

// Behind the heading, one name a line.
bool ListNamesPartOf(FILE *list, const char *text)
{
    char line[kLineBytes];
    if (!fgets(line, sizeof line, list))
        return false;
    while (fgets(line, sizeof line, list)) {
        const std::string name(ProcessName(line));
        if (!name.empty() && strstr(text, name.c_str()))
            return true;
    }
    return false;
}

} // namespace

int32_t testForProgOpen_Unix(const char *text)
{
    LockScope lock;
    const std::string path = std::string(ConfigurationFolder()) + "/psrep";
    const std::string command = "ps -eo \"%c\" > " + ShellWord(path);
    [[maybe_unused]] const int status = system(command.c_str()); // the file tells
    const ListStream list(fopen(path.c_str(), "re"));
    const bool runs = list && ListNamesPartOf(list.get(), text);
    unlink(path.c_str());
    return runs;
}
