// Languages, their tables, and text for dates and times.
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

const uint16_t gLangIDAtLoad = gLangID;
const SYSTEMTIME kMonday = {2005, 3, 1, 7, 13, 5, 9, 0};
const SYSTEMTIME kSunday = {2005, 3, 0, 6, 0, 5, 9, 0};

class Locale : public ::testing::Test {
protected:
    Locale() { unsetenv("WEXELLOCALE"); }

    StartedLibrary library;
};

TEST_F(Locale, FirstUseSettlesTheLanguage)
{
    const std::function<uintptr_t()> uses[] = {
        GetUserDefaultLCID,
        GetUserDefaultLangID,
        GetSystemDefaultLCID,
        GetSystemDefaultLangID,
        [] { return ValidateLCID(0); },
        [] { return ValidateLCID(LOCALE_USER_DEFAULT); },
        [] { return ValidateLCID(LOCALE_SYSTEM_DEFAULT); },
    };
    EXPECT_EQ(gLangIDAtLoad, 0);
    for (const auto &use : uses) {
        gLangID = 0;
        EXPECT_OUTCOME(use(), 1033u, kUnchanged) << &use - uses;
        EXPECT_EQ(gLangID, 1033) << &use - uses;
        gLangID = 1045;
        EXPECT_OUTCOME(use(), 1045u, kUnchanged) << &use - uses;
    }
    for (const uintptr_t other : {uintptr_t{1031}, uintptr_t{4711}, uintptr_t{1} << 40 | 1024})
        EXPECT_EQ(ValidateLCID(other), other);
}

TEST_F(Locale, Choice)
{
    const std::string longest(255, 'x');
    const std::string tooLong(256, 'x');
    const struct {
        const char *variable;
        const char *configured;
        const char *selector;
        uint16_t before;
        uint32_t found;
        uint16_t language;
    } rows[] = {
        {"", "", nullptr, 0, TRUE, 1033},
        {"", "de-ch", nullptr, 0, TRUE, 2055},
        {"sv", "de-ch", nullptr, 1045, TRUE, 1053},
        {longest.c_str(), "de-ch", nullptr, 1045, FALSE, 1045},
        {tooLong.c_str(), "de-ch", nullptr, 1045, TRUE, 2055}, // not seen
        {"xx-yy", "", nullptr, 0, FALSE, 1033},
        {"sv", "de", "pt-br", 0, TRUE, 1046},
        {"sv", "de", "EN-US", 0, FALSE, 1033},
        {"", "", "de-li", 1045, TRUE, 5127},
        {"", "", "en-u", 1045, FALSE, 1045},
        {"", "", tooLong.c_str(), 1045, FALSE, 1045},
        {"", "", "fi\0x", 1045, TRUE, 1035}, // "fi\0\0" is a number
        {"", "", "fi\0\0", 1045, FALSE, 1045},
        {"", "", "\0xyz", 1045, FALSE, 1045},
        {"", "", "\x09\x04\x01\0", 1045, FALSE, 1045}, // 0x10409 is a text
        {"", "", "\x09\x04\0\0", 1045, TRUE, 1033},
        {"", "", "\x12\x08\0\0", 1045, TRUE, 2066}, // has no code
        {"", "", "\xFF\xFF\0\0", 1045, FALSE, 1045},
        {"", "", "\0\x04\0\0", 1045, FALSE, 1045},
        {"", "", "\0\0\0\0", 1045, FALSE, 1045},
        {"", "", "\0\0\0\0", 0, FALSE, 1033},
    };
    for (const auto &row : rows) {
        const auto name = ::testing::PrintToString(&row - rows);
        setenv("WEXELLOCALE", row.variable, 1);
        WriteProfileString("Localize", "Locale", row.configured);
        gLangID = row.before;
        EXPECT_OUTCOME(SetLocale(row.selector), row.found, kUnchanged) << name;
        EXPECT_EQ(gLangID, row.language) << name;
    }
}

TEST_F(Locale, Values)
{
    const struct {
        uintptr_t language, key;
        const char *value;
    } rows[] = {
        {1033, LOCALE_SSHORTDATE, "M/d/yy"},
        {1031, LOCALE_NOUSEROVERRIDE | LOCALE_SSHORTDATE, "M/d/yy"}, // the current language
        {0, LOCALE_S1159, "AM"},
        {2055, LOCALE_SMONTHNAME1, "Januar"},
        {1036, LOCALE_STIMEFORMAT, "h:mm:ss tt"}, // from English, as the next one
        {1041, LOCALE_SLANGUAGE, "English (United States)"},
    };
    for (const auto &row : rows) {
        char value[64];
        EXPECT_OUTCOME(GetLocaleInfo(row.language, row.key, value, sizeof value),
                       static_cast<int32_t>(strlen(row.value)) + 1, kUnchanged);
        EXPECT_STREQ(value, row.value) << row.language << " " << row.key;
    }
    EXPECT_OUTCOME(GetLocaleInfo(1033, LOCALE_SSHORTDATE, nullptr, 0), 7, kUnchanged);
    for (const int32_t size : {5, -1})
        EXPECT_OUTCOME(GetLocaleInfo(1033, LOCALE_SSHORTDATE, nullptr, size), 0,
                       ERROR_INSUFFICIENT_BUFFER);
}

