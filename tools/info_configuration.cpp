// Sections configuration and settings: where they come from, and what is in force.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

#include "profile/setup.h"
#include "tools/info_sections.h"
#include "wexelxi.h"

namespace info {

namespace {

// What stands in the configuration file, or nothing.
Value InFile(const char *section, const std::string &key)
{
    char text[256] = "";
    const uint32_t length = GetProfileString(section, key.c_str(), "", text, sizeof text);
    return length ? Value(text) : Value();
}

Value SettingRow(const char *section, const std::string &key, Value inForce)
{
    return Value::Record{{"section", section},
                         {"key", key},
                         {"inForce", std::move(inForce)},
                         {"inFile", InFile(section, key)}};
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

std::string FileState(const std::string &file)
{
    struct stat state;
    if (stat(file.c_str(), &state) != 0)
        return errno == ENOENT ? "missing: a first start writes it" : strerror(errno);
    if (access(file.c_str(), R_OK) != 0)
        return std::string("not readable: ") + strerror(errno);
    return access(file.c_str(), W_OK) == 0 ? "readable and writable" : "readable, not writable";
}

std::string FolderState(const std::string &folder)
{
    struct stat state;
    if (stat(folder.c_str(), &state) != 0)
        return strerror(errno);
    if (!S_ISDIR(state.st_mode))
        return "not a folder";
    return access(folder.c_str(), W_OK | X_OK) == 0 ? "writable" : "not writable";
}

} // namespace

Value DescribeConfiguration(const Session &session)
{
    const Place &place = session.place();
    struct stat state = {};
    stat(place.file.c_str(), &state);
    return Value::Record{
        {"folder", place.folder},
        {"folderFrom", place.folderFrom},
        {"folderState", FolderState(place.folder.empty() ? "/" : place.folder)},
        {"file", place.file},
        {"fileState", FileState(place.file)},
        {"fileBytes", static_cast<int64_t>(state.st_size)},
    };
}

Value DescribeSettings(const Session &)
{
    Value::List rows;
    Value::List colours;
    for (const wexelxi::SetupKey &key : wexelxi::kSetupKeys) {
        for (uint32_t i = 0; i < key.count; i++) {
            const int32_t value = wexelxi::PresentValue(key, i);
            if (key.value == WinsysColArr)
                colours.push_back(SettingRow(wexelxi::kSetupSection,
                                             key.name + std::to_string(i + 1),
                                             ColourText(static_cast<COLORREF>(value))));
            else
                rows.push_back(SettingRow(wexelxi::kSetupSection, key.name, value));
        }
    }
    std::move(colours.begin(), colours.end(), std::back_inserter(rows));
    return Value::Record{{"texts", TextsRecord()},
                         {"screenResolution", Value::List{gLOGPIXELSX, gLOGPIXELSY}},
                         {"values", std::move(rows)}};
}

} // namespace info
