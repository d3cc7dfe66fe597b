// The settings and texts that a start loads from the configuration file, and what it writes there
// where the file lacks them.
#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "core/lock.h"
#include "profile/ini_file.h"
#include "wexelxi/memory.h"
#include "wexelxi/preferences.h"
#include "wexelxi/profile.h"
#include "wexelxi/text.h"

using namespace wexelxi;

int32_t gVersion = 4;
int32_t gBellLevel = 100;
int32_t gTimerRate = 50;
uint8_t gNoFreeLibrary = 0;
char *gStrings[std::size(gDefaultStrings)];

namespace {

constexpr const char *kSetup = "Setup";
constexpr unsigned long kMaxTimerRate = 1000;

// A number as the file holds it.
class Decimal {
public:
    explicit Decimal(int32_t number) { itoa(number, text_, 10); }
    const char *Text() const { return text_; }

private:
    char text_[12];
};

// The key of a table's entry: a name and the index counted from 1.
class EntryKey {
public:
    EntryKey(const char *name, size_t index)
    {
        strcpy(text_, name);
        itoa(static_cast<int32_t>(index) + 1, text_ + strlen(text_), 10);
    }
    const char *Text() const { return text_; }

private:
    char text_[24];
};

unsigned long ReadNumber(const char *key, const char *defaultValue)
{
    char value[255];
    GetProfileString(kSetup, key, defaultValue, value, sizeof value);
    return strtoul(value, nullptr, 10);
}

void WriteNumber(const char *key, int32_t number)
{
    WriteProfileString(kSetup, key, Decimal(number).Text());
}

void WriteFirstSetup()
{
    WriteNumber("Version", gVersion);
    WriteNumber("BellLevel", gBellLevel);
    for (size_t i = 0; i < std::size(WinsysColArr); i++)
        WriteNumber(EntryKey("Color", i).Text(), static_cast<int32_t>(WinsysColArr[i]));
    WriteNumber("NoFreeLib", gNoFreeLibrary);
}

void ReadSetup()
{
    gBellLevel = static_cast<int32_t>(ReadNumber("BellLevel", "100"));
    for (size_t i = 0; i < std::size(WinsysColArr); i++) {
        const Decimal present(static_cast<int32_t>(WinsysColArr[i]));
        WinsysColArr[i] =
            static_cast<COLORREF>(ReadNumber(EntryKey("Color", i).Text(), present.Text()));
    }
    // Only 0 and 1 stand; the default is neither, so that a missing key is written.
    gNoFreeLibrary = static_cast<uint8_t>(ReadNumber("NoFreeLib", "9"));
    if (gNoFreeLibrary > 1) {
        gNoFreeLibrary = 0;
        WriteNumber("NoFreeLib", 0);
    }
}

// Loads section "Setup" but for the timer rate, or writes it if there is none. Gives the timer
// value that the file holds.
unsigned long LoadSetup()
{
    char version[255];
    GetProfileString(kSetup, "Version", "?", version, sizeof version);
    if (version[0] == '?') {
        WriteFirstSetup();
        return 0;
    }
    gVersion = static_cast<int32_t>(strtoul(version, nullptr, 10));
    ReadSetup();
    return ReadNumber("TimerRate", "0");
}

void StoreTimerRate(unsigned long rate)
{
    if (rate >= 1 && rate <= kMaxTimerRate)
        gTimerRate = static_cast<int32_t>(rate);
    else
        WriteNumber("TimerRate", gTimerRate);
}

void StoreText(size_t index, const char *text)
{
    const auto size = static_cast<int32_t>(strlen(text) + 1);
    auto *copy = static_cast<char *>(GlobalAlloc(0, size));
    if (!copy)
        return;
    memcpy(copy, text, static_cast<size_t>(size));
    GlobalFree(gStrings[index]); // behind the copy: the text may be the one that it replaces
    gStrings[index] = copy;
}

void LoadTexts(const char *language)
{
    for (size_t i = 0; i < std::size(gStrings); i++) {
        const EntryKey key("", i);
        char value[255];
        const char *text = value;
        if (GetProfileString(language, key.Text(), "", value, sizeof value) == 0) {
            text = gDefaultStrings[i];
            WriteProfileString(language, key.Text(), text);
        }
        if (!gStrings[i])
            StoreText(i, text);
    }
}

} // namespace

void gLoadPref(void)
{
    LockScope lock;
    IniBatch batch;
    StoreTimerRate(LoadSetup());
    char language[256];
    if (GetProfileString("Localize", "Language", "", language, sizeof language) == 0) {
        strcpy(language, "English");
        WriteProfileString("Localize", "Language", language);
    }
    LoadTexts(language);
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
        StoreText(static_cast<size_t>(index), text);
}
