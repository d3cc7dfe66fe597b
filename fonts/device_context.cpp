// Device contexts: made and freed without the lock, and kept in no list.
#include "fonts/device_context.h"

#include <new>

#include "core/last_error.h"
#include "core/lock.h"

using namespace wexelxi;

void wexelxi::ReportHandle(const char *message, int32_t severity)
{
    if (const HEADLESSERRORPROC report = gHDerrorProc)
        report(message, severity);
}

namespace {

HDC NewDeviceContext(int32_t dpiX, int32_t dpiY)
{
    auto *context = new (std::nothrow) DeviceContext{dpiX, dpiY};
    return context ? context : FailWith(ERROR_NOT_ENOUGH_MEMORY, context);
}

} // namespace

HDC CreateDC(LPCSTR, LPCSTR, LPCSTR, LPCVOID)
{
    return NewDeviceContext(254, 254);
}

HDC CreateDC25400(LPCSTR, LPCSTR, LPCSTR, LPCVOID)
{
    return NewDeviceContext(25400, 25400);
}

HDC GetDC(HWND)
{
    return NewDeviceContext(1440, 1440);
}

HDC CreateCompatibleDC(HDC)
{
    return NewDeviceContext(gLOGPIXELSX, gLOGPIXELSY);
}

void ReleaseDC(HWND, HDC hdc)
{
    delete FromHandle(hdc);
}

BOOL DeleteDC(HDC hdc)
{
    delete FromHandle(hdc);
    return TRUE;
}

int32_t GetDeviceCaps(HDC hdc, int32_t index)
{
    if (!hdc) {
        ReportHandle("NULL HDC passed to GetDeviceCaps", 0);
        return 0;
    }
    SetLastError(ERROR_SUCCESS);
    if (index == LOGPIXELSX)
        return FromHandle(hdc)->dpiX;
    if (index == LOGPIXELSY)
        return FromHandle(hdc)->dpiY;
    ReportHandle("Invalid index passed to GetDeviceCaps", 0);
    return 0;
}

COLORREF GetTextColor(HDC hdc)
{
    {
        LockScope lock;
        SetLastError(ERROR_SUCCESS);
    }
    return FromHandle(hdc)->textColor;
}

COLORREF SetTextColor(HDC hdc, COLORREF color)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    const COLORREF previous = FromHandle(hdc)->textColor;
    FromHandle(hdc)->textColor = color;
    return previous;
}
