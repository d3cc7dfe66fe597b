// Resources: the calls are passed on to the module's resource function.
#include <dlfcn.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "modules/module_chain.h"
#include "wexelxi/memory.h"
#include "wexelxi/resources.h"

using namespace wexelxi;

// A zero-filled guarded block.
struct ResourceRecord {
    MODChainEntry *owner; // the module that found it
    intptr_t found;       // the id from WXRES_FIND
    intptr_t loaded;      // the load value from WXRES_LOAD, 0 before that
};

namespace {

WXRESFUNC ResourceFunctionOf(HMODULE module)
{
    MODChainEntry *entry = FindModule(module);
    return entry ? MODChain_getResFunc(entry) : nullptr;
}

intptr_t SendToOwner(const ResourceRecord *record, uint32_t opcode, intptr_t value)
{
    return record->owner->resFunc(opcode, 0, value, 0); // found by it, and so known
}

} // namespace

WXRESFUNC MODChain_getResFunc(MODChainEntry *entry)
{
    LockScope lock;
    if (entry->resFunc)
        return entry->resFunc;
    SetLastError(ERROR_SUCCESS);
    // The host's function came with InitLib, and its pseudo-handle is none that dlsym could take.
    const HMODULE module = entry->module;
    if (!module || module == WEXELXI_HOST_MODULE)
        return nullptr;
    const auto function = reinterpret_cast<WXRESFUNC>(dlsym(module, "WXresFunc"));
    entry->resFunc = function;
    if (function)
        function(WXRES_ATTACH, reinterpret_cast<intptr_t>(module), 0, 0);
    return function;
}

ResourceRecord *FindResource(HMODULE module, const void *name, const void *type)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    const WXRESFUNC send = ResourceFunctionOf(module);
    if (!send)
        return nullptr;
    const intptr_t found =
        send(WXRES_FIND, reinterpret_cast<intptr_t>(name), reinterpret_cast<intptr_t>(type), 0);
    if (!found)
        return nullptr;
    auto *record =
        static_cast<ResourceRecord *>(GlobalAlloc(GLOBAL_ZEROFILL, sizeof(ResourceRecord)));
    if (!record)
        return nullptr;
    record->owner = FindModule(module);
    record->found = found;
    return record;
}

ResourceRecord *LoadResource(HMODULE module, ResourceRecord *record)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    const WXRESFUNC send = ResourceFunctionOf(module);
    if (!send || !record)
        return nullptr;
    record->loaded = send(WXRES_LOAD, record->found, 0, 0);
    return record;
}

void *LockResource(ResourceRecord *record)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!record)
        return nullptr;
    return reinterpret_cast<void *>(SendToOwner(record, WXRES_LOCK, record->loaded));
}

int32_t UnlockResource(ResourceRecord *record)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!record)
        return 0;
    SendToOwner(record, WXRES_UNLOCK, record->loaded);
    return 1;
}

BOOL FreeResource(ResourceRecord *record)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!record)
        return FALSE;
    SendToOwner(record, WXRES_FREE, record->loaded);
    GlobalFree(record);
    return TRUE;
}

uint32_t SizeofResource(HMODULE, ResourceRecord *record)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return record ? static_cast<uint32_t>(SendToOwner(record, WXRES_SIZE, record->found)) : 0;
}

int32_t LoadString(HMODULE module, uint32_t id, char *destination, int32_t size)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    const WXRESFUNC send = ResourceFunctionOf(module);
    if (!send)
        return 0;
    return static_cast<int32_t>(send(WXRES_LOADSTRING, static_cast<intptr_t>(id),
                                     reinterpret_cast<intptr_t>(destination), size));
}
