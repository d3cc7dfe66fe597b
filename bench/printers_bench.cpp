// Questions about printers on a scheduler of the benchmark's own: the first one, beside the three
// CUPS calls that it cannot do without, and those that follow.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <unistd.h>

#include "print/ppd.h"
#include "support/library.h"
#include "support/private_cups.h"
#include "wexelxi.h"

namespace {

constexpr char kPPD[] = "/usr/share/ppd/cupsfilters/Ricoh-PDF_Printer-PDF.ppd";

// One scheduler with a real PPD for all the benchmarks; libcups remembers where it was.
struct Setting {
    StartedLibrary library;
    PrivateCups cups;
    const bool ready = cups.running() && cups.AddPrinter("printer", kPPD);
};

bool Ready(benchmark::State &state)
{
    static Setting setting;
    if (!setting.ready)
        state.SkipWithError("no scheduler, or no package cups-filters");
    return setting.ready;
}

void ThreeCupsCallsAlone(benchmark::State &state)
{
    if (!Ready(state))
        return;
    for (auto _ : state) {
        const std::string path = cupsGetPPD("printer");
        FILE *stream = fopen(path.c_str(), "r");
        ppd_file_t *ppd = ppdOpen(stream);
        cups_dest_t *list = nullptr;
        const int count = cupsGetDests(&list);
        state.PauseTiming(); // the end, as TermCUPS below
        cupsFreeDests(count, list);
        ppdClose(ppd);
        fclose(stream); // one thread: nothing else has taken the number that ppdOpen has closed
        unlink(path.c_str());
        state.ResumeTiming();
    }
}
BENCHMARK(ThreeCupsCallsAlone)->UseRealTime()->Unit(benchmark::kMillisecond);

void FirstQuestion(benchmark::State &state)
{
    if (!Ready(state))
        return;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            DeviceCapabilities("printer", nullptr, DC_PAPERS, nullptr, nullptr));
        state.PauseTiming();
        TermCUPS();
        state.ResumeTiming();
    }
}
BENCHMARK(FirstQuestion)->UseRealTime()->Unit(benchmark::kMillisecond);

void LaterQuestion(benchmark::State &state)
{
    if (!Ready(state))
        return;
    char names[300][CCHPAPERNAME];
    for (auto _ : state)
        benchmark::DoNotOptimize(
            DeviceCapabilities("printer", nullptr, DC_PAPERNAMES, names, nullptr));
}
BENCHMARK(LaterQuestion);

} // namespace
