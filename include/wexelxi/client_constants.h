/* Constants of client code, by family; see client_names.h. */
#ifndef WEXELXI_CLIENT_CONSTANTS_H
#define WEXELXI_CLIENT_CONSTANTS_H

#include "devmode.h"
#include "documents.h"
#include "fonts.h"
#include "memory.h"

/** \addtogroup client_names
 *  @{ */

/** \name Ports
 *  No EscapeCommFunction and no events are here, and PurgeComm does nothing.
 *  @{ */
/** A word of PurgeComm, of EscapeCommFunction or of a DCB. */
#define PURGE_TXABORT 1u
#define PURGE_RXABORT 2u
#define PURGE_TXCLEAR 4u
#define PURGE_RXCLEAR 8u
#define CBR_110 110u
#define CBR_300 300u
#define CBR_600 600u
#define CBR_1200 1200u
#define CBR_2400 2400u
#define CBR_4800 4800u
#define CBR_9600 9600u
#define CBR_19200 19200u
#define CBR_38400 38400u
#define CBR_57600 57600u
#define CBR_115200 115200u
/** A speed that SetCommState refuses with IE_BAUDRATE. */
#define CBR_14400 14400u
#define CBR_56000 56000u
#define CBR_128000 128000u
#define CBR_256000 256000u
#define SETXOFF 1u
#define SETXON 2u
#define SETRTS 3u
#define CLRRTS 4u
#define SETDTR 5u
#define CLRDTR 6u
#define RTS_CONTROL_TOGGLE 3u
/** @} */

/** \name Event log, modes
 *  No FORMAT_MESSAGE_ constants: there is no FormatMessage that could take them.
 *  @{ */
/** A type of event, which ReportEvent does not look at, or a mode that nothing reads. */
#define EVENTLOG_SUCCESS 0u
#define EVENTLOG_ERROR_TYPE 1u
#define EVENTLOG_WARNING_TYPE 2u
#define EVENTLOG_INFORMATION_TYPE 4u
#define EVENTLOG_AUDIT_SUCCESS 8u
#define EVENTLOG_AUDIT_FAILURE 16u
#define SEM_FAILCRITICALERRORS 0x0001u
#define SEM_NOGPFAULTERRORBOX 0x0002u
#define SEM_NOOPENFILEERRORBOX 0x8000u
/** @} */

/** \name Memory
 *  The bit that fills with zeros is the library's, not the published 0x40, which would not.
 *  @{ */
/** A flag of GlobalAlloc. */
#define GMEM_FIXED 0u
#define GMEM_MOVEABLE 2u
#define GMEM_DDESHARE 0x2000u
#define GMEM_ZEROINIT GLOBAL_ZEROFILL
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
/** @} */

/** \name Files
 *  @{ */
/** The result of GetFileAttributes that says failure: here it is 0. */
#define INVALID_FILE_ATTRIBUTES 0u
#define FILE_SHARE_DELETE 4u
/** Never told; SetFileAttributes drops all but FILE_ATTRIBUTE_READONLY. */
#define FILE_ATTRIBUTE_HIDDEN 0x02u
#define FILE_ATTRIBUTE_SYSTEM 0x04u
#define FILE_ATTRIBUTE_TEMPORARY 0x100u
/** A hint that CreateFile may pass over. */
#define FILE_FLAG_SEQUENTIAL_SCAN 0x08000000u
#define FILE_FLAG_RANDOM_ACCESS 0x10000000u
#define FILE_FLAG_NO_BUFFERING 0x20000000u
#define FILE_FLAG_POSIX_SEMANTICS 0x01000000u
#define FILE_FLAG_BACKUP_SEMANTICS 0x02000000u
#define FILE_FLAG_OVERLAPPED 0x40000000u /**< Transfers are done when the call returns. */
/* FILE_FLAG_DELETE_ON_CLOSE: the file would stay. FILE_FLAG_WRITE_THROUGH: the data would wait for
 * FlushFileBuffers. FILE_FLAG_OPEN_REPARSE_POINT: the link would be followed. */
/** @} */

/* CREATE_SUSPENDED: the thread would start at once. */

/** \name Printing
 *  @{ */
/** A bit of dmFields or of a mode, or a value of dmPrintQuality. */
#define DM_POSITION 0x00000020u
#define DM_NUP 0x00000040u
#define DM_PRINTQUALITY 0x0400u
#define DM_YRESOLUTION 0x2000u
#define DM_TTOPTION 0x4000u
#define DM_FORMNAME 0x00010000u
#define DM_OUT_DEFAULT DM_UPDATE
#define DM_OUT_BUFFER DM_COPY
#define DM_IN_PROMPT DM_PROMPT
#define DM_IN_BUFFER DM_MODIFY
#define DMRES_DRAFT (-1)
#define DMRES_LOW (-2)
#define DMRES_MEDIUM (-3)
#define DMRES_HIGH (-4)
/** A capability that DeviceCapabilities answers with -1. */
#define DC_MINEXTENT 4
#define DC_MAXEXTENT 5
#define DC_DUPLEX 7
#define DC_SIZE 8
#define DC_EXTRA 9
#define DC_VERSION 10
#define DC_DRIVER 11
#define DC_ENUMRESOLUTIONS 13
#define DC_FILEDEPENDENCIES 14
#define DC_TRUETYPE 15
#define DC_ORIENTATION 17
#define DC_COLLATE 22
#define DC_COLORDEVICE 32
/** @} */

