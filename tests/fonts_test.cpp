// Fonts over a private configuration, held against fontconfig and Pango asked by the same steps.
#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <map>
#include <pango/pangofc-fontmap.h>
#include <pango/pangoft2.h>
#include <pthread.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "support/library.h"
#include "support/private_fonts.h"
#include "wexelxi.h"

namespace {

int gLists = 0;
FcBool gFcInitResult = FcTrue;

template <typename Function>
Function *NextOf(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The executable's definitions come first: the library's calls arrive here on their way.
extern "C" FcFontSet *FcFontList(FcConfig *config, FcPattern *pattern, FcObjectSet *objects)
{
    gLists++;
    return NextOf<decltype(FcFontList)>("FcFontList")(config, pattern, objects);
}

extern "C" FcBool FcInit(void)
{
    return gFcInitResult ? NextOf<decltype(FcInit)>("FcInit")() : FcFalse;
}

namespace {

using Reports = std::vector<std::pair<std::string, int32_t>>;
Reports gReports;

void RecordReport(const char *message, int32_t severity)
{
    gReports.emplace_back(message, severity);
}

Reports TakeReports()
{
    return std::exchange(gReports, {});
}

LOGFONT Asked(const char *family, int32_t height, int32_t weight = 400, uint8_t italic = 0,
              HDC hdc = nullptr)
{
    LOGFONT logfont = {};
    logfont.lfDC = hdc;
    logfont.lfHeight = height;
    logfont.lfWeight = weight;
    logfont.lfItalic = italic;
    memcpy(logfont.lfFaceName, family, strnlen(family, LF_FACESIZE));
    return logfont;
}

HFONT Create(const LOGFONT &logfont)
{
    SetLastError(77);
    const HFONT font = CreateFontIndirect(&logfont);
    EXPECT_EQ(GetLastError(), 0u);
    return font;
}

FontInfoRecord InfoOf(HFONT font)
{
    FontInfoRecord info;
    memset(&info, 0x5A, sizeof info);
    GetFontInfo(font, &info);
    EXPECT_EQ(info.reserved, 0x5A);
    return info;
}

// What Pango itself says of a font file at a size and a resolution.
class DirectAnswer {
public:
    DirectAnswer(const std::string &file, int32_t height, int32_t dpi)
    {
        map_ = pango_ft2_font_map_new();
        pango_ft2_font_map_set_resolution(PANGO_FT2_FONT_MAP(map_), dpi, dpi);
        FcPattern *query = FcPatternBuild(nullptr, FC_FILE, FcTypeString, file.c_str(), nullptr);
        FcObjectSet *objects = FcObjectSetBuild(FC_FAMILY, FC_WEIGHT, FC_SLANT, FC_FILE, FC_OUTLINE,
                                                FC_SPACING, nullptr);
        FcFontSet *set = FcFontList(nullptr, query, objects);
        PangoFontDescription *description =
            pango_fc_font_description_from_pattern(set->fonts[0], FALSE);
        if (height >= 0)
            pango_font_description_set_size(description, height * PANGO_SCALE);
        context_ = pango_font_map_create_context(map_);
        layout_ = pango_layout_new(context_);
        pango_layout_set_font_description(layout_, description);
        PangoFont *font = pango_font_map_load_font(map_, context_, description);
        PangoFontMetrics *metrics = pango_font_get_metrics(font, nullptr);
        ascent = PANGO_PIXELS_CEIL(pango_font_metrics_get_ascent(metrics));
        descent = PANGO_PIXELS_CEIL(pango_font_metrics_get_descent(metrics));
        average = PANGO_PIXELS_CEIL(pango_font_metrics_get_approximate_char_width(metrics));
        pango_font_metrics_unref(metrics);
        g_object_unref(font);
        pango_font_description_free(description);
        FcFontSetDestroy(set);
        FcObjectSetDestroy(objects);
        FcPatternDestroy(query);
    }
    ~DirectAnswer()
    {
        g_object_unref(layout_);
        g_object_unref(context_);
        g_object_unref(map_);
    }
    DirectAnswer(const DirectAnswer &) = delete;
    DirectAnswer &operator=(const DirectAnswer &) = delete;

    int WidthOf(const std::string &text)
    {
        pango_layout_set_text(layout_, text.data(), static_cast<int>(text.size()));
        int width = 0;
        pango_layout_get_pixel_size(layout_, &width, nullptr);
        return width;
    }

    int ascent, descent, average;

private:
    PangoFontMap *map_;
    PangoContext *context_;
    PangoLayout *layout_;
};

const std::string kTexts[] = {
    "W",          "Price: 1.234,56",     "AVATAR ffl", "Gr\u00FC\u00DFe \u03B1\u03B2",
    "two\nlines", "bad \xFF\xC3( bytes", "\u200B",     ""};

void ExpectMeasuresOf(DirectAnswer &direct, HDC hdc, int32_t extra, int32_t weight = 0,
                      uint8_t italic = 0, uint8_t pitch = 5)
{
    const int32_t height = direct.ascent + direct.descent;
    const TEXTMETRIC expected = {height,
                                 direct.ascent,
                                 direct.descent,
                                 0,
                                 extra,
                                 direct.average,
                                 direct.WidthOf("W"),
                                 weight,
                                 0,
                                 0,
                                 0,
                                 0,
                                 0xFF,
                                 0x20,
                                 0x20,
                                 italic,
                                 0,
                                 0,
                                 pitch,
                                 1};
    TEXTMETRIC metrics;
    memset(&metrics, 0x5A, sizeof metrics);
    EXPECT_EQ(GetTextMetrics(hdc, &metrics), TRUE);
    EXPECT_EQ(memcmp(&metrics, &expected, 53), 0);
    for (int round = 0; round < 2; round++) { // measured, then remembered
        for (const std::string &text : kTexts) {
            SIZE size = {-1, -1};
            const int32_t count = round ? -1 : static_cast<int32_t>(text.size());
            EXPECT_EQ(GetTextExtentPoint32(hdc, text.c_str(), count, &size), TRUE);
            EXPECT_EQ(size.cx, std::max(direct.WidthOf(text), 1)) << text;
            EXPECT_EQ(size.cy, height);
        }
    }
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
    const struct {
        const char *family;
        int32_t weight;
        uint8_t italic;
        const char *file; // null: no such font
    } rows[] = {
        {"DejaVu Sans", 400, 0, "x.ttf"},
        {"dejavu sans", 0, 0, "x.ttf"},
        {"DejaVu Sans", 700, 0, "BOLD.TTF"},
        {"DejaVu Sans", 400, 1, nullptr},
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
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.family) + std::to_string(row.weight));
        const HFONT font = Create(Asked(row.family, 10, row.weight, row.italic));
        ASSERT_EQ(font != nullptr, row.file != nullptr);
        if (!font)
            continue;
        const FontInfoRecord info = InfoOf(font);
        EXPECT_EQ(info.filePath, fonts.Path(row.file));
        EXPECT_STREQ(info.family, row.family);
        EXPECT_EQ(info.bold, row.weight >= 700);
        EXPECT_EQ(info.italic, row.italic);
        EXPECT_EQ(info.underline, 0);
    }
}

TEST(Fonts, MeasureAsPangoDoes)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSansMono-Bold.ttf");
    fonts.Add("NimbusSans-Italic.otf");
    StartedLibrary library;
    const struct {
        HDC hdc;
        int32_t mapDpi;
        int32_t resolution; // of the device context
    } contexts[] = {{nullptr, 96, 96},
                    {nullptr, 96, 254},
                    {CreateDC(nullptr, nullptr, nullptr, nullptr), 254, 254},
                    {GetDC(nullptr), 1440, 1440},
                    {CreateDC25400(nullptr, nullptr, nullptr, nullptr), 25400, 25400},
                    {(gLOGPIXELSY = 600, CreateCompatibleDC(nullptr)), 96, 600},
                    {(gLOGPIXELSY = 48, CreateCompatibleDC(nullptr)), 96, 48}};
    for (const auto &row : contexts) {
        const HDC hdc = row.hdc ? row.hdc : CreateCompatibleDC(nullptr);
        for (const int32_t height : {10, 1, 37, 0, -12}) {
            SCOPED_TRACE(std::to_string(row.resolution) + " dpi, height " + std::to_string(height));
            gLOGPIXELSY = row.resolution;
            LOGFONT mono = Asked("DejaVu Sans Mono", height, 700, 0, row.hdc);
            mono.lfUnderline = 3;
            const HFONT fontsMade[] = {Create(mono),
                                       Create(Asked("Nimbus Sans", height, 400, 1, row.hdc))};
            const char *files[] = {"DejaVuSansMono-Bold.ttf", "NimbusSans-Italic.otf"};
            for (uint8_t i = 0; i < 2; i++) {
                DirectAnswer direct(fonts.Path(files[i]), height, row.mapDpi);
                SelectObject(hdc, fontsMade[i]);
                ExpectMeasuresOf(direct, hdc, row.resolution / 96, i ? 0 : 700, i, i ? 5 : 4);
                const FontInfoRecord info = InfoOf(fontsMade[i]);
                EXPECT_EQ(
                    (std::vector{info.height, info.ascent, info.descent}),
                    (std::vector{direct.ascent + direct.descent, direct.ascent, direct.descent}));
                EXPECT_EQ(info.underline, i == 0 ? 3 : 0);
                DeleteObject(fontsMade[i]);
            }
        }
        DeleteDC(hdc);
    }
}

