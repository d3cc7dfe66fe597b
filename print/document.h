// Merging of records whose printers have to be asked.
#pragma once

#include "print/merge.h"
#include "print/printer_cache.h"
#include "wexelxi/memory.h"

namespace wexelxi {

// The printer's rows, for a merge; nothing for a null printer.
PrinterOffer OfferOf(const PrinterPPDEntry *printer);

// A record in a block of global memory, which it does not leave.
inline RecordView RecordInBlock(HGLOBAL block)
{
    return {static_cast<const DEVMODE *>(GlobalLock(block)), GlobalSize(block)};
}

// Opens the printer of the target, then that of the source, and pours the source's settings into
// the target. A printer whose PPD fails offers nothing: if it is the target's, the source's is not
// opened, and neither paper nor bin passes; if it is the source's, the paper has passed and the bin
// does not. Leaves last error as the last opening did: 0, 2 or 13. Call it with the global lock
// held. Without memory it throws, and the target is as it was.
void MergeDevModeSettings(const RecordView &source, const RecordView &target);

} // namespace wexelxi
