// What is made of PPDs: papers, bins and records of real ones and of odd ones, saved options on
// top, and how their files are opened.
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>

#include "print/devmode.h"
#include "print/devmode_build.h"
#include "print/ppd_file.h"
#include "print/ppd_rows.h"
#include "support/library.h"
#include "support/private_cups.h"
#include "support/record.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

const std::string kFixtures = TEST_SOURCES "/ppd/";

std::string Digest(const std::string &bytes)
{
    uint64_t hash = 0xCBF29CE484222325;
    for (const char c : bytes)
        hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001B3;
    char text[17];
    snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

std::string Rows(const char *name, uint32_t capability, size_t rowBytes)
{
    const int32_t count = DeviceCapabilities(name, nullptr, capability, nullptr, nullptr);
    std::string rows(static_cast<size_t>(count) * rowBytes, '?');
    EXPECT_EQ(DeviceCapabilities(name, nullptr, capability, rows.data(), nullptr), count);
    return rows;
}

// Papers, bins and the settings record, one behind the other.
std::string Answers(const char *name)
{
    std::string bytes = Rows(name, DC_PAPERNAMES, 64) + Rows(name, DC_PAPERS, 2) +
                        Rows(name, DC_PAPERSIZE, 8) + Rows(name, DC_PAPERMARGINS, 16) +
                        Rows(name, DC_BINNAMES, 24) + Rows(name, DC_BINS, 2);
    HPRINTERPPD printer = nullptr;
    EXPECT_EQ(OpenPrinterPPD(name, &printer), 0);
    HGLOBAL record = GetCopyOfDevmodeFromPPD(printer);
    bytes.append(static_cast<const char *>(record), GlobalSize(record));
    GlobalFree(record);
    return bytes;
}

TEST(Sweep, RealPPDsOfManyMakers)
{
    ScratchFolder extracted;
    StartedLibrary library;
    PrivateCups cups;
    SKIP_WITHOUT_CUPS(cups);
    const std::string sample = TEST_SOURCES "/ppd/sample.txt";
    ASSERT_EQ(system(("python3 '" TEST_SOURCES "/support/extract_ppds.py' '" + sample + "' '" +
                      extracted.path() + "'")
                         .c_str()),
              0);
    ASSERT_TRUE(cups.AddPrinter("printer", TEST_SOURCES "/ppd/odd.ppd"));
    std::ifstream lines(sample);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        std::string answers, file;
        std::istringstream(line) >> answers >> file;
        const std::string path = extracted.file(std::to_string(number++) + ".ppd");
        // What is not installed, or in another version, is left out.
        const std::string bytes = FileExists(path) ? ReadWholeFile(path) : "";
        if (Digest(bytes) != file)
            continue;
        cups.ReplacePPD("printer", bytes);
        EXPECT_EQ(Digest(Answers("printer")), answers) << line;
        TermCUPS(); // so that the next question fetches the next file
    }
    EXPECT_EQ(cups.TemporaryFiles(), 0u);
}

TEST(Paper, UnitsAreCutAndRounded)
{
    const struct {
        float points;
        int32_t micrometres;
        int32_t tenths;
    } rows[] = {
        {72, 25400, 254},
        {595, 209902, 2099},
        {-0.2f, -70, 0},
        {0.425f, 149, 1},
        {0.4253f, 150, 2},
        {-0.43f, -151, -1},
        {1e30f, INT32_MAX, 21474836},
        {-1e30f, INT32_MIN, -21474835},
        {std::numeric_limits<float>::quiet_NaN(), INT32_MIN, -21474835},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(MicrometresFromPoints(row.points), row.micrometres) << row.points;
        EXPECT_EQ(TenthsFromMicrometres(row.micrometres), row.tenths) << row.points;
    }
}

TEST(Paper, MissesARowByLessThanHalfAMillimetre)
{
    const struct {
        int32_t width, length;
        uint32_t code;
    } rows[] = {
        {210499, 296501, 9},  {210500, 297000, 0},    {210000, 296500, 0},
        {250000, 353501, 12}, {INT32_MIN, 297000, 0}, {250000, 353499, 33},
    };
    for (const auto &row : rows) {
        const PaperTableRow *found = FindPaper(row.width, row.length);
        EXPECT_EQ(found ? found->code : 0, row.code) << row.width << " x " << row.length;
    }
}

void Select(DEVMODE *record, const char *keyword, const std::string &digits)
{
    const ValueRows rows = RowsOf(FindDevModeOption(record, keyword));
    for (size_t row = 0; row < rows.count; row++)
        rows.selected(row) = static_cast<char>(digits[row] - '0');
}