TEST(Fonts, MeasureHostileInput)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    StartedLibrary library;
    const HDC hdc = CreateCompatibleDC(nullptr);
    for (const int32_t height : {INT32_MIN, -1, 100000, 2097151, 2097152, INT32_MAX}) {
        const HFONT font = Create(Asked("DejaVu Sans", height));
        SelectObject(hdc, font);
        SIZE size;
        GetTextExtentPoint32(hdc, "text", -1, &size);
        EXPECT_TRUE(DeleteObject(font));
    }
    SelectObject(hdc, nullptr);
    LOGFONT endless = Asked("DejaVu Sans", 10);
    memset(endless.lfFaceName, 'n', LF_FACESIZE);
    EXPECT_EQ(Create(endless), nullptr);
    EnumFonts(
        nullptr, nullptr, [](auto...) { return 1; }, 0);
    EXPECT_EQ(InfoOf(Create(endless)).family, std::string(127, 'n'));
    const HFONT font =
        CreateFont(10, 1, 2, 3, 700, 4, 5, 6, 7, 8, 9, 10, 11, std::string(200, 'm').c_str());
    const FontInfoRecord info = InfoOf(font);
    EXPECT_EQ(info.family, std::string(127, 'm'));
    EXPECT_EQ((std::vector{info.bold, info.italic, info.underline}),
              (std::vector<uint8_t>{1, 4, 5}));
    EXPECT_STREQ(InfoOf(CreateFont(10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr)).family, "");

    SelectObject(hdc, font);
    DirectAnswer direct(fonts.Path("DejaVuSans.ttf"), 10, 96);
    std::string page;
    while (page.size() < 1000000)
        page += "a page of words ";
    const struct {
        std::string text;
        int32_t count;
        std::string measured;
    } rows[] = {
        {"abc", INT32_MAX, "abc"}, {"abc", 2, "ab"},          {"abc", 0, ""},
        {"abc", INT32_MIN, "abc"}, {"a\xC3\xBC", 2, "a\xC3"}, {page, 20000, page.substr(0, 20000)},
        {page, INT32_MAX, page}};
    for (const auto &row : rows) {
        const int32_t width = std::max(direct.WidthOf(row.measured), 1);
        for (int round = 0; round < 2; round++) {
            SIZE size;
            GetTextExtentPoint32(hdc, row.text.c_str(), row.count, &size);
            EXPECT_EQ(size.cx, width) << row.measured.size();
        }
    }
    SIZE size;
    GetTextExtentPoint32(hdc, nullptr, 3, &size);
    EXPECT_EQ(size.cx, 1);
    DeleteDC(hdc);
}

