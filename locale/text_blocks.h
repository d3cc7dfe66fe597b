// Case of sixteen bytes at a time, by arithmetic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace wexelxi {

typedef int8_t TextBlock __attribute__((vector_size(16)));

inline TextBlock LoadBlock(const void *text)
{
    TextBlock block;
    memcpy(&block, text, sizeof block);
    return block;
}

inline bool IsZero(TextBlock block)
{
    typedef uint64_t Words __attribute__((vector_size(16)));
    const auto words = reinterpret_cast<Words>(block);
    return (words[0] | words[1]) == 0;
}

// All ones where a byte lies between two others: all bytes move so that the last one becomes the
// largest there is.
inline TextBlock Between(TextBlock block, uint8_t first, uint8_t last)
{
    typedef uint8_t Bytes __attribute__((vector_size(16)));
    const auto moved = reinterpret_cast<Bytes>(block) + static_cast<uint8_t>(INT8_MAX - last);
    return reinterpret_cast<TextBlock>(moved) > static_cast<int8_t>(INT8_MAX - 1 - (last - first));
}

inline TextBlock Is(TextBlock block, uint8_t byte)
{
    return block == static_cast<int8_t>(byte);
}

// The case pairs of the code page.
inline TextBlock Upper(TextBlock block)
{
    const TextBlock near =
        Between(block, 'a', 'z') | (Between(block, 0xE0, 0xFE) ^ Is(block, 0xF7));
    const TextBlock caron = Is(block, 0x9A) | Is(block, 0x9C) | Is(block, 0x9E);
    return block - ((near & 0x20) | (caron & 0x10) | (Is(block, 0xFF) & 0x60));
}

inline TextBlock Lower(TextBlock block)
{
    const TextBlock near =
        Between(block, 'A', 'Z') | (Between(block, 0xC0, 0xDE) ^ Is(block, 0xD7));
    const TextBlock caron = Is(block, 0x8A) | Is(block, 0x8C) | Is(block, 0x8E);
    return block + ((near & 0x20) | (caron & 0x10) | (Is(block, 0x9F) & 0x60));
}

} // namespace wexelxi