// The saved options of a destination on top of the defaults of odd.ppd.
TEST(SavedOptions, PassWhereThePrinterKnowsThem)
{
    const ParsedPPD ppd(ppdOpenFile((kFixtures + "odd.ppd").c_str()));
    ASSERT_TRUE(ppd);
    const struct {
        const char *name, *value;
        void (*change)(DEVMODE *record); // as expected
    } rows[] = {
        {"any", "thing", [](DEVMODE *) {}},
        {"job-sheets", "Secret,TopSecret",
         [](DEVMODE *r) { r->dmJobSheetStart = 3, r->dmJobSheetEnd = 5; }},
        {"JOB-SHEETS", "classified", [](DEVMODE *r) { r->dmJobSheetStart = 1; }},
        {"job-sheets", ",standard", [](DEVMODE *r) { r->dmJobSheetEnd = 4; }},
        {"job-sheets", "unclassified,none,secret", [](DEVMODE *r) { r->dmJobSheetStart = 6; }},
        {"job-sheets", "confidential,unheard-of", [](DEVMODE *r) { r->dmJobSheetStart = 2; }},
        {"orientation-requested", "4", [](DEVMODE *r) { r->dmOrientation = 2; }},
        {"orientation-requested", "5", [](DEVMODE *r) { r->dmOrientation = 2; }},
        {"orientation-requested", "40", [](DEVMODE *) {}},
        {"inputslot", "TRAY2", [](DEVMODE *r) { r->dmDefaultSource = 258; }},
        {"InputSlot", "Tray9", [](DEVMODE *) {}},
        {"PageSize", "ledger",
         [](DEVMODE *r) { r->dmPaperSize = 4, r->dmPaperWidth = 4318, r->dmPaperLength = 2794; }},
        {"PageSize", "Across",
         [](DEVMODE *r) { r->dmPaperSize = 0, r->dmPaperWidth = 2970, r->dmPaperLength = 2100; }},
        {"PageSize", "Custom.10x10", [](DEVMODE *) {}},
        {"PageRegion", "A4", [](DEVMODE *) {}},
        {"Duplex", "None", [](DEVMODE *r) { r->dmDuplex = 1; }},
        {"Duplex", "duplexNoTumble", [](DEVMODE *r) { r->dmDuplex = 2; }},
        {"Duplex", "Other", [](DEVMODE *) {}},
        {"Staple", "true", [](DEVMODE *r) { Select(r, "Staple", "01"); }},
        {"Punch", "Left", [](DEVMODE *r) { Select(r, "Punch", "100"); }},
        {"Punch", "Left,Top", [](DEVMODE *) {}},
        {"Fold", "None", [](DEVMODE *r) { Select(r, "Fold", "10"); }},
        {"Fold", "Thrice", [](DEVMODE *) {}},
        {"Tray3", "True", [](DEVMODE *) {}}, // is installed or not
    };
    for (const auto &row : rows) {
        const Record record = BuildDevMode({"odd", {}}, "?", ppd.get());
        const Record expected = CopyOfRecord(record.get());
        row.change(expected.get());
        const cups_option_t options[] = {
            {const_cast<char *>("orientation-requested"), const_cast<char *>("4")},
            {const_cast<char *>("orientation-requested"), const_cast<char *>("6")},
            {const_cast<char *>(row.name), const_cast<char *>(row.value)}};
        ApplySavedOptions(options, ppd.get(), record.get());
        EXPECT_EQ(memcmp(record.get(), expected.get(), RecordBytes(record.get())), 0)
            << row.name << "=" << row.value;
    }
}

// Of two options of 46,000 bytes and a small one the second is left out.
TEST(OptionBlock, LeavesOutWhatDoesNotFit)
{
    std::vector<ppd_choice_t> choices(15000, ppd_choice_t{});
    std::vector<ppd_option_t> options(3, ppd_option_t{});
    for (size_t i = 0; i < 3; i++) {
        strcpy(options[i].keyword, std::string(1, static_cast<char>('a' + i)).c_str());
        options[i].choices = choices.data();
        options[i].num_choices = i < 2 ? 15000 : 2;
    }
    ppd_group_t group = {};
    group.options = options.data();
    group.num_options = 3;
    ppd_file_t ppd = {};
    ppd.groups = &group;
    ppd.num_groups = 1;
    const Record record = BuildDevMode({"many", {}}, "?", &ppd);
    EXPECT_EQ(record->dmDriverExtra, 20 + 3 + 15000 * 3 + 20 + 3 + 2 * 3);
    const DEVMODEOPTION *first = NextDevModeOption(record.get(), nullptr);
    ASSERT_TRUE(first);
    EXPECT_STREQ(GetDevModeOptionName(NextDevModeOption(record.get(), first)), "c");
}

TEST(PPDFile, TellsWhatIsWrongAndKeepsNothing)
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
    char first[2] = {};
    rewind(file.stream.get());
    EXPECT_EQ(fread(first, 1, 1, file.stream.get()), 1u);
    EXPECT_STREQ(first, "*") << "the stream is still the PPD's";
    file = {};
    EXPECT_EQ(OpenDescriptors(), open);
}

} // namespace
