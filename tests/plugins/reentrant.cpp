// A plug-in whose DllMain calls back: it loads and releases itself in the order that the variable
// PLUGIN_DOES spells, L and F, when it is told to leave; it never lets go of a library that ends.
#include <cstdlib>

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
    const char *calls = gTerminating ? "L" : getenv("PLUGIN_DOES");
    for (; calls && *calls; calls++)
        *calls == 'L' ? LoadLibrary(name) == module : FreeLibrary(module);
    return TRUE;
}
}
