/* Guarded global memory and the byte helpers. */
#ifndef WEXELXI_MEMORY_H
#define WEXELXI_MEMORY_H

#include "types.h"

/** \defgroup memory Guarded memory and bytes
 *  A block has a guard word and its size in the 16 bytes in front of the handle, and a trailing
 *  guard word at (size rounded down to a multiple of 8) + 8 from the handle, so that an overrun or
 *  a freed block shows in a memory image. Blocks never move while they live. None of these
 *  functions takes the global lock.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

#define GLOBAL_ZEROFILL 1u                             /**< Flag: fill with zeros. */
#define GLOBAL_HEAD_GUARD UINT64_C(0xABCDEFABCDEFABCD) /**< At handle - 16. */
#define GLOBAL_TAIL_GUARD UINT64_C(0xDCBAFEDCBAFEDCBA) /**< In the block's last 8 bytes. */

/** Allocates a guarded block.
 *  @param flags  GLOBAL_ZEROFILL, or 0; other bits mean nothing.
 *  @param size   bytes; 0 is a valid size.
 *  @return the handle, which is the data's address, freed with GlobalFree; null if there is no
 *          such memory or the size is negative or does not fit 32 bits with its guards.
 *  Last error: 0; 8 with null. Lock: no. */
WEXELXI_API HGLOBAL GlobalAlloc(uint32_t flags, int32_t size);

/** Resizes a block, which may move.
 *  @param handle  a live block; null makes a new one.
 *  @param size    new bytes.
 *  @param flags   GLOBAL_ZEROFILL zeroes the bytes behind the old size.
 *  @return the new handle; null as GlobalAlloc, and the old block is then whole.
 *  Last error: 0; 8 with null. Lock: no. */
WEXELXI_API HGLOBAL GlobalReAlloc(HGLOBAL handle, int32_t size, uint32_t flags);

/** Frees a block; null does nothing. Last error: unchanged. Lock: no. */
WEXELXI_API void GlobalFree(HGLOBAL handle);

/** The size that was asked for, 0 for null. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t GlobalSize(HGLOBAL handle);

/** The data's address, which is the handle. Last error: unchanged. Lock: no. */
WEXELXI_API LPVOID GlobalLock(HGLOBAL handle);

/** Does nothing. Last error: unchanged. Lock: no. */
WEXELXI_API void GlobalUnlock(HGLOBAL handle);

/** Always 0. Last error: 0. Lock: no. */
WEXELXI_API uint32_t GlobalFlags(HGLOBAL handle);

/** The handle of a block's data: the same value. Last error: 0. Lock: no. */
WEXELXI_API HGLOBAL GlobalHandle(LPCVOID pointer);

/** TRUE for a null pointer only; the size is not looked at. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL IsBadWritePtr(LPCVOID pointer, UINT_PTR size);

/** Copies length bytes; the regions may overlap. A negative length copies nothing.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void CopyMemory(LPVOID destination, LPCVOID source, int32_t length);

/** Zeroes length bytes; a negative length none. Last error: unchanged. Lock: no. */
WEXELXI_API void ZeroMemory(LPVOID destination, int32_t length);

/** Fills length bytes with the low 8 bits of value. Last error: unchanged. Lock: no. */
WEXELXI_API void FillMemory(LPVOID destination, uint32_t length, int32_t value);

/** a * b, wrapped to 32 bits, divided by c toward zero; 0 if c is 0. Nothing is rounded and no
 *  wider product is formed. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t MulDiv(int32_t a, int32_t b, int32_t c);

/** Reads 16 bits at any address.
 *  @param pointer       two bytes.
 *  @param littleEndian  not 0: lowest byte first; 0: highest byte first.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API uint16_t GETWORD(LPCVOID pointer, int32_t littleEndian);

/** Writes 16 bits at any address, byte order as GETWORD. Last error: unchanged. Lock: no. */
WEXELXI_API void SETWORD(LPVOID pointer, uint16_t value, int32_t littleEndian);

/** Reads 32 bits at any address, byte order as GETWORD. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t GETDWORD(LPCVOID pointer, int32_t littleEndian);

/** Writes 32 bits at any address, byte order as GETWORD. Last error: unchanged. Lock: no. */
WEXELXI_API void SETDWORD(LPVOID pointer, uint32_t value, int32_t littleEndian);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
