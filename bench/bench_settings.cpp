#include "camera/setting_lists.h"
#include "tests/camera/walked_frame_rates.h"

#include <benchmark/benchmark.h>

/**
 * The menu of frame rates against the plain walk over every count of clocks, which it must equal: a ratio
 * between different menus would mean nothing.
 */
namespace
{
constexpr FrameTiming Timing{.clkFreq = 100000000, .clks = 50000, .clksMin = 1000, .clksMax = 10000000};

void frameRates(benchmark::State &state)
{
    if (frameRateEntries(Timing).texts != walkedFrameRates(Timing)) {
        state.SkipWithError("the rates differ from the plain walk");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(frameRateEntries(Timing));
}

void frameRatesPlain(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(walkedFrameRates(Timing));
}

BENCHMARK(frameRates)->Name("BM_FrameRates")->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(frameRatesPlain)->Name("BM_FrameRatesPlain")->UseRealTime()->Unit(benchmark::kMicrosecond);
} // namespace

BENCHMARK_MAIN();
