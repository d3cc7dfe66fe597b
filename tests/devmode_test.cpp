// Settings records: what is made of PPDs and saved options, the walk and the changes in memory,
// what passes from one to another, and damaged ones.
#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

#include "print/devmode_build.h"
#include "print/merge.h"
#include "print/ppd_file.h"
#include "print/ppd_rows.h"
#include "support/digest.h"
#include "support/record.h"
#include "support/scratch.h"
#include "wexelxi/core.h"

using namespace wexelxi;

namespace {

const std::string kFixtures = TEST_SOURCES "/ppd/";

// Papers, bins and the record that a PPD gives.
std::string AnswersOf(const std::string &path)
{
    Digest digest;
    const ParsedPPD ppd(ppdOpenFile(path.c_str()));
    std::vector<PaperRow> papers = EnumPapers(ppd.get());
    SortPaperList(papers);
    for (const PaperRow &row : papers) {
        digest.Add(std::string(row.name, sizeof row.name), row.code, row.size.width,
                   row.size.length, row.margins.left, row.margins.top, row.margins.right,
                   row.margins.bottom);
    }
    for (const BinRow &row : EnumBins(ppd.get()))
        digest.Add(std::string(row.name, sizeof row.name), row.code);
    const Record record = BuildDevMode({"printer", "instance"}, "Unknown", ppd.get());
    digest.Add(std::string(reinterpret_cast<char *>(record.get()), RecordBytes(record.get())));
    return digest.hex();
}

TEST(PPD, RealOnesOfManyMakers)
{
    const ScratchFolder extracted;
    const std::string sample = kFixtures + "sample.txt";
    ASSERT_EQ(system(("python3 '" TEST_SOURCES "/support/extract_ppds.py' '" + sample + "' '" +
                      extracted.path() + "'")
                         .c_str()),
              0);
    std::ifstream lines(sample);
    int number = 0;
    for (std::string answers, file, line; lines >> answers >> file && std::getline(lines, line);) {
        const std::string path = extracted.file(std::to_string(number++) + ".ppd");
        if (!FileExists(path))
            continue; // is not installed
        Digest bytes;
        bytes.Add(ReadWholeFile(path));
        if (bytes.hex() == file) { // no other version
            EXPECT_EQ(AnswersOf(path), answers) << line;
        }
    }
}

TEST(PPD, PapersAreTheTablesWithinHalfAMillimetreOrHaveNoCode)
{
    // Points in; code, width and length in tenths of a millimetre out.
    const auto paper = [](float width, float length) {
        const auto [code, size] = PaperOf({0, "", width, length, 0, 0, 0, 0});
        return std::vector<int32_t>{code, size.width, size.length};
    };
    using Is = std::vector<int32_t>;
    EXPECT_EQ(paper(596.691f, 840.481f), (Is{9, 2100, 2970})) << "499 micrometres off each way";
    EXPECT_EQ(paper(596.694f, 841.89f), (Is{0, 2105, 2970}));
    EXPECT_EQ(paper(595.276f, 840.472f), (Is{0, 2100, 2965}));
    EXPECT_EQ(paper(-0.2f, 0.425f), (Is{0, 0, 1})) << "-70 and 149 micrometres";
    EXPECT_EQ(paper(0.4253f, 1e30f), (Is{0, 2, 21474836}));
    EXPECT_EQ(paper(-1e30f, NAN), (Is{0, -21474835, -21474835}));
}

// A saved option of a destination on top of the defaults of odd.ppd, lying across.
TEST(PPD, SavedOptionsPassWhereThePrinterKnowsThem)
{
    const ParsedPPD ppd(ppdOpenFile((kFixtures + "odd.ppd").c_str()));
    ASSERT_TRUE(ppd);
    const auto recordWith = [&](const char *name, const char *value, const char *across = "4") {
        Record record = BuildDevMode({"odd", {}}, "?", ppd.get());
        const cups_option_t saved[] = {
            {const_cast<char *>("orientation-requested"), const_cast<char *>(across)},
            {const_cast<char *>(name), const_cast<char *>(value)}};
        ApplySavedOptions(saved, ppd.get(), record.get());
        return record;
    };
    EXPECT_EQ(recordWith("ORIENTATION-requested", "6")->dmOrientation, DMORIENT_PORTRAIT);
    EXPECT_EQ(recordWith("inputslot", "TRAY2")->dmDefaultSource, 258);
    EXPECT_EQ(recordWith("Duplex", "duplexNoTumble")->dmDuplex, DMDUP_VERTICAL);
    EXPECT_EQ(recordWith("PageSize", "Across")->dmPaperLength, 2100);
    EXPECT_EQ(recordWith("job-sheets", "none,TOPsecret")->dmJobSheetEnd, DMJOBSHEET_TOPSECRET);
    EXPECT_EQ(recordWith("job-sheets", "classified")->dmJobSheetEnd, DMJOBSHEET_NONE);
    Digest digest;
    for (const char *name :
         {"job-sheets", "JOB-SHEETS", "job-sheet", "orientation-requested", "InputSlot", "PageSize",
          "PAGESIZE", "PageRegion", "Duplex", "Staple", "Punch", "FOLD", "Empty", "Tray3", ""}) {
        for (const char *value : {"confidential,standard",
                                  ",standard",
                                  "unclassified,none,secret",
                                  "unheard-of,",
                                  "3",
                                  "4",
                                  "5",
                                  "6",
                                  "40",
                                  "Auto",
                                  "Tray9",
                                  "ledger",
                                  "A4",
                                  "NoSize",
                                  "Custom.10x10",
                                  "none",
                                  "DuplexTumble",
                                  "Other",
                                  "true",
                                  "Left",
                                  "Left,Top",
                                  "Top",
                                  "Half",
                                  ""}) {
            for (const char *across : {"3", "4"}) {
                const Record record = recordWith(name, value, across);
                digest.Add(std::string_view(reinterpret_cast<char *>(record.get()),
                                            RecordBytes(record.get())));
            }
        }
    }
    EXPECT_EQ(digest.hex(), "8abe0ccac5a2b2b3");
}

// Of nodes of 45022, 20514 and 20513 bytes the second is left out: 65535 is what fits.
TEST(PPD, OptionsThatDoNotFitAreLeftOut)
{
    std::vector<ppd_choice_t> choices(15000);
    std::vector<ppd_option_t> options(3);
    for (ppd_option_t &option : options) {
        option.choices = choices.data();
        option.num_choices = 6830;
    }
    options[0].num_choices = 15000;
    strcpy(options[1].text, "ab");
    strcpy(options[2].text, "a");
    ppd_group_t group = {};
    group.options = options.data();
    group.num_options = 3;
    ppd_file_t ppd = {};
    ppd.groups = &group;
    ppd.num_groups = 1;
    EXPECT_EQ(BuildDevMode({"many", {}}, "?", &ppd)->dmDriverExtra, 65535);
    std::string colours;
    for (const int space :
         {PPD_CS_CMYK, PPD_CS_CMY, PPD_CS_GRAY, PPD_CS_RGB, PPD_CS_RGBK, PPD_CS_N}) {
        ppd.colorspace = static_cast<ppd_cs_t>(space);
        colours += std::to_string(BuildDevMode({"many", {}}, "?", &ppd)->dmColor);
    }
    EXPECT_EQ(colours, "221211");
}

TEST(PPD, FilesTellWhatIsWrongAndKeepNothing)
{
    const size_t open = OpenDescriptors();
    PPDFile file;
    EXPECT_EQ(OpenPPDFile((kFixtures + "none.ppd").c_str(), file), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(OpenPPDFile((kFixtures + "broken.ppd").c_str(), file), ERROR_INVALID_DATA);
    EXPECT_FALSE(file.stream);
    EXPECT_EQ(OpenDescriptors(), open);
    EXPECT_EQ(OpenPPDFile((kFixtures + "odd.ppd").c_str(), file), ERROR_SUCCESS);
    EXPECT_EQ(OpenDescriptors(), open + 1);
    EXPECT_NE(fcntl(fileno(file.stream.get()), F_GETFD) & FD_CLOEXEC, 0);
    rewind(file.stream.get());
    EXPECT_EQ(fgetc(file.stream.get()), '*') << "the stream is still the PPD's";
}

TEST(Options, AreReadFromAnyHeadLength)
{
    for (const size_t head : {516u, 601u}) {
        // Two twins and, between them, an option without rows.
        const TestRecord record(head, Node(1, "Binding12", "ab", "b") + Node(1, "Hollow", "") +
                                          Node(2, "binding12", "x"));
        DEVMODEOPTION *option = FindDevModeOption(record.get(), "BINDING12");
        ASSERT_EQ(reinterpret_cast<const char *>(option), record.data() + head);
        EXPECT_STREQ(GetDevModeOptionUIName(option), "Words");
        DEVMODEVALUE *value = GetFirstDevModeOptionValue(option);
        EXPECT_EQ(IsDevModeOptionValueSelected(value), FALSE);
        value = GetNextDevModeOptionValue(option, value);
        EXPECT_EQ(IsDevModeOptionValueSelected(value), TRUE);
        EXPECT_STREQ(GetDevModeOptionValueName(option, value), "b");
        EXPECT_STREQ(GetDevModeOptionValueUIName(option, value), "Tb");
        EXPECT_EQ(SetDevModeOptionValueSelected(value, 0), TRUE);
        EXPECT_EQ(*GetDevModeOptionValueSelectedPtr(value), 0);
        EXPECT_EQ(SetDevModeOptionValueSelected(value, 2), TRUE);
        EXPECT_EQ(Selected(option), "01");
        DeselectAllOptionValues(option);
        EXPECT_EQ(Selected(option), "00");
        option = NextDevModeOption(record.get(), NextDevModeOption(record.get(), option));
        EXPECT_STREQ(GetDevModeOptionName(option), "binding12");
        EXPECT_EQ(NextDevModeOption(record.get(), option), nullptr);
    }
}

TEST(Options, TakeAValueOrKeepTheirOwn)
{
    const auto after = [](int16_t kind, const char *values, const char *selected, const char *set) {
        const TestRecord record(516, Node(kind, "Key", values, selected));
        DEVMODEOPTION *option = NextDevModeOption(record.get(), nullptr);
        SetDevModeOptionValue(option, set);
        return Selected(option);
    };
    EXPECT_EQ(after(DMOPTION_PICKONE, "abc", "a", "C"), "001");
    EXPECT_EQ(after(DMOPTION_PICKONE, "aba", "b", "a"), "101") << "every row of the name";
    EXPECT_EQ(after(DMOPTION_PICKONE, "abc", "ab", "z"), "010") << "the last that was selected";
    EXPECT_EQ(after(DMOPTION_BOOLEAN, "abc", "", "z"), "100");
    EXPECT_EQ(after(DMOPTION_PICKMANY, "abc", "ab", "z"), "000");
}

TEST(Options, PassWhereTheTargetCanExpressThem)
{
    const auto after = [](const std::string &from, const std::string &to) {
        const TestRecord source(520, from);
        const TestRecord target(516, to);
        MergeSettings(source.get(), target.get(), {}, {});
        return Selected(FindDevModeOption(target.get(), "key"));
    };
    const std::string both = Node(DMOPTION_PICKMANY, "KEY", "abc", "ac");
    EXPECT_EQ(after(both, Node(DMOPTION_PICKMANY, "Key", "xa", "x")), "01");
    EXPECT_EQ(after(both, Node(DMOPTION_PICKONE, "Key", "cba", "b")), "101") << "each by itself";
    EXPECT_EQ(after(both, Node(DMOPTION_PICKMANY, "Key", "aba", "")), "101");
    EXPECT_EQ(after(both, Node(DMOPTION_PICKONE, "Key", "aba", "")), "100") << "the first alone";
    EXPECT_EQ(after(both, Node(DMOPTION_PICKONE, "Key", "xy", "y")), "01") << "keeps its own";
}

// Records whose numbers and texts are of few kinds, so that much of what two say meets.
class AnyRecord {
public:
    explicit AnyRecord(uint32_t seed) : random_(seed) {}

    template <typename T>
    T OneOf(std::initializer_list<T> these)
    {
        return these.begin()[random_() % these.size()];
    }

    // Letters, with or without an end among them.
    std::string Text(size_t length)
    {
        std::string text(length, '\0');
        for (char &c : text)
            c = OneOf({'a', 'A', 'b', '\xE4', '\xC4', '\0', '\0', '\1'});
        return text;
    }

    // A sound node, or one in which a number is another.
    std::string AnyNode()
    {
        const size_t sizes[] = {1 + random_() % 3, 1 + random_() % 2, 1 + random_() % 3,
                                1 + random_() % 2, random_() % 4};
        const std::string parts = Text(sizes[0] + sizes[1] + sizes[4] * (1 + sizes[2] + sizes[3]));
        std::string node = Number(static_cast<int64_t>(20 + parts.size()), 4);
        node += Number(OneOf({0, 1, 2, 2}), 2);
        for (const size_t size : sizes)
            node += Number(static_cast<int64_t>(size), 2);
        node += Number(0, 4) + parts;
        const size_t damaged = 2 * (random_() % 8);
        if (OneOf({true, false, false}))
            node.replace(damaged, 2, Number(OneOf({0, 1, 3, 21, -1, 32767}), 2));
        return node;
    }

    TestRecord Make()
    {
        std::string nodes;
        for (size_t count = random_() % 4; count > 0; count--)
            nodes += AnyNode();
        const auto name = OneOf<std::string>({"Laser", "Ink", AnyNode()});
        const auto head = OneOf<size_t>({516, 516, 516, 600, 512, 410, 409, 400, 399, 392, 391, 0});
        TestRecord record(head, nodes, name);
        for (size_t i = 392; i < head; i++)
            record.data()[i] = static_cast<char>(random_());
        if (head >= 410) {
            record->dmPaperSize = OneOf<int16_t>({9, 1, 5, -9});
            record->dmDefaultSource = OneOf<int16_t>({256, 257, 258, 999});
        }
        return record;
    }

    // The record as it is, or in a block that holds no more of it than that.
    RecordView In(TestRecord &record)
    {
        if (OneOf({true, false}))
            return record.get();
        record = TestRecord(record.bytes().substr(0, random_() % (record.size() + 1)));
        return {record.get(), record.size()};
    }

    // What a printer has, which may be nothing.
    PrinterOffer Offer()
    {
        static const uint16_t papers[] = {1, 9, 0}, bins[] = {256, 257, 258};
        static const char names[][3][CCHBINNAME] = {{"Upper", "Lower", "Manual"},
                                                    {"lower", "Manual", "Upper"}};
        const size_t count = random_() % 4;
        return {{papers, count}, {bins, count}, names[random_() % 2]};
    }

private:
    std::mt19937 random_;
};

TEST(AnyRecords, AreWalkedAndChangedWithinTheirBytes)
{
    AnyRecord any(1);
    Digest digest;
    for (int round = 0; round < 5000; round++) {
        TestRecord record = any.Make();
        const RecordView view = any.In(record);
        digest.Add(view.printerName());
        const std::span<char> block = view.options();
        for (DEVMODEOPTION *option = nullptr; (option = NextOption(block, option));) {
            digest.Add(KeywordOf(option));
            if (any.OneOf({true, false})) // what a host hands in itself
                option->length += any.OneOf({-1, 1, -30, -1000});
            if (any.OneOf({true, false}))
                SelectValue(option, any.Text(2).c_str());
            else
                DeselectAllValues(option);
        }
        const DEVMODEOPTION *found = FindOption(block, any.Text(2).c_str());
        digest.Add(found ? reinterpret_cast<const char *>(found) - block.data() : -1);
        digest.Add(record.bytes());
    }
    EXPECT_EQ(digest.hex(), "36d2ad5cc6fcd116");
}

TEST(AnyRecords, PassWhatTheOtherAndItsPrinterKnow)
{
    AnyRecord any(2);
    Digest digest;
    for (int round = 0; round < 5000; round++) {
        TestRecord source = any.Make();
        TestRecord target = any.Make();
        const RecordView from = any.In(source);
        const RecordView to = any.In(target);
        const PrinterOffer theirs = any.Offer();
        const PrinterOffer own = any.Offer();
        const std::string before = source.bytes();
        MergeSettings(from, to, theirs, own);
        MergeSettings(from, from, theirs, own);
        EXPECT_EQ(source.bytes(), before);
        digest.Add(target.bytes());
    }
    EXPECT_EQ(digest.hex(), "02277b946a4dbae1");
}

TEST(AnyRecords, ReadAsTheDefaultsInTheirOwnShape)
{
    AnyRecord any(3);
    Digest digest;
    for (int round = 0; round < 5000; round++) {
        const TestRecord defaults = any.Make();
        const TestRecord record = any.Make();
        if (record.size() == defaults.size())
            memcpy(&record->dmSize, &defaults->dmSize, 4);
        RestoreDefaults(defaults.get(), record.get());
        digest.Add(record.bytes());
    }
    EXPECT_EQ(digest.hex(), "44ad40adb5979681");
}

} // namespace
