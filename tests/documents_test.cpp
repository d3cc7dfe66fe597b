// Document properties, merging between real printers, and the print dialog's data.
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

#include "support/library.h"
#include "support/private_cups.h"
#include "support/record.h"
#include "wexelxi.h"

namespace {

// "name" or "name/Text for people"; the first is the default.
std::string OptionText(const std::string &keyword, const char *ui,
                       const std::vector<std::string> &choices)
{
    std::string text = "*OpenUI *" + keyword + "/Option: " + ui + "\n*Default" + keyword + ": " +
                       choices[0].substr(0, choices[0].find('/')) + "\n";
    for (const std::string &choice : choices)
        text += "*" + keyword + " " + choice + ": \"\"\n";
    return text + "*CloseUI: *" + keyword + "\n";
}

// A PPD whose papers are A4 and what else is told: "name width length" in points.
std::string PpdText(const std::string &model, const std::string &paper, const std::string &size,
                    const std::string &options)
{
    const std::vector<std::string> papers = {"A4", paper};
    return "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n"
           "*LanguageVersion: English\n*LanguageEncoding: ISOLatin1\n*PCFileName: \"T.PPD\"\n"
           "*Manufacturer: \"Maker\"\n*Product: \"(T)\"\n*PSVersion: \"(3010.000) 0\"\n"
           "*ModelName: \"" +
           model + "\"\n*ShortNickName: \"" + model + "\"\n*NickName: \"" + model + "\"\n" +
           OptionText("PageSize", "PickOne", papers) + OptionText("PageRegion", "PickOne", papers) +
           "*DefaultImageableArea: A4\n*ImageableArea A4: \"10 10 585 832\"\n*ImageableArea " +
           paper +
           ": \"10 10 200 200\"\n*DefaultPaperDimension: A4\n"
           "*PaperDimension A4: \"595 842\"\n*PaperDimension " +
           paper + ": \"" + size + "\"\n" + options;
}

// Two printers with PPDs, one whose PPD gets damaged, and one without.
class Documents : public testing::Test {
protected:
    void SetUp() override
    {
        SKIP_WITHOUT_CUPS(cups);
        const std::string letter =
            PpdText("Letterer", "Letter", "612 792",
                    OptionText("InputSlot", "PickOne", {"Up/Upper", "Low/Lower"}) +
                        OptionText("Quality", "PickOne", {"Draft", "Fine", "Photo"}) +
                        OptionText("Finish", "PickMany", {"None", "Staple", "Punch"}));
        const std::string legal =
            PpdText("Legaller", "Legal", "612 1008",
                    OptionText("InputSlot", "PickOne", {"A/Manual", "B/Lower", "C/upper"}) +
                        OptionText("Quality", "PickOne", {"fine", "draft"}) +
                        OptionText("Finish", "PickMany", {"Punch", "Fold"}) +
                        OptionText("Toner", "PickOne", {"Full", "Save"}));
        WriteWholeFile(cups.folder.file("letter.ppd"), letter);
        WriteWholeFile(cups.folder.file("legal.ppd"), legal);
        ASSERT_TRUE(cups.AddPrinter("letter", cups.folder.file("letter.ppd")));
        ASSERT_TRUE(cups.AddPrinter("legal", cups.folder.file("legal.ppd")));
        ASSERT_TRUE(cups.AddPrinter("broken", cups.folder.file("legal.ppd")));
        cups.ReplacePPD("broken", "no PPD at all\n");
        ASSERT_TRUE(cups.SetDefault("legal"));
        library.emplace();
    }

    // A record in memory of its own size, as mode 2 gives it.
    static TestRecord CurrentOf(const char *name)
    {
        const int32_t size = DocumentProperties(nullptr, nullptr, name, nullptr, nullptr, 0);
        TestRecord record(std::string(static_cast<size_t>(size), '\xEE'));
        EXPECT_EQ(DocumentProperties(nullptr, nullptr, name, record.get(), nullptr, DM_COPY), IDOK);
        return record;
    }

    static std::string SelectedOf(const DEVMODE *record, const char *keyword)
    {
        const DEVMODEOPTION *option = FindDevModeOption(record, keyword);
        return option ? Selected(option) : "no " + std::string(keyword);
    }

