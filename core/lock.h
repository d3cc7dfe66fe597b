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

// The steps from 0 to 1 and from 1 to 0. They report faults to the hook and keep errno.
void AcquireGlobalMutex();
void ReleaseGlobalMutex();

// Tells the host's hook of a lock fault; does nothing when none is installed.
void ReportCriticalSectionError(const char *word, int32_t code);

inline bool GlobalLockIsActive()
{
    return __atomic_load_n(&gWexelxiCriticalSection, __ATOMIC_ACQUIRE) != nullptr;
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

inline void EnterGlobalLock()
{
    if (!GlobalLockIsActive())
        return;
    const uint32_t count = LockCount();
    if (count == 0)
        AcquireGlobalMutex();
    StoreLockCount(count + 1);
}

inline void LeaveGlobalLock()
{
    if (!GlobalLockIsActive())
        return;
    const uint32_t count = LockCount();
    if (count == 1)
        ReleaseGlobalMutex();
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

// The same for a function that calls nothing of the host's and no other export: nobody can look at
// the count meanwhile, so it need not move, and the mutex alone is taken on the way from 0.
class [[nodiscard]] LeafLockScope {
public:
    LeafLockScope() : isOutermost_(GlobalLockIsActive() && LockCount() == 0)
    {
        if (isOutermost_)
            AcquireGlobalMutex();
    }
    ~LeafLockScope() noexcept(false)
    {
        if (isOutermost_ && GlobalLockIsActive())
            ReleaseGlobalMutex();
    }
    LeafLockScope(const LeafLockScope &) = delete;
    LeafLockScope &operator=(const LeafLockScope &) = delete;

private:
    const bool isOutermost_;
};

} // namespace wexelxi
