// How often each function was called, and how long that took.
#pragma once

#include "tools/trace/catalogue.h"

namespace trace {

void CountCall(CallIndex call, double seconds);

// Writes the functions that were called, the one that took longest first.
void WriteCounts();

} // namespace trace
