// Threads: how they start, and the one kind of wait, for a thread's end or for a semaphore.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "wexelxi/threads.h"

using namespace wexelxi;

namespace {

bool Step(HandleRecord *record, uint32_t from, uint32_t to)
{
    return std::atomic_ref(record->join).compare_exchange_strong(from, to);
}

// A thread is joined once, so the first wait claims that before it begins. A wait that ends without
// the join, because it was cancelled too, gives the claim back.
class JoinClaim {
public:
    explicit JoinClaim(HandleRecord *record)
        : record_(!pthread_equal(record->thread, pthread_self()) &&
                          Step(record, JOIN_FREE, JOIN_CLAIMED)
                      ? record
                      : nullptr)
    {
    }
    ~JoinClaim()
    {
        if (record_ && !Step(record_, JOIN_CLAIMED, isJoined_ ? JOIN_OVER : JOIN_FREE))
            free(record_);
    }
    JoinClaim(const JoinClaim &) = delete;
    JoinClaim &operator=(const JoinClaim &) = delete;

    bool IsGranted() const { return record_; }
    bool Join()
    {
        isJoined_ = pthread_join(record_->thread, nullptr) == 0;
        return isJoined_;
    }

private:
    HandleRecord *record_; // null if the claim is another's
    bool isJoined_ = false;
};

} // namespace

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
        record->join = JOIN_OVER;
    }
    SetLastError(ERROR_SUCCESS);
    if (threadId)
        *threadId = record->thread;
    return record.release();
}

uint32_t WaitForSingleObject(HANDLE handle, uint32_t timeout)
{
    HandleRecord *record = HandleToRecord(handle);
    std::optional<JoinClaim> claim;
    {
        LockScope lock;
        if (!record || timeout != INFINITE)
            return FailWith(ERROR_GEN_FAILURE, WAIT_FAILED);
        if (record->kind == HANDLE_THREAD)
            claim.emplace(record);
        if (claim ? !claim->IsGranted() : record->kind != HANDLE_SEMAPHORE)
            return FailWith(ERROR_GEN_FAILURE, WAIT_FAILED);
    }
    // The lock is given back, one level of it, for as long as the wait lasts.
    if (claim ? claim->Join() : TEMP_FAILURE_RETRY(sem_wait(&record->sem)) == 0) {
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
