// The conversions, with an inaccessible page behind every text.
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>
#include <random>
#include <string>
#include <sys/mman.h>

#include "support/digest.h"
#include "wexelxi/unicode.h"

namespace {

// The last bytes in front of such a page; the source and the result have one each.
template <int kText>
char *LastBytes(size_t count)
{
    constexpr size_t kPage = 4096, kBytes = 128 * kPage;
    static char *const end = [] {
        void *start = mmap(nullptr, kBytes + kPage, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        EXPECT_EQ(mprotect(static_cast<char *>(start) + kBytes, kPage, PROT_NONE), 0);
        return static_cast<char *>(start) + kBytes;
    }();
    return end - count;
}

template <typename From, typename To>
using Conversion = uint32_t(const From *, To *);

class Unicode : public ::testing::Test {
protected:
    // Converts a text twice, the second time into no more room than it needs, and gives the result.
    // Both texts are the bytes of their units, without the end.
    template <typename From, typename To>
    std::string Convert(Conversion<From, To> convert, const std::string &text)
    {
        const size_t sourceBytes = text.size() + sizeof(From);
        char *source = LastBytes<0>(sourceBytes);
        memset(source, 0, sourceBytes);
        text.copy(source, text.size());
        const From *from = reinterpret_cast<From *>(source);
        std::string result(4 * sourceBytes, '*');
        const uint32_t length = convert(from, reinterpret_cast<To *>(result.data()));
        result.resize((length + 1) * sizeof(To));
        char *destination = LastBytes<1>(result.size());
        memset(destination, 0xEE, result.size());
        EXPECT_EQ(convert(from, reinterpret_cast<To *>(destination)), length);
        EXPECT_EQ(std::string_view(destination, result.size()), result);
        digest_.Add(length, result);
        return result.substr(0, length * sizeof(To));
    }
    void ConvertBytes(const std::string &text)
    {
        std::string inPlace = text;
        const std::string expected = Convert(ConvertUtf8ToISO8859WithDest, text);
        EXPECT_EQ(ConvertUtf8ToISO8859WithDest(inPlace.c_str(), inPlace.data()), expected.size());
        EXPECT_EQ(inPlace.substr(0, expected.size()), expected);
        Convert(ConvertISO8859ToUtf8WithDest, text);
        Convert(ConvertUtf8ToWideCharWithDest, text);
    }
    void ConvertWide(const std::u32string &text)
    {
        const std::string bytes(reinterpret_cast<const char *>(text.data()), 4 * text.size());
        Convert(ConvertWideCharToUtf16WithDest, bytes);
        ConvertBytes(Convert(ConvertWideCharToUtf8WithDest, bytes));
    }
    // What the bytes of "kept" are after the conversion of no text.
    template <typename From, typename To>
    std::string StoredForNull(Conversion<From, To> convert)
    {
        std::string destination = "kept";
        EXPECT_EQ(convert(nullptr, reinterpret_cast<To *>(destination.data())), 0u);
        return destination;
    }

    Digest digest_;
};

TEST_F(Unicode, CharactersInEachForm)
{
    const struct {
        char32_t character;
        std::string utf8;
        std::string utf16; // low byte first
        std::string codePage;
    } rows[] = {
        {0x81, "\xC2\x81", {"\x81\0", 2}, "\xBF"},
        {U'é', "\xC3\xA9", {"\xE9\0", 2}, "\xE9"},
        {U'š', "\xC5\xA1", "\x61\x01", "\x9A"},
        {U'€', "\xE2\x82\xAC", "\xAC\x20", "\x80"},
        {0xD800, "\xED\xA0\x80", {"\0\xD8", 2}, "\xBF"},
        {0x10FFFF, "\xF4\x8F\xBF\xBF", "\xFF\xDB\xFF\xDF", "\xBF"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF", {"\xBF\0", 2}, "\xBF"},
        {0x200000, "\xBF", {"\xBF\0", 2}, "\xBF"},
    };
    for (const auto &row : rows) {
        const std::string wide(reinterpret_cast<const char *>(&row.character), 4);
        EXPECT_EQ(Convert(ConvertWideCharToUtf8WithDest, wide), row.utf8);
        EXPECT_EQ(Convert(ConvertWideCharToUtf16WithDest, wide), row.utf16);
        EXPECT_EQ(Convert(ConvertUtf8ToISO8859WithDest, row.utf8), row.codePage);
    }
}

TEST_F(Unicode, MalformedTexts)
{
    const struct {
        std::string utf8;
        std::string codePage;
    } rows[] = {
        {"\xF0", std::string(1, '\0')}, {"a\xC3", "a\xC0"},       {"\xE2\x82", "\xBF"},
        {"\x80\xC1x", "\x01x"},         {"\xF8\xFF", "\xF8\xFF"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Convert(ConvertUtf8ToISO8859WithDest, row.utf8), row.codePage);
}

TEST_F(Unicode, NullSources)
{
    EXPECT_EQ(StoredForNull(ConvertUtf8ToISO8859WithDest), std::string("\0ept", 4));
    EXPECT_EQ(StoredForNull(ConvertISO8859ToUtf8WithDest), std::string("\0ept", 4));
    EXPECT_EQ(StoredForNull(ConvertWideCharToUtf8WithDest), std::string("\0ept", 4));
    EXPECT_EQ(StoredForNull(ConvertWideCharToUtf16WithDest), std::string("\0\0pt", 4));
    EXPECT_EQ(StoredForNull(ConvertUtf8ToWideCharWithDest), "kept");
    EXPECT_EQ(ConvertUtf8ToISO8859(nullptr), nullptr);
    EXPECT_EQ(ConvertISO8859ToUtf8(nullptr), nullptr);
}

// The room is as told: these lengths fill what malloc gives, or need a byte more.
TEST_F(Unicode, AllocatedTexts)
{
    const auto roomAndText = [](char *text) {
        const std::string result = std::to_string(malloc_usable_size(text)) + text;
        free(text);
        return result;
    };
    const auto expected = [&](size_t room, const std::string &text) {
        return roomAndText(strcpy(static_cast<char *>(malloc(room)), text.c_str()));
    };
    for (const size_t length : {0u, 7u, 18u, 23u, 24u}) {
        const std::string text(length, '\xC9');
        EXPECT_EQ(roomAndText(ConvertUtf8ToISO8859(text.c_str())),
                  expected(length + 1, Convert(ConvertUtf8ToISO8859WithDest, text)));
        EXPECT_EQ(roomAndText(ConvertISO8859ToUtf8(text.c_str())),
                  expected(3 * length + 3, Convert(ConvertISO8859ToUtf8WithDest, text)));
    }
}

// Runs of one kind after the other, so that blocks begin and break off everywhere, and texts of a
// few bytes, so that sequences do.
TEST_F(Unicode, RandomTexts)
{
    std::mt19937 random(20261122);
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    const uint32_t edges[] = {0x7F,   0x80,   0x100,   0x800,    0x8000,   0xD800,
                              0xDC00, 0xE000, 0x10000, 0x110000, 0x200000, 0xFFFFFFFE};
    for (int round = 0; round < 6000; round++) {
        const size_t length = below(round % 4 ? 7 : 300);
        std::u32string wide;
        std::string bytes;
        while (wide.size() < length) {
            const uint32_t edge = edges[below(std::size(edges))];
            const bool isNear = below(2);
            const bool isRun = below(2);
            for (uint32_t run = isRun ? below(90) : 1; run > 0; run--) {
                wide += isNear ? edge - 1 + below(3) : 1 + below(edge);
                bytes += static_cast<char>(1 + below(edge < 0x100 ? 0x7F : 0xFF));
            }
        }
        ConvertWide(wide);
        ConvertBytes(bytes);
        uint32_t codePoint = 0;
        const char *end = gGetNextUtf8Char(bytes.c_str(), static_cast<uint8_t>(round), &codePoint);
        digest_.Add(codePoint, end - bytes.c_str());
    }
    std::u32string all;
    while (all.size() < 0x3000)
        all += static_cast<char32_t>(all.size() + 1);
    ConvertWide(all); // with all that the code page has
    EXPECT_EQ(digest_.hex(), "ff52c420a550b4b1");
}

} // namespace
