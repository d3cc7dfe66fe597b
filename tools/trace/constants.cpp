// Numbers by the names that the public headers give them.
#include "tools/trace/values.h"
#include "wexelxi.h"

namespace trace {
namespace {

struct Constant {
    std::string_view group;
    std::string_view name;
    uint64_t value;
};
const Constant kConstants[] = {
#define NAME(group, name) {group, #name, static_cast<uint32_t>(name)},
#include "constants.def"
#undef NAME
};

// Which group an argument's numbers are of; an empty function stands for every one, an empty
// parameter for the result. Bits may be several of the group.
struct Place {
    std::string_view function;
    std::string_view parameter;
    std::string_view group;
    bool isBits = false;
};
const Place kPlaces[] = {
    {"CreateFile", "access", "Access to a file", true},
    {"", "shareMode", "Share modes", true},
    {"", "disposition", "Dispositions of CreateFile"},
    {"", "method", "Origins of a seek"},
    {"SetFilePointer", "", "Failing results"},
    {"GetFileSize", "", "Failing results"},
    {"_lclose", "", "Failing results"},
    {"SetFileAttributes", "attributes", "File attributes", true},
    {"GetFileAttributes", "", "File attributes", true},
    {"GlobalAlloc", "flags", "GLOBAL", true},
    {"GlobalReAlloc", "flags", "GLOBAL", true},
    {"GetDeviceType", "", "Port types"},
    {"GetPortName", "", "Port types"},
    {"CreateThread", "flags", "CREATE", true},
    {"", "timeout", "Waiting"},
    {"WaitForSingleObject", "", "Waiting"},
    {"WinExecEx", "flags", "WINEXEC", true},
    {"GetDeviceCaps", "index", "Indexes of GetDeviceCaps"},
    {"GetSystemMetrics", "index", "Indexes of GetSystemMetrics"},
    {"DocumentProperties", "mode", "Modes of DocumentProperties", true},
    {"", "capability", "Capabilities, for DeviceCapabilities"},
    {"", "paperCode", "Paper codes"},
    {"CreateFont", "weight", "Font weights"},
    {"", "language", "Default languages"},
    {"GetLocaleInfo", "key", "Keys of the language tables, in the order of their rows"},
    {"GetDateFormat", "flags", "Flags of GetDateFormat", true},
    {"GetTimeFormat", "flags", "TIME", true},
    {"FormatLocaleString", "flags", "TIME", true},
    {"SetLastError", "code", "Last error numbers"},
    {"SetLastError", "code", "Last errors of line settings"},
    {"SetLastError", "code", "Last errors of printing"},
    {"GetLastError", "", "Last error numbers"},
    {"GetLastError", "", "Last errors of line settings"},
    {"GetLastError", "", "Last errors of printing"},
};

bool AddExact(Line &line, std::string_view group, uint64_t value)
{
    for (const Constant &constant : kConstants) {
        if (constant.group != group || constant.value != value)
            continue;
        line.Add(constant.name);
        return true;
    }
    return false;
}

bool AddBits(Line &line, std::string_view group, uint64_t value)
{
    const size_t start = line.size();
    for (const Constant &constant : kConstants) {
        if (constant.group != group || (value & constant.value) == 0)
            continue;
        line.Add(line.size() > start ? "|" : "");
        line.Add(constant.name);
        value &= ~constant.value;
    }
    if (value != 0 && line.size() > start)
        line.Format("|0x%llx", static_cast<unsigned long long>(value));
    return line.size() > start;
}

} // namespace

bool AddConstant(Line &line, std::string_view function, std::string_view parameter, uint64_t value)
{
    for (const Place &place : kPlaces)
        if (place.parameter == parameter &&
            (place.function.empty() || place.function == function) &&
            (AddExact(line, place.group, value) ||
             (place.isBits && AddBits(line, place.group, value))))
            return true;
    return false;
}

} // namespace trace
