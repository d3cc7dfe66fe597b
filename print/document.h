// Merging of records whose printers have to be asked.
#pragma once

#include "print/merge.h"
#include "print/printer_cache.h"

namespace wexelxi {

// The printer's rows, for a merge; nothing for a null printer.
PrinterOffer OfferOf(const PrinterPPDEntry *printer);

// Opens the printer of the target and then that of the source, and pours the source's settings into
// the target. Call it with the global lock held. Leaves last error as OpenPrinterPPD did: 0, or 2
// or 13 for a printer whose PPD fails; paper and bin then stay as the target has them.
void MergeDevModeSettings(const DEVMODE *source, DEVMODE *target);

} // namespace wexelxi
