/* Types, records, calling words and helpers of client code; see client_names.h. */
#ifndef WEXELXI_CLIENT_TYPES_H
#define WEXELXI_CLIENT_TYPES_H

#include "comm.h"
#include "devmode.h"
#include "documents.h"
#include "find.h"
#include "fonts.h"
#include "printers.h"
#include "processes.h"
#include "threads.h"
#include "time.h"
#include "types.h"

/** \addtogroup client_names
 *  @{ */

/** \name Types
 *  Text is 8-bit, whatever a name says, so a TCHAR is a char.
 *  @{ */
/** A published type. */
typedef char TCHAR, *LPTSTR, *PTSTR, *PSTR, *LPCH, *PCHAR;
typedef const char *LPCTSTR, *PCTSTR, *PCSTR;
typedef void *PVOID;
typedef intptr_t LONG_PTR, SSIZE_T;
typedef uintptr_t ULONG_PTR, DWORD_PTR, SIZE_T;
typedef uint8_t UCHAR, BOOLEAN, UINT8;
typedef uint16_t USHORT, UINT16, ATOM, LANGID;
typedef uint32_t UINT32, DWORD32, ULONG32, LCID, LCTYPE;
typedef uint64_t UINT64, DWORD64, ULONG64, DWORDLONG;
typedef int8_t INT8;
typedef int16_t INT16;
typedef int32_t INT32, LONG32;
typedef int64_t INT64, LONG64;
typedef BYTE *PBYTE;
typedef UCHAR *PUCHAR;
typedef BOOL *PBOOL, *LPBOOL; /**< To one byte. */
typedef SHORT *PSHORT;
typedef USHORT *PUSHORT;
typedef WORD *PWORD;
typedef INT *PINT, *LPINT;
typedef UINT *PUINT, *LPUINT;
typedef LONG *PLONG, *LPLONG;
typedef ULONG *PULONG;
typedef DWORD *PDWORD;
typedef HANDLE *PHANDLE, *LPHANDLE;
typedef COLORREF *LPCOLORREF;
typedef void *HLOCAL;
typedef HMODULE HINSTANCE;
/** What GetProcAddress returns. Cast it to the function's type, which a call needs anyhow. */
typedef void *FARPROC;
/** One code point in 32 bits, as the conversions take it. A literal of the L form is not one. */
typedef uint32_t WCHAR;
/** @} */

/** \name Records that client code brings along
 *  @{ */
/** A signed 64-bit number, whole and in its two halves. */
typedef union _LARGE_INTEGER {
    __extension__ struct {
        DWORD LowPart; /**< Low half. */
        LONG HighPart; /**< High half. */
    };                 /**< The halves by themselves. */
    struct {
        DWORD LowPart; /**< Low half. */
        LONG HighPart; /**< High half. */
    } u;               /**< The halves. */
    LONGLONG QuadPart; /**< The number: its address is what the library takes. */
} LARGE_INTEGER, *PLARGE_INTEGER, *LPLARGE_INTEGER;

/** An unsigned 64-bit number, whole and in its two halves. */
typedef union _ULARGE_INTEGER {
    __extension__ struct {
        DWORD LowPart;  /**< Low half. */
        DWORD HighPart; /**< High half. */
    };                  /**< The halves by themselves. */
    struct {
        DWORD LowPart;  /**< Low half. */
        DWORD HighPart; /**< High half. */
    } u;                /**< The halves. */
    ULONGLONG QuadPart; /**< The number. */
} ULARGE_INTEGER, *PULARGE_INTEGER, *LPULARGE_INTEGER;

/** A point. */
typedef struct POINT {
    LONG x; /**< Across. */
    LONG y; /**< Down. */
} POINT, *PPOINT, *LPPOINT;

/** A rectangle. */
typedef struct RECT {
    LONG left;   /**< Left edge. */
    LONG top;    /**< Upper edge. */
    LONG right;  /**< Right edge. */
    LONG bottom; /**< Lower edge. */
} RECT, *PRECT, *LPRECT;

/** For code that passes one; no call reads it, and every transfer is done when the call returns. */
typedef struct OVERLAPPED {
    ULONG_PTR Internal;     /**< Neither read nor written. */
    ULONG_PTR InternalHigh; /**< Neither read nor written. */
    DWORD Offset;           /**< Not read: the position is that of the handle. */
    DWORD OffsetHigh;       /**< Not read. */
    HANDLE hEvent;          /**< Not read. */
} OVERLAPPED, *LPOVERLAPPED;

/* SECURITY_ATTRIBUTES has no fields: nothing of it would be obeyed. Pass null. */
typedef struct SECURITY_ATTRIBUTES *PSECURITY_ATTRIBUTES;  /**< Null. */
typedef struct SECURITY_ATTRIBUTES *LPSECURITY_ATTRIBUTES; /**< Null. */
/** @} */

/** \name Pointers to the library's records, and their names with an A
 *  COMMTIMEOUTS, COMMPROP, LOGFONT, DEVMODE, SYSTEM_INFO, PRINTER_INFO_2 and CRITICAL_SECTION are
 *  the library's own: code that names a published field which they do not have does not compile.
 *  @{ */
