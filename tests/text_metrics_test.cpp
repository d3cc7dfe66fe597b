// What texts and fonts measure, held against Pango asked by the same steps.
#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "fonts/extent_cache.h"
#include "fonts/owners.h"
#include "support/private_fonts.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

int gLists = 0;

} // namespace

// The executable's definition comes first: the library's calls arrive here on their way.
extern "C" FcFontSet *FcFontList(FcConfig *config, FcPattern *pattern, FcObjectSet *objects)
{
    static auto *const next =
        reinterpret_cast<decltype(FcFontList) *>(dlsym(RTLD_NEXT, "FcFontList"));
    gLists++;
    return next(config, pattern, objects);
}

namespace {

// What Pango itself says of a font at a size and a resolution.
class DirectAnswer {
public:
    DirectAnswer(const char *name, int32_t height, int32_t dpi)
    {
        map_.reset(pango_ft2_font_map_new());
        pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map_.get()), dpi, dpi);
        const DescriptionPtr description(pango_font_description_from_string(name));
        if (height >= 0)
            pango_font_description_set_size(description.get(), height * PANGO_SCALE);
        context_.reset(pango_font_map_create_context(map_.get()));
        layout_.reset(pango_layout_new(context_.get()));
        pango_layout_set_font_description(layout_.get(), description.get());
        const FontPtr font(pango_font_map_load_font(map_.get(), context_.get(), description.get()));
        const MetricsPtr metrics(pango_font_get_metrics(font.get(), nullptr));
        ascent = PANGO_PIXELS_CEIL(pango_font_metrics_get_ascent(metrics.get()));
        descent = PANGO_PIXELS_CEIL(pango_font_metrics_get_descent(metrics.get()));
        average = PANGO_PIXELS_CEIL(pango_font_metrics_get_approximate_char_width(metrics.get()));
    }

    // A text without any width has one of 1.
    int WidthOf(const std::string &text)
    {
        int width = 0;
        pango_layout_set_text(layout_.get(), text.data(), static_cast<int>(text.size()));
        pango_layout_get_pixel_size(layout_.get(), &width, nullptr);
        return std::max(width, 1);
    }

    int ascent, descent, average;

private:
    FontMapPtr map_;
    ContextPtr context_;
    LayoutPtr layout_;
};

