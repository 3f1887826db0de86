#include "calc/approximation.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <random>
#include <vector>

// Baselines of series of the given length. The straight median line sorts every block in
// full, the straight polynomial calls pow() for every term of every sum.

namespace {

constexpr int degree = 5;
constexpr int medianBlock = 256;

std::vector<double> driftingNoise(int count)
{
    std::mt19937 random(1);
    std::normal_distribution<double> normal(1000, 5);
    std::vector<double> series(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        series[std::size_t(i)] = normal(random) + 20 * std::sin(i * 1e-3);
    return series;
}

void straightMedianLine(const std::vector<double> &in, std::vector<double> &out)
{
    const int count = int(in.size());
    const int blocks = count / medianBlock;
    double previous = 0;
    for (int b = 0; b < blocks; ++b) {
        std::vector<double> block(in.begin() + b * medianBlock, in.begin() + (b + 1) * medianBlock);
        std::sort(block.begin(), block.end());
        const double median = block[medianBlock / 2 - 1];
        for (int t = 0; b > 0 && t < medianBlock; ++t)
            out.data()[b * medianBlock - medianBlock / 2 + t] =
                previous + t * (median - previous) / medianBlock;
        if (b == 0)
            std::fill_n(out.begin(), medianBlock / 2, median);
        if (b == blocks - 1)
            std::fill(out.begin() + b * medianBlock + medianBlock / 2, out.end(), median);
        previous = median;
    }
}

void straightPolynomial(const std::vector<double> &in, std::vector<double> &out)
{
    const int count = int(in.size());
    double a[degree + 1][degree + 1] = {};
    double b[degree + 1] = {};
    for (int r = 0; r <= degree; ++r) {
        for (int c = 0; c <= degree; ++c)
            for (int i = 0; i < count; ++i)
                a[r][c] += std::pow(double(i), r + c);
        for (int i = 0; i < count; ++i)
            b[r] += std::pow(double(i), r) * in[std::size_t(i)];
    }
    for (int r = 0; r <= degree; ++r)
        for (int row = r + 1; row <= degree; ++row) {
            const double factor = a[row][r] / a[r][r];
            for (int c = r; c <= degree; ++c)
                a[row][c] -= factor * a[r][c];
            b[row] -= factor * b[r];
        }
    for (int r = degree; r >= 0; --r) {
        for (int c = r + 1; c <= degree; ++c)
            b[r] -= a[r][c] * b[c];
        b[r] /= a[r][r];
    }
    for (int i = 0; i < count; ++i) {
        double sum = 0;
        for (int j = 0; j <= degree; ++j)
            sum += b[j] * std::pow(double(i), j);
        out[std::size_t(i)] = sum;
    }
}

template <typename Line>
void run(benchmark::State &state, Line line)
{
    const std::vector<double> in = driftingNoise(int(state.range(0)));
    std::vector<double> out(in.size());
    for (auto _ : state) {
        line(in, out);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}

Approximation over(const std::vector<double> &in, std::vector<double> &out)
{
    return {in.data(), out.data(), int(in.size())};
}

void medianBySort(benchmark::State &state)
{
    run(state, straightMedianLine);
}

void medianLine(benchmark::State &state)
{
    run(state, [](const std::vector<double> &in, std::vector<double> &out) {
        over(in, out).medianLine(medianBlock);
    });
}

void polynomialByPow(benchmark::State &state)
{
    run(state, straightPolynomial);
}

void polynomial(benchmark::State &state)
{
    run(state, [](const std::vector<double> &in, std::vector<double> &out) {
        over(in, out).polynomial(degree, false);
    });
}

// The least that any baseline costs: every value read once and written once.
void copyLimit(benchmark::State &state)
{
    run(state, [](const std::vector<double> &in, std::vector<double> &out) {
        std::copy(in.begin(), in.end(), out.begin());
    });
}

BENCHMARK(medianBySort)->Arg(16384)->Arg(288000)->Unit(benchmark::kMicrosecond);
BENCHMARK(medianLine)->Arg(16384)->Arg(288000)->Unit(benchmark::kMicrosecond);
BENCHMARK(polynomialByPow)->Arg(16384)->Unit(benchmark::kMicrosecond);
BENCHMARK(polynomial)->Arg(16384)->Unit(benchmark::kMicrosecond);
BENCHMARK(copyLimit)->Arg(16384)->Arg(288000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
