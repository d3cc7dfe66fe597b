// Opening, closing and calling modules. Every call into one may call back, so nothing of the chain
// is kept across it but the handle.
#include <dlfcn.h>
#include <link.h>
#include <string>

#include "core/last_error.h"
#include "core/lock.h"
#include "modules/module_chain.h"
#include "modules/module_names.h"
#include "wexelxi/memory.h"
#include "wexelxi/preferences.h"
#include "wexelxi/resources.h"

using namespace wexelxi;

namespace {

// Modules that load one another again as they leave hold up the end of the library for no more than
// this many releases; the rest of them are forgotten as they stand.
constexpr uint64_t kExtraReleases = 1000;

// Guarded by the lock, as all of the chain is.
enum class Ending { No, Releasing, Forgetting };
Ending gEnding = Ending::No;

void CallDllMain(HMODULE module, uint32_t reason, intptr_t reserved)
{
    auto *dllMain = reinterpret_cast<DLLMAINPROC>(dlsym(module, "DllMain"));
    if (dllMain)
        dllMain(module, reason, reserved);
}

HMODULE OpenModule(const std::string &name)
{
    HMODULE module = dlopen(name.c_str(), RTLD_LAZY);
    if (module)
        return module;
    SetLastErrorString(dlerror());
    return FailWith<HMODULE>(ERROR_GEN_FAILURE, nullptr);
}

// Enters an opened module into the chain and tells it; closes it if there is no memory for that.
HMODULE EnterModule(const std::string &name, HMODULE module)
{
    MODChain_add(name.c_str(), module);
    if (GetLastError() != ERROR_SUCCESS) {
        dlclose(module);
        return FailWith<HMODULE>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    }
    gHMODULE++;
    SetLastError(ERROR_SUCCESS);
    CallDllMain(module, DLL_PROCESS_ATTACH, gScaleFactor);
    return module;
}

// Tells a module that its last release has come.
void TellDetach(MODChainEntry *entry)
{
    const HMODULE module = entry->module;
    entry->isLeaving = true;
    if (entry->resFunc)
        entry->resFunc(WXRES_DETACH, 0, 0, 0);
    CallDllMain(module, DLL_PROCESS_DETACH, 0);
    // A module that loaded itself again meanwhile stays, and hears of its next last release.
    if (MODChainEntry *still = MODChain_findByMod(module))
        still->isLeaving = false;
}

uint64_t ReferencesInChain()
{
    uint64_t references = 0;
    for (const MODChainEntry *entry = gModChain; entry; entry = entry->next)
        references += entry->refCount;
    return references;
}

// A symbol that the host's program itself defines: what the libraries behind it define is not its
// own.
void *SymbolOfHost(const char *name)
{
    void *program = dlopen(nullptr, RTLD_LAZY);
    if (!program)
        return nullptr;
    void *symbol = dlsym(program, name);
    Dl_info info;
    void *owner = nullptr;
    if (symbol && !dladdr1(symbol, &info, &owner, RTLD_DL_LINKMAP))
        owner = nullptr;
    dlclose(program);
    return owner == program ? symbol : nullptr;
}

} // namespace

HMODULE LoadLibrary(const char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!name || !*name)
        return nullptr;
    const std::string normalised = NormalisedModuleName(name);
    if (MODChainEntry *entry = MODChain_findByName(normalised.c_str())) {
        entry->refCount++;
        return entry->module;
    }
    HMODULE module = OpenModule(normalised);
    return module ? EnterModule(normalised, module) : nullptr;
}

int32_t FreeLibrary(HMODULE module)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    MODChainEntry *entry = MODChain_findByMod(module);
    if (!entry)
        return 0;
    const bool isHost = module == WEXELXI_HOST_MODULE;
    if (gEnding == Ending::No && (gNoFreeLibrary || isHost))
        return 1;
    const bool isCallable = !isHost && gEnding != Ending::Forgetting;
    if (isCallable && entry->isLeaving)
        return 1;
    if (isCallable && entry->refCount == 1)
        TellDetach(entry);
    if (MODChain_remove(module)) {
        if (isCallable)
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
    const MODChainEntry *entry = MODChain_findByMod(module);
    const std::string_view name = entry ? entry->name : "";
    destination[name.copy(destination, name.size())] = '\0';
    return static_cast<uint32_t>(name.size());
}

void TermModule(void)
{
    LockScope lock;
    gNoFreeLibrary = 0;
    uint64_t releases = ReferencesInChain() + kExtraReleases;
    while (gModChain) {
        gEnding = releases > 0 ? Ending::Releasing : Ending::Forgetting;
        if (releases > 0)
            releases--;
        FreeLibrary(gModChain->module);
    }
    gEnding = Ending::No;
}
