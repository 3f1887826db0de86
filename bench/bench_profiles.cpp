#include "analyses/profiles/profilerun.h"

#include <benchmark/benchmark.h>
#include <random>

// The average of the profiles of days and its scan. Arguments: days, bins of each.

namespace {

using namespace Profiles;

constexpr double seconds = 204.7;
constexpr double period = 1;
constexpr int parts = 8;
constexpr int bands = 32;

// Noise with a pulse of S/N 10 that comes at the same phase each day.
ProfileDay dayOf(std::mt19937 &random, int bins)
{
    std::normal_distribution<float> normal;
    ProfileDay day;
    day.seconds = seconds;
    day.dispersion = 30;
    day.bins = bins;
    day.begin = day.utc = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    day.direction = {1, 0.5};
    day.noise = {0.3, 0.1};
    day.phase.frequency = 1 / period;
    for (int part = 0; part <= parts; ++part)
        day.phase.turns.push_back(seconds / period * part / parts);
    for (int band = 0; band < bands; ++band)
        day.frequencies.push_back(109 + 0.078125 * band);
    day.used.assign(bands, true);
    const std::vector<double> pulse =
        Tools::profileOf(Tools::gaussianTemplate(0.05, bins, day.noise.shared));
    const float rowSigma = float(day.noise.sigma) * 16; // root of the rows
    const double height = 10 * day.noise.sigma / std::sqrt(0.04 * bins);
    for (int row = 0; row < parts * bands; ++row) {
        for (const double bin : pulse)
            day.values.push_back(float(height * bin) + rowSigma * normal(random));
    }
    return day;
}

ProfileDays daysOf(const benchmark::State &state)
{
    std::mt19937 random(1);
    std::vector<ProfileDay> days;
    for (int day = 0; day < int(state.range(0)); ++day)
        days.push_back(dayOf(random, int(state.range(1))));
    return std::make_shared<const std::vector<ProfileDay>>(std::move(days));
}

StackChoice choiceOf(Alignment alignment)
{
    StackChoice choice;
    choice.alignment = alignment;
    return choice;
}

// What a user waits for who switches a day.
void average(benchmark::State &state, Alignment alignment)
{
    const ProfileDays days = daysOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(averageDays(days, choiceOf(alignment)));
}
BENCHMARK_CAPTURE(average, ephemeris, Alignment::Ephemeris)
    ->Args({300, 64})
    ->Args({300, 1024})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(average, template, Alignment::Template)
    ->Args({300, 64})
    ->Unit(benchmark::kMillisecond);

// The curves and the picture of period and dispersion of that average.
void scan(benchmark::State &state, Alignment alignment)
{
    const ProfileDays days = daysOf(state);
    const StackChoice choice = choiceOf(alignment);
    const ProfileStack stack = stackDays(*days, choice);
    ScanRequest request;
    request.period = period;
    request.dispersion = 30;
    for (auto _ : state)
        benchmark::DoNotOptimize(scanDays(*days, choice, stack, request));
}
BENCHMARK_CAPTURE(scan, ephemeris, Alignment::Ephemeris)
    ->Args({300, 64})
    ->Args({300, 1024})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(scan, notAligned, Alignment::None)
    ->Args({300, 64})
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
