// The lock and the string functions, each beside the platform calls that it stands on.
#include <benchmark/benchmark.h>
#include <cstring>
#include <pthread.h>
#include <string>

#include "support/library.h"
#include "wexelxi.h"

namespace {

// What a nested round may not do without: two reads and two writes of a thread's slot.
void TwoReadsAndTwoWritesOfAKey(benchmark::State &state)
{
    pthread_key_t key;
    pthread_key_create(&key, nullptr);
    for (auto _ : state) {
        for (int i = 0; i < 2; i++) {
            void *value = pthread_getspecific(key);
            benchmark::DoNotOptimize(value);
            pthread_setspecific(key, static_cast<char *>(value) + 1);
        }
    }
    pthread_key_delete(key);
}
BENCHMARK(TwoReadsAndTwoWritesOfAKey);

void NestedLockRound(benchmark::State &state)
{
    StartedLibrary library;
    gEnterWexelxiCriticalSection();
    for (auto _ : state) {
        gEnterWexelxiCriticalSection();
        gLeaveWexelxiCriticalSection();
    }
    gLeaveWexelxiCriticalSection();
}
BENCHMARK(NestedLockRound);

constexpr size_t kTextBytes = 64 * 1024;

template <typename Length>
void MeasureLength(benchmark::State &state, Length length)
{
    StartedLibrary library;
    const std::string text(kTextBytes, 'x');
    for (auto _ : state)
        benchmark::DoNotOptimize(length(text.c_str()));
}
BENCHMARK_CAPTURE(MeasureLength, strlen, [](const char *text) { return strlen(text); });
BENCHMARK_CAPTURE(MeasureLength, lstrlen, [](const char *text) { return lstrlen(text); });

template <typename Copy>
void MeasureCopy(benchmark::State &state, Copy copy)
{
    StartedLibrary library;
    const std::string text(kTextBytes, 'x');
    std::string target(kTextBytes, 'y');
    for (auto _ : state) {
        copy(target.data(), text.c_str());
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(MeasureCopy, strcpy, [](char *to, const char *from) { strcpy(to, from); });
BENCHMARK_CAPTURE(MeasureCopy, lstrcpy, [](char *to, const char *from) { lstrcpy(to, from); });

} // namespace
