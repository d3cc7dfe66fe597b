// Languages, their tables, and date and time text through the exported functions.
#include <cstring>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

const SYSTEMTIME kMonday = {2005, 3, 1, 7, 13, 5, 9, 0};

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
    char value[8];
    int32_t (*const firstUses[])(char *) = {
        [](char *) { return static_cast<int32_t>(GetUserDefaultLCID()); },
        [](char *) { return static_cast<int32_t>(GetSystemDefaultLangID()); },
        [](char *) { return static_cast<int32_t>(ValidateLCID(0)); },
        [](char *) { return static_cast<int32_t>(SetLocale(nullptr)) + 1032; },
        [](char *text) { return GetLocaleInfo(1024, 9, text, 8) + 1028; },
        [](char *text) { return FormatLocaleString(1024, 0, 0, &kMonday, "MMM", text, 8) + 1029; },
    };
    for (const auto &use : firstUses) {
        gLangID = 0;
        EXPECT_OUTCOME(use(value), 1033, kUnchanged);
        EXPECT_EQ(gLangID, 1033);
    }
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
        EXPECT_OUTCOME(SetLocale(row.code), row.found, kUnchanged) << row.code;
        EXPECT_EQ(gLangID, row.language) << row.code;
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
        {1036, LOCALE_STIMEFORMAT, "h:mm:ss tt"}, // from English, as the next ones
        {1040, LOCALE_S1159, "AM"},
        {1034, LOCALE_SSHORTDATE, "M/d/yy"},
        {1041, LOCALE_SLANGUAGE, "English (United States)"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Info(row.language, row.key), row.value) << row.language << " " << row.key;
    char value[8];
    for (const uint32_t key : {0u, 91u, 4096u, 4114u, 5000u, 0x3FFFFFFFu, 4113u, 88u})
        EXPECT_OUTCOME(GetLocaleInfo(1033, key, value, 8), 0, ERROR_INVALID_PARAMETER) << key;
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
    EXPECT_OUTCOME(GetLocaleInfo(1033, 31, nullptr, 0), 7, kUnchanged);
    EXPECT_OUTCOME(GetLocaleInfo(1033, 31, nullptr, 5), 0, ERROR_INSUFFICIENT_BUFFER);
}

TEST_F(Locale, EachLanguageHasItsTableInOneOrder)
{
    const struct {
        uintptr_t language;
        const LANGUAGEROW *rows;
        size_t count;
        const char *name;
    } tables[] = {
        {1030, Lang_Danish, 88, "Danish"},     {1031, Lang_German, 103, "German"},
        {1033, Lang_EngUS, 101, "English"},    {1035, Lang_Finnish, 80, "Finnish"},
        {1036, Lang_French, 69, "French"},     {1038, Lang_Hungarian, 77, "Hungarian"},
        {1040, Lang_Italian, 77, "Italian"},   {1042, Lang_Korean, 101, "Korean"},
        {1045, Lang_Polish, 77, "Polish"},     {1046, Lang_Brazil, 101, "Protuguese"},
        {1051, Lang_Slovakian, 103, "Slovak"}, {1053, Lang_Swedish, 88, "Swedish"},
        {2057, Lang_EngUK, 101, "English"},
    };
    for (const auto &table : tables) {
        EXPECT_EQ(Info(table.language, LOCALE_SENGLANGUAGE), table.name);
        // The keys are those of German, which has them all, less the ones that are absent.
        const LANGUAGEROW *whole = Lang_German;
        size_t count = 0;
        for (const LANGUAGEROW *row = table.rows; row->key; row++, whole++, count++) {
            while (whole->key && whole->key != row->key)
                whole++;
            ASSERT_EQ(whole->key, row->key) << table.name;
            ASSERT_EQ(Info(table.language, row->key), row->value) << table.name << row->key;
        }
        EXPECT_EQ(count, table.count) << table.name;
    }
    EXPECT_EQ(Lang_German[14].key, LOCALE_IDEFAULTMACCODEPAGE);
    EXPECT_STREQ(gLanguageTable[31].code, "en-us");
    EXPECT_STREQ(gLanguageTable[111].code, "zu");
}

TEST_F(Locale, Pictures)
{
    const struct {
        const char *picture;
        uint32_t flags;
        int32_t size;
        const char *text;
        int32_t count;
        uintptr_t language = 1033;
    } rows[] = {
        {"M/d/yy", 0, 64, "3/7/05", 7},
        {"h:mm:ss tt", 3, 64, "1 PM", 5},
        {"'abc", 0, 5, "abc", 4},
        {"yyyy", 0, 5, "2005", 4},
        {"dddd", 0, 5, "Mond", 0},
        {"", 0, 1, "", 0},
        {"h:mm tt", 0, 64, "1:05 ", 6, 1031},
        {"d. MMMM", 0, 64, "7. mars", 8, 1036},
    };
    for (const auto &row : rows) {
        char text[66];
        memset(text, '*', sizeof text);
        const bool failed = row.count == 0 && *row.text;
        EXPECT_OUTCOME(
            FormatLocaleString(row.language, 9, row.flags, &kMonday, row.picture, text, row.size),
            row.count, failed ? ERROR_INSUFFICIENT_BUFFER : kUnchanged);
        EXPECT_STREQ(text, row.text) << row.picture;
        EXPECT_EQ(text[row.size], '*') << row.picture;
    }
    const std::string endless(3000, 'x');
    std::string out(4000, '*');
    EXPECT_EQ(FormatLocaleString(1033, 0, 3, &kMonday, endless.c_str(), out.data(), 4000), 3001);
    EXPECT_EQ(out.c_str(), endless);
}

TEST_F(Locale, FrontsLeaveTheirResultAsLastError)
{
    SetLocaleNumber(1045);
    const struct {
        decltype(&GetDateFormat) front;
        uintptr_t language;
        uint32_t flags;
        const char *picture;
        int32_t size;
        const char *text;
        int32_t count;
    } rows[] = {
        {GetDateFormat, 1033, DATE_LONGDATE, nullptr, 64, "Monday, March 07, 2005", 23},
        {GetDateFormat, 1036, DATE_LONGDATE, nullptr, 64, "lundi, mars 07, 2005", 21},
        {GetDateFormat, 1033, 3, "h:mm:ss", 64, "1:05:09", 8},
        {GetDateFormat, 0, 0, nullptr, 64, "07.03.2005", 11},
        {GetDateFormat, 2048, 1, nullptr, 64, "07.03.2005", 11},
        {GetTimeFormat, 1033, 0xFFFFFFFD, nullptr, 64, "1:09 PM", 8},
        {GetTimeFormat, 1033, 2, "h:mm:ss", 64, "1:05", 5},
        {GetTimeFormat, 1051, 4, nullptr, 64, "13:05:09", 9},
        {GetTimeFormat, 1033, 0, nullptr, 5, "1:05", 0},
    };
    for (const auto &row : rows) {
        char text[64];
        EXPECT_OUTCOME(row.front(row.language, row.flags, &kMonday, row.picture, text, row.size),
                       row.count, static_cast<uint32_t>(row.count));
        EXPECT_STREQ(text, row.text);
    }
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
        EXPECT_OUTCOME(FormatLocaleString(1033, 0, 0, &kMonday, "d", row.out, row.size), 0,
                       ERROR_INSUFFICIENT_BUFFER);
        EXPECT_OUTCOME(GetDateFormat(1033, 0, &kMonday, "d", row.out, row.size), 0, 0);
    }
    EXPECT_STREQ(text, "kept");
}

} // namespace
