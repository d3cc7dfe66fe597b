// The current language and the questions to the language tables.
#include "locale/language.h"

#include <algorithm>
#include <cstring>

#include "core/last_error.h"
#include "core/lock.h"
#include "wexelxi/environment.h"
#include "wexelxi/locale.h"
#include "wexelxi/profile.h"

using namespace wexelxi;

uint16_t gLangID = 0;

namespace {

constexpr uint32_t kEnglishUS = 1033;
constexpr uintptr_t kKeyBits = 0x3FFFFFFF;

// Keys lie in two short runs; each has a slot, and all others have the first.
constexpr size_t kFirstRun = LOCALE_SISO3166CTRYNAME + 1;
constexpr size_t kSecondRun = LOCALE_IDEFAULTMACCODEPAGE - LOCALE_SENGLANGUAGE + 1;

size_t SlotOfKey(uintptr_t key)
{
    if (key < kFirstRun)
        return key;
    key -= LOCALE_SENGLANGUAGE;
    return key < kSecondRun ? kFirstRun + key : 0;
}

// A table, with its values by slot from the first question to it on. The lock guards those.
struct LanguageTable {
    uint32_t language;
    const LANGUAGEROW *rows;
    const char *values[kFirstRun + kSecondRun] = {};

    const char *Find(size_t slot)
    {
        if (!values[LOCALE_ILANGUAGE]) { // the first row of each
            for (const LANGUAGEROW *row = rows; row->key != 0; row++)
                values[SlotOfKey(row->key)] = row->value;
        }
        return values[slot];
    }
};

LanguageTable gTables[] = {
#define LANGUAGE(number, table) {number, table},
#include "locale/languages.def"
#undef LANGUAGE
};

LanguageTable *FindTable(uint32_t language)
{
    for (LanguageTable &table : gTables) {
        if (table.language == language)
            return &table;
    }
    return nullptr;
}

// What serves a language: its own table, or that of its primary language, or English.
LanguageTable &TableOf(uint32_t language)
{
    LanguageTable *table = FindTable(language);
    if (!table)
        table = FindTable((language & 0x3FF) | 0x400);
    return table ? *table : *FindTable(kEnglishUS);
}

// The getters read the number once more behind the lock, hence the atomic load.
uint16_t LoadLanguage()
{
    return __atomic_load_n(&gLangID, __ATOMIC_RELAXED);
}

// Chooses the first language that matches; false if none does.
template <typename Matches>
bool Choose(Matches matches)
{
    for (const LANGUAGEENTRY *entry = gLanguageTable; entry->name; entry++) {
        if (matches(*entry)) {
            __atomic_store_n(&gLangID, static_cast<uint16_t>(entry->language), __ATOMIC_RELAXED);
            return true;
        }
    }
    return false;
}

bool ChooseByCode(const char *code)
{
    return *code &&
           Choose([=](const LANGUAGEENTRY &entry) { return strcmp(entry.code, code) == 0; });
}

// The last error stays as it was: it is not told that nothing is configured.
bool ChooseConfigured()
{
    const uint32_t lastError = GetLastError();
    char code[256] = "";
    GetEnvironmentVariable("WEXELLOCALE", code, sizeof code);
    if (!*code)
        GetProfileString("Localize", "Locale", "", code, sizeof code);
    SetLastError(lastError);
    return ChooseByCode(*code ? code : "en-us");
}

// A number up to 0xFFFF is one; the first bytes of a text make a larger one.
bool ChooseBySelector(const void *selector)
{
    uint32_t number;
    memcpy(&number, selector, sizeof number);
    if (number > 0xFFFF)
        return ChooseByCode(static_cast<const char *>(selector));
    return Choose([=](const LANGUAGEENTRY &entry) { return entry.language == number; });
}

void ChooseIfNone()
{
    if (LoadLanguage() == 0)
        SetLocale(nullptr);
}

uint32_t GetDefaultLanguage()
{
    {
        LockScope lock;
        ChooseIfNone();
    }
    return LoadLanguage();
}

} // namespace

const char *wexelxi::FindLocaleValue(uintptr_t language, uintptr_t key)
{
    AssertLockHeld();
    if (language == LOCALE_USER_DEFAULT || language == LOCALE_SYSTEM_DEFAULT ||
        (key & LOCALE_NOUSEROVERRIDE)) {
        ChooseIfNone();
        language = LoadLanguage();
    }
    const size_t slot = SlotOfKey(key & kKeyBits);
    const char *value = TableOf(static_cast<uint32_t>(language)).Find(slot);
    return value ? value : TableOf(kEnglishUS).Find(slot);
}

uintptr_t wexelxi::LanguageMeantBy(uintptr_t language)
{
    AssertLockHeld();
    if (language != 0 && language != LOCALE_USER_DEFAULT && language != LOCALE_SYSTEM_DEFAULT)
        return language;
    ChooseIfNone();
    return LoadLanguage();
}

uint32_t SetLocale(const void *selector)
{
    LockScope lock;
    const bool found = selector ? ChooseBySelector(selector) : ChooseConfigured();
    if (LoadLanguage() == 0)
        ChooseByCode("en-us");
    return found;
}

uint32_t GetUserDefaultLCID(void)
{
    return GetDefaultLanguage();
}

uint32_t GetUserDefaultLangID(void)
{
    return GetDefaultLanguage();
}

uint32_t GetSystemDefaultLCID(void)
{
    return GetDefaultLanguage();
}

uint32_t GetSystemDefaultLangID(void)
{
    return GetDefaultLanguage();
}

uintptr_t ValidateLCID(uintptr_t language)
{
    LockScope lock;
    return LanguageMeantBy(language);
}

int32_t GetLocaleInfo(uintptr_t language, uintptr_t key, char *buffer, int32_t size)
{
    LockScope lock;
    if (!buffer && size != 0)
        return FailWith(ERROR_INSUFFICIENT_BUFFER, 0);
    if (buffer)
        *buffer = '\0';
    const char *value = FindLocaleValue(language, key);
    if (!value)
        return FailWith(ERROR_INVALID_PARAMETER, 0);
    const size_t length = strlen(value);
    if (size > 0) {
        const size_t stored = std::min(length, static_cast<size_t>(size) - 1);
        memcpy(buffer, value, stored);
        buffer[stored] = '\0';
    }
    return static_cast<int32_t>(length) + 1;
}
