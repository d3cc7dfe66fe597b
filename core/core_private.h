// What the rooms of core/ share among themselves.
#pragma once

namespace wexelxi {

// Frees the error text that was stored before the first start.
void ForgetErrorTextBeforeInit();

} // namespace wexelxi
