#include "calc/fourier.h"
#include "straightcalc.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <fftw3.h>
#include <random>
#include <vector>

// Amplitude spectra of series of 2^n values. The straight version is the triple loop of the
// textbooks; for comparison FFTW's transform of a real series, planned by measuring and
// without the amplitudes. "error" is the largest difference from FFTW's spectrum in units of the
// spectrum's mean.

namespace {

std::vector<double> noise(int count)
{
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    std::vector<double> series(static_cast<std::size_t>(count));
    for (double &value : series)
        value = normal(random);
    return series;
}

double largestError(std::vector<double> series, const std::vector<double> &spectrum)
{
    const std::size_t count = series.size();
    std::vector<double> output(count + 2);
    auto *const complex = reinterpret_cast<fftw_complex *>(output.data());
    const fftw_plan plan = fftw_plan_dft_r2c_1d(int(count), series.data(), complex, FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    double largest = 0;
    double sum = 0;
    for (std::size_t k = 0; k < count / 2; ++k) {
        const double expected = 2 * std::hypot(complex[k][0], complex[k][1]) / double(count);
        largest = std::max(largest, std::abs(spectrum[k] - expected));
        sum += expected;
    }
    return largest / (sum / (double(count) / 2));
}

template <typename Transform>
void run(benchmark::State &state, Transform transform)
{
    const int count = 1 << state.range(0);
    const std::vector<double> series = noise(count);
    std::vector<double> spectrum(std::size_t(count) / 2);
    for (auto _ : state) {
        transform(series.data(), spectrum.data(), count, count / 2);
        benchmark::DoNotOptimize(spectrum.data());
        benchmark::ClobberMemory();
    }
    state.counters["error"] = largestError(series, spectrum);
}

void straight(benchmark::State &state)
{
    run(state, straightSpectrum);
}

void staged(benchmark::State &state)
{
    run(state, Tools::amplitudeSpectrum);
}

void fftw(benchmark::State &state)
{
    const int count = 1 << state.range(0);
    std::vector<double> output(std::size_t(count) + 2);
    std::vector<double> series(static_cast<std::size_t>(count));
    const fftw_plan plan = fftw_plan_dft_r2c_1d(
        count, series.data(), reinterpret_cast<fftw_complex *>(output.data()), FFTW_MEASURE);
    series = noise(count);
    while (state.KeepRunning()) {
        fftw_execute(plan);
        benchmark::ClobberMemory();
    }
    fftw_destroy_plan(plan);
}

void sizes(benchmark::internal::Benchmark *bench)
{
    bench->Arg(14)->Arg(17)->Arg(19)->Unit(benchmark::kMillisecond);
}

BENCHMARK(straight)->Apply(sizes);
BENCHMARK(staged)->Apply(sizes);
BENCHMARK(fftw)->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
