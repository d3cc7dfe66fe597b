/* The functions of the library as client code calls them; see client_names.h. */
#ifndef WEXELXI_CLIENT_FUNCTIONS_H
#define WEXELXI_CLIENT_FUNCTIONS_H

#include "../wexelxi.h"
#include "client_types.h"

/** \addtogroup client_names
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Traps that the compiler can see
 *  The library's functions, declared once more: a handle that is dropped leaks, and a null pointer
 *  where one ends the process is a warning. A BOOL is one byte and never -1: GCC is asked to say
 * so, as clang does unasked.
 *  @{ */
/** \cond */
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic warning "-Wtype-limits"
#endif
WEXELXI_LAYOUT(sizeof(BOOL) == 1);
#define WEXELXI_KEPT(name) \
    WEXELXI_API extern __typeof__(name) name __attribute__((warn_unused_result));
WEXELXI_KEPT(ConvertISO8859ToUtf8)
WEXELXI_KEPT(ConvertUtf8ToISO8859)
WEXELXI_KEPT(CreateCompatibleDC)
WEXELXI_KEPT(CreateDC)
WEXELXI_KEPT(CreateDC25400)
WEXELXI_KEPT(CreateFile)
WEXELXI_KEPT(CreateFont)
WEXELXI_KEPT(CreateFontIndirect)
WEXELXI_KEPT(CreateIC)
WEXELXI_KEPT(CreateSemaphore)
WEXELXI_KEPT(CreateThread)
WEXELXI_KEPT(FindFirstFile)
WEXELXI_KEPT(FindResource)
WEXELXI_KEPT(GetCopyOfDevmodeFromPPD)
WEXELXI_KEPT(GetDC)
WEXELXI_KEPT(GlobalAlloc)
WEXELXI_KEPT(GlobalReAlloc)
WEXELXI_KEPT(ListPrinters)
WEXELXI_KEPT(LoadLibrary)
WEXELXI_KEPT(MakeDevModeHan)
WEXELXI_KEPT(MakePrinterNameHan)
#define WEXELXI_NONNULL(name, ...) \
    WEXELXI_API extern __typeof__(name) name __attribute__((nonnull(__VA_ARGS__)));
