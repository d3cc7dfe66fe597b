// Records in memory: the walk, the changes, damaged blocks, merging without printers.
#include <gtest/gtest.h>

#include "print/devmode.h"
#include "print/merge.h"
#include "support/record.h"
#include "wexelxi/core.h"
#include "wexelxi/memory.h"

using namespace wexelxi;

namespace {

// A booklet with two nodes and, between them, one without rows.
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
    for (size_t head : {516u, 517u, 600u}) {
        const TestRecord record(kOptions, head);
        EXPECT_EQ(KeywordsOf(record.get()), "Binding12 Hollow binding12 ");
        const DEVMODEOPTION *option = FindDevModeOption(record.get(), "BINDING12");
        ASSERT_TRUE(option);
        EXPECT_EQ(reinterpret_cast<const char *>(option), record.data() + head);
        EXPECT_EQ(option->length, 20 + 10 + 11 + 2 * (1 + 5 + 8));
        EXPECT_STREQ(GetDevModeOptionUIName(option), "Bind pages");
        DEVMODEVALUE *value = GetFirstDevModeOptionValue(option);
        EXPECT_STREQ(GetDevModeOptionValueName(option, value), "Left");
        EXPECT_STREQ(GetDevModeOptionValueUIName(option, value), "At left");
        EXPECT_EQ(IsDevModeOptionValueSelected(value), 0);
        value = GetNextDevModeOptionValue(option, value);
        EXPECT_STREQ(GetDevModeOptionValueName(option, value), "Top");
        EXPECT_EQ(IsDevModeOptionValueSelected(value), 1);
        EXPECT_EQ(GetDevModeOptionValueSelectedPtr(value), &value->selected);

        DEVMODEOPTION *hollow = FindDevModeOption(record.get(), "Hollow");
        const std::string before = record.bytes();
        SetDevModeOptionValue(hollow, "");
        DeselectAllOptionValues(hollow);
        EXPECT_EQ(record.bytes(), before);
        EXPECT_EQ(static_cast<void *>(GetFirstDevModeOptionValue(hollow)),
                  NextDevModeOption(record.get(), hollow));
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
        {1, "abc", "b", "z", "010"},  // an unknown name keeps the choice
        {1, "abc", "ab", "z", "010"}, // the last one, if there were two
        {0, "abc", "", "z", "100"},   // or gets the first
        {2, "abc", "ab", "z", "000"}, // any number may be selected, also none
        {2, "abc", "ab", "c", "001"}, // one name replaces all
        {1, "aba", "b", "a", "101"},  // every row of the name
        {1, "abc", "b", "", "010"},   // the empty name is a name
        {1, "abc", "b", "ab", "010"}, // not a prefix
        {7, "abc", "b", "z", "010"},  // kinds other than 2 are alike
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.values) + " " + row.selected + " <- " + row.name);
        const TestRecord record({{"Key", "Text", row.kind, Values(row.values, row.selected)}});
        DEVMODEOPTION *option = NextDevModeOption(record.get(), nullptr);
        SetDevModeOptionValue(option, row.name);
        EXPECT_EQ(Selected(option), row.after);
        DeselectAllOptionValues(option);
        EXPECT_EQ(Selected(option), "000");
        for (int32_t flag : {2, 0, -1, INT32_MIN}) {
            EXPECT_EQ(SetDevModeOptionValueSelected(GetFirstDevModeOptionValue(option), flag), 1);
            EXPECT_EQ(Selected(option), flag ? "100" : "000");
        }
    }
}

