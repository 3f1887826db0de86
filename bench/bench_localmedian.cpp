#include "calc/fold.h"
#include "calc/localmedian.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>

// The noise level along a spectrum of 16384 values, beside sorting out every window by itself, and
// a fold of 300000 samples.

namespace {

const std::vector<double> &values(int count)
{
    static const std::vector<double> all = [] {
        std::mt19937 random(1);
        std::exponential_distribution<double> law;
        std::vector<double> made(300000);
        for (double &value : made)
            value = law(random);
        return made;
    }();
    static std::vector<double> part;
    part.assign(all.begin(), all.begin() + count);
    return part;
}

void slidingMedian(benchmark::State &state)
{
    const std::vector<double> &spectrum = values(16384);
    for (auto _ : state)
        benchmark::DoNotOptimize(Tools::localMedian(spectrum, int(state.range(0))));
}

void separateMedians(benchmark::State &state)
{
    const std::vector<double> &spectrum = values(16384);
    const std::ptrdiff_t window = state.range(0);
    const std::ptrdiff_t last = std::ptrdiff_t(spectrum.size()) - window;
    for (auto _ : state) {
        for (std::ptrdiff_t i = 0; i < std::ptrdiff_t(spectrum.size()); ++i) {
            const auto begin =
                spectrum.begin() + std::clamp<std::ptrdiff_t>(i - window / 2, 0, last);
            std::vector<double> inside(begin, begin + window);
            std::nth_element(inside.begin(), inside.begin() + window / 2, inside.end());
            benchmark::DoNotOptimize(inside[std::size_t(window / 2)]);
        }
    }
}

void fold(benchmark::State &state)
{
    const std::vector<double> &samples = values(300000);
    const double period = double(state.range(0)) + 0.457;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            Tools::fold(samples.data(), int(samples.size()), period, int(state.range(1))));
}

} // namespace

BENCHMARK(slidingMedian)->Arg(129)->Arg(257)->Arg(513)->Unit(benchmark::kMillisecond);
BENCHMARK(separateMedians)->Arg(257)->Unit(benchmark::kMillisecond);
BENCHMARK(fold)->Args({71, 71})->Args({700, 128})->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
