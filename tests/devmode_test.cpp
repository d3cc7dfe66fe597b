// Records in memory: the walk, the changes, damaged blocks, and copies.
#include <gtest/gtest.h>

#include "print/devmode.h"
#include "support/record.h"
#include "wexelxi/core.h"
#include "wexelxi/memory.h"

using namespace wexelxi;

namespace {

// Two twins and, between them, an option without rows.
const std::vector<TestOption> kOptions = {
    {"Binding12", "Bind pages", 1, {{"Left", "At left"}, {"Top", "At top", true}}},
    {"Hollow", "No choices", 1, {}},
    {"binding12", "A twin", 2, Values("xy", "xy")},
};

std::string KeywordsOf(const DEVMODE *record)
{
    std::string keywords;
    const DEVMODEOPTION *option = nullptr;
    while ((option = NextDevModeOption(record, option)))
        keywords += std::string(GetDevModeOptionName(option)) + " ";
    return keywords;
}

TEST(Options, AreReadFromAnyHeadLength)
{
    for (size_t head : {516u, 601u}) {
        const TestRecord record(kOptions, head);
        EXPECT_EQ(KeywordsOf(record.get()), "Binding12 Hollow binding12 ");
        const DEVMODEOPTION *option = FindDevModeOption(record.get(), "BINDING12");
        ASSERT_EQ(reinterpret_cast<const char *>(option), record.data() + head);
        EXPECT_STREQ(GetDevModeOptionUIName(option), "Bind pages");
        const DEVMODEVALUE *value = GetFirstDevModeOptionValue(option);
        EXPECT_EQ(IsDevModeOptionValueSelected(value), 0);
        value = GetNextDevModeOptionValue(option, value);
        EXPECT_STREQ(GetDevModeOptionValueName(option, value), "Top");
        EXPECT_STREQ(GetDevModeOptionValueUIName(option, value), "At top");
        EXPECT_EQ(IsDevModeOptionValueSelected(value), 1);
        EXPECT_EQ(FindDevModeOption(record.get(), "Binding"), nullptr);
    }
    EXPECT_EQ(FindDevModeOption(TestRecord().get(), ""), nullptr);
}

TEST(Options, SelectAValue)
{
    const struct {
        int16_t kind;
        const char *values;
        const char *selected;
        const char *name;
        const char *after;
    } rows[] = {
        {1, "abc", "a", "C", "001"},  // without regard to case
        {1, "abc", "ab", "z", "010"}, // an unknown name keeps the choice, of two the last
        {0, "abc", "", "z", "100"},   // or gets the first
        {2, "abc", "ab", "z", "000"}, // any number may be selected, also none
        {1, "aba", "b", "a", "101"},  // every row of the name
        {1, "abc", "b", "ab", "010"}, // not a prefix
        {1, "", "", "a", ""},         // writes nothing without rows
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.values) + " " + row.selected + " <- " + row.name);
        const TestRecord record({{"Key", "Text", row.kind, Values(row.values, row.selected)}});
        DEVMODEOPTION *option = NextDevModeOption(record.get(), nullptr);
        SetDevModeOptionValue(option, row.name);
        EXPECT_EQ(Selected(option), row.after);
        DeselectAllOptionValues(option);
        EXPECT_EQ(Selected(option), std::string(strlen(row.values), '0'));
    }
    DEVMODEVALUE value = {0};
    EXPECT_EQ(SetDevModeOptionValueSelected(&value, 2), TRUE);
    EXPECT_EQ(*GetDevModeOptionValueSelectedPtr(&value), 1);
    EXPECT_EQ(SetDevModeOptionValueSelected(&value, 0), TRUE);
    EXPECT_EQ(value.selected, 0);
}

