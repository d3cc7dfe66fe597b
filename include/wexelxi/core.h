/* Start and stop, the global lock, the error hooks, last error, and the library's plain globals. */
#ifndef WEXELXI_CORE_H
#define WEXELXI_CORE_H

#include "types.h"

/** \defgroup lifecycle Start, stop and the global lock
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** A module's resource function; resources.h tells its opcodes. */
typedef intptr_t (*WXRESFUNC)(uint32_t opcode, intptr_t first, intptr_t second, intptr_t third);

/** Receives a lock fault: "enter", "leave", "tryenter" with the platform's code, or "badenter",
 *  "badleave", "badtryenter" with 0. Called on the faulting thread; the call goes on afterwards. */
typedef void (*CRITICALSECTIONERRORPROC)(const char *word, int32_t code);

/** Receives a complete message about a wrong font or device context handle. Severity 0: the call
 *  ends normally with an empty result. Severity 1: the call has nothing to work on. */
typedef void (*HEADLESSERRORPROC)(const char *message, int32_t severity);

/** Starts the library: makes the thread keys and the lock, finds the configuration folder, enters
 *  the host as module 1, loads the settings, and starts fonts and printing. Call it once, before
 *  any other thread uses the library; again only after FreeLib.
 *  @param hostPath  full path of the host program, at most 4095 characters (cut there); its folder
 *                   is the default configuration folder. Copied.
 *  @param resFunc   the host's resource function, serving module handle 1; may be null.
 *  @param noLock    0: the global lock is made. Not 0: no lock; call from one thread at a time.
 *  @return 0; 3 if fontconfig cannot start, and 8 if memory runs out: the library is then stopped
 *          again; 8 too if the platform has no thread-local key left for a first start, and nothing
 *          has happened then.
 *  Last error: as the last step left it; 8 for no memory. Lock: no, but its steps take it. */
WEXELXI_API int32_t InitLib(const char *hostPath, WXRESFUNC resFunc, intptr_t noLock);

/** Stops the library: deletes gGeneralFont, ends fonts, texts, modules and printing, then destroys
 *  the lock. Every other thread must have stopped calling. Harmless when repeated. File handles
 *  belong to the host and stay open.
 *  Last error: as the last step left it. Lock: yes, until it is destroyed. */
WEXELXI_API void FreeLib(void);

/** Takes the global lock, so that several calls are one step. Nests; pair each call with
 *  gLeaveWexelxiCriticalSection on the same thread. Does nothing while the lock is inactive.
 *  Blocks while another thread is inside the library. Last error: unchanged; errno too.
 *  Lock: yes. */
WEXELXI_API void gEnterWexelxiCriticalSection(void);

/** Gives back one level of gEnterWexelxiCriticalSection. Last error: unchanged; errno too.
 *  Lock: given back. */
WEXELXI_API void gLeaveWexelxiCriticalSection(void);

/** Installs the hook for lock faults; null turns reporting off. Survives FreeLib.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void SetCriticalSectionErrorProc(CRITICALSECTIONERRORPROC proc);

/** Installs the hook for wrong font and device context handles (gHDerrorProc); null turns reporting
 *  off. Survives FreeLib. Last error: unchanged. Lock: no. */
WEXELXI_API void SetHeadlessErrorProc(HEADLESSERRORPROC proc);

