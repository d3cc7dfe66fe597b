// What the machine, its user and this library are called, and what they are.
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/owners.h"
#include "modules/processor_text.h"
#include "wexelxi/preferences.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

namespace {

// Both guarded by the lock. A scan that fails is not repeated.
SYSTEM_INFO gSystemInfo = {};
bool gHasScanned = false;

SYSTEM_INFO AskTheMachine()
{
    ProcessorFacts facts;
    const Stream stream(fopen("/proc/cpuinfo", "re"));
    char line[4096]; // a longer line counts as several
    while (stream && fgets(line, sizeof line, stream.get()))
        NoteProcessorLine(line, facts);
    SYSTEM_INFO info = {};
    info.dwProcessorType = facts.type;
    info.wProcessorLevel = facts.level;
    info.wProcessorRevision = facts.stepping;
    if (facts.hasEntries)
        info.dwNumberOfProcessors = static_cast<uint32_t>(sysconf(_SC_NPROCESSORS_ONLN));
    return info;
}

int32_t AnswerNothing()
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return 0;
}

} // namespace

void GetSystemInfo(SYSTEM_INFO *info)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!gHasScanned) {
        gHasScanned = true;
        gSystemInfo = AskTheMachine();
    }
    *info = gSystemInfo;
}

int32_t GetComputerName(char *destination, uint32_t *size)
{
    LockScope lock;
    if (gethostname(destination, *size) != 0)
        return 0;
    *size = static_cast<uint32_t>(strlen(destination));
    return 1;
}

BOOL GetUserName(char *destination, uint32_t *size)
{
    LockScope lock;
    char name[L_cuserid];
    const size_t length = strlen(cuserid(name));
    if (!destination || !size)
        return FALSE;
    destination[0] = '\0';
    if (length >= *size)
        return FALSE;
    *size = static_cast<uint32_t>(length);
    memcpy(destination, name, length + 1);
    return length > 0;
}

uint32_t GetVersion(void)
{
    return static_cast<uint32_t>(gVersion);
}

int32_t WinHelp(void *, const char *, uint32_t, uintptr_t)
{
    return AnswerNothing();
}

int32_t SystemParametersInfo(uint32_t, uint32_t, void *, uint32_t)
{
    return AnswerNothing();
}