TEST_F(Fonts, MeasureAsPangoDoes)
{
    const HDC screen = CreateCompatibleDC(nullptr);
    const struct {
        HDC own;
        int32_t dpi, mapDpi;
    } contexts[] = {
        {nullptr, 96, 96},
        {nullptr, 254, 96},
        {CreateDC(nullptr, nullptr, nullptr, nullptr), 254, 254},
        {GetDC(nullptr), 1440, 1440},
        {CreateDC25400(nullptr, nullptr, nullptr, nullptr), 25400, 25400},
        {(gLOGPIXELSY = 600, CreateCompatibleDC(nullptr)), 600, 96},
        {(gLOGPIXELSY = 48, CreateCompatibleDC(nullptr)), 48, 96},
    };
    const struct {
        std::string text;
        int32_t count;
    } texts[] = {
        {"Price: 1.234,56", -1},
        {"AVATAR ffl", INT32_MIN},
        {"Gr\u00FC\u00DFe \u03B1\u03B2", 99},
        {"two\nlines", -1},
        {"bad \xFF\xC3( bytes", -1},
        {"u\u0308\u0308", 2},
        {"\u200B", -1},
        {"abc", INT32_MAX},
        {"abc", 2},
        {"abc", 0},
        {"", -1},
    };
    const auto compare = [&](const auto &row, LOGFONT asked, const char *name, uint8_t pitch) {
        gLOGPIXELSY = row.dpi;
        asked.lfDC = row.own;
        const HFONT font = Create(asked);
        const HDC hdc = row.own ? row.own : screen;
        SelectObject(hdc, font);
        DirectAnswer direct(name, asked.lfHeight, row.mapDpi);
        TEXTMETRIC expected = EmptyMetrics();
        expected.tmHeight = direct.ascent + direct.descent;
        expected.tmAscent = direct.ascent;
        expected.tmDescent = direct.descent;
        expected.tmExternalLeading = row.dpi / 96;
        expected.tmAveCharWidth = direct.average;
        expected.tmMaxCharWidth = asked.lfHeight ? direct.WidthOf("W") : 0;
        expected.tmWeight = asked.lfWeight == 700 ? 700 : 0;
        expected.tmItalic = asked.lfItalic;
        expected.tmPitchAndFamily = pitch;
        EXPECT_EQ(MetricsBy(hdc), BytesOf(expected));
        for (const auto &[text, count] : texts) {
            SIZE size = {-1, -1};
            EXPECT_OUTCOME(GetTextExtentPoint32(hdc, text.c_str(), count, &size), TRUE, kUnchanged);
            const size_t most = count < 0 ? text.npos : static_cast<size_t>(count);
            EXPECT_EQ(size.cx, direct.WidthOf(text.substr(0, most))) << text << " " << count;
            EXPECT_EQ(size.cy, expected.tmHeight);
        }
        const FontInfoRecord info = InfoOf(font);
        EXPECT_EQ(info.height, expected.tmHeight);
        EXPECT_EQ(info.ascent, direct.ascent);
        EXPECT_EQ(info.descent, direct.descent);
        DeleteObject(font);
    };
    for (const auto &row : contexts) {
        for (const int32_t height : {10, 1, 37, 0, -12}) {
            SCOPED_TRACE(std::to_string(row.dpi) + " dpi, height " + std::to_string(height));
            compare(row, Asked("DejaVu Sans Mono", height, 700), "DejaVu Sans Mono Bold", 4);
            compare(row, Asked("Nimbus Sans", height, 600, 1), "Nimbus Sans Bold Italic", 5);
        }
        DeleteDC(row.own);
    }
    DeleteDC(screen);
}

TEST_F(Fonts, MeasureHostileInput)
{
    for (const int32_t height : {INT32_MIN, -1, 100000, 2097151, 2097152, INT32_MAX})
        WidthBy(Create(Asked("DejaVu Sans", height)), "text");
    LOGFONT endless = Asked("DejaVu Sans");
    memset(endless.lfFaceName, 'n', LF_FACESIZE);
    EXPECT_EQ(Create(endless), nullptr);
    EnumFonts(
        nullptr, "DejaVu Sans", [](auto...) { return 1; }, 0);
    EXPECT_EQ(InfoOf(Create(endless)).family, std::string(127, 'n'));
    EXPECT_STREQ(InfoOf(CreateFont(10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr)).family, "");
    const std::string name(200, 'm');
    const HFONT font = CreateFont(10, 1, 2, 3, 700, 4, 5, 6, 7, 8, 9, 10, 11, name.c_str());
    const FontInfoRecord info = InfoOf(font);
    EXPECT_EQ(info.family, name.substr(0, 127));
    EXPECT_EQ((std::vector{info.bold, info.italic, info.underline}),
              (std::vector<uint8_t>{1, 4, 5}));

    DirectAnswer direct("DejaVu Sans", 10, 96);
    std::string page;
    while (page.size() < 1000000)
        page += "a page of words ";
    for (const int32_t count : {20000, 20000, 1000, 1000, INT32_MAX}) // and once more
        EXPECT_EQ(WidthBy(font, page.c_str(), count),
                  direct.WidthOf(page.substr(0, static_cast<size_t>(count))));
    EXPECT_EQ(WidthBy(font, nullptr, 3), 1);
    EXPECT_OUTCOME(TextOut(nullptr, 1, 2, "text", 4), TRUE, ERROR_SUCCESS);
}