TEST(Fonts, FallBackToTheFirstFontEverEnumerated)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSerif.ttf");
    fonts.Add("NimbusMonoPS-Regular.otf");
    StartedLibrary library;
    const auto countCalls = [](const LOGFONT *, const TEXTMETRIC *, uint32_t, LPARAM data) {
        return ++*reinterpret_cast<int32_t *>(data);
    };
    int32_t calls = 0;
    const auto enumerate = [&](const char *family) {
        return EnumFonts(nullptr, family, countCalls, reinterpret_cast<LPARAM>(&calls));
    };
    EXPECT_EQ(Create(Asked("Unknown", 10)), nullptr);
    EXPECT_EQ(enumerate("Unknown"), 0);
    EXPECT_EQ(Create(Asked("Unknown", 10)), nullptr);
    EXPECT_EQ(enumerate("Nimbus Mono PS"), 1);
    EXPECT_EQ(enumerate("DejaVu Serif"), 2);
    EXPECT_EQ(calls, 2);
    const HFONT font = Create(Asked("Unknown", 10, 700));
    const FontInfoRecord info = InfoOf(font);
    EXPECT_STREQ(info.family, "Unknown");
    EXPECT_EQ(info.filePath, fonts.Path("NimbusMonoPS-Regular.otf"));
    TermFonts();
    TermFonts();
    EXPECT_EQ(Create(Asked("DejaVu Serif", 10)), nullptr) << "no map to measure with";
    EXPECT_EQ(InitFonts(), 0);
    EXPECT_EQ(InitFonts(), 0);
    EXPECT_EQ(Create(Asked("Unknown", 10)), nullptr);
    EXPECT_NE(Create(Asked("DejaVu Serif", 10)), nullptr);
}

