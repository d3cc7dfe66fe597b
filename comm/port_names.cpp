// Port names, through section "Ports" of the profile to devices and types.
#include <cstring>
#include <optional>

#include "comm/port_text.h"
#include "core/lock.h"
#include "wexelxi/comm.h"
#include "wexelxi/core.h"
#include "wexelxi/profile.h"
#include "wexelxi/text.h"

using namespace wexelxi;

namespace {

// Upper-cases the name in place; what is upper-case already is not written to, so that a name may
// be a constant of the caller's.
void UpperCaseName(char *name)
{
    for (; *name; name++) {
        char upper = *name;
        AnsiUpperBuff(&upper, 1);
        if (upper != *name)
            *name = upper;
    }
}

// The lookup opens the configuration file by CreateFile, which asks here whether that is a port. It
// never is, even in a folder whose name starts like one: else the question would never end.
thread_local bool isLookingUp = false;

// A lookup that touches no last error leaves it as it was.
class LookupScope {
public:
    LookupScope()
    {
        isLookingUp = true;
        SetLastError(kUntouched);
    }
    ~LookupScope()
    {
        isLookingUp = false;
        if (GetLastError() == kUntouched)
            SetLastError(before_);
    }
    LookupScope(const LookupScope &) = delete;
    LookupScope &operator=(const LookupScope &) = delete;

private:
    static constexpr uint32_t kUntouched = 0xFFFFFFFF;
    const uint32_t before_ = GetLastError();
};

// Gives the length of the profile's entry; nothing if there was no memory to read it.
std::optional<uint32_t> LookUpPort(const char *name, char *device, uint32_t size)
{
    const LookupScope scope;
    const uint32_t length = GetProfileString("Ports", name, "", device, size);
    return GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? std::nullopt : std::optional(length);
}

} // namespace

uint32_t GetPortName(char *name, char *device, int32_t length)
{
    LockScope lock;
    if (!name || !device || length < 1 || isLookingUp)
        return PST_UNSPECIFIED;
    const PortName port = ParsePortName(name);
    if (port.number == 0)
        return PST_UNSPECIFIED;

    const auto size = static_cast<uint32_t>(length);
    memset(device, 0, size);
    UpperCaseName(name);
    const std::optional<uint32_t> found = LookUpPort(name, device, size);
    if (!found) // another device than the profile's would be a wrong one
        return PST_UNSPECIFIED;
    if (*found > 0)
        return GetDeviceType(device);
    lstrcpyn(device, DefaultDevice(port).c_str(), length);
    return port.isSerial ? PST_RS232 : PST_PARALLELPORT;
}

uint32_t GetDeviceType(char *value)
{
    LockScope lock;
    char *comma = strchr(value, ',');
    if (!comma)
        return PST_UNSPECIFIED;
    *comma = '\0';
    char *text = comma + 1;
    AnsiLowerBuff(text, static_cast<uint32_t>(strlen(text)));
    return PortTypeFromText(text);
}
