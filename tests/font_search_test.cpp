// The pure parts under the fonts: search lists, file names, remembered widths.
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <utility>

#include "fonts/extent_cache.h"
#include "fonts/search_lists.h"

using namespace wexelxi;

namespace {

std::string ListText(int32_t weight, bool italic)
{
    std::string text;
    for (const SearchRow &row : SearchListFor(weight, italic))
        text += std::to_string(row.weight) + "/" + std::to_string(row.slant) + " ";
    return text;
}

TEST(SearchLists, GoByExactWeight)
{
    const std::map<int32_t, std::pair<const char *, const char *>> lists = {
        {800, {"205/0 200/0 180/0 ", "205/100 205/110 200/100 200/110 180/100 180/110 "}},
        {700, {"200/0 180/0 205/0 ", "200/100 180/100 205/100 200/110 180/110 205/110 "}},
        {600, {"180/0 200/0 205/0 ", "180/100 180/110 200/100 200/110 205/100 205/110 "}}};
    for (int32_t weight = -1000; weight < 1001; weight++) {
        const auto list = lists.find(weight);
        const auto &[roman, italic] = list != lists.end()
                                          ? list->second
                                          : std::pair("80/0 50/0 ", "80/100 80/110 50/100 50/110 ");
        EXPECT_EQ(ListText(weight, false), roman) << weight;
        EXPECT_EQ(ListText(weight, true), italic) << weight;
    }
}

TEST(SearchLists, KnowTrueTypeByName)
{
    for (const char *name : {"a.ttf", "/x/a.ttf", "..ttf", "/.ttf"})
        EXPECT_TRUE(HasTrueTypeName(name)) << name;
    for (const char *name : {"", ".ttf", "a.TTF", "a.otf", "a.ttf.gz", "attf", "a.ttc"})
        EXPECT_FALSE(HasTrueTypeName(name)) << name;
}

TEST(ExtentCache, NeverTellsAWrongWidthAndStaysBounded)
{
    std::mt19937 random(1);
    ExtentCache cache;
    const std::string longest(ExtentCache::kLongestText, 'x');
    for (int i = 0; i < 50000; i++) {
        const auto face = static_cast<uint32_t>(random() % 3);
        const auto number = static_cast<int32_t>(random() % 100000);
        std::string text = std::to_string(number);
        if (number % 50 == 0)
            text += longest.substr(static_cast<size_t>(number) % longest.size());
        const int32_t width = 3 * number + static_cast<int32_t>(face);
        ASSERT_EQ(cache.Find(face, text).value_or(width), width);
        cache.Store(face, text, width);
        ASSERT_EQ(cache.Find(face, text).has_value(), text.size() <= longest.size());
    }
    // A text that is asked for lives on; one that is not goes with its generation, which ends when
    // it has its most texts or its most bytes.
    for (const std::string &text : {longest, std::string("text")}) {
        cache.Store(7, "kept", 1);
        cache.Store(7, "gone", 1);
        const size_t room = std::min(cache.kMostTexts, cache.kMostBytes / text.size());
        for (uint32_t face = 100; face < 102 + 2 * room; face++) {
            cache.Store(face, text, 1);
            ASSERT_TRUE(cache.Find(7, "kept"));
        }
        EXPECT_FALSE(cache.Find(7, "gone"));
        EXPECT_TRUE(cache.Find(102 + static_cast<uint32_t>(room), text));
    }
}

} // namespace
