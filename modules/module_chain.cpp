// The chain of modules, in order of addition, the host first. What is here counts and finds
// entries; library.cpp opens, closes and calls the modules.
#include "modules/module_chain.h"

#include <cstring>
#include <sys/time.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "wexelxi/memory.h"
#include "wexelxi/profile.h"
#include "wexelxi/time.h"

using namespace wexelxi;

MODChainEntry *gModChain = nullptr;
uint32_t gHMODULE = 0;
int32_t gScaleFactor = 1;

namespace {

constexpr size_t kPathBytes = 4096;

// Two indexes, so that one module among many is found at once: in each bucket its entries in the
// order of the chain, so that the first match of a bucket is the first of the chain.
constexpr size_t kBuckets = 127;
MODChainEntry *gByName[kBuckets];
MODChainEntry *gByHandle[kBuckets];

MODChainEntry **BucketOf(const MODChainEntry *entry)
{
    return &gByName[ModuleNameHash(std::string_view(entry->name)) % kBuckets];
}

MODChainEntry **BucketOf(HMODULE module)
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
    while (*link && *link != entry)
        link = &((*link)->*Next);
    if (*link)
        *link = entry->*Next;
}

} // namespace

namespace wexelxi {

void FreeModuleEntry(MODChainEntry *entry)
{
    GlobalFree(entry->name);
    GlobalFree(entry);
}

ModuleEntry NewModuleEntry(std::string_view name, std::string_view suffix)
{
    const size_t bytes = name.size() + suffix.size() + 1;
    if (bytes > INT32_MAX)
        return FailWith<ModuleEntry>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    GlobalBlock<char> text(static_cast<char *>(GlobalAlloc(0, static_cast<int32_t>(bytes))));
    if (!text)
        return nullptr;
    text.get()[name.copy(text.get(), name.size())] = '\0';
    text.get()[name.size() + suffix.copy(text.get() + name.size(), suffix.size())] = '\0';
    auto *entry = static_cast<MODChainEntry *>(GlobalAlloc(GLOBAL_ZEROFILL, sizeof(MODChainEntry)));
    if (!entry)
        return nullptr;
    entry->name = text.release();
    entry->refCount = 1;
    return ModuleEntry(entry);
}

void AppendModule(ModuleEntry owned)
{
    AssertLockHeld();
    MODChainEntry *entry = owned.release();
    Append<&MODChainEntry::next>(&gModChain, entry);
    Append<&MODChainEntry::nextOfName>(BucketOf(entry), entry);
    Append<&MODChainEntry::nextOfHandle>(BucketOf(entry->module), entry);
}

MODChainEntry *FindModule(HMODULE module)
{
    AssertLockHeld();
    MODChainEntry *entry = *BucketOf(module);
    while (entry && entry->module != module)
        entry = entry->nextOfHandle;
    return entry;
}

MODChainEntry *FindModule(const ModulePath &path)
{
    AssertLockHeld();
    MODChainEntry *entry = gByName[ModuleNameHash(path) % kBuckets];
    while (entry && !ModuleNameMatches(entry->name, path))
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
    char folder[kPathBytes];
    folder[0] = '\0';
    if (name[0] != '/')
        GetWexelXiFolder(folder);
    return FindModule(PathOfAnyName(name, folder));
}

BOOL MODChain_remove(HMODULE module)
{
    LockScope lock;
    MODChainEntry *entry = FindModule(module);
    if (!entry || --entry->refCount != 0)
        return FALSE;
    Unlink<&MODChainEntry::next>(&gModChain, entry);
    Unlink<&MODChainEntry::nextOfName>(BucketOf(entry), entry);
    Unlink<&MODChainEntry::nextOfHandle>(BucketOf(module), entry);
    FreeModuleEntry(entry);
    return TRUE;
}

void InitModule(void)
{
    LockScope lock;
    timeval now;
    gettimeofday(&now, nullptr);
    gTickStart = static_cast<uint32_t>(now.tv_sec * 1000 + now.tv_usec / 1000);
    MODChain_add(gWEXELfullPath, WEXELXI_HOST_MODULE);
    if (MODChainEntry *host = FindModule(WEXELXI_HOST_MODULE))
        host->resFunc = gWexelResFunc;
}
