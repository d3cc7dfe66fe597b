// Sections version, modules and locking: the library itself in this process.
#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <sstream>

#include "tools/info_sections.h"
#include "wexelxi.h"

namespace fs = std::filesystem;

namespace info {

namespace {

// The file that a function of this process comes from.
std::string FileOf(const void *function)
{
    Dl_info found = {};
    std::error_code ignored;
    if (!dladdr(function, &found) || !found.dli_fname)
        return "";
    return fs::absolute(found.dli_fname, ignored).string();
}

Value FontconfigVersion()
{
    auto *version = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "FcGetVersion"));
    if (!version)
        return {};
    const int number = version();
    return std::to_string(number / 10000) + "." + std::to_string(number / 100 % 100) + "." +
           std::to_string(number % 100);
}

Value PangoVersion()
{
    auto *version =
        reinterpret_cast<const char *(*)()>(dlsym(RTLD_DEFAULT, "pango_version_string"));
    return version ? Value(version()) : Value();
}

Value MachineRecord()
{
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    char name[256] = "", user[256] = "";
    uint32_t size = sizeof name;
    GetComputerName(name, &size);
    size = sizeof user;
    GetUserName(user, &size);
    return Value::Record{
        {"name", name},
        {"user", user},
        {"processors", system.dwNumberOfProcessors},
        {"processorType", system.dwProcessorType},
        {"processorLevel", system.wProcessorLevel},
        {"processorRevision", system.wProcessorRevision},
    };
}

// The modules in the folders of LD_LIBRARY_PATH, which a load by a bare name looks into.
Value::List ModulesOnThePath()
{
    const char *variable = getenv("LD_LIBRARY_PATH");
    std::istringstream folders(variable ? variable : "");
    std::vector<std::string> names;
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code error;
        for (fs::directory_iterator at(folder.empty() ? "." : folder, error), end;
             !error && at != end; at.increment(error))
            if (at->path().extension() == ".so")
                names.push_back(at->path().string());
    }
    std::sort(names.begin(), names.end());
    return {names.begin(), names.end()};
}

} // namespace

Value DescribeVersion(const Session &)
{
    return Value::Record{
        {"library", INFO_VERSION},
        {"file", FileOf(reinterpret_cast<const void *>(&InitLib))},
        {"fontconfig", FontconfigVersion()},
        {"pango", PangoVersion()},
        {"machine", MachineRecord()},
    };
}

Value DescribeModules(const Session &)
{
    char host[4096] = "";
    GetModuleFileName(WEXELXI_HOST_MODULE, host, sizeof host);
    return Value::Record{
        {"host", host},
        {"loaded", gHMODULE},
        {"keptUntilTheEnd", gNoFreeLibrary != 0},
        {"nameRule", "cut at the last dot, then \".so\" is put behind: report.dll is report.so"},
        {"bareNamesAreSearched", "as dlopen does: LD_LIBRARY_PATH, then the system's folders"},
        {"LD_LIBRARY_PATH", VariableOrNothing("LD_LIBRARY_PATH")},
        {"inThoseFolders", ModulesOnThePath()},
    };
}

Value DescribeLocking(const Session &)
{
    return Value::Record{
        {"active", gWexelxiCriticalSection != nullptr},
        {"countKey", gCriticalSectionTLS},
        {"lastErrorKey", gLastErrorTLS},
        {"ready", gReady != 0},
        {"terminating", gTerminating != 0},
    };
}

} // namespace info
