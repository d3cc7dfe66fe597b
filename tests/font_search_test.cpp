// The pure parts under the fonts: search lists, file names, remembered widths.
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>

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
    const struct {
        int32_t weight;
        const char *roman;
        const char *italic;
    } rows[] = {
        {800, "205/0 200/0 180/0 ", "205/100 205/110 200/100 200/110 180/100 180/110 "},
        {700, "200/0 180/0 205/0 ", "200/100 180/100 205/100 200/110 180/110 205/110 "},
        {600, "180/0 200/0 205/0 ", "180/100 180/110 200/100 200/110 205/100 205/110 "},
        {400, "80/0 50/0 ", "80/100 80/110 50/100 50/110 "},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(ListText(row.weight, false), row.roman);
        EXPECT_EQ(ListText(row.weight, true), row.italic);
    }
    for (const int32_t other : {0, 599, 601, 650, 699, 701, 799, 801, 900, 1000, -700, INT32_MAX})
        EXPECT_EQ(ListText(other, false), rows[3].roman) << other;
}

TEST(SearchLists, KnowTrueTypeByName)
{
    for (const char *name : {"a.ttf", "/x/a.ttf", "..ttf", "/.ttf"})
        EXPECT_TRUE(HasTrueTypeName(name)) << name;
    for (const char *name : {"", ".ttf", "a.TTF", "a.ttF", "a.otf", "a.ttf.gz", "attf", "a.ttc"})
        EXPECT_FALSE(HasTrueTypeName(name)) << name;
}

TEST(ExtentCache, NeverTellsAWrongWidthAndStaysBounded)
{
    std::mt19937 random(1);
    ExtentCache cache;
    size_t hits = 0;
    for (int i = 0; i < 400000; i++) {
        // Few texts often, many rarely, now and then a long one.
        const auto number = static_cast<int32_t>(random() % (random() % 2 ? 1000 : 100000));
        const auto face = static_cast<uint32_t>(random() % 3);
        std::string text = std::to_string(number);
        if (number % 50 == 0)
            text.resize(static_cast<size_t>(number) % 20000 + 10, '.');
        const int32_t width = 3 * number + static_cast<int32_t>(face);
        if (const auto known = cache.Find(face, text)) {
            ASSERT_EQ(*known, width);
            hits++;
        } else {
            cache.Store(face, text, width);
        }
    }
    EXPECT_GT(hits, 80000u);
    size_t kept = 0;
    for (int32_t number = 0; number < 100000; number++)
        kept += cache.Find(0, std::to_string(number)).has_value();
    EXPECT_LE(kept, 2 * ExtentCache::kMostTexts);
    cache.Store(7, std::string(ExtentCache::kLongestText + 1, 'x'), 1);
    EXPECT_FALSE(cache.Find(7, std::string(ExtentCache::kLongestText + 1, 'x')));
    cache.Store(7, std::string(ExtentCache::kLongestText, 'x'), 1);
    EXPECT_TRUE(cache.Find(7, std::string(ExtentCache::kLongestText, 'x')));
}

} // namespace
