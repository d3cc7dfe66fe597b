// The cache of printers: a list of entries with the newest at the front. The list, the entries and
// their current records are guarded by the global lock; rows never change once made.
#include "print/printer_cache.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "core/lock.h"
#include "print/destinations.h"
#include "print/devmode.h"
#include "print/devmode_build.h"
#include "print/ppd_file.h"
#include "print/ppd_rows.h"
#include "wexelxi/core.h"
#include "wexelxi/preferences.h"

namespace wexelxi {

namespace {

PrinterPPDEntry *gPrinterPPDList;

constexpr uint32_t kDefaultTrayText = 21;
constexpr uint32_t kUnknownText = 86;

void FreeEntry(PrinterPPDEntry *entry)
{
    if (!entry->instanceName) {
        if (entry->ppd)
            ppdClose(entry->ppd);
        if (entry->ppdStream)
            fclose(entry->ppdStream);
        if (entry->ppdPath)
            unlink(entry->ppdPath);
        for (void *memory :
             {static_cast<void *>(entry->ppdPath), static_cast<void *>(entry->paperNames),
              static_cast<void *>(entry->paperCodes), static_cast<void *>(entry->paperSizes),
              static_cast<void *>(entry->paperMargins), static_cast<void *>(entry->binNames),
              static_cast<void *>(entry->binCodes)})
            free(memory);
    }
    free(entry->printerName);
    free(entry->instanceName);
    free(entry->currentDevMode);
    free(entry->defaultDevMode);
    free(entry);
}

struct FreeEntryAndParts {
    void operator()(PrinterPPDEntry *entry) const { FreeEntry(entry); }
};
using Entry = std::unique_ptr<PrinterPPDEntry, FreeEntryAndParts>;

template <typename T>
T *AllocRows(size_t count)
{
    return static_cast<T *>(calloc(count, sizeof(T)));
}

// The text in force, or before the settings are loaded the built-in one.
const char *TextOf(uint32_t index)
{
    const char *text = GetWinString(index);
    return text ? text : gDefaultStrings[index];
}

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
    papers.reserve(gPaperTable.size());
    for (const PaperTableRow &paper : gPaperTable) {
        PaperRow row;
        FillNameRow(row.name, TextOf(paper.string));
        row.code = static_cast<uint16_t>(paper.code);
        row.size = {TenthsFromMicrometres(static_cast<int32_t>(paper.width)),
                    TenthsFromMicrometres(static_cast<int32_t>(paper.length))};
        row.margins = {x, y, x, y};
        papers.push_back(row);
    }
    return papers;
}

void StorePapers(std::vector<PaperRow> papers, PrinterPPDEntry *entry)
{
    if (papers.empty())
        papers = BuildDefaultPaperList();
    SortPaperList(papers);
    const size_t count = papers.size();
    entry->paperCount = static_cast<int32_t>(count);
    entry->paperNames = AllocRows<char[CCHPAPERNAME]>(count);
    entry->paperCodes = AllocRows<uint16_t>(count);
    entry->paperSizes = AllocRows<DCPAPERSIZE>(count);
    entry->paperMargins = AllocRows<DCPAPERMARGINS>(count);
    for (size_t i = 0; i < count; i++) {
        memcpy(entry->paperNames[i], papers[i].name, sizeof papers[i].name);
        entry->paperCodes[i] = papers[i].code;
        entry->paperSizes[i] = papers[i].size;
        entry->paperMargins[i] = papers[i].margins;
    }
}

void StoreBins(std::vector<BinRow> bins, PrinterPPDEntry *entry)
{
    if (bins.empty()) {
        BinRow &row = bins.emplace_back();
        FillNameRow(row.name, TextOf(kDefaultTrayText));
        row.code = DMBIN_USER;
    }
    const size_t count = bins.size();
    entry->binCount = static_cast<int32_t>(count);
    entry->binNames = AllocRows<char[CCHBINNAME]>(count);
    entry->binCodes = AllocRows<uint16_t>(count);
    for (size_t i = 0; i < count; i++) {
        memcpy(entry->binNames[i], bins[i].name, sizeof bins[i].name);
        entry->binCodes[i] = bins[i].code;
    }
}

// The printer's settings now: the PPD's defaults, and what the user has saved for this instance.
Record BuildDevModeFromPPD(const char *printer, const char *instance, ppd_file_t *ppd)
{
    Record record = BuildDevMode(FullPrinterName(printer, instance), TextOf(kUnknownText), ppd);
    if (!ppd)
        return record;
    const Destinations destinations;
    if (const cups_dest_t *found = destinations.find(printer, instance)) {
        const size_t count = found->num_options > 0 ? static_cast<size_t>(found->num_options) : 0;
        ApplySavedOptions({found->options, count}, ppd, record.get());
    }
    return record;
}

void StoreRecords(Record record, PrinterPPDEntry *entry)
{
    const size_t bytes = RecordBytes(record.get());
    entry->defaultDevMode = static_cast<DEVMODE *>(malloc(bytes));
    memcpy(entry->defaultDevMode, record.get(), bytes);
    entry->currentDevMode = record.release();
}

PrinterPPDEntry *AddToList(Entry entry)
{
    entry->next = gPrinterPPDList;
    gPrinterPPDList = entry.release();
    return gPrinterPPDList;
}

// Fetches and parses a printer's PPD into the entry; a printer without one leaves it empty. False
// with the last error set if there is one that cannot be used; its file is removed then.
bool FetchPPD(PrinterPPDEntry *entry)
{
    const char *path = cupsGetPPD(entry->printerName);
    if (!path)
        return true;
    entry->ppdPath = strdup(path); // the next call overwrites the text
    PPDFile file;
    const uint32_t error = OpenPPDFile(entry->ppdPath, file);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return false;
    }
    entry->ppdStream = file.stream.release();
    entry->ppd = file.ppd.release();
    return true;
}

