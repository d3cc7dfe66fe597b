// The conversions, as pure functions of one text each: they store the converted text with its end
// and tell its length.
//
// Runs of what is the same number on both sides go block by block (locale/unicode_blocks.h); the
// rest, one character at a time. A text is looked ahead for its end, so that a block is only read
// where the text goes on, and nothing behind the end is ever touched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "locale/code_page.h"
#include "locale/unicode_blocks.h"

namespace wexelxi {

constexpr uint32_t kNotAscii = 0x80;
constexpr uint32_t kNotTwoBytes = 0x800;
constexpr uint32_t kNotBasic = 0x10000;
constexpr uint32_t kNotUnicode = 0x110000;
constexpr uint32_t kNotFourBytes = 0x200000;

// Adds the six bits of the next byte, unless the text ends there.
inline const uint8_t *AddBits(const uint8_t *next, uint32_t shift, uint32_t &codePoint)
{
    if (*next == 0)
        return next;
    codePoint |= (*next & 0x3Fu) << shift;
    return next + 1;
}

inline const uint8_t *NextUtf8Char(const uint8_t *next, uint8_t first, uint32_t &codePoint)
{
    if (first < 0x80 || first >= 0xF8) {
        codePoint = first;
    } else if (first < 0xE0) {
        codePoint = (first & 0x1Fu) << 6;
        next = AddBits(next, 0, codePoint);
    } else if (first < 0xF0) {
        codePoint = (first & 0x0Fu) << 12;
        next = AddBits(next, 6, codePoint);
        next = AddBits(next, 0, codePoint);
    } else {
        codePoint = (first & 0x07u) << 18;
        next = AddBits(next, 12, codePoint);
        next = AddBits(next, 6, codePoint);
        next = AddBits(next, 0, codePoint);
    }
    return next;
}

inline uint8_t CodePageByte(uint32_t codePoint)
{
    if (codePoint < gLowCodeBytes.size())
        return gLowCodeBytes[codePoint];
    for (size_t i = 0; i < gHighCodePoints.size(); i++) {
        if (gHighCodePoints[i] == codePoint)
            return gHighCodeBytes[i];
    }
    return kReplacement;
}

// The last byte of a sequence and those before it, six bits each.
inline uint8_t TrailByte(uint32_t codePoint, uint32_t shift)
{
    return static_cast<uint8_t>(0x80 | ((codePoint >> shift) & 0x3F));
}

// Of a code point that is not ASCII.
inline uint8_t *StoreUtf8(uint32_t codePoint, uint8_t *to)
{
    if (codePoint < kNotTwoBytes) {
        *to++ = static_cast<uint8_t>(0xC0 | (codePoint >> 6));
        *to++ = TrailByte(codePoint, 0);
    } else if (codePoint < kNotBasic) {
        *to++ = static_cast<uint8_t>(0xE0 | (codePoint >> 12));
        *to++ = TrailByte(codePoint, 6);
        *to++ = TrailByte(codePoint, 0);
    } else if (codePoint < kNotFourBytes) {
        *to++ = static_cast<uint8_t>(0xF0 | (codePoint >> 18));
        *to++ = TrailByte(codePoint, 12);
        *to++ = TrailByte(codePoint, 6);
        *to++ = TrailByte(codePoint, 0);
    } else {
        *to++ = kReplacement;
    }
    return to;
}

// The bytes of a word of gCodePageToUtf8, which are two or three.
inline uint8_t *StoreWord(uint32_t word, uint8_t *to)
{
    to[0] = static_cast<uint8_t>(word);
    to[1] = static_cast<uint8_t>(word >> 8);
    if (word < 0x10000)
        return to + 2;
    to[2] = static_cast<uint8_t>(word >> 16);
    return to + 3;
}

inline uint16_t *StoreUtf16(uint32_t codePoint, uint16_t *to)
{
    if (codePoint < kNotBasic) {
        *to++ = static_cast<uint16_t>(codePoint);
    } else if (codePoint < kNotUnicode) {
        *to++ = static_cast<uint16_t>(0xD800 | ((codePoint - 0x10000) >> 10));
        *to++ = static_cast<uint16_t>(0xDC00 | (codePoint & 0x3FF));
    } else {
        *to++ = kReplacement;
    }
    return to;
}

// How many units stand before the end of a text; at most so many that they stay in the cache.
inline size_t UnitsAhead(const uint8_t *text)
{
    return strnlen(reinterpret_cast<const char *>(text), 4096);
}

inline size_t UnitsAhead(const uint32_t *text)
{
    static_assert(sizeof(wchar_t) == sizeof(uint32_t));
    return wcsnlen(reinterpret_cast<const wchar_t *>(text), 1024);
}

// Whether bytes can be stored at a place without one of the source's being lost: none of them lies
// there, or the place is its own.
inline bool IsClearOf(const uint8_t *to, const uint8_t *from, size_t bytes)
{
    const auto behind = reinterpret_cast<uintptr_t>(from) - reinterpret_cast<uintptr_t>(to);
    return behind == 0 || behind >= bytes;
}

// Copies units below the limit from the start of a text; tells how many.
template <typename Blocks, uint32_t kLimit, typename From, typename To>
size_t CopyRun(const From *from, size_t count, To *to)
{
    size_t i = 0;
    while (count - i >= kBlockUnits<From> && Blocks::template Convert<kLimit>(from + i, to + i))
        i += kBlockUnits<From>;
    if constexpr (sizeof(From) == 1 && sizeof(To) == 1) {
        // The word is stored whole, so its place must not hold source that is still to be read, and
        // the text that follows must fill it: a byte comes from four at the most.
        constexpr size_t kBytes = sizeof(uint64_t);
        while (count - i >= 4 * kBytes && IsClearOf(to + i, from + i, kBytes)) {
            const size_t ascii = CopyAsciiWord(from + i, to + i);
            i += ascii;
            if (ascii < kBytes)
                return i;
        }
    }
    for (; i < count && from[i] < kLimit; i++)
        to[i] = static_cast<To>(from[i]);
    return i;
}

// Units below the limit are copied. ConvertOne takes every other: it moves the source past one
// character and the destination past what it has stored.
template <typename Blocks, uint32_t kLimit, typename From, typename To, typename ConvertOne>
size_t ConvertText(const From *from, To *destination, ConvertOne convertOne)
{
    To *to = destination;
    while (*from) {
        const From *ahead = from + UnitsAhead(from);
        while (from < ahead) {
            const size_t run = CopyRun<Blocks, kLimit>(from, static_cast<size_t>(ahead - from), to);
            from += run;
            to += run;
            if (from < ahead)
                convertOne(from, to);
        }
    }
    *to = 0;
    return static_cast<size_t>(to - destination);
}

template <typename Blocks = NativeBlocks>
size_t Utf8ToCodePage(const uint8_t *text, uint8_t *destination)
{
    return ConvertText<Blocks, kNotAscii>(text, destination,
                                          [](const uint8_t *&from, uint8_t *&to) {
                                              uint32_t codePoint;
                                              from = NextUtf8Char(from + 1, *from, codePoint);
                                              *to++ = CodePageByte(codePoint);
                                          });
}

template <typename Blocks = NativeBlocks>
size_t Utf8ToWideChar(const uint8_t *text, uint32_t *destination)
{
    return ConvertText<Blocks, kNotAscii>(text, destination,
                                          [](const uint8_t *&from, uint32_t *&to) {
                                              uint32_t codePoint;
                                              from = NextUtf8Char(from + 1, *from, codePoint);
                                              *to++ = codePoint;
                                          });
}

template <typename Blocks = NativeBlocks>
size_t CodePageToUtf8(const uint8_t *text, uint8_t *destination)
{
    return ConvertText<Blocks, kNotAscii>(text, destination,
                                          [](const uint8_t *&from, uint8_t *&to) {
                                              do
                                                  to = StoreWord(gCodePageToUtf8[*from++], to);
                                              while (*from >= kNotAscii);
                                          });
}

template <typename Blocks = NativeBlocks>
size_t WideCharToUtf8(const uint32_t *text, uint8_t *destination)
{
    return ConvertText<Blocks, kNotAscii>(
        text, destination,
        [](const uint32_t *&from, uint8_t *&to) { to = StoreUtf8(*from++, to); });
}

template <typename Blocks = NativeBlocks>
size_t WideCharToUtf16(const uint32_t *text, uint16_t *destination)
{
    return ConvertText<Blocks, kNotBasic>(
        text, destination,
        [](const uint32_t *&from, uint16_t *&to) { to = StoreUtf16(*from++, to); });
}

} // namespace wexelxi
