// Critical sections: a caller's slot that points to a recursive mutex of the heap's.
#include <cerrno>
#include <cstdlib>
#include <pthread.h>

#include "core/lock.h"
#include "wexelxi/threads.h"

using namespace wexelxi;

namespace {

pthread_mutex_t *MutexOf(CRITICAL_SECTION *section)
{
    return section ? MutexIn(section) : nullptr;
}

} // namespace

void InitializeCriticalSection(CRITICAL_SECTION *section)
{
    if (!section)
        return;
    auto *mutex = static_cast<pthread_mutex_t *>(malloc(sizeof(pthread_mutex_t)));
    if (mutex)
        *mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    __atomic_store_n(section, static_cast<void *>(mutex), __ATOMIC_RELEASE);
}

void DeleteCriticalSection(CRITICAL_SECTION *section)
{
    pthread_mutex_t *mutex = MutexOf(section);
    if (!mutex)
        return;
    // The slot empties first, so that a late comer finds it empty and no freed mutex.
    __atomic_store_n(section, static_cast<void *>(nullptr), __ATOMIC_RELEASE);
    pthread_mutex_destroy(mutex);
    free(mutex);
}

void EnterCriticalSection(CRITICAL_SECTION *section)
{
    LockMutex(MutexOf(section));
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION *section)
{
    pthread_mutex_t *mutex = MutexOf(section);
    if (!mutex) {
        ReportCriticalSectionError("badtryenter", 0);
        return FALSE;
    }
    const int code = pthread_mutex_trylock(mutex);
    if (code != 0 && code != EBUSY)
        ReportCriticalSectionError("tryenter", code);
    return code == 0;
}

void LeaveCriticalSection(CRITICAL_SECTION *section)
{
    UnlockMutex(MutexOf(section));
}
