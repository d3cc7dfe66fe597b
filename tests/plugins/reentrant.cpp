// A plug-in whose DllMain calls back: it loads and releases itself, and never lets go of the
// library when it is told to leave.
#include "wexelxi.h"

extern "C" {
WEXELXI_API int gReentrantLoads = 0;

WEXELXI_API BOOL DllMain(HMODULE module, uint32_t reason, intptr_t)
{
    char name[4096];
    GetModuleFileName(module, name, sizeof name);
    if (reason == DLL_PROCESS_ATTACH) {
        gReentrantLoads += LoadLibrary(name) == module;
        FreeLibrary(module);
        return TRUE;
    }
    FreeLibrary(module); // its own last release is under way
    if (gTerminating)
        LoadLibrary(name);
    return TRUE;
}
}
