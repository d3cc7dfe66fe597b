// The host's own messages to the system log.
#include <cstring>
#include <mutex>
#include <syslog.h>

#include "core/owners.h"
#include "wexelxi/processes.h"

namespace {

// The platform keeps the pointer to the name that it was opened with, so the name is ours. It has a
// guard of its own, since no function here may wait for the global lock, which is held for minutes
// while a command runs: that is when a host has something to log. Under it nothing of the library
// is called.
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
    size_t bytes = 1;
    for (uint16_t i = 0; i < count; i++)
        bytes += strings[i] ? strlen(strings[i]) : 0;
    const wexelxi::MallocBlock<char> text(static_cast<char *>(malloc(bytes)));
    if (!text)
        return TRUE;
    char *end = text.get();
    for (uint16_t i = 0; i < count; i++)
        end = stpcpy(end, strings[i] ? strings[i] : "");
    *end = '\0';
    syslog(LOG_INFO, "%s", text.get());
    return TRUE;
}

BOOL DeregisterEventSource(HANDLE)
{
    closelog();
    return TRUE;
}
