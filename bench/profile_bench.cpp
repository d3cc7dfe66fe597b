// Profiles: a cached read beside a bare scan of the same text, and a first start beside one that
// finds its file.
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>
#include <unistd.h>

#include "support/library.h"
#include "wexelxi.h"

namespace {

// Sections of ten keys each in front of the one that is asked for.
std::string TextOf(size_t bytes)
{
    std::string text;
    for (int section = 0; text.size() < bytes; section++) {
        text += "[section" + std::to_string(section) + "]\r\n";
        for (int key = 0; key < 10; key++)
            text += "key" + std::to_string(key) + "=" + std::string(40, 'v') + "\r\n";
        text += "\r\n";
    }
    return text + "[wanted]\r\nkey=value\r\n";
}

// What a scan may not do without: one memchr over the text.
void OneMemchrOverTheText(benchmark::State &state)
{
    const std::string text = TextOf(static_cast<size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(memchr(text.data(), '\x01', text.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(OneMemchrOverTheText)->Arg(8 << 10)->Arg(1 << 20);

// The same, stopping at each line end.
void OneMemchrPerLine(benchmark::State &state)
{
    const std::string text = TextOf(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        const char *end = text.data() + text.size();
        for (const char *line = text.data(); line < end;) {
            const void *next = memchr(line, '\n', static_cast<size_t>(end - line));
            line = next ? static_cast<const char *>(next) + 1 : end;
            benchmark::DoNotOptimize(line);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(OneMemchrPerLine)->Arg(8 << 10)->Arg(1 << 20);

void CachedRead(benchmark::State &state)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    const std::string text = TextOf(static_cast<size_t>(state.range(0)));
    WriteWholeFile(file, text);
    char value[64];
    for (auto _ : state)
        benchmark::DoNotOptimize(
            GetPrivateProfileString("wanted", "key", "", value, sizeof value, file.c_str()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(CachedRead)->Arg(8 << 10)->Arg(1 << 20);

void LoadPreferences(benchmark::State &state, bool first)
{
    StartedLibrary library;
    const std::string file = library.folder.file("wexelxi.ini");
    for (auto _ : state) {
        state.PauseTiming();
        TermIni();
        gFreePref();
        if (first)
            unlink(file.c_str());
        state.ResumeTiming();
        gLoadPref();
    }
}
BENCHMARK_CAPTURE(LoadPreferences, that_stand_in_the_file, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(LoadPreferences, of_a_first_start, true)->Unit(benchmark::kMicrosecond);

void WriteAKey(benchmark::State &state)
{
    StartedLibrary library;
    for (auto _ : state)
        benchmark::DoNotOptimize(WriteProfileString("Setup", "Counter", "12345"));
}
BENCHMARK(WriteAKey);

} // namespace