WEXELXI_NONNULL(AnsiToOem, 1, 2)
WEXELXI_NONNULL(BuildCommDCB, 2)
WEXELXI_NONNULL(CheckFilter, 1, 2)
WEXELXI_NONNULL(CheckMultiFilter, 1, 2)
WEXELXI_NONNULL(CreateFontIndirect, 1)
WEXELXI_NONNULL(EnumFonts, 3)
WEXELXI_NONNULL(FileTimeToLocalFileTime, 1, 2)
WEXELXI_NONNULL(FileTimeToSystemTime, 1, 2)
WEXELXI_NONNULL(FindFirstFile, 2)
WEXELXI_NONNULL(FindNextFile, 2)
WEXELXI_NONNULL(FormatLocaleString, 4, 5)
WEXELXI_NONNULL(GetCommProperties, 2)
WEXELXI_NONNULL(GetCommState, 2)
WEXELXI_NONNULL(GetCommTimeouts, 2)
WEXELXI_NONNULL(GetComputerName, 1, 2)
WEXELXI_NONNULL(GetDeviceType, 1)
WEXELXI_NONNULL(GetFontInfo, 2)
WEXELXI_NONNULL(GetIniName, 1, 2)
WEXELXI_NONNULL(GetLocalTime, 1)
WEXELXI_NONNULL(GetLocalTimeWithOffset, 1)
WEXELXI_NONNULL(GetModuleFileName, 2)
WEXELXI_NONNULL(GetModuleHandle, 1)
WEXELXI_NONNULL(GetSystemInfo, 1)
WEXELXI_NONNULL(GetSystemTime, 1)
WEXELXI_NONNULL(GetTextColor, 1)
WEXELXI_NONNULL(GetTextExtentPoint32, 4)
WEXELXI_NONNULL(GetTextMetrics, 2)
WEXELXI_NONNULL(GetWexelXiFolder, 1)
WEXELXI_NONNULL(InitLib, 1)
WEXELXI_NONNULL(MakeDevModeHan, 1)
WEXELXI_NONNULL(MakePrinterNameHan, 1)
WEXELXI_NONNULL(NtQuerySystemTime, 1)
WEXELXI_NONNULL(OemToAnsi, 1, 2)
WEXELXI_NONNULL(OpenPrinterPPD, 1, 2)
WEXELXI_NONNULL(RestoreDefaultDevmode, 1)
WEXELXI_NONNULL(RtlQueryTimeZoneInformation, 1)
WEXELXI_NONNULL(RtlSystemTimeToLocalTime, 1, 2)
WEXELXI_NONNULL(RtlTimeToTimeFields, 1, 2)
WEXELXI_NONNULL(SelectObject, 1)
WEXELXI_NONNULL(SetCommState, 2)
WEXELXI_NONNULL(SetCommTimeouts, 2)
WEXELXI_NONNULL(SetTextColor, 1)
WEXELXI_NONNULL(SetWexelXiFolder, 1)
WEXELXI_NONNULL(UnixTimeToFileTime, 2)
WEXELXI_NONNULL(WinExec, 1)
WEXELXI_NONNULL(gWidenColorGap, 1)
WEXELXI_NONNULL(itoa, 2)
WEXELXI_NONNULL(lstrcat, 1, 2)
WEXELXI_NONNULL(lstrcmp, 1, 2)
WEXELXI_NONNULL(lstrcmpi, 1, 2)
WEXELXI_NONNULL(lstrcpy, 1, 2)
WEXELXI_NONNULL(lstrcpyn, 1, 2)
WEXELXI_NONNULL(lstrlen, 1)
WEXELXI_NONNULL(lstrncmpi, 1, 2)
WEXELXI_NONNULL(splitpath, 1)
WEXELXI_NONNULL(wsprintf, 1, 2)
/** \endcond */
/** @} */

/** \name Names with an A behind them
 *  Further declarations of the same functions, and no macros: so a member of a record or a class
 * may have such a name too, in a file that includes this header and in one that does not, and the
 *  address of CreateFileA is that of CreateFile. There are no names with a W.
 *  @{ */
/** \cond */
#define WEXELXI_ANSI(name) WEXELXI_API extern __typeof__(name) name##A __asm__(#name);
#define WEXELXI_KEPT_ANSI(name) \
    WEXELXI_API extern __typeof__(name) name##A __asm__(#name) __attribute__((warn_unused_result));
