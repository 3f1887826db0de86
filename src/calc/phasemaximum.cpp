#include "calc/phasemaximum.h"

#include "calc/robuststatistics.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <mutex>
#include <numbers>

namespace Tools {

namespace {

// The law of one value tilted by exp(t x): logarithm of its sum, mean and variance.
struct PhaseTilt {
    double t = 0;
    double logSum = 0;
    double mean = 0;
    double variance = 0;
};

constexpr double reach = 8; // sigma of the tilted Gaussian that is summed over
constexpr double step = 1.0 / 16;

double logNormalCdf(double x)
{
    return logNormalTail(-x);
}

// The density n phi(x) Phi(x)^(n - 1) times exp(t x) is that of a Gaussian around t, times
// n exp(t^2 / 2) Phi(x)^(n - 1).
PhaseTilt tilted(double t, double phases)
{
    constexpr int half = int(reach / step);
    std::vector<double> logarithms;
    // Where t is low the mass lies above it, where Phi begins to differ from 0.
    const double centre = std::max(t, 1.0);
    for (int i = -half; i <= half; ++i) {
        const double x = centre + i * step;
        logarithms.push_back(-(x - t) * (x - t) / 2 + (phases - 1) * logNormalCdf(x));
    }
    const double highest = *std::max_element(logarithms.begin(), logarithms.end());
    double sum = 0;
    double first = 0;
    double second = 0;
    for (int i = -half; i <= half; ++i) {
        const double weight = std::exp(logarithms[std::size_t(i + half)] - highest);
        sum += weight;
        first += weight * i * step;
        second += weight * i * step * i * step;
    }
    const double mean = first / sum;
    const double logSum =
        std::log(phases * sum * step / std::sqrt(2 * std::numbers::pi)) + highest + t * t / 2;
    return {t, logSum, centre + mean, second / sum - mean * mean};
}

// Logarithm of the tail of the sum of `count` values at the sum whose saddle point is that tilt.
double logTailAt(const PhaseTilt &law, double count)
{
    const double exponent = law.t * law.mean - law.logSum;
    const double r = std::copysign(std::sqrt(std::max(0.0, 2 * count * exponent)), law.t);
    const double u = law.t * std::sqrt(count * law.variance);
    const double logDensity = -r * r / 2 - std::log(2 * std::numbers::pi) / 2;
    const double mills = std::exp(logNormalTail(r) - logDensity);
    const double factor = mills + 1 / u - 1 / r;
    return std::min(0.0, logDensity + std::log(std::max(factor, 1e-300)));
}

// The tilts do not depend on how many values are added: they are made once for all sums. They lie
// so close that sums of a thousand values are some tenths of their scatter apart.
const std::vector<PhaseTilt> &tiltsOf(double phases)
{
    constexpr double lowest = -7;
    constexpr double highest = 40;
    constexpr double closest = 0.004;
    constexpr double ofTilt = 0.02;
    static std::mutex mutex;
    static std::map<double, std::vector<PhaseTilt>> known;
    const std::lock_guard lock(mutex);
    std::vector<PhaseTilt> &tilts = known[phases];
    if (!tilts.empty())
        return tilts;
    for (double t = lowest; t < highest; t += std::max(closest, ofTilt * std::abs(t))) {
        if (std::abs(t) > closest / 4) // at 0 the approximation divides 0 by 0
            tilts.push_back(tilted(t, phases));
    }
    return tilts;
}

// Where a rising function reaches 1/2.
template <typename Rising>
double halfPoint(double low, double high, const Rising &rising)
{
    for (int i = 0; i < 100; ++i) {
        const double middle = (low + high) / 2;
        (rising(middle) < 0.5 ? low : high) = middle;
    }
    return (low + high) / 2;
}

} // namespace

PhaseMaximum::PhaseMaximum(double phases, double count) : phaseCount(phases)
{
    const auto distribution = [this](double x) { return cdf(x); };
    unitMedian = halfPoint(-reach, reach, distribution);
    unitScatter = madToSigma * halfPoint(0, reach, [this](double deviation) {
                      return cdf(unitMedian + deviation) - cdf(unitMedian - deviation);
                  });
    for (const PhaseTilt &tilt : tiltsOf(phases)) {
        constexpr double lowest = -30; // sigma; nobody asks how probable it is to be above
        if (tilt.t * std::sqrt(count * tilt.variance) < lowest)
            continue;
        sums.push_back(count * standardised(tilt.mean));
        tails.push_back(logTailAt(tilt, count));
    }
    middle = quantile(std::log(0.5));
    spread =
        madToSigma * halfPoint(0, 10 * std::sqrt(std::max(1.0, count)), [this](double deviation) {
            return std::exp(logTail(middle - deviation)) - std::exp(logTail(middle + deviation));
        });
}

double PhaseMaximum::cdf(double x) const
{
    return std::exp(phaseCount * logNormalCdf(x));
}

double PhaseMaximum::logTail(double sum) const
{
    if (!(sum > sums.front()))
        return tails.front();
    const auto above = std::upper_bound(sums.begin(), sums.end(), sum);
    if (above == sums.end()) {
        // The tail is Gaussian there: its logarithm falls with the square of the distance.
        const double share = (sum - middle) / (sums.back() - middle);
        return tails.back() * share * share;
    }
    const auto i = std::size_t(above - sums.begin());
    const double part = (sum - sums[i - 1]) / (sums[i] - sums[i - 1]);
    return tails[i - 1] + part * (tails[i] - tails[i - 1]);
}

double PhaseMaximum::quantile(double logTail) const
{
    const auto below =
        std::lower_bound(tails.begin(), tails.end(), logTail, std::greater<double>());
    const auto i = std::max<std::size_t>(1, std::size_t(below - tails.begin()));
    const double part = (logTail - tails[i - 1]) / (tails[i] - tails[i - 1]);
    return sums[i - 1] + part * (sums[i] - sums[i - 1]);
}

double PhaseMaximum::sigma(double sum) const
{
    return sigmaOfTail(logTail(sum));
}

PhaseMaximum::Cut PhaseMaximum::cut(double above) const
{
    const double quantile =
        halfPoint(-reach, reach, [&](double x) { return cdf(x) / (1 - above) / 2; });
    double sum = 0;
    double squares = 0;
    double before = 0;
    constexpr double fine = 1.0 / 256;
    for (double x = -reach; x < quantile; x += fine) {
        const double upTo = cdf(std::min(quantile, x + fine));
        const double value = standardised(x + fine / 2);
        sum += (upTo - before) * value;
        squares += (upTo - before) * value * value;
        before = upTo;
    }
    const double last = standardised(quantile);
    sum += (1 - before) * last;
    squares += (1 - before) * last * last;
    return {last, sum, squares - sum * sum};
}

} // namespace Tools
