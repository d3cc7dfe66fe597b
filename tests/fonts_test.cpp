// Fonts over a private configuration, held against fontconfig and Pango asked by the same steps.
#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <string>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

#include "fonts/owners.h"
#include "support/last_error.h"
#include "support/library.h"
#include "support/private_fonts.h"
#include "support/reports.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

int gLists = 0;
bool gRefused = false; // FcInit and FcPatternCreate

template <typename Function>
Function *Next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The executable's definitions come first: the library's calls arrive here on their way.
extern "C" FcFontSet *FcFontList(FcConfig *config, FcPattern *pattern, FcObjectSet *objects)
{
    gLists++;
    return Next<decltype(FcFontList)>("FcFontList")(config, pattern, objects);
}

extern "C" FcBool FcInit(void)
{
    return gRefused ? FcFalse : Next<decltype(FcInit)>("FcInit")();
}

extern "C" FcPattern *FcPatternCreate(void)
{
    return gRefused ? nullptr : Next<decltype(FcPatternCreate)>("FcPatternCreate")();
}

namespace {

HFONT Create(const LOGFONT &logfont)
{
    HFONT font = nullptr;
    EXPECT_LAST_ERROR(font = CreateFontIndirect(&logfont), ERROR_SUCCESS);
    return font;
}

FontInfoRecord InfoOf(HFONT font)
{
    FontInfoRecord info;
    memset(&info, 0x5A, sizeof info);
    EXPECT_LAST_ERROR(GetFontInfo(font, &info), kUnchanged);
    EXPECT_EQ(info.reserved, 0x5A);
    return info;
}

// What Pango itself says of a font file at a size and a resolution.
class DirectAnswer {
public:
    DirectAnswer(const std::string &file, int32_t height, int32_t dpi)
    {
        map_.reset(pango_ft2_font_map_new());
        pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map_.get()), dpi, dpi);
        const PatternPtr query(
            FcPatternBuild(nullptr, FC_FILE, FcTypeString, file.c_str(), nullptr));
        const ObjectSetPtr objects(FcObjectSetBuild(FC_FAMILY, FC_WEIGHT, FC_SLANT, nullptr));
        const FontSetPtr set(FcFontList(nullptr, query.get(), objects.get()));
        const DescriptionPtr description(
            pango_fc_font_description_from_pattern(set->fonts[0], FALSE));
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

    int WidthOf(const std::string &text)
    {
        int width = 0;
        pango_layout_set_text(layout_.get(), text.data(), static_cast<int>(text.size()));
        pango_layout_get_pixel_size(layout_.get(), &width, nullptr);
        return width;
    }

    int ascent, descent, average;

private:
    FontMapPtr map_;
    ContextPtr context_;
    LayoutPtr layout_;
};

TEXTMETRIC MetricsBy(HDC hdc)
{
    TEXTMETRIC metrics;
    memset(&metrics, 0x5A, sizeof metrics);
    EXPECT_OUTCOME(GetTextMetrics(hdc, &metrics), TRUE, kUnchanged);
    return metrics;
}

// A record with its constant bytes, and zero but for those.
TEXTMETRIC EmptyMetrics()
{
    TEXTMETRIC metrics = {};
    metrics.tmLastChar = 0xFF;
    metrics.tmDefaultChar = metrics.tmBreakChar = ' ';
    metrics.tmCharSet = DEFAULT_CHARSET;
    return metrics;
}

std::string BytesOf(const TEXTMETRIC &metrics)
{
    return {reinterpret_cast<const char *>(&metrics), offsetof(TEXTMETRIC, tmCharSet) + 1};
}

