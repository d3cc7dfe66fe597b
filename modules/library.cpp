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
#include "core/no_memory.h"
#include "modules/module_chain.h"
#include "wexelxi/preferences.h"
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
void EndLeaving(HMODULE module)
{
    if (MODChainEntry *entry = FindModule(module))
        entry->isLeaving = false;
}
using Leaving = std::unique_ptr<void, ReleaseWith<EndLeaving>>;

void Clear(bool *flag)
{
    *flag = false;
}
using Ending = std::unique_ptr<bool, ReleaseWith<Clear>>;

void CallDllMain(HMODULE module, uint32_t reason, intptr_t reserved)
{
    auto *dllMain = reinterpret_cast<DLLMAINPROC>(dlsym(module, "DllMain"));
    if (dllMain)
        dllMain(module, reason, reserved);
}

void TellDetach(MODChainEntry *entry)
{
    const HMODULE module = entry->module;
    entry->isLeaving = true;
    const Leaving leaving(module);
    if (entry->resFunc)
        entry->resFunc(WXRES_DETACH, 0, 0, 0);
    CallDllMain(module, DLL_PROCESS_DETACH, 0);
}

HMODULE OpenModule(const std::string &name)
{
    ModuleEntry entry = NewModuleEntry(name);
    if (!entry)
        return nullptr;
    const HMODULE module = dlopen(name.c_str(), RTLD_LAZY);
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
    const bool isFound =
        dladdr1(symbol, &info, reinterpret_cast<void **>(&owner), RTLD_DL_LINKMAP) != 0;
    return isFound && owner->l_name[0] == '\0' ? symbol : nullptr;
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
    std::string file;
    MODChainEntry *entry = nullptr;
    OrNoMemory([&] {
        std::string normal = ModuleFileName(name);
        entry = normal[0] == '/' ? FindModule(normal) : FindModule(ModulePath(normal));
        file = std::move(normal);
    });
    if (file.empty())
        return nullptr;
    if (!entry)
        return OpenModule(file);
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
    // A module that ends the library as it leaves is out of the chain by now.
    if (MODChain_remove(module) || !FindModule(module)) {
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
    gIsEnding = true;
    gLoadsAtEnd = 0;
    const Ending ending(&gIsEnding);
    while (gModChain) {
        if (gModChain->isLeaving)
            MODChain_remove(gModChain->module); // it is told already
        else
            FreeLibrary(gModChain->module);
    }
}