    PrivateCups cups;
    std::optional<StartedLibrary> library;
};

TEST_F(Documents, ModesActAsTold)
{
    const TestRecord wish = CurrentOf("letter");
    wish->dmCopies = 4;
    const struct {
        int32_t mode;
        bool in;
        bool out;
        int32_t result;
        uint32_t error;
        bool copied;
        int16_t copies; // of the current record afterwards
    } rows[] = {
        {0, false, false, static_cast<int32_t>(wish.size()), 0, false, 1},
        {2, false, true, 1, 0, true, 1},
        {4, false, false, 1, 0, false, 1},
        {1, false, false, 2, 0, false, 1},
        {11, true, true, 2, 0, false, 1},
        {8, false, true, -1, 87, false, 1},
        {10, true, false, -1, 87, false, 1},
        {9, false, false, -1, 87, false, 1},
        {8, true, true, 1, 0, false, 4},
        {10, true, true, 1, 0, true, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.mode);
        const TestRecord out(std::string(wish.size(), '\xEE'));
        const std::string untouched = out.bytes();
        SetLastError(55);
        EXPECT_EQ(DocumentProperties(nullptr, nullptr, "LETTER", row.out ? out.get() : nullptr,
                                     row.in ? wish.get() : nullptr, row.mode),
                  row.result);
        EXPECT_EQ(GetLastError(), row.error);
        const TestRecord current = CurrentOf("letter");
        EXPECT_EQ(out.bytes(), row.copied ? current.bytes() : untouched);
        EXPECT_EQ(current->dmCopies, row.copies);
    }
    const std::string changed = wish.bytes();
    RestoreDefaultDevmode(wish.get());
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(wish->dmCopies, 1);
    EXPECT_EQ(CurrentOf("letter").bytes(), changed);

    for (int32_t mode : {0, 2, 8})
        EXPECT_EQ(DocumentProperties(nullptr, nullptr, "broken", wish.get(), wish.get(), mode), -1);
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
    const TestRecord source = CurrentOf("letter");
    source->dmOrientation = DMORIENT_LANDSCAPE;
    source->dmJobSheetEnd = DMJOBSHEET_SECRET;
    source->dmDefaultSource = 257; // Lower
    SetDevModeOptionValue(FindDevModeOption(source.get(), "Quality"), "Draft");
    SetDevModeOptionValue(FindDevModeOption(source.get(), "Finish"), "Staple");
    const TestRecord own = CurrentOf("legal");
    const TestRecord merged = CurrentOf("legal");
    SetLastError(55);
    EXPECT_EQ(DocumentProperties(nullptr, nullptr, "legal", merged.get(), source.get(),
                                 DM_MODIFY | DM_COPY),
              IDOK);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_STREQ(merged->dmDeviceName, "legal");
    EXPECT_STREQ(merged->dmModelName, own->dmModelName);
    EXPECT_EQ(merged->dmOrientation, DMORIENT_LANDSCAPE);
    EXPECT_EQ(merged->dmJobSheetEnd, DMJOBSHEET_SECRET);
    EXPECT_EQ(merged->dmDefaultSource, 257);
    EXPECT_EQ(SelectedOf(merged.get(), "Quality"), "01");
    EXPECT_EQ(SelectedOf(merged.get(), "Finish"), "10"); // Staple is not there: Punch stays
    EXPECT_EQ(SelectedOf(merged.get(), "Toner"), "10");

    // Paper and bin pass where the printer has them.
    const struct {
        const char *name;
        int16_t paper;
        int16_t bin;
        uint32_t error;
        int16_t paperAfter;
        int16_t binAfter;
    } rows[] = {
        {"letter", DMPAPER_A4, 256, 0, DMPAPER_A4, 258},        // "Upper" is not "upper"
        {"letter", DMPAPER_LETTER, 257, 0, DMPAPER_LEGAL, 257}, // both have "Lower"
        {"letter", DMPAPER_A4, 300, 0, DMPAPER_A4, 258},        // no such bin there
        {"gone/too", DMPAPER_A4, 256, 0, DMPAPER_A4, 258},      // "Default Tray" is not here
        {"broken", DMPAPER_A4, 256, 13, DMPAPER_A4, 258},       // the paper asks the target only
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        strcpy(source->dmDeviceName, row.name);
        source->dmPaperSize = row.paper;
        source->dmDefaultSource = row.bin;
        const TestRecord target(own.bytes());
        target->dmPaperSize = DMPAPER_LEGAL;
        target->dmDefaultSource = 258;
        HGLOBAL from = MakeDevModeHan(source.get());
        HGLOBAL to = MakeDevModeHan(target.get());
        SetLastError(55);
        CopyDevModeSettings(from, to);
        EXPECT_EQ(GetLastError(), row.error);
        const auto *result = static_cast<DEVMODE *>(to);
        EXPECT_EQ(result->dmPaperSize, row.paperAfter);
        EXPECT_EQ(result->dmDefaultSource, row.binAfter);
        EXPECT_EQ(result->dmJobSheetEnd, DMJOBSHEET_SECRET);
        EXPECT_EQ(memcmp(from, source.data(), source.size()), 0);
        EXPECT_EQ(GlobalSize(to), target.size());
        CopyDevModeSettings(from, from);
        EXPECT_EQ(memcmp(from, source.data(), source.size()), 0);
        CopyDevModeSettings(nullptr, to);
        CopyDevModeSettings(from, nullptr);
        GlobalFree(from);
        GlobalFree(to);
    }

    // To a printer without a PPD, and to one that cannot be opened.
    strcpy(source->dmDeviceName, "letter");
    TestRecord plain = CurrentOf("nobody");
    EXPECT_EQ(plain.size(), 516u);
    source->dmPaperSize = DMPAPER_A3;
    EXPECT_EQ(DocumentProperties(nullptr, nullptr, "nobody", plain.get(), source.get(), 10), IDOK);
    EXPECT_EQ(plain->dmPaperSize, DMPAPER_A3);
    EXPECT_STREQ(plain->dmDeviceName, "nobody");
}

TEST_F(Documents, PrintDialogStartsWithPrinterAndRecord)
{
    const TestRecord stored = CurrentOf("letter");
    stored->dmCopies = 7;
    HGLOBAL record = MakeDevModeHan(stored.get());
    const struct {
        const char *name;
        bool record;
        const char *outName; // null: the call fails
        int16_t copies;
        uint32_t error;
    } rows[] = {
        {nullptr, false, "legal", 1, 0},   // the default printer
        {nullptr, true, "letter", 7, 0},   // a copy of the record
        {"letter", true, "letter", 7, 0},  // the same
        {"letter", false, "letter", 1, 0}, // the printer's own settings
        {"LETTER", true, "LETTER", 7, 0},  // merged into the printer's
        {"legal", true, "legal", 7, 0},    // likewise
        {"nobody/x", true, "nobody/x", 7, 0}, {"broken", false, nullptr, 0, 13},
        {"broken", true, nullptr, 0, 13},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.name ? row.name : "-") + (row.record ? " record" : ""));
        PRINTDLG dialog = {};
        dialog.hDevNames = row.name ? MakePrinterNameHan(row.name) : nullptr;
        dialog.hDevMode = row.record ? record : nullptr;
        HGLOBAL outName = &dialog;
        HGLOBAL outRecord = &dialog;
        char *list = nullptr;
        SetLastError(55);
        const BOOL done = GetDevModeAndPrinterNameForPrintDlg(&dialog, &outName, &outRecord, &list);
        EXPECT_EQ(GetLastError(), row.error);
        ASSERT_EQ(done, row.outName != nullptr);
        if (!done) {
            EXPECT_EQ(outName, &dialog);
            EXPECT_EQ(outRecord, &dialog);
            EXPECT_EQ(list, nullptr);
        } else {
            EXPECT_STREQ(list, "legal");
            EXPECT_STREQ(static_cast<char *>(outName), row.outName);
            EXPECT_EQ(GlobalSize(outName), strlen(row.outName) + 1);
            const auto *settings = static_cast<const DEVMODE *>(outRecord);
            EXPECT_EQ(settings->dmCopies, row.copies);
            EXPECT_EQ(GlobalSize(outRecord), settings->dmSize + settings->dmDriverExtra);
            EXPECT_NE(outName, dialog.hDevNames);
            EXPECT_NE(outRecord, record);
            GlobalFree(outName);
            GlobalFree(outRecord);
            FreePrinters(list);
        }
        EXPECT_EQ(memcmp(record, stored.data(), stored.size()), 0);
        GlobalFree(dialog.hDevNames);
    }
    GlobalFree(record);
}