TEST(Fonts, AreChosenByFamilyWeightAndSlant)
{
    PrivateFonts fonts;
    for (const char *name : {"0.otf", "1.pfb", "A.TTF", "b.ttf.otf", "z.otf", "x.ttf", "ttf"})
        fonts.Add("DejaVuSans.ttf", name);
    fonts.Add("DejaVuSans-Bold.ttf", "BOLD.TTF");
    for (const char *name :
         {"DejaVuSerif-Bold.ttf", "URWBookman-Light.otf", "URWBookman-DemiItalic.otf",
          "URWBookman-Demi.otf", "NimbusSans-Regular.otf", "NimbusSans-BoldItalic.otf"})
        fonts.Add(name);
    StartedLibrary library;
    const std::tuple<const char *, int32_t, uint8_t, const char *> rows[] = {
        {"DejaVu Sans", 400, 0, "x.ttf"},
        {"dejavu sans", 0, 0, "x.ttf"},
        {"DejaVu Sans", 700, 0, "BOLD.TTF"},
        {"DejaVu Serif", 400, 0, nullptr},
        {"DejaVu Serif", 800, 0, "DejaVuSerif-Bold.ttf"},
        {"URW Bookman", 400, 0, "URWBookman-Light.otf"},
        {"URW Bookman", 700, 0, "URWBookman-Demi.otf"},
        {"URW Bookman", 700, 255, "URWBookman-DemiItalic.otf"},
        {"URW Bookman", 300, 1, nullptr},
        {"Nimbus Sans", -5, 0, "NimbusSans-Regular.otf"},
        {"Nimbus Sans", 600, 1, "NimbusSans-BoldItalic.otf"},
        {"", 400, 0, nullptr},
    };
    for (const auto &[family, weight, italic, file] : rows) {
        SCOPED_TRACE(std::string(family) + std::to_string(weight));
        const HFONT font = Create(Asked(family, 10, weight, italic));
        ASSERT_EQ(font != nullptr, file != nullptr);
        if (font) {
            EXPECT_EQ(InfoOf(font).filePath, fonts.Path(file));
            EXPECT_EQ(InfoOf(font).bold, weight >= 700);
        }
    }
}

TEST(Fonts, MeasureAsPangoDoes)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSansMono-Bold.ttf");
    fonts.Add("NimbusSans-Italic.otf");
    StartedLibrary library;
    // A device context, its resolution, and that of its font map.
    const std::tuple<HDC, int32_t, int32_t> contexts[] = {
        {nullptr, 96, 96},
        {nullptr, 254, 96},
        {CreateDC(nullptr, nullptr, nullptr, nullptr), 254, 254},
        {GetDC(nullptr), 1440, 1440},
        {CreateDC25400(nullptr, nullptr, nullptr, nullptr), 25400, 25400},
        {(gLOGPIXELSY = 600, CreateCompatibleDC(nullptr)), 600, 96},
        {(gLOGPIXELSY = 48, CreateCompatibleDC(nullptr)), 48, 96}};
    const HDC screen = CreateCompatibleDC(nullptr);
    const auto compare = [&](const auto &row, LOGFONT asked, const char *file, uint8_t pitch) {
        const auto [own, dpi, mapDpi] = row;
        gLOGPIXELSY = dpi;
        asked.lfDC = own;
        const HFONT font = Create(asked);
        const HDC hdc = own ? own : screen;
        SelectObject(hdc, font);
        DirectAnswer direct(fonts.Path(file), asked.lfHeight, mapDpi);
        TEXTMETRIC expected = EmptyMetrics();
        expected.tmHeight = direct.ascent + direct.descent;
        expected.tmAscent = direct.ascent;
        expected.tmDescent = direct.descent;
        expected.tmExternalLeading = dpi / 96;
        expected.tmAveCharWidth = direct.average;
        expected.tmMaxCharWidth = direct.WidthOf("W");
        expected.tmWeight = asked.lfWeight == 700 ? 700 : 0;
        expected.tmItalic = asked.lfItalic;
        expected.tmPitchAndFamily = pitch;
        EXPECT_EQ(BytesOf(MetricsBy(hdc)), BytesOf(expected));
        for (const char *text : {"Price: 1.234,56", "AVATAR ffl", "Gr\u00FC\u00DFe \u03B1\u03B2",
                                 "two\nlines", "bad \xFF\xC3( bytes", "\u200B", ""}) {
            SIZE size = {-1, -1};
            EXPECT_OUTCOME(GetTextExtentPoint32(hdc, text, -1, &size), TRUE, kUnchanged);
            EXPECT_EQ(size.cx, std::max(direct.WidthOf(text), 1)) << text;
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
            SCOPED_TRACE(std::to_string(std::get<1>(row)) + " dpi, height " +
                         std::to_string(height));
            compare(row, Asked("DejaVu Sans Mono", height, 700), "DejaVuSansMono-Bold.ttf", 4);
            compare(row, Asked("Nimbus Sans", height, 400, 1), "NimbusSans-Italic.otf", 5);
        }
        DeleteDC(std::get<HDC>(row));
    }
    DeleteDC(screen);
}