TEST(FewFonts, AreRememberedUntilFontconfigsFontsChange)
{
    PrivateFonts fonts;
    fonts.Add("NimbusSans-Regular.otf");
    StartedLibrary library;
    const auto listsFor = [](const LOGFONT &asked) {
        gLists = 0;
        DeleteObject(Create(asked));
        return gLists;
    };
    EXPECT_EQ(listsFor(Asked("DejaVu Sans", 10, 800)), 3);
    FcFini(); // nothing stands in its way before the first font
    const LOGFONT nimbus = Asked("Nimbus Sans"), dejavu = Asked("DejaVu Sans");
    EXPECT_EQ(listsFor(nimbus), 1);
    EXPECT_EQ(listsFor(nimbus), 0);
    for (int i = 0; i < 130; i++) // more than are remembered
        DeleteObject(Create(Asked("Nimbus Sans", 20 + i)));
    EXPECT_EQ(listsFor(nimbus), 1);
    EXPECT_EQ(listsFor(dejavu), 2);

    // Fonts that come serve new fonts. Live ones stay as they were, also where those would help.
    const char *hebrew = "\u05D0\u05D1\u05D2", *arabic = "\u0627\u0628\u062A";
    DirectAnswer old("Nimbus Sans", 10, 96);
    const int32_t oldHebrew = old.WidthOf(hebrew), oldArabic = old.WidthOf(arabic);
    const HFONT live = Create(nimbus);
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    const std::string added = PrivateFonts::InstalledPath("DejaVuSans.ttf");
    FcConfigAppFontAddFile(nullptr, reinterpret_cast<const FcChar8 *>(added.c_str()));
    EXPECT_EQ(InfoOf(Create(dejavu)).filePath, added);
    DirectAnswer now("Nimbus Sans", 10, 96);
    EXPECT_NE(now.WidthOf(hebrew), oldHebrew);
    EXPECT_EQ(WidthBy(Create(nimbus), hebrew), now.WidthOf(hebrew));
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    FcConfigAppFontClear(nullptr);
    EXPECT_EQ(Create(dejavu), nullptr);
    usleep(1100000); // after which fontconfig looks again
    fonts.Add("DejaVuSans.ttf");
    EXPECT_EQ(InfoOf(Create(dejavu)).filePath, fonts.Path("DejaVuSans.ttf"));
    for (int i = 0; i < 3; i++)
        FcInitReinitialize();
    EXPECT_EQ(InfoOf(Create(dejavu)).filePath, fonts.Path("DejaVuSans.ttf"));
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    EXPECT_EQ(WidthBy(live, arabic), oldArabic);
}

TEST(ExtentCache, NeverTellsAWrongWidthAndStaysBounded)
{
    std::mt19937 random(1);
    ExtentCache cache;
    const std::string longest(ExtentCache::kLongestText, 'x');
    for (int i = 0; i < 50000; i++) {
        const auto face = static_cast<uint32_t>(random() % 3);
        const auto number = static_cast<uint32_t>(random() % 100000);
        const std::string text =
            std::string(number % 50 == 0 ? number / 5 : 0, 'x') + std::to_string(number);
        const auto width = static_cast<int32_t>(3 * number + face);
        ASSERT_EQ(cache.Find(face, text).value_or(width), width);
        cache.Store(face, text, width);
        ASSERT_EQ(cache.Find(face, text).has_value(), text.size() <= longest.size());
    }
    // A text that is asked for lives on; one that is not goes with its generation, which ends when
    // it has its most texts or its most bytes.
    for (const std::string &text : {longest, std::string("text")}) {
        cache.Store(7, "kept", 1);
        cache.Store(7, "gone", 1);
        const size_t room = std::min(cache.kMostTexts, cache.kMostBytes / text.size());
        for (uint32_t face = 100; face < 102 + 2 * room; face++) {
            cache.Store(face, text, 1);
            ASSERT_TRUE(cache.Find(7, "kept"));
        }
        EXPECT_FALSE(cache.Find(7, "gone"));
        EXPECT_TRUE(cache.Find(102 + static_cast<uint32_t>(room), text));
    }
}

} // namespace
