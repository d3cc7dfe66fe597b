// What a start costs: each one is a process of its own, which tells how long it took.
#include <cstdio>
#include <cstdlib>
#include <fontconfig/fontconfig.h>
#include <pango/pangoft2.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host.h"
#include "rows.h"

namespace {

struct Told {
    Nanoseconds time;
    double memory; // what the start made resident
};

Told InAChild(void (*start)())
{
    int ends[2];
    Told told = {};
    if (pipe(ends) != 0)
        return told;
    if (const pid_t child = fork(); child == 0) {
        const double before = ResidentBytes();
        const Nanoseconds begin = Now();
        start();
        told = {Now() - begin, ResidentBytes() - before};
        _exit(write(ends[1], &told, sizeof told) != sizeof told);
    } else {
        if (read(ends[0], &told, sizeof told) != sizeof told)
            told = {};
        waitpid(child, nullptr, 0);
    }
    close(ends[0]);
    close(ends[1]);
    return told;
}

Work Start(const char *name, void (*start)())
{
    return {name, [=](size_t count) {
                Nanoseconds sum = 0;
                for (; count; count--)
                    sum += InAChild(start).time;
                return sum;
            }};
}

void StartLibrary()
{
    InitLib("/opt/host/bin/host", nullptr, 0);
}

void StartLibraryAnew()
{
    const ScratchFolder folder;
    setenv("WEXELXIDIR", folder.path().c_str(), 1);
    StartLibrary();
}

void StartFontconfig()
{
    FcInit();
}

void StartPango()
{
    FcInit();
    for (int i = 0; i < 4; i++)
        Keep(pango_ft2_font_map_new());
}

} // namespace

int main()
{
    const Work fontconfig = Start("FcInit", StartFontconfig);
    const std::vector<Work> pango = {Start("Pango, four font maps", StartPango)};
    const ScratchFolder folder;
    setenv("WEXELXIDIR", folder.path().c_str(), 1);
    const Told first = InAChild(StartLibrary);
    Row("InitLib, later start", "fontconfig's own start", Start("", StartLibrary), fontconfig,
        pango);
    Row("InitLib, empty folder", "fontconfig's own start, and one file written",
        Start("", StartLibraryAnew), fontconfig, pango);
    Memory("InitLib, beside what the process had", first.memory);
    Memory("FcInit alone", InAChild(StartFontconfig).memory);
}