TEST(Fonts, MeasureHostileInput)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    StartedLibrary library;
    for (const int32_t height : {INT32_MIN, -1, 100000, 2097151, 2097152, INT32_MAX})
        WidthBy(Create(Asked("DejaVu Sans", height)), "text");
    LOGFONT endless = Asked("DejaVu Sans");
    memset(endless.lfFaceName, 'n', LF_FACESIZE);
    EXPECT_EQ(Create(endless), nullptr);
    EnumFonts(
        nullptr, nullptr, [](auto...) { return 1; }, 0);
    EXPECT_EQ(InfoOf(Create(endless)).family, std::string(127, 'n'));
    EXPECT_STREQ(InfoOf(CreateFont(10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr)).family, "");
    const HFONT font =
        CreateFont(10, 1, 2, 3, 700, 4, 5, 6, 7, 8, 9, 10, 11, std::string(200, 'm').c_str());
    const FontInfoRecord info = InfoOf(font);
    EXPECT_EQ(info.family, std::string(127, 'm'));
    EXPECT_EQ((std::vector{info.bold, info.italic, info.underline}),
              (std::vector<uint8_t>{1, 4, 5}));

    DirectAnswer direct(fonts.Path("DejaVuSans.ttf"), 10, 96);
    std::string page;
    while (page.size() < 1000000)
        page += "a page of words ";
    const std::tuple<const char *, int32_t, std::string> rows[] = {
        {"abc", INT32_MAX, "abc"},
        {"abc", 2, "ab"},
        {"abc", INT32_MIN, "abc"},
        {"a\xC3\xBC", 2, "a\xC3"},
        {"abc", 0, ""},
        {page.c_str(), 20000, page.substr(0, 20000)},
        {page.c_str(), INT32_MAX, page},
        {nullptr, 3, ""}};
    for (const auto &[text, count, measured] : rows) {
        const int32_t width = std::max(direct.WidthOf(measured), 1);
        EXPECT_EQ(WidthBy(font, text, count), width) << measured.size();
        EXPECT_EQ(WidthBy(font, text, count), width) << "once more";
    }
    EXPECT_OUTCOME(TextOut(nullptr, 1, 2, "text", 4), TRUE, ERROR_SUCCESS);
}

using Enumerated = std::map<std::string, std::pair<uint32_t, int>>; // type, pitches of both records

int32_t Enumerate(const LOGFONT *logfont, const TEXTMETRIC *metrics, uint32_t type, LPARAM data)
{
    auto &seen = *reinterpret_cast<Enumerated *>(data);
    seen[logfont->lfFaceName] = {type, logfont->lfPitchAndFamily * 10 + metrics->tmPitchAndFamily};
    LOGFONT named = Asked(logfont->lfFaceName, 0, 0);
    named.lfPitchAndFamily = logfont->lfPitchAndFamily;
    EXPECT_EQ(memcmp(&named, logfont, sizeof named), 0);
    TEXTMETRIC only = {};
    only.tmPitchAndFamily = metrics->tmPitchAndFamily;
    only.tmCharSet = DEFAULT_CHARSET;
    EXPECT_EQ(BytesOf(*metrics), BytesOf(only));
    // The lock is held, and the library can be called.
    auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
    std::thread([mutex] { EXPECT_NE(pthread_mutex_trylock(mutex), 0); }).join();
    DeleteObject(CreateFontIndirect(logfont));
    SetLastError(kUnchanged);
    return seen.erase("the last wanted") ? 0 : 7;
}

