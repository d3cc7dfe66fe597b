// Fonts, beside Pango asked by the same steps. The fonts are the machine's.
#include <cstring>
#include <pango/pangofc-fontmap.h>
#include <pango/pangoft2.h>
#include <string>

#include "host.h"
#include "rows.h"

namespace {

constexpr char kFamily[] = "DejaVu Sans";

HFONT MakeFont(int32_t height)
{
    return CreateFont(height, 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0, kFamily);
}

struct PangoAt96 {
    PangoAt96()
    {
        map = pango_ft2_font_map_new();
        pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map), 96, 96);
        context = pango_font_map_create_context(map);
        layout = pango_layout_new(context);
        description = pango_font_description_from_string(kFamily);
        pango_font_description_set_size(description, 10 * PANGO_SCALE);
        pango_layout_set_font_description(layout, description);
        font = pango_font_map_load_font(map, context, description);
    }
    ~PangoAt96()
    {
        g_object_unref(font);
        pango_font_description_free(description);
        g_object_unref(layout);
        g_object_unref(context);
        g_object_unref(map);
    }
    int WidthOf(const std::string &text) const
    {
        int width = 0;
        pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
        pango_layout_get_pixel_size(layout, &width, nullptr);
        return width;
    }
    // A font as the library needs it, on a pattern that is at hand.
    void MakeFontAlone() const
    {
        PangoContext *ownContext = pango_font_map_create_context(map);
        PangoLayout *ownLayout = pango_layout_new(ownContext);
        PangoFont *own = pango_font_map_load_font(map, ownContext, description);
        pango_layout_set_font_description(ownLayout, description);
        pango_font_metrics_unref(pango_font_get_metrics(own, nullptr));
        g_object_unref(own);
        g_object_unref(ownLayout);
        g_object_unref(ownContext);
    }

    PangoFontMap *map;
    PangoContext *context;
    PangoLayout *layout;
    PangoFontDescription *description;
    PangoFont *font;
};

// A text that no call before had.
class FreshTexts {
public:
    explicit FreshTexts(size_t length) : text_(length, 'a') {}
    const std::string &Next()
    {
        for (char &letter : text_) {
            if (++letter <= 'z')
                break;
            letter = 'a';
        }
        return text_;
    }

private:
    std::string text_;
};

Work Extent(HDC hdc, const std::string &text)
{
    return Ours([=] {
        SIZE size;
        GetTextExtentPoint32(hdc, text.c_str(), -1, &size);
        Keep(size);
    });
}

void ExtentRows(HDC hdc, const PangoAt96 &pango)
{
    for (const size_t length : {8, 60, 1000}) {
        const std::string text(length, 'm');
        std::string copy = text;
        const std::string bytes = std::to_string(length) + " bytes";
        Row("extent of a text measured before, " + bytes, "lock, hash and compare",
            Extent(hdc, text),
            Do("strlen and memcmp",
               [&] { Keep(memcmp(text.c_str(), copy.c_str(), strlen(text.c_str()))); }),
            {Do("Pango", [&] { Keep(pango.WidthOf(text)); })});
        FreshTexts ours(length), theirs(length);
        Row("extent of a new text, " + bytes, "Pango's layout", Ours([&] {
                SIZE size;
                GetTextExtentPoint32(hdc, ours.Next().c_str(), -1, &size);
            }),
            Do("Pango", [&] { Keep(pango.WidthOf(theirs.Next())); }));
    }
}

} // namespace

int main()
{
    const Host host;
    const PangoAt96 pango;
    const HFONT font = MakeFont(10);
    const HDC hdc = CreateCompatibleDC(nullptr);
    SelectObject(hdc, font);
    const Work metrics = Ours([=] {
        TEXTMETRIC all;
        GetTextMetrics(hdc, &all);
        Keep(all);
    });
    const Work select = Ours([=] { Keep(SelectObject(hdc, font)); });
    const Work known = Ours([] { DeleteObject(MakeFont(10)); });
    Row("CreateFont + DeleteObject of a known font", "lock; is fontconfig as it was; a look-up",
        known, Do("FcInitBringUptoDate", [] { Keep(FcInitBringUptoDate()); }),
        {Do("Pango", [&] { pango.MakeFontAlone(); })});
    Row("GetTextMetrics", "lock, one look-up, 56 bytes", metrics,
        Do("memset of the record",
           [] {
               TEXTMETRIC all;
               memset(&all, 0, sizeof all);
               Keep(all);
           }),
        {Do("Pango, metrics asked anew",
            [&] { pango_font_metrics_unref(pango_font_get_metrics(pango.font, nullptr)); })});
    Row("SelectObject", "lock, one look-up", select, Do("two slot reads and writes", [] {
            for (int i = 0; i < 2; i++)
                TlsSetValue(gLastErrorTLS, TlsGetValue(gLastErrorTLS));
        }));
    ExtentRows(hdc, pango);

    GrowthOf questions[] = {
        {"GetTextMetrics", "1 live font", metrics},
        {"extent of a text measured before", "1 live font", Extent(hdc, "Price: 1.234,56")},
        {"SelectObject", "1 live font", select},
        {"CreateFont + DeleteObject of a known font", "1 live font", known}};
    double before = ResidentBytes();
    for (int i = 1; i <= 100; i++)
        MakeFont(10 + i);
    Memory("a font of a description of its own", (ResidentBytes() - before) / 100);
    before = ResidentBytes();
    for (int i = 0; i < 4900; i++)
        MakeFont(10);
    Memory("a further font of a known description", (ResidentBytes() - before) / 4900);
    for (GrowthOf &question : questions)
        question.Then("5,000 live fonts");
    DeleteDC(hdc);
}
