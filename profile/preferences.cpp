// The settings and texts that a start loads from the configuration file, and what it writes there
// where the file lacks them.
#include <algorithm>
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

void StoreString(size_t index, std::string_view text)
{
    const auto size = static_cast<int32_t>(std::min<size_t>(text.size() + 1, INT32_MAX));
    auto *copy = static_cast<char *>(GlobalAlloc(0, size));
    if (!copy)
        return; // no memory, or a text that no block holds
    copy[text.copy(copy, text.size())] = '\0';
    GlobalFree(gStrings[index]); // behind the copy: the text may be the one that it replaces
    gStrings[index] = copy;
}

// A value, cut to fit a buffer of that size with its NUL. What is missing or empty is written.
std::string_view LoadText(IniDraft &draft, std::string_view section, std::string_view key,
                          std::string_view whenMissing, size_t room)
{
    const auto value = draft.Get(section, key);
    if (value && !value->empty())
        return value->substr(0, room - 1);
    draft.Set(section, key, whenMissing);
    return whenMissing;
}

void LoadPreferences(IniDraft &draft)
{
    LoadSetup(draft);
    // The draft's text moves with each write, and the name is needed for all of them.
    char room[256];
    const std::string_view loaded = LoadText(draft, "Localize", "Language", "English", sizeof room);
    const std::string_view language(room, loaded.copy(room, sizeof room));
    for (size_t i = 0; i < std::size(gStrings); i++) {
        const NumberedText key(static_cast<int32_t>(i) + 1);
        const std::string_view text =
            LoadText(draft, language, key.View(), gDefaultStrings[i], 255);
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
