// Sections configuration and settings: where they come from, and what is in force.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

#include "profile/setup.h"
#include "tools/info_sections.h"
#include "wexelxi.h"

namespace fs = std::filesystem;

namespace info {

namespace {

// What the file holds for a key of section "Setup", or nothing, beside what is in force.
Value SettingRow(const std::string &key, Value inForce)
{
    const std::string section(wexelxi::kSetupSection);
    char text[256] = "";
    const bool isThere = GetProfileString(section.c_str(), key.c_str(), "", text, sizeof text) != 0;
    return Value::Record{{"section", section},
                         {"key", key},
                         {"inForce", std::move(inForce)},
                         {"inFile", isThere ? Value(text) : Value()}};
}

std::string ColourText(COLORREF colour)
{
    char text[16];
    snprintf(text, sizeof text, "0x%06X", colour);
    return text;
}

// The texts that differ from those of the library.
Value TextsRecord()
{
    char language[256] = "";
    GetProfileString("Localize", "Language", "English", language, sizeof language);
    int64_t changed = 0;
    for (uint32_t i = 0; i < 135; i++)
        changed += strcmp(GetWinStringUtf8(i), gDefaultStrings[i]) != 0;
    return Value::Record{{"section", language}, {"texts", 135}, {"differentFromBuiltIn", changed}};
}

// What keeps a host from using the folder, with the remedy; nothing if it can.
std::string FolderFault(const std::string &folder)
{
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found) {
        fs::path above = fs::absolute(folder, error);
        while (above.has_relative_path() && !fs::exists(above, error))
            above = above.parent_path();
        return std::string("does not exist, and the library makes none: make it, with mkdir -p") +
               (access(above.c_str(), W_OK) == 0 ? "" : " as root: this user may not");
    }
    if (error)
        return error.message() + ": let the host's user in";
    if (!fs::is_directory(status))
        return "not a folder: name another one in WEXELXIDIR";
    return access(folder.c_str(), W_OK | X_OK) == 0
               ? ""
               : "not writable: settings will not be kept; let the host's user write there";
}

std::string FileFault(const Session &session)
{
    const std::string &file = session.place().file;
    std::error_code error;
    if (!fs::exists(file, error))
        return "";
    if (!fs::is_regular_file(file, error))
        return "no ordinary file: the library reads nothing from it; remove it";
    if (access(file.c_str(), R_OK) != 0)
        return "not readable: the defaults hold; let the host's user read it";
    return access(file.c_str(), W_OK) == 0
               ? ""
               : "not writable: settings will not be kept; let the host's user write it";
}

std::string FolderOf(const Session &session)
{
    const std::string &folder = session.place().folder;
    return folder.empty() ? "/" : folder;
}

std::string FileState(const Session &session)
{
    std::error_code error;
    const std::string fault = FileFault(session);
    if (!fault.empty())
        return fault;
    if (!fs::exists(session.place().file, error))
        return FolderFault(FolderOf(session)).empty() ? "missing: a first start writes it"
                                                      : "missing";
    return session.isCut()
               ? "larger than 1 MiB: every start reads it all many times, and only its first MiB "
                 "is told here; keep data elsewhere"
               : "readable and writable";
}

} // namespace

Value DescribeConfiguration(const Session &session)
{
    const Place &place = session.place();
    struct stat state = {};
    stat(place.file.c_str(), &state);
    const std::string fault = FolderFault(FolderOf(session));
    return Value::Record{
        {"folder", place.folder},
        {"folderFrom", place.folderFrom},
        {"folderState", fault.empty() ? "writable" : fault},
        {"file", place.file},
        {"fileState", FileState(session)},
        {"fileBytes", state.st_size},
    };
}

Value DescribeSettings(const Session &)
{
    Value::List rows;
    Value::List colours;
    for (const wexelxi::SetupKey &key : wexelxi::kSetupKeys) {
        for (uint32_t i = 0; i < key.count; i++) {
            const int32_t value = wexelxi::PresentValue(key, i);
            const std::string name(key.name);
            if (key.value == WinsysColArr)
                colours.push_back(SettingRow(name + std::to_string(i + 1),
                                             ColourText(static_cast<COLORREF>(value))));
            else
                rows.push_back(SettingRow(name, value));
        }
    }
    std::move(colours.begin(), colours.end(), std::back_inserter(rows));
    return Value::Record{{"texts", TextsRecord()},
                         {"screenResolution", Value::List{gLOGPIXELSX, gLOGPIXELSY}},
                         {"values", std::move(rows)}};
}

Faults CheckConfiguration(const Session &session)
{
    Faults faults;
    if (!session.place().isHosts)
        return faults;
    const std::string folderFault = FolderFault(FolderOf(session));
    if (!folderFault.empty())
        faults.push_back(FolderOf(session) + ": " + folderFault);
    const std::string fileFault = FileFault(session);
    if (!fileFault.empty())
        faults.push_back(session.place().file + ": " + fileFault);
    return faults;
}

} // namespace info
