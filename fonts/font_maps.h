// The font maps, each made when a font first needs it, and the configuration of fontconfig that
// they stand for: a share of it and of each font that it lists, held from the first map on. Where
// fontconfig has another configuration or lists other fonts, they are given up; fonts that were
// made from them keep theirs. While there is no map nothing of fontconfig's is held, so that a host
// may end fontconfig. The global lock guards the state; it ends with the fonts.
#pragma once

#include <cstdint>

#include "fonts/owners.h"

namespace wexelxi {

// Lets font maps be made, the screen's of this resolution.
void StartFontMaps(int32_t screenDpi);
void EndFontMaps();

// Whether the maps stand for the fonts that fontconfig lists now; if they do not, there are none
// any more.
bool FontMapsAreCurrent();

// The configuration of the maps, the current one while there is none; null if fontconfig has none.
ConfigPtr FontMapsConfig();

// The map of a device context's resolution down, the screen's for one without a map of its own.
// The configuration is what FontMapsConfig gave. Null while fonts are not started.
PangoFontMap *FontMapFor(int32_t dpi, FcConfig *config);

} // namespace wexelxi
