// Printers as a host sees them, on a scheduler of the test's own and on none at all.
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/library.h"
#include "support/private_cups.h"
#include "wexelxi.h"

namespace {

const std::string kFixtures = std::string(TEST_SOURCES) + "/ppd/";

// The names of a list, each with a bar behind it.
std::string Listed()
{
    std::string text;
    char *list = ListPrinters(0);
    for (const char *name = list; *name; name += strlen(name) + 1)
        text += std::string(name) + "|";
    FreePrinters(list);
    return text;
}

std::string RowName(const char *printer, uint32_t capability, size_t width, size_t row)
{
    const int32_t count = DeviceCapabilities(printer, nullptr, capability, nullptr, nullptr);
    std::string rows(static_cast<size_t>(count) * width, '?');
    DeviceCapabilities(printer, nullptr, capability, rows.data(), nullptr);
    return rows.substr(row * width, strnlen(rows.data() + row * width, width));
}

// A copy of a printer's current settings.
class Settings {
public:
    explicit Settings(const char *name)
    {
        HPRINTERPPD printer = nullptr;
        EXPECT_EQ(OpenPrinterPPD(name, &printer), 0);
        record_ = static_cast<DEVMODE *>(GetCopyOfDevmodeFromPPD(printer));
    }
    ~Settings() { GlobalFree(record_); }
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &) = delete;
    DEVMODE *operator->() const { return record_; }
    DEVMODE *get() const { return record_; }

private:
    DEVMODE *record_;
};

class Printers : public testing::Test {
protected:
    void SetUp() override { SKIP_WITHOUT_CUPS(cups); }
    void AddOdd(const char *name) { ASSERT_TRUE(cups.AddPrinter(name, kFixtures + "odd.ppd")); }

    StartedLibrary library;
    PrivateCups cups;
};

