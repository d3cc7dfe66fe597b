// Blocks of text that are the same numbers on both sides: 64 bytes of source at a time.
//
// Each Convert stores one block and is true if all its units are below the limit, a power of two;
// otherwise it stores nothing and is false. PortableBlocks is for every machine. Sse2Blocks
// replaces the narrowing of 32-bit units, for which the portable code takes twice the time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace wexelxi {

constexpr size_t kBlockBytes = 64;

template <typename Unit>
constexpr size_t kBlockUnits = kBlockBytes / sizeof(Unit);

// Two words side by side: what a processor loads, ors and stores in one step.
typedef uint64_t WordPair __attribute__((vector_size(16)));

inline WordPair LoadPair(const void *source, size_t index)
{
    WordPair pair;
    memcpy(&pair, static_cast<const char *>(source) + index * sizeof pair, sizeof pair);
    return pair;
}

inline void StorePair(void *destination, size_t index, WordPair pair)
{
    memcpy(static_cast<char *>(destination) + index * sizeof pair, &pair, sizeof pair);
}

// True if no unit among those that were ored together reaches the limit.
template <uint32_t kLimit, typename Unit>
bool AreBelow(WordPair ored)
{
    constexpr uint64_t kHighBits = static_cast<Unit>(~(kLimit - 1));
    constexpr uint64_t kEachUnit = ~uint64_t{0} / static_cast<Unit>(~Unit{0});
    return ((ored[0] | ored[1]) & (kHighBits * kEachUnit)) == 0;
}

// One word of bytes, or nothing and false where one is not ASCII: between two letters with accents
// there is mostly less than a block.
inline bool CopyAsciiWord(const uint8_t *from, uint8_t *to)
{
    uint64_t word;
    memcpy(&word, from, sizeof word);
    if (word & 0x8080808080808080)
        return false;
    memcpy(to, &word, sizeof word);
    return true;
}

struct PortableBlocks {
    // Bytes may be converted in place: the block is loaded before any of it is stored.
    template <uint32_t kLimit>
    static bool Convert(const uint8_t *from, uint8_t *to)
    {
        const WordPair a = LoadPair(from, 0);
        const WordPair b = LoadPair(from, 1);
        const WordPair c = LoadPair(from, 2);
        const WordPair d = LoadPair(from, 3);
        if (!AreBelow<kLimit, uint8_t>((a | b) | (c | d)))
            return false;
        StorePair(to, 0, a);
        StorePair(to, 1, b);
        StorePair(to, 2, c);
        StorePair(to, 3, d);
        return true;
    }

    template <uint32_t kLimit, typename From, typename To>
    static bool Convert(const From *__restrict from, To *__restrict to)
    {
        if (!AreBelow<kLimit, From>((LoadPair(from, 0) | LoadPair(from, 1)) |
                                    (LoadPair(from, 2) | LoadPair(from, 3))))
            return false;
        for (size_t i = 0; i < kBlockUnits<From>; i++)
            to[i] = static_cast<To>(from[i]);
        return true;
    }
};

#ifdef __SSE2__
struct Sse2Blocks : PortableBlocks {
    using PortableBlocks::Convert;

    // Saturation turns every unit that is too large into a byte with its high bit, or into zero.
    template <uint32_t kLimit>
    static bool Convert(const uint32_t *from, uint8_t *to)
    {
        static_assert(kLimit == 0x80);
        const __m128i bytes = _mm_packus_epi16(PackTwo(from), PackTwo(from + 8));
        if (_mm_movemask_epi8(_mm_cmpgt_epi8(bytes, _mm_setzero_si128())) != 0xFFFF)
            return false;
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), bytes);
        return true;
    }

    // Saturation turns every unit from 7FFF on into 7FFF or into a negative number: adding 1 makes
    // all these negative, and the portable road then finds out which of them fit.
    template <uint32_t kLimit>
    static bool Convert(const uint32_t *from, uint16_t *to)
    {
        static_assert(kLimit == 0x10000);
        const __m128i low = PackTwo(from);
        const __m128i high = PackTwo(from + 8);
        const __m128i one = _mm_set1_epi16(1);
        const __m128i signs = _mm_or_si128(_mm_add_epi16(low, one), _mm_add_epi16(high, one));
        const __m128i negative = _mm_or_si128(signs, _mm_or_si128(low, high));
        if (_mm_movemask_epi8(negative) & 0xAAAA)
            return PortableBlocks::Convert<kLimit>(from, to);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), low);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to + 8), high);
        return true;
    }

private:
    static __m128i PackTwo(const uint32_t *from)
    {
        const auto *pairs = reinterpret_cast<const __m128i *>(from);
        return _mm_packs_epi32(_mm_loadu_si128(pairs), _mm_loadu_si128(pairs + 1));
    }
};
using NativeBlocks = Sse2Blocks;
#else
using NativeBlocks = PortableBlocks;
#endif

} // namespace wexelxi
