/* Device contexts: a resolution, a selected font and a text colour; and the answers that a window
 * system would give. */
#ifndef WEXELXI_DEVICE_CONTEXT_H
#define WEXELXI_DEVICE_CONTEXT_H

#include "types.h"

/** \defgroup device_contexts Device contexts
 *  There is no surface to draw on. A device context says in which unit the host measures: fonts
 *  made for it and measured through it answer in dots of its resolution. One device context belongs
 *  to one thread at a time. Handles are not checked: a stale one is not allowed.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

typedef void *HWND; /**< A window of the host's; never looked at. */
typedef void *HDC;  /**< A device context; ended by DeleteDC or ReleaseDC. */

/** \name Indexes of GetDeviceCaps
 *  @{ */
/** An index: the resolution in dots per inch. */
#define LOGPIXELSX 88
#define LOGPIXELSY 90
/** @} */

/** \name Indexes of GetSystemMetrics
 *  @{ */
/** An index of GetSystemMetrics. */
#define SM_CXSCREEN 0
#define SM_CYSCREEN 1
#define SM_CXVSCROLL 2
#define SM_CYHSCROLL 3
#define SM_CYCAPTION 4
#define SM_CXBORDER 5
#define SM_CYBORDER 6
#define SM_CXICON 11
#define SM_CYICON 12
#define SM_CXCURSOR 13
#define SM_CYCURSOR 14
#define SM_CYVSCROLL 20
#define SM_CXHSCROLL 21
#define SM_CXSMICON 49
#define SM_CYSMICON 50
/** @} */

/** Makes a device context of 254 dots per inch, tenths of a millimetre. The arguments are not read.
 *  @return the device context, which the caller owns; null if there is no memory.
 *  Last error: unchanged, or ERROR_NOT_ENOUGH_MEMORY. Lock: no. */
WEXELXI_API HDC CreateDC(LPCSTR driver, LPCSTR device, LPCSTR output, LPCVOID initData);

/** As CreateDC, of 25400 dots per inch, micrometres. Last error: as CreateDC. Lock: no. */
WEXELXI_API HDC CreateDC25400(LPCSTR driver, LPCSTR device, LPCSTR output, LPCVOID initData);

/** Makes a device context of 1440 dots per inch, twips. The window is not read.
 *  @return the device context, which the caller owns; null if there is no memory.
 *  Last error: as CreateDC. Lock: no. */
WEXELXI_API HDC GetDC(HWND window);

/** Makes a device context of the screen's resolution, gLOGPIXELSX by gLOGPIXELSY as they stand now.
 *  @param hdc  not read.
 *  @return the device context, which the caller owns; null if there is no memory.
 *  Last error: as CreateDC. Lock: no. */
WEXELXI_API HDC CreateCompatibleDC(HDC hdc);

/** Frees a device context of any creator. A font selected into it lives on.
 *  @param window  not read.
 *  @param hdc     the device context; null does nothing.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void ReleaseDC(HWND window, HDC hdc);

/** Frees a device context of any creator; null does nothing. A font selected into it lives on.
 *  @return TRUE always. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL DeleteDC(HDC hdc);

/** Tells a device context's resolution.
 *  @param hdc    the device context; null gives 0 and "NULL HDC passed to GetDeviceCaps" to the
 *                hook, severity 0.
 *  @param index  LOGPIXELSX or LOGPIXELSY; any other gives 0 and "Invalid index passed to
 *                GetDeviceCaps", severity 0.
 *  @return dots per inch across or down. Last error: 0; unchanged for a null hdc. Lock: no. */
WEXELXI_API int32_t GetDeviceCaps(HDC hdc, int32_t index);

/** The text colour, 0 until SetTextColor; hdc must not be null. Last error: 0. Lock: yes. */
WEXELXI_API COLORREF GetTextColor(HDC hdc);

/** Stores a text colour, which nothing here uses; hdc must not be null.
 *  @return the colour before it. Last error: 0. Lock: yes. */
WEXELXI_API COLORREF SetTextColor(HDC hdc, COLORREF color);

/** Answers a window system's sizes in pixels, and three settings.
 *  @param index  SM_CXVSCROLL, SM_CYHSCROLL, SM_CYVSCROLL, SM_CXHSCROLL: gScbarwid. SM_CYCAPTION,
 *                SM_CXSMICON, SM_CYSMICON: 16. SM_CXBORDER, SM_CYBORDER: 3. SM_CXICON, SM_CYICON,
 *                SM_CXCURSOR, SM_CYCURSOR: 32. 1000: gFileMode. 1001: gPrinterXMargin.
 *                1002: gPrinterYMargin. Any other: 0; there is no screen.
 *  Last error: 0. Lock: yes. */
WEXELXI_API int32_t GetSystemMetrics(int32_t index);

/** Reads nothing and returns 0. Last error: unchanged. Lock: no. */
WEXELXI_API LRESULT DefWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/** Reads nothing and returns FALSE: there is no clipboard. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL IsClipboardFormatAvailable(UINT format);

#ifdef __cplusplus
}
#endif

/** @} */

#endif
