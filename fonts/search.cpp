#include "fonts/search.h"

#include <utility>

#include "core/lock.h"
#include "fonts/search_lists.h"

namespace wexelxi {

namespace {

// A plain pointer: nothing may be destroyed under the feet of threads when the process ends.
FcPattern *gDefaultFontPattern = nullptr;

// The first font of a list, or the first TrueType file in it.
PatternPtr Choose(std::span<FcPattern *const> fonts)
{
    for (FcPattern *font : fonts) {
        const char *file = FileOf(font);
        if (file && HasTrueTypeName(file))
            return ShareOf(font);
    }
    return fonts.empty() ? nullptr : ShareOf(fonts[0]);
}

} // namespace

std::optional<PatternPtr> FindFont(FcConfig *config, const std::string &family, int32_t weight,
                                   bool italic)
{
    const PatternPtr base(FcPatternCreate());
    const ObjectSetPtr objects(
        FcObjectSetBuild(FC_FAMILY, FC_WEIGHT, FC_SLANT, FC_FILE, FC_OUTLINE, FC_SPACING, nullptr));
    if (!base || !objects || !FcPatternAddString(base.get(), FC_FAMILY, FcText(family.c_str())) ||
        !FcPatternAddBool(base.get(), FC_OUTLINE, FcTrue))
        return std::nullopt;
    for (const SearchRow &row : SearchListFor(weight, italic)) {
        const PatternPtr query(FcPatternDuplicate(base.get()));
        if (!query || !FcPatternAddInteger(query.get(), FC_WEIGHT, row.weight) ||
            !FcPatternAddInteger(query.get(), FC_SLANT, row.slant))
            return std::nullopt;
        const FontSetPtr set(FcFontList(config, query.get(), objects.get()));
        if (!set)
            return std::nullopt;
        if (PatternPtr chosen = Choose(FontsOf(set.get())))
            return chosen;
    }
    return nullptr;
}

FcPattern *LastResort()
{
    AssertLockHeld();
    return gDefaultFontPattern;
}

void SetLastResort(const FcPattern *font)
{
    AssertLockHeld();
    if (!gDefaultFontPattern)
        gDefaultFontPattern = FcPatternDuplicate(font);
}

void ForgetLastResort()
{
    if (FcPattern *pattern = std::exchange(gDefaultFontPattern, nullptr))
        FcPatternDestroy(pattern);
}

const char *FileOf(const FcPattern *font)
{
    FcChar8 *file = nullptr;
    if (FcPatternGetString(font, FC_FILE, 0, &file) != FcResultMatch)
        return nullptr;
    return reinterpret_cast<const char *>(file);
}

bool IsOutline(const FcPattern *font)
{
    FcBool outline = FcFalse;
    return FcPatternGetBool(font, FC_OUTLINE, 0, &outline) == FcResultMatch && outline == FcTrue;
}

bool IsMonospaced(const FcPattern *font)
{
    int spacing = 0;
    return FcPatternGetInteger(font, FC_SPACING, 0, &spacing) == FcResultMatch &&
           spacing == FC_MONO;
}

} // namespace wexelxi
