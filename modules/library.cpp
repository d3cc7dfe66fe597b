// Opening, closing and calling modules. Every call into one may call back, so nothing of the chain
// is kept across it but the handle.
//
// State, guarded by the lock as all of the chain is: which modules are told to leave (in their
// entries, for the length of the last release), and whether the library ends (for the length of
// TermModule).
#include <cstring>
#include <dlfcn.h>
#include <link.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "modules/module_chain.h"
#include "wexelxi/memory.h"
#include "wexelxi/preferences.h"
#include "wexelxi/profile.h"
#include "wexelxi/resources.h"

using namespace wexelxi;

namespace {

// Modules that load one another again as they leave hold up the end of the library for no more than
// this many loads; the next ones fail.
constexpr uint32_t kMaxLoadsAtEnd = 1000;

bool gIsEnding = false;
uint32_t gLoadsAtEnd = 0;

// A module whose functions are called may end by an exception, or release itself: what is noted for
// the length of the call is taken back by handle, on every path.
class Leaving {
public:
    explicit Leaving(MODChainEntry *entry) : module_(entry->module) { entry->isLeaving = true; }
    ~Leaving()
    {
        if (MODChainEntry *entry = FindModule(module_))
            entry->isLeaving = false;
    }
    Leaving(const Leaving &) = delete;
    Leaving &operator=(const Leaving &) = delete;

private:
    const HMODULE module_;
};

class Ending {
public:
    Ending()
    {
        gIsEnding = true;
        gLoadsAtEnd = 0;
    }
    ~Ending() { gIsEnding = false; }
    Ending(const Ending &) = delete;
    Ending &operator=(const Ending &) = delete;
};

void CallDllMain(HMODULE module, uint32_t reason, intptr_t reserved)
{
    auto *dllMain = reinterpret_cast<DLLMAINPROC>(dlsym(module, "DllMain"));
    if (dllMain)
        dllMain(module, reason, reserved);
}

void TellDetach(MODChainEntry *entry)
{
    const HMODULE module = entry->module;
    const Leaving leaving(entry);
    if (entry->resFunc)
        entry->resFunc(WXRES_DETACH, 0, 0, 0);
    CallDllMain(module, DLL_PROCESS_DETACH, 0);
}

MODChainEntry *FindLoaded(const char *name)
{
    char folder[4096];
    folder[0] = '\0';
    if (name[0] != '/')
        GetWexelXiFolder(folder);
    return FindModule(PathOfModule(name, folder));
}

HMODULE OpenModule(const char *name)
{
    ModuleEntry entry = NewModuleEntry(ModuleStem(name), kModuleSuffix);
    if (!entry)
        return nullptr;
    const HMODULE module = dlopen(entry->name, RTLD_LAZY);
    if (!module) {
        SetLastErrorString(dlerror());
        return FailWith<HMODULE>(ERROR_GEN_FAILURE, nullptr);
    }
    entry->module = module;
    AppendModule(std::move(entry));
    gHMODULE++;
    SetLastError(ERROR_SUCCESS);
    CallDllMain(module, DLL_PROCESS_ATTACH, gScaleFactor);
    return module;
}

// A symbol that the host's program itself defines, whose name the loader leaves empty: what the
// libraries behind it define is not its own.
void *SymbolOfHost(const char *name)
{
    void *symbol = dlsym(RTLD_DEFAULT, name);
    Dl_info info;
    link_map *owner = nullptr;
    if (!symbol || !dladdr1(symbol, &info, reinterpret_cast<void **>(&owner), RTLD_DL_LINKMAP))
        return nullptr;
    return owner->l_name[0] == '\0' ? symbol : nullptr;
}

} // namespace

HMODULE LoadLibrary(const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!name || !*name)
        return nullptr;
    if (gIsEnding && gLoadsAtEnd++ >= kMaxLoadsAtEnd)
        return FailWith<HMODULE>(ERROR_GEN_FAILURE, nullptr);
    MODChainEntry *entry = FindLoaded(name);
    if (!entry)
        return OpenModule(name);
    entry->refCount++;
    return entry->module;
}

int32_t FreeLibrary(HMODULE module)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    MODChainEntry *entry = FindModule(module);
    if (!entry)
        return 0;
    const bool isHost = module == WEXELXI_HOST_MODULE;
    if (!gIsEnding && (gNoFreeLibrary || isHost))
        return 1;
    if (entry->refCount == 1 && !isHost) {
        if (entry->isLeaving)
            return 1;
        TellDetach(entry);
    }
    if (MODChain_remove(module)) {
        if (!isHost)
            dlclose(module);
        if (gHMODULE > 0)
            gHMODULE--;
    }
    return 1;
}

void *GetProcAddress(HMODULE module, const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!module || !name)
        return nullptr;
    return module == WEXELXI_HOST_MODULE ? SymbolOfHost(name) : dlsym(module, name);
}

HMODULE GetModuleHandle(const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    const MODChainEntry *entry = MODChain_findByName(name);
    return entry ? entry->module : nullptr;
}

uint32_t GetModuleFileName(HMODULE module, char *destination, uint32_t)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    const MODChainEntry *entry = FindModule(module);
    strcpy(destination, entry ? entry->name : "");
    return static_cast<uint32_t>(strlen(destination));
}

void TermModule(void)
{
    LockScope lock;
    gNoFreeLibrary = 0;
    if (gIsEnding)
        return; // from a module that is told to leave: the call around it goes on
    const Ending ending;
    while (gModChain) {
        if (gModChain->isLeaving)
            MODChain_remove(gModChain->module); // it is told already
        else
            FreeLibrary(gModChain->module);
    }
}