struct Enumerated {
    std::map<std::string, std::pair<uint32_t, int>> fonts; // font type, pitches of both records
    int32_t result = 7;
    size_t most = SIZE_MAX;
};

int32_t Enumerate(const LOGFONT *logfont, const TEXTMETRIC *metrics, uint32_t type, LPARAM data)
{
    auto *seen = reinterpret_cast<Enumerated *>(data);
    seen->fonts[logfont->lfFaceName] = {type,
                                        logfont->lfPitchAndFamily * 10 + metrics->tmPitchAndFamily};
    LOGFONT named = {};
    memcpy(named.lfFaceName, logfont->lfFaceName, LF_FACESIZE);
    named.lfPitchAndFamily = logfont->lfPitchAndFamily;
    EXPECT_EQ(memcmp(&named, logfont, sizeof named), 0);
    TEXTMETRIC only = {};
    only.tmPitchAndFamily = metrics->tmPitchAndFamily;
    only.tmCharSet = DEFAULT_CHARSET;
    EXPECT_EQ(memcmp(&only, metrics, 53), 0);
    // The lock is held, and the library can be called.
    auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
    std::thread([mutex] { EXPECT_NE(pthread_mutex_trylock(mutex), 0); }).join();
    DeleteObject(CreateFontIndirect(logfont));
    return seen->fonts.size() >= seen->most ? 0 : seen->result;
}

TEST(Fonts, AreEnumerated)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    fonts.Add("DejaVuSansMono.ttf");
    fonts.Add("DejaVuSerif.ttf", "SERIF.TTF");
    fonts.Add("NimbusMonoPS-Bold.otf");
    fonts.Add("URWGothic-Demi.t1");
    StartedLibrary library;
    Enumerated all;
    EXPECT_EQ(EnumFonts(nullptr, nullptr, Enumerate, reinterpret_cast<LPARAM>(&all)), 7);
    const decltype(all.fonts) expected = {{"DejaVu Sans", {4u, 25}},
                                          {"DejaVu Sans Mono", {4u, 14}},
                                          {"DejaVu Serif", {0u, 23}},
                                          {"Nimbus Mono PS", {0u, 12}},
                                          {"URW Gothic", {0u, 23}}};
    EXPECT_EQ(all.fonts, expected);
    Enumerated few;
    few.most = 2;
    EXPECT_EQ(EnumFonts(nullptr, nullptr, Enumerate, reinterpret_cast<LPARAM>(&few)), 0);
    EXPECT_EQ(few.fonts.size(), 2u);
}