/** \name Fonts
 *  LOGFONT takes all of these, and reads the weight alone.
 *  @{ */
/** A field of LOGFONT or TEXTMETRIC, or a font type. */
#define FW_THIN 100
#define FW_EXTRALIGHT 200
#define FW_LIGHT 300
#define FW_REGULAR FW_NORMAL
#define FW_MEDIUM 500
#define FW_DEMIBOLD FW_SEMIBOLD
#define FW_ULTRABOLD FW_EXTRABOLD
#define FW_HEAVY 900
#define FW_BLACK FW_HEAVY
#define ANSI_CHARSET 0
#define SYMBOL_CHARSET 2
#define MAC_CHARSET 77
#define SHIFTJIS_CHARSET 128
#define HANGUL_CHARSET 129
#define JOHAB_CHARSET 130
#define GB2312_CHARSET 134
#define CHINESEBIG5_CHARSET 136
#define GREEK_CHARSET 161
#define TURKISH_CHARSET 162
#define VIETNAMESE_CHARSET 163
#define HEBREW_CHARSET 177
#define ARABIC_CHARSET 178
#define BALTIC_CHARSET 186
#define RUSSIAN_CHARSET 204
#define THAI_CHARSET 222
#define EASTEUROPE_CHARSET 238
#define OEM_CHARSET 255
#define OUT_DEFAULT_PRECIS 0
#define OUT_STRING_PRECIS 1
#define OUT_CHARACTER_PRECIS 2
#define OUT_STROKE_PRECIS 3
#define OUT_TT_PRECIS 4
#define OUT_DEVICE_PRECIS 5
#define OUT_RASTER_PRECIS 6
#define OUT_TT_ONLY_PRECIS 7
#define OUT_OUTLINE_PRECIS 8
#define CLIP_DEFAULT_PRECIS 0
#define CLIP_CHARACTER_PRECIS 1
#define CLIP_STROKE_PRECIS 2
#define DEFAULT_QUALITY 0
#define DRAFT_QUALITY 1
#define PROOF_QUALITY 2
#define NONANTIALIASED_QUALITY 3
#define ANTIALIASED_QUALITY 4
#define CLEARTYPE_QUALITY 5
#define DEFAULT_PITCH 0
#define FF_DONTCARE 0x00
#define FF_ROMAN 0x10
#define FF_SWISS 0x20
#define FF_MODERN 0x30
#define FF_SCRIPT 0x40
#define FF_DECORATIVE 0x50
#define TMPF_DEVICE 8
#define RASTER_FONTTYPE 1u
#define DEVICE_FONTTYPE 2u
/** @} */

/** \name Languages
 *  Keys of GetLocaleInfo that its tables lack have no name here. LOCALE_RETURN_NUMBER: a text would
 *  come, or nothing. DATE_YEARMONTH, DATE_USE_ALT_CALENDAR, TIME_NOTIMEMARKER and
 *  TIME_FORCE24HOURFORMAT: they would be passed over; give a picture instead.
 *  @{ */
/** A language, or a bit of a key of GetLocaleInfo. */
#define LOCALE_NEUTRAL 0u
#define LOCALE_USE_CP_ACP 0x40000000u
/** @} */

/** \name Last errors of common use, which the library itself leaves rarely or never
 *  @{ */
/** A last error number. */
#define ERROR_INVALID_FUNCTION 1u
#define ERROR_TOO_MANY_OPEN_FILES 4u
#define ERROR_BAD_FORMAT 11u
#define ERROR_OUTOFMEMORY 14u
#define ERROR_INVALID_DRIVE 15u
#define ERROR_NOT_READY 21u
#define ERROR_CRC 23u
#define ERROR_SEEK 25u
#define ERROR_LOCK_VIOLATION 33u
#define ERROR_HANDLE_EOF 38u
#define ERROR_HANDLE_DISK_FULL 39u
#define ERROR_NOT_SUPPORTED 50u
#define ERROR_CANNOT_MAKE 82u
#define ERROR_BROKEN_PIPE 109u
#define ERROR_OPEN_FAILED 110u
#define ERROR_BUFFER_OVERFLOW 111u
#define ERROR_DISK_FULL 112u
#define ERROR_CALL_NOT_IMPLEMENTED 120u
#define ERROR_SEM_TIMEOUT 121u
#define ERROR_MOD_NOT_FOUND 126u
#define ERROR_PROC_NOT_FOUND 127u
#define ERROR_NEGATIVE_SEEK 131u
#define ERROR_BAD_PATHNAME 161u
#define ERROR_BUSY 170u
#define ERROR_ALREADY_EXISTS 183u
#define ERROR_FILENAME_EXCED_RANGE 206u
#define ERROR_MORE_DATA 234u
#define ERROR_NO_MORE_ITEMS 259u
#define ERROR_DIRECTORY 267u
#define ERROR_OPERATION_ABORTED 995u
#define ERROR_IO_INCOMPLETE 996u
#define ERROR_IO_PENDING 997u
#define ERROR_INVALID_FLAGS 1004u
#define ERROR_NOT_FOUND 1168u
#define ERROR_CANCELLED 1223u
#define ERROR_TIMEOUT 1460u
#define IE_BADID ((uint32_t)-1)
#define IE_OPEN ((uint32_t)-2)
#define IE_NOPEN ((uint32_t)-3)
#define IE_MEMORY ((uint32_t)-4)
#define IE_HARDWARE ((uint32_t)-10)
/** @} */

/** @} */

#endif
