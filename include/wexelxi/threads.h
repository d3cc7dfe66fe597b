/* Threads, semaphores, waiting, critical sections and thread-local slots. */
#ifndef WEXELXI_THREADS_H
#define WEXELXI_THREADS_H

#include "types.h"

/** \defgroup threads Threads and synchronisation
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Waiting
 *  @{ */
/** A time-out, or a result, of WaitForSingleObject. */
#define INFINITE 0xFFFFFFFFu
#define WAIT_OBJECT_0 0u
#define WAIT_FAILED 0xFFFFFFFFu
/** @} */

/** Flag of CreateThread: the thread can be waited for. */
#define CREATE_JOINABLE 0x100u

/** A thread's routine; its result is dropped. */
typedef void *(*THREAD_START_ROUTINE)(void *argument);

/** Makes a semaphore of this process.
 *  @param attributes    must be null.
 *  @param initialCount  waits that pass before the first release; negative is refused.
 *  @param maximumCount  not read: the only limit is the platform's.
 *  @param name          must be null.
 *  @return a handle for CloseHandle, or null. Last error: 0; 31. Lock: yes. */
WEXELXI_API HANDLE CreateSemaphore(LPVOID attributes, int32_t initialCount, int32_t maximumCount,
                                   const char *name);

/** Raises a semaphore by one, whatever the count says.
 *  @param semaphore      a handle of CreateSemaphore.
 *  @param count          not read.
 *  @param previousCount  neither read nor written.
 *  @return TRUE, or FALSE on another handle or at the platform's limit.
 *  Last error: 0; 31. Lock: yes. */
WEXELXI_API BOOL ReleaseSemaphore(HANDLE semaphore, int32_t count, int32_t *previousCount);

/** Starts a thread, at once.
 *  @param attributes  must be null.
 *  @param stackSize   must be 0.
 *  @param routine     runs on the new thread.
 *  @param argument    handed to it.
 *  @param flags       CREATE_JOINABLE, or 0 for a detached thread, which cannot be waited for. All
 *                     other bits are ignored.
 *  @param threadId    receives what GetCurrentThreadId gives on the thread, or null.
 *  @return a handle for CloseHandle, which leaves the thread running; or null.
 *  Last error: 0; 31. Lock: yes. */
WEXELXI_API HANDLE CreateThread(LPVOID attributes, uint32_t stackSize, THREAD_START_ROUTINE routine,
                                LPVOID argument, uint32_t flags, UINT_PTR *threadId);

/** Waits for a semaphore, and takes one from it, or for the end of a thread.
 *  Blocks without the global lock; but a caller that holds the lock keeps it through the wait.
 *  @param handle   a semaphore, or a thread made with CREATE_JOINABLE that was not waited for yet.
 *  @param timeout  must be INFINITE: 0 is no poll but refused.
 *  @return WAIT_OBJECT_0 or WAIT_FAILED. Last error: 0; 31. Lock: yes, but not while it waits. */
WEXELXI_API uint32_t WaitForSingleObject(HANDLE handle, uint32_t timeout);

/** Lets another thread run. Always TRUE. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL SwitchToThread(void);

/** The calling thread's pthread_t. Last error: unchanged. Lock: no. */
WEXELXI_API UINT_PTR GetCurrentThreadId(void);

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
