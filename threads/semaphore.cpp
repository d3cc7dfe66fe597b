// Semaphores of the process: the platform's own, by value in the handle's record.
#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "wexelxi/threads.h"

using namespace wexelxi;

HANDLE CreateSemaphore(LPVOID attributes, int32_t initialCount, int32_t, const char *name)
{
    LockScope lock;
    if (attributes || name)
        return FailWith<HANDLE>(ERROR_GEN_FAILURE, nullptr);
    NewHandle record = MakeHandle(HANDLE_SEMAPHORE);
    // A negative count is above the platform's limit, and refused by it.
    if (!record || sem_init(&record->sem, 0, static_cast<unsigned>(initialCount)) != 0)
        return FailWith<HANDLE>(ERROR_GEN_FAILURE, nullptr);
    SetLastError(ERROR_SUCCESS);
    return record.release();
}

BOOL ReleaseSemaphore(HANDLE semaphore, int32_t, int32_t *)
{
    LockScope lock;
    HandleRecord *record = HandleToRecord(semaphore);
    if (!record || record->kind != HANDLE_SEMAPHORE || sem_post(&record->sem) != 0)
        return Fail(ERROR_GEN_FAILURE);
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}
