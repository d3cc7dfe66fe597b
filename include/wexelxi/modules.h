/* Modules: plug-ins of the host, loaded by their Win32 names, and the chain that counts them. */
#ifndef WEXELXI_MODULES_H
#define WEXELXI_MODULES_H

#include "types.h"

/** \defgroup modules Modules
 *  A module is a shared object. It may export `DllMain` (DLLMAINPROC), called when the module is
 *  first loaded and when it is last released, and `WXresFunc` (WXRESFUNC, see resources.h), which
 *  serves its resources. Both are called with the global lock held: they may call the library
 *  freely, and must not wait for another thread that needs it.
 *
 *  Names lose everything from their last dot on, and gain ".so": `report.dll` and `report` are both
 *  `report.so`. The dot may be any but the name's first character, also one of a directory.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** The host itself: first in the chain, under the path that InitLib was given. */
#define WEXELXI_HOST_MODULE ((HMODULE)(uintptr_t)1)

/** \name Reasons of DllMain
 *  @{ */
/** A reason that DllMain is called for. */
#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
/** @} */

/** What a module exports as `DllMain`.
 *  @param module    the module's own handle.
 *  @param reason    DLL_PROCESS_ATTACH once after the load that opened the module,
 *                   DLL_PROCESS_DETACH once before the release that closes it.
 *  @param reserved  gScaleFactor at the attach, 0 at the detach.
 *  @return ignored. */
typedef BOOL (*DLLMAINPROC)(HMODULE module, uint32_t reason, intptr_t reserved);

/** A module's entry in the chain; its layout is the library's own. */
typedef struct MODChainEntry MODChainEntry;

/** Appends an entry with reference count 1 to the chain. Opens and calls nothing.
 *  @param name    the module's file name, stored as it is; copied.
 *  @param module  the module's handle.
 *  Last error: 0; 8 if there is no memory, and then nothing is added. Lock: yes. */
WEXELXI_API void MODChain_add(const char *name, HMODULE module);

/** The first entry with that handle, or null. The entry belongs to the chain.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API MODChainEntry *MODChain_findByMod(HMODULE module);

/** The first entry that a name means, or null. A name that does not begin with '/' is taken from
 *  the configuration folder. A module loaded by its full path is found by the same path; one loaded
 *  by a bare name is found by any path that ends in it. Names are compared exactly, after ".so".
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API MODChainEntry *MODChain_findByName(const char *name);

/** Takes 1 from the reference count of the entry with that handle; at 0 the entry is removed and
 *  freed. Closes and calls nothing.
 *  @return TRUE if the entry was removed. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL MODChain_remove(HMODULE module);

/** Loads a module, or counts one reference more if it is loaded. On the load that opens it, its
 *  `DllMain` is called. A bare name is searched for as dlopen searches.
 *  @param name  the module's name, with any suffix or none; null or empty gives null.
 *  @return the handle, to be released with FreeLibrary; null if the module cannot be opened, and
 *          GetLastErrorString then has the loader's own text.
 *  Last error: 0, or what DllMain left; 31; 8 if there is no memory. Lock: yes, held through the
 *  constructors of the module and DllMain. */
WEXELXI_API HMODULE LoadLibrary(const char *name);

/** Releases one reference. The last one sends WXRES_DETACH if the resource function was used, calls
 *  `DllMain`, and closes the module. While gNoFreeLibrary is set nothing is released until the end
 *  of the library. The host's own entry stays.
 *  @param module  handle from LoadLibrary.
 *  @return 1 if the handle is in the chain, else 0.
 *  Last error: 0, or what the module's functions left. Lock: yes, held through DllMain. */
WEXELXI_API int32_t FreeLibrary(HMODULE module);

/** Address of a symbol of a module.
 *  @param module  live handle; WEXELXI_HOST_MODULE asks the host's program for a symbol of its own;
 *                 null gives null.
 *  @param name    the symbol's name.
 *  @return the address, or null. Last error: 0. Lock: yes. */
WEXELXI_API void *GetProcAddress(HMODULE module, const char *name);

/** Handle of a loaded module by name, as MODChain_findByName finds it; counts no reference.
 *  @return the handle, or null. Last error: 0. Lock: yes. */
WEXELXI_API HMODULE GetModuleHandle(const char *name);

/** Copies a module's name: the host's full path, or the name that the module was loaded by, with
 *  its ".so".
 *  @param module       the handle; an unknown one gives the empty text.
 *  @param destination  receives the name whole; give it 4096 bytes.
 *  @param size         not looked at.
 *  @return the name's length without the NUL. Last error: 0. Lock: yes. */
WEXELXI_API uint32_t GetModuleFileName(HMODULE module, char *destination, uint32_t size);

/** Called by InitLib: notes the time that GetTickCount counts from, and enters the host into the
 *  chain with its resource function. Last error: 0; 8 if there is no memory. Lock: yes. */
WEXELXI_API void InitModule(void);

/** Called by FreeLib: clears gNoFreeLibrary and releases every module, in load order, until the
 *  chain is empty. Last error: as FreeLibrary leaves it. Lock: yes. */
WEXELXI_API void TermModule(void);

/** First entry of the chain, or null. */
WEXELXI_API extern MODChainEntry *gModChain;
/** Count of modules opened; 0 from InitLib on. */
WEXELXI_API extern uint32_t gHMODULE;
/** Handed to every DllMain at the attach; 1 at load, set by the host. */
WEXELXI_API extern int32_t gScaleFactor;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