TEST(Fonts, AreEnumeratedAndTheFirstOneStandsIn)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    fonts.Add("DejaVuSansMono.ttf");
    fonts.Add("DejaVuSerif.ttf", "SERIF.TTF");
    fonts.Add("NimbusMonoPS-Bold.otf");
    fonts.Add("NimbusSans-Regular.otf", "x.pfb");
    StartedLibrary library;
    const auto enumerate = [](const char *family, Enumerated &seen) {
        return EnumFonts(nullptr, family, Enumerate, reinterpret_cast<LPARAM>(&seen));
    };
    Enumerated none, one, all, few;
    EXPECT_OUTCOME(enumerate("Unknown", none), 0, kUnchanged);
    EXPECT_EQ(Create(Asked("Unknown")), nullptr);
    EXPECT_OUTCOME(enumerate("DejaVu Sans Mono", one), 7, kUnchanged);
    EXPECT_OUTCOME(enumerate(nullptr, all), 7, kUnchanged);
    const Enumerated expected = {{"DejaVu Sans", {4u, 25}},
                                 {"DejaVu Sans Mono", {4u, 14}},
                                 {"DejaVu Serif", {0u, 23}},
                                 {"Nimbus Mono PS", {0u, 12}},
                                 {"Nimbus Sans", {0u, 23}}};
    EXPECT_EQ(all, expected);
    few["the last wanted"] = {};
    EXPECT_OUTCOME(enumerate(nullptr, few), 0, kUnchanged);
    EXPECT_EQ(few.size(), 1u);

    const FontInfoRecord info = InfoOf(Create(Asked("Unknown", 10, 700)));
    EXPECT_STREQ(info.family, "Unknown");
    EXPECT_EQ(info.filePath, fonts.Path("DejaVuSansMono.ttf"));
    gRefused = true;
    const LOGFONT other = Asked("Another");
    EXPECT_OUTCOME(CreateFontIndirect(&other), nullptr, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_OUTCOME(enumerate("DejaVu Sans", none), 0, ERROR_NOT_ENOUGH_MEMORY);
    gRefused = false;
    TermFonts();
    TermFonts();
    EXPECT_EQ(Create(Asked("DejaVu Sans")), nullptr) << "no map to measure with";
    EXPECT_EQ(InitFonts(), 0);
    EXPECT_EQ(InitFonts(), 0);
    EXPECT_EQ(Create(Asked("Unknown")), nullptr);
    EXPECT_NE(Create(Asked("DejaVu Sans")), nullptr);
}

TEST(Fonts, AreCheckedBeforeTheyAreRead)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    StartedLibrary library;
    SetHeadlessErrorProc(RecordReport);
    const HDC hdc = GetDC(nullptr);
    const HFONT first = Create(Asked("DejaVu Sans"));
    EXPECT_OUTCOME(SelectObject(hdc, first), nullptr, kUnchanged);
    EXPECT_OUTCOME(SelectObject(hdc, first), first, kUnchanged);
    const auto wild = reinterpret_cast<HFONT>(reinterpret_cast<uintptr_t>(first) + 512);
    for (const HFONT bad : {wild, static_cast<HFONT>(&fonts), reinterpret_cast<HFONT>(16)}) {
        EXPECT_OUTCOME(SelectObject(hdc, bad), nullptr, kUnchanged);
        EXPECT_OUTCOME(DeleteObject(bad), TRUE, kUnchanged);
        EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to SelectObject", 0},
                                          {"Invalid HFONT passed to DeleteObject", 0}}));
    }
    EXPECT_EQ(SelectObject(hdc, first), first) << "the old font stays";
    EXPECT_OUTCOME(DeleteObject(first), TRUE, kUnchanged);
    EXPECT_EQ(TakeReports(), Reports());
    EXPECT_OUTCOME(DeleteObject(nullptr), TRUE, kUnchanged);
    EXPECT_EQ(InfoOf(first).family[0], 0x5A) << "nothing is written";
    EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to DeleteObject", 0},
                                      {"Invalid HFONT passed to GetFontInfo", 0}}));
    const auto expectNothing = [](HDC context, const Reports &reported) {
        EXPECT_EQ(BytesOf(MetricsBy(context)), BytesOf(EmptyMetrics()));
        SIZE size = {-3, -4};
        EXPECT_OUTCOME(GetTextExtentPoint32(context, "x", 1, &size), TRUE, kUnchanged);
        EXPECT_EQ(size.cx, -3);
        Reports expected;
        for (const char *name : {"GetTextMetrics", "GetTextExtentPoint32"}) {
            for (const auto &[text, severity] : reported)
                expected.emplace_back(text + " passed to " + name, severity);
        }
        EXPECT_EQ(TakeReports(), expected);
    };
    expectNothing(hdc, {{"Invalid HFONT selected into HDC", 0}});
    EXPECT_EQ(SelectObject(hdc, nullptr), first) << "stale, but selected";
    expectNothing(hdc, {{"HDC with no selected font", 1}, {"Invalid HFONT selected into HDC", 0}});
    expectNothing(nullptr, {{"NULL HDC", 1}});
    SetHeadlessErrorProc(nullptr);
    expectNothing(hdc, {});
    expectNothing(nullptr, {});
    EXPECT_EQ(Create(Asked("DejaVu Sans", 20)), first) << "the record is used again";
    DeleteDC(hdc);
}

