#include "base/targetclones.h"
#include "calc/boxcarsearch.h"
#include "calc/dispersiongrid.h"
#include "straightcalc.h"

#include <benchmark/benchmark.h>
#include <numeric>
#include <random>

// The search for single pulses in one ray of an hour: 288 000 points, 32 bands, 200 dispersions,
// 15 widths. Beside it the straight way, and the bare addition of the same bands.

namespace {

constexpr int points = 288000;
constexpr int bands = 32;
constexpr int trials = 200;
constexpr float threshold = 7;
const std::vector<int> widths = {1, 2, 3, 4, 6, 9, 14, 20, 30, 45, 70, 100, 150, 220, 300};

struct Case {
    ObservationData data;
    std::vector<double> dispersions;
};

const Case &sample()
{
    static const Case made = [] {
        Case c;
        c.data.npoints = points;
        c.data.modules = c.data.rays = 1;
        c.data.channels = bands + 1;
        c.data.tresolution = 0.0124928;
        for (int band = 0; band < bands; ++band)
            c.data.fbands.push_back(120 + 0.078125 * band);
        const double step = Tools::dispersionStep(c.data, bands, 1);
        for (int i = 0; i < trials; ++i)
            c.dispersions.push_back(i * step);
        const auto block = SampleBlock::allocate(1, bands + 1, 1, points);
        std::mt19937 random(1);
        std::normal_distribution<float> normal;
        for (int band = 0; band < bands; ++band) {
            float *const row = block->ray(0, band, 0);
            std::generate_n(row, points, [&] { return normal(random); });
            for (int pulse = 0; pulse < 20; ++pulse) { // S/N 10 to 29
                const Tools::BandDelays delays(c.data, bands, c.dispersions[std::size_t(9 * pulse)],
                                               Tools::ShiftRounding::WholeRecording);
                const int width = widths[std::size_t(pulse % 15)];
                const float height = float((10 + pulse) / std::sqrt(32.0 * width));
                for (int i = 0; i < width; ++i)
                    row[7000 + 14000 * pulse + i + delays.shift(band)] += height;
            }
        }
        c.data.samples = Samples(block);
        return c;
    }();
    return made;
}

float highestOf(const std::vector<Tools::BoxcarEvent> &peaks)
{
    float highest = 0;
    for (const Tools::BoxcarEvent &peak : peaks)
        highest = std::max(highest, peak.snr);
    return highest;
}

// Rows, noise and boxcars: all that is done with a ray whose bands have level 0.
std::vector<Tools::BoxcarEvent> fastPeaks()
{
    const Case &c = sample();
    Tools::DispersionTree tree(c.data, bands, c.dispersions);
    Tools::BandRows rows = Tools::rowsFor(tree, bands, points, widths);
    for (int band = 0; band < bands; ++band)
        std::copy_n(c.data.samples[0][band][0], points, rows.row(band));
    const std::vector<float> scales = Tools::boxcarScales(rows, tree, widths);
    return Tools::findBoxcars(rows, tree, widths, scales, threshold);
}

void search(benchmark::State &state)
{
    sample();
    std::vector<Tools::BoxcarEvent> peaks;
    for (auto _ : state)
        peaks = fastPeaks();
    state.counters["events"] = double(peaks.size());
    state.counters["highest"] = double(highestOf(peaks));
}
BENCHMARK(search)->Unit(benchmark::kMillisecond);

void searchWithoutCopyAndNoise(benchmark::State &state)
{
    const Case &c = sample();
    Tools::DispersionTree tree(c.data, bands, c.dispersions);
    Tools::BandRows rows = Tools::rowsFor(tree, bands, points, widths);
    for (int band = 0; band < bands; ++band)
        std::copy_n(c.data.samples[0][band][0], points, rows.row(band));
    const std::vector<float> scales = Tools::boxcarScales(rows, tree, widths);
    for (auto _ : state)
        benchmark::DoNotOptimize(Tools::findBoxcars(rows, tree, widths, scales, threshold));
}
BENCHMARK(searchWithoutCopyAndNoise)->Unit(benchmark::kMillisecond);

// All bands at all dispersions, blocked, without anything else; eight in one pass over the sums.
ZRT_TARGET_CLONES
void addBlock(const float *const *rows, float *sums, int count)
{
    for (int band = 0; band < bands; band += 8) {
        const float *const *const r = rows + band;
        const float *const r0 = r[0], *const r1 = r[1], *const r2 = r[2], *const r3 = r[3];
        const float *const r4 = r[4], *const r5 = r[5], *const r6 = r[6], *const r7 = r[7];
        for (int i = 0; i < count; ++i)
            sums[i] = (band > 0 ? sums[i] : 0) + r0[i] + r1[i] + r2[i] + r3[i] + r4[i] + r5[i] +
                      r6[i] + r7[i];
    }
}

void bareAddition(benchmark::State &state)
{
    const Case &c = sample();
    const Tools::DispersionTree tree(c.data, bands, c.dispersions);
    Tools::BandRows rows = Tools::rowsFor(tree, bands, points, widths);
    for (int band = 0; band < bands; ++band)
        std::copy_n(c.data.samples[0][band][0], points, rows.row(band));
    std::vector<float> sums(Tools::DispersionTree::blockPoints);
    for (auto _ : state) {
        for (int first = 0; first < points; first += Tools::DispersionTree::blockPoints) {
            for (int trial = 0; trial < trials; ++trial) {
                const float *from[bands];
                for (int band = 0; band < bands; ++band)
                    from[band] = rows.row(band) + first + tree.shift(trial, band);
                addBlock(from, sums.data(), Tools::DispersionTree::blockPoints);
                benchmark::DoNotOptimize(sums.data());
            }
        }
    }
}
BENCHMARK(bareAddition)->Unit(benchmark::kMillisecond);

// A sum in double at each dispersion with a wrap test a sample, and a running sum at each width.
void straightWay(benchmark::State &state)
{
    const Case &c = sample();
    double highest = 0;
    for (auto _ : state) {
        highest = 0;
        for (const double dispersion : c.dispersions) {
            const std::vector<double> sums = straightSum(c.data, dispersion, 0, 0);
            for (const int width : widths) {
                double running = std::accumulate(sums.begin(), sums.begin() + width, 0.0);
                double most = running;
                for (int i = width; i < points; ++i) {
                    running += sums[std::size_t(i)] - sums[std::size_t(i - width)];
                    most = std::max(most, running);
                }
                highest = std::max(highest, most / std::sqrt(32.0 * width));
            }
        }
    }
    state.counters["highest"] = highest;
}
BENCHMARK(straightWay)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
