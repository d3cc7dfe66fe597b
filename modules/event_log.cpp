// The host's own messages to the system log. None of this takes the global lock: the platform's log
// has one of its own.
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <syslog.h>

#include "wexelxi/processes.h"

namespace {

// The platform keeps the pointer to the name that it was opened with, so the name is ours.
std::mutex gNameLock;
char *gName = nullptr;

} // namespace

HANDLE RegisterEventSource(const char *, const char *source)
{
    char *name = source ? strdup(source) : nullptr;
    const std::lock_guard<std::mutex> guard(gNameLock);
    openlog(name, LOG_NDELAY, LOG_USER);
    free(gName);
    gName = name;
    return reinterpret_cast<HANDLE>(uintptr_t{1});
}

BOOL ReportEvent(HANDLE, uint16_t, uint16_t, uint32_t, void *, uint16_t count, uint32_t,
                 const char *const *strings, void *)
{
    std::string text;
    for (uint16_t i = 0; i < count; i++)
        text += strings[i] ? strings[i] : "";
    syslog(LOG_INFO, "%s", text.c_str());
    return TRUE;
}

BOOL DeregisterEventSource(HANDLE)
{
    closelog();
    return TRUE;
}
