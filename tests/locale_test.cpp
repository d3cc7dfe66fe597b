// Languages, their tables, and date and time text through the exported functions.
#include <cstring>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>

#include "support/library.h"
#include "wexelxi.h"

namespace {

class Locale : public ::testing::Test {
protected:
    Locale() { unsetenv("WEXELLOCALE"); }
    ~Locale() override { EXPECT_EQ(pthread_getspecific(gCriticalSectionTLS), nullptr); }

    StartedLibrary library;
};

std::string Info(uintptr_t language, uintptr_t key)
{
    char value[64] = "unset";
    const int32_t length = GetLocaleInfo(language, key, value, sizeof value);
    EXPECT_EQ(static_cast<size_t>(length), strlen(value) + (length ? 1 : 0));
    return value;
}

uint32_t SetLocaleNumber(uint32_t number)
{
    return SetLocale(&number);
}

TEST_F(Locale, StartsWithTheConfiguredLanguage)
{
    EXPECT_EQ(gLangID, 0);
    EXPECT_EQ(GetUserDefaultLCID(), 1033u);
    EXPECT_EQ(SetLocale(nullptr), 1u);
    EXPECT_EQ(WriteProfileString("Localize", "Locale", "de-ch"), 1);
    EXPECT_EQ(SetLocale(nullptr), 1u);
    EXPECT_EQ(GetSystemDefaultLangID(), 2055u);
    setenv("WEXELLOCALE", "sv", 1);
    EXPECT_EQ(SetLocale(nullptr), 1u);
    EXPECT_EQ(GetUserDefaultLangID(), 1053u);
    setenv("WEXELLOCALE", std::string(400, 'x').c_str(), 1); // too long to be seen
    EXPECT_EQ(SetLocale(nullptr), 1u);
    EXPECT_EQ(GetSystemDefaultLCID(), 2055u);
}

TEST_F(Locale, FallsBackToEnglishOnlyWhereNoneIsChosen)
{
    setenv("WEXELLOCALE", "xx-yy", 1);
    EXPECT_EQ(SetLocale(nullptr), 0u);
    EXPECT_EQ(gLangID, 1033);
    EXPECT_EQ(SetLocaleNumber(1045), 1u);
    EXPECT_EQ(SetLocale(nullptr), 0u);
    EXPECT_EQ(gLangID, 1045);
}

TEST_F(Locale, Selectors)
{
    const std::string endless(5000, 'e');
    const struct {
        const char *code;
        uint32_t found;
        uint16_t language;
    } codes[] = {
        {"pt-br", 1, 1046}, {"EN-US", 0, 1046}, {"fi\0x", 1, 1035},         {"fi\0\0", 0, 1035},
        {"\0xyz", 0, 1035}, {"en-u", 0, 1035},  {endless.c_str(), 0, 1035}, {"de-li", 1, 5127},
    };
    for (const auto &row : codes) {
        SetLastError(77);
        EXPECT_EQ(SetLocale(row.code), row.found) << row.code;
        EXPECT_EQ(gLangID, row.language) << row.code;
        EXPECT_EQ(GetLastError(), 77u);
    }
    for (const uint32_t number : {0u, 9999u, 1024u, 0xFFFFu})
        EXPECT_EQ(SetLocaleNumber(number), 0u);
    EXPECT_EQ(SetLocaleNumber(2066), 1u); // has no code
    EXPECT_EQ(gLangID, 2066);
}

TEST_F(Locale, DefaultsAreResolvedAndNothingElse)
{
    EXPECT_EQ(ValidateLCID(0), 1033u);
    SetLocaleNumber(1036);
    for (const uintptr_t language : {0u, 1024u, 2048u})
        EXPECT_EQ(ValidateLCID(language), 1036u);
    for (const uintptr_t language : {uintptr_t{1031}, uintptr_t{4711}, uintptr_t{1} << 40 | 1024})
        EXPECT_EQ(ValidateLCID(language), language);
}

TEST_F(Locale, Values)
{
    const struct {
        uintptr_t language, key;
        const char *value;
    } rows[] = {
        {1033, LOCALE_SSHORTDATE, "M/d/yy"},
        {1031, 0x80000000u + LOCALE_SSHORTDATE, "M/d/yy"}, // the current language
        {1031, 0x40000000u + LOCALE_SSHORTDATE, "dd.MM.yy"},
        {(uintptr_t{1} << 32) + 1031, (uintptr_t{1} << 32) + LOCALE_SSHORTDATE, "dd.MM.yy"},
        {0, LOCALE_S1159, "AM"},
        {0x7F00, LOCALE_S1159, "AM"},
        {1024, LOCALE_SSHORTDATE, "M/d/yy"},
        {2055, LOCALE_SMONTHNAME1, "Januar"},
        {4105, LOCALE_SMONTHNAME1, "January"},
        {2070, LOCALE_SDAYNAME2,
         "Ter\xE7"
         "a-feira"},
        {2057, LOCALE_SCURRENCY, "\xC2\xA3"},
        {1042, LOCALE_SABBREVDAYNAME2, "\xC8\xAD"},
        {1042, LOCALE_SCURRENCY, "\\"},
        {1045, LOCALE_SDAYNAME1,
         "Poniedzia\xB3"
         "ek"},
        {1051, LOCALE_STHOUSAND, "\xC2\xA0"},
        {1051, LOCALE_FONTSIGNATURE, "'"},
        {1031, LOCALE_IDEFAULTMACCODEPAGE, "10000"},
        {1031, LOCALE_S1159, ""},
        {1036, LOCALE_STIMEFORMAT, "h:mm:ss tt"}, // from English, as the next ones
        {1040, LOCALE_S1159, "AM"},
        {1034, LOCALE_SSHORTDATE, "M/d/yy"},
        {1041, LOCALE_SLANGUAGE, "English (United States)"},
    };
    GetUserDefaultLCID();
    SetLastError(77);
    for (const auto &row : rows)
        EXPECT_EQ(Info(row.language, row.key), row.value) << row.language << " " << row.key;
    EXPECT_EQ(GetLastError(), 77u);
    for (const uint32_t key : {0u, 91u, 5000u, 0x3FFFFFFFu, 4113u, 88u}) {
        SetLastError(77);
        EXPECT_EQ(Info(1033, key), "") << key;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << key;
    }
}

TEST_F(Locale, ValuesAreCutToTheBuffer)
{
    char value[8] = "*******";
    EXPECT_EQ(GetLocaleInfo(1033, 31, value, 3), 7);
    EXPECT_EQ(memcmp(value, "M/\0****", 8), 0);
    EXPECT_EQ(GetLocaleInfo(1033, 31, value, 1), 7);
    EXPECT_STREQ(value, "");
    strcpy(value, "kept");
    EXPECT_EQ(GetLocaleInfo(1033, 31, value, 0), 7);
    EXPECT_EQ(memcmp(value, "\0ept", 5), 0);
    EXPECT_EQ(GetLocaleInfo(1033, 31, nullptr, 0), 7);
    EXPECT_EQ(GetLocaleInfo(1033, 31, nullptr, 5), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST_F(Locale, TablesKeepTheirOrder)
{
    const LANGUAGEROW *const tables[] = {Lang_EngUS,     Lang_EngUK,  Lang_German,  Lang_Danish,
                                         Lang_Finnish,   Lang_French, Lang_Italian, Lang_Korean,
                                         Lang_Hungarian, Lang_Polish, Lang_Brazil,  Lang_Swedish,
                                         Lang_Slovakian};
    for (const LANGUAGEROW *table : tables) {
        // The rows are those of German, which has them all, less the ones that are absent.
        const LANGUAGEROW *whole = Lang_German;
        for (const LANGUAGEROW *row = table; row->key; row++, whole++) {
            while (whole->key && whole->key != row->key)
                whole++;
            ASSERT_EQ(whole->key, row->key) << table->value;
        }
    }
    EXPECT_EQ(Lang_German[14].key, LOCALE_IDEFAULTMACCODEPAGE);
    EXPECT_STREQ(gLanguageTable[31].code, "en-us");
    EXPECT_STREQ(gLanguageTable[111].code, "zu");
}

const SYSTEMTIME kMonday = {2005, 3, 1, 7, 13, 5, 9, 0};
const SYSTEMTIME kSunday = {2005, 3, 0, 6, 0, 5, 0, 0};

TEST_F(Locale, Pictures)
{
    const struct {
        const char *picture;
        uint32_t flags;
        int32_t size;
        const char *text;
        int32_t count;
        const SYSTEMTIME *time = &kMonday;
        uintptr_t language = 1033;
    } rows[] = {
        {"M/d/yy", 0, 64, "3/7/05", 7},
        {"dddd, MMMM dd, yyyy", 0, 64, "Monday, March 07, 2005", 23},
        {"h:mm:ss tt", 0, 64, "1:05:09 PM", 11},
        {"h:mm:ss tt", 1, 64, "1:09 PM", 8},
        {"h:mm:ss tt", 2, 64, "1:05 PM", 8},
        {"h:mm:ss tt", 3, 64, "1 PM", 5},
        {"yyy", 0, 64, "yyy", 4},
        {"yyyyy", 0, 64, "20055", 6},
        {"'Day' d", 0, 64, "Day 7", 6},
        {"'It''s' d", 0, 64, "It's 7", 7},
        {"''d", 0, 64, "7", 2},
        {"g", 0, 64, "g", 2},
        {"ggg", 0, 64, "ADg", 4},
        {"hhh", 0, 64, "011", 4},
        {"t", 0, 64, "P", 2},
        {"MMMMM", 0, 64, "March3", 7},
        {"'abc", 0, 64, "abc", 5},
        {"'abc", 0, 5, "abc", 4},
        {"abc", 0, 4, "abc", 3},
        {"abc", 0, 3, "ab", 0},
        {"yyyy", 0, 5, "2005", 4},
        {"yyyy", 0, 6, "2005", 5},
        {"yyyy", 0, 4, "200", 0},
        {"dddd", 0, 5, "Mond", 0},
        {"", 0, 1, "", 0},
        {"h:mm tt", 0, 64, "12:05 AM", 9, &kSunday},
        {"hh dddd ddd", 0, 64, "12 Sunday Sun", 14, &kSunday},
        {"h:mm tt", 0, 64, "1:05 ", 6, &kMonday, 1031},
        {"d. MMMM", 0, 64, "7. mars", 8, &kMonday, 1036},
    };
    for (const auto &row : rows) {
        char text[66];
        memset(text, '*', sizeof text);
        SetLastError(77);
        EXPECT_EQ(
            FormatLocaleString(row.language, 9, row.flags, row.time, row.picture, text, row.size),
            row.count)
            << row.picture;
        EXPECT_STREQ(text, row.text) << row.picture;
        EXPECT_EQ(text[row.size], '*') << row.picture;
        const bool failed = row.count == 0 && *row.text;
        EXPECT_TRUE(failed || text[row.count] == '\0') << row.picture;
        EXPECT_EQ(GetLastError(), failed ? ERROR_INSUFFICIENT_BUFFER : 77u) << row.picture;
    }
    const std::string endless(3000, 'x');
    std::string out(4000, '*');
    EXPECT_EQ(FormatLocaleString(1033, 0, 3, &kMonday, endless.c_str(), out.data(), 4000), 3001);
    EXPECT_EQ(out.c_str(), endless);
}

TEST_F(Locale, FrontsLeaveTheirResultAsLastError)
{
    char text[64];
    EXPECT_EQ(GetDateFormat(0, 0, &kMonday, nullptr, text, 64), 7);
    EXPECT_EQ(GetLastError(), 7u);
    EXPECT_STREQ(text, "3/7/05");
    EXPECT_EQ(GetDateFormat(1033, 2, &kMonday, nullptr, text, 64), 23);
    EXPECT_STREQ(text, "Monday, March 07, 2005");
    EXPECT_EQ(GetDateFormat(1036, 2, &kMonday, nullptr, text, 64), 21);
    EXPECT_STREQ(text, "lundi, mars 07, 2005");
    EXPECT_EQ(GetDateFormat(1033, 3, &kMonday, "h:mm:ss", text, 64), 8);
    EXPECT_EQ(GetTimeFormat(1033, 0xFFFFFFFD, &kMonday, nullptr, text, 64), 8);
    EXPECT_EQ(GetLastError(), 8u);
    EXPECT_STREQ(text, "1:09 PM");
    EXPECT_EQ(GetTimeFormat(1051, 4, &kMonday, nullptr, text, 64), 9);
    EXPECT_STREQ(text, "13:05:09");
    EXPECT_EQ(GetTimeFormat(1033, 0, &kMonday, nullptr, text, 5), 0);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_STREQ(text, "1:05");
    SetLocaleNumber(1045);
    EXPECT_EQ(GetDateFormat(2048, 0, &kMonday, nullptr, text, 64), 11);
    EXPECT_STREQ(text, "07.03.2005");
}

TEST_F(Locale, NowIsInUtc)
{
    setenv("TZ", "EST5EDT", 1);
    tzset();
    char before[64], text[64], after[64];
    SYSTEMTIME now;
    GetSystemTime(&now);
    GetDateFormat(1033, 0, &now, "yyyy-MM-dd HH:mm:ss", before, 64);
    EXPECT_EQ(GetDateFormat(1033, 0, nullptr, "yyyy-MM-dd HH:mm:ss", text, 64), 20);
    GetSystemTime(&now);
    GetTimeFormat(1033, 0, &now, "yyyy-MM-dd HH:mm:ss", after, 64);
    EXPECT_LE(strcmp(before, text), 0);
    EXPECT_GE(strcmp(after, text), 0);
    EXPECT_EQ(GetTimeFormat(1033, 0, nullptr, "yyyy", text, 64), 5);
}

TEST_F(Locale, NoRoomWritesNothing)
{
    char text[] = "kept";
    const struct {
        char *out;
        int32_t size;
    } rows[] = {{nullptr, 64}, {text, 0}, {text, -1}, {text, INT32_MIN}};
    for (const auto &row : rows) {
        EXPECT_EQ(FormatLocaleString(1033, 0, 0, &kMonday, "d", row.out, row.size), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(GetDateFormat(1033, 0, &kMonday, "d", row.out, row.size), 0);
        EXPECT_EQ(GetLastError(), 0u);
    }
    EXPECT_STREQ(text, "kept");
}

} // namespace
