// The picture engine against a slow, obvious twin, over random pictures, times and sizes.
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "locale/picture.h"
#include "wexelxi/locale.h"

using namespace wexelxi;

namespace {

// One name for each key, some long, some empty, some missing.
const char *NameOf(uintptr_t language, uintptr_t key)
{
    static std::string name;
    if (key % 11 == 5)
        return nullptr;
    name = key % 7 == 3 ? "" : "<" + std::to_string(language) + "." + std::to_string(key) + ">";
    if (key % 5 == 1)
        name.insert(0, key % 50, 'n');
    return name.c_str();
}

std::string TwinName(uint32_t key)
{
    const char *name = NameOf(7, key);
    return name ? std::string(name).substr(0, 39) : "";
}

std::string TwinNumber(unsigned number, size_t digits)
{
    char text[16];
    snprintf(text, sizeof text, digits == 1 ? "%d" : "%02d", static_cast<int>(number));
    return text;
}

std::string TwinItem(char c, size_t count, const SYSTEMTIME &t)
{
    const unsigned day = t.wDayOfWeek ? t.wDayOfWeek : 7;
    const unsigned hour = t.wHour % 12 == 0 ? 12 : t.wHour % 12;
    switch (c) {
    case 'd':
        return count > 2 ? TwinName((count == 3 ? 48 : 41) + day) : TwinNumber(t.wDay, count);
    case 'M':
        return count > 2 ? TwinName((count == 3 ? 67u : 55u) + t.wMonth)
                         : TwinNumber(t.wMonth, count);
    case 'y':
        return count == 4   ? TwinNumber(t.wYear, 1)
               : count == 3 ? "yyy"
                            : TwinNumber(t.wYear % 100, count);
    case 'g':
        return count == 1 ? "g" : "AD";
    case 't':
        return count == 2 ? TwinName(t.wHour < 12 ? 40 : 41) : t.wHour < 12 ? "A" : "P";
    default:
        return TwinNumber(c == 'h'   ? hour
                          : c == 'H' ? t.wHour
                          : c == 'm' ? t.wMinute
                                     : t.wSecond,
                          count);
    }
}

struct TwinResult {
    std::string text;
    bool openQuote;
};

TwinResult TwinFormat(std::string picture, uint32_t flags, const SYSTEMTIME &time)
{
    for (uint32_t bit : {1u, 2u}) {
        const size_t at = picture.find(bit == 1 ? ":mm" : ":ss");
        if ((flags & bit) && at != std::string::npos)
            picture.erase(at, 3);
    }
    std::string text;
    bool quoted = false;
    for (size_t i = 0; i < picture.size();) {
        const char c = picture[i];
        if (quoted && picture.compare(i, 2, "''") == 0) {
            text += '\'';
            i += 2;
        } else if (c == '\'') {
            quoted = !quoted;
            i++;
        } else if (quoted || !strchr("hHmstyMdg", c)) {
            text += c;
            i++;
        } else {
            const size_t most = strchr("ghHmst", c) ? 2 : 4;
            size_t count = 0;
            while (count < most && i < picture.size() && picture[i] == c) {
                count++;
                i++;
            }
            text += TwinItem(c, count, time);
        }
    }
    return {text, quoted};
}

void Check(const std::string &picture, uint32_t flags, const SYSTEMTIME &time, int32_t size)
{
    // Just as many bytes as told, so that one more is caught.
    const auto room = static_cast<size_t>(size);
    const std::unique_ptr<char[]> out(new char[room]);
    memset(out.get(), 0x7E, room);
    const PictureResult result =
        FormatPicture(picture.c_str(), flags, time, {7, NameOf}, out.get(), size);
    const TwinResult twin = TwinFormat(picture, flags, time);
    const bool fits = twin.text.size() < room;
    const size_t count = fits ? std::min(twin.text.size() + (twin.openQuote ? 2 : 1), room - 1) : 0;
    ASSERT_EQ(result.fits, fits) << picture << " in " << size;
    ASSERT_EQ(static_cast<size_t>(result.count), count) << picture << " in " << size;
    ASSERT_EQ(std::string(out.get()), twin.text.substr(0, room - 1).c_str()) << picture;
    ASSERT_TRUE(!fits || out[count] == '\0') << picture;
}

TEST(Picture, RandomPicturesAsTheTwinHasThem)
{
    const char *const pieces[] = {"h",   "H",   "m",     "s",    "t",   "y",    "M",  "d",
                                  "g",   "'",   "'",     ":",    " ",   ",",    "x",  "\xE9",
                                  ":mm", ":ss", "''",    "dddd", "MMM", "yyyy", "tt", ":m",
                                  ":s",  "hhh", "s:mms", ".",    "ddd", "MMMM"};
    std::mt19937 random(1601);
    for (int round = 0; round < 60000 && !::testing::Test::HasFatalFailure(); round++) {
        std::string picture;
        for (auto left = random() % 14; left > 0; left--)
            picture += pieces[random() % std::size(pieces)];
        const uint16_t limit = round % 3 ? 60 : UINT16_MAX;
        const auto field = [&] { return static_cast<uint16_t>(random() % limit); };
        const SYSTEMTIME time = {field(), field(), field(), field(),
                                 field(), field(), field(), field()};
        Check(picture, static_cast<uint32_t>(random()), time,
              1 + static_cast<int32_t>(random() % 70));
    }
}

TEST(Picture, TakesPiecesOutOneAfterTheOther)
{
    const SYSTEMTIME time = {2005, 3, 1, 7, 13, 5, 9, 0};
    // The first piece, once gone, may make the second one.
    for (const char *picture : {":s:mms", "h:ss:mm", "':mm'h:mm", ":m:mmm", ":s:ss:mms", ":mm:ss"})
        for (const uint32_t flags : {0u, 1u, 2u, 3u, 4u, 0xFFFFFFFFu})
            Check(picture, flags, time, 40);
    Check(std::string(10000, 'd') + "'", 3, time, 32000);
    Check(std::string(10000, 'd') + "'", 3, time, 100);
}

// One that starts where the text goes is read as the empty picture; one that lies in it as it
// stood, and one that reaches into it up to there.
TEST(Picture, WritesOverItsOwnPicture)
{
    const SYSTEMTIME time = {2005, 3, 1, 7, 13, 5, 9, 0};
    const std::string picture = "dddd yyyy MMMM" + std::string(300, 'd') + "'";
    for (const int offset : {-300, -5, 1, 5, 900}) {
        std::vector<char> bytes(4000, '*');
        char *out = bytes.data() + 1000;
        strcpy(out + offset, picture.c_str());
        EXPECT_TRUE(FormatPicture(out + offset, 0, time, {7, NameOf}, out, 2000).fits) << offset;
        const size_t read = offset < 0 ? static_cast<size_t>(-offset) : picture.size();
        EXPECT_EQ(out, TwinFormat(picture.substr(0, read), 0, time).text) << offset;
        strcpy(out, picture.c_str());
        EXPECT_EQ(FormatPicture(out, 0, time, {7, NameOf}, out, 2000).count, 1);
    }
}

} // namespace