TEST(NoScheduler, HasNoPrintersAndAnswersForAny)
{
    StartedLibrary library;
    setenv("CUPS_SERVER", library.folder.file("none.sock").c_str(), 1);
    EXPECT_EQ(Listed(), "");
    char name[8] = "######";
    EXPECT_EQ(GetDefaultPrinterName(name, 1), 0u);
    EXPECT_STREQ(name, "");
    auto *handle = reinterpret_cast<HPRINTER>(&library);
    EXPECT_EQ(OpenPrinter("any", &handle), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PRINTER_NAME);
    EXPECT_EQ(handle, nullptr);
    char *word = ListPrinters(1);
    EXPECT_STREQ(word, "cups");
    FreePrinters(word);

    const Settings settings("some/in/stance");
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_STREQ(settings->dmDeviceName, "some/in/stance");
    EXPECT_STREQ(settings->dmManufacturer, "Unknown");
    EXPECT_EQ(settings->dmDriverExtra, 0);
    EXPECT_EQ(settings->dmFields, 39711u);
    const std::string endless(200, 'n');
    const Settings cut(endless.c_str());
    EXPECT_EQ(cut->dmDeviceName, endless.substr(0, 127));
    SetLastError(77);
    EXPECT_EQ(GetCopyOfDevmodeFromPPD(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 77u);
}

TEST(NoScheduler, GivesTheCommonPapers)
{
    StartedLibrary library;
    setenv("CUPS_SERVER", library.folder.file("none.sock").c_str(), 1);
    gPrinterXMargin = 3;
    gPrinterYMargin = -4;
    SetWinString(29, std::string(80, 'A').c_str());
    SetWinString(21, "Ein Fach mit einem langen Namen");
    int32_t margins[4] = {};
    SetLastError(77);
    EXPECT_EQ(GetDeviceMarginInfo("p", 0x70009, &margins[0], &margins[1], &margins[2], &margins[3]),
              TRUE);
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_EQ(margins[0] * 1000 + margins[1], 30 * 1000 - 40);
    EXPECT_EQ(margins[2] * 1000 + margins[3], 30 * 1000 - 40);
    for (const int32_t code : {0, 69, -9, 0xFFF7}) {
        EXPECT_EQ(GetDeviceMarginInfo("p", code, margins, margins, margins, margins), FALSE);
    }
    EXPECT_EQ(DeviceCapabilities("p", nullptr, DC_PAPERNAMES, nullptr, nullptr), 69);
    EXPECT_EQ(RowName("p", DC_PAPERNAMES, 64, 0), "#10 Envelope");
    EXPECT_EQ(RowName("p", DC_BINNAMES, 24, 0), "Ein Fach mit einem lange");
    Settings settings("p");
    char name[65];
    settings->dmPaperSize = DMPAPER_A3;
    GetPaperName(settings.get(), name);
    EXPECT_EQ(name, std::string(64, 'A'));
    GetBinName(settings.get(), name);
    EXPECT_STREQ(name, "") << "a single bin has no name";
    settings->dmPaperSize = -9;
    GetPaperName(settings.get(), name);
    EXPECT_STREQ(name, "");
}

TEST_F(Printers, AreListedWithTheDefaultFirst)
{
    for (const char *name : {"alpha", "beta", "gamma"})
        ASSERT_TRUE(cups.AddPrinter(name));
    ASSERT_TRUE(cups.SaveOptions("alpha/draft", {"job-sheets=secret"}));
    EXPECT_EQ(Listed(), "alpha|alpha/draft|beta|gamma|");
    char name[32] = "######";
    EXPECT_EQ(GetDefaultPrinterName(name, sizeof name), 0u);
    EXPECT_STREQ(name, "alpha") << "none is the default";
    ASSERT_TRUE(cups.SetDefault("beta"));
    EXPECT_EQ(Listed(), "beta|alpha|alpha/draft|gamma|");
    ASSERT_TRUE(cups.SetDefault("alpha/draft"));
    EXPECT_EQ(Listed(), "alpha/draft|alpha|beta|gamma|");
    SetLastError(77);
    strcpy(name, "######");
    EXPECT_EQ(GetDefaultPrinterName(nullptr, 0), 122u);
    EXPECT_EQ(GetDefaultPrinterName(name, 11), 122u);
    EXPECT_STREQ(name, "######");
    EXPECT_EQ(GetDefaultPrinterName(name, 12), 0u);
    EXPECT_STREQ(name, "alpha/draft");
    EXPECT_EQ(GetLastError(), 77u);
}

TEST_F(Printers, HandlesRememberTheName)
{
    ASSERT_TRUE(cups.AddPrinter("alpha"));
    ASSERT_TRUE(cups.SaveOptions("alpha/draft", {"job-sheets=secret"}));
    HPRINTER handle = nullptr;
    for (const char *name : {"beta", "alpha/", "alpha/fine", ""}) {
        EXPECT_EQ(OpenPrinter(name, &handle), FALSE) << name;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PRINTER_NAME);
    }
    EXPECT_EQ(OpenPrinter(nullptr, &handle), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(OpenPrinter("alpha", nullptr), FALSE);
    ASSERT_EQ(OpenPrinter("alpha/draft", &handle), TRUE);
    EXPECT_EQ(GetLastError(), 0u);
    ASSERT_TRUE(cups.RemovePrinter("alpha"));

    char buffer[64];
    uint32_t needed = 0;
    EXPECT_EQ(GetPrinter(handle, 2, nullptr, 0, &needed), TRUE);
    ASSERT_EQ(needed, 20u);
    for (const int32_t level : {1, 3, -1, 0}) {
        EXPECT_EQ(GetPrinter(handle, level, buffer, 64, &needed), FALSE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    memset(buffer, '#', sizeof buffer);
    needed = 0;
    EXPECT_EQ(GetPrinter(handle, 2, buffer + 1, 19, &needed), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(needed, 20u);
    EXPECT_EQ(std::string(buffer, 64), std::string(64, '#'));
    EXPECT_EQ(GetPrinter(handle, 2, buffer + 1, 20, nullptr), TRUE);
    EXPECT_EQ(GetLastError(), 0u);
    char *text = nullptr;
    memcpy(&text, buffer + 1, sizeof text);
    EXPECT_EQ(text, buffer + 9);
    EXPECT_STREQ(text, "alpha/draft");
    EXPECT_EQ(buffer[21], '#');

    EXPECT_EQ(ClosePrinter(handle), TRUE);
    EXPECT_EQ(ClosePrinter(nullptr), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(GetPrinter(nullptr, 2, buffer, 64, &needed), FALSE);
}

TEST_F(Printers, CapabilityNumbers)
{
    AddOdd("odd");
    ASSERT_TRUE(cups.AddPrinter("bad", kFixtures + "odd.ppd"));
    cups.ReplacePPD("bad", ReadWholeFile(kFixtures + "broken.ppd"));
    const struct {
        const char *name;
        uint32_t capability;
        int32_t result;
        uint32_t error;
    } rows[] = {
        {"odd", 1, 39711, 77},   {"bad", 1, 39711, 77}, {"bad", 65537, 39711, 77},
        {"bad", 18, 100, 77},    {"odd", 2, 11, 0},     {"odd", 0x90003, 11, 0},
        {"odd", 16, 11, 0},      {"odd", 36, 11, 0},    {"odd", 6, 3, 0},
        {"ODD", 12, 3, 0},       {"odd", 5, -1, 87},    {"odd", 37, -1, 87},
        {"odd", 0, -1, 87},      {"bad", 2, -1, 13},    {"bad", 5, -1, 13},
        {"bad/inst", 6, -1, 13},
    };
    for (const auto &row : rows) {
        SetLastError(77);
        EXPECT_EQ(DeviceCapabilities(row.name, nullptr, row.capability, nullptr, nullptr),
                  row.result)
            << row.name << " " << row.capability;
        EXPECT_EQ(GetLastError(), row.error) << row.name << " " << row.capability;
    }
    EXPECT_EQ(cups.TemporaryFiles(), 1u) << "what does not parse is removed";
    int32_t margin = 77;
    EXPECT_EQ(GetDeviceMarginInfo("bad", 9, &margin, &margin, &margin, &margin), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
    EXPECT_EQ(margin, 77);

    cups.ReplacePPD("bad", ReadWholeFile(kFixtures + "empty.ppd"));
    EXPECT_EQ(DeviceCapabilities("bad", nullptr, DC_PAPERS, nullptr, nullptr), 69)
        << "a failure is not remembered";
}

TEST_F(Printers, AreAskedAboutOnce)
{
    AddOdd("odd");
    ASSERT_TRUE(cups.SaveOptions(
        "odd/fine", {"Fold=None", "InputSlot=Tray2", "job-sheets=secret,none", "Punch=Top"}));
    const size_t open = OpenDescriptors();
    HPRINTERPPD first = nullptr;
    HPRINTERPPD again = nullptr;
    HPRINTERPPD instance = nullptr;
    ASSERT_EQ(OpenPrinterPPD("odd", &first), 0);
    ASSERT_EQ(OpenPrinterPPD("ODD/fine", &instance), 0);
    cups.Stop();
    ASSERT_EQ(OpenPrinterPPD("OdD", &again), 0);
    EXPECT_EQ(first, again);
    ASSERT_EQ(OpenPrinterPPD("odd/FINE", &again), 0);
    EXPECT_EQ(instance, again);
    EXPECT_NE(instance, first);
    EXPECT_EQ(cups.TemporaryFiles(), 1u) << "printer and instance share the PPD";

    const Settings plain("odd");
    const Settings fine("odd/fine");
    EXPECT_STREQ(fine->dmDeviceName, "ODD/fine");
    EXPECT_EQ(plain->dmDefaultSource * 1000 + fine->dmDefaultSource, 257 * 1000 + 258);
    EXPECT_EQ(plain->dmJobSheetStart * 10 + fine->dmJobSheetStart, 3);
    EXPECT_EQ(IsDevModeOptionValueSelected(
                  GetFirstDevModeOptionValue(FindDevModeOption(fine.get(), "fold"))),
              TRUE);
    EXPECT_EQ(DeviceCapabilities("new", nullptr, DC_PAPERS, nullptr, nullptr), 69)
        << "the scheduler has gone away";
    TermCUPS();
    EXPECT_EQ(cups.TemporaryFiles(), 0u);
    EXPECT_LE(OpenDescriptors(), open + 1) << "libcups keeps a connection";
}

TEST_F(Printers, RowsGoIntoRecords)
{
    AddOdd("odd");
    Settings record("odd");
    HPRINTERPPD printer = nullptr;
    ASSERT_EQ(OpenPrinterPPD("odd", &printer), 0);
    char name[66] = {};
    for (const int32_t row : {-1, 11, INT32_MIN, 0}) {
        record->dmPaperSize = 77;
        GetPaperFromIndex(printer, row, record.get());
        EXPECT_EQ(RowName("odd", DC_PAPERNAMES, 64, 0),
                  "A paper with a name of seventy characters, which is six more tha");
        EXPECT_EQ(record->dmPaperSize, 0);
        EXPECT_EQ(record->dmPaperWidth, 353);
    }
    memset(name, '#', sizeof name);
    GetPaperName(record.get(), name);
    EXPECT_EQ(strlen(name), 64u);
    EXPECT_EQ(name[65], '#');

    GetBinFromIndex(printer, 1, record.get());
    GetBinName(record.get(), name);
    EXPECT_STREQ(name, "Automatic");
    GetBinFromIndex(printer, 3, record.get());
    GetBinName(record.get(), name);
    EXPECT_STREQ(name, "A tray with a long enoug");
    record->dmDefaultSource = 259;
    GetBinName(record.get(), name);
    EXPECT_STREQ(name, "");
    DEVMODE bare = {};
    GetPaperFromIndex(nullptr, 1, &bare);
    GetBinFromIndex(nullptr, 1, &bare);
    EXPECT_EQ(bare.dmPaperSize, 0);
}

// A record that is cut short in its head, at the end of its memory.
TEST_F(Printers, LeaveAShortRecordAlone)
{
    HPRINTERPPD printer = nullptr;
    ASSERT_EQ(OpenPrinterPPD("none", &printer), 0);
    const std::unique_ptr<char[]> memory(new char[400]);
    auto *record = reinterpret_cast<DEVMODE *>(memory.get());
    memset(record, 'x', 400);
    record->dmSize = 392;
    record->dmDriverExtra = 8;
    GetPaperFromIndex(printer, 1, record);
    GetBinFromIndex(printer, 1, record);
    char name[65] = "#";
    GetPaperName(record, name);
    EXPECT_STREQ(name, "");
    GetBinName(record, name);
    UpdatePPD("none", nullptr, record);
    EXPECT_EQ(std::string(memory.get() + 392, 8), "xxxxxxxx");
}

TEST_F(Printers, TakeNewSettings)
{
    AddOdd("odd");
    Settings record("odd");
    record->dmCopies = 9;
    SetDevModeOptionValue(FindDevModeOption(record.get(), "Fold"), "None");
    SetLastError(77);
    UpdatePPD("ODD", nullptr, record.get());
    EXPECT_EQ(GetLastError(), 77u);
    const Settings now("odd");
    EXPECT_EQ(std::string(reinterpret_cast<char *>(now.get()), GlobalSize(now.get())),
              std::string(reinterpret_cast<char *>(record.get()), GlobalSize(record.get())));
    const Settings other("unknown");
    other->dmCopies = 7;
    other->dmPaperSize = DMPAPER_LEDGER;
    SetLastError(77);
    UpdatePPD("odd", nullptr, other.get());
    EXPECT_EQ(GetLastError(), 77u);
    const Settings merged("odd");
    EXPECT_STREQ(merged->dmDeviceName, "odd") << "a record of another size is merged";
    EXPECT_EQ(GlobalSize(merged.get()), GlobalSize(record.get()));
    EXPECT_EQ(merged->dmCopies * 100 + merged->dmPaperSize, 704);
    RestoreDefaultDevmode(record.get());
    EXPECT_EQ(record->dmCopies, 1);
}

TEST_F(Printers, ConcurrentFirstQuestionsMakeOneEntry)
{
    AddOdd("odd");
    HPRINTERPPD handles[6] = {};
    std::vector<std::thread> threads;
    for (HPRINTERPPD &handle : handles) {
        threads.emplace_back([&] {
            EXPECT_EQ(DeviceCapabilities("odd/i", nullptr, DC_BINS, nullptr, nullptr), 3);
            EXPECT_EQ(OpenPrinterPPD("odd/i", &handle), 0);
        });
    }
    for (auto &thread : threads)
        thread.join();
    for (const HPRINTERPPD handle : handles)
        EXPECT_EQ(handle, handles[0]);
    EXPECT_EQ(cups.TemporaryFiles(), 1u);
}

} // namespace
