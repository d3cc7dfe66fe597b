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

const char *TypeName(uint32_t type)
{
    static const char *const names[] = {"none",  "rs232", "parallelport", "rs422",
                                        "rs423", "rs449", "modem"};
    return type < std::size(names) ? names[type] : "unknown";
}

Value PortRow(std::string name, const char *from)
{
    const std::string given = name;
    char device[256] = "";
    const uint32_t type = GetPortName(name.data(), device, 255);
    const bool isPort = type != PST_UNSPECIFIED;
    return Value::Record{
        {"name", given},
        {"from", from},
        {"type", TypeName(type)},
        {"device", isPort ? Value(device) : Value()},
        {"state", isPort ? OpenState(device) : "an ordinary file name: no type behind a comma"},
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
    return Value::Record{{"drainSeconds", static_cast<int64_t>(seconds ? seconds : 120)},
                         {"ports", std::move(rows)}};
}

} // namespace info
