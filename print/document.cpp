// A printer's current settings: asking for them, changing them, and merging records.
#include "print/document.h"

#include <cstring>

#include "core/lock.h"
#include "core/no_memory.h"
#include "wexelxi/documents.h"

using namespace wexelxi;

namespace {

// What the printers of a merge's two records offer.
struct Offers {
    PrinterOffer source = {};
    PrinterOffer target = {};
};

Offers AskPrinters(const RecordView &source, const RecordView &target)
{
    const PrinterPPDEntry *const to = OpenPrinterEntry(target.printerName());
    if (!to)
        return {};
    return {OfferOf(OpenPrinterEntry(source.printerName())), OfferOf(to)};
}

int32_t ChangeSettings(DEVMODE *current, const DEVMODE *in, int32_t mode)
{
    Offers offers;
    if (mode & DM_MODIFY)
        offers = AskPrinters(in, current);
    if (mode & DM_UPDATE) // as PrinterProperties, which accepts nothing: so nothing is changed
        return IDCANCEL;
    if (mode & DM_MODIFY)
        MergeSettings(in, current, offers.source, offers.target);
    return IDOK;
}

} // namespace

PrinterOffer wexelxi::OfferOf(const PrinterPPDEntry *printer)
{
    if (!printer)
        return {};
    const auto papers = static_cast<size_t>(printer->paperCount);
    const auto bins = static_cast<size_t>(printer->binCount);
    return {{printer->paperCodes, papers}, {printer->binCodes, bins}, printer->binNames};
}

void wexelxi::MergeDevModeSettings(const RecordView &source, const RecordView &target)
{
    AssertLockHeld();
    const Offers offers = AskPrinters(source, target);
    MergeSettings(source, target, offers.source, offers.target);
}

int32_t DocumentProperties(HWND, HPRINTER, const char *name, DEVMODE *out, const DEVMODE *in,
                           int32_t mode)
{
    LockScope lock;
    return OrNoMemory(-1, [&] {
        const PrinterPPDEntry *printer = OpenPrinterEntry(name);
        if (!printer)
            return FailWith(ERROR_INVALID_PRINTER_NAME, -1);
        DEVMODE *current = printer->currentDevMode.get();
        const size_t size = RecordBytes(current);
        if (mode == 0)
            return static_cast<int32_t>(size);
        if (((mode & DM_MODIFY) && !in) || ((mode & DM_COPY) && !out))
            return FailWith(ERROR_INVALID_PARAMETER, -1);
        const int32_t result = ChangeSettings(current, in, mode);
        if (result == IDOK && (mode & DM_COPY))
            memcpy(out, current, size);
        return result;
    });
}

void CopyDevModeSettings(HGLOBAL source, HGLOBAL target)
{
    LockScope lock;
    if (!source || !target)
        return;
    OrNoMemory([&] { MergeDevModeSettings(RecordInBlock(source), RecordInBlock(target)); });
}

void RestoreDefaultDevmode(DEVMODE *record)
{
    LockScope lock;
    OrNoMemory([&] {
        const PrinterPPDEntry *printer = OpenPrinterEntry(RecordView(record).printerName());
        if (!printer)
            return SetLastError(ERROR_INVALID_PRINTER_NAME);
        RestoreDefaults(printer->defaultDevMode.get(), record);
    });
}
