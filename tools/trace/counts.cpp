#include "tools/trace/counts.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "tools/trace/line.h"
#include "tools/trace/settings.h"

namespace trace {
namespace {

struct Count {
    std::atomic<uint64_t> calls;
    std::atomic<uint64_t> nanoseconds; // with the calls made inside
};
Count gCounts[kCallCount];

} // namespace

void CountCall(CallIndex call, double seconds)
{
    gCounts[call].calls++;
    gCounts[call].nanoseconds += static_cast<uint64_t>(seconds * 1e9);
}

void WriteCounts()
{
    int order[kCallCount];
    for (int i = 0; i < kCallCount; i++)
        order[i] = i;
    std::stable_sort(std::begin(order), std::end(order), [](int left, int right) {
        return gCounts[left].nanoseconds > gCounts[right].nanoseconds;
    });
    if (!gSettings.json)
        WriteLine("     seconds      calls     us/call function\n");
    for (const int i : order) {
        const auto calls = static_cast<double>(gCounts[i].calls);
        const double seconds = static_cast<double>(gCounts[i].nanoseconds) * 1e-9;
        if (calls == 0)
            continue;
        Line line;
        line.Format(gSettings.json
                        ? "{\"seconds\":%.9f,\"calls\":%.0f,\"each\":%.9f,\"name\":\"%s\"}\n"
                        : "%12.6f %10.0f %11.3f %s\n",
                    seconds, calls, seconds / calls * (gSettings.json ? 1 : 1e6),
                    kSignatures[i].name.data());
        WriteLine(line.text());
    }
}

} // namespace trace
