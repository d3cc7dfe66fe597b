// The chain's record, and what the other files here do with it. The lock guards the chain, every
// entry in it and the indexes beside it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/owners.h"
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
    MODChainEntry *nextOfName; // in the indexes, see module_chain.cpp
    MODChainEntry *nextOfHandle;
};

namespace wexelxi {

// A module's file name: everything from the last dot on, if that is not the first character, gives
// way to ".so".
std::string ModuleFileName(std::string name);

// A name that does not begin with '/' stands in the configuration folder.
std::string ModulePath(std::string_view name);

void FreeModuleEntry(MODChainEntry *entry);
using ModuleEntry = std::unique_ptr<MODChainEntry, ReleaseWith<FreeModuleEntry>>;

// An entry with reference count 1 that is not in the chain yet; null with last error 8 if there is
// no memory for it.
ModuleEntry NewModuleEntry(std::string_view name);
void AppendModule(ModuleEntry entry);

// The first entry of that handle or whole path, or null. The caller holds the lock.
MODChainEntry *FindModule(HMODULE module);
MODChainEntry *FindModule(std::string_view path);

} // namespace wexelxi
