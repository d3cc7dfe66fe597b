/* Threads, semaphores, waiting, critical sections and thread-local slots. */
#ifndef WEXELXI_THREADS_H
#define WEXELXI_THREADS_H

#include "types.h"

/** \defgroup threads Threads and synchronisation
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** A slot that the caller owns; it points to a recursive mutex, null while not initialised. */
typedef void *CRITICAL_SECTION;

/** Makes a recursive mutex for the slot; a null address does nothing, and no memory leaves the slot
 *  null. Last error: unchanged. Lock: no. */
WEXELXI_API void InitializeCriticalSection(CRITICAL_SECTION *section);

/** Destroys the slot's mutex and empties the slot; a null address or an empty slot does nothing.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void DeleteCriticalSection(CRITICAL_SECTION *section);

/** Locks the slot's mutex; blocks while another thread holds it. A null address or an empty slot
 *  reports "badenter", a failing mutex "enter". Last error: unchanged. Lock: no. */
WEXELXI_API void EnterCriticalSection(CRITICAL_SECTION *section);

/** Locks the slot's mutex if that needs no wait.
 *  @return TRUE if the caller holds it now. A null address or an empty slot reports "badtryenter",
 *          a mutex that fails otherwise than by being held "tryenter".
 *  Last error: unchanged. Lock: no. */
WEXELXI_API BOOL TryEnterCriticalSection(CRITICAL_SECTION *section);

/** Unlocks the slot's mutex. A null address or an empty slot reports "badleave", a failing mutex
 *  "leave". Last error: unchanged. Lock: no. */
WEXELXI_API void LeaveCriticalSection(CRITICAL_SECTION *section);

/** Allocates a thread-local slot, null in every thread; it is never released.
 *  @return the slot's key, or 0xFFFFFFFF. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t TlsAlloc(void);

/** Stores the calling thread's value. Always TRUE. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL TlsSetValue(uint32_t key, LPVOID value);

/** The calling thread's value, null if it stored none. Last error: unchanged. Lock: no. */
WEXELXI_API LPVOID TlsGetValue(uint32_t key);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
