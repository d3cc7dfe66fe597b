// The exported profile functions: names and sizes in, texts out, around the grammar and the file.
#include <algorithm>
#include <cstring>

#include "core/lock.h"
#include "profile/folder.h"
#include "profile/ini_cache.h"
#include "profile/ini_text.h"
#include "wexelxi/profile.h"

using namespace wexelxi;

namespace {

constexpr const char *kConfigurationName = "win.ini";

// Copies a value, cut to fit, with its NUL; gives the characters copied.
uint32_t CopyValue(char *destination, uint32_t size, std::string_view value)
{
    if (size == 0)
        return 0;
    const size_t length = std::min<size_t>(value.size(), size - 1);
    memmove(destination, value.data(), length);
    destination[length] = '\0';
    return static_cast<uint32_t>(length);
}

} // namespace

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

uint32_t GetPrivateProfileString(const char *section, const char *key, const char *defaultValue,
                                 char *destination, uint32_t size, const char *file)
{
    LockScope lock;
    if (!file || !destination)
        return 0;
    if (section && key) {
        if (const auto value = ReadIniKey(ResolveIniName(file), section, key))
            return CopyValue(destination, size, *value);
    }
    return defaultValue ? CopyValue(destination, size, defaultValue) : 0;
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
    const FileText text = ReadIniText(ResolveIniName(file));
    return CopyIniSection(ParsedPart(text.View()), section, destination, size);
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
    return WriteIniKey(ResolveIniName(file), section, key, value);
}

BOOL WriteProfileString(const char *section, const char *key, const char *value)
{
    return WritePrivateProfileString(section, key, value, kConfigurationName);
}

void TermIni(void)
{
    // No lock: FreeLib calls this when the lock is gone.
    DropIniCache();
}
