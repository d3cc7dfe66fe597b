// The chain's record, and what the other files here do with it. The lock guards the chain, every
// entry in it and the indexes beside it.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "core/owners.h"
#include "modules/module_names.h"
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

void FreeModuleEntry(MODChainEntry *entry);
using ModuleEntry = std::unique_ptr<MODChainEntry, ReleaseWith<FreeModuleEntry>>;

// An entry with reference count 1 that is not in the chain yet; null with last error 8 if there is
// no memory for it.
ModuleEntry NewModuleEntry(std::string_view name, std::string_view suffix = {});
void AppendModule(ModuleEntry entry);

// The first entry of that handle or path, or null. The caller holds the lock.
MODChainEntry *FindModule(HMODULE module);
MODChainEntry *FindModule(const ModulePath &path);

} // namespace wexelxi
