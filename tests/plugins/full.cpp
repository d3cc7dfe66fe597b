// A plug-in with everything, whose functions are those of the program that loads it.
#include "wexelxi.h"

extern "C" {
BOOL PluginMain(HMODULE module, uint32_t reason, intptr_t reserved);
intptr_t PluginResources(uint32_t opcode, intptr_t first, intptr_t second, intptr_t third);

WEXELXI_API BOOL DllMain(HMODULE module, uint32_t reason, intptr_t reserved)
{
    return PluginMain(module, reason, reserved);
}

WEXELXI_API intptr_t WXresFunc(uint32_t opcode, intptr_t first, intptr_t second, intptr_t third)
{
    return PluginResources(opcode, first, second, third);
}
}
