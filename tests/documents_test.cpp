// Document properties, records that pass between printers, and the print dialog's data.
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "support/digest.h"
#include "support/last_error.h"
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
        ASSERT_TRUE(cups.AddPrinter("plain") && cups.Run("lpoptions -d plain"));
    }

    StartedLibrary library;
    PrivateCups cups;
};

TEST_F(Documents, ModesActAsTold)
{
    const TestRecord wish = CurrentOf("odd");
    const std::string defaults = wish.bytes();
    wish->dmCopies = 4;
    const struct {
        int32_t mode;
        bool in, out;
        int32_t result;
        uint32_t error;
        int16_t copies; // of the current record afterwards
    } rows[] = {
        {0, false, false, 785, ERROR_SUCCESS, 1},
        {DM_COPY, false, true, IDOK, ERROR_SUCCESS, 1},
        {DM_PROMPT, false, true, IDOK, ERROR_SUCCESS, 1},
        {DM_UPDATE, false, true, IDCANCEL, ERROR_SUCCESS, 1},
        {DM_UPDATE | DM_COPY | DM_MODIFY, true, true, IDCANCEL, ERROR_SUCCESS, 1},
        {DM_MODIFY, false, true, -1, ERROR_INVALID_PARAMETER, 1},
        {DM_MODIFY | DM_COPY, true, false, -1, ERROR_INVALID_PARAMETER, 1},
        {DM_MODIFY, true, true, IDOK, ERROR_SUCCESS, 4},
        {DM_MODIFY | DM_COPY, true, true, IDOK, ERROR_SUCCESS, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.mode);
        const TestRecord out(std::string(785, '\xEE'));
        EXPECT_OUTCOME(DocumentProperties(nullptr, nullptr, "ODD", row.out ? out.get() : nullptr,
                                          row.in ? wish.get() : nullptr, row.mode),
                       row.result, row.error);
        const TestRecord current = CurrentOf("odd");
        const bool copied = row.result == IDOK && (row.mode & DM_COPY);
        EXPECT_EQ(out.bytes(), copied ? current.bytes() : std::string(785, '\xEE'));
        EXPECT_EQ(current->dmCopies, row.copies);
    }
    EXPECT_LAST_ERROR(RestoreDefaultDevmode(wish.get()), ERROR_SUCCESS);
    EXPECT_EQ(wish.bytes(), defaults);
    EXPECT_EQ(CurrentOf("odd")->dmCopies, 4);
    EXPECT_OUTCOME(DocumentProperties(nullptr, nullptr, "broken", nullptr, nullptr, 0), -1,
                   ERROR_INVALID_PRINTER_NAME);
}

TEST_F(Documents, PrintDialogStartsWithPrinterAndRecord)
{
    const TestRecord stored = CurrentOf("odd");
    stored->dmCopies = 7;
    // The dialog's printer, the first one listed, and size and copies of the settings.
    const auto start = [&](const char *name, int32_t bytesOfRecord, uint32_t error) {
        PRINTDLG dialog = {};
        dialog.hDevNames = name ? MakePrinterNameHan(name) : nullptr;
        dialog.hDevMode = bytesOfRecord ? GlobalAlloc(0, bytesOfRecord) : nullptr;
        memcpy(dialog.hDevMode, stored.data(), GlobalSize(dialog.hDevMode));
        HGLOBAL outName = nullptr;
        HGLOBAL outRecord = nullptr;
        char *list = nullptr;
        EXPECT_OUTCOME(GetDevModeAndPrinterNameForPrintDlg(&dialog, &outName, &outRecord, &list),
                       error == ERROR_SUCCESS, error);
        std::string text;
        if (outName && outRecord && list)
            text = std::string(static_cast<char *>(outName)) + " of " + list + ": " +
                   std::to_string(GlobalSize(outRecord)) + ", " +
                   std::to_string(static_cast<DEVMODE *>(outRecord)->dmCopies);
        for (HGLOBAL handle : {outName, outRecord, dialog.hDevNames, dialog.hDevMode})
            GlobalFree(handle);
        FreePrinters(list);
        return text;
    };
    EXPECT_EQ(start(nullptr, 0, ERROR_SUCCESS), "plain of plain: 516, 1") << "the default printer";
    EXPECT_EQ(start(nullptr, 785, ERROR_SUCCESS), "odd of plain: 785, 7") << "a copy";
    EXPECT_EQ(start("odd", 785, ERROR_SUCCESS), "odd of plain: 785, 7");
    EXPECT_EQ(start("odd", 0, ERROR_SUCCESS), "odd of plain: 785, 1");
    EXPECT_EQ(start("ODD", 785, ERROR_SUCCESS), "ODD of plain: 785, 7") << "another name: merged";
    EXPECT_EQ(start("twin", 785, ERROR_SUCCESS), "twin of plain: 785, 7");
    EXPECT_EQ(start("broken", 785, ERROR_INVALID_DATA), "");
    EXPECT_EQ(start(nullptr, 516, ERROR_SUCCESS), "odd of plain: 785, 7") << "the rest is zero";
    EXPECT_EQ(start(nullptr, 392, ERROR_SUCCESS), "odd of plain: 785, 0");
    EXPECT_EQ(start(nullptr, 391, ERROR_SUCCESS), "plain of plain: 516, 1") << "no record";
}

