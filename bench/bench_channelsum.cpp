#include "calc/channelsum.h"
#include "straightcalc.h"

#include <benchmark/benchmark.h>
#include <random>

// Sums over whole recordings. Arguments: points, bands. The straight version tests every
// sample for the wrap; the limit reads every sample once.

namespace {

constexpr double dispersion = 26.7; // pc/cm^3

ObservationData makeRecording(int npoints, int bands)
{
    ObservationData data;
    data.npoints = npoints;
    data.modules = 1;
    data.channels = bands + 1;
    data.rays = 1;
    data.tresolution = 0.0124928;
    const auto block = SampleBlock::allocate(1, data.channels, 1, npoints);
    std::minstd_rand random(1);
    for (int c = 0; c < data.channels; ++c) {
        if (c < bands)
            data.fbands.push_back(109.039 + 2.5 * c / bands);
        float *const row = block->ray(0, c, 0);
        for (int i = 0; i < npoints; ++i)
            row[i] = float(random() % 10000) * 0.01F;
    }
    data.samples = Samples(block);
    return data;
}

// Reads every sample once and does next to nothing with it: what the memory can deliver.
double readAll(const ObservationData &data)
{
    float total[16] = {};
    for (int c = 0; c < data.channels - 1; ++c) {
        const float *const row = data.samples[0][c][0];
        for (int i = 0; i + 16 <= data.npoints; i += 16)
            for (int lane = 0; lane < 16; ++lane)
                total[lane] += row[i + lane];
    }
    return double(total[0]);
}

template <typename Sum>
void run(benchmark::State &state, Sum sum)
{
    const ObservationData data = makeRecording(int(state.range(0)), int(state.range(1)));
    for (auto _ : state)
        benchmark::DoNotOptimize(sum(data));
    state.SetBytesProcessed(state.iterations() * state.range(0) * state.range(1) *
                            qint64(sizeof(float)));
}

void straight(benchmark::State &state)
{
    run(state, [](const ObservationData &data) { return straightSum(data, dispersion, 0, 0); });
}

void blocked(benchmark::State &state)
{
    run(state,
        [](const ObservationData &data) { return Tools::sumChannels(data, dispersion, 0, 0); });
}

void readingLimit(benchmark::State &state)
{
    run(state, readAll);
}

void sizes(benchmark::internal::Benchmark *bench)
{
    bench->Args({288000, 32})->Args({1000000, 32})->Args({288000, 512});
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(straight)->Apply(sizes);
BENCHMARK(blocked)->Apply(sizes);
BENCHMARK(readingLimit)->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
