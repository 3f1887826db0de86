#include "calc/fourier.h"

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

void straightSpectrum(const double *dataIn, double *dataOut, int countIn, int countOut)
{
    std::vector<double> data(2 * std::size_t(countIn));
    double *const values = data.data();
    for (int i = 0; i < countIn; ++i)
        values[2 * i + 1] = dataIn[i];
    for (int i = 0, j = 0; i < countIn; ++i) {
        if (j > i) {
            std::swap(values[2 * i], values[2 * j]);
            std::swap(values[2 * i + 1], values[2 * j + 1]);
        }
        int bit = countIn / 2;
        for (; bit >= 1 && (j & bit); bit /= 2)
            j -= bit;
        j += bit;
    }
    for (int length = 2; length <= countIn; length *= 2) {
        const double theta = -6.283185307179586 / length;
        const double halfSine = std::sin(0.5 * theta);
        const double stepRe = -2 * halfSine * halfSine;
        const double stepIm = std::sin(theta);
        double wRe = 1;
        double wIm = 0;
        for (int m = 0; m < length / 2; ++m) {
            for (int i = m; i < countIn; i += length) {
                const int j = i + length / 2;
                const double re = wRe * values[2 * j] - wIm * values[2 * j + 1];
                const double im = wRe * values[2 * j + 1] + wIm * values[2 * j];
                values[2 * j] = values[2 * i] - re;
                values[2 * j + 1] = values[2 * i + 1] - im;
                values[2 * i] += re;
                values[2 * i + 1] += im;
            }
            const double oldRe = wRe;
            wRe = wRe * stepRe - wIm * stepIm + wRe;
            wIm = wIm * stepRe + oldRe * stepIm + wIm;
        }
    }
    for (int k = 0; k < countOut; ++k)
        dataOut[k] =
            2 * std::sqrt(values[2 * k] * values[2 * k] + values[2 * k + 1] * values[2 * k + 1]) /
            countIn;
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
