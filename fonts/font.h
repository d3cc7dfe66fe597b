// The record behind an HFONT, and the buckets that tell a live one from any other pointer.
#pragma once

#include <string>

#include "fonts/extent_cache.h"
#include "fonts/owners.h"
#include "wexelxi/fonts.h"

namespace wexelxi {

struct FontRecord {
    FontRecord *next = nullptr; // in its bucket or on the free list
    DescriptionPtr description;
    ContextPtr context;
    FontPtr font;
    LayoutPtr layout;     // its text changes with each measurement
    std::string family;   // asked for, not found
    std::string filePath; // of the font found
    uint8_t bold = 0;
    uint8_t italic = 0;
    uint8_t underline = 0;
    int32_t ascent = 0;
    int32_t descent = 0;
    int32_t lineHeight = 0;
    int32_t averageWidth = 0;
    int32_t maxWidth = 0;
    uint8_t pitchFlags = 0;
    ExtentCache extents; // good for this serial of the context
    uint32_t extentsSerial = 0;
};

// Whether the handle is the address of a live font. Reads no byte behind it.
bool FontIsValid(HFONT font);

// The live font behind a handle, or null.
inline FontRecord *FontFromHandle(HFONT font)
{
    return FontIsValid(font) ? static_cast<FontRecord *>(font) : nullptr;
}

// Frees every font, live or deleted.
void FreeAllFonts();

} // namespace wexelxi