/** A pointer to a record, or its other name. */
typedef DCB *LPDCB;
typedef COMMTIMEOUTS *LPCOMMTIMEOUTS;
typedef COMMPROP *LPCOMMPROP;
typedef FILETIME *PFILETIME, *LPFILETIME;
typedef SYSTEMTIME *PSYSTEMTIME, *LPSYSTEMTIME;
typedef TIME_FIELDS *PTIME_FIELDS;
typedef TIME_ZONE_INFORMATION *PTIME_ZONE_INFORMATION, *LPTIME_ZONE_INFORMATION;
typedef WIN32_FIND_DATA WIN32_FIND_DATAA, *PWIN32_FIND_DATA, *LPWIN32_FIND_DATA,
    *LPWIN32_FIND_DATAA;
typedef DEVMODE DEVMODEA, *PDEVMODE, *PDEVMODEA, *LPDEVMODEA;
typedef PRINTDLG PRINTDLGA, *LPPRINTDLG, *LPPRINTDLGA;
typedef PRINTER_INFO_2 PRINTER_INFO_2A, *PPRINTER_INFO_2, *LPPRINTER_INFO_2;
typedef HPRINTER *LPHPRINTER;
typedef LOGFONT LOGFONTA, *PLOGFONT, *LPLOGFONT, *LPLOGFONTA;
typedef TEXTMETRIC TEXTMETRICA, *PTEXTMETRIC, *LPTEXTMETRIC, *LPTEXTMETRICA;
typedef SIZE *PSIZE, *LPSIZE;
typedef SYSTEM_INFO *LPSYSTEM_INFO;
typedef CRITICAL_SECTION *PCRITICAL_SECTION, *LPCRITICAL_SECTION;
typedef THREAD_START_ROUTINE LPTHREAD_START_ROUTINE; /**< Returns a pointer, not a DWORD. */
/** @} */

/** \name Calling words, which mean nothing here
 *  @{ */
/** Means nothing. */
#define WINAPI
#define CALLBACK
#define APIENTRY
#define PASCAL
#define FAR
#define NEAR
#define DECLSPEC_IMPORT
#define DECLSPEC_NOTHROW
#ifndef __stdcall
#define __stdcall
#endif
#ifndef __cdecl
#define __cdecl
#endif
#define CONST const
#define VOID void
#define DECLSPEC_NORETURN __attribute__((noreturn))
#define DECLSPEC_NOINLINE __attribute__((noinline))
#define DECLSPEC_ALIGN(bytes) __attribute__((aligned(bytes)))
/** @} */

/** \name Helpers
 *  @{ */
/** The longest path with its NUL, as in WIN32_FIND_DATA. The published 260 would cut: calls that
 *  measure no buffer, such as GetModuleFileName and GetWexelXiFolder, store up to 4096 bytes. */
#define MAX_PATH 4096
/** A text as it stands, or a number made of its parts, or a part of one. */
#define TEXT(literal) literal
#define _T(literal) literal
#define _TEXT(literal) literal
#define MAKEWORD(low, high) ((WORD)(((DWORD_PTR)(low)&0xFFu) | (((DWORD_PTR)(high)&0xFFu) << 8)))
#define MAKELONG(low, high) \
    ((LONG)(((DWORD_PTR)(low)&0xFFFFu) | (((DWORD_PTR)(high)&0xFFFFu) << 16)))
#define LOWORD(value) ((WORD)((DWORD_PTR)(value)&0xFFFFu))
#define HIWORD(value) ((WORD)(((DWORD_PTR)(value) >> 16) & 0xFFFFu))
#define LOBYTE(value) ((BYTE)((DWORD_PTR)(value)&0xFFu))
#define HIBYTE(value) ((BYTE)(((DWORD_PTR)(value) >> 8) & 0xFFu))
#define RGB(red, green, blue) \
    ((COLORREF)((DWORD)(BYTE)(red) | ((DWORD)(BYTE)(green) << 8) | ((DWORD)(BYTE)(blue) << 16)))
#define GetRValue(color) LOBYTE(color)
#define GetGValue(color) LOBYTE((color) >> 8)
#define GetBValue(color) LOBYTE((color) >> 16)
#define MAKELANGID(primary, sub) ((LANGID)(((DWORD)(sub) << 10) | (DWORD)(primary)))
#define PRIMARYLANGID(language) ((LANGID)((DWORD)(language)&0x3FFu))
#define SUBLANGID(language) ((LANGID)(((DWORD)(language)&0xFFFFu) >> 10))
#define MAKELCID(language, sort) ((LCID)(((DWORD)(sort) << 16) | (DWORD)(language)))
#define LANGIDFROMLCID(locale) ((LANGID)((DWORD)(locale)&0xFFFFu))
#define SORT_DEFAULT 0u
#define LANG_NEUTRAL 0u
#define SUBLANG_NEUTRAL 0u
#define SUBLANG_DEFAULT 1u
#define MAKEINTRESOURCE(id) ((LPSTR)(ULONG_PTR)(WORD)(id))
#define MAKEINTRESOURCEA(id) MAKEINTRESOURCE(id)
#define UNREFERENCED_PARAMETER(parameter) ((void)(parameter))
#define MAXBYTE 0xFFu
#define MAXWORD 0xFFFFu
#define MAXDWORD 0xFFFFFFFFu
#define MAXLONG 0x7FFFFFFF
/** A wait never ends so: a time-out other than INFINITE is refused with WAIT_FAILED. */
#define WAIT_TIMEOUT 258u
#define WAIT_ABANDONED 0x80u
#define TLS_OUT_OF_INDEXES 0xFFFFFFFFu
/** @} */

/** @} */

#endif
