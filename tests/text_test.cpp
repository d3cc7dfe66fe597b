// Strings and environment variables.
#include <cstring>
#include <gtest/gtest.h>
#include <random>
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

int Sign(int32_t value)
{
    return (value > 0) - (value < 0);
}

TEST(Strings, ComparisonsKeepTheirSigns)
{
    const struct {
        const char *first, *second;
        int32_t exact, folded;
    } rows[] = {
        {"a", "b", 1, -1},
        {"b", "a", -1, 1},
        {"abc", "abc", 0, 0},
        {"", "x", 1, -'x'},
        {"\xE9", "a", -1, 0xE9 - 'a'},
        {"ABC", "abd", 1, -1},
        {"abc", "ab", -1, 99},
        {"ab", "abc", 1, -99},
        {"a[", "A{", -1, -32},
        {"\xC9", "\xE9", 1, -32},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(lstrcmp(row.first, row.second), row.exact) << row.first << " " << row.second;
        EXPECT_EQ(lstrcmpi(row.first, row.second), row.folded) << row.first << " " << row.second;
        EXPECT_EQ(Sign(lstrcmpi(row.second, row.first)), -Sign(row.folded));
    }
    EXPECT_EQ(lstrncmpi("abcX", "ABCY", 3), 0);
    EXPECT_EQ(lstrncmpi("abcX", "ABCY", 4), -1);
    EXPECT_EQ(lstrncmpi("abcX", "ABCY", 0), -1);
    EXPECT_EQ(lstrncmpi("a", "b", 1), -1);
}

int32_t TwinCompare(const std::string &first, const std::string &second, uint32_t count)
{
    const auto fold = [](char c) {
        return c >= 'A' && c <= 'Z' ? c + 32 : static_cast<int>(static_cast<uint8_t>(c));
    };
    for (size_t i = 0;; i++) { // c_str() ends both
        const int a = fold(first.c_str()[i]);
        const int b = fold(second.c_str()[i]);
        if (a != b || a == 0 || i + 1 == count)
            return a - b;
    }
}

// Texts that differ in one place, or only in case, at lengths around every block.
TEST(Strings, BlocksCompareAsSingleBytesDo)
{
    std::minstd_rand random(7);
    const auto below = [&](size_t limit) { return random() % limit; };
    constexpr char kBytes[] = "azAZ@[`{ \x7F\x80\xC1\xE1\xFF";
    for (int round = 0; round < 20000; round++) {
        std::string first(below(round % 10 ? 140 : 5000), 'm');
        for (char &c : first)
            c = kBytes[below(sizeof kBytes - 1)];
        std::string second = first;
        for (char &c : second)
            c = (c | 0x20) >= 'a' && (c | 0x20) <= 'z' && below(2) ? static_cast<char>(c ^ 0x20)
                                                                   : c;
        if (!second.empty() && below(3))
            second[below(second.size())] ^= static_cast<char>(1 << below(8));
        second.resize(second.size() - below(2) * below(second.size() + 1));
        second = second.c_str();
        const auto count = static_cast<uint32_t>(below(2) * below(150));
        ASSERT_EQ(lstrncmpi(first.c_str(), second.c_str(), count),
                  TwinCompare(first, second, count))
            << first << "\n"
            << second;
    }
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

TEST(Strings, BoundedCopies)
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
        char buffer[8];
        memset(buffer, '*', sizeof buffer);
        EXPECT_EQ(lstrcpyn(buffer, row.source, row.count), buffer);
        EXPECT_EQ(memcmp(buffer, row.expected, sizeof buffer), 0) << row.source << row.count;
    }
    char joined[8] = "ab";
    EXPECT_STREQ(lstrcat(joined, "cd"), "abcd");
    EXPECT_STREQ(lstrcpy(joined, "xyz"), "xyz");
    EXPECT_EQ(lstrlen(joined), 3u);
    EXPECT_STREQ(lstrcpy(joined, joined + 1), "yz");
    EXPECT_STREQ(lstrcat(joined, joined), "yzyz");
}

TEST(Strings, CaseTables)
{
    for (int c = 0; c < 256; c++) {
        const bool pair = (c >= 0x41 && c <= 0x5A) || c == 0x8A || c == 0x8C || c == 0x8E ||
                          c == 0x9F || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
        if (!pair)
            EXPECT_EQ(gLOWERBUFF[c], c);
        else
            EXPECT_EQ(gUPPERBUFF[gLOWERBUFF[c]], c);
        EXPECT_EQ(IsCharAlpha(static_cast<uint32_t>(c) | 0x100u),
                  (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'));
    }
    EXPECT_EQ(gLOWERBUFF[0x9F], 0xFF);
    EXPECT_EQ(gUPPERBUFF[0xDF], 0xDF);

    const auto upper = [](uintptr_t c) {
        return reinterpret_cast<intptr_t>(AnsiUpper(reinterpret_cast<LPSTR>(c)));
    };
    EXPECT_EQ(upper(0x61), 0x41);
    EXPECT_EQ(upper(0xE9), -55);
    EXPECT_EQ(upper(0x12FF), static_cast<int8_t>(0x9F));
    char text[] = "aZ\xE9\xDF";
    EXPECT_EQ(AnsiUpper(text), text);
    EXPECT_STREQ(text, "AZ\xC9\xDF");
    char bytes[] = {'A', 0, 'B', 'C'};
    EXPECT_EQ(AnsiLowerBuff(bytes, 3), 3u);
    EXPECT_EQ(std::string(bytes, 4), std::string("a\0bC", 4));
    EXPECT_EQ(AnsiUpperBuff(bytes, 4), 4u);
    EXPECT_EQ(std::string(bytes, 4), std::string("A\0BC", 4));
}

TEST(Strings, OemPairStoresNoTerminator)
{
    char buffer[] = "******";
    EXPECT_EQ(OemToAnsi("abc", buffer), 1);
    EXPECT_STREQ(buffer, "abc***");
    EXPECT_EQ(AnsiToOemBuff("xyz", buffer, 2), 1);
    EXPECT_STREQ(buffer, "xyc***");
    EXPECT_EQ(OemToAnsiBuff("q", buffer, 5), 1);
    EXPECT_STREQ(buffer, "qyc***");
    EXPECT_EQ(AnsiToOem("", buffer), 1);
    EXPECT_STREQ(buffer, "qyc***");
    EXPECT_EQ(wsprintf(buffer, "%d/%.1f", 7, 1.25), 5);
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
