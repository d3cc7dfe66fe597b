// Start and stop. The order of the steps is part of the contract: each stands on those before it.
#include <cstdlib>
#include <cstring>

#include "core/core_private.h"
#include "core/lock.h"
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

static constexpr size_t kPathBytes = 4096;

static void CopyHostPath(const char *hostPath)
{
    gWEXELfullPath = static_cast<char *>(GlobalAlloc(GLOBAL_ZEROFILL, kPathBytes));
    if (gWEXELfullPath)
        strncat(gWEXELfullPath, hostPath, kPathBytes - 1);
}

// A value that does not fit counts as unset, as an empty one does.
static void TakeFolderFromEnvironment()
{
    char folder[kPathBytes] = "";
    GetEnvironmentVariable("WEXELXIDIR", folder, sizeof folder);
    if (folder[0] != '\0')
        SetWexelXiFolder(folder);
}

static uint32_t ReadSetupNumber(const char *key, const char *defaultValue)
{
    char value[9];
    GetProfileString("Setup", key, defaultValue, value, sizeof value);
    return static_cast<uint32_t>(strtoul(value, nullptr, 10));
}

static void LoadSetup()
{
    gFileMode = static_cast<uint8_t>(ReadSetupNumber("FileCaseMode", "0"));
    gUseOverride = static_cast<uint8_t>(ReadSetupNumber("UseOverride", "0"));
    gPrinterXMargin = static_cast<int32_t>(ReadSetupNumber("XPrinterMargin", "10"));
    gPrinterYMargin = static_cast<int32_t>(ReadSetupNumber("YPrinterMargin", "10"));
}

// Allocates a new key. Keys are never given back, so a process that starts the library some five
// hundred times uses the platform's up: from then on it keeps the keys that it has.
static bool RenewKey(uint32_t &key, bool hasOld)
{
    const uint32_t fresh = TlsAlloc();
    if (fresh == UINT32_MAX)
        return hasOld;
    key = fresh;
    return true;
}

static bool RenewKeys()
{
    // In this order: the second key is never 0, which gLastErrorTLS takes for "not started".
    const bool hasOld = gLastErrorTLS != 0;
    if (!RenewKey(gCriticalSectionTLS, hasOld) || !RenewKey(gLastErrorTLS, hasOld))
        return false;
    StoreLockCount(0);
    return true;
}

int32_t InitLib(const char *hostPath, WXRESFUNC resFunc, intptr_t noLock)
{
    if (!RenewKeys())
        return static_cast<int32_t>(ERROR_NOT_ENOUGH_MEMORY);
    ForgetErrorTextBeforeInit();
    if (!noLock)
        InitializeCriticalSection(&gWexelxiCriticalSection);

    gHFILE = 0;
    gHMODULE = 0;
    gTerminating = 0;
    gGAllocNum = 0;
    gGAllocMem = 0;
    TakeFolderFromEnvironment();
    gWexelResFunc = resFunc;
    CopyHostPath(hostPath);
    InitModule();
    LoadSetup();
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
