// How handles of all kinds are made and end, and what every user of one asks first.
#include "files/handle.h"

#include <cstdlib>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/port_io.h"
#include "wexelxi/files.h"

using namespace wexelxi;

namespace wexelxi {
namespace {

HandleRecord *HandleToFile(HANDLE handle)
{
    HandleRecord *record = HandleToRecord(handle);
    if (!record || record->kind != HANDLE_FILE || !record->stream)
        return FailWith<HandleRecord *>(ERROR_GEN_FAILURE, nullptr);
    return record;
}

// A stream is gone whether or not its close went well: the record then waits, empty, for the call
// that frees it.
bool CloseStream(HandleRecord *record)
{
    FILE *stream = record->stream;
    if (!stream)
        return true;
    if (IsLineDevice(record->portType))
        DrainLineDevice(stream);
    record->stream = nullptr;
    return fclose(stream) == 0;
}

// A record that somebody waits with is left to that wait.
bool IsLeftToItsWait(HandleRecord *record)
{
    uint32_t claimed = JOIN_CLAIMED;
    return record->kind == HANDLE_THREAD &&
           __atomic_compare_exchange_n(&record->join, &claimed, JOIN_ORPHAN, false,
                                       __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
}

bool EndHandle(HandleRecord *record)
{
    switch (record->kind) {
    case HANDLE_SEMAPHORE:
        return sem_destroy(&record->sem) == 0;
    case HANDLE_THREAD:
        return true;
    case HANDLE_FILE:
        return CloseStream(record);
    default:
        return false;
    }
}

} // namespace

NewHandle MakeHandle(HandleKind kind)
{
    NewHandle record(static_cast<HandleRecord *>(calloc(1, sizeof(HandleRecord))));
    if (record)
        record->kind = kind;
    return record;
}

void CloseForGood(HANDLE handle)
{
    if (CloseHandle(handle))
        return;
    CloseHandle(handle);
    SetLastError(ERROR_GEN_FAILURE);
}

FILE *HandleToStream(HANDLE handle)
{
    const HandleRecord *record = HandleToFile(handle);
    return record ? record->stream : nullptr;
}

uint32_t GetHandlePortType(HANDLE handle)
{
    const HandleRecord *record = HandleToFile(handle);
    return record ? record->portType : 0;
}

} // namespace wexelxi

BOOL CloseHandle(HANDLE handle)
{
    LockScope lock;
    HandleRecord *record = HandleToRecord(handle);
    if (!record || !EndHandle(record))
        return Fail(ERROR_GEN_FAILURE);
    if (!IsLeftToItsWait(record))
        free(record);
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

uint32_t _lclose(HANDLE handle)
{
    return CloseHandle(handle) ? 0 : HFILE_ERROR;
}
