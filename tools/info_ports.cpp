// Section ports: the names of section "Ports" and the built-in ones, and whether their devices
// open.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "tools/info_sections.h"
#include "wexelxi.h"

namespace info {

namespace {

// Whether the device opens. It is opened without a wait, without becoming the terminal of this
// process, and nothing is set on it.
std::string OpenState(const std::string &device)
{
    const int descriptor = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return strerror(errno);
    const bool isTerminal = isatty(descriptor);
    close(descriptor);
    return isTerminal ? "opens, a terminal line" : "opens, no terminal line";
}

// Why the device does not open, and what to do about it; nothing if it does.
std::string DeviceFault(const std::string &device)
{
    const std::string state = OpenState(device);
    if (state.compare(0, 5, "opens") == 0)
        return "";
    return device + ": " + state + "; " +
           (errno == EACCES ? "let the host's user open it (usermod -aG dialout USER)"
                            : "attach the device, or correct its entry in section Ports");
}

const char *TypeName(uint32_t type)
{
    static const char *const names[] = {"none",  "rs232", "parallelport", "rs422",
                                        "rs423", "rs449", "modem"};
    return type < std::size(names) ? names[type] : "unknown";
}

struct Port {
    std::string name; // as section "Ports" or the built-in list has it
    std::string device;
    uint32_t type = PST_UNSPECIFIED;
    std::string typeText; // behind the comma of its entry
    bool isPort = false;  // whether the library takes the name for a port's
};

Port LookUp(const std::string &name)
{
    Port port;
    port.name = name;
    std::string given = name; // upper-cased in place
    std::string entry(256, '\0');
    port.type = GetPortName(given.data(), entry.data(), 255);
    port.device = entry.c_str();
    port.isPort = !port.device.empty();
    port.typeText = entry.c_str() + port.device.size() + 1; // what stood behind a comma
    return port;
}

// What keeps the entry from being a port, and what to do about it; nothing if it is one.
std::string EntryFault(const Port &port)
{
    if (port.type != PST_UNSPECIFIED)
        return "";
    if (port.isPort && port.typeText.empty())
        return "an ordinary file name: no type behind a comma; add one such as rs232";
    if (port.isPort)
        return "an ordinary file name: \"" + port.typeText +
               "\" is no type; write rs232, rs422, rs423, rs449, modem or parallelport";
    std::string upper = port.name;
    AnsiUpperBuff(upper.data(), static_cast<uint32_t>(upper.size()));
    if (LookUp(upper).isPort)
        return "never looked at: ports have capital letters, write " + upper;
    return "no port's name: write COM1 to COM9, LPT1 to LPT9, EPT1 to EPT9 or EPT:";
}

Value PortRow(const std::string &name, const char *from)
{
    const Port port = LookUp(name);
    const std::string fault = EntryFault(port);
    return Value::Record{
        {"name", name},
        {"from", from},
        {"type", TypeName(port.type)},
        {"device", fault.empty() ? Value(port.device) : Value()},
        {"state", fault.empty() ? OpenState(port.device) : fault},
    };
}

// The keys of section "Ports", without "Delay".
std::vector<std::string> ConfiguredNames()
{
    std::vector<std::string> names;
    std::string lines(1 << 16, '\0');
    GetProfileSection("Ports", lines.data(), static_cast<uint32_t>(lines.size()));
    for (const char *line = lines.c_str(); *line; line += strlen(line) + 1) {
        const char *equals = strchr(line, '=');
        const std::string key(line, equals ? static_cast<size_t>(equals - line) : strlen(line));
        if (key != "Delay")
            names.push_back(key);
    }
    return names;
}

} // namespace

Value DescribePorts(const Session &)
{
    const std::vector<std::string> configured = ConfiguredNames();
    Value::List rows;
    for (const std::string &name : configured)
        rows.push_back(PortRow(name, "section Ports"));
    for (const char *name : {"COM1", "COM2", "COM3", "COM4", "LPT1"})
        if (std::find(configured.begin(), configured.end(), name) == configured.end())
            rows.push_back(PortRow(name, "built in"));
    char delay[5] = "";
    GetProfileString("Ports", "Delay", "", delay, sizeof delay);
    const long seconds = strtol(delay, nullptr, 10);
    return Value::Record{{"drainSeconds", seconds ? seconds : 120}, {"ports", std::move(rows)}};
}

Faults CheckPorts(const Session &)
{
    Faults faults;
    for (const std::string &name : ConfiguredNames()) {
        const Port port = LookUp(name);
        std::string fault = EntryFault(port);
        if (fault.empty())
            fault = DeviceFault(port.device);
        if (!fault.empty())
            faults.push_back(name + ": " + fault);
    }
    return faults;
}

} // namespace info
