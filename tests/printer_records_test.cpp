// What stands behind the printers' answers, on PPDs without a scheduler: conversions, the match of
// sizes, saved options, the limit of the option block, and how a PPD file is opened and closed.
#include <atomic>
#include <cups/file.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "print/devmode_build.h"
#include "print/ppd_file.h"
#include "print/ppd_rows.h"
#include "support/record.h"
#include "support/scratch.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

const std::string kFixtures = std::string(TEST_SOURCES) + "/ppd/";

ParsedPPD Parse(const std::string &path)
{
    return ParsedPPD(ppdOpenFile(path.c_str()));
}

TEST(Paper, UnitsAreCutAndRounded)
{
    EXPECT_EQ(MicrometresFromPoints(72), 25400);
    EXPECT_EQ(MicrometresFromPoints(595), 209902);
    EXPECT_EQ(MicrometresFromPoints(-0.2f), -70);
    EXPECT_EQ(MicrometresFromPoints(1e30f), INT32_MAX);
    EXPECT_EQ(MicrometresFromPoints(-1e30f), INT32_MIN);
    EXPECT_EQ(MicrometresFromPoints(std::numeric_limits<float>::quiet_NaN()), INT32_MIN);
    EXPECT_EQ(TenthsFromMicrometres(149), 1);
    EXPECT_EQ(TenthsFromMicrometres(150), 2);
    EXPECT_EQ(TenthsFromMicrometres(-70), 0);
    EXPECT_EQ(TenthsFromMicrometres(-151), -1);
    EXPECT_EQ(TenthsFromMicrometres(INT32_MAX), 21474836);
}

TEST(Paper, TheFirstNearRowWins)
{
    const struct {
        int32_t width, length;
        uint32_t code;
    } rows[] = {
        {210000, 297000, 9},    {210499, 296501, 9},   {210500, 297000, 0},  {210000, 296500, 0},
        {297000, 210000, 0},    {431800, 279400, 4},   {279400, 431800, 3},  {215900, 330200, 14},
        {110000, 220000, 27},   {220000, 110000, 119}, {98425, 225425, 19},  {250000, 353501, 12},
        {105000, 148000, 70},   {95250, 171450, 122},  {322000, 445000, 63}, {0, 0, 0},
        {INT32_MIN, 297000, 0}, {250000, 353400, 33},
    };
    for (const auto &row : rows) {
        const PaperTableRow *found = FindPaper(row.width, row.length);
        EXPECT_EQ(found ? found->code : 0, row.code) << row.width << " x " << row.length;
    }
}

// The saved options of a destination on top of the defaults of odd.ppd.
TEST(SavedOptions, PassWhereThePrinterKnowsThem)
{
    const ParsedPPD ppd = Parse(kFixtures + "odd.ppd");
    ASSERT_TRUE(ppd);
    const Record plain = BuildDevMode({"odd", {}}, "?", ppd.get());
    // Job sheets, orientation, bin, paper and duplex, and the rows of three options.
    const auto summary = [](const DEVMODE *record) {
        std::string text;
        for (const int number : {record->dmJobSheetStart, record->dmJobSheetEnd,
                                 int32_t{record->dmOrientation}, int32_t{record->dmDefaultSource},
                                 int32_t{record->dmPaperSize}, int32_t{record->dmDuplex}})
            text += std::to_string(number) + " ";
        for (const char *keyword : {"Staple", "Punch", "Fold"})
            text += Selected(FindDevModeOption(record, keyword)) + " ";
        return text;
    };
    const struct {
        const char *name, *value, *summary;
    } rows[] = {
        {"any", "thing", "0 0 1 257 9 3 10 000 01 "},
        {"job-sheets", "Secret,TopSecret", "3 5 1 257 9 3 10 000 01 "},
        {"job-sheets", "classified", "1 0 1 257 9 3 10 000 01 "},
        {"JOB-SHEETS", "unheard-of,unclassified,none", "0 0 1 257 9 3 10 000 01 "},
        {"job-sheets", "", "0 0 1 257 9 3 10 000 01 "},
        {"orientation-requested", "4", "0 0 2 257 9 3 10 000 01 "},
        {"orientation-requested", "5", "0 0 2 257 9 3 10 000 01 "},
        {"orientation-requested", "40", "0 0 1 257 9 3 10 000 01 "},
        {"inputslot", "TRAY2", "0 0 1 258 9 3 10 000 01 "},
        {"InputSlot", "Tray9", "0 0 1 257 9 3 10 000 01 "},
        {"PageSize", "ledger", "0 0 1 257 4 3 10 000 01 "},
        {"PageSize", "Across", "0 0 1 257 0 3 10 000 01 "},
        {"PageSize", "Custom.10x10", "0 0 1 257 9 3 10 000 01 "},
        {"Duplex", "None", "0 0 1 257 9 1 10 000 01 "},
        {"Duplex", "duplexNoTumble", "0 0 1 257 9 2 10 000 01 "},
        {"Duplex", "Other", "0 0 1 257 9 3 10 000 01 "},
        {"Staple", "true", "0 0 1 257 9 3 01 000 01 "},
        {"Punch", "Left", "0 0 1 257 9 3 10 100 01 "},
        {"Punch", "Left,Top", "0 0 1 257 9 3 10 000 01 "},
        {"Fold", "None", "0 0 1 257 9 3 10 000 10 "},
        {"Tray3", "True", "0 0 1 257 9 3 10 000 01 "}, // is installed or not
    };
    for (const auto &row : rows) {
        const Record record = CopyOfRecord(plain.get());
        const cups_option_t option = {const_cast<char *>(row.name), const_cast<char *>(row.value)};
        ApplySavedOptions({&option, 1}, ppd.get(), record.get());
        EXPECT_EQ(summary(record.get()), row.summary) << row.name << "=" << row.value;
    }
}