TEST(DocumentsAlone, NoSchedulerMeansNoPrinters)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    StartedLibrary library;
    PRINTDLG dialog = {};
    HGLOBAL name = &dialog;
    HGLOBAL record = &dialog;
    char list[] = "untouched";
    char *outList = list;
    SetLastError(55);
    EXPECT_EQ(GetDevModeAndPrinterNameForPrintDlg(&dialog, &name, &record, &outList), 0);
    EXPECT_EQ(GetLastError(), 55u);
    EXPECT_EQ(name, &dialog);
    EXPECT_EQ(record, &dialog);
    EXPECT_EQ(outList, list);
    EXPECT_EQ(DocumentProperties(nullptr, nullptr, "any", nullptr, nullptr, 0), 516);

    // A record that is damaged, even without a name's end, is no more than a poor source.
    const TestRecord damaged(std::string(516, '\xFF'));
    damaged->dmSize = 516;
    damaged->dmDriverExtra = 0;
    EXPECT_EQ(DocumentProperties(nullptr, nullptr, "any", nullptr, damaged.get(), DM_MODIFY), IDOK);
    RestoreDefaultDevmode(damaged.get());
    EXPECT_EQ(damaged->dmCopies, 1);
    EXPECT_EQ(damaged->dmDeviceName[126], '\xFF');
}

TEST(DocumentsAlone, ThreadsSeeWholeRecords)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    StartedLibrary library;
    std::atomic<int> torn = 0;
    const auto change = [&torn](int16_t number) {
        TestRecord wish({}, 516, "other");
        wish->dmCopies = wish->dmScale = number;
        wish->dmJobSheetEnd = number;
        HPRINTERPPD printer = nullptr;
        OpenPrinterPPD("shared", &printer);
        for (int i = 0; i < 200; i++) {
            DocumentProperties(nullptr, nullptr, "shared", nullptr, wish.get(), DM_MODIFY);
            HGLOBAL copy = GetCopyOfDevmodeFromPPD(printer);
            const auto *record = static_cast<const DEVMODE *>(copy);
            torn += record->dmCopies != record->dmScale || record->dmScale != record->dmJobSheetEnd;
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
    EXPECT_EQ(PrinterProperties(nullptr), 2);
    UpdatePPDDevMode(nullptr, nullptr, nullptr);
    EXPECT_EQ(GetLastError(), 55u);
    HDC information = CreateIC(nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(GetDeviceCaps(information, LOGPIXELSX), 254);
    DeleteDC(information);
}

} // namespace
