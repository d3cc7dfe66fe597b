// The calendar and the zone, beside what the platform takes for the like.
#include <benchmark/benchmark.h>
#include <ctime>
#include <random>
#include <vector>

#include "wexelxi.h"

namespace {

// Instants over all the years that both sides know, so that no branch learns one.
std::vector<int64_t> SomeTicks()
{
    std::mt19937_64 random(1);
    std::vector<int64_t> ticks(4096);
    for (int64_t &value : ticks)
        value = static_cast<int64_t>(random() >> 1);
    return ticks;
}

void BM_RtlTimeToTimeFields(benchmark::State &state)
{
    const auto ticks = SomeTicks();
    TIME_FIELDS fields;
    size_t i = 0;
    for (auto _ : state) {
        RtlTimeToTimeFields(&ticks[i++ % ticks.size()], &fields);
        benchmark::DoNotOptimize(fields);
    }
}
BENCHMARK(BM_RtlTimeToTimeFields);

void BM_Platform_gmtime_r(benchmark::State &state)
{
    const auto ticks = SomeTicks();
    tm fields;
    size_t i = 0;
    for (auto _ : state) {
        const time_t seconds = ticks[i++ % ticks.size()] / 10'000'000 - 11'644'473'600;
        benchmark::DoNotOptimize(gmtime_r(&seconds, &fields));
    }
}
BENCHMARK(BM_Platform_gmtime_r);

void BM_GetLocalTime(benchmark::State &state)
{
    SYSTEMTIME time;
    for (auto _ : state) {
        GetLocalTime(&time);
        benchmark::DoNotOptimize(time);
    }
}
BENCHMARK(BM_GetLocalTime);

void BM_Platform_localtime_and_mktime(benchmark::State &state)
{
    for (auto _ : state) {
        const time_t now = time(nullptr);
        tm fields = *localtime(&now);
        benchmark::DoNotOptimize(mktime(&fields));
    }
}
BENCHMARK(BM_Platform_localtime_and_mktime);

} // namespace
