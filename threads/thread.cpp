// Threads: how they start, and the one kind of wait, for a thread's end or for a semaphore.
#include <cerrno>
#include <pthread.h>
#include <sched.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "wexelxi/threads.h"

using namespace wexelxi;

HANDLE CreateThread(LPVOID attributes, uint32_t stackSize, THREAD_START_ROUTINE routine,
                    LPVOID argument, uint32_t flags, UINT_PTR *threadId)
{
    LockScope lock;
    if (attributes || stackSize != 0)
        return FailWith<HANDLE>(ERROR_GEN_FAILURE, nullptr);
    NewHandle record = MakeHandle(HANDLE_THREAD);
    if (!record || pthread_create(&record->thread, nullptr, routine, argument) != 0)
        return FailWith<HANDLE>(ERROR_GEN_FAILURE, nullptr);
    if (!(flags & CREATE_JOINABLE)) {
        pthread_detach(record->thread);
        record->detached = 1;
    }
    SetLastError(ERROR_SUCCESS);
    if (threadId)
        *threadId = record->thread;
    return record.release();
}

static bool WaitForSemaphore(sem_t *semaphore)
{
    while (sem_wait(semaphore) != 0) {
        if (errno != EINTR)
            return false;
    }
    return true;
}

// A thread is joined once. The first wait claims that before it begins, so that a second one fails
// instead of joining a thread that is gone, and the record may be closed while the wait lasts.
static bool ClaimJoin(HandleRecord *record)
{
    if (record->detached || pthread_equal(record->thread, pthread_self()))
        return false;
    record->detached = 1;
    return true;
}

static bool CanWait(HandleRecord *record, uint32_t timeout)
{
    if (!record || timeout != INFINITE)
        return false;
    return record->kind == HANDLE_THREAD ? ClaimJoin(record) : record->kind == HANDLE_SEMAPHORE;
}

uint32_t WaitForSingleObject(HANDLE handle, uint32_t timeout)
{
    HandleRecord *record = HandleToRecord(handle);
    bool isThread = false;
    pthread_t thread = {};
    {
        LockScope lock;
        if (!CanWait(record, timeout))
            return FailWith(ERROR_GEN_FAILURE, WAIT_FAILED);
        isThread = record->kind == HANDLE_THREAD;
        if (isThread)
            thread = record->thread;
    }
    // The lock is given back, one level of it, for as long as the wait lasts.
    if (isThread ? pthread_join(thread, nullptr) == 0 : WaitForSemaphore(&record->sem)) {
        SetLastError(ERROR_SUCCESS);
        return WAIT_OBJECT_0;
    }
    LockScope lock;
    return FailWith(ERROR_GEN_FAILURE, WAIT_FAILED);
}

BOOL SwitchToThread(void)
{
    sched_yield();
    return TRUE;
}

UINT_PTR GetCurrentThreadId(void)
{
    return pthread_self();
}
