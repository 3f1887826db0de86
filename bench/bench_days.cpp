#include "analyses/days/ffaday.h"
#include "analyses/days/ffastack.h"
#include "analyses/days/fourierdays.h"
#include "analyses/days/powerstack.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <random>

// Spectra of days and their stack. Arguments: days, points of each.

namespace {

using namespace Days;

constexpr double step = 0.0124928; // s
constexpr double siderealDayMs = 86164091;

DayStretch noiseStretch(int number, int points)
{
    static std::mt19937_64 random(1);
    std::normal_distribution<float> law(3200, 6);
    DayStretch stretch;
    stretch.begin =
        QDateTime({2015, 1, 1}, {3, 0}, Qt::UTC).addMSecs(qint64(number * siderealDayMs));
    stretch.tresolution = step;
    stretch.direction = {1.2, 0.9};
    stretch.series.resize(1);
    for (int i = 0; i < points; ++i)
        stretch.series[0].sums.push_back(law(random));
    return stretch;
}

std::vector<FourierDay> noiseDays(int days, int points)
{
    FourierDaysParameters parameters;
    parameters.points = points;
    std::vector<FourierDay> products;
    for (int day = 0; day < days; ++day)
        products.push_back(fourierOfDay(noiseStretch(day, points), parameters));
    return products;
}

std::vector<DayPowers> powersOf(const std::vector<FourierDay> &days)
{
    std::vector<DayPowers> powers;
    for (const FourierDay &day : days)
        powers.push_back({day.powers.data(), day.ratio, 1});
    return powers;
}

void spectrumOfADay(benchmark::State &state)
{
    const DayStretch stretch = noiseStretch(0, int(state.range(0)));
    FourierDaysParameters parameters;
    parameters.points = int(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(fourierOfDay(stretch, parameters));
}
BENCHMARK(spectrumOfADay)->Arg(8192)->Arg(16384)->Arg(131072)->Unit(benchmark::kMillisecond);

void stackAtBins(benchmark::State &state)
{
    const std::vector<FourierDay> days = noiseDays(int(state.range(0)), int(state.range(1)));
    const std::vector<DayPowers> powers = powersOf(days);
    for (auto _ : state)
        benchmark::DoNotOptimize(stackDays(powers, int(state.range(1))));
}
BENCHMARK(stackAtBins)->Args({300, 8192})->Args({300, 16384})->Unit(benchmark::kMillisecond);

void stackFinely(benchmark::State &state)
{
    const std::vector<FourierDay> days = noiseDays(int(state.range(0)), int(state.range(1)));
    const std::vector<DayPowers> powers = powersOf(days);
    for (auto _ : state)
        benchmark::DoNotOptimize(stackDaysFinely(powers, int(state.range(1))));
}
BENCHMARK(stackFinely)->Args({300, 8192})->Args({300, 16384})->Unit(benchmark::kMillisecond);

// Each position by itself.
void stackFinelyStraight(benchmark::State &state)
{
    const int bins = int(state.range(1));
    const std::vector<FourierDay> days = noiseDays(int(state.range(0)), bins);
    for (auto _ : state) {
        std::vector<double> sums(std::size_t(bins) * finePerBin);
        for (const FourierDay &day : days) {
            for (std::size_t i = 0; i < sums.size(); ++i) {
                const double bin = std::floor(double(i) * day.ratio / finePerBin + 0.5);
                sums[i] += double(day.powers[std::size_t(std::min(bin, bins - 1.0))]);
            }
        }
        benchmark::DoNotOptimize(sums);
    }
}
BENCHMARK(stackFinelyStraight)->Args({300, 8192})->Unit(benchmark::kMillisecond);

// What a user waits for who switches a day: the stack, its lines and what is told of them.
void recombine(benchmark::State &state)
{
    std::vector<FourierDay> days = noiseDays(int(state.range(0)), int(state.range(1)));
    for (std::size_t day = 0; day < days.size(); ++day) {
        for (int line = 1; line <= int(state.range(2)); ++line)
            days[day].powers[std::size_t(500 * line)] += 1.5F;
    }
    FourierDaysChoice choice;
    choice.direction = {1.2, 0.9};
    for (auto _ : state)
        benchmark::DoNotOptimize(combineDays(days, choice));
}
BENCHMARK(recombine)
    ->Args({300, 8192, 0})
    ->Args({300, 8192, 10})
    ->Args({300, 16384, 10})
    ->Unit(benchmark::kMillisecond);

void periodogramOfADay(benchmark::State &state)
{
    const DayStretch stretch = noiseStretch(0, int(state.range(0)));
    FourierDaysParameters parameters;
    parameters.points = int(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(ffaOfDay(stretch, parameters));
}
BENCHMARK(periodogramOfADay)->Arg(8192)->Arg(16384)->Unit(benchmark::kMillisecond);

// The same of periodograms, turned to the barycentre.
void recombineFfa(benchmark::State &state)
{
    FourierDaysParameters parameters;
    parameters.points = int(state.range(1));
    std::vector<FourierDay> days;
    for (int day = 0; day < int(state.range(0)); ++day)
        days.push_back(ffaOfDay(noiseStretch(day, parameters.points), parameters));
    FourierDaysChoice choice;
    choice.direction = {1.2, 0.9};
    for (auto _ : state)
        benchmark::DoNotOptimize(combineFfaDays(days, choice));
}
BENCHMARK(recombineFfa)->Args({300, 8192})->Args({300, 16384})->Unit(benchmark::kMillisecond);

void rule(benchmark::State &state)
{
    const std::vector<FourierDay> days = noiseDays(300, 16384);
    DayRule rule;
    rule.frequency = 1.4;
    for (auto _ : state)
        benchmark::DoNotOptimize(proposeDays(days, rule));
}
BENCHMARK(rule)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
