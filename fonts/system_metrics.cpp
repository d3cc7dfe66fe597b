// What a window system would answer, were there one.
#include "core/lock.h"
#include "wexelxi/device_context.h"

using namespace wexelxi;

namespace {

// Settings of the library under indexes of its own.
enum { kFileModeIndex = 1000, kPrinterXMarginIndex = 1001, kPrinterYMarginIndex = 1002 };

} // namespace

int32_t GetSystemMetrics(int32_t index)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    switch (index) {
    case SM_CXVSCROLL:
    case SM_CYHSCROLL:
    case SM_CYVSCROLL:
    case SM_CXHSCROLL:
        return gScbarwid;
    case SM_CYCAPTION:
    case SM_CXSMICON:
    case SM_CYSMICON:
        return 16;
    case SM_CXBORDER:
    case SM_CYBORDER:
        return 3;
    case SM_CXICON:
    case SM_CYICON:
    case SM_CXCURSOR:
    case SM_CYCURSOR:
        return 32;
    case kFileModeIndex:
        return gFileMode;
    case kPrinterXMarginIndex:
        return gPrinterXMargin;
    case kPrinterYMarginIndex:
        return gPrinterYMargin;
    default:
        return 0;
    }
}

LRESULT DefWindowProc(HWND, UINT, WPARAM, LPARAM)
{
    return 0;
}

BOOL IsClipboardFormatAvailable(UINT)
{
    return FALSE;
}
