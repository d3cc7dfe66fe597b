// Finds the font file for a family, a weight and a slant. The global lock guards what it remembers.
#pragma once

#include <string>

#include "fonts/owners.h"

namespace wexelxi {

// The pattern of the best outline font of exactly that family, or null. It bears family, weight,
// slant, file, outline and spacing as far as the font has them.
PatternPtr FindFont(const std::string &family, int32_t weight, bool italic);

// Takes note of the fonts that there are now, or of none, and drops every remembered answer.
void StartSearches();
void EndSearches();

// A pattern's file, or null; it belongs to the pattern.
const char *FileOf(const FcPattern *font);

bool IsOutline(const FcPattern *font);
bool IsMonospaced(const FcPattern *font);

} // namespace wexelxi
