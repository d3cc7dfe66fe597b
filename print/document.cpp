// A printer's current settings: asking for them, changing them, and merging records.
#include "print/document.h"

#include <cstring>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/owners.h"
#include "print/devmode.h"
#include "print/global_block.h"
#include "wexelxi/documents.h"

using namespace wexelxi;

PrinterOffer wexelxi::OfferOf(const PrinterPPDEntry *printer)
{
    if (!printer)
        return {};
    const auto papers = static_cast<size_t>(printer->paperCount);
    const auto bins = static_cast<size_t>(printer->binCount);
    return {{printer->paperCodes, papers}, {printer->binCodes, bins}, printer->binNames};
}

void wexelxi::MergeDevModeSettings(const DEVMODE *source, DEVMODE *target)
{
    PrinterPPDEntry *from = nullptr;
    PrinterPPDEntry *to = nullptr;
    if (OpenPrinterOfRecord(target, &to) == 0)
        OpenPrinterOfRecord(source, &from);
    MergeSettings(source, target, OfferOf(from), OfferOf(to));
}

int32_t DocumentProperties(HWND, HPRINTER, const char *name, DEVMODE *out, const DEVMODE *in,
                           int32_t mode)
{
    LockScope lock;
    PrinterPPDEntry *printer = nullptr;
    if (OpenPrinterPPD(name, &printer) != 0)
        return FailWith(ERROR_INVALID_PRINTER_NAME, -1);
    DEVMODE *current = printer->currentDevMode;
    const size_t size = RecordBytes(current);
    if (mode == 0)
        return static_cast<int32_t>(size);
    if (((mode & DM_MODIFY) && !in) || ((mode & DM_COPY) && !out))
        return FailWith(ERROR_INVALID_PARAMETER, -1);

    const GlobalBlock<void> scratch(MakeDevModeHan(current));
    if (!scratch)
        return -1;
    if (mode & DM_MODIFY)
        MergeDevModeSettings(in, static_cast<DEVMODE *>(scratch.get()));
    const int32_t result = mode & DM_UPDATE ? PrinterProperties(scratch.get()) : IDOK;
    if (result != IDOK)
        return result;
    if (mode & (DM_UPDATE | DM_MODIFY)) {
        memcpy(current, scratch.get(), size);
        UpdatePPDDevMode(printer->printerName, printer->instanceName, current);
    }
    if (mode & DM_COPY)
        memcpy(out, current, size);
    return result;
}

void CopyDevModeSettings(HGLOBAL source, HGLOBAL target)
{
    LockScope lock;
    const LockedGlobal<const DEVMODE> from(source);
    const LockedGlobal<DEVMODE> to(target);
    if (from.get() && to.get())
        MergeDevModeSettings(from.get(), to.get());
}

void RestoreDefaultDevmode(DEVMODE *record)
{
    LockScope lock;
    PrinterPPDEntry *printer = nullptr;
    if (OpenPrinterOfRecord(record, &printer) != 0 || !printer) {
        SetLastError(ERROR_INVALID_PRINTER_NAME);
        return;
    }
    SetLastError(ERROR_SUCCESS);
    RestoreDefaults(printer->defaultDevMode, record);
}
