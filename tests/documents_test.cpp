// Document properties, merging of records with printers and without, and the print dialog's data.
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

#include "print/merge.h"
#include "support/last_error.h"
#include "support/library.h"
#include "support/private_cups.h"
#include "support/record.h"
#include "wexelxi.h"

using namespace wexelxi;

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
        {0, false, false, static_cast<int32_t>(wish.size()), ERROR_SUCCESS, 1},
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
        const TestRecord out(std::string(wish.size(), '\xEE'));
        const std::string untouched = out.bytes();
        EXPECT_OUTCOME(DocumentProperties(nullptr, nullptr, "ODD", row.out ? out.get() : nullptr,
                                          row.in ? wish.get() : nullptr, row.mode),
                       row.result, row.error);
        const TestRecord current = CurrentOf("odd");
        const bool copied = row.result == IDOK && (row.mode & DM_COPY);
        EXPECT_EQ(out.bytes(), copied ? current.bytes() : untouched);
        EXPECT_EQ(current->dmCopies, row.copies);
    }
    EXPECT_LAST_ERROR(RestoreDefaultDevmode(wish.get()), ERROR_SUCCESS);
    EXPECT_EQ(wish.bytes(), defaults);
    EXPECT_EQ(CurrentOf("odd")->dmCopies, 4);

    EXPECT_OUTCOME(DocumentProperties(nullptr, nullptr, "broken", nullptr, nullptr, 0), -1,
                   ERROR_INVALID_PRINTER_NAME);
    strcpy(wish->dmDeviceName, "broken");
    const std::string before = wish.bytes();
    EXPECT_LAST_ERROR(RestoreDefaultDevmode(wish.get()), ERROR_INVALID_PRINTER_NAME);
    EXPECT_EQ(wish.bytes(), before);
}

// Between printers, and from blocks that hold less than their record says, or no record at all.
TEST_F(Documents, RecordsPassBetweenPrinters)
{
    const struct {
        const char *source;
        size_t bytes; // of the source's block, of 785
        int16_t paper, bin;
        uint32_t error;
        int16_t paperAfter, binAfter, copiesAfter;
        const char *punchAfter;
    } rows[] = {
        {"odd", 785, DMPAPER_TABLOID, 258, ERROR_SUCCESS, DMPAPER_TABLOID, 258, 7, "010"},
        {"odd", 785, DMPAPER_ENV_DL, 999, ERROR_SUCCESS, DMPAPER_A4, 257, 7, "010"}, // not known
        {"gone/too", 785, DMPAPER_TABLOID, 256, ERROR_SUCCESS, DMPAPER_TABLOID, 257, 7, "010"},
        {"broken", 785, DMPAPER_TABLOID, 258, ERROR_INVALID_DATA, DMPAPER_TABLOID, 257, 7, "010"},
        {"odd", 784, DMPAPER_TABLOID, 258, ERROR_SUCCESS, DMPAPER_TABLOID, 258, 7, "010"},
        {"odd", 516, DMPAPER_TABLOID, 258, ERROR_SUCCESS, DMPAPER_TABLOID, 258, 7, "000"},
        {"odd", 407, DMPAPER_TABLOID, 258, ERROR_SUCCESS, DMPAPER_TABLOID, 257, 1, "000"},
        {"odd", 391, DMPAPER_TABLOID, 258, ERROR_SUCCESS, DMPAPER_A4, 257, 1, "000"},
        {"broken", 0, DMPAPER_TABLOID, 258, ERROR_SUCCESS, DMPAPER_A4, 257, 1, "000"},
    };
    const TestRecord own = CurrentOf("twin");
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.source) + " " + std::to_string(row.bytes));
        const TestRecord source = CurrentOf("odd");
        ASSERT_EQ(source.size(), 785u);
        strcpy(source->dmDeviceName, row.source);
        source->dmPaperSize = row.paper;
        source->dmDefaultSource = row.bin;
        source->dmCopies = 7;
        SetDevModeOptionValue(FindDevModeOption(source.get(), "Punch"), "top");
        HGLOBAL from = GlobalAlloc(0, static_cast<int32_t>(row.bytes));
        memcpy(from, source.data(), row.bytes);
        HGLOBAL to = MakeDevModeHan(own.get());
        EXPECT_LAST_ERROR(CopyDevModeSettings(from, to), row.error);
        const auto *result = static_cast<DEVMODE *>(to);
        EXPECT_STREQ(result->dmDeviceName, "twin");
        EXPECT_EQ(result->dmPaperSize, row.paperAfter);
        EXPECT_EQ(result->dmDefaultSource, row.binAfter);
        EXPECT_EQ(result->dmCopies, row.copiesAfter);
        EXPECT_EQ(Selected(FindDevModeOption(result, "Punch")), row.punchAfter);
        CopyDevModeSettings(from, from);
        EXPECT_LAST_ERROR(CopyDevModeSettings(nullptr, from), kUnchanged);
        EXPECT_EQ(memcmp(from, source.data(), row.bytes), 0);
        CopyDevModeSettings(to, from); // no further than it has, which its guard would show
        EXPECT_EQ(GlobalSize(from), row.bytes);
        GlobalFree(from);
        GlobalFree(to);
    }
}