WEXELXI_ANSI(AdvancedDocumentProperties)
WEXELXI_ANSI(BuildCommDCB)
WEXELXI_ANSI(CopyFile)
WEXELXI_KEPT_ANSI(CreateDC)
WEXELXI_ANSI(CreateDirectory)
WEXELXI_KEPT_ANSI(CreateFile)
WEXELXI_KEPT_ANSI(CreateFont)
WEXELXI_KEPT_ANSI(CreateFontIndirect)
WEXELXI_KEPT_ANSI(CreateIC)
WEXELXI_KEPT_ANSI(CreateSemaphore)
WEXELXI_ANSI(DefWindowProc)
WEXELXI_ANSI(DeleteFile)
WEXELXI_ANSI(DeviceCapabilities)
WEXELXI_ANSI(DocumentProperties)
WEXELXI_ANSI(EnumFonts)
WEXELXI_KEPT_ANSI(FindFirstFile)
WEXELXI_ANSI(FindNextFile)
WEXELXI_KEPT_ANSI(FindResource)
WEXELXI_ANSI(GetComputerName)
WEXELXI_ANSI(GetCurrentDirectory)
WEXELXI_ANSI(GetDateFormat)
WEXELXI_ANSI(GetDiskFreeSpace)
WEXELXI_ANSI(GetDriveType)
WEXELXI_ANSI(GetEnvironmentVariable)
WEXELXI_ANSI(GetFileAttributes)
WEXELXI_ANSI(GetFullPathName)
WEXELXI_ANSI(GetLocaleInfo)
WEXELXI_ANSI(GetModuleFileName)
WEXELXI_ANSI(GetModuleHandle)
WEXELXI_ANSI(GetPrinter)
WEXELXI_ANSI(GetPrivateProfileSection)
WEXELXI_ANSI(GetPrivateProfileString)
WEXELXI_ANSI(GetProfileSection)
WEXELXI_ANSI(GetProfileString)
WEXELXI_ANSI(GetTempFileName)
WEXELXI_ANSI(GetTempPath)
WEXELXI_ANSI(GetTextExtentPoint32)
WEXELXI_ANSI(GetTextMetrics)
WEXELXI_ANSI(GetTimeFormat)
WEXELXI_ANSI(GetUserName)
WEXELXI_ANSI(GetVolumeInformation)
WEXELXI_ANSI(IsCharAlpha)
WEXELXI_KEPT_ANSI(LoadLibrary)
WEXELXI_ANSI(LoadString)
WEXELXI_ANSI(MoveFile)
WEXELXI_ANSI(OpenPrinter)
WEXELXI_ANSI(PathIsDirectory)
WEXELXI_ANSI(RegisterEventSource)
WEXELXI_ANSI(RemoveDirectory)
WEXELXI_ANSI(ReportEvent)
WEXELXI_ANSI(ResetDC)
WEXELXI_ANSI(SetCurrentDirectory)
WEXELXI_ANSI(SetEnvironmentVariable)
WEXELXI_ANSI(SetFileAttributes)
WEXELXI_ANSI(StartDoc)
WEXELXI_ANSI(SystemParametersInfo)
WEXELXI_ANSI(TextOut)
WEXELXI_ANSI(WinHelp)
WEXELXI_ANSI(WritePrivateProfileString)
WEXELXI_ANSI(WriteProfileString)
WEXELXI_ANSI(lstrcat)
WEXELXI_ANSI(lstrcmp)
WEXELXI_ANSI(lstrcmpi)
WEXELXI_ANSI(lstrcpy)
WEXELXI_ANSI(lstrcpyn)
WEXELXI_ANSI(lstrlen)
WEXELXI_ANSI(wsprintf)
#undef WEXELXI_ANSI
#undef WEXELXI_KEPT_ANSI
#undef WEXELXI_NONNULL
#undef WEXELXI_KEPT
/** \endcond */
/** @} */

/** \name Numbers of 64 bits as client code passes them
 *  A LARGE_INTEGER goes where the library takes an int64_t, as do its address and null.
 *  @{ */
/** \cond */
#ifdef __cplusplus
}
inline BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER offset, LARGE_INTEGER *position,
                             uint32_t method)
{
    return SetFilePointerEx(handle, offset.QuadPart, position ? &position->QuadPart : 0, method);
}
inline BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER *size)
{
    return GetFileSizeEx(handle, size ? &size->QuadPart : 0);
}
extern "C" {
#else
static inline BOOL WexelxiSetFilePointerLarge(HANDLE handle, LARGE_INTEGER offset,
                                              LARGE_INTEGER *position, uint32_t method)
{
    return SetFilePointerEx(handle, offset.QuadPart, position ? &position->QuadPart : 0, method);
}
static inline BOOL WexelxiGetFileSizeLarge(HANDLE handle, LARGE_INTEGER *size)
{
    return GetFileSizeEx(handle, size ? &size->QuadPart : 0);
}
#define SetFilePointerEx(handle, offset, position, method) \
    _Generic((offset), LARGE_INTEGER                       \
             : WexelxiSetFilePointerLarge, default         \
             : SetFilePointerEx)(handle, offset, position, method)
#define GetFileSizeEx(handle, size)             \
    _Generic((size), LARGE_INTEGER *            \
             : WexelxiGetFileSizeLarge, default \
             : GetFileSizeEx)(handle, size)
#endif
/** \endcond */
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
