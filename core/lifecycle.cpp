// Start and stop. The order of the steps is part of the contract: each stands on those before it.
#include <cstring>

#include "core/core_private.h"
#include "core/last_error.h"
#include "core/lock.h"
#include "profile/setup.h"
#include "wexelxi/core.h"
#include "wexelxi/environment.h"
#include "wexelxi/fonts.h"
#include "wexelxi/memory.h"
#include "wexelxi/modules.h"
#include "wexelxi/preferences.h"
#include "wexelxi/printers.h"
#include "wexelxi/profile.h"
#include "wexelxi/threads.h"

using namespace wexelxi;

// What a start sets and a stop takes back, and what the host alone uses. The host reads and writes
// all of it directly; none is guarded by the lock.
HEADLESSERRORPROC gHDerrorProc = nullptr;
uint8_t gReady = 0;
uint8_t gTerminating = 0;
char *gWEXELfullPath = nullptr;
WXRESFUNC gWexelResFunc = nullptr;
uint8_t gFileMode = 0;
uint8_t gUseOverride = 0;
int32_t gPrinterXMargin = 0;
int32_t gPrinterYMargin = 0;
int32_t gLOGPIXELSX = 0;
int32_t gLOGPIXELSY = 0;
void *gGeneralFont = nullptr;
int32_t gScbarwid = 17;
uint32_t gHFILE = 0;
uint32_t gGAllocNum = 0;
uint32_t gGAllocMem = 0;
uint8_t gUseScratchImage = 0;
uint8_t gNeedNull = 0;
int32_t gTraceLevel = 0;

void SetHeadlessErrorProc(HEADLESSERRORPROC proc)
{
    gHDerrorProc = proc;
}

namespace {

constexpr size_t kPathBytes = 4096;

bool CopyHostPath(const char *hostPath)
{
    gWEXELfullPath = static_cast<char *>(GlobalAlloc(GLOBAL_ZEROFILL, kPathBytes));
    if (gWEXELfullPath)
        strncat(gWEXELfullPath, hostPath, kPathBytes - 1);
    return gWEXELfullPath != nullptr;
}

// A value that does not fit counts as unset, as an empty one does.
void TakeFolderFromEnvironment()
{
    char folder[kPathBytes] = "";
    GetEnvironmentVariable("WEXELXIDIR", folder, sizeof folder);
    if (*folder)
        SetWexelXiFolder(folder);
}

// Allocates a new key. Keys are never given back, so a process that starts the library some five
// hundred times uses the platform's up: from then on it keeps the keys that it has.
bool RenewKey(uint32_t &key, bool hasOld)
{
    const uint32_t fresh = TlsAlloc();
    if (fresh == UINT32_MAX)
        return hasOld;
    key = fresh;
    return true;
}

bool RenewKeys()
{
    // In this order: the second key is never 0, which gLastErrorTLS takes for "not started".
    const bool hasOld = gLastErrorTLS != 0;
    if (!RenewKey(gCriticalSectionTLS, hasOld) || !RenewKey(gLastErrorTLS, hasOld))
        return false;
    StoreLockCount(0);
    return true;
}

// Undoes what a start has done so far: there is no memory for the rest.
int32_t GiveUp()
{
    FreeLib();
    return FailWith(ERROR_NOT_ENOUGH_MEMORY, int32_t{ERROR_NOT_ENOUGH_MEMORY});
}

} // namespace

int32_t InitLib(const char *hostPath, WXRESFUNC resFunc, intptr_t noLock)
{
    if (!RenewKeys())
        return static_cast<int32_t>(ERROR_NOT_ENOUGH_MEMORY);
    ForgetErrorTextBeforeInit();
    if (!noLock) {
        InitializeCriticalSection(&gWexelxiCriticalSection);
        if (!gWexelxiCriticalSection)
            return GiveUp();
    }

    gHFILE = 0;
    gHMODULE = 0;
    gTerminating = 0;
    gGAllocNum = 0;
    gGAllocMem = 0;
    TakeFolderFromEnvironment();
    gWexelResFunc = resFunc;
    if (!CopyHostPath(hostPath))
        return GiveUp();
    InitModule();
    if (!MODChain_findByMod(WEXELXI_HOST_MODULE))
        return GiveUp();
    LoadStartSettings();
    gLOGPIXELSY = 96;
    gLOGPIXELSX = 96;
    gLoadPref();
    if (const int32_t status = InitFonts()) {
        FreeLib();
        return status;
    }
    InitCUPS();
    gReady = 1;
    return 0;
}

void FreeLib(void)
{
    {
        LockScope lock;
        gReady = 0;
        gTerminating = 1;
        DeleteObject(gGeneralFont);
        gGeneralFont = nullptr;
        TermFonts();
        gFreePref();
        GlobalFree(gWEXELfullPath);
        gWEXELfullPath = nullptr;
        SetLastErrorString(nullptr);
        TermModule();
        TermCUPS();
    }
    DeleteCriticalSection(&gWexelxiCriticalSection);
    TermIni();
}
