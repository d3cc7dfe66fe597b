// The exported profile functions: names and sizes in, texts out, around the grammar and the file.
#include <algorithm>
#include <cstring>

#include "core/lock.h"
#include "profile/ini_file.h"
#include "profile/ini_text.h"
#include "wexelxi/profile.h"

using namespace wexelxi;

static constexpr const char *kConfigurationName = "win.ini";

const char *nextLine(const char *text)
{
    text += strcspn(text, "\r\n");
    if (*text == '\0')
        return text;
    return text[1] == '\n' ? text + 2 : text + 1;
}

int32_t findIniKey(const char *text, const char *section, const char *key, const char **position)
{
    if (!text || !section || !key)
        return -1;
    const IniKeySearch found = SearchIniKey(text, section, key);
    if (position && found.position != kNoPlace)
        *position = text + found.position;
    return found.value == kNoPlace ? -1 : static_cast<int32_t>(found.value);
}

// Copies a text, cut to fit, with its NUL; gives the characters copied.
static uint32_t CopyCut(char *destination, uint32_t size, std::string_view text)
{
    if (size == 0)
        return 0;
    const size_t length = std::min<size_t>(text.size(), size - 1);
    memmove(destination, text.data(), length);
    destination[length] = '\0';
    return static_cast<uint32_t>(length);
}

uint32_t GetPrivateProfileString(const char *section, const char *key, const char *defaultValue,
                                 char *destination, uint32_t size, const char *file)
{
    LockScope lock;
    if (!file || !destination)
        return 0;
    if (!section || !key)
        return defaultValue ? CopyCut(destination, size, defaultValue) : 0;
    const std::string_view text = ReadCachedIniText(ResolveIniName(file));
    const IniKeySearch found = SearchIniKey(text, section, key);
    if (found.value != kNoPlace)
        return CopyCut(destination, size, IniValueAt(text, found.value));
    return defaultValue ? CopyCut(destination, size, defaultValue) : 0;
}

uint32_t GetProfileString(const char *section, const char *key, const char *defaultValue,
                          char *destination, uint32_t size)
{
    return GetPrivateProfileString(section, key, defaultValue, destination, size,
                                   kConfigurationName);
}

uint32_t GetPrivateProfileSection(const char *section, char *destination, uint32_t size,
                                  const char *file)
{
    LockScope lock;
    if (!destination)
        return 0;
    destination[0] = '\0';
    if (!file || !section)
        return 0;
    const IniFile text = ReadIniFile(ResolveIniName(file));
    return CopyIniSection(ParsedPart(text.Bytes()), section, destination, size);
}

uint32_t GetProfileSection(const char *section, char *destination, uint32_t size)
{
    return GetPrivateProfileSection(section, destination, size, kConfigurationName);
}

BOOL WritePrivateProfileString(const char *section, const char *key, const char *value,
                               const char *file)
{
    LockScope lock;
    if (!file || !section || !key || !value)
        return FALSE;
    return WriteIniFile(ResolveIniName(file), section, key, value);
}

BOOL WriteProfileString(const char *section, const char *key, const char *value)
{
    return WritePrivateProfileString(section, key, value, kConfigurationName);
}
