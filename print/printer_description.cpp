#include "print/printer_description.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <vector>

#include "print/pipe_signal.h"
#include "print/ppd_rows.h"
#include "wexelxi/core.h"
#include "wexelxi/preferences.h"

namespace wexelxi {

namespace {

constexpr uint32_t kDefaultTrayText = 21;

// Setting of a margin in millimetres as tenths.
int32_t MarginFromSetting(int32_t millimetres)
{
    return static_cast<int32_t>(static_cast<uint32_t>(millimetres) * 10);
}

std::vector<PaperRow> BuildDefaultPaperList()
{
    // GetSystemMetrics gives the same two numbers, and would clear the last error.
    const int32_t x = MarginFromSetting(gPrinterXMargin);
    const int32_t y = MarginFromSetting(gPrinterYMargin);
    std::vector<PaperRow> papers;
    for (const PaperTableRow &paper : gPaperTable) {
        PaperRow row;
        FillNameRow(row.name, TextInForce(paper.string));
        row.code = static_cast<uint16_t>(paper.code);
        row.size = {TenthsFromMicrometres(static_cast<int32_t>(paper.width)),
                    TenthsFromMicrometres(static_cast<int32_t>(paper.length))};
        row.margins = {x, y, x, y};
        papers.push_back(row);
    }
    return papers;
}

void StorePapers(std::vector<PaperRow> papers, PrinterDescription &printer)
{
    if (papers.empty())
        papers = BuildDefaultPaperList();
    SortPaperList(papers);
    const size_t count = papers.size();
    printer.paperCount = static_cast<int32_t>(count);
    printer.paperNames = std::make_unique<char[][CCHPAPERNAME]>(count);
    printer.paperCodes = std::make_unique<uint16_t[]>(count);
    printer.paperSizes = std::make_unique<DCPAPERSIZE[]>(count);
    printer.paperMargins = std::make_unique<DCPAPERMARGINS[]>(count);
    for (size_t i = 0; i < count; i++) {
        memcpy(printer.paperNames[i], papers[i].name, sizeof papers[i].name);
        printer.paperCodes[i] = papers[i].code;
        printer.paperSizes[i] = papers[i].size;
        printer.paperMargins[i] = papers[i].margins;
    }
}

void StoreBins(std::vector<BinRow> bins, PrinterDescription &printer)
{
    if (bins.empty()) {
        BinRow &row = bins.emplace_back();
        FillNameRow(row.name, TextInForce(kDefaultTrayText));
        row.code = DMBIN_USER;
    }
    const size_t count = bins.size();
    printer.binCount = static_cast<int32_t>(count);
    printer.binNames = std::make_unique<char[][CCHBINNAME]>(count);
    printer.binCodes = std::make_unique<uint16_t[]>(count);
    for (size_t i = 0; i < count; i++) {
        memcpy(printer.binNames[i], bins[i].name, sizeof bins[i].name);
        printer.binCodes[i] = bins[i].code;
    }
}

// Fetches a printer's PPD; the path stays empty for a printer without one.
void FetchPPD(const char *printer, TemporaryFile &file)
{
    const PipeSignalScope scope;
    if (const char *path = cupsGetPPD(printer)) // the next call overwrites the text
        snprintf(file.path, sizeof file.path, "%s", path);
}

} // namespace

const char *TextInForce(uint32_t number)
{
    const char *text = GetWinString(number);
    return text ? text : gDefaultStrings[number];
}

TemporaryFile::~TemporaryFile()
{
    if (*path)
        unlink(path);
}

std::shared_ptr<const PrinterDescription> DescribePrinter(const char *printer)
{
    auto description = std::make_shared<PrinterDescription>();
    FetchPPD(printer, description->file);
    if (*description->file.path) {
        const uint32_t error = OpenPPDFile(description->file.path, description->ppd);
        if (error != ERROR_SUCCESS) {
            SetLastError(error);
            return nullptr;
        }
    }
    ppd_file_t *ppd = description->ppd.ppd.get();
    StorePapers(ppd ? EnumPapers(ppd) : std::vector<PaperRow>{}, *description);
    StoreBins(ppd ? EnumBins(ppd) : std::vector<BinRow>{}, *description);
    return description;
}

} // namespace wexelxi
