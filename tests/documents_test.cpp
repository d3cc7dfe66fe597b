// Document properties, merging between real printers, and the print dialog's data.
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

#include "support/library.h"
#include "support/private_cups.h"
#include "support/record.h"
#include "wexelxi.h"

namespace {

TestRecord CurrentOf(const char *name)
{
    const int32_t size = DocumentProperties(nullptr, nullptr, name, nullptr, nullptr, 0);
    TestRecord record(std::string(static_cast<size_t>(size), '\xEE'));
    EXPECT_EQ(DocumentProperties(nullptr, nullptr, name, record.get(), nullptr, DM_COPY), IDOK);
    return record;
}

// Two printers of one kind, one whose PPD gets damaged, and the default, which has none.
class Documents : public testing::Test {
protected:
    void SetUp() override
    {
        SKIP_WITHOUT_CUPS(cups);
        for (const char *name : {"odd", "twin", "broken"})
            ASSERT_TRUE(cups.AddPrinter(name, TEST_SOURCES "/ppd/odd.ppd"));
        cups.ReplacePPD("broken", "no PPD at all\n");
        ASSERT_TRUE(cups.AddPrinter("plain") && cups.SetDefault("plain"));
        library.emplace();
    }

    PrivateCups cups;
    std::optional<StartedLibrary> library;
};

TEST_F(Documents, ModesActAsTold)
{
    const TestRecord wish = CurrentOf("odd");
    const std::string defaults = wish.bytes();
    wish->dmCopies = 4;
    const struct {
        int32_t mode;
        bool in;
        bool out;
        int32_t result;
        uint32_t error;
        int16_t copies; // of the current record afterwards
    } rows[] = {
        {0, false, false, static_cast<int32_t>(wish.size()), 0, 1},
        {DM_COPY, false, true, IDOK, 0, 1},
        {DM_PROMPT, false, true, IDOK, 0, 1},
        {DM_UPDATE, false, true, IDCANCEL, 0, 1},
        {DM_UPDATE | DM_COPY | DM_MODIFY, true, true, IDCANCEL, 0, 1},
        {DM_MODIFY, false, true, -1, 87, 1},
        {DM_MODIFY | DM_COPY, true, false, -1, 87, 1},
        {DM_MODIFY, true, true, IDOK, 0, 4},
        {DM_MODIFY | DM_COPY, true, true, IDOK, 0, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.mode);
        const TestRecord out(std::string(wish.size(), '\xEE'));
        const std::string untouched = out.bytes();
        SetLastError(55);
        EXPECT_EQ(DocumentProperties(nullptr, nullptr, "ODD", row.out ? out.get() : nullptr,
                                     row.in ? wish.get() : nullptr, row.mode),
                  row.result);
        EXPECT_EQ(GetLastError(), row.error);
        const TestRecord current = CurrentOf("odd");
        const bool copied = row.result == IDOK && (row.mode & DM_COPY);
        EXPECT_EQ(out.bytes(), copied ? current.bytes() : untouched);
        EXPECT_EQ(current->dmCopies, row.copies);
    }
    RestoreDefaultDevmode(wish.get());
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(wish.bytes(), defaults);
    EXPECT_EQ(CurrentOf("odd")->dmCopies, 4);

    EXPECT_EQ(DocumentProperties(nullptr, nullptr, "broken", nullptr, nullptr, 0), -1);
    EXPECT_EQ(GetLastError(), 1801u);
    strcpy(wish->dmDeviceName, "broken");
    const std::string before = wish.bytes();
    SetLastError(0);
    RestoreDefaultDevmode(wish.get());
    EXPECT_EQ(GetLastError(), 1801u);
    EXPECT_EQ(wish.bytes(), before);
}

TEST_F(Documents, RecordsPassBetweenPrinters)
{
    const struct {
        const char *source;
        int16_t paper;
        int16_t bin;
        uint32_t error;
        int16_t paperAfter;
        int16_t binAfter;
    } rows[] = {
        {"odd", DMPAPER_TABLOID, 258, 0, DMPAPER_TABLOID, 258},
        {"odd", DMPAPER_ENV_DL, 999, 0, DMPAPER_A4, 257},            // neither is known
        {"gone/too", DMPAPER_TABLOID, 256, 0, DMPAPER_TABLOID, 257}, // no "Default Tray" here
        {"broken", DMPAPER_TABLOID, 258, 13, DMPAPER_TABLOID, 257},  // its bins are not known
    };
    const TestRecord own = CurrentOf("twin");
    own->dmDefaultSource = 257;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.source);
        const TestRecord source = CurrentOf("odd");
        strcpy(source->dmDeviceName, row.source);
        source->dmPaperSize = row.paper;
        source->dmDefaultSource = row.bin;
        source->dmJobSheetEnd = DMJOBSHEET_SECRET;
        SetDevModeOptionValue(FindDevModeOption(source.get(), "Punch"), "top");
        HGLOBAL from = MakeDevModeHan(source.get());
        HGLOBAL to = MakeDevModeHan(own.get());
        CopyDevModeSettings(from, to);
        EXPECT_EQ(GetLastError(), row.error);
        const auto *result = static_cast<DEVMODE *>(to);
        EXPECT_STREQ(result->dmDeviceName, "twin");
        EXPECT_EQ(result->dmPaperSize, row.paperAfter);
        EXPECT_EQ(result->dmDefaultSource, row.binAfter);
        EXPECT_EQ(result->dmJobSheetEnd, DMJOBSHEET_SECRET);
        EXPECT_EQ(Selected(FindDevModeOption(result, "Punch")), "010");
        CopyDevModeSettings(from, from);
        CopyDevModeSettings(nullptr, from);
        EXPECT_EQ(memcmp(from, source.data(), source.size()), 0);
        GlobalFree(from);
        GlobalFree(to);
    }
}

