// The host's own messages to the system log.
#include <cstring>
#include <mutex>
#include <string>
#include <syslog.h>

#include "core/no_memory.h"
#include "core/owners.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

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
    MallocBlock<char> name(source ? strdup(source) : nullptr);
    const std::lock_guard<std::mutex> guard(gNameLock);
    openlog(name.get(), LOG_NDELAY, LOG_USER);
    name.reset(std::exchange(gName, name.release()));
    return reinterpret_cast<HANDLE>(uintptr_t{1});
}

BOOL ReportEvent(HANDLE, uint16_t, uint16_t, uint32_t, void *, uint16_t count, uint32_t,
                 const char *const *strings, void *)
{
    OrNoMemory([&] {
        std::string text;
        for (uint16_t i = 0; i < count; i++)
            text += strings[i] ? strings[i] : "";
        syslog(LOG_INFO, "%s", text.c_str());
    });
    return TRUE;
}

BOOL DeregisterEventSource(HANDLE)
{
    closelog();
    return TRUE;
}
