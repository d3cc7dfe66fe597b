// A line's settings in both worlds: DCB and termios. Pure.
#pragma once

#include <termios.h>

#include "wexelxi/comm.h"

namespace wexelxi {

// Writes into the record what the line's settings tell; all else in it stays.
void DcbFromTermios(const termios &line, DCB *settings);

// Puts the line's settings into raw mode as the record asks. Gives 0, or the last error that names
// the field which cannot be; the line's settings are then half done and must be dropped.
uint32_t TermiosFromDcb(const DCB &settings, termios *line);

} // namespace wexelxi
