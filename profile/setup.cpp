// Section "Setup", between the file and the exported data.
#include "profile/setup.h"

#include <cstdlib>

#include "core/lock.h"
#include "profile/folder.h"
#include "profile/ini_cache.h"

namespace wexelxi {
namespace {

class KeyName {
public:
    KeyName(const SetupKey &key, uint32_t index)
        : numbered_(static_cast<int32_t>(index) + 1, key.name),
          view_(key.count > 1 ? numbered_.View() : key.name)
    {
    }
    operator std::string_view() const { return view_; }

private:
    NumberedText numbered_;
    std::string_view view_;
};

void Store(const SetupKey &key, uint32_t index, unsigned long value)
{
    if (key.bytes == 1)
        static_cast<uint8_t *>(key.value)[index] = static_cast<uint8_t>(value);
    else
        static_cast<int32_t *>(key.value)[index] = static_cast<int32_t>(value);
}

void Write(IniDraft &draft, const SetupKey &key, uint32_t index)
{
    draft.Set(kSetupSection, KeyName(key, index), NumberedText(PresentValue(key, index)).View());
}

void Load(IniDraft &draft, const SetupKey &key, uint32_t index)
{
    char text[255];
    const auto inFile = draft.Get(kSetupSection, KeyName(key, index));
    if (!inFile && !key.whenMissing)
        return;
    const std::string_view chosen = inFile ? *inFile : key.whenMissing;
    text[chosen.copy(text, key.room - 1)] = '\0';
    const unsigned long value = strtoul(text, nullptr, 10) & (key.bytes == 1 ? 0xFF : ULONG_MAX);
    if (value >= key.least && value <= key.most) {
        Store(key, index, value);
        return;
    }
    if (key.replacement != SetupKey::kPresent)
        Store(key, index, static_cast<unsigned long>(key.replacement));
    Write(draft, key, index);
}

template <typename Do>
void ForEachKey(SetupKey::Reader reader, Do perform)
{
    for (const SetupKey &key : kSetupKeys) {
        for (uint32_t i = 0; key.reader == reader && i < key.count; i++)
            perform(key, i);
    }
}

bool IsFirstRun(IniDraft &draft)
{
    const auto version = draft.Get(kSetupSection, "Version");
    return !version || version->starts_with('?');
}

} // namespace

void LoadStartSettings()
{
    LockScope lock;
    IniDraft draft(ResolveIniName("win.ini"));
    ForEachKey(SetupKey::kStart,
               [&](const SetupKey &key, uint32_t index) { Load(draft, key, index); });
}

void LoadSetup(IniDraft &draft)
{
    const auto perform = IsFirstRun(draft) ? Write : Load;
    ForEachKey(SetupKey::kPreferences,
               [&](const SetupKey &key, uint32_t index) { perform(draft, key, index); });
}

} // namespace wexelxi