TEST(Fonts, AreCheckedBeforeTheyAreRead)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    StartedLibrary library;
    SetHeadlessErrorProc(RecordReport);
    const HDC hdc = GetDC(nullptr);
    const HFONT first = Create(Asked("DejaVu Sans", 10));
    EXPECT_EQ(SelectObject(hdc, first), nullptr);
    EXPECT_EQ(SelectObject(hdc, first), first);
    const auto wild = reinterpret_cast<HFONT>(reinterpret_cast<uintptr_t>(first) + 512);
    for (const HFONT bad : {wild, static_cast<HFONT>(&fonts), reinterpret_cast<HFONT>(16)}) {
        EXPECT_EQ(SelectObject(hdc, bad), nullptr);
        EXPECT_EQ(DeleteObject(bad), TRUE);
    }
    EXPECT_EQ(TakeReports().size(), 6u);
    EXPECT_EQ(SelectObject(hdc, first), first) << "the old font stays";
    EXPECT_TRUE(DeleteObject(first));
    EXPECT_EQ(TakeReports(), Reports());
    EXPECT_TRUE(DeleteObject(first));
    EXPECT_TRUE(DeleteObject(nullptr));
    EXPECT_EQ(InfoOf(first).family[0], 0x5A) << "nothing is written";
    EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to DeleteObject", 0},
                                      {"Invalid HFONT passed to DeleteObject", 0},
                                      {"Invalid HFONT passed to GetFontInfo", 0}}));
    const auto expectNothing = [](HDC context, const Reports &reported) {
        TEXTMETRIC metrics;
        memset(&metrics, 0x5A, sizeof metrics);
        EXPECT_EQ(GetTextMetrics(context, &metrics), TRUE);
        EXPECT_EQ(std::string(reinterpret_cast<char *>(&metrics), sizeof metrics),
                  std::string(45, '\0') + "\xFF\x20\x20" + std::string(4, '\0') + "\1" +
                      std::string(3, '\0'));
        SIZE size = {-3, -4};
        EXPECT_EQ(GetTextExtentPoint32(context, "x", 1, &size), TRUE);
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

    SetLastError(77);
    TextOut(hdc, 1, 2, "text", 4);
    EXPECT_EQ(GetLastError(), 0u);
    const HFONT second = Create(Asked("DejaVu Sans", 20));
    EXPECT_EQ(second, first) << "the record is used again";
    EXPECT_EQ(InfoOf(second).underline, 0);
    DeleteDC(hdc);
}

TEST(Fonts, EndWithTheLibraryAndStartAgain)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    std::vector<HFONT> stale;
    for (int run = 0; run < 2; run++) {
        StartedLibrary library;
        for (int i = 0; i < 40; i++)
            stale.push_back(Create(Asked("DejaVu Sans", 10 + i)));
        gGeneralFont = stale.back();
        DeleteObject(stale.front());
    }
    EXPECT_EQ(gGeneralFont, nullptr);
    SetHeadlessErrorProc(RecordReport);
    for (const HFONT font : stale)
        DeleteObject(font);
    EXPECT_EQ(TakeReports().size(), stale.size());
    gFcInitResult = FcFalse;
    EXPECT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 3);
    EXPECT_EQ(gReady, 0);
    EXPECT_EQ(gTerminating, 1);
    EXPECT_EQ(gWexelxiCriticalSection, nullptr);
    EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to DeleteObject", 0}}));
}

HFONT MakeFont(const char *family, int32_t weight = 400)
{
    return CreateFont(10, 0, 0, 0, weight, 0, 0, 0, 0, 0, 0, 0, 0, family);
}

int32_t WidthBy(HFONT font, const char *text)
{
    const HDC hdc = CreateCompatibleDC(nullptr);
    SelectObject(hdc, font);
    SIZE size = {};
    GetTextExtentPoint32(hdc, text, -1, &size);
    DeleteDC(hdc);
    return size.cx;
}

