// The conversions, on the machine's blocks and on the portable ones, with an inaccessible page
// behind every text.
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>
#include <random>
#include <string>
#include <sys/mman.h>

#include "locale/unicode.h"
#include "support/digest.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

template <auto kConvert, typename From, typename To>
size_t Call(const void *source, void *destination)
{
    return kConvert(static_cast<const From *>(source), static_cast<To *>(destination));
}

using Converter = size_t (*)(const void *, void *);

struct Conversion {
    size_t from; // bytes of a unit
    size_t to;
    Converter exported;
    Converter portable;
};

const Conversion kUtf8ToCodePage = {1, 1, Call<ConvertUtf8ToISO8859WithDest, char, char>,
                                    Call<Utf8ToCodePage<PortableBlocks>, uint8_t, uint8_t>};
const Conversion kCodePageToUtf8 = {1, 1, Call<ConvertISO8859ToUtf8WithDest, char, char>,
                                    Call<CodePageToUtf8<PortableBlocks>, uint8_t, uint8_t>};
const Conversion kUtf8ToWide = {1, 4, Call<ConvertUtf8ToWideCharWithDest, char, uint32_t>,
                                Call<Utf8ToWideChar<PortableBlocks>, uint8_t, uint32_t>};
const Conversion kWideToUtf8 = {4, 1, Call<ConvertWideCharToUtf8WithDest, uint32_t, char>,
                                Call<WideCharToUtf8<PortableBlocks>, uint32_t, uint8_t>};
const Conversion kWideToUtf16 = {4, 2, Call<ConvertWideCharToUtf16WithDest, uint32_t, uint16_t>,
                                 Call<WideCharToUtf16<PortableBlocks>, uint32_t, uint16_t>};

// The last bytes in front of an inaccessible page; the source and the result have one each.
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

class Unicode : public ::testing::Test {
protected:
    // Converts a text, with both kinds of blocks and in no more room than it needs, and gives the
    // result. Both texts are the bytes of their units, without the end.
    std::string Convert(const Conversion &conversion, const std::string &text)
    {
        const size_t sourceBytes = text.size() + conversion.from;
        char *source = LastBytes<0>(sourceBytes);
        memset(source, 0, sourceBytes);
        text.copy(source, text.size());
        std::string result(4 * sourceBytes, '*');
        const size_t length = conversion.portable(source, result.data());
        result.resize((length + 1) * conversion.to);
        digest_.Add(length, result);
        for (const Converter convert : {conversion.portable, conversion.exported}) {
            char *destination = LastBytes<1>(result.size());
            memset(destination, 0xEE, result.size());
            EXPECT_EQ(convert(source, destination), length);
            EXPECT_EQ(std::string_view(destination, result.size()), result);
        }
        result.resize(length * conversion.to);
        return result;
    }
    void ConvertBytes(const std::string &text)
    {
        for (const Conversion &conversion : {kUtf8ToCodePage, kCodePageToUtf8, kUtf8ToWide})
            Convert(conversion, text);
    }
    void ConvertWide(const std::u32string &text)
    {
        const std::string bytes(reinterpret_cast<const char *>(text.data()), 4 * text.size());
        Convert(kWideToUtf16, bytes);
        ConvertBytes(Convert(kWideToUtf8, bytes));
    }

    Digest digest_;
};

TEST_F(Unicode, BytesAndCodePage)
{
    const struct {
        std::string utf8;
        std::string codePage;
    } rows[] = {
        {"", ""},
        {"\xC3\xA9", "\xE9"},
        {"\xE2\x82\xAC", "\x80"},
        {"\xC5\xA1", "\x9A"},
        {"\xE2\x98\x83", "\xBF"},
        {"\xC2\x85", "\xBF"},
        {"\xF0", std::string(1, '\0')},
        {"a\xC3", "a\xC0"},
        {"\xE2\x82", "\xBF"},
        {"\x80\xC1x", "\x01x"},
        {"\xF8\xFF", "\xF8\xFF"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(Convert(kUtf8ToCodePage, row.utf8), row.codePage) << row.utf8;
        char *copy = ConvertUtf8ToISO8859(row.utf8.c_str());
        EXPECT_STREQ(copy, row.codePage.c_str());
        free(copy);
    }
    EXPECT_EQ(Convert(kCodePageToUtf8, "\x80\x81\xE9z"), "\xE2\x82\xAC\xC2\xBF\xC3\xA9z");
}

TEST_F(Unicode, WideValues)
{
    const struct {
        char32_t value;
        std::string utf8;
        std::u16string utf16;
    } rows[] = {
        {0xD800, "\xED\xA0\x80", {0xD800}},
        {0x1F600, "\xF0\x9F\x98\x80", u"\U0001F600"},
        {0x10FFFF, "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {0x110000, "\xF4\x90\x80\x80", u"\u00BF"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF", u"\u00BF"},
        {0x200000, "\xBF", u"\u00BF"},
    };
    for (const auto &row : rows) {
        const std::string wide(reinterpret_cast<const char *>(&row.value), 4);
        EXPECT_EQ(Convert(kWideToUtf8, wide), row.utf8);
        const std::string utf16 = Convert(kWideToUtf16, wide);
        EXPECT_EQ(row.utf16.compare(0, row.utf16.npos,
                                    reinterpret_cast<const char16_t *>(utf16.data()),
                                    utf16.size() / 2),
                  0);
    }
}

// Each stores an end of its own width, but for the one that stores nothing.
TEST_F(Unicode, NullSources)
{
    for (const Conversion &conversion :
         {kUtf8ToCodePage, kCodePageToUtf8, kUtf8ToWide, kWideToUtf8, kWideToUtf16}) {
        std::string destination = "kept";
        EXPECT_EQ(conversion.exported(nullptr, destination.data()), 0u);
        const size_t stored = conversion.to == 4 ? 0 : conversion.to;
        EXPECT_EQ(destination, std::string("kept").replace(0, stored, stored, '\0'));
    }
    EXPECT_EQ(ConvertUtf8ToISO8859(nullptr), nullptr);
    EXPECT_EQ(ConvertISO8859ToUtf8(nullptr), nullptr);
}

// The room is as told; at these lengths it fills what malloc gives, or a byte more is needed.
TEST_F(Unicode, AllocatedRoom)
{
    const auto room = [](void *block) {
        const size_t bytes = malloc_usable_size(block);
        free(block);
        return bytes;
    };
    for (const size_t length : {7u, 18u, 23u, 24u}) {
        const std::string text(length, '\x80');
        EXPECT_EQ(room(ConvertUtf8ToISO8859(text.c_str())), room(malloc(length + 1)));
        EXPECT_EQ(room(ConvertISO8859ToUtf8(text.c_str())), room(malloc(3 * length + 3)));
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
            for (uint32_t run = 1 + below(2) * below(90); run > 0; run--) {
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
    EXPECT_EQ(digest_.hex(), "d5a97b5b341fdeca");
}

TEST_F(Unicode, LongTextInPlace)
{
    std::string text;
    for (size_t i = 0; i < 500; i++)
        text += std::string(i % 97, 'a') + "\xE2\x82\xAC";
    const std::string expected = Convert(kUtf8ToCodePage, text);
    EXPECT_EQ(ConvertUtf8ToISO8859WithDest(text.c_str(), text.data()), expected.size());
    EXPECT_STREQ(text.c_str(), expected.c_str());
}

} // namespace
