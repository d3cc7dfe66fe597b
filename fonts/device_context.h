// The record behind an HDC.
#pragma once

#include <cstdint>

#include "wexelxi/fonts.h"

namespace wexelxi {

struct DeviceContext {
    int32_t dpiX;
    int32_t dpiY;                 // chooses the font map
    HFONT selectedFont = nullptr; // not owned, and possibly stale
    COLORREF textColor = 0;
};

inline DeviceContext *FromHandle(HDC hdc)
{
    return static_cast<DeviceContext *>(hdc);
}

// Tells the host's hook of a wrong handle; does nothing when none is installed.
void ReportHandle(const char *message, int32_t severity);

} // namespace wexelxi
