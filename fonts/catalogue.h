// The font state of the process: a font map for each resolution, and the pattern of last resort.
// The global lock guards all of it.
#pragma once

#include "fonts/owners.h"

namespace wexelxi {

// The font map of a device context's resolution down: the screen's for one without a map of its
// own. Null while fonts are not started; the map belongs to the catalogue.
PangoFontMap *FontMapFor(int32_t resolution);
PangoFontMap *ScreenFontMap();

// Has the font maps look at fontconfig's fonts again, which Pango does not do by itself.
void ReloadFontMaps();

// What a font falls back to when its family is not found; null before the first enumeration that
// found a font.
FcPattern *DefaultFontPattern();

} // namespace wexelxi
