// The conversions beside the platform's iconv, a vector copy loop and a loop over single units;
// date and time text beside GLib's.
#include <benchmark/benchmark.h>
#include <cstring>
#include <glib.h>
#include <iconv.h>
#include <string>
#include <vector>

#include "wexelxi.h"

namespace {

// ASCII, or French with its accents, quotes and dashes, in the form that a conversion reads.
enum Text { kAscii, kWestern };

std::string Utf8(Text text, size_t bytes)
{
    const char *sentence =
        text == kAscii
            ? "The printer on the second floor is out of paper again, 14 pages are left. "
            : "L\u2019\u00e9t\u00e9 o\u00f9 l\u2019imprimante \u00e9tait \u00e0 c\u00f4t\u00e9 \u2014 14 pages, 3 \u20ac, pas de quoi "
              "se plaindre, disait le gar\u00e7on en repartant vers la ville. ";
    const size_t length = strlen(sentence);
    std::string all;
    while (all.size() + length <= bytes)
        all += sentence;
    all.append(bytes - all.size(), '.');
    return all;
}

const char *Raw(const std::string &text)
{
    return text.c_str();
}

std::vector<char> Iconv(const char *to, const char *from, const void *source, size_t bytes)
{
    std::vector<char> result(bytes * 4 + 4);
    iconv_t handle = iconv_open(to, from);
    char *in = const_cast<char *>(static_cast<const char *>(source));
    char *out = result.data();
    size_t left = bytes;
    size_t room = result.size() - 4;
    iconv(handle, &in, &left, &out, &room);
    iconv_close(handle);
    result.resize(static_cast<size_t>(out - result.data()));
    result.resize(result.size() + 4); // the end, at any width
    return result;
}

struct Conversion {
    const char *name;
    const char *from;
    const char *to;
    uint32_t (*convert)(const void *source, void *destination);
    size_t fromWidth;
    size_t toWidth;
};

const Conversion kConversions[] = {
    {"Utf8ToCodePage", "UTF-8", "CP1252",
     [](const void *source, void *destination) {
         return ConvertUtf8ToISO8859WithDest(static_cast<const char *>(source),
                                             static_cast<char *>(destination));
     },
     1, 1},
    {"Utf8ToWide", "UTF-8", "UTF-32LE",
     [](const void *source, void *destination) {
         return ConvertUtf8ToWideCharWithDest(static_cast<const char *>(source),
                                              static_cast<uint32_t *>(destination));
     },
     1, 4},
    {"CodePageToUtf8", "CP1252", "UTF-8",
     [](const void *source, void *destination) {
         return ConvertISO8859ToUtf8WithDest(static_cast<const char *>(source),
                                             static_cast<char *>(destination));
     },
     1, 1},
    {"WideToUtf8", "UTF-32LE", "UTF-8",
     [](const void *source, void *destination) {
         return ConvertWideCharToUtf8WithDest(static_cast<const uint32_t *>(source),
                                              static_cast<char *>(destination));
     },
     4, 1},
    {"WideToUtf16", "UTF-32LE", "UTF-16LE",
     [](const void *source, void *destination) {
         return ConvertWideCharToUtf16WithDest(static_cast<const uint32_t *>(source),
                                               static_cast<uint16_t *>(destination));
     },
     4, 2},
};

// Copies units in one loop that the compiler makes a vector loop of, up to a length that it knows.
template <typename To, typename From>
__attribute__((noinline, optimize("O3", "no-tree-loop-distribute-patterns"))) void
CopyLoop(const From *__restrict source, To *__restrict destination, size_t count)
{
    for (size_t i = 0; i < count; i++)
        destination[i] = static_cast<To>(source[i]);
}

void CopyUnits(const Conversion &row, const void *source, void *destination, size_t count)
{
    const auto *bytes = static_cast<const uint8_t *>(source);
    const auto *units = static_cast<const uint32_t *>(source);
    if (row.fromWidth == 1 && row.toWidth == 1)
        CopyLoop(bytes, static_cast<uint8_t *>(destination), count);
    else if (row.fromWidth == 1)
        CopyLoop(bytes, static_cast<uint32_t *>(destination), count);
    else if (row.toWidth == 1)
        CopyLoop(units, static_cast<uint8_t *>(destination), count);
    else
        CopyLoop(units, static_cast<uint16_t *>(destination), count);
}

// One unit at a time up to the end, as the plainest conversion of ASCII goes.
template <typename To, typename From>
__attribute__((noinline, optimize("no-tree-vectorize"))) size_t UnitLoop(const From *source,
                                                                         To *destination)
{
    size_t i = 0;
    for (; source[i]; i++)
        destination[i] = source[i] < 0x80 ? static_cast<To>(source[i]) : To{0xBF};
    destination[i] = 0;
    return i;
}

size_t CopyUnitByUnit(const Conversion &row, const void *source, void *destination)
{
    const auto *bytes = static_cast<const uint8_t *>(source);
    const auto *units = static_cast<const uint32_t *>(source);
    if (row.fromWidth == 1 && row.toWidth == 1)
        return UnitLoop(bytes, static_cast<uint8_t *>(destination));
    if (row.fromWidth == 1)
        return UnitLoop(bytes, static_cast<uint32_t *>(destination));
    if (row.toWidth == 1)
        return UnitLoop(units, static_cast<uint8_t *>(destination));
    return UnitLoop(units, static_cast<uint16_t *>(destination));
}

struct Input {
    Input(const Conversion &row, Text text, size_t bytes)
    {
        const std::string utf8 = Utf8(text, bytes / row.fromWidth);
        source = Iconv(row.from, "UTF-8", Raw(utf8), utf8.size());
        destination.resize(source.size() * 4);
        sourceBytes = source.size() - 4;
    }
    std::vector<char> source, destination;
    size_t sourceBytes;
};

void Library(benchmark::State &state, const Conversion &row, Text text, size_t bytes)
{
    Input input(row, text, bytes);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(row.convert(input.source.data(), input.destination.data()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.sourceBytes));
}

void Platform(benchmark::State &state, const Conversion &row, Text text, size_t bytes)
{
    Input input(row, text, bytes);
    iconv_t handle = iconv_open(row.to, row.from);
    for ([[maybe_unused]] auto _ : state) {
        char *in = input.source.data();
        char *out = input.destination.data();
        size_t left = input.sourceBytes;
        size_t room = input.destination.size();
        if (iconv(handle, &in, &left, &out, &room) == static_cast<size_t>(-1))
            state.SkipWithError("iconv");
        benchmark::ClobberMemory();
    }
    iconv_close(handle);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.sourceBytes));
}

