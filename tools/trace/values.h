// Arguments and results as an author reads them.
#pragma once

#include <cstdint>

#include "tools/trace/catalogue.h"
#include "tools/trace/line.h"

namespace trace {

// Whether an argument is told as it was before the call: what the function reads only, and what it
// ends. All others are told as the call left them.
bool IsToldBefore(CallIndex call, size_t index);

void AddArgument(Line &line, CallIndex call, size_t index, const uintptr_t *values);
void AddResult(Line &line, CallIndex call, uintptr_t result);
void AddErrorName(Line &line, uint32_t error);

// Adds the names of a number or of its bits; false if it has none. constants.cpp.
bool AddConstant(Line &line, std::string_view function, std::string_view parameter, uint64_t value);

// Adds the telling fields of a record; false if the type is none that is known. records.cpp.
bool AddRecord(Line &line, std::string_view type, uintptr_t address);

} // namespace trace
