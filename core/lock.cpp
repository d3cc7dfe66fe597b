// The global lock's outer steps, its exported pair and the hook for lock faults.
#include "core/lock.h"

#include <cerrno>

using namespace wexelxi;

void *gWexelxiCriticalSection = nullptr;
uint32_t gCriticalSectionTLS = 0;

namespace wexelxi {
namespace {

CRITICALSECTIONERRORPROC gCriticalSectionErrorProc = nullptr;

// The slot is read again in both steps: FreeLib may have emptied it since the caller's test, and
// such a thread goes on unprotected and reported. The mutex operations leave errno alone.
pthread_mutex_t *GlobalMutex()
{
    return static_cast<pthread_mutex_t *>(
        __atomic_load_n(&gWexelxiCriticalSection, __ATOMIC_ACQUIRE));
}

} // namespace

void ReportCriticalSectionError(const char *word, int32_t code)
{
    if (!gCriticalSectionErrorProc)
        return;
    const int saved = errno;
    gCriticalSectionErrorProc(word, code);
    errno = saved;
}

void AcquireGlobalMutex()
{
    pthread_mutex_t *mutex = GlobalMutex();
    if (!mutex)
        ReportCriticalSectionError("badenter", 0);
    else if (const int code = pthread_mutex_lock(mutex))
        ReportCriticalSectionError("enter", code);
}

void ReleaseGlobalMutex()
{
    pthread_mutex_t *mutex = GlobalMutex();
    if (!mutex)
        ReportCriticalSectionError("badleave", 0);
    else if (const int code = pthread_mutex_unlock(mutex))
        ReportCriticalSectionError("leave", code);
}

} // namespace wexelxi

void gEnterWexelxiCriticalSection(void)
{
    EnterGlobalLock();
}

void gLeaveWexelxiCriticalSection(void)
{
    LeaveGlobalLock();
}

void SetCriticalSectionErrorProc(CRITICALSECTIONERRORPROC proc)
{
    gCriticalSectionErrorProc = proc;
}
