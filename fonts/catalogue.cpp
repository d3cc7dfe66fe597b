// Start and end of the fonts, and the enumeration of the installed ones.
#include "fonts/catalogue.h"

#include <cstring>
#include <utility>

#include "core/lock.h"
#include "fonts/font.h"
#include "fonts/search.h"
#include "fonts/search_lists.h"
#include "wexelxi/fonts.h"

using namespace wexelxi;

// Plain pointers: nothing may be destroyed under the feet of threads when the process ends.
static PangoFontMap *gFontMap25400 = nullptr;
static PangoFontMap *gFontMap254 = nullptr;
static PangoFontMap *gFontMap1440 = nullptr;
static PangoFontMap *gFontMapScreen = nullptr;
static FcPattern *gDefaultFontPattern = nullptr;

static constexpr int32_t kCannotStart = 3;

PangoFontMap *wexelxi::FontMapFor(int32_t resolution)
{
    switch (resolution) {
    case 254:
        return gFontMap254;
    case 1440:
        return gFontMap1440;
    case 25400:
        return gFontMap25400;
    default:
        return gFontMapScreen;
    }
}

PangoFontMap *wexelxi::ScreenFontMap()
{
    return gFontMapScreen;
}

void wexelxi::ReloadFontMaps()
{
    for (PangoFontMap *map : {gFontMap25400, gFontMap254, gFontMap1440, gFontMapScreen}) {
        if (map)
            pango_fc_font_map_config_changed(PANGO_FC_FONT_MAP(map));
    }
}

FcPattern *wexelxi::DefaultFontPattern()
{
    return gDefaultFontPattern;
}

static void Replace(PangoFontMap *&map, PangoFontMap *by)
{
    if (PangoFontMap *old = std::exchange(map, by))
        g_object_unref(old);
}

static PangoFontMap *NewFontMap(int32_t resolution)
{
    PangoFontMap *map = pango_ft2_font_map_new();
    pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map), resolution, resolution);
    return map;
}

int32_t InitFonts(void)
{
    if (!FcInit())
        return kCannotStart;
    Replace(gFontMap25400, NewFontMap(25400));
    Replace(gFontMap254, NewFontMap(254));
    Replace(gFontMap1440, NewFontMap(1440));
    Replace(gFontMapScreen, NewFontMap(gLOGPIXELSY));
    StartSearches();
    return 0;
}

void TermFonts(void)
{
    if (FcPattern *pattern = std::exchange(gDefaultFontPattern, nullptr))
        FcPatternDestroy(pattern);
    Replace(gFontMap25400, nullptr);
    Replace(gFontMap254, nullptr);
    Replace(gFontMap1440, nullptr);
    Replace(gFontMapScreen, nullptr);
    EndSearches();
    FreeAllFonts();
}

// Tells the callback of one font; the result is the callback's.
static int32_t TellOf(const FcPattern *font, FONTENUMPROC callback, LPARAM data)
{
    LOGFONT logfont = {};
    TEXTMETRIC metrics = {};
    FcChar8 *family = nullptr;
    if (FcPatternGetString(font, FC_FAMILY, 0, &family) == FcResultMatch)
        strncpy(logfont.lfFaceName, reinterpret_cast<const char *>(family), LF_FACESIZE - 1);

    const char *file = FileOf(font);
    const bool trueType = IsOutline(font) && file && HasTrueTypeName(file);
    const bool monospaced = IsMonospaced(font);
    logfont.lfPitchAndFamily = monospaced ? FIXED_PITCH : VARIABLE_PITCH;
    metrics.tmPitchAndFamily = static_cast<uint8_t>((monospaced ? 0 : TMPF_FIXED_PITCH) |
                                                    (trueType ? TMPF_TRUETYPE : TMPF_VECTOR));
    metrics.tmCharSet = DEFAULT_CHARSET;
    return callback(&logfont, &metrics, trueType ? TRUETYPE_FONTTYPE : 0, data);
}

int32_t EnumFonts(HDC, LPCSTR family, FONTENUMPROC callback, LPARAM data)
{
    LockScope lock;
    const ObjectSetPtr objects(
        FcObjectSetBuild(FC_FAMILY, FC_OUTLINE, FC_SPACING, FC_FILE, nullptr));
    const PatternPtr pattern(FcPatternCreate());
    if (!objects || !pattern ||
        (family && !FcPatternAddString(pattern.get(), FC_FAMILY, FcText(family))))
        return 0;
    const FontSetPtr set(FcFontList(nullptr, pattern.get(), objects.get()));
    if (!set || set->nfont <= 0)
        return 0;
    if (!gDefaultFontPattern)
        gDefaultFontPattern = FcPatternDuplicate(set->fonts[0]);
    int32_t result = 0;
    for (int i = 0; i < set->nfont; i++) {
        result = TellOf(set->fonts[i], callback, data);
        if (result == 0)
            break;
    }
    return result;
}
