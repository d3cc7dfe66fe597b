// Strings and environment variables.
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

TEST(Strings, Itoa)
{
    const struct {
        int32_t value;
        int32_t radix;
        const char *text;
    } rows[] = {
        {0, 7, "0"},
        {-255, 10, "-255"},
        {-255, 16, "ffffff01"},
        {35, 36, "z"},
        {-1, 2, "11111111111111111111111111111111"},
        {INT32_MIN, 10, "-2147483648"},
        {INT32_MAX, 10, "2147483647"},
        {5, 1, ""},
        {5, 0, ""},
        {38, 40, "}"},
    };
    for (const auto &row : rows) {
        char text[40];
        EXPECT_EQ(itoa(row.value, text, row.radix), text);
        EXPECT_STREQ(text, row.text);
    }
}

TEST(Strings, ComparisonsKeepTheirSigns)
{
    const struct {
        const char *first, *second;
        int32_t exact, folded;
    } rows[] = {
        {"a", "b", 1, -1},        {"b", "a", -1, 1},     {"abc", "abc", 0, 0},
        {"", "x", 1, -'x'},       {"ABC", "abd", 1, -1}, {"\xE9", "a", -1, 0xE9 - 'a'},
        {"abc", "ab", -1, 99},    {"ab", "abc", 1, -99}, {"a[", "A{", -1, -32},
        {"\xC9", "\xE9", 1, -32},
    };
    for (const auto &row : rows) {
        EXPECT_OUTCOME(lstrcmp(row.first, row.second), row.exact, kUnchanged) << row.first;
        EXPECT_OUTCOME(lstrcmpi(row.first, row.second), row.folded, kUnchanged) << row.first;
    }
    EXPECT_OUTCOME(lstrncmpi("abcX", "ABCY", 3), 0, kUnchanged);
    EXPECT_EQ(lstrncmpi("abcX", "ABCY", 4), -1);
    EXPECT_EQ(lstrncmpi("abcX", "ABCY", 0), -1) << "no limit";
    EXPECT_EQ(lstrncmpi("a", "b", 1), -1);
}

TEST(Strings, BlocksFollowTheCaseTables)
{
    std::string all;
    for (int i = 0; i < 3000; i++)
        all += static_cast<char>(i * 7 % 256);
    for (uint8_t written : {uint8_t{'e'}, uint8_t{0xE9}}) {
        for (const uint32_t count : {63u, 64u, 3000u}) {
            std::string upper = all;
            std::string lower = all;
            AnsiUpperBuff(upper.data(), count);
            AnsiLowerBuff(lower.data(), count);
            for (size_t i = 0; i < all.size(); i++) {
                const auto byte = static_cast<uint8_t>(all[i]);
                ASSERT_EQ(static_cast<uint8_t>(upper[i]), i < count ? gUPPERBUFF[byte] : byte) << i;
                ASSERT_EQ(static_cast<uint8_t>(lower[i]), i < count ? gLOWERBUFF[byte] : byte) << i;
            }
        }
        gUPPERBUFF[written] = '*'; // a host's own idea of case
        gLOWERBUFF[written] = '*';
    }
}

TEST(Strings, Copies)
{
    const struct {
        const char *source;
        int32_t count;
        const char *expected; // all of the 8 bytes that stand there, '*' untouched
    } rows[] = {
        {"abcdef", 3, "ab\0*****"}, {"abcdef", 1, "\0*******"}, {"abcdef", 0, "********"},
        {"ab", 3, "ab\0*****"},     {"", 5, "\0*******"},       {"abc", -1, "********"},
    };
    for (const auto &row : rows) {
        char buffer[] = "********";
        EXPECT_OUTCOME(lstrcpyn(buffer, row.source, row.count), buffer, kUnchanged);
        EXPECT_EQ(memcmp(buffer, row.expected, 8), 0) << row.source << row.count;
    }
    for (const size_t gap : {1u, 5u, 4095u}) { // which a host closes with a copy
        std::string text(gap, '-');
        for (int i = 0; i < 9000; i++)
            text += static_cast<char>('A' + i % 26);
        const std::string moved = text.substr(gap);
        EXPECT_OUTCOME(lstrcpy(&text[0], &text[gap]), &text[0], kUnchanged);
        EXPECT_EQ(lstrlen(&text[0]), 9000u);
        EXPECT_EQ(text.c_str(), moved) << gap;
    }
    char joined[8] = "ab";
    EXPECT_STREQ(lstrcat(joined, "cd"), "abcd");
    EXPECT_STREQ(lstrcpy(joined, joined + 2), "cd");
    EXPECT_OUTCOME(lstrcat(joined, joined), joined, kUnchanged);
    EXPECT_STREQ(joined, "cdcd");
}

