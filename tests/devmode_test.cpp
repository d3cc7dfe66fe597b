// Records in memory: the walk, the changes, damaged blocks, merging without printers.
#include <gtest/gtest.h>

#include "print/devmode.h"
#include "print/merge.h"
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

TEST(Merge, PassesTheHeadFieldByField)
{
    const uint16_t papers[] = {1, 9, 0};
    const uint16_t bins[] = {256, 257, 258, 259};
    const char names[][24] = {"Upper", "Lower", "Manual", "Manual too"};
    const char others[][24] = {"lower", "Manual", "Upper 2", "Upper"};
    const PrinterOffer from{papers, bins, names};
    const PrinterOffer to{papers, bins, others};
    const struct {
        int16_t paper;
        int16_t bin;
        size_t head; // of the source
        PrinterOffer from;
        PrinterOffer to;
        const char *passed; // a letter for each 2 bytes from dmFields on
        int binAfter;
    } rows[] = {
        {9, 256, 516, from, to, "FFopppscb-cd--c", 259},
        {0, 258, 516, from, to, "FFopppscb-cd--c", 257},
        {5, 257, 516, from, to, "FFo---sc--cd--c", 0}, // case counts
        {-9, 999, 600, from, to, "FFo---sc--cd--c", 0},
        {9, 256, 516, {}, to, "FFopppsc--cd--c", 0},
        {9, 256, 516, from, {}, "FFo---sc--cd--c", 0},
        {9, 256, 409, from, to, "FFopppsc-------", 0},
        {9, 256, 399, from, to, "FFo------------", 0},
        {9, 256, 20, from, to, "---------------", 0},
        {9, 256, 0, from, to, "---------------", 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.passed);
        std::string bytes(600, 's');
        bytes.replace(388, 4, Number(static_cast<int64_t>(row.head), 4));
        bytes.replace(398, 2, Number(row.paper, 2));
        bytes.replace(408, 2, Number(row.bin, 2));
        const TestRecord source(bytes.substr(0, std::max<size_t>(row.head, 392)));
        const TestRecord target;
        memset(target.data() + 392, 't', 124);
        std::string expected = target.bytes();
        for (size_t i = 0; i < 15; i++)
            if (row.passed[i] != '-')
                expected.replace(392 + 2 * i, 2, source.bytes(), 392 + 2 * i, 2);
        if (row.head >= 516)
            expected.replace(508, 8, source.bytes(), 508, 8);
        if (row.binAfter)
            expected.replace(408, 2, Number(row.binAfter, 2));
        MergeSettings(source.get(), target.get(), row.from, row.to);
        EXPECT_EQ(target.bytes(), expected);
        MergeSettings(target.get(), source.get(), row.to, row.from); // no further than it has
    }
}

TEST(Merge, PassesOptionsTheTargetCanExpress)
{
    const struct {
        int16_t kind;
        const char *values;
        const char *selected;
        int16_t targetKind;
        const char *targetValues;
        const char *targetSelected;
        const char *after;
    } rows[] = {
        {1, "abc", "c", 1, "CBA", "A", "100"},  // by name without case, not by place
        {1, "abc", "c", 1, "ab", "b", "01"},    // a value it lacks keeps its own
        {2, "abc", "ac", 2, "xa", "x", "01"},   // of two it takes the one it has
        {2, "abc", "ab", 1, "abc", "c", "110"}, // each selected row passes by itself
        {2, "abc", "", 2, "abc", "ab", "110"},  // nothing selected passes nothing
        {2, "ab", "a", 2, "aba", "b", "101"},   // of many to many every row of the name
        {1, "ab", "a", 2, "aba", "b", "100"},   // else the first
        {2, "ab", "a", 0, "aba", "b", "100"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.selected) + " -> " + row.targetValues);
        const std::vector<TestValue> own = Values("ab", "b");
        const TestRecord source(
            {{"Dropped", "", 1, own}, {"KEY", "Text", row.kind, Values(row.values, row.selected)}},
            520);
        const TestRecord target(
            {{"Kept", "", 1, own},
             {"Key", "Longer text", row.targetKind, Values(row.targetValues, row.targetSelected)},
             {"key", "Never reached", row.targetKind, own}});
        const std::string before = source.bytes();
        MergeSettings(source.get(), target.get(), {}, {});
        MergeSettings(source.get(), source.get(), {}, {});
        EXPECT_EQ(source.bytes(), before);
        EXPECT_EQ(Selected(FindDevModeOption(target.get(), "kept")), "01");
        DEVMODEOPTION *option = FindDevModeOption(target.get(), "key");
        EXPECT_EQ(Selected(option), row.after);
        EXPECT_EQ(Selected(NextDevModeOption(target.get(), option)), "01");
    }
}

TEST(RestoreDefaults, CopiesOrKeepsTheShape)
{
    const TestRecord defaults({{"Key", "Text", 1, Values("ab", "b")}}, 516, "Laser");
    defaults->dmCopies = 3;
    const TestRecord same({{"Yek", "txeT", 1, Values("cd")}}, 516, "laser and more");
    RestoreDefaults(defaults.get(), same.get());
    EXPECT_EQ(same.bytes(), defaults.bytes());

    for (size_t head : {516u, 600u, 407u, 392u}) {
        const TestRecord other({{"Key", "Text", 1, Values("abc", "a")}}, head, "laser");
        memset(other.data() + 392, 7, head - 392);
        std::string expected = other.bytes();
        const size_t restored = std::min<size_t>(head, 516) - 392;
        expected.replace(0, 388, defaults.bytes(), 0, 388);
        expected.replace(392, restored, defaults.bytes(), 392, restored);
        RestoreDefaults(defaults.get(), other.get());
        EXPECT_EQ(other.bytes().substr(0, head), expected.substr(0, head));
        EXPECT_EQ(Selected(FindDevModeOption(other.get(), "key")), "010");
    }
}

} // namespace
