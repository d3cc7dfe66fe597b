// Blocks of text that are the same numbers on both sides: 64 bytes of source at a time.
//
// Each Convert stores one block and is true if all its units are below the limit, a power of two;
// otherwise it stores nothing and is false. PortableBlocks is for every machine. Sse2Blocks
// replaces the narrowing of 32-bit units, for which the portable code takes twice the time.
#pragma once

#include <bit>
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

// Copies eight bytes and tells how many of them, from the first on, are ASCII: those stand.
inline size_t CopyAsciiWord(const uint8_t *from, uint8_t *to)
{
    uint64_t word;
    memcpy(&word, from, sizeof word);
    memcpy(to, &word, sizeof word);
    const uint64_t high = word & 0x8080808080808080;
    return high == 0 ? sizeof word : static_cast<size_t>(std::countr_zero(high)) / 8;
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

    // Below 4000 saturation changes nothing and the ored units show it; whether others fit is for
    // the portable code to find out.
    template <uint32_t kLimit>
    static bool Convert(const uint32_t *from, uint16_t *to)
    {
        static_assert(kLimit == 0x10000);
        const __m128i low = PackTwo(from);
        const __m128i high = PackTwo(from + 8);
        const __m128i top = _mm_and_si128(_mm_or_si128(low, high), _mm_set1_epi16(~0x3FFF));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(top, _mm_setzero_si128())) != 0xFFFF)
            return PortableBlocks::Convert<kLimit>(from, to);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), low);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to + 8), high);
        return true;
    }

    template <uint32_t kLimit>
    static bool Convert(const uint8_t *from, uint32_t *to)
    {
        static_assert(kLimit == 0x80);
        const __m128i a = Load(from);
        const __m128i b = Load(from + 16);
        const __m128i c = Load(from + 32);
        const __m128i d = Load(from + 48);
        if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) != 0)
            return false;
        StoreWidened(a, to);
        StoreWidened(b, to + 16);
        StoreWidened(c, to + 32);
        StoreWidened(d, to + 48);
        return true;
    }

private:
    static __m128i Load(const void *from)
    {
        return _mm_loadu_si128(static_cast<const __m128i *>(from));
    }

    static __m128i PackTwo(const uint32_t *from)
    {
        return _mm_packs_epi32(Load(from), Load(from + 4));
    }

    static void StoreWidened(__m128i bytes, uint32_t *to)
    {
        const __m128i zero = _mm_setzero_si128();
        auto *units = reinterpret_cast<__m128i *>(to);
        const __m128i low = _mm_unpacklo_epi8(bytes, zero);
        const __m128i high = _mm_unpackhi_epi8(bytes, zero);
        _mm_storeu_si128(units, _mm_unpacklo_epi16(low, zero));
        _mm_storeu_si128(units + 1, _mm_unpackhi_epi16(low, zero));
        _mm_storeu_si128(units + 2, _mm_unpacklo_epi16(high, zero));
        _mm_storeu_si128(units + 3, _mm_unpackhi_epi16(high, zero));
    }
};
using NativeBlocks = Sse2Blocks;
#else
using NativeBlocks = PortableBlocks;
#endif

} // namespace wexelxi
