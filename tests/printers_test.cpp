// Printers as a host sees them, on a scheduler of the test's own and on none at all.
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "support/last_error.h"
#include "support/library.h"
#include "support/private_cups.h"
#include "support/record.h"
#include "wexelxi.h"

namespace {

// The names of a list, each with a bar behind it.
std::string Listed()
{
    std::string text;
    char *list = nullptr;
    EXPECT_LAST_ERROR(list = ListPrinters(0), kUnchanged);
    for (const char *name = list; *name; name += strlen(name) + 1)
        text += std::string(name) + "|";
    FreePrinters(list);
    return text;
}

int32_t Ask(const char *printer, uint32_t capability, void *buffer = nullptr)
{
    return DeviceCapabilities(printer, nullptr, capability, buffer, nullptr);
}

HPRINTERPPD Opened(const std::string &name)
{
    HPRINTERPPD printer = nullptr;
    EXPECT_OUTCOME(OpenPrinterPPD(name.c_str(), &printer), 0, ERROR_SUCCESS) << name;
    return printer;
}

// A copy of a printer's current settings.
TestRecord SettingsOf(const std::string &name)
{
    HGLOBAL copy = nullptr;
    EXPECT_LAST_ERROR(copy = GetCopyOfDevmodeFromPPD(Opened(name)), ERROR_SUCCESS);
    const std::string bytes(static_cast<char *>(copy), GlobalSize(copy));
    GlobalFree(copy);
    return TestRecord(bytes);
}

// The name, and whether it stays in its buffer.
std::string Name(void (*give)(const DEVMODE *, char *), const TestRecord &record)
{
    std::string buffer(give == GetPaperName ? 66 : 26, '#');
    EXPECT_LAST_ERROR(give(record.get(), buffer.data()), ERROR_SUCCESS);
    EXPECT_EQ(buffer.back(), '#');
    return buffer.c_str();
}

// The four margins, or what stood there before.
std::string Margins(const char *printer, int32_t code, BOOL result, uint32_t error)
{
    int32_t m[4] = {7, 7, 7, 7};
    EXPECT_OUTCOME(GetDeviceMarginInfo(printer, code, m, m + 1, m + 2, m + 3), result, error);
    std::string text;
    for (const int32_t margin : m)
        text += std::to_string(margin) + " ";
    return text;
}

class NoScheduler : public testing::Test {
protected:
    void SetUp() override { setenv("CUPS_SERVER", library.folder.file("none.sock").c_str(), 1); }
    StartedLibrary library;
};

class Printers : public testing::Test {
protected:
    void SetUp() override { SKIP_WITHOUT_CUPS(cups); }
    void AddOdd(const char *name)
    {
        ASSERT_TRUE(cups.AddPrinter(name, TEST_SOURCES "/ppd/odd.ppd"));
    }
    StartedLibrary library;
    PrivateCups cups;
};

TEST_F(NoScheduler, HasNoPrintersAndAnswersForAny)
{
    EXPECT_EQ(Listed(), "");
    char *word = ListPrinters(1);
    EXPECT_STREQ(word, "cups");
    FreePrinters(word);
    char name[8] = "######";
    EXPECT_OUTCOME(GetDefaultPrinterName(name, 1), 0u, kUnchanged);
    EXPECT_STREQ(name, "");
    auto *handle = reinterpret_cast<HPRINTER>(&library);
    EXPECT_OUTCOME(OpenPrinter("any", &handle), FALSE, ERROR_INVALID_PRINTER_NAME);
    EXPECT_EQ(handle, nullptr);
    EXPECT_OUTCOME(GetCopyOfDevmodeFromPPD(nullptr), nullptr, kUnchanged);
    EXPECT_STREQ(SettingsOf("some/in/stance")->dmDeviceName, "some/in/stance");
    const std::string endless(200, 'n');
    EXPECT_EQ(SettingsOf(endless)->dmDeviceName, endless.substr(0, 127));

    gPrinterXMargin = 3;
    gPrinterYMargin = -4;
    SetWinString(29, std::string(80, 'A').c_str());
    SetWinString(21, "Ein Fach mit einem langen Namen");
    EXPECT_EQ(Margins("p", 0x70009, TRUE, kUnchanged), "30 -40 30 -40 ");
    for (const int32_t code : {0, 69, -9, 0xFFF7})
        EXPECT_EQ(Margins("p", code, FALSE, kUnchanged), "7 7 7 7 ");
    char bin[25] = "";
    EXPECT_EQ(Ask("p", DC_BINNAMES, bin), 1);
    EXPECT_STREQ(bin, "Ein Fach mit einem lange");
    const TestRecord settings = SettingsOf("p");
    EXPECT_EQ(Name(GetBinName, settings), "") << "a single bin has no name";
    settings->dmPaperSize = DMPAPER_A3;
    EXPECT_EQ(Name(GetPaperName, settings), std::string(64, 'A'));
    settings->dmPaperSize = -9;
    EXPECT_EQ(Name(GetPaperName, settings), "");
}

// A record that is cut short in its head, at the end of its memory; one that holds its bin just;
// and a host's own that tells no size.
TEST_F(NoScheduler, LeavesWhatAShortRecordLacks)
{
    for (const size_t head : {0u, 392u, 409u, 410u}) {
        const bool holds = head == 410 || head == 0;
        std::string bytes(head == 0 ? 516 : head + 8, 'x');
        bytes.replace(388, 4, Number(static_cast<int64_t>(head), 4));
        const TestRecord record(bytes);
        UpdatePPD("none", nullptr, record.get());
        GetPaperFromIndex(Opened("none"), 1, record.get());
        GetBinFromIndex(Opened("none"), 1, record.get());
        EXPECT_EQ(Name(GetPaperName, record) != "", holds);
        EXPECT_EQ(Name(GetBinName, record), "");
        EXPECT_EQ(record.bytes() != bytes, holds);
    }
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
    strcpy(name, "######");
    for (const uint32_t size : {0u, 11u})
        EXPECT_OUTCOME(GetDefaultPrinterName(name, size), ERROR_INSUFFICIENT_BUFFER, kUnchanged);
    EXPECT_STREQ(name, "######");
    EXPECT_OUTCOME(GetDefaultPrinterName(name, 12), 0u, kUnchanged);
    EXPECT_STREQ(name, "alpha/draft");
}

TEST_F(Printers, HandlesRememberTheName)
{
    ASSERT_TRUE(cups.AddPrinter("alpha"));
    ASSERT_TRUE(cups.SaveOptions("alpha/draft", {"job-sheets=secret"}));
    HPRINTER handle = nullptr;
    for (const char *name : {"beta", "alpha/", "alpha/fine", ""})
        EXPECT_OUTCOME(OpenPrinter(name, &handle), FALSE, ERROR_INVALID_PRINTER_NAME) << name;
    EXPECT_OUTCOME(OpenPrinter(nullptr, &handle), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_OUTCOME(OpenPrinter("alpha", nullptr), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_OUTCOME(OpenPrinter("alpha/draft", &handle), TRUE, ERROR_SUCCESS);
    ASSERT_TRUE(cups.RemovePrinter("alpha"));

    char buffer[64];
    memset(buffer, '#', sizeof buffer);
    const struct {
        HPRINTER printer;
        int32_t level;
        void *buffer;
        uint32_t size, needed;
        BOOL result;
    } rows[] = {
        {handle, 1, buffer, 64, 7, FALSE},  {handle, 3, buffer, 64, 7, FALSE},
        {nullptr, 2, buffer, 64, 7, FALSE}, {handle, 2, buffer + 1, 19, 20, FALSE},
        {handle, 2, nullptr, 0, 20, TRUE},
    };
    for (const auto &row : rows) {
        uint32_t needed = 7;
        EXPECT_OUTCOME(GetPrinter(row.printer, row.level, row.buffer, row.size, &needed),
                       row.result, row.result ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER);
        EXPECT_EQ(needed, row.needed);
    }
    EXPECT_EQ(std::string(buffer, 64), std::string(64, '#'));
    EXPECT_OUTCOME(GetPrinter(handle, 2, buffer + 1, 20, nullptr), TRUE, ERROR_SUCCESS);
    char *text = nullptr;
    memcpy(&text, buffer + 1, sizeof text);
    ASSERT_EQ(text, buffer + 9);
    EXPECT_STREQ(text, "alpha/draft");
    EXPECT_EQ(buffer[21], '#');
    EXPECT_OUTCOME(ClosePrinter(handle), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(ClosePrinter(nullptr), FALSE, ERROR_INVALID_PARAMETER);
}

TEST_F(Printers, CapabilityNumbers)
{
    AddOdd("odd");
    AddOdd("bad");
    cups.ReplacePPD("bad", ReadWholeFile(TEST_SOURCES "/ppd/broken.ppd"));
    const struct {
        const char *name;
        uint32_t capability;
        int32_t result;
        uint32_t error;
    } rows[] = {
        {"bad", 0x10000 + DC_FIELDS, 39711, kUnchanged},
        {"bad", DC_COPIES, 100, kUnchanged},
        {"ODD", 0x90000 + DC_PAPERSIZE, 11, ERROR_SUCCESS},
        {"odd", DC_BINS, 3, ERROR_SUCCESS},
        {"odd", 5, -1, ERROR_INVALID_PARAMETER},
        {"odd", 37, -1, ERROR_INVALID_PARAMETER},
        {"bad", DC_PAPERS, -1, ERROR_INVALID_DATA},
        {"bad", 5, -1, ERROR_INVALID_DATA},
        {"bad/inst", DC_BINS, -1, ERROR_INVALID_DATA},
    };
    for (const auto &row : rows)
        EXPECT_OUTCOME(Ask(row.name, row.capability), row.result, row.error) << row.capability;
    EXPECT_EQ(cups.TemporaryFiles(), 1u) << "what does not parse is removed";
    EXPECT_EQ(Margins("bad", 9, FALSE, ERROR_INVALID_DATA), "7 7 7 7 ");
    HPRINTERPPD printer = Opened("odd");
    EXPECT_OUTCOME(OpenPrinterPPD("bad", &printer), -1, ERROR_INVALID_DATA);
    EXPECT_EQ(printer, nullptr);
    EXPECT_LAST_ERROR(UpdatePPD("bad", nullptr, TestRecord().get()), ERROR_INVALID_DATA);
    std::string text = ReadWholeFile(TEST_SOURCES "/ppd/odd.ppd");
    cups.ReplacePPD("bad",
                    text.erase(text.find("*InputSlot Tray2"), strlen("*InputSlot Tray2: \"\"\n")));
    EXPECT_EQ(Ask("bad", DC_BINS), 2) << "a failure is not remembered";
    EXPECT_EQ(Name(GetBinName, SettingsOf("bad")), "Automatic") << "two bins have names";
}

TEST_F(Printers, AreAskedAboutOnce)
{
    AddOdd("odd");
    ASSERT_TRUE(cups.SaveOptions("odd/fine", {"Fold=None", "InputSlot=Tray2"}));
    const size_t open = OpenDescriptors();
    const HPRINTERPPD plain = Opened("odd");
    const HPRINTERPPD fine = Opened("ODD/fine");
    cups.Stop();
    for (int i = 0; i < 600; i++) // so that names share their place in the index
        Opened("other" + std::to_string(i));
    EXPECT_NE(Opened("odd/"), plain);
    EXPECT_EQ(Opened("OdD"), plain);
    EXPECT_EQ(Opened("odd/FINE"), fine);
    EXPECT_NE(fine, plain);
    EXPECT_EQ(cups.TemporaryFiles(), 1u) << "printer and instance share the PPD";

    const TestRecord own = SettingsOf("odd/fine");
    EXPECT_STREQ(own->dmDeviceName, "ODD/fine");
    EXPECT_EQ(own->dmDefaultSource, 258);
    EXPECT_EQ(Selected(FindDevModeOption(own.get(), "fold")), "10");
    EXPECT_EQ(SettingsOf("odd")->dmDefaultSource, 257);
    InitCUPS();
    TermCUPS();
    EXPECT_EQ(cups.TemporaryFiles(), 0u);
    EXPECT_LE(OpenDescriptors(), open + 1) << "libcups keeps a connection";
}

std::atomic<int> gPipeSignals = 0;

// A scheduler that hangs up at once, so that what is sent to it comes to nothing.
TEST_F(NoScheduler, LeavesSIGPIPEToTheHost)
{
    sockaddr_un address = {AF_UNIX, ""};
    strncpy(address.sun_path, getenv("CUPS_SERVER"), sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 8), 0);
    std::thread scheduler([listener] {
        for (int caller; (caller = accept(listener, nullptr, nullptr)) >= 0;)
            close(caller);
    });
    const auto count = [](int) { gPipeSignals++; };
    ASSERT_EQ(signal(SIGPIPE, count), SIG_DFL);
    for (int i = 0; i < 20; i++) {
        EXPECT_EQ(Listed(), "");
        Opened("any" + std::to_string(i));
    }
    EXPECT_EQ(gPipeSignals, 0);
    raise(SIGPIPE);
    EXPECT_EQ(gPipeSignals, 1) << "it is neither blocked nor ignored";

    sigset_t pipe, pending;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    raise(SIGPIPE); // one of the host's own waits
    Listed();
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 1);
    shutdown(listener, SHUT_RDWR);
    scheduler.join();
    close(listener);
}

TEST_F(Printers, RowsGoIntoRecords)
{
    AddOdd("odd");
    const TestRecord record = SettingsOf("odd");
    const HPRINTERPPD printer = Opened("odd");
    EXPECT_EQ(Name(GetPaperName, record), "A4") << "the first of that code";
    for (const int32_t row : {-1, 11, 0}) {
        std::string expected = record.bytes();
        expected.replace(398, 6, Number(0, 2) + Number(353, 2) + Number(353, 2));
        record->dmPaperSize = 77;
        EXPECT_LAST_ERROR(GetPaperFromIndex(printer, row, record.get()), kUnchanged);
        EXPECT_EQ(record.bytes(), expected) << row;
    }
    EXPECT_EQ(Name(GetPaperName, record),
              "A paper with a name of seventy characters, which is six more tha");
    GetPaperFromIndex(printer, 10, record.get());
    EXPECT_EQ(record->dmPaperSize, DMPAPER_A4);

    const struct {
        int32_t row;
        int16_t source;
        const char *name;
    } bins[] = {{1, 257, "Automatic"}, {3, 256, "A tray with a long enoug"}, {2, 258, "Tray2"}};
    for (const auto &bin : bins) {
        EXPECT_LAST_ERROR(GetBinFromIndex(printer, bin.row, record.get()), kUnchanged);
        EXPECT_EQ(record->dmDefaultSource, bin.source);
        EXPECT_EQ(Name(GetBinName, record), bin.name);
    }
    const std::string before = record.bytes();
    GetPaperFromIndex(nullptr, 1, record.get());
    GetBinFromIndex(nullptr, 1, record.get());
    EXPECT_EQ(record.bytes(), before);
}

TEST_F(Printers, TakeNewSettings)
{
    AddOdd("odd");
    const TestRecord record = SettingsOf("odd");
    record->dmCopies = 9;
    SetDevModeOptionValue(FindDevModeOption(record.get(), "Fold"), "None");
    for (const char *instance : {static_cast<const char *>(nullptr), "fine"}) {
        EXPECT_LAST_ERROR(UpdatePPD("ODD", instance, record.get()), kUnchanged);
        EXPECT_EQ(SettingsOf(instance ? "odd/fine" : "odd").bytes(), record.bytes());
    }
    EXPECT_LAST_ERROR(UpdatePPDDevMode("odd", nullptr, TestRecord().get()), kUnchanged);
    const TestRecord other = SettingsOf("unknown");
    other->dmPaperSize = DMPAPER_LEDGER;
    EXPECT_LAST_ERROR(UpdatePPD("odd", nullptr, other.get()), kUnchanged);
    const TestRecord merged = SettingsOf("odd");
    EXPECT_STREQ(merged->dmDeviceName, "odd") << "a record of another size is merged";
    EXPECT_EQ(merged.size(), record.size());
    EXPECT_EQ(merged->dmCopies, 1);
    EXPECT_EQ(merged->dmPaperSize, DMPAPER_LEDGER);
}

TEST_F(Printers, ConcurrentFirstQuestionsMakeOneEntry)
{
    AddOdd("odd");
    HPRINTERPPD handles[6] = {};
    std::vector<std::thread> threads;
    for (HPRINTERPPD &handle : handles)
        threads.emplace_back([&] { handle = Opened("odd/i"); });
    for (auto &thread : threads)
        thread.join();
    for (const HPRINTERPPD handle : handles)
        EXPECT_EQ(handle, handles[0]);
    EXPECT_EQ(cups.TemporaryFiles(), 1u);
}

} // namespace