TEST_F(Documents, PrintDialogStartsWithPrinterAndRecord)
{
    const TestRecord stored = CurrentOf("odd");
    stored->dmCopies = 7;
    HGLOBAL record = MakeDevModeHan(stored.get());
    const struct {
        const char *name;
        bool record;
        const char *outName; // null: the call fails
        int16_t copies;
        size_t size;
    } rows[] = {
        {nullptr, false, "plain", 1, 516},        // the default printer
        {nullptr, true, "odd", 7, stored.size()}, // a copy of the record
        {"odd", true, "odd", 7, stored.size()},   // the same
        {"odd", false, "odd", 1, stored.size()},  // the printer's own settings
        {"twin", true, "twin", 7, stored.size()}, // merged into the printer's
        {"nobody/x", true, "nobody/x", 7, 516},   // likewise
        {"broken", false, nullptr, 0, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.name ? row.name : "-") + (row.record ? " record" : ""));
        PRINTDLG dialog = {};
        dialog.hDevNames = row.name ? MakePrinterNameHan(row.name) : nullptr;
        dialog.hDevMode = row.record ? record : nullptr;
        HGLOBAL outName = nullptr;
        HGLOBAL outRecord = nullptr;
        char *list = nullptr;
        SetLastError(55);
        ASSERT_EQ(GetDevModeAndPrinterNameForPrintDlg(&dialog, &outName, &outRecord, &list),
                  row.outName != nullptr);
        EXPECT_EQ(GetLastError(), row.outName ? 0u : 13u);
        EXPECT_STREQ(list, row.outName ? "plain" : nullptr);
        EXPECT_STREQ(static_cast<char *>(outName), row.outName);
        EXPECT_EQ(GlobalSize(outRecord), row.size);
        const auto *settings = static_cast<const DEVMODE *>(outRecord);
        EXPECT_EQ(settings ? settings->dmCopies : 0, row.copies);
        for (HGLOBAL handle : {outName, outRecord, dialog.hDevNames})
            GlobalFree(handle);
        FreePrinters(list);
    }
    EXPECT_EQ(memcmp(record, stored.data(), stored.size()), 0);
    GlobalFree(record);
}

TEST(DocumentsAlone, NoSchedulerMeansNoPrinters)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    StartedLibrary library;
    PRINTDLG dialog = {};
    HGLOBAL name = &dialog;
    char list[] = "untouched";
    char *outList = list;
    SetLastError(55);
    EXPECT_EQ(GetDevModeAndPrinterNameForPrintDlg(&dialog, &name, &name, &outList), 0);
    EXPECT_EQ(GetLastError(), 55u);
    EXPECT_EQ(name, &dialog);
    EXPECT_EQ(outList, list);
}

TEST(DocumentsAlone, ThreadsSeeWholeRecords)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    StartedLibrary library;
    std::atomic<int> torn = 0;
    const auto change = [&torn](int16_t number) {
        TestRecord wish({}, 516, "other");
        wish->dmCopies = wish->dmScale = number;
        HPRINTERPPD printer = nullptr;
        OpenPrinterPPD("shared", &printer);
        for (int i = 0; i < 200; i++) {
            DocumentProperties(nullptr, nullptr, "shared", nullptr, wish.get(), DM_MODIFY);
            HGLOBAL copy = GetCopyOfDevmodeFromPPD(printer);
            const auto *record = static_cast<const DEVMODE *>(copy);
            torn += record->dmCopies != record->dmScale;
            GlobalFree(copy);
        }
    };
    std::vector<std::thread> threads;
    for (int16_t number = 1; number <= 4; number++)
        threads.emplace_back(change, number);
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(torn, 0);
}

TEST(DocumentsAlone, EmptyCallsClearTheLastError)
{
    int called = 0;
    const auto isEmpty = [&](auto result) {
        called += !result && GetLastError() == 0;
        SetLastError(55);
    };
    SetLastError(55);
    isEmpty(DPtoLP(nullptr, nullptr, 1));
    isEmpty(LPtoDP(nullptr, nullptr, 1));
    isEmpty(StartDoc(nullptr, nullptr));
    isEmpty(EndDoc(nullptr));
    isEmpty(StartPage(nullptr));
    isEmpty(EndPage(nullptr));
    isEmpty(Escape(nullptr, 1, 2, nullptr, nullptr));
    isEmpty(ResetDC(nullptr, nullptr));
    isEmpty(AdvancedDocumentProperties(nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(called, 9);
    EXPECT_EQ(PrinterProperties(nullptr), IDCANCEL);
    EXPECT_EQ(GetLastError(), 55u);
}

} // namespace
