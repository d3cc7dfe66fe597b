// The record behind an HFONT, and the buckets that tell a live one from any other pointer.
#pragma once

#include <cstdint>

#include "fonts/face.h"

namespace wexelxi {

struct FontRecord {
    FontRecord *next = nullptr; // in its bucket or on the free list
    FacePtr face;               // null once deleted
    int32_t lineHeight = 0;
    uint8_t bold = 0;
    uint8_t italic = 0;
    uint8_t underline = 0;
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
