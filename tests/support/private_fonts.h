// A folder of known fonts with a fontconfig file over it, for a test to see nothing else. Make it
// before the library starts: a process reads its configuration once.
#pragma once

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi/fonts.h"

class PrivateFonts {
public:
    PrivateFonts()
    {
        std::filesystem::create_directory(Path(""));
        WriteWholeFile(
            folder_.file("fonts.conf"),
            "<?xml version=\"1.0\"?><fontconfig><dir>" + Path("") + "</dir><cachedir>" +
                folder_.file("cache") +
                "</cachedir><config><rescan><int>1</int></rescan></config></fontconfig>");
        setenv("FONTCONFIG_FILE", folder_.file("fonts.conf").c_str(), 1);
    }

    // Copies an installed font, DejaVuSans.ttf or NimbusSans-Regular.otf, under a name of its own.
    void Add(const std::string &font, const std::string &name)
    {
        std::error_code error;
        std::filesystem::copy_file(InstalledPath(font), Path(name), error);
        EXPECT_FALSE(error) << font << ": " << error.message();
    }
    void Add(const std::string &font) { Add(font, font); }

    std::string Path(const std::string &name) const { return folder_.file("fonts/" + name); }

    static std::string InstalledPath(const std::string &font)
    {
        const std::string ending = std::filesystem::path(font).extension();
        return "/usr/share/fonts/" +
               std::string(ending == ".ttf" ? "truetype/dejavu/" : "opentype/urw-base35/") + font;
    }

private:
    ScratchFolder folder_;
};

inline LOGFONT Asked(const char *family, int32_t height = 10, int32_t weight = 400,
                     uint8_t italic = 0)
{
    LOGFONT logfont = {nullptr, height, 0, 0, 0, weight, italic, 0, 0, 0, 0, 0, 0, 0, {}};
    memcpy(logfont.lfFaceName, family, strnlen(family, LF_FACESIZE));
    return logfont;
}

// The width of a text as GetTextExtentPoint32 tells it, -1 where it tells none.
inline int32_t WidthBy(HFONT font, const char *text, int32_t count = -1)
{
    const HDC hdc = CreateCompatibleDC(nullptr);
    SelectObject(hdc, font);
    SIZE size = {-1, -1};
    EXPECT_EQ(GetTextExtentPoint32(hdc, text, count, &size), TRUE);
    DeleteDC(hdc);
    return size.cx;
}

inline HFONT Create(const LOGFONT &logfont)
{
    HFONT font = nullptr;
    EXPECT_LAST_ERROR(font = CreateFontIndirect(&logfont), ERROR_SUCCESS);
    return font;
}

inline FontInfoRecord InfoOf(HFONT font)
{
    FontInfoRecord info;
    memset(&info, 0x5A, sizeof info);
    EXPECT_LAST_ERROR(GetFontInfo(font, &info), kUnchanged);
    EXPECT_EQ(info.reserved, 0x5A);
    return info;
}

// The record of a font of no measures, zero but for its constant bytes.
inline TEXTMETRIC EmptyMetrics()
{
    TEXTMETRIC metrics = {};
    metrics.tmLastChar = 0xFF;
    metrics.tmDefaultChar = metrics.tmBreakChar = ' ';
    metrics.tmCharSet = DEFAULT_CHARSET;
    return metrics;
}

inline std::string BytesOf(const TEXTMETRIC &metrics)
{
    return {reinterpret_cast<const char *>(&metrics), offsetof(TEXTMETRIC, tmCharSet) + 1};
}

inline std::string MetricsBy(HDC hdc)
{
    TEXTMETRIC metrics;
    memset(&metrics, 0x5A, sizeof metrics);
    EXPECT_OUTCOME(GetTextMetrics(hdc, &metrics), TRUE, kUnchanged);
    return BytesOf(metrics);
}

class Fonts : public testing::Test {
protected:
    Fonts()
    {
        for (const char *name : {"0.otf", "1.pfb", "A.TTF", "b.ttf.otf", "z.otf", "x.ttf", "ttf"})
            fonts.Add("DejaVuSans.ttf", name);
        fonts.Add("DejaVuSans-Bold.ttf", "BOLD.TTF");
        for (const char *name :
             {"DejaVuSansMono-Bold.ttf", "DejaVuSerif-Bold.ttf", "NimbusMonoPS-Bold.otf",
              "NimbusSans-Regular.otf", "NimbusSans-BoldItalic.otf", "URWBookman-Light.otf",
              "URWBookman-DemiItalic.otf", "URWBookman-Demi.otf"})
            fonts.Add(name);
        library.emplace();
    }
    PrivateFonts fonts;
    std::optional<StartedLibrary> library;
};
