/* Resources: the Win32 calling sequence, served by one function a module. */
#ifndef WEXELXI_RESOURCES_H
#define WEXELXI_RESOURCES_H

#include "core.h"
#include "modules.h"
#include "types.h"

/** \defgroup resources Resources and strings
 *  A module's resource function (WXRESFUNC) is what it exports as `WXresFunc`; the host's is what
 *  it gave to InitLib. It takes an opcode and three values, holds the resources in any form it
 *  likes, and is always called with the global lock held. The library only passes the calls on: it
 *  gives names and types no meaning, so they may be texts or small numbers, as both sides agree.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** (name, type, 0): an id, or 0 for "not found". From FindResource. */
#define WXRES_FIND 0u
/** (id, 0, 0): a load value of any kind. From LoadResource. */
#define WXRES_LOAD 1u
/** (0, load value, 0): ignored; the load value is 0 if nothing was loaded. From FreeResource. */
#define WXRES_FREE 2u
/** (0, load value, 0): pointer to the data. From LockResource. */
#define WXRES_LOCK 3u
/** (0, load value, 0): ignored. From UnlockResource. */
#define WXRES_UNLOCK 4u
/** (0, id, 0): size in bytes, 32 bits. From SizeofResource. */
#define WXRES_SIZE 5u
/** (string id, destination, size of the destination): length of the string that the function
 *  copied, 32 bits. The function keeps to the size. From LoadString. */
#define WXRES_LOADSTRING 6u
/* 7 and 8 are never sent. */
/** (module handle, 0, 0): ignored. Sent once, before a module's first other opcode; the host's
 *  function never sees it. */
#define WXRES_ATTACH 9u
/** (0, 0, 0): ignored. Sent by the last FreeLibrary if WXRES_ATTACH was; not to the host. */
#define WXRES_DETACH 10u

/** A resource that was found: its module, its id and its load value. Free all records of a module
 *  before its last FreeLibrary. */
typedef struct ResourceRecord ResourceRecord;

/** A module's resource function, looked up at the first use and then sent WXRES_ATTACH; a module
 *  without one is asked again at each use.
 *  @param entry  the module's entry in the chain.
 *  @return the function, or null. Last error: unchanged if the function was known, else 0.
 *  Lock: yes. */
WEXELXI_API WXRESFUNC MODChain_getResFunc(MODChainEntry *entry);

/** Looks a resource up.
 *  @param module  the module, or WEXELXI_HOST_MODULE.
 *  @param name    passed on as it is.
 *  @param type    passed on as it is.
 *  @return a record, to be ended with FreeResource; null if the handle is unknown, the module has
 *          no resource function, or it does not know the resource.
 *  Last error: 0; 8 if there is no memory. Lock: yes, held through the resource function. */
WEXELXI_API ResourceRecord *FindResource(HMODULE module, const void *name, const void *type);

/** Loads a resource through the function of the module argument; a second load replaces the first.
 *  @return the same record whatever the function gave; null if the handle is unknown, the module
 *          has no resource function, or the record is null.
 *  Last error: 0. Lock: yes, held through the resource function. */
WEXELXI_API ResourceRecord *LoadResource(HMODULE module, ResourceRecord *record);

/** Pointer to a loaded resource's data, owned by the module.
 *  @return what the resource function gives; null for a null record.
 *  Last error: 0. Lock: yes, held through the resource function. */
WEXELXI_API void *LockResource(ResourceRecord *record);

/** Tells the module that the data is no longer read.
 *  @return 1, or 0 for a null record. Last error: 0. Lock: yes, held through the resource function.
 */
WEXELXI_API int32_t UnlockResource(ResourceRecord *record);

/** Ends a resource and its record; this is the last call on it.
 *  @return TRUE, or FALSE for a null record.
 *  Last error: 0. Lock: yes, held through the resource function. */
WEXELXI_API BOOL FreeResource(ResourceRecord *record);

/** Size of a resource, loaded or not.
 *  @param module  not looked at.
 *  @return bytes; 0 for a null record. Last error: 0. Lock: yes, held through the resource
 *  function. */
WEXELXI_API uint32_t SizeofResource(HMODULE module, ResourceRecord *record);

/** Copies a string of a module.
 *  @param module       the module, or WEXELXI_HOST_MODULE.
 *  @param id           the string's number.
 *  @param destination  receives the text; untouched if the module has no resource function.
 *  @param size         bytes at destination; the resource function keeps to it.
 *  @return the length that the resource function gives, or 0 if there is none.
 *  Last error: 0. Lock: yes, held through the resource function. */
WEXELXI_API int32_t LoadString(HMODULE module, uint32_t id, char *destination, int32_t size);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
