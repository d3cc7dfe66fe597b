// Finds the font file for a family, a weight and a slant. Pure but for the pattern of last resort,
// which is none at first, is set once, by the first enumeration that finds a font, and stays until
// the fonts end. The global lock guards it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "fonts/owners.h"

namespace wexelxi {

// The pattern of the best outline font of exactly that family, null where there is none; nothing
// if fontconfig has no memory. It bears family, weight, slant, file, outline and spacing as far as
// the font has them.
std::optional<PatternPtr> FindFont(FcConfig *config, const std::string &family, int32_t weight,
                                   bool italic);

// What a font falls back to when its family is not found, or null. The first one set stays.
FcPattern *LastResort();
void SetLastResort(const FcPattern *font);
void ForgetLastResort();

// A pattern's file, or null; it belongs to the pattern.
const char *FileOf(const FcPattern *font);

bool IsOutline(const FcPattern *font);
bool IsMonospaced(const FcPattern *font);

} // namespace wexelxi
