// What is known about the printers that have been asked about: one entry for each printer and for
// each instance of one, made at the first question and kept until TermCUPS.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "print/devmode_build.h"
#include "print/printer_description.h"
#include "print/printer_name.h"
#include "wexelxi/printers.h"

// The record behind an HPRINTERPPD, in the order that its fields have always had, and behind them
// what the cache itself needs. The pointers between the names and the two settings records look
// into the description.
struct PrinterPPDEntry {
    explicit PrinterPPDEntry(const wexelxi::PrinterName &name,
                             std::shared_ptr<const wexelxi::PrinterDescription> described);

    PrinterPPDEntry *next = nullptr;
    std::string printerName;                 // as first asked for, without the instance
    std::optional<std::string> instanceName; // none in a printer's own entry
    const char *ppdPath; // the temporary file; this and the next two are null without a PPD
    FILE *ppdStream;
    ppd_file_t *ppd;
    int32_t paperCount; // rows in each of the next four
    const char (*paperNames)[CCHPAPERNAME];
    const uint16_t *paperCodes;
    const DCPAPERSIZE *paperSizes;
    const DCPAPERMARGINS *paperMargins;
    int32_t binCount; // rows in each of the next two
    const char (*binNames)[CCHBINNAME];
    const uint16_t *binCodes;
    wexelxi::Record currentDevMode; // what callers are given; the address never changes
    wexelxi::Record defaultDevMode; // as first built

    std::shared_ptr<const wexelxi::PrinterDescription> description;
    PrinterPPDEntry *nextInBucket = nullptr;
    uint64_t hash = 0; // of its name
};

namespace wexelxi {

// Finds the entry or makes it. Call it with the global lock held. Null with last error 2 (the PPD
// cannot be opened) or 13 (it does not parse) and nothing stored; the last error is left alone
// otherwise. Without memory it throws.
PrinterPPDEntry *FindOrCreatePrinterPPD(const PrinterName &name);

// The steps of OpenPrinterPPD: stores last error 0 first, then as above. Call it with the global
// lock held.
PrinterPPDEntry *OpenPrinterEntry(std::string_view name);

} // namespace wexelxi
