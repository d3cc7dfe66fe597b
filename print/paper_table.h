// The constant table of common papers, and the match of a size against it.
#pragma once

#include <array>
#include <cstdint>

namespace wexelxi {

struct PaperTableRow {
    uint32_t width;  // micrometres
    uint32_t length; // micrometres
    uint32_t code;   // a DMPAPER_ value; those from 119 on have no published name
    uint32_t string; // number of the name in the table of texts
};

extern const std::array<PaperTableRow, 69> gPaperTable;

// The first row whose width and length both miss the size by less than half a millimetre; null if
// there is none. A sheet that lies across matches no upright row.
const PaperTableRow *FindPaper(int32_t width, int32_t length);

} // namespace wexelxi