/** Slot of the global lock; null while the lock is inactive. */
WEXELXI_API extern void *gWexelxiCriticalSection;
/** Thread-local key of each thread's lock count. */
WEXELXI_API extern uint32_t gCriticalSectionTLS;
/** Thread-local key of each thread's last-error record; 0 means never started. */
WEXELXI_API extern uint32_t gLastErrorTLS;
/** Hook for wrong font and device context handles, or null. */
WEXELXI_API extern HEADLESSERRORPROC gHDerrorProc;
/** 1 from the end of a good InitLib to the start of FreeLib. */
WEXELXI_API extern uint8_t gReady;
/** 1 from FreeLib on, 0 from InitLib on. */
WEXELXI_API extern uint8_t gTerminating;
/** Full path of the host, a guarded block of 4096 bytes, or null. */
WEXELXI_API extern char *gWEXELfullPath;
/** The host's resource function. */
WEXELXI_API extern WXRESFUNC gWexelResFunc;
/** Setting FileCaseMode: not 0 makes directory searches fold case. */
WEXELXI_API extern uint8_t gFileMode;
/** Setting UseOverride; for the host. */
WEXELXI_API extern uint8_t gUseOverride;
/** Setting XPrinterMargin; GetSystemMetrics index 1001. */
WEXELXI_API extern int32_t gPrinterXMargin;
/** Setting YPrinterMargin; GetSystemMetrics index 1002. */
WEXELXI_API extern int32_t gPrinterYMargin;
/** Screen resolution across, dots per inch; 96 after InitLib. */
WEXELXI_API extern int32_t gLOGPIXELSX;
/** Screen resolution down, dots per inch; 96 after InitLib. */
WEXELXI_API extern int32_t gLOGPIXELSY;
/** A font of the host's, deleted by FreeLib; or null. */
WEXELXI_API extern void *gGeneralFont;
/** Scroll bar width in pixels, 17 at load; set by the host. */
WEXELXI_API extern int32_t gScbarwid;
/** Set to 0 by InitLib; for the host. */
WEXELXI_API extern uint32_t gHFILE;
/** Set to 0 by InitLib; for the host. */
WEXELXI_API extern uint32_t gGAllocNum;
/** Set to 0 by InitLib; for the host. */
WEXELXI_API extern uint32_t gGAllocMem;
/** For the host. */
WEXELXI_API extern uint8_t gUseScratchImage;
/** For the host. */
WEXELXI_API extern uint8_t gNeedNull;
/** For the host. */
WEXELXI_API extern int32_t gTraceLevel;

/** @} */

/** \defgroup error Last error
 *  Each thread has a number and a text. Before the first InitLib there is one process-wide pair.
 *  @{ */

/** \name Last error numbers
 *  @{ */
/** A last error number. */
#define ERROR_SUCCESS 0u
#define NO_ERROR 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_PATH_NOT_FOUND 3u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_INVALID_ACCESS 12u
#define ERROR_CURRENT_DIRECTORY 16u
#define ERROR_NOT_SAME_DEVICE 17u
#define ERROR_NO_MORE_FILES 18u
#define ERROR_WRITE_PROTECT 19u
#define ERROR_WRITE_FAULT 29u
#define ERROR_READ_FAULT 30u
#define ERROR_GEN_FAILURE 31u
#define ERROR_SHARING_VIOLATION 32u
#define ERROR_FILE_EXISTS 80u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_INSUFFICIENT_BUFFER 122u
#define ERROR_INVALID_NAME 123u
#define ERROR_DIR_NOT_EMPTY 145u
#define ERROR_PATH_BUSY 148u
#define ERROR_LABEL_TOO_LONG 154u
#define ERROR_ENVVAR_NOT_FOUND 203u
/** @} */

/** The calling thread's last error number, 0 if it has stored none.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t GetLastError(void);

/** Stores the calling thread's last error number; the text stays. Last error: code. Lock: no. */
WEXELXI_API void SetLastError(uint32_t code);

/** Stores the number that stands for the current errno; 31 where none does.
 *  Last error: 2, 5, 8, 12, 17, 19, 31, 80, 115, 123, 145, 148 or 154. Lock: yes. */
WEXELXI_API void SetUnixError(void);

/** Stores a copy of a text beside the number; the number stays.
 *  @param text  the text; null stands for the empty text.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void SetLastErrorString(const char *text);

/** Copies the calling thread's text, cut to fit and always ended; the empty text if there is none.
 *  @param destination  receives the text.
 *  @param size         bytes at destination with the NUL; 0 or below writes nothing.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void GetLastErrorString(char *destination, int32_t size);

/** Translates errno, or h_errno where errno is 0, to a socket error (10035 to 11004); 0 where none
 *  fits. Call it straight after the network call. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t WSAGetLastError(void);

/** Stores a mode that nothing reads, and returns the one before it.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API uint32_t SetErrorMode(uint32_t mode);

/** The last error number before the first InitLib. */
WEXELXI_API extern uint32_t sLastErrorBeforeInit;
/** What SetErrorMode stored. */
WEXELXI_API extern uint32_t gErrorMode;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
