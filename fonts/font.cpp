// Font objects: made from the font that the search finds, kept in buckets, reused when deleted. The
// global lock guards buckets and records.
#include "fonts/font.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "core/lock.h"
#include "fonts/catalogue.h"
#include "fonts/device_context.h"
#include "fonts/search.h"

using namespace wexelxi;

static constexpr size_t kBuckets = 32;
static FontRecord *gFontBuckets[kBuckets];
static FontRecord *gFreeFonts = nullptr; // deleted records, the latest first

static FontRecord *&BucketOf(const void *record)
{
    return gFontBuckets[(reinterpret_cast<uintptr_t>(record) >> 4) % kBuckets];
}

bool wexelxi::FontIsValid(HFONT font)
{
    if (!font)
        return false;
    const FontRecord *record = BucketOf(font);
    while (record && record != font)
        record = record->next;
    return record != nullptr;
}

static void Push(FontRecord *&list, FontRecord *record)
{
    record->next = std::exchange(list, record);
}

static FontRecord *Pop(FontRecord *&list)
{
    FontRecord *record = list;
    if (record)
        list = std::exchange(record->next, nullptr);
    return record;
}

static void TakeOffBucket(FontRecord *record)
{
    FontRecord **link = &BucketOf(record);
    while (*link != record)
        link = &(*link)->next;
    *link = std::exchange(record->next, nullptr);
}

void wexelxi::FreeAllFonts()
{
    while (FontRecord *record = Pop(gFreeFonts))
        delete record;
    for (FontRecord *&bucket : gFontBuckets) {
        while (FontRecord *record = Pop(bucket))
            delete record;
    }
}

// Pango units rounded up to whole ones.
static int32_t WholeUnits(int units)
{
    return static_cast<int32_t>((int64_t{units} + PANGO_SCALE - 1) >> 10);
}

static int32_t TimesPangoScale(int32_t points)
{
    return static_cast<int32_t>(static_cast<uint32_t>(points) * uint32_t{PANGO_SCALE});
}

// The description of a found font at a size. Pango refuses a negative size aloud and leaves the
// description without one; here that happens in silence. It ends the process over a font without
// any family, which a configuration can produce.
static DescriptionPtr Describe(FcPattern *pattern, int32_t height)
{
    FcValue family;
    const bool named = FcPatternGet(pattern, FC_FAMILY, 0, &family) == FcResultMatch;
    DescriptionPtr description(named ? pango_fc_font_description_from_pattern(pattern, FALSE)
                                     : pango_font_description_new());
    if (const int32_t size = TimesPangoScale(height); size >= 0)
        pango_font_description_set_size(description.get(), size);
    return description;
}

// Asks Pango for everything that the record keeps of the font's measures.
static void Measure(FontRecord &record, int32_t resolution)
{
    const MetricsPtr metrics(pango_font_get_metrics(record.font.get(), nullptr));
    record.ascent = WholeUnits(pango_font_metrics_get_ascent(metrics.get()));
    record.descent = WholeUnits(pango_font_metrics_get_descent(metrics.get()));
    record.averageWidth = WholeUnits(pango_font_metrics_get_approximate_char_width(metrics.get()));
    record.lineHeight = resolution / 96 + record.ascent + record.descent;
    pango_layout_set_text(record.layout.get(), "W", 1);
    pango_layout_get_pixel_size(record.layout.get(), &record.maxWidth, nullptr);
}

static void Fill(FontRecord &record, const LOGFONT &logfont, std::string family, FcPattern *pattern,
                 PangoFontMap *map, int32_t resolution)
{
    record.description = Describe(pattern, logfont.lfHeight);
    record.context.reset(pango_font_map_create_context(map));
    record.layout.reset(pango_layout_new(record.context.get()));
    record.font.reset(
        pango_font_map_load_font(map, record.context.get(), record.description.get()));
    pango_layout_set_font_description(record.layout.get(), record.description.get());
    record.bold = logfont.lfWeight >= FW_BOLD;
    record.italic = logfont.lfItalic;
    record.underline = logfont.lfUnderline;
    Measure(record, resolution);
    record.pitchFlags = static_cast<uint8_t>((IsMonospaced(pattern) ? 0 : TMPF_FIXED_PITCH) |
                                             (IsOutline(pattern) ? TMPF_TRUETYPE : TMPF_VECTOR));
    if (const char *file = FileOf(pattern))
        record.filePath = file;
    record.family = std::move(family);
}

