// The exported conversions: null sources and memory for the result, around locale/unicode.h.
#include "wexelxi/unicode.h"

#include <cstdlib>
#include <cstring>

#include "locale/unicode.h"

using namespace wexelxi;

namespace {

constexpr uint32_t kEmptyWide = 0;

const uint8_t *Bytes(const char *text)
{
    return reinterpret_cast<const uint8_t *>(text ? text : "");
}

uint8_t *Bytes(char *text)
{
    return reinterpret_cast<uint8_t *>(text);
}

} // namespace

const char *gGetNextUtf8Char(const char *next, uint32_t first, uint32_t *codePoint)
{
    return reinterpret_cast<const char *>(
        NextUtf8Char(Bytes(next), static_cast<uint8_t>(first), *codePoint));
}

char *ConvertUtf8ToISO8859(const char *source)
{
    if (!source)
        return nullptr;
    auto *destination = static_cast<char *>(malloc(strlen(source) + 1));
    if (destination)
        ConvertUtf8ToISO8859WithDest(source, destination);
    return destination;
}

uint32_t ConvertUtf8ToISO8859WithDest(const char *source, char *destination)
{
    return static_cast<uint32_t>(Utf8ToCodePage(Bytes(source), Bytes(destination)));
}

uint32_t ConvertUtf8ToWideCharWithDest(const char *source, uint32_t *destination)
{
    return source ? static_cast<uint32_t>(Utf8ToWideChar(Bytes(source), destination)) : 0;
}

char *ConvertISO8859ToUtf8(const char *source)
{
    if (!source)
        return nullptr;
    auto *destination = static_cast<char *>(malloc(3 * strlen(source) + 3));
    if (destination)
        ConvertISO8859ToUtf8WithDest(source, destination);
    return destination;
}

uint32_t ConvertISO8859ToUtf8WithDest(const char *source, char *destination)
{
    return static_cast<uint32_t>(CodePageToUtf8(Bytes(source), Bytes(destination)));
}

uint32_t ConvertWideCharToUtf8WithDest(const uint32_t *source, char *destination)
{
    return static_cast<uint32_t>(WideCharToUtf8(source ? source : &kEmptyWide, Bytes(destination)));
}

uint32_t ConvertWideCharToUtf16WithDest(const uint32_t *source, uint16_t *destination)
{
    return static_cast<uint32_t>(WideCharToUtf16(source ? source : &kEmptyWide, destination));
}