void VectorCopy(benchmark::State &state, const Conversion &row, size_t bytes)
{
    Input input(row, kAscii, bytes);
    for ([[maybe_unused]] auto _ : state) {
        CopyUnits(row, input.source.data(), input.destination.data(),
                  input.sourceBytes / row.fromWidth);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.sourceBytes));
}

void UnitByUnit(benchmark::State &state, const Conversion &row, size_t bytes)
{
    Input input(row, kAscii, bytes);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            CopyUnitByUnit(row, input.source.data(), input.destination.data()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.sourceBytes));
}

const SYSTEMTIME kTime = {2005, 3, 1, 7, 13, 5, 9, 0};

void LibraryDate(benchmark::State &state)
{
    char text[64];
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(GetDateFormat(1033, DATE_LONGDATE, &kTime, nullptr, text, 64));
}
BENCHMARK(LibraryDate);

void LibraryTime(benchmark::State &state)
{
    char text[64];
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(GetTimeFormat(1033, 0, &kTime, nullptr, text, 64));
}
BENCHMARK(LibraryTime);

void GlibFormat(benchmark::State &state, const char *format)
{
    GDateTime *time = g_date_time_new_utc(2005, 3, 7, 13, 5, 9);
    for ([[maybe_unused]] auto _ : state)
        g_free(g_date_time_format(time, format));
    g_date_time_unref(time);
}
BENCHMARK_CAPTURE(GlibFormat, date, "%A, %B %d, %Y");
BENCHMARK_CAPTURE(GlibFormat, time, "%l:%M:%S %p");

void LibraryLocaleInfo(benchmark::State &state)
{
    char text[64];
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(GetLocaleInfo(1053, LOCALE_SISO3166CTRYNAME, text, 64));
}
BENCHMARK(LibraryLocaleInfo);

const bool kRegistered = [] {
    constexpr size_t kMiB = 1 << 20;
    for (const Conversion &row : kConversions) {
        const auto name = [&](const char *what) { return std::string(row.name) + what; };
        const auto add = [](const std::string &label, auto run) {
            benchmark::RegisterBenchmark(label.c_str(), run);
        };
        add(name("/ascii_1MiB/library"), [&](auto &s) { Library(s, row, kAscii, kMiB); });
        add(name("/ascii_1MiB/vector_copy"), [&](auto &s) { VectorCopy(s, row, kMiB); });
        add(name("/ascii_1MiB/iconv"), [&](auto &s) { Platform(s, row, kAscii, kMiB); });
        add(name("/western_1MiB/library"), [&](auto &s) { Library(s, row, kWestern, kMiB); });
        add(name("/western_1MiB/iconv"), [&](auto &s) { Platform(s, row, kWestern, kMiB); });
        add(name("/ascii_64/library"), [&](auto &s) { Library(s, row, kAscii, 64); });
        add(name("/ascii_64/unit_loop"), [&](auto &s) { UnitByUnit(s, row, 64); });
    }
    return true;
}();

} // namespace
