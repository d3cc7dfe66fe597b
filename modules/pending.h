// Declarations whose public headers are still under way.
#pragma once

#include "wexelxi/types.h"

extern "C" {
WEXELXI_API void GetWexelXiFolder(char *destination);
WEXELXI_API extern uint8_t gNoFreeLibrary;
}