TEST(OptionBlock, LeavesOutWhatDoesNotFit)
{
    std::string text = ReadWholeFile(kFixtures + "empty.ppd");
    const auto option = [](const std::string &keyword, int choices) {
        std::string lines = "*OpenUI *" + keyword + "/x: PickOne\n*Default" + keyword + ": c0\n";
        for (int i = 0; i < choices; i++)
            lines += "*" + keyword + " c" + std::to_string(i) + "/y: \"\"\n";
        return lines + "*CloseUI: *" + keyword + "\n";
    };
    for (int i = 0; i < 400; i++)
        text += option("Many" + std::to_string(i), 21); // 70 thousand bytes
    text += option("Small", 0);
    ScratchFolder folder;
    WriteWholeFile(folder.file("many.ppd"), text);
    const ParsedPPD ppd = Parse(folder.file("many.ppd"));
    ASSERT_TRUE(ppd);
    const Record record = BuildDevMode({"many", {}}, "?", ppd.get());
    size_t bytes = 0;
    const DEVMODEOPTION *last = nullptr;
    for (auto *node = NextDevModeOption(record.get(), nullptr); node;
         node = NextDevModeOption(record.get(), node)) {
        bytes += static_cast<size_t>(node->length);
        last = node;
    }
    EXPECT_EQ(bytes, record->dmDriverExtra);
    EXPECT_GT(bytes, 65535u - 200);
    ASSERT_NE(last, nullptr);
    EXPECT_STREQ(GetDevModeOptionName(last), "Small") << "what still fits stays in";
}

TEST(PPDFile, TellsWhatIsWrongAndKeepsNothing)
{
    const size_t open = OpenDescriptors();
    PPDFile file;
    EXPECT_EQ(OpenPPDFile((kFixtures + "none.ppd").c_str(), file), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(OpenPPDFile((kFixtures + "broken.ppd").c_str(), file), ERROR_INVALID_DATA);
    EXPECT_FALSE(file.stream);
    EXPECT_EQ(OpenDescriptors(), open);
    EXPECT_EQ(OpenPPDFile((kFixtures + "odd.ppd").c_str(), file), 0u);
    EXPECT_EQ(OpenDescriptors(), open + 1);
    EXPECT_NE(fcntl(fileno(file.stream.get()), F_GETFD) & FD_CLOEXEC, 0);
    file = {};
    EXPECT_EQ(OpenDescriptors(), open);
}

// Opens a file of its own over and over, with the lowest free number or with one from `lowest` up,
// and holds it against what stands under the number later. Counts what it finds changed.
void OpenFilesAllTheWhile(const std::string &path, int lowest, const std::atomic<bool> &end,
                          std::atomic<int> &changed)
{
    const int base = open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
    struct stat own = {};
    fstat(base, &own);
    while (!end) {
        int held[8];
        for (int &number : held)
            number = fcntl(base, F_DUPFD_CLOEXEC, lowest);
        std::this_thread::yield();
        for (const int number : held) {
            struct stat now = {};
            if (fstat(number, &now) != 0 || now.st_ino != own.st_ino || close(number) != 0)
                changed++;
        }
    }
    close(base);
}

TEST(PPDFile, NeverClosesAFileOfAnotherThread)
{
    ScratchFolder folder;
    std::atomic<bool> end = false;
    std::atomic<int> changed = 0;
    std::vector<std::thread> threads;
    const size_t open = OpenDescriptors();
    // Some take the numbers that open gives, others those that the library lends to ppdOpen.
    for (const int lowest : {0, 0, 950, 960})
        threads.emplace_back([&, lowest, path = folder.file(std::to_string(threads.size()))] {
            OpenFilesAllTheWhile(path, lowest, end, changed);
        });
    for (int i = 0; i < 3000; i++) {
        PPDFile file;
        EXPECT_EQ(OpenPPDFile((kFixtures + "empty.ppd").c_str(), file), 0u);
        if (!file.stream)
            break;
        char first[2] = {};
        rewind(file.stream.get());
        EXPECT_EQ(fread(first, 1, 1, file.stream.get()), 1u);
        EXPECT_STREQ(first, "*") << "the stream is still the PPD's";
    }
    end = true;
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(changed, 0);
    EXPECT_EQ(OpenDescriptors(), open);
}

} // namespace