PrinterPPDEntry *MakePrinterEntry(std::string_view printer)
{
    Entry entry(AllocRows<PrinterPPDEntry>(1));
    entry->printerName = strndup(printer.data(), printer.size());
    if (!FetchPPD(entry.get()))
        return nullptr;
    ppd_file_t *ppd = entry->ppd;
    StorePapers(ppd ? EnumPapers(ppd) : std::vector<PaperRow>{}, entry.get());
    StoreBins(ppd ? EnumBins(ppd) : std::vector<BinRow>{}, entry.get());
    StoreRecords(BuildDevModeFromPPD(entry->printerName, nullptr, ppd), entry.get());
    return AddToList(std::move(entry));
}

PrinterPPDEntry *MakeInstanceEntry(std::string_view printer, const char *instance)
{
    PrinterPPDEntry *base = nullptr;
    if (FindOrCreatePrinterPPD(printer, nullptr, &base) != 0)
        return nullptr;
    Entry entry(AllocRows<PrinterPPDEntry>(1));
    *entry = *base; // the PPD and the rows, which stay the printer's
    entry->instanceName = strdup(instance);
    entry->printerName = strndup(printer.data(), printer.size());
    entry->currentDevMode = entry->defaultDevMode = nullptr;
    StoreRecords(BuildDevModeFromPPD(entry->printerName, instance, base->ppd), entry.get());
    return AddToList(std::move(entry));
}

bool IsEntryOf(const PrinterPPDEntry *entry, std::string_view printer, const char *instance)
{
    if (!entry->instanceName != !instance)
        return false;
    return EqualWithoutCase(entry->printerName, printer) &&
           (!instance || strcasecmp(entry->instanceName, instance) == 0);
}

PrinterPPDEntry *FindEntry(std::string_view printer, const char *instance)
{
    PrinterPPDEntry *entry = gPrinterPPDList;
    while (entry && !IsEntryOf(entry, printer, instance))
        entry = entry->next;
    return entry;
}

} // namespace

PrinterName SplitPrinterName(const char *name)
{
    const char *slash = strchr(name, '/');
    if (!slash)
        return {name, nullptr};
    return {{name, static_cast<size_t>(slash - name)}, slash + 1};
}

int32_t FindOrCreatePrinterPPD(std::string_view printer, const char *instance,
                               PrinterPPDEntry **entry)
{
    PrinterPPDEntry *found = FindEntry(printer, instance);
    if (!found)
        found = instance ? MakeInstanceEntry(printer, instance) : MakePrinterEntry(printer);
    if (!found)
        return -1;
    *entry = found;
    return 0;
}

int32_t OpenPrinterOfRecord(const DEVMODE *record, PrinterPPDEntry **entry)
{
    return OpenPrinterPPD(PrinterNameOf(record).c_str(), entry);
}

} // namespace wexelxi

using namespace wexelxi;

int32_t OpenPrinterPPD(const char *name, HPRINTERPPD *printer)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    *printer = nullptr;
    const PrinterName parts = SplitPrinterName(name);
    return FindOrCreatePrinterPPD(parts.printer, parts.instance, printer);
}

void InitCUPS(void) {}

void TermCUPS(void)
{
    while (PrinterPPDEntry *entry = gPrinterPPDList) {
        gPrinterPPDList = entry->next;
        FreeEntry(entry);
    }
}
