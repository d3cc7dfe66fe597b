// The lstr family, number text and the OEM pair, on bytes. Each holds the lock for its length.
#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale.h>
#include <strings.h>

#include "core/lock.h"
#include "locale/text_blocks.h"
#include "wexelxi/text.h"

using namespace wexelxi;

namespace {

// Of ASCII letters alone, whatever locale the host has set.
locale_t CaseOfAscii()
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
    return c;
}

// Texts that lie close together may overlap, as when a host closes a gap with a copy. Farther apart
// a copy that goes forward is safe as it is.
void CopyText(char *dst, const char *src)
{
    constexpr ptrdiff_t kClose = 4096;
    if (std::abs(dst - src) < kClose)
        memmove(dst, src, strlen(src) + 1);
    else
        strcpy(dst, src);
}

// Whether the arithmetic is what the table says, which a host may have written to.
template <auto Fold>
bool IsTableOf(const uint8_t (&table)[256])
{
    const TextBlock first = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    TextBlock differences = {};
#pragma GCC unroll 16 // into a comparison with constants
    for (size_t i = 0; i < sizeof table; i += sizeof first)
        differences |= Fold(first | static_cast<int8_t>(i)) ^ LoadBlock(table + i);
    return IsZero(differences);
}

template <auto Fold>
void Map(char *buffer, size_t count, const uint8_t (&table)[256])
{
    constexpr size_t kWorthTheLook = 64;
    size_t i = 0;
    if (count >= kWorthTheLook && IsTableOf<Fold>(table)) {
        for (; count - i >= sizeof(TextBlock); i += sizeof(TextBlock)) {
            const TextBlock folded = Fold(LoadBlock(buffer + i));
            memcpy(buffer + i, &folded, sizeof folded);
        }
    }
    for (; i < count; i++)
        buffer[i] = static_cast<char>(table[static_cast<uint8_t>(buffer[i])]);
}

} // namespace

char *itoa(int32_t value, char *buffer, int32_t radix)
{
    BriefLockScope lock;
    char *digits = buffer;
    auto rest = static_cast<uint32_t>(value);
    if (value < 0 && radix == 10) {
        *digits++ = '-';
        rest = 0u - rest;
    }
    if (radix == 10) {
        *std::to_chars(digits, digits + 10, rest).ptr = '\0';
        return buffer;
    }
    char *end = digits;
    if (radix >= 2) {
        const auto base = static_cast<uint32_t>(radix);
        do {
            const uint32_t digit = rest % base;
            *end++ = static_cast<char>(digit + (digit < 10 ? '0' : 'a' - 10));
            rest /= base;
        } while (rest != 0);
    }
    *end = '\0';
    std::reverse(digits, end);
    return buffer;
}

char *lstrcat(char *dst, const char *src)
{
    BriefLockScope lock;
    CopyText(dst + strlen(dst), src);
    return dst;
}

char *lstrcpy(char *dst, const char *src)
{
    BriefLockScope lock;
    CopyText(dst, src);
    return dst;
}

char *lstrcpyn(char *dst, const char *src, int32_t count)
{
    BriefLockScope lock;
    if (count > 0) {
        const size_t length = strnlen(src, static_cast<size_t>(count) - 1);
        memmove(dst, src, length);
        dst[length] = '\0';
    }
    return dst;
}

int32_t lstrcmpi(const char *first, const char *second)
{
    return lstrncmpi(first, second, 0);
}

int32_t lstrncmpi(const char *first, const char *second, uint32_t count)
{
    BriefLockScope lock;
    // The platform gives the difference of the folded bytes.
    return count == 0 ? strcasecmp_l(first, second, CaseOfAscii())
                      : strncasecmp_l(first, second, count, CaseOfAscii());
}

int32_t lstrcmp(const char *first, const char *second)
{
    BriefLockScope lock;
    const int order = strcmp(first, second);
    return order < 0 ? 1 : order > 0 ? -1 : 0;
}

uint32_t lstrlen(const char *string)
{
    BriefLockScope lock;
    return static_cast<uint32_t>(strlen(string));
}

LPSTR AnsiUpper(LPSTR value)
{
    BriefLockScope lock;
    const auto number = reinterpret_cast<uintptr_t>(value);
    if (number <= 0xFFFF) {
        const auto upper = static_cast<int8_t>(gUPPERBUFF[number & 0xFF]);
        return reinterpret_cast<LPSTR>(static_cast<intptr_t>(upper));
    }
    Map<Upper>(value, strlen(value), gUPPERBUFF);
    return value;
}

uint32_t AnsiUpperBuff(char *buffer, uint32_t count)
{
    BriefLockScope lock;
    Map<Upper>(buffer, count, gUPPERBUFF);
    return count;
}

uint32_t AnsiLowerBuff(char *buffer, uint32_t count)
{
    BriefLockScope lock;
    Map<Lower>(buffer, count, gLOWERBUFF);
    return count;
}

BOOL IsCharAlpha(uint32_t character)
{
    const uint32_t upper = character & 0xDF;
    return upper >= 'A' && upper <= 'Z';
}

BOOL OemToAnsi(const char *src, char *dst)
{
    BriefLockScope lock;
    memmove(dst, src, strlen(src));
    return TRUE;
}

BOOL OemToAnsiBuff(const char *src, char *dst, uint32_t count)
{
    BriefLockScope lock;
    memmove(dst, src, strnlen(src, count));
    return TRUE;
}

BOOL AnsiToOem(const char *src, char *dst)
{
    return OemToAnsi(src, dst);
}

BOOL AnsiToOemBuff(const char *src, char *dst, uint32_t count)
{
    return OemToAnsiBuff(src, dst, count);
}

int32_t wsprintf(char *dst, const char *format, ...)
{
    LockScope lock;
    va_list arguments;
    va_start(arguments, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int written = vsprintf(dst, format, arguments);
#pragma GCC diagnostic pop
    va_end(arguments);
    return written;
}
