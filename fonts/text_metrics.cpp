// What a device context's selected font measures. Metrics come from the record; only a text that
// was not measured lately runs Pango.
#include <climits>
#include <cstring>
#include <string_view>

#include "core/lock.h"
#include "fonts/device_context.h"
#include "fonts/font.h"

using namespace wexelxi;

namespace {

struct Reports {
    const char *noContext;
    const char *noFont;
    const char *invalidFont;
};

// The selected font if it is live; else null, with the reports. A handler that selects a font
// helps: the selection is read again.
FontRecord *SelectedFont(BriefLockScope &lock, HDC hdc, const Reports &reports)
{
    const DeviceContext *context = FromHandle(hdc);
    FontRecord *selected = context ? FontFromHandle(context->selectedFont) : nullptr;
    if (selected)
        return selected;
    lock.Count();
    if (!context) {
        ReportHandle(reports.noContext, 1);
        return nullptr;
    }
    if (!context->selectedFont)
        ReportHandle(reports.noFont, 1);
    FontRecord *font = FontFromHandle(context->selectedFont);
    if (!font)
        ReportHandle(reports.invalidFont, 0);
    return font;
}

// The bytes that Pango measures: up to a NUL, and at most count of them if that is not negative.
std::string_view MeasuredText(LPCSTR text, int32_t count)
{
    if (!text)
        return "";
    const size_t most = count < 0 ? size_t{INT_MAX} : static_cast<size_t>(count);
    return {text, strnlen(text, most)};
}

} // namespace

BOOL GetTextMetrics(HDC hdc, TEXTMETRIC *metrics)
{
    memset(metrics, 0, sizeof *metrics);
    BriefLockScope lock;
    const FontRecord *font = SelectedFont(
        lock, hdc,
        {"NULL HDC passed to GetTextMetrics", "HDC with no selected font passed to GetTextMetrics",
         "Invalid HFONT selected into HDC passed to GetTextMetrics"});
    if (font) {
        const Face &face = *font->face;
        metrics->tmHeight = face.ascent + face.descent;
        metrics->tmAscent = face.ascent;
        metrics->tmDescent = face.descent;
        metrics->tmExternalLeading = font->lineHeight - metrics->tmHeight;
        metrics->tmAveCharWidth = face.averageWidth;
        metrics->tmMaxCharWidth = face.maxWidth;
        metrics->tmWeight = font->bold ? FW_BOLD : 0;
        metrics->tmItalic = font->italic;
        metrics->tmPitchAndFamily = face.pitchFlags;
    }
    metrics->tmLastChar = 0xFF;
    metrics->tmDefaultChar = ' ';
    metrics->tmBreakChar = ' ';
    metrics->tmCharSet = DEFAULT_CHARSET;
    return TRUE;
}

BOOL GetTextExtentPoint32(HDC hdc, LPCSTR text, int32_t count, SIZE *size)
{
    BriefLockScope lock;
    const FontRecord *font =
        SelectedFont(lock, hdc,
                     {"NULL HDC passed to GetTextExtentPoint32",
                      "HDC with no selected font passed to GetTextExtentPoint32",
                      "Invalid HFONT selected into HDC passed to GetTextExtentPoint32"});
    if (font) {
        const int32_t width = WidthOf(*font->face, MeasuredText(text, count), lock);
        size->cx = width != 0 ? width : 1;
        size->cy = font->face->ascent + font->face->descent;
    }
    return TRUE;
}

BOOL TextOut(HDC, int32_t, int32_t, LPCSTR, int32_t)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}
