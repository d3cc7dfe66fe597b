// Fonts: making one beside the fontconfig lists that it spares, measuring beside Pango on the same
// kind of layout. The fonts are the machine's.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <pango/pangofc-fontmap.h>
#include <pango/pangoft2.h>
#include <string>
#include <vector>

#include "wexelxi.h"

namespace {

constexpr char kFamily[] = "DejaVu Sans";
constexpr int32_t kHeight = 10;

void Start()
{
    static const bool started = [] {
        setenv("WEXELXIDIR", "/tmp", 0);
        return InitLib("/tmp/host", nullptr, 0) == 0;
    }();
    benchmark::DoNotOptimize(started);
}

HFONT MakeFont(const char *family)
{
    return CreateFont(kHeight, 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0, family);
}

struct MeasuringContext {
    MeasuringContext()
    {
        Start();
        font = MakeFont(kFamily);
        hdc = CreateCompatibleDC(nullptr);
        SelectObject(hdc, font);
    }
    ~MeasuringContext()
    {
        DeleteDC(hdc);
        DeleteObject(font);
    }
    HFONT font;
    HDC hdc;
};

struct PangoLayoutAt96 {
    PangoLayoutAt96()
    {
        map = pango_ft2_font_map_new();
        pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map), 96, 96);
        context = pango_font_map_create_context(map);
        layout = pango_layout_new(context);
        PangoFontDescription *description = pango_font_description_from_string(kFamily);
        pango_font_description_set_size(description, kHeight * PANGO_SCALE);
        pango_layout_set_font_description(layout, description);
        pango_font_description_free(description);
    }
    ~PangoLayoutAt96()
    {
        g_object_unref(layout);
        g_object_unref(context);
        g_object_unref(map);
    }
    PangoFontMap *map;
    PangoContext *context;
    PangoLayout *layout;
};

// A text of a length that no call before had.
class FreshTexts {
public:
    explicit FreshTexts(int64_t length) : text_(static_cast<size_t>(length), 'a') {}

    const std::string &Next()
    {
        for (char &c : text_) {
            if (++c <= 'z')
                break;
            c = 'a';
        }
        return text_;
    }

private:
    std::string text_;
};

void MeasureFreshText(benchmark::State &state)
{
    MeasuringContext context;
    FreshTexts texts(state.range(0));
    for (auto _ : state) {
        SIZE size;
        GetTextExtentPoint32(context.hdc, texts.Next().c_str(), -1, &size);
        benchmark::DoNotOptimize(size);
    }
}
BENCHMARK(MeasureFreshText)->Arg(8)->Arg(60)->Arg(1000)->Arg(40000);

void PangoMeasure(benchmark::State &state)
{
    PangoLayoutAt96 pango;
    FreshTexts texts(state.range(0));
    for (auto _ : state) {
        int width, height;
        pango_layout_set_text(pango.layout, texts.Next().c_str(), -1);
        pango_layout_get_pixel_size(pango.layout, &width, &height);
        benchmark::DoNotOptimize(width);
    }
}
BENCHMARK(PangoMeasure)->Arg(8)->Arg(60)->Arg(1000)->Arg(40000);

void MeasureTextAgain(benchmark::State &state)
{
    MeasuringContext context;
    const std::string text(static_cast<size_t>(state.range(0)), 'm');
    for (auto _ : state) {
        SIZE size;
        GetTextExtentPoint32(context.hdc, text.c_str(), -1, &size);
        benchmark::DoNotOptimize(size);
    }
}
BENCHMARK(MeasureTextAgain)->Arg(8)->Arg(60)->Arg(1000)->Arg(40000);

// The words of a document, over and over: they do not fit into the young generation alone.
void MeasureWordsOfAPage(benchmark::State &state)
{
    MeasuringContext context;
    std::vector<std::string> words;
    for (int i = 0; i < 1500; i++)
        words.push_back("word" + std::to_string(i * 7919));
    size_t next = 0;
    for (auto _ : state) {
        SIZE size;
        GetTextExtentPoint32(context.hdc, words[next].c_str(), -1, &size);
        benchmark::DoNotOptimize(size);
        next = (next + 1) % words.size();
    }
}
BENCHMARK(MeasureWordsOfAPage);

void CreateKnownFont(benchmark::State &state)
{
    Start();
    for (auto _ : state)
        DeleteObject(MakeFont(kFamily));
}
BENCHMARK(CreateKnownFont);

// What CreateKnownFont cannot do without: the same Pango steps on a pattern that is at hand.
void PangoFontAlone(benchmark::State &state)
{
    PangoLayoutAt96 pango;
    PangoFontDescription *description =
        pango_font_description_copy(pango_layout_get_font_description(pango.layout));
    for (auto _ : state) {
        PangoContext *context = pango_font_map_create_context(pango.map);
        PangoLayout *layout = pango_layout_new(context);
        PangoFont *font = pango_font_map_load_font(pango.map, context, description);
        pango_layout_set_font_description(layout, description);
        PangoFontMetrics *metrics = pango_font_get_metrics(font, nullptr);
        pango_layout_set_text(layout, "W", 1);
        int width;
        pango_layout_get_pixel_size(layout, &width, nullptr);
        benchmark::DoNotOptimize(width);
        pango_font_metrics_unref(metrics);
        g_object_unref(font);
        g_object_unref(layout);
        g_object_unref(context);
    }
    pango_font_description_free(description);
}
BENCHMARK(PangoFontAlone);

void OneFontconfigList(benchmark::State &state)
{
    FcPattern *pattern = FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, kFamily, FC_OUTLINE,
                                        FcTypeBool, FcTrue, FC_WEIGHT, FcTypeInteger,
                                        FC_WEIGHT_REGULAR, FC_SLANT, FcTypeInteger, 0, nullptr);
    FcObjectSet *objects =
        FcObjectSetBuild(FC_FAMILY, FC_WEIGHT, FC_SLANT, FC_FILE, FC_OUTLINE, FC_SPACING, nullptr);
    for (auto _ : state)
        FcFontSetDestroy(FcFontList(nullptr, pattern, objects));
    FcObjectSetDestroy(objects);
    FcPatternDestroy(pattern);
}
BENCHMARK(OneFontconfigList);

} // namespace