TEST(Strings, CaseTables)
{
    for (uint32_t c = 0; c < 256; c++) {
        const bool pair = (c >= 0x41 && c <= 0x5A) || c == 0x8A || c == 0x8C || c == 0x8E ||
                          c == 0x9F || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
        EXPECT_EQ(gUPPERBUFF[gLOWERBUFF[c]], pair ? c : gUPPERBUFF[c]) << c;
        EXPECT_EQ(gLOWERBUFF[c] != c, pair) << c;
        EXPECT_OUTCOME(IsCharAlpha(c | 0x100), c < 0x80 && isalpha(static_cast<int>(c)),
                       kUnchanged);
        const auto value = reinterpret_cast<LPSTR>(uintptr_t{0xFF00} + c);
        EXPECT_EQ(reinterpret_cast<intptr_t>(AnsiUpper(value)), static_cast<int8_t>(gUPPERBUFF[c]));
    }
    EXPECT_EQ(gLOWERBUFF[0x9F], 0xFF);
    EXPECT_EQ(gUPPERBUFF[0xDF], 0xDF);
    char text[] = "aZ\xE9\xDF";
    EXPECT_OUTCOME(AnsiUpper(text), text, kUnchanged);
    EXPECT_STREQ(text, "AZ\xC9\xDF");
    char bytes[] = {'A', 0, 'B', 'C'};
    EXPECT_OUTCOME(AnsiLowerBuff(bytes, 3), 3, kUnchanged);
    EXPECT_EQ(std::string(bytes, 4), std::string("a\0bC", 4));
    EXPECT_OUTCOME(AnsiUpperBuff(bytes, 4), 4, kUnchanged);
    EXPECT_EQ(std::string(bytes, 4), std::string("A\0BC", 4));
}

TEST(Strings, OemPairStoresNoTerminator)
{
    char buffer[] = "******";
    EXPECT_OUTCOME(OemToAnsi("abc", buffer), TRUE, kUnchanged);
    EXPECT_STREQ(buffer, "abc***");
    EXPECT_OUTCOME(AnsiToOemBuff("xyz", buffer, 2), TRUE, kUnchanged);
    EXPECT_STREQ(buffer, "xyc***");
    EXPECT_OUTCOME(OemToAnsiBuff("q", buffer, 5), TRUE, kUnchanged);
    EXPECT_STREQ(buffer, "qyc***");
    EXPECT_OUTCOME(AnsiToOem("", buffer), TRUE, kUnchanged);
    EXPECT_STREQ(buffer, "qyc***");
    EXPECT_OUTCOME((wsprintf(buffer, "%d/%.1f", 7, 1.25)), 5, kUnchanged);
    EXPECT_STREQ(buffer, "7/1.2");
}

TEST(Environment, ReadsSetsAndRemoves)
{
    StartedLibrary library;
    const struct {
        const char *name, *value; // set first
        bool set;
        uint32_t size, result, error;
        const char *text; // of a buffer that held "kept"
    } rows[] = {
        {"WX_TEST", "value", true, 6, 5, ERROR_SUCCESS, "value"},
        {"WX_TEST", "value", true, 5, 6, ERROR_SUCCESS, "kept"},
        {"WX_TEST", "value", true, 0, 6, ERROR_SUCCESS, "kept"},
        {"WX_TEST", "", true, 1, 0, ERROR_SUCCESS, ""},
        {"WX_TEST", nullptr, true, 5, 0, ERROR_ENVVAR_NOT_FOUND, "kept"},
        {"WX_TEST", nullptr, true, 5, 0, ERROR_ENVVAR_NOT_FOUND, "kept"},
        {"BAD=NAME", "value", false, 5, 0, ERROR_ENVVAR_NOT_FOUND, "kept"},
        {nullptr, "value", false, 5, 0, ERROR_SUCCESS, "kept"},
    };
    for (const auto &row : rows) {
        EXPECT_OUTCOME(SetEnvironmentVariable(row.name, row.value), row.set, ERROR_SUCCESS);
        char text[8] = "kept";
        EXPECT_OUTCOME(GetEnvironmentVariable(row.name, text, row.size), row.result, row.error);
        EXPECT_STREQ(text, row.text) << row.size;
        if (row.size == 6) {
            EXPECT_OUTCOME(GetEnvironmentVariable(row.name, nullptr, 6), 6, ERROR_SUCCESS);
        }
    }
}

} // namespace
