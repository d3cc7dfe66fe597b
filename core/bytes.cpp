// The byte helpers: pure arithmetic on their arguments, without lock or last error.
#include <cstring>

#include "wexelxi/memory.h"

BOOL IsBadWritePtr(LPCVOID pointer, UINT_PTR)
{
    return pointer == nullptr;
}

void CopyMemory(LPVOID destination, LPCVOID source, int32_t length)
{
    if (length > 0)
        memmove(destination, source, static_cast<size_t>(length));
}

void ZeroMemory(LPVOID destination, int32_t length)
{
    if (length > 0)
        memset(destination, 0, static_cast<size_t>(length));
}

void FillMemory(LPVOID destination, uint32_t length, int32_t value)
{
    if (length > 0)
        memset(destination, value, length);
}

int32_t MulDiv(int32_t a, int32_t b, int32_t c)
{
    if (c == 0)
        return 0;
    const auto product = static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
    // Divided in 64 bits, so that the one quotient without a place in 32 bits wraps.
    return static_cast<int32_t>(static_cast<int64_t>(product) / c);
}

uint16_t GETWORD(LPCVOID pointer, int32_t littleEndian)
{
    const auto *p = static_cast<const uint8_t *>(pointer);
    const uint32_t low = littleEndian ? p[0] : p[1];
    const uint32_t high = littleEndian ? p[1] : p[0];
    return static_cast<uint16_t>(high << 8 | low);
}

void SETWORD(LPVOID pointer, uint16_t value, int32_t littleEndian)
{
    auto *p = static_cast<uint8_t *>(pointer);
    p[littleEndian ? 0 : 1] = static_cast<uint8_t>(value);
    p[littleEndian ? 1 : 0] = static_cast<uint8_t>(value >> 8);
}

uint32_t GETDWORD(LPCVOID pointer, int32_t littleEndian)
{
    const auto *p = static_cast<const uint8_t *>(pointer);
    uint32_t value = 0;
    for (int i = 0; i < 4; i++)
        value |= static_cast<uint32_t>(p[i]) << (littleEndian ? 8 * i : 24 - 8 * i);
    return value;
}

void SETDWORD(LPVOID pointer, uint32_t value, int32_t littleEndian)
{
    auto *p = static_cast<uint8_t *>(pointer);
    for (int i = 0; i < 4; i++)
        p[i] = static_cast<uint8_t>(value >> (littleEndian ? 8 * i : 24 - 8 * i));
}
