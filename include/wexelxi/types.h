/* Basic types of the interface: exact widths, published names.
 *
 * Conventions that hold for every function of the library, unless its own comment differs:
 *
 * - Text is 8-bit and ends in a NUL. Paths are POSIX paths of at most 4096 bytes with the NUL.
 * - BOOL is one byte: 1 for true, 0 for false.
 * - A handle is the address of its record. Whoever gets one owns it and ends it with the function
 *   that its comment names.
 * - The last error belongs to the thread (GetLastError). ERROR_SUCCESS is 0, the catch-all is
 *   ERROR_GEN_FAILURE, 31. A comment's "Last error" line lists every number that a call can leave.
 * - "Lock: yes" means that the call holds the global lock from its first access to shared state to
 *   its last; "no" means that it never takes it itself.
 * - A null pointer that a comment does not mention is not allowed. */
#ifndef WEXELXI_TYPES_H
#define WEXELXI_TYPES_H

#include <stddef.h>
#include <stdint.h>

#define WEXELXI_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define WEXELXI_LAYOUT(condition) static_assert(condition, #condition)
#else
#define WEXELXI_LAYOUT(condition) _Static_assert(condition, #condition)
#endif
#define WEXELXI_FIELD(record, field, offset) WEXELXI_LAYOUT(offsetof(record, field) == (offset))

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

typedef uint8_t BOOL;
typedef uint8_t BYTE;
typedef char CHAR;
typedef uint16_t WORD;
typedef int16_t SHORT;
typedef uint32_t DWORD;
typedef uint32_t UINT;
typedef int32_t INT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef uintptr_t UINT_PTR;
typedef intptr_t INT_PTR;
typedef intptr_t LPARAM;
typedef uintptr_t WPARAM;
typedef intptr_t LRESULT;

typedef char *LPSTR;
typedef const char *LPCSTR;
typedef void *LPVOID;
typedef const void *LPCVOID;
typedef BYTE *LPBYTE;
typedef WORD *LPWORD;
typedef DWORD *LPDWORD;

typedef void *HANDLE;  /**< File, port, thread or semaphore; ended by CloseHandle. */
typedef void *HGLOBAL; /**< Data of a guarded block; freed by GlobalFree. */
typedef void *HMODULE; /**< What dlopen returned, or 1 for the host itself. */

/** A colour, 0x00BBGGRR: red in the low byte. */
typedef uint32_t COLORREF;

/** The failing handle of CreateFile and FindFirstFile. */
#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)

WEXELXI_LAYOUT(sizeof(void *) == 8);

#endif
