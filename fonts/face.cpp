#include "fonts/face.h"

#include <cstring>
#include <map>
#include <tuple>

#include "core/last_error.h"
#include "core/lock.h"
#include "fonts/extent_cache.h"
#include "fonts/font_maps.h"
#include "fonts/search.h"
#include "fonts/search_lists.h"

namespace wexelxi {

namespace {

// What decides about a face: search list, height, resolution and family.
using FaceKey = std::tuple<const SearchRow *, int32_t, int32_t, std::string>;

constexpr size_t kMostFaces = 128;
NeverDestroyed<std::map<FaceKey, FacePtr>> gFaces;
uint32_t gLastNumber = 0;
NeverDestroyed<ExtentCache> gExtents;

// Pango units rounded up to whole ones.
int32_t WholeUnits(int units)
{
    return static_cast<int32_t>((int64_t{units} + PANGO_SCALE - 1) >> 10);
}

int32_t TimesPangoScale(int32_t points)
{
    return static_cast<int32_t>(static_cast<uint32_t>(points) * uint32_t{PANGO_SCALE});
}

// The description of a found font at a size. Pango refuses a negative size aloud and leaves the
// description without one; here that happens in silence. It ends the process over a font without
// any family, which a configuration can produce.
DescriptionPtr Describe(FcPattern *pattern, int32_t height)
{
    FcValue family;
    const bool named = FcPatternGet(pattern, FC_FAMILY, 0, &family) == FcResultMatch;
    DescriptionPtr description(named ? pango_fc_font_description_from_pattern(pattern, FALSE)
                                     : pango_font_description_new());
    if (const int32_t size = TimesPangoScale(height); size >= 0)
        pango_font_description_set_size(description.get(), size);
    return description;
}

// Asks Pango for everything that a font tells of its measures.
void Measure(Face &face)
{
    const MetricsPtr metrics(pango_font_get_metrics(face.font.get(), nullptr));
    face.ascent = WholeUnits(pango_font_metrics_get_ascent(metrics.get()));
    face.descent = WholeUnits(pango_font_metrics_get_descent(metrics.get()));
    face.averageWidth = WholeUnits(pango_font_metrics_get_approximate_char_width(metrics.get()));
    pango_layout_set_text(face.layout.get(), "W", 1);
    pango_layout_get_pixel_size(face.layout.get(), &face.maxWidth, nullptr);
}

FacePtr NewFace(FcPattern *pattern, std::string family, int32_t height, PangoFontMap *map)
{
    const auto face = std::make_shared<Face>();
    const DescriptionPtr description = Describe(pattern, height);
    face->context.reset(pango_font_map_create_context(map));
    face->layout.reset(pango_layout_new(face->context.get()));
    face->font.reset(pango_font_map_load_font(map, face->context.get(), description.get()));
    pango_layout_set_font_description(face->layout.get(), description.get());
    Measure(*face);
    face->pitchFlags = static_cast<uint8_t>((IsMonospaced(pattern) ? 0 : TMPF_FIXED_PITCH) |
                                            (IsOutline(pattern) ? TMPF_TRUETYPE : TMPF_VECTOR));
    if (const char *file = FileOf(pattern))
        face->filePath = file;
    face->family = std::move(family);
    face->number = ++gLastNumber;
    return face;
}

int32_t LayOut(PangoLayout *layout, std::string_view text)
{
    // A text too long to remember stays in the layout, which knows its size.
    if (text.size() <= ExtentCache::kLongestText || text != pango_layout_get_text(layout))
        pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    int width = 0;
    pango_layout_get_pixel_size(layout, &width, nullptr);
    return width;
}

} // namespace

FacePtr FaceFor(const LOGFONT &logfont, int32_t dpi)
{
    AssertLockHeld();
    if (!FontMapsAreCurrent())
        gFaces->clear();
    const bool italic = logfont.lfItalic != 0;
    FaceKey key(SearchListFor(logfont.lfWeight, italic).data(), logfont.lfHeight, dpi,
                std::string(logfont.lfFaceName, strnlen(logfont.lfFaceName, LF_FACESIZE)));
    if (const auto known = gFaces->find(key); known != gFaces->end())
        return known->second;

    const std::string &family = std::get<std::string>(key);
    const ConfigPtr config = FontMapsConfig();
    const auto found = FindFont(config.get(), family, logfont.lfWeight, italic);
    if (!config || !found)
        return FailWith(ERROR_NOT_ENOUGH_MEMORY, FacePtr());
    FcPattern *pattern = *found ? found->get() : LastResort();
    PangoFontMap *map = pattern ? FontMapFor(dpi, config.get()) : nullptr;
    if (!map)
        return nullptr;
    FacePtr face = NewFace(pattern, family, logfont.lfHeight, map);
    if (gFaces->size() >= kMostFaces)
        gFaces->clear();
    gFaces->emplace(std::move(key), face);
    return face;
}

int32_t WidthOf(const Face &face, std::string_view text, BriefLockScope &lock)
{
    if (const auto known = gExtents->Find(face.number, text))
        return *known;
    lock.Count();
    const int32_t width = LayOut(face.layout.get(), text);
    gExtents->Store(face.number, text, width);
    return width;
}

void ForgetFaces()
{
    gFaces->clear();
    *gExtents = ExtentCache();
}

} // namespace wexelxi
