#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/leveljumps.h"
#include "calc/waterfall.h"
#include "picture/colourmap.h"

#include <benchmark/benchmark.h>
#include <random>

// What one picture of the viewer costs while the dispersion is changed. Arguments: points, bands;
// the largest are those that the viewer keeps with every sample.

namespace {

constexpr int columns = 1200;

ObservationData makeRecording(int npoints, int bands)
{
    ObservationData data;
    data.npoints = npoints;
    data.modules = 1;
    data.channels = bands + 1;
    data.rays = 1;
    data.tresolution = 0.00126646875;
    const auto block = SampleBlock::allocate(1, data.channels, 1, npoints);
    std::minstd_rand random(1);
    for (int c = 0; c < data.channels; ++c) {
        if (c < bands)
            data.fbands.push_back(1130 + 335.0 * c / bands);
        float *const row = block->ray(0, c, 0);
        for (int i = 0; i < npoints; ++i)
            row[i] = float(random() % 10000) * 0.01F;
    }
    data.samples = Samples(block);
    return data;
}

Tools::WaterfallPart wholePart(const ObservationData &data)
{
    return {0, 0, 0, data.npoints, std::min(columns, data.npoints), 474.8};
}

void averaging(benchmark::State &state)
{
    const ObservationData data = makeRecording(int(state.range(0)), int(state.range(1)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Tools::waterfall(data, wholePart(data)));
}

// One sum after the other, point by point.
void averagingStraight(benchmark::State &state)
{
    const ObservationData data = makeRecording(int(state.range(0)), int(state.range(1)));
    const Tools::WaterfallPart part = wholePart(data);
    std::vector<float> picture(std::size_t(data.channels - 1) * std::size_t(part.columns));
    for (auto _ : state) {
        for (int band = 0; band < data.channels - 1; ++band) {
            const int shift = int(Tools::roundedDelay(
                Tools::dispersionDelay(data.fbands[std::size_t(band)], data.fbands.back(), 474.8,
                                       data.tresolution),
                Tools::ShiftRounding::WholeRecording));
            int begin = 0;
            for (int i = 0; i < part.columns; ++i) {
                const int end = int(qint64(i + 1) * part.count / part.columns);
                double sum = 0;
                for (int p = begin; p < end; ++p)
                    sum += double(data.samples[0][band][0][(p + shift) % data.npoints]);
                picture[std::size_t(band) * std::size_t(part.columns) + std::size_t(i)] =
                    float(sum / (end - begin));
                begin = end;
            }
        }
        benchmark::DoNotOptimize(picture.data());
    }
}

void normalisingAndColouring(benchmark::State &state)
{
    const ObservationData data = makeRecording(int(state.range(0)), int(state.range(1)));
    const std::vector<float> means = Tools::waterfall(data, wholePart(data));
    for (auto _ : state) {
        std::vector<float> picture = means;
        Tools::normaliseRows(picture, data.channels - 1, wholePart(data).columns);
        std::uint32_t last = 0;
        for (const float value : picture)
            last ^= Plot::colourOfValue(value, -2, 6);
        benchmark::DoNotOptimize(last);
    }
}

void sum(benchmark::State &state)
{
    const ObservationData data = makeRecording(int(state.range(0)), int(state.range(1)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Tools::sumChannels(data, 474.8, 0, 0));
}

void levelStepsOfOneChannel(benchmark::State &state)
{
    const ObservationData data = makeRecording(int(state.range(0)), 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(Tools::findLevelJumps(data.samples[0][0][0], data.npoints));
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Unit(benchmark::kMillisecond);
    for (const auto &[points, bands] :
         {std::pair(5120, 32), {80000, 32}, {508400, 32}, {49780, 336}})
        benchmark->Args({points, bands});
}

BENCHMARK(averaging)->Apply(sizes);
BENCHMARK(averagingStraight)->Apply(sizes);
BENCHMARK(normalisingAndColouring)->Apply(sizes);
BENCHMARK(sum)->Apply(sizes);
BENCHMARK(levelStepsOfOneChannel)
    ->Unit(benchmark::kMillisecond)
    ->Args({80000, 1})
    ->Args({508400, 1});

} // namespace

BENCHMARK_MAIN();
