#include "calc/approximation.h"
#include "straightcalc.h"

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
    run(state, [](const std::vector<double> &in, std::vector<double> &out) {
        straightMedianLine(in, out, medianBlock);
    });
}

void medianLine(benchmark::State &state)
{
    run(state, [](const std::vector<double> &in, std::vector<double> &out) {
        over(in, out).medianLine(medianBlock);
    });
}

void polynomialByPow(benchmark::State &state)
{
    run(state, [](const std::vector<double> &in, std::vector<double> &out) {
        straightPolynomial(in, out, degree, [](double x, int n) { return std::pow(x, n); });
    });
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
