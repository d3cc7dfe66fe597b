#include "comm/port_text.h"

#include "wexelxi/comm.h"

namespace wexelxi {

namespace {

constexpr const char *kPrefixes[] = {"COM", "LPT", "EPT"};

// In this order: "rs232 modem" is a modem.
constexpr struct {
    std::string_view word;
    uint32_t type;
} kTypeKeywords[] = {
    {"modem", PST_MODEM}, {"parallelport", PST_PARALLELPORT},
    {"rs232", PST_RS232}, {"rs422", PST_RS422},
    {"rs423", PST_RS423}, {"rs449", PST_RS449},
};

uint32_t PortNumber(std::string_view name)
{
    if (name.find("EPT:") != name.npos)
        return 1;
    const char digit = name.size() > 3 ? name[3] : '0';
    return digit >= '0' && digit <= '9' ? static_cast<uint32_t>(digit - '0') : 0;
}

} // namespace

PortName ParsePortName(std::string_view name)
{
    for (const std::string_view prefix : kPrefixes) {
        const size_t place = name.find(prefix);
        if (place == name.npos)
            continue;
        // The first prefix that occurs at all decides: LPT1.COM is a file.
        return {prefix == "COM", place == 0 ? PortNumber(name) : 0};
    }
    return {false, 0};
}

std::string DefaultDevice(PortName port)
{
    return (port.isSerial ? "/dev/ttyS" : "/dev/lp") + std::to_string(port.number - 1);
}

uint32_t PortTypeFromText(std::string_view text)
{
    for (const auto &keyword : kTypeKeywords) {
        if (text.find(keyword.word) != text.npos)
            return keyword.type;
    }
    return PST_UNSPECIFIED;
}

} // namespace wexelxi
