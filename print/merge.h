// Pouring the settings of one record into another: pure, on records that may be damaged.
#pragma once

#include <cstdint>
#include <span>

#include "print/devmode.h"
#include "wexelxi/printers.h"

namespace wexelxi {

// What a printer can do, in its own order; binNames has a row for each bin code.
struct PrinterOffer {
    std::span<const uint16_t> paperCodes;
    std::span<const uint16_t> binCodes;
    const char (*binNames)[CCHBINNAME];
};

// Pours the settings of source into target as far as the target and its printer know them. The
// target keeps its identity, its size and the shape of its options; the source is not changed. The
// paper passes if the target's printer has its code, the bin if it has one of the same name: codes
// of bins are positions in one printer's list. A printer that could not be opened offers nothing.
// Fields that a short head lacks do not pass. A merge of a record into itself changes nothing.
void MergeSettings(const RecordView &source, const RecordView &target,
                   const PrinterOffer &sourcePrinter, const PrinterOffer &targetPrinter);

// Makes record read as defaults does. One of another shape keeps its dmSize and dmDriverExtra, and
// the options pass as in a merge.
void RestoreDefaults(const DEVMODE *defaults, DEVMODE *record);

} // namespace wexelxi
