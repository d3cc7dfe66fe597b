// The text of line settings, as "9600,n,8,1" or "parity=n", to a record. Pure.
#pragma once

#include "wexelxi/comm.h"

namespace wexelxi {

// Fills the record from a text; null is refused. Gives 0, or the last error that names the fault;
// the record is then filled as far as the text was understood.
uint32_t ParseDcbText(const char *text, DCB *settings);

} // namespace wexelxi
