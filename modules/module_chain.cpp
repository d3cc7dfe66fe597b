// The chain of modules, in order of addition, the host first. What is here counts and finds
// entries; library.cpp opens, closes and calls the modules.
#include "modules/module_chain.h"

#include <algorithm>
#include <chrono>
#include <functional>

#include "core/lock.h"
#include "core/no_memory.h"
#include "wexelxi/memory.h"
#include "wexelxi/profile.h"
#include "wexelxi/time.h"

using namespace wexelxi;

MODChainEntry *gModChain = nullptr;
uint32_t gHMODULE = 0;
int32_t gScaleFactor = 1;

namespace {

// Two indexes, so that one module among many is found at once: in each bucket its entries in the
// order of the chain, so that the first match of a bucket is the first of the chain.
constexpr size_t kBuckets = 127;
MODChainEntry *gByName[kBuckets];
MODChainEntry *gByHandle[kBuckets];

// The name of an entry, and every path that may mean it, end in the same base name.
MODChainEntry **BucketOfName(std::string_view path)
{
    const std::string_view base = path.substr(path.rfind('/') + 1);
    return &gByName[std::hash<std::string_view>{}(base) % kBuckets];
}

MODChainEntry **BucketOfHandle(HMODULE module)
{
    return &gByHandle[reinterpret_cast<uintptr_t>(module) % kBuckets];
}

template <MODChainEntry *MODChainEntry::*Next>
void Append(MODChainEntry **link, MODChainEntry *entry)
{
    while (*link)
        link = &((*link)->*Next);
    *link = entry;
}

template <MODChainEntry *MODChainEntry::*Next>
void Unlink(MODChainEntry **link, const MODChainEntry *entry)
{
    while (*link != entry)
        link = &((*link)->*Next);
    *link = entry->*Next;
}

} // namespace

namespace wexelxi {

std::string ModuleFileName(std::string name)
{
    if (const size_t dot = name.rfind('.'); dot > 0 && dot != name.npos)
        name.resize(dot);
    return std::move(name += ".so");
}

std::string ModulePath(std::string_view name)
{
    if (name.starts_with('/'))
        return std::string(name);
    char folder[4096];
    GetWexelXiFolder(folder);
    return std::string(folder).append("/").append(name);
}

void FreeModuleEntry(MODChainEntry *entry)
{
    GlobalFree(entry->name);
    GlobalFree(entry);
}

ModuleEntry NewModuleEntry(std::string_view name)
{
    ModuleEntry entry(
        static_cast<MODChainEntry *>(GlobalAlloc(GLOBAL_ZEROFILL, sizeof(MODChainEntry))));
    if (!entry)
        return nullptr;
    const auto bytes = static_cast<int32_t>(std::min<size_t>(name.size() + 1, INT32_MAX));
    entry->name = static_cast<char *>(GlobalAlloc(GLOBAL_ZEROFILL, bytes));
    if (!entry->name)
        return nullptr; // no memory, or a name that no block holds
    name.copy(entry->name, name.size());
    entry->refCount = 1;
    return entry;
}

void AppendModule(ModuleEntry owned)
{
    AssertLockHeld();
    MODChainEntry *entry = owned.release();
    Append<&MODChainEntry::next>(&gModChain, entry);
    Append<&MODChainEntry::nextOfName>(BucketOfName(entry->name), entry);
    Append<&MODChainEntry::nextOfHandle>(BucketOfHandle(entry->module), entry);
}

MODChainEntry *FindModule(HMODULE module)
{
    AssertLockHeld();
    MODChainEntry *entry = *BucketOfHandle(module);
    while (entry && entry->module != module)
        entry = entry->nextOfHandle;
    return entry;
}

MODChainEntry *FindModule(std::string_view path)
{
    AssertLockHeld();
    const size_t slash = path.rfind('/');
    const bool hasBase = slash != path.npos && slash > 0;
    const auto isMeant = [&](std::string_view name) {
        return name.starts_with('/') ? name == path : hasBase && name == path.substr(slash + 1);
    };
    MODChainEntry *entry = *BucketOfName(path);
    while (entry && !isMeant(entry->name))
        entry = entry->nextOfName;
    return entry;
}

} // namespace wexelxi

void MODChain_add(const char *name, HMODULE module)
{
    LockScope lock;
    if (ModuleEntry entry = NewModuleEntry(name ? name : "")) {
        entry->module = module;
        AppendModule(std::move(entry));
    }
}

MODChainEntry *MODChain_findByMod(HMODULE module)
{
    LockScope lock;
    return FindModule(module);
}

MODChainEntry *MODChain_findByName(const char *name)
{
    LockScope lock;
    return OrNoMemory<MODChainEntry *>(
        nullptr, [&] { return FindModule(ModuleFileName(ModulePath(name))); });
}

BOOL MODChain_remove(HMODULE module)
{
    LockScope lock;
    MODChainEntry *entry = FindModule(module);
    if (!entry || --entry->refCount != 0)
        return FALSE;
    Unlink<&MODChainEntry::next>(&gModChain, entry);
    Unlink<&MODChainEntry::nextOfName>(BucketOfName(entry->name), entry);
    Unlink<&MODChainEntry::nextOfHandle>(BucketOfHandle(module), entry);
    FreeModuleEntry(entry);
    return TRUE;
}

void InitModule(void)
{
    LockScope lock;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    gTickStart = static_cast<uint32_t>(duration_cast<std::chrono::milliseconds>(now).count());
    MODChain_add(gWEXELfullPath, WEXELXI_HOST_MODULE);
    if (MODChainEntry *host = FindModule(WEXELXI_HOST_MODULE))
        host->resFunc = gWexelResFunc;
}