TEST_F(Documents, PrintDialogStartsWithPrinterAndRecord)
{
    const TestRecord stored = CurrentOf("odd");
    stored->dmCopies = 7;
    const struct {
        const char *name;
        size_t bytes;        // of the record's block; 0 for none
        const char *outName; // null: the call fails
        int16_t copies;
        size_t size;
    } rows[] = {
        {nullptr, 0, "plain", 1, 516}, // the default printer
        {nullptr, 785, "odd", 7, 785}, // a copy of the record
        {"odd", 785, "odd", 7, 785},   // the same
        {"odd", 0, "odd", 1, 785},     // the printer's own settings
        {"ODD", 785, "ODD", 7, 785},   // another name
        {"twin", 785, "twin", 7, 785}, // merged into the printer's
        {"nobody/x", 785, "nobody/x", 7, 516},
        {"broken", 0, nullptr, 0, 0},
        {nullptr, 516, "odd", 7, 785}, // what the block lacks is zero
        {nullptr, 392, "odd", 0, 785},
        {nullptr, 391, "plain", 1, 516}, // no record
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.name ? row.name : "-") + " " + std::to_string(row.bytes));
        PRINTDLG dialog = {};
        dialog.hDevNames = row.name ? MakePrinterNameHan(row.name) : nullptr;
        dialog.hDevMode = row.bytes ? GlobalAlloc(0, static_cast<int32_t>(row.bytes)) : nullptr;
        if (row.bytes)
            memcpy(dialog.hDevMode, stored.data(), row.bytes);
        HGLOBAL outName = nullptr;
        HGLOBAL outRecord = nullptr;
        char *list = nullptr;
        EXPECT_OUTCOME(GetDevModeAndPrinterNameForPrintDlg(&dialog, &outName, &outRecord, &list),
                       row.outName != nullptr, row.outName ? ERROR_SUCCESS : ERROR_INVALID_DATA);
        EXPECT_STREQ(list, row.outName ? "plain" : nullptr);
        EXPECT_STREQ(static_cast<char *>(outName), row.outName);
        EXPECT_EQ(GlobalSize(outRecord), row.size);
        const auto *settings = static_cast<const DEVMODE *>(outRecord);
        EXPECT_EQ(settings ? settings->dmCopies : 0, row.copies);
        for (HGLOBAL handle : {outName, outRecord, dialog.hDevNames, dialog.hDevMode})
            GlobalFree(handle);
        FreePrinters(list);
    }
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
        {9, 256, 410, from, to, "FFopppscb------", 259},
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
    HDC dc = CreateIC(nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(dc);
    DeleteDC(dc);
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
}

} // namespace