TEST(Damage, EndsTheWalkAtTheFirstBadNode)
{
    const size_t second = 516 + NodeBytes(kOptions[0]).size();
    const struct {
        const char *what;
        size_t offset;
        size_t width;
        int64_t value;
        const char *keywords;
    } rows[] = {
        {"nothing", second + 16, 4, 0, "Binding12 Hollow binding12 "},
        {"a reserved number", second + 16, 4, -1, "Binding12 Hollow binding12 "},
        {"an unknown kind", second + 4, 2, -7, "Binding12 Hollow binding12 "},
        {"length 0", second, 4, 0, "Binding12 "},
        {"length negative", second, 4, -38, "Binding12 "},
        {"length the smallest", second, 4, INT32_MIN, "Binding12 "},
        {"length short of its texts", second, 4, 37, "Binding12 "},
        {"length past the end", second, 4, 1 << 20, "Binding12 "},
        {"one row too many", second + 14, 2, 1, "Binding12 "},
        {"rows negative", second + 14, 2, -1, "Binding12 "},
        {"keyword without room", second + 6, 2, 0, "Binding12 "},
        {"keyword negative", second + 6, 2, -20, "Binding12 "},
        {"UI name past the node", second + 8, 2, 32767, "Binding12 "},
        {"value width negative", 516 + 10, 2, -30000, ""},
        {"value widths that cancel", 516 + 12, 2, 0, ""},
        {"a block that is cut", 390, 2, 60, ""},
        {"a block longer than its nodes", 388, 2, 500, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        std::string bytes = TestRecord(kOptions).bytes();
        std::string number;
        Append(number, row.value, row.width);
        const TestRecord record(bytes.replace(row.offset, row.width, number));
        EXPECT_EQ(KeywordsOf(record.get()), row.keywords);
        EXPECT_EQ(FindDevModeOption(record.get(), "no such"), nullptr);
    }
}

TEST(Damage, LeavesNothingToWalk)
{
    const TestRecord record(kOptions);
    DEVMODEOPTION *option = FindDevModeOption(record.get(), "Hollow");
    option->valueCount = -1; // rows that count backwards, in a node as much shorter
    option->length -= 3;
    EXPECT_EQ(KeywordsOf(record.get()), "Binding12 ");
    EXPECT_EQ(NextDevModeOption(record.get(), option), nullptr);
    option->length = -static_cast<int32_t>(NodeBytes(kOptions[0]).size()); // back to the first
    EXPECT_EQ(NextDevModeOption(record.get(), option), nullptr);
    const TestRecord other(kOptions);
    EXPECT_EQ(NextDevModeOption(record.get(), NextDevModeOption(other.get(), nullptr)), nullptr);

    std::string bytes(392, '\0'); // a head of no bytes, a node where the name should be
    const std::string node = NodeBytes(kOptions[0]);
    bytes.replace(0, node.size(), node);
    bytes.replace(388, 4, std::string("\0\0\x88\1", 4));
    EXPECT_EQ(NextDevModeOption(TestRecord(bytes).get(), nullptr), nullptr);
    EXPECT_EQ(PrinterNameOf(TestRecord({}, 516, std::string(300, 'n')).get()),
              std::string(127, 'n'));
}

TEST(Damage, CutRecordsKeepTheirWholeNodes)
{
    const std::string whole = TestRecord(kOptions).bytes();
    const size_t first = NodeBytes(kOptions[0]).size();
    const size_t two = first + NodeBytes(kOptions[1]).size();
    for (size_t extra = 0; 516 + extra <= whole.size(); extra++) {
        std::string bytes = whole.substr(0, 516 + extra);
        std::string number;
        Append(number, static_cast<int64_t>(extra), 2);
        const TestRecord record(bytes.replace(390, 2, number));
        const std::string keywords = KeywordsOf(record.get());
        EXPECT_EQ(std::count(keywords.begin(), keywords.end(), ' '),
                  (extra >= first) + (extra >= two) + (516 + extra == whole.size()));
        const TestRecord target(kOptions);
        MergeSettings(record.get(), target.get(), {}, {});
        RestoreDefaults(target.get(), record.get());
        EXPECT_EQ(record->dmDriverExtra, extra);
    }
}

TEST(Damage, TextsEndWithTheirFields)
{
    std::string bytes = TestRecord({{"Key", "Text", 1, Values("ab", "a")}}).bytes();
    std::replace(bytes.begin() + 536, bytes.end(), '\0', 'e'); // no terminator in the node
    const TestRecord record(bytes);
    DEVMODEOPTION *option = FindDevModeOption(record.get(), "keye");
    ASSERT_TRUE(option);
    EXPECT_EQ(FindDevModeOption(record.get(), "key"), nullptr);
    SetDevModeOptionValue(option, "BE");
    EXPECT_EQ(Selected(option), "01");
}

TEST(GlobalMemory, HoldsCopies)
{
    const TestRecord record(kOptions, 530);
    SetLastError(77);
    HGLOBAL block = MakeDevModeHan(record.get());
    EXPECT_EQ(GetLastError(), 0u);
    ASSERT_EQ(GlobalSize(block), record.size());
    EXPECT_EQ(std::string(static_cast<char *>(block), record.size()), record.bytes());
    GlobalFree(block);
    block = MakePrinterNameHan("laser/draft");
    EXPECT_EQ(GlobalSize(block), 12u);
    EXPECT_STREQ(static_cast<char *>(block), "laser/draft");
    GlobalFree(block);
    SetLastError(77);
    EXPECT_EQ(GetCopyOfDevmodeFromPPD(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 77u);
}

// A record whose head bytes are all told apart: byte i is first + i.
TestRecord CountedRecord(int first, size_t headBytes = 516)
{
    std::string bytes = TestRecord({}, headBytes).bytes();
    for (size_t i = 0; i < headBytes; i++)
        if (i < 388 || i >= 392)
            bytes[i] = static_cast<char>(static_cast<size_t>(first) + i);
    return TestRecord(bytes);
}

// The offsets of the head at which two records differ, as ranges.
std::string Differences(const std::string &before, const std::string &after)
{
    std::string ranges;
    for (size_t i = 0; i < before.size(); i++) {
        if (before[i] == after[i])
            continue;
        const size_t start = i;
        while (i < before.size() && before[i] != after[i])
            i++;
        ranges += std::to_string(start) + "-" + std::to_string(i) + " ";
    }
    return ranges;
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
        const char *passed;
        int bin_after;
    } rows[] = {
        {9, 256, 516, from, to, "392-410 412-416 420-422 508-516 ", 259},
        {0, 258, 516, from, to, "392-410 412-416 420-422 508-516 ", 257},
        {5, 257, 516, from, to, "392-398 404-408 412-416 420-422 508-516 ", 0}, // case counts
        {-9, 999, 516, from, to, "392-398 404-408 412-416 420-422 508-516 ", 0},
        {9, 256, 516, {}, to, "392-408 412-416 420-422 508-516 ", 0},
        {9, 256, 516, from, {}, "392-398 404-408 412-416 420-422 508-516 ", 0},
        {9, 256, 700, from, to, "392-410 412-416 420-422 508-516 ", 259},
        {9, 256, 512, from, to, "392-410 412-416 420-422 508-512 ", 259},
        {9, 256, 409, from, to, "392-408 ", 0},
        {9, 256, 399, from, to, "392-398 ", 0},
        {9, 256, 20, from, to, "", 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::to_string(row.paper) + " " + std::to_string(row.head));
        TestRecord source = CountedRecord(1, 700);
        source->dmPaperSize = row.paper;
        source->dmDefaultSource = row.bin;
        source->dmSize = static_cast<uint16_t>(row.head);
        source = TestRecord(source.bytes().substr(0, std::max<size_t>(row.head, 392)));
        const TestRecord target = CountedRecord(128);
        target->dmDefaultSource = target->dmPaperSize = 0x5555;
        const std::string before = target.bytes();
        MergeSettings(source.get(), target.get(), row.from, row.to);
        EXPECT_EQ(Differences(before, target.bytes()), row.passed);
        EXPECT_EQ(target->dmDefaultSource, row.bin_after ? row.bin_after : 0x5555);
        for (size_t i = 392; i < 516; i++) {
            const bool isBin = i == 408 || i == 409;
            const char expected =
                before[i] == target.bytes()[i] || isBin ? target.bytes()[i] : source.bytes()[i];
            EXPECT_EQ(target.bytes()[i], expected) << i;
        }

        const std::string self = source.bytes();
        MergeSettings(source.get(), source.get(), row.from, row.to);
        EXPECT_EQ(source.bytes(), self);
        MergeSettings(target.get(), source.get(), row.to,
                      row.from); // writes no further than it has
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
        {1, "abc", "c", 1, "cba", "a", "100"},  // by name, not by place
        {1, "abc", "c", 1, "CB", "B", "10"},    // without regard to case
        {1, "abc", "c", 1, "ab", "b", "01"},    // a value it lacks keeps its own
        {2, "abc", "ac", 2, "xa", "x", "01"},   // of two it takes the one it has
        {2, "abc", "ab", 1, "abc", "c", "110"}, // each selected row passes by itself
        {2, "abc", "", 2, "abc", "ab", "110"},  // nothing selected passes nothing
        {2, "ab", "a", 2, "aba", "b", "101"},   // of many to many every row of the name
        {1, "ab", "a", 2, "aba", "b", "100"},   // else the first
        {2, "ab", "a", 0, "aba", "b", "100"},   {1, "ab", "a", 1, "", "", ""}, // no rows to select
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
        EXPECT_EQ(source.bytes(), before);
        EXPECT_EQ(Selected(FindDevModeOption(target.get(), "kept")), "01");
        DEVMODEOPTION *option = FindDevModeOption(target.get(), "key");
        EXPECT_EQ(Selected(option), row.after);
        EXPECT_EQ(Selected(NextDevModeOption(target.get(), option)), "01");
    }
}

TEST(RestoreDefaults, CopiesOrKeepsTheShape)
{
    const std::vector<TestOption> options = {{"Key", "Text", 1, Values("ab", "b")}};
    const TestRecord defaults(options, 516, "Laser");
    defaults->dmCopies = 3;
    const TestRecord same({{"Yek", "txeT", 1, Values("cd")}}, 516, "laser and more");
    RestoreDefaults(defaults.get(), same.get());
    EXPECT_EQ(same.bytes(), defaults.bytes());

    for (size_t head : {516u, 600u, 407u, 393u, 392u}) {
        const TestRecord other(
            {{"More", "Text", 1, Values("xy", "x")}, {"Key", "Text", 1, Values("abc", "a")}}, head,
            "laser");
        memset(other.data() + 392, 7, head - 392);
        std::string expected = other.bytes();
        const size_t restored = std::min<size_t>(head, 516);
        expected.replace(0, 388, defaults.bytes(), 0, 388);
        expected.replace(392, restored - 392, defaults.bytes(), 392, restored - 392);
        RestoreDefaults(defaults.get(), other.get());
        EXPECT_EQ(other.bytes().substr(0, head), expected.substr(0, head));
        EXPECT_EQ(Selected(FindDevModeOption(other.get(), "key")), "010");
        EXPECT_EQ(Selected(FindDevModeOption(other.get(), "more")), "10");
    }
}

} // namespace
