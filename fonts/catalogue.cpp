// Start and end of the fonts, and the enumeration of the installed ones.
#include <cstdio>

#include "core/last_error.h"
#include "core/lock.h"
#include "fonts/font.h"
#include "fonts/font_maps.h"
#include "fonts/search.h"
#include "fonts/search_lists.h"
#include "wexelxi/fonts.h"

using namespace wexelxi;

namespace {

constexpr int32_t kCannotStart = 3;

// Tells the callback of one font; the result is the callback's.
int32_t TellOf(const FcPattern *font, FONTENUMPROC callback, LPARAM data)
{
    LOGFONT logfont = {};
    TEXTMETRIC metrics = {};
    FcChar8 *family = nullptr;
    if (FcPatternGetString(font, FC_FAMILY, 0, &family) == FcResultMatch)
        snprintf(logfont.lfFaceName, sizeof logfont.lfFaceName, "%s",
                 reinterpret_cast<const char *>(family));

    const char *file = FileOf(font);
    const bool trueType = IsOutline(font) && file && HasTrueTypeName(file);
    const bool monospaced = IsMonospaced(font);
    logfont.lfPitchAndFamily = monospaced ? FIXED_PITCH : VARIABLE_PITCH;
    metrics.tmPitchAndFamily = static_cast<uint8_t>((monospaced ? 0 : TMPF_FIXED_PITCH) |
                                                    (trueType ? TMPF_TRUETYPE : TMPF_VECTOR));
    metrics.tmCharSet = DEFAULT_CHARSET;
    return callback(&logfont, &metrics, trueType ? TRUETYPE_FONTTYPE : 0, data);
}

} // namespace

int32_t InitFonts(void)
{
    if (!FcInit())
        return kCannotStart;
    ForgetFaces();
    StartFontMaps(gLOGPIXELSY);
    return 0;
}

void TermFonts(void)
{
    ForgetLastResort();
    ForgetFaces();
    EndFontMaps();
    FreeAllFonts();
}

int32_t EnumFonts(HDC, LPCSTR family, FONTENUMPROC callback, LPARAM data)
{
    LockScope lock;
    const ObjectSetPtr objects(
        FcObjectSetBuild(FC_FAMILY, FC_OUTLINE, FC_SPACING, FC_FILE, nullptr));
    const PatternPtr pattern(FcPatternCreate());
    if (!objects || !pattern ||
        (family && !FcPatternAddString(pattern.get(), FC_FAMILY, FcText(family))))
        return FailWith(ERROR_NOT_ENOUGH_MEMORY, 0);
    const FontSetPtr set(FcFontList(nullptr, pattern.get(), objects.get()));
    const auto fonts = FontsOf(set.get());
    if (!fonts.empty())
        SetLastResort(fonts[0]);
    int32_t result = 0;
    for (const FcPattern *font : fonts) {
        result = TellOf(font, callback, data);
        if (result == 0)
            break;
    }
    return result;
}
