#include "camera/setting_lists.h"

#include <benchmark/benchmark.h>

#include <map>

/**
 * The menu of frame rates against the plain walk over every count of clocks, which it must equal: a ratio
 * between different menus would mean nothing.
 */
namespace
{
constexpr FrameTiming Timing{.clkFreq = 100000000, .clks = 50000, .clksMin = 1000, .clksMax = 10000000};

QStringList walkedFrameRates(const FrameTiming &timing)
{
    std::map<double, QString, std::greater<>> entries;
    const auto add = [&](uint rate) { entries.emplace(double(rate), QString::number(rate)); };
    add(timing.clkFreq / timing.clks);
    add(timing.clkFreq / timing.clksMin);
    for (uint clks = timing.clksMin; clks <= timing.clksMax; ++clks) {
        if (timing.clkFreq % clks == 0 && (timing.clkFreq / clks) % 1000 == 0)
            add(timing.clkFreq / clks);
    }
    QStringList texts;
    for (const auto &[rate, text] : entries)
        texts << text;
    return texts;
}

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