// Every table as it stands, and what each language answers for each key, in rooms of all sizes.
TEST_F(Locale, ValuesOfAllLanguages)
{
    Digest tables;
    Digest answers;
    for (const LANGUAGEROW *row : {Lang_Danish, Lang_German, Lang_EngUS, Lang_Finnish, Lang_French,
                                   Lang_Hungarian, Lang_Italian, Lang_Korean, Lang_Polish,
                                   Lang_Brazil, Lang_Slovakian, Lang_Swedish, Lang_EngUK}) {
        for (; row->key != 0; row++)
            tables.Add(row->key, row->value);
        tables.Add(row->value);
    }
    std::vector<uintptr_t> languages = {0, 1, 7, 1024, 2048, 0x7F00, 0xFFFF, 0x10407, 0x100000407};
    for (const LANGUAGEENTRY *entry = gLanguageTable; entry->name; entry++) {
        tables.Add(entry->name, entry->code, entry->language);
        languages.push_back(entry->language);
    }
    for (const uintptr_t language : languages) {
        for (uintptr_t key = 0; key < 5000; key += key < 130 || key > 4000 ? 1 : 79) {
            const auto size = static_cast<int32_t>((key + language) % 30) - 1;
            std::string value(40, '*');
            gLangID = key % 2 ? 0 : 1045; // settled by the question
            SetLastError(kUnchanged);
            const uintptr_t flags = (key + language) % 3 << 30;
            const int32_t length = GetLocaleInfo(language, key | flags, value.data(), size);
            answers.Add(length, GetLastError(), value, gLangID);
        }
    }
    EXPECT_EQ(tables.hex(), "48ce02411a630583");
    EXPECT_EQ(answers.hex(), "4edbb369eda48caa");
}

// The engine with the arguments of its fronts.
int32_t Format(uintptr_t language, uint32_t flags, const SYSTEMTIME *time, const char *picture,
               char *out, int32_t size)
{
    return FormatLocaleString(language, 9, flags, time, picture, out, size);
}

// The fronts leave their result as last error.
TEST_F(Locale, Pictures)
{
    gLangID = 1045;
    const struct {
        decltype(&Format) format;
        uintptr_t language;
        uint32_t flags;
        const char *picture;
        const char *text;
        int32_t count;
        int32_t size = 64;
        SYSTEMTIME time = kMonday;
    } rows[] = {
        {Format, 1033, 0, "dddd, MMMM dd, yyyy", "Monday, March 07, 2005", 23},
        {Format, 1033, TIME_NOMINUTESORSECONDS, "h:mm:ss tt", "1:09 PM", 8},
        {Format, 1033, TIME_NOSECONDS, "h:mm:ss tt", "1:05 PM", 8},
        {Format, 1033, 0, "yyyyy gg", "20055 AD", 9},
        {Format, 1033, 0, "'It''s' d", "It's 7", 7},
        {Format, 1031, 0, "h:mm tt", "1:05 ", 6},
        {Format, 1033, 0, "h:mm tt ddd", "12:05 AM Sun", 13, 64, kSunday},
        {Format, 1033, 0, "'abc", "abc", 5},
        {Format, 1033, 0, "'abc", "abc", 4, 5}, // as full as can be
        {Format, 1033, 0, "yyyy", "2005", 5, 6},
        {Format, 1033, 0, "yyyy", "2005", 4, 5},
        {Format, 1033, 0, "yyyy", "200", 0, 4},
        {Format, 1033, 0, "dddd", "Mond", 0, 5},
        {Format, 1033, 0, "", "", 0, 1},
        {Format, 1033, 0, "d", "kept", 0, 0},
        {Format, 1033, 0, "d", "kept", 0, INT32_MIN},
        {GetDateFormat, 1033, DATE_LONGDATE, nullptr, "Monday, March 07, 2005", 23},
        {GetDateFormat, 1036, DATE_LONGDATE, nullptr, "lundi, mars 07, 2005", 21},
        {GetDateFormat, 1033, 3, "h:mm:ss", "1:05:09", 8},
        {GetDateFormat, 0, 0, nullptr, "07.03.2005", 11},
        {GetDateFormat, 2048, 1, nullptr, "07.03.2005", 11},
        {GetTimeFormat, 1033, 0xFFFFFFFD, nullptr, "1:09 PM", 8},
        {GetTimeFormat, 1033, 2, "h:mm:ss", "1:05", 5},
        {GetTimeFormat, 1051, 4, nullptr, "13:05:09", 9},
        {GetTimeFormat, 1033, 0, nullptr, "1:05", 0, 5},
        {GetTimeFormat, 1033, 0, nullptr, "kept", 0, 0},
    };
    for (const auto &row : rows) {
        char text[64] = "kept";
        const bool isCut = row.count == 0 && *row.text;
        const uint32_t error = row.format != Format ? static_cast<uint32_t>(row.count)
                               : isCut              ? ERROR_INSUFFICIENT_BUFFER
                                                    : kUnchanged;
        EXPECT_OUTCOME(row.format(row.language, row.flags, &row.time, row.picture, text, row.size),
                       row.count, error);
        EXPECT_STREQ(text, row.text) << row.picture;
    }
    EXPECT_OUTCOME(Format(1033, 0, &kMonday, "d", nullptr, 64), 0, ERROR_INSUFFICIENT_BUFFER);
}

