// Questions about papers and bins, answered out of a printer's rows.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

#include "core/lock.h"
#include "core/no_memory.h"
#include "print/document.h"
#include "wexelxi/printers.h"

using namespace wexelxi;

namespace {

template <typename Row>
int32_t GiveRows(const Row *rows, int32_t count, void *buffer)
{
    if (buffer)
        memcpy(buffer, rows, sizeof(Row) * static_cast<size_t>(count));
    return count;
}

int32_t GiveCapability(const PrinterPPDEntry *entry, uint16_t capability, void *buffer)
{
    switch (capability) {
    case DC_PAPERS:
        return GiveRows(entry->paperCodes, entry->paperCount, buffer);
    case DC_PAPERSIZE:
        return GiveRows(entry->paperSizes, entry->paperCount, buffer);
    case DC_PAPERNAMES:
        return GiveRows(entry->paperNames, entry->paperCount, buffer);
    case DC_PAPERMARGINS:
        return GiveRows(entry->paperMargins, entry->paperCount, buffer);
    case DC_BINS:
        return GiveRows(entry->binCodes, entry->binCount, buffer);
    case DC_BINNAMES:
        return GiveRows(entry->binNames, entry->binCount, buffer);
    default:
        return FailWith(ERROR_INVALID_PARAMETER, -1);
    }
}

int32_t RowOrFirst(int32_t row, int32_t count)
{
    return row >= 0 && row < count ? row : 0;
}

// False for a damaged record whose head ends in front of the fields of paper and bin. One that
// tells no size is the host's own, which it fills as it likes.
bool HoldsPaperAndBin(const DEVMODE *record)
{
    return RecordBytes(record) == 0 ||
           RecordView(record).headBytes() >= offsetof(DEVMODE, dmPrintQuality);
}

// The first row of that code, which is signed while the rows are not: a negative one has no row.
std::optional<int32_t> FindCode(const uint16_t *codes, int32_t count, int16_t code)
{
    const uint16_t *const found = std::find(codes, codes + count, static_cast<int32_t>(code));
    if (found == codes + count)
        return std::nullopt;
    return static_cast<int32_t>(found - codes);
}

template <size_t width>
void CopyName(const char (&row)[width], char *name)
{
    memcpy(name, row, width);
    name[width] = '\0';
}

// The entry of a record's printer. The lock is held for no longer: what an entry says of papers and
// bins never changes, and stays until TermCUPS.
const PrinterPPDEntry *EntryOfRecord(const DEVMODE *record)
{
    LockScope lock;
    return OrNoMemory<const PrinterPPDEntry *>(
        nullptr, [&] { return OpenPrinterEntry(RecordView(record).printerName()); });
}

} // namespace

int32_t DeviceCapabilities(const char *name, const char *, uint32_t capability, void *buffer,
                           const DEVMODE *)
{
    const auto number = static_cast<uint16_t>(capability);
    if (number == DC_FIELDS)
        return DM_ALLFIELDS;
    if (number == DC_COPIES)
        return 100;
    LockScope lock;
    return OrNoMemory(-1, [&] {
        const PrinterPPDEntry *entry = OpenPrinterEntry(name);
        return entry ? GiveCapability(entry, number, buffer) : -1;
    });
}

void GetPaperFromIndex(HPRINTERPPD printer, int32_t row, DEVMODE *record)
{
    LockScope lock;
    if (!printer || !HoldsPaperAndBin(record))
        return;
    const int32_t i = RowOrFirst(row, printer->paperCount);
    record->dmPaperSize = static_cast<int16_t>(printer->paperCodes[i]);
    record->dmPaperWidth = static_cast<int16_t>(printer->paperSizes[i].width);
    record->dmPaperLength = static_cast<int16_t>(printer->paperSizes[i].length);
}

void GetBinFromIndex(HPRINTERPPD printer, int32_t row, DEVMODE *record)
{
    LockScope lock;
    if (!printer || !HoldsPaperAndBin(record))
        return;
    record->dmDefaultSource =
        static_cast<int16_t>(printer->binCodes[RowOrFirst(row, printer->binCount)]);
}

void GetPaperName(const DEVMODE *record, char *name)
{
    *name = '\0';
    const PrinterPPDEntry *entry = EntryOfRecord(record);
    if (!entry || !HoldsPaperAndBin(record))
        return;
    if (const auto i = FindCode(entry->paperCodes, entry->paperCount, record->dmPaperSize))
        CopyName(entry->paperNames[*i], name);
}

void GetBinName(const DEVMODE *record, char *name)
{
    *name = '\0';
    const PrinterPPDEntry *entry = EntryOfRecord(record);
    if (!entry || entry->binCount < 2 || !HoldsPaperAndBin(record))
        return;
    if (const auto i = FindCode(entry->binCodes, entry->binCount, record->dmDefaultSource))
        CopyName(entry->binNames[*i], name);
}

BOOL GetDeviceMarginInfo(const char *name, int32_t paperCode, int32_t *left, int32_t *top,
                         int32_t *right, int32_t *bottom)
{
    LockScope lock;
    return OrNoMemory<BOOL>(FALSE, [&]() -> BOOL {
        const PrinterPPDEntry *entry = FindOrCreatePrinterPPD(SplitPrinterName(name));
        if (!entry)
            return FALSE;
        const auto i =
            FindCode(entry->paperCodes, entry->paperCount, static_cast<int16_t>(paperCode));
        if (!i)
            return FALSE;
        const DCPAPERMARGINS &margins = entry->paperMargins[*i];
        *left = margins.left;
        *top = margins.top;
        *right = margins.right;
        *bottom = margins.bottom;
        return TRUE;
    });
}

void UpdatePPD(const char *name, const char *instance, const DEVMODE *record)
{
    LockScope lock;
    OrNoMemory([&] {
        const PrinterPPDEntry *entry = FindOrCreatePrinterPPD(NameFromParts(name, instance));
        if (!entry)
            return;
        DEVMODE *current = entry->currentDevMode.get();
        if (record->dmSize == current->dmSize && record->dmDriverExtra == current->dmDriverExtra) {
            memmove(current, record, RecordBytes(record));
            return;
        }
        const uint32_t lastError = GetLastError();
        const PrinterPPDEntry *from = OpenPrinterEntry(RecordView(record).printerName());
        MergeSettings(record, current, OfferOf(from), OfferOf(entry));
        SetLastError(lastError);
    });
}
