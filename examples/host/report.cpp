#include "report.h"

#include "../plugin/report.h"
#include "host.h"

// The host is module 1, and its name is the full path that InitLib was given.
static std::string HostFolder()
{
    char path[4096];
    GetModuleFileName(reinterpret_cast<HMODULE>(1), path, sizeof path);
    const std::string full = path;
    return full.substr(0, full.rfind('/'));
}

Report::Report(bool german) : german_(german)
{
    const std::string name = HostFolder() + "/report.dll";
    module_ = LoadLibrary(name.c_str());
    if (!module_) {
        char reason[512];
        GetLastErrorString(reason, sizeof reason);
        throw std::runtime_error("LoadLibrary: " + std::string(reason));
    }
}

Report::~Report()
{
    FreeLibrary(module_);
}

std::string Report::Text(uint32_t id) const
{
    char text[256];
    const uint32_t number = german_ ? REPORT_GERMAN + id : id;
    Check(LoadString(module_, number, text, sizeof text) > 0, "LoadString");
    return text;
}

std::string Report::Template() const
{
    auto *record = FindResource(module_, REPORT_TEMPLATE, nullptr);
    Check(record != nullptr, "FindResource");
    LoadResource(module_, record);
    const auto *data = static_cast<const char *>(LockResource(record));
    const std::string text(data, SizeofResource(module_, record));
    UnlockResource(record);
    FreeResource(record);
    return text;
}