TEST_F(Locale, RandomPictures)
{
    std::mt19937 random(1601);
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    Digest digest;
    for (int round = 0; round < 60000; round++) {
        std::string picture;
        for (uint32_t runs = below(10); runs > 0; runs--) {
            const char c = "hHmstyMdg'': .x\xE9"[below(16)];
            picture.append(1 + below(5), c);
        }
        if (round % 1000 == 999) // a long one, and at times room for it
            for (int doubled = 0; doubled < 10; doubled++)
                picture += picture;
        const uint32_t limit = round % 3 ? 130 : 0x10000;
        const auto field = [&] { return static_cast<uint16_t>(below(limit)); };
        const SYSTEMTIME time = {field(), field(), field(), field(),
                                 field(), field(), field(), field()};
        const uintptr_t language = 1030 + below(12);
        const auto flags = static_cast<uint32_t>(random());
        const auto size = 1 + static_cast<int32_t>(below(round % 2000 == 1999 ? 70000 : 70));
        std::string text(static_cast<size_t>(size) + 8, '*');
        SetLastError(kUnchanged);
        const int32_t count =
            FormatLocaleString(language, 0, flags, &time, picture.c_str(), text.data(), size);
        digest.Add(count, GetLastError(), text.c_str(), text[static_cast<size_t>(count)],
                   text.substr(static_cast<size_t>(size)));
    }
    EXPECT_EQ(digest.hex(), "3c42acfd8574e0f6");
}

// One that starts where the text goes is read as the empty picture; one that lies in it as it
// stood, and one that reaches into it up to there.
TEST_F(Locale, PicturesInTheWayOfTheirText)
{
    const std::string picture = "dddd yyyy MMMM" + std::string(300, 'd') + "'";
    const struct {
        int offset;
        size_t read;
    } rows[] = {{-300, 300}, {-5, 5}, {0, 0}, {1, 400}, {5, 400}, {900, 400}, {1999, 400}};
    for (const auto &row : rows) {
        const std::string seen = picture.substr(0, row.read);
        char expected[2000];
        std::vector<char> room(4000, '*');
        char *text = room.data() + 1000;
        strcpy(text + row.offset, picture.c_str());
        EXPECT_EQ(FormatLocaleString(1033, 0, 0, &kMonday, text + row.offset, text, 2000),
                  FormatLocaleString(1033, 0, 0, &kMonday, seen.c_str(), expected, 2000));
        EXPECT_STREQ(text, expected) << row.offset;
    }
}

TEST_F(Locale, NowIsInUtc)
{
    setenv("TZ", "EST5EDT", 1);
    tzset();
    for (const auto front : {GetDateFormat, GetTimeFormat}) {
        const auto stamp = [=](const SYSTEMTIME *time) {
            char text[32];
            EXPECT_EQ(front(1033, 0, time, "yyyy-MM-dd HH:mm:ss", text, sizeof text), 20);
            return std::string(text);
        };
        SYSTEMTIME now;
        GetSystemTime(&now);
        const std::string text = stamp(nullptr);
        EXPECT_GE(text, stamp(&now));
        GetSystemTime(&now);
        EXPECT_LE(text, stamp(&now));
    }
}

} // namespace
