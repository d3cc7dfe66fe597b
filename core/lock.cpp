// The global lock's exported pair and the hook for lock faults.
#include "core/lock.h"

#include <cerrno>

using namespace wexelxi;

void *gWexelxiCriticalSection = nullptr;
uint32_t gCriticalSectionTLS = 0;

namespace wexelxi {
namespace {

CRITICALSECTIONERRORPROC gCriticalSectionErrorProc = nullptr;

} // namespace

void ReportCriticalSectionError(const char *word, int32_t code)
{
    if (!gCriticalSectionErrorProc)
        return;
    const int saved = errno;
    gCriticalSectionErrorProc(word, code);
    errno = saved;
}

void ReportUncounted(const char *word, int32_t code)
{
    StoreLockCount(1);
    ReportCriticalSectionError(word, code);
    StoreLockCount(0);
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