TEST(Fonts, EndWithTheLibraryAndStartAgain)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    std::vector<HFONT> made(300); // more than there are buckets at first
    for (int run = 0; run < 2; run++) {
        StartedLibrary library;
        SetHeadlessErrorProc(RecordReport);
        for (HFONT &font : made) {
            DeleteObject(Create(Asked("DejaVu Sans")));
            font = Create(Asked("DejaVu Sans"));
        }
        FcInitReinitialize();
        gGeneralFont = Create(Asked("DejaVu Sans"));
        const HDC hdc = GetDC(nullptr);
        for (const HFONT font : made)
            SelectObject(hdc, font);
        DeleteDC(hdc);
    }
    EXPECT_EQ(gGeneralFont, nullptr);
    EXPECT_EQ(TakeReports(), Reports());
    for (const HFONT font : made)
        DeleteObject(font);
    EXPECT_EQ(TakeReports().size(), made.size());
    usleep(100000); // Pango's own thread lags behind
    FcFini();       // ends the process where anything is left
    gRefused = true;
    EXPECT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 3);
    EXPECT_EQ(gReady, 0);
    EXPECT_EQ(gTerminating, 1);
    EXPECT_EQ(gWexelxiCriticalSection, nullptr);
    EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to DeleteObject", 0}}));
}

TEST(Fonts, AreRememberedUntilFontconfigsFontsChange)
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
    DirectAnswer old(fonts.Path("NimbusSans-Regular.otf"), 10, 96);
    const int32_t oldHebrew = old.WidthOf(hebrew), oldArabic = old.WidthOf(arabic);
    const HFONT live = Create(nimbus);
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    const std::string added = PrivateFonts::InstalledPath("DejaVuSans.ttf");
    FcConfigAppFontAddFile(nullptr, reinterpret_cast<const FcChar8 *>(added.c_str()));
    EXPECT_EQ(InfoOf(Create(dejavu)).filePath, added);
    DirectAnswer now(fonts.Path("NimbusSans-Regular.otf"), 10, 96);
    EXPECT_NE(now.WidthOf(hebrew), oldHebrew);
    EXPECT_EQ(WidthBy(Create(nimbus), hebrew), now.WidthOf(hebrew));
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    FcConfigAppFontClear(nullptr);
    EXPECT_EQ(Create(dejavu), nullptr);
    fonts.Add("DejaVuSans.ttf");
    for (int i = 0; i < 3; i++)
        FcInitReinitialize();
    EXPECT_EQ(InfoOf(Create(dejavu)).filePath, fonts.Path("DejaVuSans.ttf"));
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    EXPECT_EQ(WidthBy(live, arabic), oldArabic);
}

} // namespace
