#include "calc/fourier.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "simulator/recording.h"

#include <benchmark/benchmark.h>

// The pulsar form's actions on 300000 points of 8 rays, and the dispersion scan beside 201
// separate spectra.

namespace {

const ObservationData &recording()
{
    static const ObservationData data = [] {
        Simulator::Simulation simulation;
        simulation.npoints = 300000;
        simulation.drift = 3;
        simulation.pulseTrains.push_back({1, 1, 3.032, 0.05, 26.2, 0.5, 0});
        simulation.gainSteps.push_back({1, 1, 100000, 1.2});
        return Simulator::makeRecording(simulation);
    }();
    return data;
}

PulsarParameters parametersOfForm(const QString &noise)
{
    PulsarParameters parameters;
    parameters.dispersion = 26.2;
    parameters.dispersions = {0, 13.1, 26.2, 52.4};
    parameters.period = 3.032;
    parameters.firstPoint = 58000;
    parameters.harmonicNum = 1080;
    parameters.noise = noise;
    return parameters;
}

const char *const noises[] = {"polinom5", "median", "backSum", "without"};

void scan(benchmark::State &state)
{
    PulsarCalculate calculate(recording(), parametersOfForm(noises[state.range(0)]));
    for (auto _ : state)
        benchmark::DoNotOptimize(calculate.run("sumAllDispersions"));
    state.SetLabel(noises[state.range(0)]);
}

void separateSpectra(benchmark::State &state)
{
    PulsarCalculate calculate(recording(), parametersOfForm(noises[state.range(0)]));
    std::vector<double> spectrum(8192);
    for (auto _ : state) {
        for (int trial = 0; trial < 201; ++trial)
            benchmark::DoNotOptimize(
                calculate.getFourierOfSum(spectrum.data(), 16384, 0.262 * trial, 0, false));
    }
    state.SetLabel(noises[state.range(0)]);
}

void action(benchmark::State &state, const char *name, bool deleteStep)
{
    PulsarParameters parameters = parametersOfForm("polinom5");
    parameters.deleteStep = deleteStep;
    parameters.firstPoint = 90000;
    PulsarCalculate calculate(recording(), parameters);
    for (auto _ : state)
        benchmark::DoNotOptimize(calculate.run(name));
}

} // namespace

BENCHMARK(scan)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(separateSpectra)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, showNative, "showNative", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, sumPeriod, "sumPeriod", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, sumPeriodSteps, "sumPeriod", true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, demoNoise, "sumChannelsDemoNoise", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, demoNoiseSteps, "sumChannelsDemoNoise", true)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, average, "sumChannelsAndAverage", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, fourier, "sumChannelsAndFourier", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, fourDispersions, "sum4Dispersions", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(action, starts, "sumTimeDispersions", false)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