TEST(Damage, EndsTheWalkAtTheFirstBadNode)
{
    const auto first = static_cast<int64_t>(NodeBytes(kOptions[0]).size());
    const size_t second = 516 + static_cast<size_t>(first);
    const struct {
        const char *what;
        size_t offset;
        size_t width;
        int64_t value;
        const char *keywords;
    } rows[] = {
        {"a reserved number", second + 16, 4, -1, "Binding12 Hollow binding12 "},
        {"an unknown kind", second + 4, 2, -7, "Binding12 Hollow binding12 "},
        {"length 0", second, 4, 0, "Binding12 "},
        {"length back to the first", second, 4, -first, "Binding12 "},
        {"length past the end", second, 4, 1 << 20, "Binding12 "},
        {"one row too many", second + 14, 2, 1, "Binding12 "},
        {"keyword without room", second + 6, 2, 0, "Binding12 "},
        {"UI name past the node", second + 8, 2, 32767, "Binding12 "},
        {"value width negative", 516 + 10, 2, -30000, ""},
        {"value name without room", second + 10, 2, 0, "Binding12 "},
        {"value text without room", second + 12, 2, 0, "Binding12 "},
        {"a block that is cut", 390, 2, first - 1, ""},
        {"a head of no length", 388, 2, 0, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        std::string bytes = TestRecord(kOptions).bytes();
        const TestRecord record(bytes.replace(row.offset, row.width, Number(row.value, row.width)));
        EXPECT_EQ(KeywordsOf(record.get()), row.keywords);
        EXPECT_EQ(FindDevModeOption(record.get(), "no such"), nullptr);
    }
    const TestRecord record(kOptions);
    DEVMODEOPTION *option = FindDevModeOption(record.get(), "Hollow");
    option->valueCount = -1; // rows that count backwards, in a node as much shorter
    option->length -= 3;
    EXPECT_EQ(KeywordsOf(record.get()), "Binding12 ");
    option->length = static_cast<int32_t>(-first);
    EXPECT_EQ(NextDevModeOption(record.get(), option), nullptr);
    const TestRecord other(kOptions);
    EXPECT_EQ(NextDevModeOption(record.get(), NextDevModeOption(other.get(), nullptr)), nullptr);
}

// Of a node that a host hands in itself, no more rows are changed than lie whole inside it.
TEST(Damage, RowsEndWithTheirNode)
{
    const struct {
        int32_t length; // 57 is right: 29 and two rows of 14
        int16_t count, width;
        const char *after;
    } rows[] = {{57, 2, 7, "00"},  {57, 9, 7, "00"}, {56, 2, 7, "01"}, {28, 2, 7, "11"},
                {-57, 2, 7, "11"}, {57, 2, 0, "11"}, {57, -1, 7, "11"}};
    for (const auto &row : rows) {
        const TestRecord record(
            {{"Key", "Text", 2, {{"Left", "Going", true}, {"Middle", "Six", true}}}});
        DEVMODEOPTION *option = NextDevModeOption(record.get(), nullptr);
        const DEVMODEOPTION sound = *option;
        option->length = row.length;
        option->valueCount = row.count;
        option->valueNameWidth = row.width;
        DeselectAllOptionValues(option);
        *option = sound;
        EXPECT_EQ(Selected(option), row.after) << row.length << " " << row.count;
    }
}

TEST(Damage, TextsEndWithTheirFields)
{
    std::string bytes = TestRecord({{"Key", "Text", 1, Values("ab", "a")}}).bytes();
    std::replace(bytes.begin() + 536, bytes.end(), '\0', 'e'); // no terminator in the node
    const TestRecord record(bytes.replace(0, 384, 384, 'n'));
    DEVMODEOPTION *option = FindDevModeOption(record.get(), "keye");
    ASSERT_TRUE(option);
    SetDevModeOptionValue(option, "BE");
    EXPECT_EQ(Selected(option), "01");
    EXPECT_EQ(RecordView(record.get()).printerName(), std::string(127, 'n'));
    EXPECT_EQ(RecordView(record.get(), 5).printerName(), "nnnnn") << "a block that is short";
}

} // namespace
