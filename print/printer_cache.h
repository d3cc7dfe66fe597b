// What is known about the printers that have been asked about: one entry for each printer and for
// each instance of one, made at the first question and kept until TermCUPS.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "wexelxi/printers.h"

struct ppd_file_s;

// The record behind an HPRINTERPPD. All memory in it comes from malloc. An instance's entry shares
// the PPD and the rows with its printer's entry, which owns them.
struct PrinterPPDEntry {
    PrinterPPDEntry *next;
    char *printerName;  // as first asked for, without the instance
    char *instanceName; // null in a printer's own entry
    char *ppdPath;      // the temporary file; this and the next two are null without a PPD
    FILE *ppdStream;
    ppd_file_s *ppd;
    int32_t paperCount; // rows in each of the next four
    char (*paperNames)[CCHPAPERNAME];
    uint16_t *paperCodes;
    DCPAPERSIZE *paperSizes;
    DCPAPERMARGINS *paperMargins;
    int32_t binCount; // rows in each of the next two
    char (*binNames)[CCHBINNAME];
    uint16_t *binCodes;
    DEVMODE *currentDevMode; // what callers are given; the address never changes
    DEVMODE *defaultDevMode; // as first built
};

namespace wexelxi {

// A printer name, split at its first slash. The instance points into the text, or is null.
struct PrinterName {
    std::string_view printer;
    const char *instance;
};
PrinterName SplitPrinterName(const char *name);

// Finds the entry or makes it. Call it with the global lock held. 0 with the entry stored; else -1
// with last error 2 (the PPD cannot be opened) or 13 (it does not parse) and nothing stored. The
// last error is left alone otherwise.
int32_t FindOrCreatePrinterPPD(std::string_view printer, const char *instance,
                               PrinterPPDEntry **entry);

// OpenPrinterPPD for the printer that a record names; reads no further than its dmDeviceName. Takes
// the lock and stores last error 0, 2 or 13, and null in *entry on failure.
int32_t OpenPrinterOfRecord(const DEVMODE *record, PrinterPPDEntry **entry);

} // namespace wexelxi
