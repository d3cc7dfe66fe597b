// What a printer is like: its PPD, its papers and its bins. Made at the first question about the
// printer, never changed, and shared by the entries of the printer and of its instances; it ends
// with the last of them.
#pragma once

#include <cstdint>
#include <memory>

#include "print/ppd_file.h"
#include "wexelxi/printers.h"

namespace wexelxi {

// The text of that number, or before the texts are loaded the built-in one.
const char *TextInForce(uint32_t number);

// A path whose file is removed at the end; empty for none. It needs no memory, for want of which
// the file would stay.
struct TemporaryFile {
    ~TemporaryFile();

    char path[1024] = ""; // as long as libcups' own
};

struct PrinterDescription {
    TemporaryFile file; // this and the next are empty without a PPD
    PPDFile ppd;
    int32_t paperCount = 0; // rows in each of the next four
    std::unique_ptr<char[][CCHPAPERNAME]> paperNames;
    std::unique_ptr<uint16_t[]> paperCodes;
    std::unique_ptr<DCPAPERSIZE[]> paperSizes;
    std::unique_ptr<DCPAPERMARGINS[]> paperMargins;
    int32_t binCount = 0; // rows in each of the next two
    std::unique_ptr<char[][CCHBINNAME]> binNames;
    std::unique_ptr<uint16_t[]> binCodes;
};

// Asks CUPS. A printer without a PPD gets the common papers and one bin. Null with the last error
// set if there is a PPD that cannot be used; its temporary file is removed then.
std::shared_ptr<const PrinterDescription> DescribePrinter(const char *printer);

} // namespace wexelxi
