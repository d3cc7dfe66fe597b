// The global lock, taken by a scope guard at the top of an exported function.
//
// The lock is a count in a thread-local slot plus one mutex, which is taken on the step of the
// count from 0 to 1 and given back on the step from 1 to 0. It is inactive while
// gWexelxiCriticalSection is null: then no count moves. A nested round costs one read and one write
// of the slot each way, so functions that hold the lock call others that take it freely.
#pragma once

#include <cassert>
#include <cstdint>
#include <pthread.h>

#include "wexelxi/core.h"

namespace wexelxi {

// Tells the host's hook of a lock fault and keeps errno; does nothing when none is installed.
[[gnu::cold]] void ReportCriticalSectionError(const char *word, int32_t code);
// The same from a round of the lock that was not counted: the hook finds the count at 1.
[[gnu::cold]] void ReportUncounted(const char *word, int32_t code);

// The mutex that a critical section's slot points to, or null.
inline pthread_mutex_t *MutexIn(void *const *slot)
{
    return static_cast<pthread_mutex_t *>(__atomic_load_n(slot, __ATOMIC_ACQUIRE));
}

// What is no mutex, or fails, is reported, and the caller goes on unprotected. The mutex operations
// leave errno alone.
inline void LockMutex(pthread_mutex_t *mutex)
{
    if (!mutex)
        ReportCriticalSectionError("badenter", 0);
    else if (const int code = pthread_mutex_lock(mutex))
        ReportCriticalSectionError("enter", code);
}

template <auto Report = ReportCriticalSectionError>
inline void UnlockMutex(pthread_mutex_t *mutex)
{
    if (!mutex)
        Report("badleave", 0);
    else if (const int code = pthread_mutex_unlock(mutex))
        Report("leave", code);
}

inline bool GlobalLockIsActive()
{
    return MutexIn(&gWexelxiCriticalSection) != nullptr;
}

inline uint32_t LockCount()
{
    return static_cast<uint32_t>(
        reinterpret_cast<uintptr_t>(pthread_getspecific(gCriticalSectionTLS)));
}

inline void StoreLockCount(uint32_t count)
{
    pthread_setspecific(gCriticalSectionTLS,
                        reinterpret_cast<void *>(static_cast<uintptr_t>(count)));
}

// The first line of a function whose caller holds the lock; nothing in a release.
inline void AssertLockHeld()
{
    assert(!GlobalLockIsActive() || LockCount() > 0);
}

// The slot is read again for the steps from 0 to 1 and from 1 to 0: FreeLib may have emptied it
// since the first test.
inline void EnterGlobalLock()
{
    if (!GlobalLockIsActive())
        return;
    const uint32_t count = LockCount();
    if (count == 0)
        LockMutex(MutexIn(&gWexelxiCriticalSection));
    StoreLockCount(count + 1);
}

inline void LeaveGlobalLock()
{
    if (!GlobalLockIsActive())
        return;
    const uint32_t count = LockCount();
    if (count == 1)
        UnlockMutex(MutexIn(&gWexelxiCriticalSection));
    StoreLockCount(count - 1);
}

// Holds the lock for a scope, also when a callback or a cancelled thread unwinds through it.
class [[nodiscard]] LockScope {
public:
    LockScope() { EnterGlobalLock(); }
    ~LockScope() noexcept(false) { LeaveGlobalLock(); }
    LockScope(const LockScope &) = delete;
    LockScope &operator=(const LockScope &) = delete;
};

// The same for a function that meanwhile calls nothing that could ask for the count, which then
// stays as it is; before it does call such a thing after all, it has the scope counted.
class [[nodiscard]] BriefLockScope {
public:
    BriefLockScope() : isOuter_(GlobalLockIsActive() && LockCount() == 0)
    {
        if (isOuter_)
            LockMutex(MutexIn(&gWexelxiCriticalSection));
        assert(Count()); // for AssertLockHeld
    }
    ~BriefLockScope() noexcept(false)
    {
        if (isCounted_)
            LeaveGlobalLock();
        else if (isOuter_ && GlobalLockIsActive())
            UnlockMutex<ReportUncounted>(MutexIn(&gWexelxiCriticalSection));
    }
    BriefLockScope(const BriefLockScope &) = delete;
    BriefLockScope &operator=(const BriefLockScope &) = delete;

    bool Count()
    {
        if (isOuter_ && !isCounted_)
            StoreLockCount(1);
        isCounted_ = isOuter_;
        return true;
    }

private:
    const bool isOuter_;
    bool isCounted_ = false;
};

} // namespace wexelxi
