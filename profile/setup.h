// Section "Setup" of the configuration file: the one list of its keys. Whoever reads, writes or
// shows a setting takes it from here.
#pragma once

#include <charconv>
#include <climits>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "wexelxi/core.h"
#include "wexelxi/preferences.h"

namespace wexelxi {

constexpr std::string_view kSetupSection = "Setup";

struct SetupKey {
    enum Reader { kStart, kPreferences }; // InitLib before gLoadPref, and gLoadPref
    enum Replacement { kPresent = -1 };

    std::string_view name;   // with a number from 1 to count behind it if there are several
    void *value;             // the exported data that it is loaded into
    size_t bytes;            // their width, 1 or 4
    uint32_t count;          // values, side by side
    Reader reader;           // what gLoadPref reads it writes on a first run
    uint32_t room;           // bytes for the text that is read, with its NUL; the rest is cut
    const char *whenMissing; // stands for a missing key; null: the present value
    unsigned long least;     // a value, of the width's bits, outside of the limits
    unsigned long most;      // is replaced, also in the file,
    int32_t replacement;     // by this
};

// For each reader in the order of reads and first writes.
inline constexpr SetupKey kSetupKeys[] = {
    {"Version", &gVersion, 4, 1, SetupKey::kPreferences, 255, "?", 0, ULONG_MAX, 0},
    {"BellLevel", &gBellLevel, 4, 1, SetupKey::kPreferences, 255, "100", 0, ULONG_MAX, 0},
    {"Color", WinsysColArr, 4, std::size(WinsysColArr), SetupKey::kPreferences, 255, nullptr, 0,
     ULONG_MAX, 0},
    // Missing counts as a value outside, so that the key is written.
    {"NoFreeLib", &gNoFreeLibrary, 1, 1, SetupKey::kPreferences, 255, "9", 0, 1, 0},
    {"TimerRate", &gTimerRate, 4, 1, SetupKey::kPreferences, 255, "0", 1, 1000, SetupKey::kPresent},
    {"FileCaseMode", &gFileMode, 1, 1, SetupKey::kStart, 9, "0", 0, ULONG_MAX, 0},
    {"UseOverride", &gUseOverride, 1, 1, SetupKey::kStart, 9, "0", 0, ULONG_MAX, 0},
    {"XPrinterMargin", &gPrinterXMargin, 4, 1, SetupKey::kStart, 9, "10", 0, ULONG_MAX, 0},
    {"YPrinterMargin", &gPrinterYMargin, 4, 1, SetupKey::kStart, 9, "10", 0, ULONG_MAX, 0},
};

// The value in force, by its place from 0 on.
inline int32_t PresentValue(const SetupKey &key, uint32_t index = 0)
{
    if (key.bytes == 1)
        return static_cast<uint8_t *>(key.value)[index];
    return static_cast<int32_t *>(key.value)[index];
}

class IniDraft;

// Loads the keys that InitLib reads itself.
void LoadStartSettings();

// Loads the keys that gLoadPref reads, or writes them if there is no version.
void LoadSetup(IniDraft &draft);

// A text that is a key or a value: a number in decimal, alone or behind a name.
class NumberedText {
public:
    explicit NumberedText(int32_t number, std::string_view name = {})
        : size_(static_cast<size_t>(
              std::to_chars(text_ + name.copy(text_, kRoom), std::end(text_), number).ptr - text_))
    {
    }
    std::string_view View() const { return {text_, size_}; }

private:
    static constexpr size_t kRoom = 12; // and as much for the number
    char text_[2 * kRoom];
    size_t size_;
};

} // namespace wexelxi
