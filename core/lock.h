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

inline void RaiseLockCount(uint32_t count)
{
    if (count == 0)
        AcquireGlobalMutex();
    StoreLockCount(count + 1);
}

inline void LowerLockCount(uint32_t count)
{
    if (count == 1)
        ReleaseGlobalMutex();
    StoreLockCount(count - 1);
}

inline void EnterGlobalLock()
{
    if (GlobalLockIsActive())
        RaiseLockCount(LockCount());
}

inline void LeaveGlobalLock()
{
    if (GlobalLockIsActive())
        LowerLockCount(LockCount());
}

// Holds the lock for a scope, also when a callback or a cancelled thread unwinds through it.
class [[nodiscard]] LockScope {
public:
    LockScope() { EnterGlobalLock(); }
    ~LockScope() noexcept(false) { LeaveGlobalLock(); }
    LockScope(const LockScope &) = delete;
    LockScope &operator=(const LockScope &) = delete;
};

// The same for a function that calls no other of the library's or the host's meanwhile: what the
// count is on the way out is then known, and it is not read again.
class [[nodiscard]] BriefLockScope {
public:
    BriefLockScope() : count_(GlobalLockIsActive() ? LockCount() + 1 : 0)
    {
        if (count_ != 0)
            RaiseLockCount(count_ - 1);
    }
    ~BriefLockScope() noexcept(false)
    {
        if (count_ != 0 && GlobalLockIsActive())
            LowerLockCount(count_);
    }
    BriefLockScope(const BriefLockScope &) = delete;
    BriefLockScope &operator=(const BriefLockScope &) = delete;

private:
    const uint32_t count_; // as this scope has made it; 0 while the lock is inactive
};

} // namespace wexelxi
