// The chain of modules, in order of addition, the host first. What is here counts and finds
// entries; library.cpp opens, closes and calls the modules.
#include "modules/module_chain.h"

#include <cstring>
#include <sys/time.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "modules/module_names.h"
#include "wexelxi/memory.h"
#include "wexelxi/profile.h"
#include "wexelxi/time.h"

using namespace wexelxi;

MODChainEntry *gModChain = nullptr;
uint32_t gHMODULE = 0;
int32_t gScaleFactor = 1;

namespace {

constexpr size_t kPathBytes = 4096;

HGLOBAL CopyOfText(const char *text)
{
    const size_t bytes = strlen(text) + 1;
    if (bytes > INT32_MAX)
        return FailWith<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    HGLOBAL copy = GlobalAlloc(0, static_cast<int32_t>(bytes));
    return copy ? memcpy(copy, text, bytes) : nullptr;
}

MODChainEntry *NewEntry(const char *name, HMODULE module)
{
    HGLOBAL copy = CopyOfText(name);
    if (!copy)
        return nullptr;
    auto *entry = static_cast<MODChainEntry *>(GlobalAlloc(GLOBAL_ZEROFILL, sizeof(MODChainEntry)));
    if (!entry) {
        GlobalFree(copy);
        return nullptr;
    }
    entry->name = static_cast<char *>(copy);
    entry->module = module;
    entry->refCount = 1;
    return entry;
}

void FreeEntry(MODChainEntry *entry)
{
    GlobalFree(entry->name);
    GlobalFree(entry);
}

// Where the pointer to the entry with that handle stands; the end of the chain if there is none.
MODChainEntry **LinkTo(HMODULE module)
{
    MODChainEntry **link = &gModChain;
    while (*link && (*link)->module != module)
        link = &(*link)->next;
    return link;
}

// The whole path that a name means, normalised.
std::string PathOfModule(const char *name)
{
    if (name[0] == '/')
        return NormalisedModuleName(name);
    char folder[kPathBytes];
    GetWexelXiFolder(folder);
    return NormalisedModuleName(std::string(folder) + '/' + name);
}

} // namespace

void MODChain_add(const char *name, HMODULE module)
{
    LockScope lock;
    MODChainEntry *entry = NewEntry(name ? name : "", module);
    if (!entry)
        return;
    MODChainEntry **link = &gModChain;
    while (*link)
        link = &(*link)->next;
    *link = entry;
}

MODChainEntry *MODChain_findByMod(HMODULE module)
{
    LockScope lock;
    return *LinkTo(module);
}

MODChainEntry *MODChain_findByName(const char *name)
{
    LockScope lock;
    const std::string path = PathOfModule(name);
    MODChainEntry *entry = gModChain;
    while (entry && !ModuleNameMatches(entry->name, path))
        entry = entry->next;
    return entry;
}

BOOL MODChain_remove(HMODULE module)
{
    LockScope lock;
    MODChainEntry **link = LinkTo(module);
    MODChainEntry *entry = *link;
    if (!entry || --entry->refCount != 0)
        return FALSE;
    *link = entry->next;
    FreeEntry(entry);
    return TRUE;
}

void InitModule(void)
{
    LockScope lock;
    timeval now;
    gettimeofday(&now, nullptr);
    gTickStart = static_cast<uint32_t>(now.tv_sec * 1000 + now.tv_usec / 1000);
    MODChain_add(gWEXELfullPath, WEXELXI_HOST_MODULE);
    if (MODChainEntry *host = MODChain_findByMod(WEXELXI_HOST_MODULE))
        host->resFunc = gWexelResFunc;
}
