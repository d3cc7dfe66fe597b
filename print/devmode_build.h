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

// A zeroed record with the defaults in its head and room for an option block of that many bytes,
// at most 65535. unknown is the text for what the printer does not tell.
Record AllocDevMode(const PrinterName &name, const char *unknown, size_t optionBytes);

// A record with the defaults of a PPD: head and one node for each option that the head does not
// hold. Nodes that would take the block beyond 65535 bytes are left out.
Record BuildDevMode(const PrinterName &name, const char *unknown, ppd_file_t *ppd);

// Pours a destination's saved options into a record, a later one over an earlier one.
void ApplySavedOptions(std::span<const cups_option_t> saved, ppd_file_t *ppd, DEVMODE *record);

// Stores code and size of a choice of the option PageSize; nothing if the PPD has no such size.
void MatchPaperToDevMode(ppd_file_t *ppd, const ppd_choice_t &choice, DEVMODE *record);

// The DMJOBSHEET_ code of a CUPS banner, without regard to case; 0 for any other text.
int32_t JobSheetFromName(std::string_view name);

} // namespace wexelxi
