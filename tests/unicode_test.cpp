// The conversions against slow, obvious twins, with an inaccessible page behind every text.
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/mman.h>
#include <vector>

#include "locale/unicode.h"
#include "wexelxi.h"

namespace {

using Wide = std::vector<uint32_t>;
constexpr char kHighPoints[] =
    "\u20ac\u201a\u0192\u201e\u2026\u2020\u2021\u02c6\u2030\u0160\u2039\u0152\u017d\u2018"
    "\u2019\u201c\u201d\u2022\u2013\u2014\u02dc\u2122\u0161\u203a\u0153\u017e\u0178";
constexpr uint8_t kHighBytes[] = {0x80, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89,
                                  0x8A, 0x8B, 0x8C, 0x8E, 0x91, 0x92, 0x93, 0x94, 0x95,
                                  0x96, 0x97, 0x98, 0x99, 0x9A, 0x9B, 0x9C, 0x9E, 0x9F};

// Memory that ends where an inaccessible page begins.
class GuardedMemory {
public:
    GuardedMemory()
        : start_(static_cast<char *>(mmap(nullptr, kBytes + kPage, PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        mprotect(start_ + kBytes, kPage, PROT_NONE);
    }
    ~GuardedMemory() { munmap(start_, kBytes + kPage); }

    // The last bytes of it, filled with 0xEE.
    template <typename T>
    T *Last(size_t count)
    {
        T *place = reinterpret_cast<T *>(start_ + kBytes - count * sizeof(T));
        memset(static_cast<void *>(place), 0xEE, count * sizeof(T));
        return place;
    }

private:
    static constexpr size_t kPage = 4096;
    static constexpr size_t kBytes = 128 * kPage;
    char *start_;
};

Wide TwinDecode(const std::string &text)
{
    Wide result;
    for (size_t i = 0; i < text.size();) {
        const uint32_t b = static_cast<uint8_t>(text[i++]);
        const size_t more = b < 0x80 ? 0 : b < 0xE0 ? 1 : b < 0xF0 ? 2 : b < 0xF8 ? 3 : 0;
        const uint32_t masks[] = {0xFF, 0x1F, 0x0F, 0x07};
        uint32_t codePoint = b & masks[more];
        for (size_t k = 0; k < more; k++) {
            codePoint <<= 6;
            if (i < text.size())
                codePoint |= static_cast<uint32_t>(text[i++]) & 0x3F;
        }
        result.push_back(codePoint);
    }
    return result;
}

std::string TwinEncode(const Wide &text)
{
    std::string result;
    for (const uint32_t u : text) {
        const int more = u < 0x80 ? 0 : u < 0x800 ? 1 : u < 0x10000 ? 2 : u < 0x200000 ? 3 : -1;
        const uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        if (more < 0) {
            result += '\xBF';
            continue;
        }
        result += static_cast<char>(leads[more] | u >> (6 * more));
        for (int k = more - 1; k >= 0; k--)
            result += static_cast<char>(0x80 | ((u >> (6 * k)) & 0x3F));
    }
    return result;
}

uint32_t TwinCodePoint(uint8_t byte)
{
    static const Wide points = TwinDecode(kHighPoints);
    for (size_t i = 0; i < points.size(); i++) {
        if (kHighBytes[i] == byte)
            return points[i];
    }
    return byte >= 0x80 && byte < 0xA0 ? 0xBF : byte;
}

std::string TwinToCodePage(const std::string &text)
{
    std::string result;
    for (const uint32_t codePoint : TwinDecode(text)) {
        char byte = codePoint < 0x80 || (codePoint >= 0xA0 && codePoint < 0x100)
                        ? static_cast<char>(codePoint)
                        : '\xBF';
        for (const uint8_t high : kHighBytes) {
            if (TwinCodePoint(high) == codePoint)
                byte = static_cast<char>(high);
        }
        result += byte;
    }
    return result;
}

std::vector<uint16_t> TwinToUtf16(const Wide &text)
{
    std::vector<uint16_t> result;
    for (const uint32_t u : text) {
        if (u < 0x10000) {
            result.push_back(static_cast<uint16_t>(u));
        } else if (u <= 0x10FFFF) {
            result.push_back(static_cast<uint16_t>(0xD800 + (u - 0x10000) / 0x400));
            result.push_back(static_cast<uint16_t>(0xDC00 + (u - 0x10000) % 0x400));
        } else {
            result.push_back(0xBF);
        }
    }
    return result;
}

// Runs a conversion with both texts against their guards, the destination just as long as the
// result.
template <typename To, typename Text, typename Expected>
void Check(const char *name, size_t (*convert)(const typename Text::value_type *, To *),
           const Text &source, const Expected &expected)
{
    static GuardedMemory sources, destinations;
    using From = typename Text::value_type;
    From *from = sources.Last<From>(source.size() + 1);
    std::copy(source.begin(), source.end(), from);
    from[source.size()] = 0;
    To *to = destinations.Last<To>(expected.size() + 1);
    ASSERT_EQ(convert(from, to), expected.size()) << name;
    for (size_t i = 0; i < expected.size(); i++)
        ASSERT_EQ(to[i], static_cast<To>(expected[i])) << name << " at " << i;
    ASSERT_EQ(to[expected.size()], 0) << name;
}

using Bytes = std::basic_string<uint8_t>;

template <typename Blocks>
void CheckUtf8(const std::string &text)
{
    const Bytes bytes(text.begin(), text.end());
    Check("code page", wexelxi::Utf8ToCodePage<Blocks>, bytes, TwinToCodePage(text));
    Check("wide", wexelxi::Utf8ToWideChar<Blocks>, bytes, TwinDecode(text));
    Wide points;
    for (const uint8_t byte : bytes)
        points.push_back(TwinCodePoint(byte));
    Check("from code page", wexelxi::CodePageToUtf8<Blocks>, bytes, TwinEncode(points));
}

template <typename Blocks>
void CheckWide(const Wide &text)
{
    Check("wide to UTF-8", wexelxi::WideCharToUtf8<Blocks>, text, TwinEncode(text));
    Check("wide to UTF-16", wexelxi::WideCharToUtf16<Blocks>, text, TwinToUtf16(text));
}

void CheckBoth(const std::string &text)
{
    CheckUtf8<wexelxi::PortableBlocks>(text);
    CheckUtf8<wexelxi::NativeBlocks>(text);
}

void CheckBoth(const Wide &text)
{
    CheckWide<wexelxi::PortableBlocks>(text);
    CheckWide<wexelxi::NativeBlocks>(text);
}

TEST(Unicode, ExportedForms)
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
        char text[16] = "***************";
        EXPECT_EQ(ConvertUtf8ToISO8859WithDest(row.utf8.c_str(), text), row.codePage.size());
        EXPECT_EQ(std::string(text, row.codePage.size() + 1), row.codePage + '\0');
        char *copy = ConvertUtf8ToISO8859(row.utf8.c_str());
        EXPECT_STREQ(copy, row.codePage.c_str());
        free(copy);
    }
    char *utf8 = ConvertISO8859ToUtf8("\x80\x81\xE9z");
    EXPECT_STREQ(utf8, "\xE2\x82\xAC\xC2\xBF\xC3\xA9z");
    free(utf8);
}

TEST(Unicode, NullSources)
{
    char text[] = "kept";
    uint32_t wide[] = {7};
    uint16_t units[] = {7};
    EXPECT_EQ(ConvertUtf8ToISO8859(nullptr), nullptr);
    EXPECT_EQ(ConvertISO8859ToUtf8(nullptr), nullptr);
    EXPECT_EQ(ConvertUtf8ToWideCharWithDest(nullptr, wide), 0u);
    EXPECT_EQ(wide[0], 7u);
    EXPECT_EQ(ConvertWideCharToUtf16WithDest(nullptr, units), 0u);
    EXPECT_EQ(units[0], 0u);
    for (auto convert : {ConvertUtf8ToISO8859WithDest, ConvertISO8859ToUtf8WithDest}) {
        text[0] = 'k';
        EXPECT_EQ(convert(nullptr, text), 0u);
        EXPECT_EQ(text[0], '\0');
    }
    text[0] = 'k';
    EXPECT_EQ(ConvertWideCharToUtf8WithDest(nullptr, text), 0u);
    EXPECT_STREQ(text, "");
}

TEST(Unicode, EveryLeadByteCutAtEveryByte)
{
    CheckBoth(std::string(kHighPoints)); // all that the code page has beyond 255
    for (int lead = 1; lead < 256; lead++) {
        for (const char *rest : {"", "\x80", "\xBF\x81", "\xBF\xBF\xBF", "abcd", "\xC3\x01\xFF"}) {
            for (size_t length = 0; length <= strlen(rest); length++) {
                const std::string text = static_cast<char>(lead) + std::string(rest, length);
                CheckBoth(text);
                CheckBoth("x" + text);
                uint32_t codePoint = 0xEEEE;
                const auto first = static_cast<uint32_t>(lead);
                const char *end = gGetNextUtf8Char(text.c_str() + 1, first, &codePoint);
                EXPECT_EQ(codePoint, TwinDecode(text)[0]);
                const Wide behind = TwinDecode(end);
                EXPECT_EQ(behind.size() + 1, TwinDecode(text).size());
            }
        }
    }
}

TEST(Unicode, WideValuesOfAllRanges)
{
    Wide all;
    for (const uint32_t edge : {0x80u, 0x100u, 0x800u, 0x7FFFu, 0x8000u, 0xD800u, 0xDC00u, 0xE000u,
                                0x10000u, 0x1F600u, 0x110000u, 0x200000u, 0x80000000u, 0xFFFFFFFFu})
        for (const uint32_t value : {edge - 1, edge, edge + 1}) {
            if (value == 0)
                continue;
            all.push_back(value);
            for (const size_t at : {0u, 5u, 15u, 16u, 31u}) {
                Wide text(33, 'a');
                text[at] = value;
                CheckBoth(text);
            }
        }
    CheckBoth(all);
}

// Runs of one kind after the other, so that blocks begin and break off everywhere.
TEST(Unicode, RandomTextsAtEveryAlignment)
{
    std::mt19937 random(20261122);
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    const uint32_t ranges[] = {0x80, 0x100, 0x800, 0x8000, 0x10000, 0x110000, 0x300000};
    for (int round = 0; round < 1500; round++) {
        const size_t length = round % 200;
        Wide wide;
        std::string bytes;
        while (wide.size() < length) {
            const uint32_t range = ranges[below(7)];
            for (uint32_t run = 1 + below(70); run > 0 && wide.size() < length; run--) {
                wide.push_back(1 + below(range - 1));
                bytes += static_cast<char>(1 + below(range < 0x100 ? 0x7F : 0xFF));
            }
        }
        CheckBoth(wide);
        CheckBoth(bytes);
        CheckBoth(TwinEncode(wide));
    }
    CheckBoth(std::string(100000, 'a') + "\xC3\xA9" + std::string(9000, 'b'));
    CheckBoth(Wide(20000, 'w'));
}

TEST(Unicode, InPlaceConversionIsExact)
{
    std::string text;
    for (int i = 0; i < 500; i++)
        text += std::string(static_cast<size_t>(i % 97), 'a') + "\xE2\x82\xAC";
    std::string inPlace = text;
    const size_t length = ConvertUtf8ToISO8859WithDest(inPlace.c_str(), inPlace.data());
    EXPECT_EQ(inPlace.substr(0, length), TwinToCodePage(text));
}

} // namespace
