// Device contexts, and the answers that a window system would give.
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "support/library.h"
#include "wexelxi.h"

namespace {

std::vector<std::pair<std::string, int32_t>> gReports;

TEST(DeviceContext, CarriesResolutionAndColour)
{
    StartedLibrary library;
    gLOGPIXELSX = 120;
    const struct {
        HDC hdc;
        int32_t dpiX;
        int32_t dpiY;
    } rows[] = {
        {CreateDC("driver", nullptr, nullptr, nullptr), 254, 254},
        {CreateDC25400(nullptr, nullptr, nullptr, nullptr), 25400, 25400},
        {GetDC(&gReports), 1440, 1440},
        {CreateCompatibleDC(nullptr), 120, 96},
    };
    SetHeadlessErrorProc(
        [](const char *message, int32_t severity) { gReports.emplace_back(message, severity); });
    for (const auto &row : rows) {
        SetLastError(7);
        EXPECT_EQ(GetDeviceCaps(row.hdc, LOGPIXELSX), row.dpiX);
        EXPECT_EQ(GetDeviceCaps(row.hdc, LOGPIXELSY), row.dpiY);
        EXPECT_EQ(GetLastError(), 0u);
    }
    EXPECT_TRUE(gReports.empty());
    SetLastError(7);
    EXPECT_EQ(GetDeviceCaps(nullptr, LOGPIXELSX), 0);
    EXPECT_EQ(GetLastError(), 7u);
    EXPECT_EQ(GetDeviceCaps(rows[0].hdc, 8), 0);
    EXPECT_EQ(GetLastError(), 0u);
    const decltype(gReports) expected = {{"NULL HDC passed to GetDeviceCaps", 0},
                                         {"Invalid index passed to GetDeviceCaps", 0}};
    EXPECT_EQ(gReports, expected);
    SetHeadlessErrorProc(nullptr);
    EXPECT_EQ(GetDeviceCaps(nullptr, LOGPIXELSX), 0);
    for (const COLORREF before : {0u, 0xFF123456u, 0x00FFFFFFu}) {
        SetLastError(7);
        EXPECT_EQ(GetTextColor(rows[0].hdc), before);
        EXPECT_EQ(GetLastError(), 0u);
        SetLastError(7);
        EXPECT_EQ(SetTextColor(rows[0].hdc, before ? 0x00FFFFFFu : 0xFF123456u), before);
        EXPECT_EQ(GetLastError(), 0u);
    }
    ReleaseDC(nullptr, rows[0].hdc);
    ReleaseDC(nullptr, nullptr);
    for (const auto &row : {rows[1], rows[2], rows[3]})
        EXPECT_EQ(DeleteDC(row.hdc), TRUE);
    EXPECT_EQ(DeleteDC(nullptr), TRUE);
}

TEST(SystemMetrics, AreFixedButForASetOfGlobals)
{
    EXPECT_EQ(GetSystemMetrics(SM_CXVSCROLL), 17);
    StartedLibrary library;
    gScbarwid = -21;
    gFileMode = 0xFE;
    gPrinterXMargin = -11;
    gPrinterYMargin = 12;
    const std::pair<int32_t, int32_t> rows[] = {
        {2, -21}, {3, -21}, {20, -21}, {21, -21}, {4, 16},  {49, 16},    {50, 16},    {5, 3},
        {6, 3},   {11, 32}, {12, 32},  {13, 32},  {14, 32}, {1000, 254}, {1001, -11}, {1002, 12},
        {0, 0},   {1, 0},   {7, 0},    {1003, 0}, {-1, 0},  {2 + 256, 0}};
    for (const auto &[index, value] : rows) {
        SetLastError(7);
        EXPECT_EQ(GetSystemMetrics(index), value) << index;
        EXPECT_EQ(GetLastError(), 0u);
    }
    SetLastError(7);
    EXPECT_EQ(DefWindowProc(nullptr, 1, 2, 3), 0);
    EXPECT_EQ(IsClipboardFormatAvailable(1), FALSE);
    EXPECT_EQ(GetLastError(), 7u);
}

} // namespace
