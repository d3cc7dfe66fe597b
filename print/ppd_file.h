// A PPD file that is open: its stream and what was parsed from it.
#pragma once

#include <cstdint>

#include "core/owners.h"
#include "print/ppd.h"

namespace wexelxi {

struct ClosePPD { // ReleaseWith would speak of a deprecated function where this header cannot hush
                  // it
    void operator()(ppd_file_t *ppd) const { ppdClose(ppd); }
};
using ParsedPPD = std::unique_ptr<ppd_file_t, ClosePPD>;

struct PPDFile {
    Stream stream;
    ParsedPPD ppd;
};

// Opens and parses a file. Gives 0; 2 (ERROR_FILE_NOT_FOUND) if it cannot be opened, 13
// (ERROR_INVALID_DATA) if it does not parse, and file is empty then.
uint32_t OpenPPDFile(const char *path, PPDFile &file);

} // namespace wexelxi
