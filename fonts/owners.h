// Owners of what fontconfig and Pango hand out: each gives its object back when it goes.
#pragma once

#include <fontconfig/fontconfig.h>
#include <memory>
#include <pango/pangofc-fontmap.h>
#include <pango/pangoft2.h>
#include <span>

#include "core/owners.h"

namespace wexelxi {

using ConfigPtr = std::unique_ptr<FcConfig, ReleaseWith<FcConfigDestroy>>;
using PatternPtr = std::unique_ptr<FcPattern, ReleaseWith<FcPatternDestroy>>;
using FontSetPtr = std::unique_ptr<FcFontSet, ReleaseWith<FcFontSetDestroy>>;
using ObjectSetPtr = std::unique_ptr<FcObjectSet, ReleaseWith<FcObjectSetDestroy>>;

using FontMapPtr = std::unique_ptr<PangoFontMap, ReleaseWith<g_object_unref>>;
using DescriptionPtr =
    std::unique_ptr<PangoFontDescription, ReleaseWith<pango_font_description_free>>;
using MetricsPtr = std::unique_ptr<PangoFontMetrics, ReleaseWith<pango_font_metrics_unref>>;
using ContextPtr = std::unique_ptr<PangoContext, ReleaseWith<g_object_unref>>;
using FontPtr = std::unique_ptr<PangoFont, ReleaseWith<g_object_unref>>;
using LayoutPtr = std::unique_ptr<PangoLayout, ReleaseWith<g_object_unref>>;

// A second owner of the same pattern; null for null.
inline PatternPtr ShareOf(FcPattern *pattern)
{
    if (pattern)
        FcPatternReference(pattern);
    return PatternPtr(pattern);
}

inline std::span<FcPattern *const> FontsOf(const FcFontSet *set)
{
    if (!set || set->nfont <= 0)
        return {};
    return {set->fonts, static_cast<size_t>(set->nfont)};
}

inline const FcChar8 *FcText(const char *text)
{
    return reinterpret_cast<const FcChar8 *>(text);
}

} // namespace wexelxi
