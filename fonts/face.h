// Fonts found and measured. What was asked for before is remembered, shared by all fonts that ask
// the same, for as long as the font maps stay; a live font keeps its face to its end. The global
// lock guards faces and widths that are remembered; they end with the fonts.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/lock.h"
#include "fonts/owners.h"
#include "wexelxi/fonts.h"

namespace wexelxi {

struct Face {
    ContextPtr context; // holds the font map
    FontPtr font;
    LayoutPtr layout;     // its text is that of the last measurement that was laid out
    std::string family;   // asked for, not found
    std::string filePath; // of the font found
    int32_t ascent = 0;
    int32_t descent = 0;
    int32_t averageWidth = 0;
    int32_t maxWidth = 0;
    uint8_t pitchFlags = 0;
    uint32_t number = 0; // in the order in which faces were made
};

using FacePtr = std::shared_ptr<const Face>;

// The face that a font asks for, on the map of a device context's resolution down or of the screen
// where that is 0. Null if no font fits, before fonts are started, and with the last error set if
// there is no memory. Throws bad_alloc.
FacePtr FaceFor(const LOGFONT &logfont, int32_t dpi);

// The width of a text in dots: remembered, or laid out.
int32_t WidthOf(const Face &face, std::string_view text, BriefLockScope &lock);

void ForgetFaces();

} // namespace wexelxi
