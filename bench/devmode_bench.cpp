// Finding and merging options of stored records, beside a walk that trusts its record, and
// questions about printers that are known.
#include <benchmark/benchmark.h>
#include <strings.h>

#include "support/record.h"
#include "wexelxi.h"

namespace {

// A large printer: as many options as asked for, each with eight values.
std::vector<TestOption> ManyOptions(int count)
{
    std::vector<TestOption> options;
    for (int i = 0; i < count; i++) {
        TestOption option = {"Option" + std::to_string(i), "An option for people", 1, {}};
        for (int value = 0; value < 8; value++)
            option.values.push_back({"Value" + std::to_string(value), "A value", value == i % 8});
        options.push_back(option);
    }
    return options;
}

void BM_FindDevModeOption_last(benchmark::State &state)
{
    const TestRecord record(ManyOptions(100));
    for (auto _ : state)
        benchmark::DoNotOptimize(FindDevModeOption(record.get(), "option99"));
}
BENCHMARK(BM_FindDevModeOption_last);

void BM_TrustingWalk_last(benchmark::State &state)
{
    const TestRecord record(ManyOptions(100));
    for (auto _ : state) {
        auto *option = reinterpret_cast<DEVMODEOPTION *>(record.data() + record->dmSize);
        while (strcasecmp(reinterpret_cast<char *>(option + 1), "option99") != 0)
            option = reinterpret_cast<DEVMODEOPTION *>(reinterpret_cast<char *>(option) +
                                                       option->length);
        benchmark::DoNotOptimize(option);
    }
}
BENCHMARK(BM_TrustingWalk_last);

// A whole merge of a stored record between two printers that have been asked about.
void BM_CopyDevModeSettings(benchmark::State &state)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    const TestRecord source(ManyOptions(static_cast<int>(state.range(0))), 516, "one");
    const TestRecord target(ManyOptions(static_cast<int>(state.range(0))), 516, "two");
    HGLOBAL from = MakeDevModeHan(source.get());
    HGLOBAL to = MakeDevModeHan(target.get());
    for (auto _ : state)
        CopyDevModeSettings(from, to);
    GlobalFree(from);
    GlobalFree(to);
}
BENCHMARK(BM_CopyDevModeSettings)->Arg(0)->Arg(10)->Arg(100);

// A question about a printer behind so many others that were asked about later.
void BM_DeviceCapabilities_known(benchmark::State &state)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    DeviceCapabilities("known", nullptr, DC_PAPERS, nullptr, nullptr);
    for (int i = 0; i < state.range(0); i++)
        DeviceCapabilities(("other" + std::to_string(i)).c_str(), nullptr, DC_BINS, nullptr,
                           nullptr);
    for (auto _ : state)
        benchmark::DoNotOptimize(DeviceCapabilities("known", nullptr, DC_PAPERS, nullptr, nullptr));
    TermCUPS();
}
BENCHMARK(BM_DeviceCapabilities_known)->Arg(0)->Arg(500);

void BM_DocumentProperties_copy(benchmark::State &state)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    const TestRecord out({}, 516);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            DocumentProperties(nullptr, nullptr, "two", out.get(), nullptr, DM_COPY));
}
BENCHMARK(BM_DocumentProperties_copy);

// What a stored record costs to take up again in any case: the copies.
void BM_DocumentProperties_modify_and_copy(benchmark::State &state)
{
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    const TestRecord source({}, 516, "one");
    const TestRecord out({}, 516);
    for (auto _ : state)
        benchmark::DoNotOptimize(DocumentProperties(nullptr, nullptr, "two", out.get(),
                                                    source.get(), DM_MODIFY | DM_COPY));
}
BENCHMARK(BM_DocumentProperties_modify_and_copy);

} // namespace
