// The telling fields of the records that cross the border.
#include "tools/trace/values.h"
#include "wexelxi.h"

namespace trace {
namespace {

struct RecordRow {
    std::string_view type;
    size_t size;
    void (*add)(Line &line, const void *record);
};

template <size_t Bytes>
std::string_view Text(const char (&field)[Bytes])
{
    const std::string_view text(field, Bytes);
    return text.substr(0, text.find('\0'));
}

#define NUMBERS(type, ...)                                                                   \
    {                                                                                        \
#type, sizeof(type), [](Line &line, const void *at) {                                      \
            const auto &r = *static_cast<const type *>(at);                                        \
            line.Format(__VA_ARGS__);                                                              \
        } \
    }
#define NAMED(type, field, ...)                                                              \
    {                                                                                        \
#type, sizeof(type), [](Line &line, const void *at) {                                      \
            const auto &r = *static_cast<const type *>(at);                                        \
            line.Add(#field "=");                                                                  \
            line.Quote(Text(r.field));                                                             \
            line.Format(", " __VA_ARGS__);                                                         \
        } \
    }

const RecordRow kRows[] = {
    NUMBERS(DCB, "BaudRate=%u, ByteSize=%u, Parity=%u, StopBits=%u", r.BaudRate, r.ByteSize,
            r.Parity, r.StopBits),
    NUMBERS(COMMTIMEOUTS, "VTimeTenths=%u", r.VTimeTenths),
    NUMBERS(COMMPROP, "dwProvSubType=%u", r.dwProvSubType),
    NUMBERS(FILETIME, "0x%08x%08x", r.dwHighDateTime, r.dwLowDateTime),
    NUMBERS(SYSTEMTIME, "%04u-%02u-%02u %02u:%02u:%02u.%03u", r.wYear, r.wMonth, r.wDay, r.wHour,
            r.wMinute, r.wSecond, r.wMilliseconds),
    NUMBERS(TIME_FIELDS, "%04d-%02d-%02d %02d:%02d:%02d.%03d", r.Year, r.Month, r.Day, r.Hour,
            r.Minute, r.Second, r.Milliseconds),
    NAMED(TIME_ZONE_INFORMATION, StandardName, "Bias=%d", r.Bias),
    NAMED(WIN32_FIND_DATA, cFileName, "dwFileAttributes=0x%x, nFileSizeLow=%u", r.dwFileAttributes,
          r.nFileSizeLow),
    NAMED(DEVMODE, dmDeviceName, "dmOrientation=%d, dmPaperSize=%d, dmCopies=%d, dmDriverExtra=%u",
          r.dmOrientation, r.dmPaperSize, r.dmCopies, r.dmDriverExtra),
    NUMBERS(PRINTDLG, "hDevMode=%p, hDevNames=%p", r.hDevMode, r.hDevNames),
    NAMED(LOGFONT, lfFaceName, "lfHeight=%d, lfWeight=%d, lfItalic=%u", r.lfHeight, r.lfWeight,
          r.lfItalic),
    NUMBERS(TEXTMETRIC, "tmHeight=%d, tmAscent=%d, tmAveCharWidth=%d", r.tmHeight, r.tmAscent,
            r.tmAveCharWidth),
    NUMBERS(SIZE, "cx=%d, cy=%d", r.cx, r.cy),
    NAMED(FontInfoRecord, family, "height=%d", r.height),
    NUMBERS(SYSTEM_INFO, "dwProcessorType=%u, dwNumberOfProcessors=%u", r.dwProcessorType,
            r.dwNumberOfProcessors),
};

} // namespace

bool AddRecord(Line &line, std::string_view type, uintptr_t address)
{
    alignas(16) char copy[sizeof(FontInfoRecord)];
    static_assert(sizeof copy >= sizeof(WIN32_FIND_DATA));
    for (const RecordRow &row : kRows) {
        if (row.type != type)
            continue;
        if (ReadMemory(address, copy, row.size) != row.size)
            return false;
        line.Add("{");
        row.add(line, copy);
        line.Add("}");
        return true;
    }
    return false;
}

} // namespace trace
