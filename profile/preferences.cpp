// The settings and texts that a start loads from the configuration file, and what it writes there
// where the file lacks them.
#include <cstring>
#include <iterator>

#include "core/lock.h"
#include "profile/folder.h"
#include "profile/ini_cache.h"
#include "profile/setup.h"
#include "wexelxi/memory.h"
#include "wexelxi/preferences.h"

using namespace wexelxi;

int32_t gVersion = 4;
int32_t gBellLevel = 100;
int32_t gTimerRate = 50;
uint8_t gNoFreeLibrary = 0;
char *gStrings[std::size(gDefaultStrings)];

namespace {

void StoreString(size_t index, const char *text)
{
    const auto size = static_cast<int32_t>(strlen(text) + 1);
    auto *copy = static_cast<char *>(GlobalAlloc(0, size));
    if (!copy)
        return;
    memcpy(copy, text, static_cast<size_t>(size));
    GlobalFree(gStrings[index]); // behind the copy: the text may be the one that it replaces
    gStrings[index] = copy;
}

// Reads a value into a buffer, cut to fit. What is missing or empty is written, as given.
template <size_t Size>
const char *LoadText(IniDraft &draft, const char *section, const char *key, const char *otherwise,
                     char (&buffer)[Size])
{
    const auto value = draft.Get(section, key);
    if (!value || value->empty()) {
        draft.Set(section, key, otherwise);
        return otherwise;
    }
    buffer[value->copy(buffer, Size - 1)] = '\0';
    return buffer;
}

void LoadPreferences(IniDraft &draft)
{
    LoadSetup(draft);
    char languageRoom[256];
    const char *language = LoadText(draft, "Localize", "Language", "English", languageRoom);
    for (size_t i = 0; i < std::size(gStrings); i++) {
        char room[255];
        const NumberedText key(static_cast<int32_t>(i) + 1);
        const char *text = LoadText(draft, language, key.Text(), gDefaultStrings[i], room);
        if (!gStrings[i])
            StoreString(i, text);
    }
}

} // namespace

void gLoadPref(void)
{
    LockScope lock;
    IniDraft draft(ResolveIniName("win.ini"));
    do
        LoadPreferences(draft);
    while (!draft.Save());
    GetSystemColors(WinsysColArr);
}

void gFreePref(void)
{
    LockScope lock;
    for (char *&text : gStrings) {
        GlobalFree(text);
        text = nullptr;
    }
}

const char *GetWinString(uint32_t index)
{
    return index < std::size(gStrings) ? gStrings[index] : nullptr;
}

const char *GetWinStringUtf8(uint32_t index)
{
    return GetWinString(index);
}

void SetWinString(int32_t index, const char *text)
{
    if (index >= 0 && static_cast<size_t>(index) < std::size(gStrings) && text)
        StoreString(static_cast<size_t>(index), text);
}
