// The byte helpers: pure arithmetic on their arguments, without lock or last error.
#include <algorithm>
#include <cstring>
#include <endian.h>

#include "wexelxi/memory.h"

BOOL IsBadWritePtr(LPCVOID pointer, UINT_PTR)
{
    return pointer == nullptr;
}

void CopyMemory(LPVOID destination, LPCVOID source, int32_t length)
{
    memmove(destination, source, static_cast<size_t>(std::max(length, 0)));
}

void ZeroMemory(LPVOID destination, int32_t length)
{
    memset(destination, 0, static_cast<size_t>(std::max(length, 0)));
}

void FillMemory(LPVOID destination, uint32_t length, int32_t value)
{
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
    uint16_t value;
    memcpy(&value, pointer, sizeof value);
    return littleEndian ? le16toh(value) : be16toh(value);
}

void SETWORD(LPVOID pointer, uint16_t value, int32_t littleEndian)
{
    value = littleEndian ? htole16(value) : htobe16(value);
    memcpy(pointer, &value, sizeof value);
}

uint32_t GETDWORD(LPCVOID pointer, int32_t littleEndian)
{
    uint32_t value;
    memcpy(&value, pointer, sizeof value);
    return littleEndian ? le32toh(value) : be32toh(value);
}

void SETDWORD(LPVOID pointer, uint32_t value, int32_t littleEndian)
{
    value = littleEndian ? htole32(value) : htobe32(value);
    memcpy(pointer, &value, sizeof value);
}
