// The companion's start, its end, and its place in a child.
#include "tools/trace/settings.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include "tools/trace/book.h"
#include "tools/trace/counts.h"

namespace trace {

Settings gSettings;

namespace {

const char *Variable(const char *name)
{
    const char *value = getenv(name);
    return value ? value : "";
}

void ReadFlags()
{
    for (const char *flag = Variable(kFlagsVariable); *flag; flag++) {
        gSettings.json |= *flag == 'j';
        gSettings.counts |= *flag == 'c';
        gSettings.check |= *flag == 'k';
        gSettings.follow |= *flag == 'f';
        if (*flag == 't' || *flag == 'r')
            gSettings.times = *flag;
    }
    gSettings.length = static_cast<uint32_t>(strtoul(Variable(kLengthVariable), nullptr, 10));
    strncpy(gSettings.findings, Variable(kFindingsVariable), sizeof gSettings.findings - 1);
}

// A descriptor of the companion's own, out of the way of the host's low numbers.
int OpenOutput(const char *path)
{
    const int opened = *path ? open(path, O_WRONLY | O_APPEND | O_CLOEXEC) : STDERR_FILENO;
    const int moved = fcntl(opened, F_DUPFD_CLOEXEC, 100);
    if (*path && moved >= 0)
        close(opened);
    return moved >= 0 ? moved : opened;
}

// Commands that the host starts run as without the companion.
void LeaveEnvironment()
{
    const char *before = getenv(kPreloadVariable);
    if (before && *before)
        setenv("LD_PRELOAD", before, 1);
    else
        unsetenv("LD_PRELOAD");
    for (const char *name : {kFlagsVariable, kLengthVariable, kSelectVariable, kOutputVariable,
                             kFindingsVariable, kPreloadVariable})
        unsetenv(name);
}

void WatchChosen(const char *list)
{
    bool chosen[kCallCount];
    Select(*list ? list : "all", chosen);
    const bool shows = !gSettings.counts && (!gSettings.check || *list);
    for (int i = 0; i < kCallCount; i++)
        gSettings.watch[i] = static_cast<uint8_t>((chosen[i] && shows ? kShow : 0) |
                                                  (chosen[i] && gSettings.counts ? kCount : 0) |
                                                  (gSettings.check ? kCheck : 0));
}

void LookAway()
{
    memset(gSettings.watch, 0, sizeof gSettings.watch);
    gSettings.counts = gSettings.check = false;
}

void EnterChild()
{
    ForgetHandles();
    UnlockBook();
    if (!gSettings.follow)
        LookAway();
}

__attribute__((constructor)) void Start()
{
    if (!getenv(kFlagsVariable))
        return;
    ReadFlags();
    gSettings.seesTextsFreed = SeesTextsFreed();
    gSettings.output = OpenOutput(Variable(kOutputVariable));
    WatchChosen(Variable(kSelectVariable));
    pthread_atfork(LockBook, UnlockBook, EnterChild);
    if (!gSettings.follow)
        LeaveEnvironment();
}

__attribute__((destructor)) void Stop()
{
    if (gSettings.counts)
        WriteCounts();
    if (gSettings.check)
        ReportAtExit();
    LookAway();
}

} // namespace

void WriteLine(std::string_view line)
{
    while (!line.empty()) {
        const ssize_t count = write(gSettings.output, line.data(), line.size());
        if (count <= 0)
            return;
        line.remove_prefix(static_cast<size_t>(count));
    }
}

} // namespace trace
