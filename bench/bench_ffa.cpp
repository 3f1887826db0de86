// The search beside the straight reading of it, on the same data and with the same flags.
// Both write the same values; the run stops when they differ.

#include "ffa/downsample.h"
#include "ffa/ffaplan.h"
#include "ffa/periodogram.h"
#include "ffa/straightffa.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <random>

namespace {

struct Case {
    const char *name;
    std::size_t samples;
    double tsamp; ///< s
    double periodMin;
    double periodMax;
    int binsMin;
    int binsMax;
    double ducyMax;
};

constexpr Case cases[] = {
    {"1h_0.5-30s_40-80", 288000, 0.0125, 0.5, 30, 40, 80, 0.2},
    {"1h_1-30s_64-128", 288000, 0.0125, 1, 30, 64, 128, 0.2},
    {"3min_1-20s_64-128", 16384, 0.0125, 1, 20, 64, 128, 0.2},
    {"1h_3.2-60s_256-512", 288000, 0.0125, 3.2, 60, 256, 512, 0.3},
    {"1h_3ms_0.5-30s_64-128", 1150000, 0.003072, 0.5, 30, 64, 128, 0.2},
};
constexpr double widthGrowth = 1.5;

std::vector<float> noise(std::size_t count)
{
    std::mt19937 generator(1);
    std::normal_distribution<float> normal;
    std::vector<float> data(count);
    for (float &value : data)
        value = normal(generator);
    return data;
}

std::vector<std::uint64_t> widthsOf(const Case &c)
{
    const auto widths = Ffa::trialWidths(c.binsMin, c.ducyMax, widthGrowth);
    return {widths.begin(), widths.end()};
}

Periodogram fastSearch(const Case &c, const std::vector<float> &data)
{
    return Periodogram(data.data(), data.size(), c.tsamp, c.periodMin, c.periodMax, c.binsMin,
                       c.binsMax, c.ducyMax, widthGrowth);
}

StraightFfa::Result straightSearch(const Case &c, const std::vector<float> &data,
                                   StraightFfa::Times *times = nullptr)
{
    return StraightFfa::search(data, c.tsamp, widthsOf(c), c.periodMin, c.periodMax, c.binsMin,
                               c.binsMax, times);
}

void straight(benchmark::State &state, const Case &c)
{
    const std::vector<float> data = noise(c.samples);
    StraightFfa::Times times;
    while (state.KeepRunning())
        benchmark::DoNotOptimize(straightSearch(c, data, &times).snr.data());
    const auto each = benchmark::Counter::kAvgIterations;
    state.counters["downsampling_s"] = {times.downsampling, each};
    state.counters["transform_s"] = {times.transform, each};
    state.counters["boxcar_s"] = {times.boxcar, each};
}

void fast(benchmark::State &state, const Case &c)
{
    const std::vector<float> data = noise(c.samples);
    Periodogram result = fastSearch(c, data);
    const StraightFfa::Result expected = straightSearch(c, data);
    if (result.snr.size() != expected.snr.size() ||
        std::memcmp(result.snr.data(), expected.snr.data(), expected.snr.size() * sizeof(float)) !=
            0) {
        state.SkipWithError("differs from the straight reading");
        return;
    }
    while (state.KeepRunning()) {
        result = fastSearch(c, data);
        benchmark::DoNotOptimize(result.snr.data());
    }
    state.counters["trials"] = result.length;
    state.counters["widths"] = result.nwidths;
}

} // namespace

int main(int argc, char **argv)
{
    for (const Case &c : cases) {
        const std::string name = c.name;
        benchmark::RegisterBenchmark((name + "/straight").c_str(), straight, c)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "/fast").c_str(), fast, c)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
