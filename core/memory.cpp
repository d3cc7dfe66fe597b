// Guarded blocks: a head guard, the size, the data, and a trailer guard that ends with the block.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "core/last_error.h"
#include "wexelxi/memory.h"

using namespace wexelxi;

namespace {

constexpr size_t kHeadBytes = 16;
constexpr uint64_t kFreedGuard = ~uint64_t{0};

struct GuardedHead {
    uint64_t guard;
    int64_t size;
};
static_assert(sizeof(GuardedHead) == kHeadBytes);

GuardedHead *HeadOf(HGLOBAL handle)
{
    return reinterpret_cast<GuardedHead *>(static_cast<char *>(handle) - kHeadBytes);
}

// Bytes of the whole block, or 0 if they cannot be told in 32 bits.
size_t BlockBytes(int32_t size)
{
    if (size < 0 || size > INT32_MAX - 32)
        return 0;
    return static_cast<size_t>((size + 32) & ~7);
}

void WriteGuards(GuardedHead *head, uint64_t headGuard, uint64_t trailerGuard)
{
    head->guard = headGuard;
    char *trailer = reinterpret_cast<char *>(head) + ((head->size >> 3) + 3) * 8;
    memcpy(trailer, &trailerGuard, sizeof trailerGuard);
}

HGLOBAL Seal(void *block, int32_t size)
{
    auto *head = static_cast<GuardedHead *>(block);
    head->size = size;
    WriteGuards(head, GLOBAL_HEAD_GUARD, GLOBAL_TAIL_GUARD);
    return static_cast<char *>(block) + kHeadBytes;
}

} // namespace

HGLOBAL GlobalAlloc(uint32_t flags, int32_t size)
{
    SetLastError(ERROR_SUCCESS);
    const size_t bytes = BlockBytes(size);
    if (bytes == 0)
        return FailWith<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    void *block = flags & GLOBAL_ZEROFILL ? calloc(1, bytes) : malloc(bytes);
    if (!block)
        return FailWith<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    return Seal(block, size);
}

HGLOBAL GlobalReAlloc(HGLOBAL handle, int32_t size, uint32_t flags)
{
    if (!handle)
        return GlobalAlloc(flags, size);
    SetLastError(ERROR_SUCCESS);
    const size_t bytes = BlockBytes(size);
    if (bytes == 0)
        return FailWith<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    GuardedHead *head = HeadOf(handle);
    const auto kept = static_cast<size_t>(std::min<int64_t>(head->size, size));
    WriteGuards(head, kFreedGuard, kFreedGuard);
    void *block = realloc(head, bytes);
    if (!block) {
        WriteGuards(head, GLOBAL_HEAD_GUARD, GLOBAL_TAIL_GUARD);
        return FailWith<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    }
    if (flags & GLOBAL_ZEROFILL)
        memset(static_cast<char *>(block) + kHeadBytes + kept, 0, static_cast<size_t>(size) - kept);
    return Seal(block, size);
}

void GlobalFree(HGLOBAL handle)
{
    if (!handle)
        return;
    const int saved = errno;
    GuardedHead *head = HeadOf(handle);
    WriteGuards(head, kFreedGuard, kFreedGuard);
    // The freed words are for whoever reads a memory image: without this the compiler, which sees
    // a free behind them, drops the stores.
    __asm__ volatile("" : : "r"(head) : "memory");
    free(head);
    errno = saved;
}

uint32_t GlobalSize(HGLOBAL handle)
{
    return handle ? static_cast<uint32_t>(HeadOf(handle)->size) : 0;
}

LPVOID GlobalLock(HGLOBAL handle)
{
    return handle;
}

void GlobalUnlock(HGLOBAL) {}

uint32_t GlobalFlags(HGLOBAL)
{
    SetLastError(ERROR_SUCCESS);
    return 0;
}

HGLOBAL GlobalHandle(LPCVOID pointer)
{
    SetLastError(ERROR_SUCCESS);
    return const_cast<void *>(pointer);
}
