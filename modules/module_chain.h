// The chain's record. The lock guards the chain and every entry in it.
#pragma once

#include <cstdint>

#include "wexelxi/core.h"
#include "wexelxi/modules.h"

// A zero-filled guarded block; the name is a guarded block of its own.
struct MODChainEntry {
    char *name;
    HMODULE module;
    WXRESFUNC resFunc; // null until looked up
    uint32_t refCount;
    bool isLeaving; // its last release is under way: its functions are being told
    MODChainEntry *next;
};
