#include "simulator/normalcurve.h"

#include <cmath>

namespace Simulator {

// Taylor series of the 1024th root, squared ten times.
double expOfMinus(double y)
{
    const double x = -y / 1024;
    double sum = 1;
    for (int k = 9; k >= 1; --k)
        sum = 1 + sum * x / k;
    for (int i = 0; i < 10; ++i)
        sum *= sum;
    return sum;
}

namespace {

constexpr double rootOfTwoPi = 2.5066282746310002;

double normalDensity(double x)
{
    return expOfMinus(x * x / 2) / rootOfTwoPi;
}

std::vector<float> makeNoiseTable()
{
    constexpr std::size_t half = 32768;
    std::vector<double> quantiles(half);
    double q = 0;
    double squares = 0;
    for (std::size_t i = 0; i < half; ++i) {
        // Newton's method from the neighbour; the fourth step no longer changes a float.
        const double share = 0.5 + (double(i) + 0.5) / (2 * half);
        for (int step = 0; step < 4; ++step)
            q -= (normalDistribution(q) - share) / normalDensity(q);
        quantiles[i] = q;
        squares += q * q;
    }
    const double scale = 1 / std::sqrt(2 * squares / half);

    std::vector<float> table(2 * half);
    for (std::size_t i = 0; i < half; ++i) {
        table[half + i] = float(quantiles[i] * scale);
        table[half - 1 - i] = -table[half + i];
    }
    return table;
}

} // namespace

// P(x) = 1/2 + p(x) (x + x^3/3 + x^5/(3 5) + x^7/(3 5 7) + ...), p the normal density.
double normalDistribution(double x)
{
    if (x > 8)
        return 1;
    if (x < -8)
        return 0;
    double term = x;
    double sum = 0;
    for (int k = 3; sum + term != sum; k += 2) {
        sum += term;
        term *= x * x / k;
    }
    return 0.5 + sum * normalDensity(x);
}

const std::vector<float> &noiseTable()
{
    static const std::vector<float> table = makeNoiseTable();
    return table;
}

} // namespace Simulator
