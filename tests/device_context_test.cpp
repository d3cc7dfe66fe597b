// Device contexts, and the answers that a window system would give.
#include <gtest/gtest.h>
#include <map>

#include "support/last_error.h"
#include "support/library.h"
#include "support/reports.h"
#include "wexelxi.h"

namespace {

TEST(DeviceContext, CarriesResolutionAndColour)
{
    StartedLibrary library;
    SetHeadlessErrorProc(RecordReport);
    gLOGPIXELSX = 120;
    const struct {
        HDC hdc;
        int32_t dpiX, dpiY;
    } rows[] = {
        {CreateDC("driver", nullptr, nullptr, nullptr), 254, 254},
        {CreateDC25400(nullptr, nullptr, nullptr, nullptr), 25400, 25400},
        {GetDC(&library), 1440, 1440},
        {CreateCompatibleDC(nullptr), 120, 96},
    };
    for (const auto &row : rows) {
        EXPECT_OUTCOME(GetDeviceCaps(row.hdc, LOGPIXELSX), row.dpiX, ERROR_SUCCESS);
        EXPECT_OUTCOME(GetDeviceCaps(row.hdc, LOGPIXELSY), row.dpiY, ERROR_SUCCESS);
        EXPECT_OUTCOME(GetTextColor(row.hdc), 0u, ERROR_SUCCESS);
        EXPECT_OUTCOME(SetTextColor(row.hdc, 0xFF123456), 0u, ERROR_SUCCESS);
        EXPECT_OUTCOME(SetTextColor(row.hdc, 0xFFFFFF), 0xFF123456, ERROR_SUCCESS);
        EXPECT_OUTCOME(GetTextColor(row.hdc), 0xFFFFFFu, ERROR_SUCCESS);
    }
    EXPECT_EQ(TakeReports(), Reports());
    EXPECT_OUTCOME(GetDeviceCaps(nullptr, LOGPIXELSX), 0, kUnchanged);
    EXPECT_OUTCOME(GetDeviceCaps(rows[0].hdc, 8), 0, ERROR_SUCCESS);
    EXPECT_EQ(TakeReports(), Reports({{"NULL HDC passed to GetDeviceCaps", 0},
                                      {"Invalid index passed to GetDeviceCaps", 0}}));
    SetHeadlessErrorProc(nullptr);
    EXPECT_OUTCOME(GetDeviceCaps(nullptr, LOGPIXELSX), 0, kUnchanged);
    EXPECT_LAST_ERROR(ReleaseDC(nullptr, rows[0].hdc), kUnchanged);
    EXPECT_LAST_ERROR(ReleaseDC(nullptr, nullptr), kUnchanged);
    for (const HDC hdc : {rows[1].hdc, rows[2].hdc, rows[3].hdc, HDC()})
        EXPECT_OUTCOME(DeleteDC(hdc), TRUE, kUnchanged);
}

TEST(SystemMetrics, AreFixedButForASetOfGlobals)
{
    EXPECT_EQ(GetSystemMetrics(SM_CXVSCROLL), 17);
    StartedLibrary library;
    gScbarwid = -21;
    gFileMode = 0xFE;
    gPrinterXMargin = -11;
    gPrinterYMargin = 12;
    const std::map<int32_t, int32_t> others = {
        {2, -21}, {3, -21},  {4, 16},   {5, 3},   {6, 3},   {11, 32},    {12, 32},    {13, 32},
        {14, 32}, {20, -21}, {21, -21}, {49, 16}, {50, 16}, {1000, 254}, {1001, -11}, {1002, 12}};
    for (int32_t index = -5; index < 1100; index++) {
        const auto other = others.find(index);
        EXPECT_OUTCOME(GetSystemMetrics(index), other == others.end() ? 0 : other->second,
                       ERROR_SUCCESS)
            << index;
    }
    EXPECT_OUTCOME(DefWindowProc(nullptr, 1, 2, 3), 0, kUnchanged);
    EXPECT_OUTCOME(IsClipboardFormatAvailable(1), FALSE, kUnchanged);
}

} // namespace
