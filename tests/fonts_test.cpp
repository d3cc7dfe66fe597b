// Fonts over a private configuration: which are found, told of and taken for fonts.
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

#include "fonts/owners.h"
#include "fonts/search_lists.h"
#include "support/digest.h"
#include "support/private_fonts.h"
#include "support/reports.h"
#include "wexelxi.h"

using namespace wexelxi;

namespace {

std::string_view gRefused; // a call of fontconfig that fails

} // namespace

// The executable's definitions come first: the library's calls arrive here on their way.
#define REFUSABLE(result, name, parameters, arguments)                                         \
    extern "C" result name parameters                                                          \
    {                                                                                          \
        static auto *const next = reinterpret_cast<decltype(name) *>(dlsym(RTLD_NEXT, #name)); \
        return gRefused == #name ? result{} : next arguments;                                  \
    }
using PatternPointer = FcPattern *;
using SetPointer = FcFontSet *;
REFUSABLE(FcBool, FcInit, (), ())
REFUSABLE(PatternPointer, FcPatternCreate, (), ())
REFUSABLE(PatternPointer, FcPatternDuplicate, (const FcPattern *pattern), (pattern))
REFUSABLE(SetPointer, FcFontList, (FcConfig * config, FcPattern *pattern, FcObjectSet *objects),
          (config, pattern, objects))

namespace {

TEST_F(Fonts, AreChosenByFamilyWeightAndSlant)
{
    const struct {
        const char *family;
        int32_t weight;
        uint8_t italic;
        const char *file;
    } rows[] = {
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
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.family) + std::to_string(row.weight));
        const HFONT font = Create(Asked(row.family, 10, row.weight, row.italic));
        ASSERT_EQ(font != nullptr, row.file != nullptr);
        if (font) {
            EXPECT_EQ(InfoOf(font).filePath, fonts.Path(row.file));
            EXPECT_EQ(InfoOf(font).bold, row.weight >= 700);
        }
    }
}

TEST(SearchLists, GoByExactWeightAndEndingOfTheName)
{
    EXPECT_TRUE(HasTrueTypeName("a.ttf"));
    EXPECT_FALSE(HasTrueTypeName(".ttf"));
    Digest digest;
    for (int32_t weight = -1000; weight < 1001; weight++) {
        for (const bool italic : {false, true}) {
            for (const SearchRow &row : SearchListFor(weight, italic))
                digest.Add(row.weight, row.slant);
            digest.Add("end");
        }
    }
    EXPECT_EQ(digest.hex(), "effb6597cd66d3aa");
}

// Families with type and pitches, and how many fonts there were of them.
using Enumerated = std::map<std::string, int>;

int32_t Enumerate(const LOGFONT *logfont, const TEXTMETRIC *metrics, uint32_t type, LPARAM data)
{
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
    auto &seen = *reinterpret_cast<Enumerated *>(data);
    seen[logfont->lfFaceName + (" " + std::to_string(type)) + " " +
         std::to_string(logfont->lfPitchAndFamily) + std::to_string(metrics->tmPitchAndFamily)]++;
    return seen.erase("the last wanted") ? 0 : 7;
}

TEST_F(Fonts, AreEnumeratedAndTheFirstOneStandsIn)
{
    const auto enumerate = [](const char *family, Enumerated &seen) {
        return EnumFonts(nullptr, family, Enumerate, reinterpret_cast<LPARAM>(&seen));
    };
    Enumerated none, one, all, few;
    EXPECT_OUTCOME(enumerate("Unknown", none), 0, kUnchanged);
    EXPECT_EQ(Create(Asked("Unknown")), nullptr);
    EXPECT_OUTCOME(enumerate("DejaVu Sans Mono", one), 7, kUnchanged);
    EXPECT_OUTCOME(enumerate(nullptr, all), 7, kUnchanged);
    const Enumerated expected = {{"DejaVu Sans 0 23", 7},      {"DejaVu Sans 4 25", 1},
                                 {"DejaVu Sans Mono 4 14", 1}, {"DejaVu Serif 4 25", 1},
                                 {"Nimbus Mono PS 0 12", 1},   {"Nimbus Sans 0 23", 2},
                                 {"URW Bookman 0 23", 3}};
    EXPECT_EQ(all, expected);
    few["the last wanted"] = {};
    EXPECT_OUTCOME(enumerate(nullptr, few), 0, kUnchanged);
    EXPECT_EQ(few.size(), 1u);

    const FontInfoRecord info = InfoOf(Create(Asked("Unknown", 10, 700)));
    EXPECT_STREQ(info.family, "Unknown");
    EXPECT_EQ(info.filePath, fonts.Path("DejaVuSansMono-Bold.ttf"));
    const LOGFONT other = Asked("Another");
    for (const char *call : {"FcPatternCreate", "FcPatternDuplicate", "FcFontList"}) {
        gRefused = call;
        EXPECT_OUTCOME(CreateFontIndirect(&other), nullptr, ERROR_NOT_ENOUGH_MEMORY) << call;
    }
    EXPECT_OUTCOME(enumerate("DejaVu Sans", none), 0, kUnchanged) << "no list is no fonts";
    gRefused = "FcPatternCreate";
    EXPECT_OUTCOME(enumerate("DejaVu Sans", none), 0, ERROR_NOT_ENOUGH_MEMORY);
    gRefused = "";
    TermFonts();
    TermFonts();
    EXPECT_EQ(Create(Asked("DejaVu Sans")), nullptr) << "no map to measure with";
    EXPECT_EQ(InitFonts(), 0);
    EXPECT_EQ(InitFonts(), 0);
    EXPECT_EQ(Create(Asked("Unknown")), nullptr);
    EXPECT_NE(Create(Asked("DejaVu Sans")), nullptr);
}

TEST_F(Fonts, AreCheckedBeforeTheyAreRead)
{
    SetHeadlessErrorProc(RecordReport);
    const HDC hdc = GetDC(nullptr);
    const HFONT first = Create(Asked("DejaVu Sans"));
    EXPECT_OUTCOME(SelectObject(hdc, first), nullptr, kUnchanged);
    const auto wild = reinterpret_cast<HFONT>(reinterpret_cast<uintptr_t>(first) + 512);
    for (const HFONT bad : {wild, static_cast<HFONT>(&fonts), reinterpret_cast<HFONT>(16)}) {
        EXPECT_OUTCOME(SelectObject(hdc, bad), nullptr, kUnchanged);
        EXPECT_OUTCOME(DeleteObject(bad), TRUE, kUnchanged);
        EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to SelectObject", 0},
                                          {"Invalid HFONT passed to DeleteObject", 0}}));
    }
    EXPECT_OUTCOME(SelectObject(hdc, first), first, kUnchanged) << "the old font stays";
    EXPECT_OUTCOME(DeleteObject(first), TRUE, kUnchanged);
    EXPECT_EQ(TakeReports(), Reports());
    EXPECT_OUTCOME(DeleteObject(nullptr), TRUE, kUnchanged);
    EXPECT_EQ(InfoOf(first).family[0], 0x5A) << "nothing is written";
    EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to DeleteObject", 0},
                                      {"Invalid HFONT passed to GetFontInfo", 0}}));
    const auto expectNothing = [](HDC context, const Reports &reported) {
        EXPECT_EQ(MetricsBy(context), BytesOf(EmptyMetrics()));
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
    SetHeadlessErrorProc([](const char *, int32_t) {
        EXPECT_NE(TlsGetValue(gCriticalSectionTLS), nullptr) << "the handler sees the lock held";
    });
    SelectObject(hdc, wild);
    MetricsBy(hdc);
    SetHeadlessErrorProc(nullptr);
    expectNothing(hdc, {});
    expectNothing(nullptr, {});
    EXPECT_EQ(Create(Asked("DejaVu Sans", 20)), first) << "the record is used again";
    DeleteDC(hdc);
}

TEST_F(Fonts, EndWithTheLibraryAndStartAgain)
{
    std::vector<HFONT> made(300); // more than there are buckets at first
    for (int run = 0; run < 2; run++) {
        library.emplace();
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
    library.reset();
    EXPECT_EQ(gGeneralFont, nullptr);
    EXPECT_EQ(TakeReports(), Reports());
    for (const HFONT font : made)
        DeleteObject(font);
    EXPECT_EQ(TakeReports().size(), made.size());
    usleep(100000); // Pango's own thread lags behind
    FcFini();       // ends the process where anything is left
    gRefused = "FcInit";
    EXPECT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 3);
    EXPECT_EQ(gReady, 0);
    EXPECT_EQ(gTerminating, 1);
    EXPECT_EQ(gWexelxiCriticalSection, nullptr);
    EXPECT_EQ(TakeReports(), Reports({{"Invalid HFONT passed to DeleteObject", 0}}));
}

} // namespace
