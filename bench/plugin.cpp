// A module for the benchmarks, which load copies of it.
#include <cstdio>

#include "wexelxi.h"

extern "C" WEXELXI_API intptr_t WXresFunc(uint32_t opcode, intptr_t first, intptr_t second,
                                          intptr_t third)
{
    if (opcode != WXRES_LOADSTRING)
        return 0;
    return snprintf(reinterpret_cast<char *>(second), static_cast<size_t>(third), "text %ld",
                    static_cast<long>(first));
}