static FontRecord *NewRecord()
{
    FontRecord *record = Pop(gFreeFonts);
    if (!record)
        record = new (std::nothrow) FontRecord;
    if (record)
        Push(BucketOf(record), record);
    return record;
}

HFONT CreateFontIndirect(const LOGFONT *logfont)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    std::string family(logfont->lfFaceName, strnlen(logfont->lfFaceName, LF_FACESIZE));
    PatternPtr pattern = FindFont(family, logfont->lfWeight, logfont->lfItalic != 0);
    if (!pattern)
        pattern = ShareOf(DefaultFontPattern());

    const DeviceContext *context = FromHandle(logfont->lfDC);
    const int32_t resolution = context ? context->dpiY : gLOGPIXELSY;
    PangoFontMap *map = context ? FontMapFor(resolution) : ScreenFontMap();
    if (!pattern || !map)
        return nullptr;
    FontRecord *record = NewRecord();
    if (record)
        Fill(*record, *logfont, std::move(family), pattern.get(), map, resolution);
    return record;
}

HFONT CreateFont(int32_t height, int32_t width, int32_t escapement, int32_t orientation,
                 int32_t weight, uint8_t italic, uint8_t underline, uint8_t strikeOut,
                 uint8_t charSet, uint8_t outPrecision, uint8_t clipPrecision, uint8_t quality,
                 uint8_t pitchAndFamily, LPCSTR faceName)
{
    LOGFONT logfont = {};
    {
        LockScope lock;
        logfont.lfHeight = height;
        logfont.lfWidth = width;
        logfont.lfEscapement = escapement;
        logfont.lfOrientation = orientation;
        logfont.lfWeight = weight;
        logfont.lfItalic = italic;
        logfont.lfUnderline = underline;
        logfont.lfStrikeOut = strikeOut;
        logfont.lfCharSet = charSet;
        logfont.lfOutPrecision = outPrecision;
        logfont.lfClipPrecision = clipPrecision;
        logfont.lfQuality = quality;
        logfont.lfPitchAndFamily = pitchAndFamily;
        if (faceName)
            memcpy(logfont.lfFaceName, faceName, strnlen(faceName, LF_FACESIZE));
    }
    return CreateFontIndirect(&logfont);
}

HGDIOBJ SelectObject(HDC hdc, HGDIOBJ object)
{
    LockScope lock;
    if (object && !FontIsValid(object)) {
        ReportHandle("Invalid HFONT passed to SelectObject", 0);
        return nullptr;
    }
    return std::exchange(FromHandle(hdc)->selectedFont, object);
}

BOOL DeleteObject(HGDIOBJ object)
{
    LockScope lock;
    FontRecord *record = FontFromHandle(object);
    if (!record) {
        ReportHandle("Invalid HFONT passed to DeleteObject", 0);
        return TRUE;
    }
    TakeOffBucket(record);
    *record = FontRecord(); // gives back all that it owned
    Push(gFreeFonts, record);
    return TRUE;
}

template <size_t Size>
static void CopyCut(char (&field)[Size], const std::string &text)
{
    const size_t length = std::min(text.size(), Size - 1);
    memcpy(field, text.data(), length);
    field[length] = '\0';
}

void GetFontInfo(HFONT font, FontInfoRecord *info)
{
    const FontRecord *record = FontFromHandle(font);
    if (!record) {
        ReportHandle("Invalid HFONT passed to GetFontInfo", 0);
        return;
    }
    CopyCut(info->family, record->family);
    CopyCut(info->filePath, record->filePath);
    info->height = record->ascent + record->descent;
    info->ascent = record->ascent;
    info->descent = record->descent;
    info->bold = record->bold;
    info->italic = record->italic;
    info->underline = record->underline;
}