// From blocks that hold a record, less than it says, or none, and from records of other printers.
TEST_F(Documents, RecordsPassBetweenPrinters)
{
    Digest digest;
    for (const char *source : {"odd", "odd/fine", "plain", "gone/too", "broken"}) {
        for (const size_t bytes : {785u, 784u, 516u, 407u, 392u, 391u, 0u}) {
            const TestRecord record(CurrentOf("odd").bytes());
            strcpy(record->dmDeviceName, source);
            record->dmPaperSize = bytes == 784 ? DMPAPER_ENV_DL : DMPAPER_TABLOID;
            record->dmDefaultSource = bytes == 516 ? 256 : 258;
            record->dmCopies = static_cast<int16_t>(bytes % 256);
            SetDevModeOptionValue(FindDevModeOption(record.get(), "Punch"), "top");
            HGLOBAL from = GlobalAlloc(0, static_cast<int32_t>(bytes));
            memcpy(from, record.data(), bytes);
            for (const char *name : {"twin", "plain", "odd/fine"}) {
                HGLOBAL to = MakeDevModeHan(CurrentOf(name).get());
                SetLastError(kUnchanged);
                CopyDevModeSettings(from, to);
                digest.Add(GetLastError(), std::string(static_cast<char *>(to), GlobalSize(to)));
                CopyDevModeSettings(to, from); // no further than it has, which its guard would show
                SetLastError(kUnchanged);
                UpdatePPD(bytes == 785 ? name : "plain", nullptr, record.get());
                digest.Add(GetLastError(), CurrentOf("twin").bytes(), CurrentOf("plain").bytes());
                GlobalFree(to);
            }
            EXPECT_LAST_ERROR(CopyDevModeSettings(nullptr, from), kUnchanged);
            EXPECT_LAST_ERROR(CopyDevModeSettings(from, nullptr), kUnchanged);
            SetLastError(kUnchanged);
            RestoreDefaultDevmode(record.get());
            digest.Add(GetLastError(), record.bytes());
            GlobalFree(from);
        }
    }
    EXPECT_EQ(digest.hex(), "3a5ea8cbc56f47fa");
}

TEST(DocumentsAlone, NoSchedulerMeansNoPrinters)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    StartedLibrary library;
    PRINTDLG dialog = {};
    HGLOBAL name = &dialog;
    char list[] = "untouched";
    char *outList = list;
    EXPECT_OUTCOME(GetDevModeAndPrinterNameForPrintDlg(&dialog, &name, &name, &outList), FALSE,
                   kUnchanged);
    EXPECT_EQ(name, &dialog);
    EXPECT_EQ(outList, list);

    std::atomic<int> torn = 0;
    const auto change = [&torn](int16_t number) {
        const TestRecord wish(516, "", "other");
        wish->dmCopies = wish->dmScale = number;
        for (int i = 0; i < 200; i++) {
            DocumentProperties(nullptr, nullptr, "shared", nullptr, wish.get(), DM_MODIFY);
            const TestRecord seen = CurrentOf("shared");
            torn += seen->dmCopies != seen->dmScale;
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
    StartedLibrary library;
    EXPECT_OUTCOME(DPtoLP(nullptr, nullptr, 1), FALSE, ERROR_SUCCESS);
    EXPECT_OUTCOME(LPtoDP(nullptr, nullptr, 1), FALSE, ERROR_SUCCESS);
    EXPECT_OUTCOME(StartDoc(nullptr, nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(EndDoc(nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(StartPage(nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(EndPage(nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(Escape(nullptr, 1, 2, nullptr, nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(ResetDC(nullptr, nullptr), nullptr, ERROR_SUCCESS);
    EXPECT_OUTCOME(AdvancedDocumentProperties(nullptr, nullptr, nullptr, nullptr, nullptr), 0,
                   ERROR_SUCCESS);
    EXPECT_OUTCOME(PrinterProperties(nullptr), IDCANCEL, kUnchanged);
    EXPECT_LAST_ERROR(UpdatePPDDevMode("odd", nullptr, nullptr), kUnchanged);
    HDC dc = CreateIC(nullptr, nullptr, nullptr, nullptr);
    EXPECT_OUTCOME(DeleteDC(dc), TRUE, kUnchanged);
}

} // namespace
