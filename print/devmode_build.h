// Builds a settings record from a parsed PPD and from the options that a user has saved for a
// printer. Takes both as arguments: nothing here asks CUPS.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "print/ppd.h"
#include "print/printer_name.h"
#include "wexelxi/devmode.h"

namespace wexelxi {

struct DeleteRecord {
    void operator()(DEVMODE *record) const { operator delete(record); }
};
using Record = std::unique_ptr<DEVMODE, DeleteRecord>;

Record CopyOfRecord(const DEVMODE *record);

// A record with the defaults of a PPD, if there is one: head and one node for each option that the
// head does not hold. Nodes that would take the block beyond 65535 bytes are left out. unknown is
// the text for what the printer does not tell.
Record BuildDevMode(const PrinterName &name, const char *unknown, ppd_file_t *ppd);

// Pours a destination's saved options into a record, a later one over an earlier one.
void ApplySavedOptions(std::span<const cups_option_t> saved, ppd_file_t *ppd, DEVMODE *record);

} // namespace wexelxi
