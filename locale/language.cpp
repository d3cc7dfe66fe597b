// The current language and the questions to the language tables.
#include "locale/language.h"

#include <cstring>

#include "core/last_error.h"
#include "core/lock.h"
#include "wexelxi/environment.h"
#include "wexelxi/locale.h"
#include "wexelxi/profile.h"
#include "wexelxi/text.h"

using namespace wexelxi;

uint16_t gLangID = 0;

namespace {

constexpr uint32_t kEnglishUS = 1033;
constexpr uintptr_t kKeyBits = 0x3FFFFFFF;

struct LanguageTable {
    uint32_t language;
    const LANGUAGEROW *rows;
};

constexpr LanguageTable kTables[] = {
    {1030, Lang_Danish}, {1031, Lang_German},    {1033, Lang_EngUS},     {1035, Lang_Finnish},
    {1036, Lang_French}, {1038, Lang_Hungarian}, {1040, Lang_Italian},   {1042, Lang_Korean},
    {1045, Lang_Polish}, {1046, Lang_Brazil},    {1051, Lang_Slovakian}, {1053, Lang_Swedish},
    {2057, Lang_EngUK},
};

const LANGUAGEROW *FindTable(uint32_t language)
{
    for (const LanguageTable &table : kTables) {
        if (table.language == language)
            return table.rows;
    }
    return nullptr;
}

const LANGUAGEROW *FindTableOfPrimary(uint32_t language)
{
    const LANGUAGEROW *rows = FindTable(language);
    return rows ? rows : FindTable((language & 0x3FF) | 0x400);
}

const char *FindValue(const LANGUAGEROW *row, uintptr_t key)
{
    for (; row->key != 0; row++) {
        if (row->key == key)
            return row->value;
    }
    return nullptr;
}

// The getters read the number once more behind the lock, hence the atomic load.
uint16_t LoadLanguage()
{
    return __atomic_load_n(&gLangID, __ATOMIC_RELAXED);
}

bool Choose(const LANGUAGEENTRY &entry)
{
    __atomic_store_n(&gLangID, static_cast<uint16_t>(entry.language), __ATOMIC_RELAXED);
    return true;
}

bool ChooseByNumber(uint32_t language)
{
    for (const LANGUAGEENTRY *entry = gLanguageTable; entry->name; entry++) {
        if (language != 0 && entry->language == language)
            return Choose(*entry);
    }
    return false;
}

bool ChooseByCode(const char *code)
{
    for (const LANGUAGEENTRY *entry = gLanguageTable; entry->name; entry++) {
        if (*code && lstrcmp(entry->code, code) == 0)
            return Choose(*entry);
    }
    return false;
}

bool ChooseConfigured()
{
    char code[256] = "";
    GetEnvironmentVariable("WEXELLOCALE", code, sizeof code);
    if (!*code)
        GetProfileString("Localize", "Locale", "", code, sizeof code);
    return ChooseByCode(*code ? code : "en-us");
}

// A number up to 0xFFFF is one; the first bytes of a text make a larger one.
bool ChooseBySelector(const void *selector)
{
    uint32_t number;
    memcpy(&number, selector, sizeof number);
    return number <= 0xFFFF ? ChooseByNumber(number)
                            : ChooseByCode(static_cast<const char *>(selector));
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
    if (language == LOCALE_USER_DEFAULT || language == LOCALE_SYSTEM_DEFAULT ||
        (key & LOCALE_NOUSEROVERRIDE)) {
        ChooseIfNone();
        language = LoadLanguage();
    }
    if ((language & 0xFF) == 0)
        language = kEnglishUS;
    key &= kKeyBits;
    const LANGUAGEROW *rows = FindTableOfPrimary(static_cast<uint32_t>(language));
    const char *value = rows ? FindValue(rows, key) : nullptr;
    return value ? value : FindValue(Lang_EngUS, key);
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
    if (language != 0 && language != LOCALE_USER_DEFAULT && language != LOCALE_SYSTEM_DEFAULT)
        return language;
    ChooseIfNone();
    return LoadLanguage();
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
    if (size != 0)
        lstrcpyn(buffer, value, size);
    return static_cast<int32_t>(strlen(value)) + 1;
}
