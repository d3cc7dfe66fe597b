// Port names, through section "Ports" of the profile to devices and types.
#include <cstring>

#include "comm/port_text.h"
#include "core/lock.h"
#include "wexelxi/comm.h"
#include "wexelxi/profile.h"
#include "wexelxi/text.h"

using namespace wexelxi;

// Upper-cases the name in place; a name that is upper-case already is not written to, so that it
// may be a constant of the caller's.
static void UpperCaseName(char *name)
{
    std::string upper(name);
    AnsiUpperBuff(upper.data(), static_cast<uint32_t>(upper.size()));
    if (upper != name)
        memcpy(name, upper.data(), upper.size());
}

static void CopyCut(const std::string &text, char *destination, size_t size)
{
    destination[text.copy(destination, size - 1)] = '\0';
}

// The lookup opens the configuration file by CreateFile, which asks here whether that is a port. It
// never is, even in a folder whose name starts like one: else the question would never end.
static thread_local bool isLookingUp = false;

static uint32_t LookUpPort(const char *name, char *device, uint32_t size)
{
    isLookingUp = true;
    const uint32_t length = GetProfileString("Ports", name, "", device, size);
    isLookingUp = false;
    return length;
}

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
    if (LookUpPort(name, device, size) != 0)
        return GetDeviceType(device);
    CopyCut(DefaultDevice(port), device, size);
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
