// The global lock's outer steps, its exported pair and the hook for lock faults.
#include "core/lock.h"

#include <cerrno>

using namespace wexelxi;

void *gWexelxiCriticalSection = nullptr;
uint32_t gCriticalSectionTLS = 0;

static CRITICALSECTIONERRORPROC gCriticalSectionErrorProc = nullptr;

namespace wexelxi {

void ReportCriticalSectionError(const char *word, int32_t code)
{
    if (gCriticalSectionErrorProc)
        gCriticalSectionErrorProc(word, code);
}

// Runs one operation on the mutex. The slot is read again here: FreeLib may have emptied it since
// the caller's test, and such a thread goes on unprotected and reported.
static void ChangeGlobalMutex(int (*operation)(pthread_mutex_t *), const char *word,
                              const char *goneWord)
{
    const int saved = errno;
    void *slot = __atomic_load_n(&gWexelxiCriticalSection, __ATOMIC_ACQUIRE);
    if (!slot)
        ReportCriticalSectionError(goneWord, 0);
    else if (const int code = operation(static_cast<pthread_mutex_t *>(slot)))
        ReportCriticalSectionError(word, code);
    errno = saved;
}

void AcquireGlobalMutex()
{
    ChangeGlobalMutex(pthread_mutex_lock, "enter", "badenter");
}

void ReleaseGlobalMutex()
{
    ChangeGlobalMutex(pthread_mutex_unlock, "leave", "badleave");
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
