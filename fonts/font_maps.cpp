#include "fonts/font_maps.h"

#include <algorithm>
#include <iterator>

#include "core/lock.h"

namespace wexelxi {

namespace {

constexpr int32_t kMapDpis[] = {254, 1440, 25400}; // and the screen's
constexpr FcSetName kSets[] = {FcSetSystem, FcSetApplication};

struct FontMaps {
    bool started = false;
    int32_t screenDpi = 0;
    ConfigPtr config;
    FontSetPtr listed[std::size(kSets)];
    FontMapPtr maps[std::size(kMapDpis) + 1];
};

NeverDestroyed<FontMaps> gFontMaps;

// A share of each font of a set: no other font can come to stand at its address. Null if there is
// no memory, which is like no set at all.
FontSetPtr SharesOf(const FcFontSet *set)
{
    FontSetPtr shares(FcFontSetCreate());
    for (FcPattern *font : FontsOf(set)) {
        PatternPtr share = ShareOf(font);
        if (!shares || !FcFontSetAdd(shares.get(), share.get()))
            return nullptr;
        share.release();
    }
    return shares;
}

bool StillLists(FcConfig *config)
{
    for (size_t i = 0; i < std::size(kSets); i++) {
        if (!std::ranges::equal(FontsOf(FcConfigGetFonts(config, kSets[i])),
                                FontsOf(gFontMaps->listed[i].get())))
            return false;
    }
    return true;
}

// Pango holds to the configuration that is current when a map gets its resolution. One that it is
// given by name it never gives back.
FontMapPtr NewFontMap(int32_t dpi)
{
    FontMapPtr map(pango_ft2_font_map_new());
    pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map.get()), dpi, dpi);
    return map;
}

} // namespace

void StartFontMaps(int32_t screenDpi)
{
    EndFontMaps();
    gFontMaps->started = true;
    gFontMaps->screenDpi = screenDpi;
}

void EndFontMaps()
{
    *gFontMaps = FontMaps();
}

bool FontMapsAreCurrent()
{
    AssertLockHeld();
    // As a list on the current configuration does it: fonts that came or went are noticed here.
    FcInitBringUptoDate();
    FcConfig *const config = gFontMaps->config.get();
    if (config && config == FcConfigGetCurrent() && StillLists(config))
        return true;
    if (gFontMaps->started)
        StartFontMaps(gFontMaps->screenDpi);
    return false;
}

ConfigPtr FontMapsConfig()
{
    AssertLockHeld();
    return ConfigPtr(FcConfigReference(gFontMaps->config.get()));
}

PangoFontMap *FontMapFor(int32_t dpi, FcConfig *config)
{
    AssertLockHeld();
    if (!gFontMaps->started)
        return nullptr;
    if (!gFontMaps->config) {
        gFontMaps->config.reset(FcConfigReference(config));
        for (size_t i = 0; i < std::size(kSets); i++)
            gFontMaps->listed[i] = SharesOf(FcConfigGetFonts(config, kSets[i]));
    }
    const auto *known = std::ranges::find(kMapDpis, dpi);
    FontMapPtr &map = gFontMaps->maps[known - kMapDpis];
    if (!map)
        map = NewFontMap(known == std::end(kMapDpis) ? gFontMaps->screenDpi : dpi);
    return map.get();
}

} // namespace wexelxi
