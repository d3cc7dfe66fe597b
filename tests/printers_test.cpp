// Printers as a host sees them, on a scheduler of the test's own and on none at all.
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "support/digest.h"
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
    TestRecord record(std::string(static_cast<char *>(copy), GlobalSize(copy)));
    GlobalFree(copy);
    return record;
}

class NoScheduler : public testing::Test {
protected:
    void SetUp() override { setenv("CUPS_SERVER", library.folder.file("none.sock").c_str(), 1); }
    StartedLibrary library;
};

// One printer of some kind, one with an instance, and one whose PPD got damaged.
class Printers : public testing::Test {
protected:
    void SetUp() override
    {
        SKIP_WITHOUT_CUPS(cups);
        ASSERT_TRUE(cups.AddPrinter("plain"));
        for (const char *name : {"bad", "odd"})
            ASSERT_TRUE(cups.AddPrinter(name, TEST_SOURCES "/ppd/odd.ppd"));
        cups.ReplacePPD("bad", ReadWholeFile(TEST_SOURCES "/ppd/broken.ppd"));
        ASSERT_TRUE(cups.Run("lpoptions -p odd/fine -o Fold=None -o InputSlot=Tray2"));
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
    EXPECT_EQ(SettingsOf(std::string(200, 'n'))->dmDeviceName, std::string(127, 'n'));

    gPrinterXMargin = 3;
    gPrinterYMargin = -4;
    SetWinString(29, std::string(80, 'A').c_str());
    SetWinString(21, "Ein Fach mit einem langen Namen");
    int32_t m[4] = {};
    EXPECT_OUTCOME(GetDeviceMarginInfo("p", 0x70009, m, m + 1, m + 2, m + 3), TRUE, kUnchanged);
    EXPECT_EQ((std::vector<int32_t>(m, m + 4)), (std::vector<int32_t>{30, -40, 30, -40}));
    char bin[25] = "", paper[65] = "#";
    EXPECT_EQ(DeviceCapabilities("p", nullptr, DC_BINNAMES, bin, nullptr), 1);
    EXPECT_STREQ(bin, "Ein Fach mit einem lange");
    const TestRecord settings = SettingsOf("p");
    EXPECT_LAST_ERROR(GetBinName(settings.get(), bin), ERROR_SUCCESS);
    EXPECT_STREQ(bin, "") << "a single bin has no name";
    settings->dmPaperSize = DMPAPER_A3;
    EXPECT_LAST_ERROR(GetPaperName(settings.get(), paper), ERROR_SUCCESS);
    EXPECT_EQ(paper, std::string(64, 'A'));
}

TEST_F(Printers, AreListedWithTheDefaultFirst)
{
    EXPECT_EQ(Listed(), "bad|odd|odd/fine|plain|");
    char name[32] = "######";
    EXPECT_EQ(GetDefaultPrinterName(name, sizeof name), 0u);
    EXPECT_STREQ(name, "bad") << "none is the default";
    ASSERT_TRUE(cups.Run("lpoptions -d odd"));
    EXPECT_EQ(Listed(), "odd|bad|odd/fine|plain|");
    ASSERT_TRUE(cups.Run("lpoptions -d odd/fine"));
    EXPECT_EQ(Listed(), "odd/fine|bad|odd|plain|");
    strcpy(name, "######");
    for (const uint32_t size : {0u, 8u})
        EXPECT_OUTCOME(GetDefaultPrinterName(name, size), ERROR_INSUFFICIENT_BUFFER, kUnchanged);
    EXPECT_STREQ(name, "######");
    EXPECT_OUTCOME(GetDefaultPrinterName(name, 9), 0u, kUnchanged);
    EXPECT_STREQ(name, "odd/fine");
}

TEST_F(Printers, HandlesRememberTheName)
{
    HPRINTER handle = nullptr;
    for (const char *name : {"beta", "odd/", "odd/coarse", ""})
        EXPECT_OUTCOME(OpenPrinter(name, &handle), FALSE, ERROR_INVALID_PRINTER_NAME) << name;
    EXPECT_OUTCOME(OpenPrinter(nullptr, &handle), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_OUTCOME(OpenPrinter("odd", nullptr), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_OUTCOME(OpenPrinter("odd/fine", &handle), TRUE, ERROR_SUCCESS);
    ASSERT_TRUE(cups.Run("lpadmin -x odd"));

    char buffer[64];
    memset(buffer, '#', sizeof buffer);
    char *const odd = buffer + 1; // at any address
    uint32_t needed = 7;
    for (const int32_t level : {1, 3})
        EXPECT_OUTCOME(GetPrinter(handle, level, odd, 64, &needed), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_OUTCOME(GetPrinter(nullptr, 2, odd, 64, &needed), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(needed, 7u);
    EXPECT_OUTCOME(GetPrinter(handle, 2, odd, 16, &needed), FALSE, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(std::exchange(needed, 7), 17u);
    EXPECT_OUTCOME(GetPrinter(handle, 2, nullptr, 0, &needed), TRUE, ERROR_SUCCESS);
    EXPECT_EQ(needed, 17u);
    EXPECT_EQ(std::string(buffer, 64), std::string(64, '#'));
    EXPECT_OUTCOME(GetPrinter(handle, 2, odd, 17, nullptr), TRUE, ERROR_SUCCESS);
    char *text = nullptr;
    memcpy(&text, odd, sizeof text);
    ASSERT_EQ(text, odd + 8);
    EXPECT_STREQ(text, "odd/fine");
    EXPECT_EQ(odd[17], '#');
    EXPECT_OUTCOME(ClosePrinter(handle), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(ClosePrinter(nullptr), FALSE, ERROR_INVALID_PARAMETER);
}

TEST_F(Printers, AnswerByNumber)
{
    const auto ask = [](const char *name, uint32_t capability) {
        return DeviceCapabilities(name, nullptr, capability, nullptr, nullptr);
    };
    EXPECT_OUTCOME(ask("bad", 0x10000 + DC_FIELDS), 39711, kUnchanged);
    EXPECT_OUTCOME(ask("bad", DC_COPIES), 100, kUnchanged);
    EXPECT_OUTCOME(ask("ODD", 0x90000 + DC_PAPERSIZE), 11, ERROR_SUCCESS);
    EXPECT_OUTCOME(ask("odd", 37), -1, ERROR_INVALID_PARAMETER);
    EXPECT_OUTCOME(ask("bad", 37), -1, ERROR_INVALID_DATA);
    EXPECT_OUTCOME(ask("bad/inst", DC_BINS), -1, ERROR_INVALID_DATA);
    EXPECT_EQ(cups.TemporaryFiles(), 1u) << "what does not parse is removed";
    HPRINTERPPD printer = Opened("odd");
    EXPECT_OUTCOME(OpenPrinterPPD("bad", &printer), -1, ERROR_INVALID_DATA);
    EXPECT_EQ(printer, nullptr);
    cups.ReplacePPD("bad", ReadWholeFile(TEST_SOURCES "/ppd/empty.ppd"));
    EXPECT_OUTCOME(ask("bad", DC_PAPERS), 69, ERROR_SUCCESS) << "a failure is not remembered";
}

// All questions to all kinds of printers; of records that are cut short, at the end of their
// memory, or that tell no size, nothing is taken that they do not hold.
TEST_F(Printers, AnswerFromTheirRows)
{
    Digest digest;
    std::string out;
    const auto note = [&](auto call) {
        out.assign(4416, '#');
        SetLastError(kUnchanged);
        digest.Add(call());
        digest.Add(GetLastError(), out);
    };
    for (const char *name : {"odd", "ODD/x", "bad", "bad/x", "gone"}) {
        for (uint32_t capability = 0; capability < 40; capability++) {
            note([&] { return DeviceCapabilities(name, "", capability, out.data(), nullptr); });
            note([&] { return DeviceCapabilities(name, "", capability, nullptr, nullptr); });
        }
        auto *margins = reinterpret_cast<int32_t *>(out.data());
        for (const int32_t code : {-9, 0, 1, 9, 69, 0x10009, 0xFFF7})
            note([&] {
                return GetDeviceMarginInfo(name, code, margins, margins + 1, margins + 2,
                                           margins + 3);
            });
        HPRINTERPPD printer = nullptr;
        note([&] { return OpenPrinterPPD(name, &printer); });
        for (const size_t head : {516u, 392u, 409u, 410u, 0u}) {
            const TestRecord record(head, std::string(head == 0 ? 124 : 8, 'x'), name);
            if (head == 0)
                record->dmDriverExtra = 0;
            for (int32_t row = -1; row < 13; row++) {
                note([&] { return GetPaperFromIndex(printer, row, record.get()), 0; });
                note([&] { return GetBinFromIndex(printer, row, record.get()), 0; });
                digest.Add(record.bytes());
                note([&] { return GetPaperName(record.get(), out.data()), 0; });
                note([&] { return GetBinName(record.get(), out.data()), 0; });
            }
            record.data()[399] = '\xFF'; // as if the paper were negative
            note([&] { return GetPaperName(record.get(), out.data()), 0; });
        }
    }
    EXPECT_EQ(digest.hex(), "baa7ba1be98a0e1e");
}

TEST_F(Printers, AreAskedAboutOnce)
{
    const size_t open = OpenDescriptors();
    std::vector<HPRINTERPPD> handles(6);
    std::vector<std::thread> threads; // whose first questions make one entry
    for (HPRINTERPPD &handle : handles)
        threads.emplace_back([&] { handle = Opened("ODD/fine"); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(handles, std::vector(6, handles[0]));
    const HPRINTERPPD plain = Opened("odd");
    cups.Stop();
    for (int i = 0; i < 600; i++) // so that names share their place in the index
        Opened("other" + std::to_string(i));
    EXPECT_NE(Opened("odd/"), plain);
    EXPECT_EQ(Opened("OdD"), plain);
    EXPECT_EQ(Opened("odd/FINE"), handles[0]);
    EXPECT_NE(handles[0], plain);
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
    ASSERT_EQ(signal(SIGPIPE, [](int) { gPipeSignals++; }), SIG_DFL);
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
}

} // namespace