TEST(Fonts, AreRememberedUntilFontconfigsFontsChange)
{
    PrivateFonts fonts;
    fonts.Add("NimbusSans-Regular.otf");
    StartedLibrary library;
    const auto listsFor = [](const char *family, int32_t weight) {
        gLists = 0;
        DeleteObject(MakeFont(family, weight));
        return gLists;
    };
    FcFini(); // there is nothing yet that would stand in its way
    EXPECT_EQ(listsFor("DejaVu Sans", 800), 3);
    FcFini();
    EXPECT_EQ(listsFor("Nimbus Sans", 400), 1);
    EXPECT_EQ(listsFor("Nimbus Sans", 400), 0);
    for (int i = 0; i < 130; i++) // more than are remembered
        DeleteObject(Create(Asked("Nimbus Sans", 20 + i)));
    EXPECT_EQ(listsFor("Nimbus Sans", 400), 1);
    EXPECT_EQ(listsFor("DejaVu Sans", 400), 2);

    // Fonts that come serve new fonts, and live ones stay as they were, also where those would
    // help.
    const char *hebrew = "\u05D0\u05D1\u05D2", *arabic = "\u0627\u0628\u062A";
    DirectAnswer old(fonts.Path("NimbusSans-Regular.otf"), 10, 96);
    const int32_t oldHebrew = old.WidthOf(hebrew), oldArabic = old.WidthOf(arabic);
    const HFONT live = MakeFont("Nimbus Sans");
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    const std::string added = PrivateFonts::InstalledPath("DejaVuSans.ttf");
    FcConfigAppFontAddFile(nullptr, reinterpret_cast<const FcChar8 *>(added.c_str()));
    EXPECT_EQ(InfoOf(MakeFont("DejaVu Sans")).filePath, added);
    DirectAnswer direct(fonts.Path("NimbusSans-Regular.otf"), 10, 96);
    EXPECT_NE(direct.WidthOf(hebrew), oldHebrew);
    EXPECT_EQ(WidthBy(MakeFont("Nimbus Sans"), hebrew), direct.WidthOf(hebrew));
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    FcConfigAppFontClear(nullptr);
    EXPECT_EQ(MakeFont("DejaVu Sans"), nullptr);
    fonts.Add("DejaVuSans.ttf");
    for (int i = 0; i < 3; i++)
        FcInitReinitialize();
    EXPECT_EQ(InfoOf(MakeFont("DejaVu Sans")).filePath, fonts.Path("DejaVuSans.ttf"));
    EXPECT_EQ(WidthBy(live, hebrew), oldHebrew);
    EXPECT_EQ(WidthBy(live, arabic), oldArabic);
    TermFonts();
}

#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

size_t BytesInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

// Pango sorts fonts on a thread of its own, which may lag behind.
double SettledBytesInUse()
{
    size_t bytes = BytesInUse();
    for (int same = 0; same < 20;) {
        usleep(10000);
        const size_t before = std::exchange(bytes, BytesInUse());
        same = before == bytes ? same + 1 : 0;
    }
    return static_cast<double>(bytes);
}

TEST(Fonts, GiveBackAllTheirMemory)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    fonts.Add("NimbusSans-Regular.otf");
    StartedLibrary library;
    const HDC hdc = GetDC(nullptr);
    double settled = 0;
    for (int round = 0; round < 10000; round++) {
        if (round == 1000)
            settled = SettledBytesInUse();
        const HFONT font =
            Create(Asked(round % 2 ? "DejaVu Sans" : "Nimbus Sans", 8 + round % 5, 400, 0, hdc));
        SelectObject(hdc, font);
        SIZE size;
        GetTextExtentPoint32(hdc, "measured", 8, &size);
        DeleteObject(font);
        if (round % 4 == 0) { // answers that come and go
            DeleteObject(Create(Asked(std::to_string(round).c_str(), 10)));
            EnumFonts(
                nullptr, "Nimbus Sans", [](auto...) { return 1; }, 0);
        }
    }
    EXPECT_NEAR(SettledBytesInUse(), settled, 32768);
    DeleteDC(hdc);
}

} // namespace
