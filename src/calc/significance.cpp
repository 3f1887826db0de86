#include "calc/significance.h"

#include <algorithm>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <limits>

namespace Tools {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
// Below this logarithm a probability is no ordinary double any more.
constexpr double smallestLog = -690;

// Logarithm of the density of the Gamma distribution of that shape, times x.
double logDensity(double shape, double x)
{
    return shape * std::log(x) - x - std::lgamma(shape);
}

// Upper tail over x times the density, for x above the shape: Legendre's continued fraction by
// Lentz's method (Press et al., Numerical Recipes, 3rd edition, 6.2).
double tailFraction(double shape, double x)
{
    constexpr double tiny = 1e-300;
    constexpr double precision = 1e-15;
    constexpr int mostTerms = 10000;
    double b = x + 1 - shape;
    double c = 1 / tiny;
    double d = 1 / b;
    double fraction = d;
    for (int i = 1; i < mostTerms; ++i) {
        const double an = -i * (i - shape);
        b += 2;
        d = an * d + b;
        d = 1 / (std::abs(d) < tiny ? tiny : d);
        c = b + an / c;
        c = std::abs(c) < tiny ? tiny : c;
        fraction *= d * c;
        if (std::abs(d * c - 1) < precision)
            break;
    }
    return fraction;
}

// Upper tail of the normal distribution over its density (Mills' ratio), for large sigma.
double millsRatio(double sigma)
{
    double fraction = sigma;
    for (int k = 60; k >= 1; --k)
        fraction = sigma + k / fraction;
    return 1 / fraction;
}

double logNormalDensity(double sigma)
{
    return -sigma * sigma / 2 - std::log(2 * M_PI) / 2;
}

// The cumulant function -each x sum of ln(1 - w t) with its second derivative.
struct Cumulants {
    double value = 0;
    double second = 0;
};

Cumulants cumulantsAt(const std::vector<double> &weights, double each, double t)
{
    Cumulants k;
    for (const double w : weights) {
        const double rest = 1 - w * t;
        k.value -= each * std::log(rest);
        k.second += each * w * w / (rest * rest);
    }
    return k;
}

double firstCumulant(const std::vector<double> &weights, double each, double t)
{
    double first = 0;
    for (const double w : weights)
        first += each * w / (1 - w * t);
    return first;
}

// Where the first derivative of the cumulant function is x: it rises steadily from 0 to infinity
// between minus infinity and one over the largest weight.
double saddlePoint(const std::vector<double> &weights, double each, double x)
{
    const double top = 1 / *std::max_element(weights.begin(), weights.end());
    double high = top;
    double low = -top;
    while (firstCumulant(weights, each, low) > x)
        low *= 2;
    for (int i = 0; i < 200 && high - low > 1e-15 * std::abs(high); ++i) {
        const double middle = low + (high - low) / 2;
        (firstCumulant(weights, each, middle) < x ? low : high) = middle;
    }
    return low;
}

} // namespace

double logGammaTail(double shape, double x)
{
    if (!(shape > 0) || std::isnan(x))
        return std::numeric_limits<double>::quiet_NaN();
    if (x <= 0)
        return 0;
    if (std::isinf(x))
        return -infinity;
    const double density = logDensity(shape, x);
    if (x < shape) // close to 1 the complement keeps the digits
        return std::log1p(-boost::math::gamma_p(shape, x));
    if (x <= shape + 1 || density > smallestLog)
        return std::log(boost::math::gamma_q(shape, x));
    return density + std::log(tailFraction(shape, x));
}

double logNormalTail(double sigma)
{
    if (sigma < 0)
        return std::log1p(-std::erfc(-sigma / std::sqrt(2.0)) / 2);
    if (sigma < 30)
        return std::log(std::erfc(sigma / std::sqrt(2.0)) / 2);
    return logNormalDensity(sigma) + std::log(millsRatio(sigma));
}

double sigmaOfTail(double logProbability)
{
    if (std::isnan(logProbability))
        return logProbability;
    if (logProbability >= 0)
        return -infinity;
    if (logProbability > smallestLog) {
        // Close to 1 the complement keeps the digits.
        if (logProbability > -0.1)
            return -std::sqrt(2.0) * boost::math::erfc_inv(-2 * std::expm1(logProbability));
        return std::sqrt(2.0) * boost::math::erfc_inv(2 * std::exp(logProbability));
    }
    if (std::isinf(logProbability))
        return infinity;
    // Newton's method; the logarithm falls by about sigma a unit.
    double sigma = std::sqrt(-2 * logProbability);
    for (int i = 0; i < 20; ++i)
        sigma += (logNormalTail(sigma) - logProbability) * millsRatio(sigma);
    return sigma;
}

double logTailOfTrials(double logProbability, double trials)
{
    if (logProbability < -36) // 1 - p is 1
        return std::min(0.0, logProbability + std::log(trials));
    const double logNone = trials * std::log1p(-std::exp(logProbability));
    return std::log(-std::expm1(logNone));
}

double sigmaOfPower(double shape, double power, double trials)
{
    return sigmaOfTail(logTailOfTrials(logGammaTail(shape, power), trials));
}

double powerAtSigma(double shape, double sigma, double trials)
{
    double low = 0;
    double high = shape + 1;
    while (sigmaOfPower(shape, high, trials) < sigma)
        high *= 2;
    for (int i = 0; i < 200 && high - low > 1e-14 * high; ++i) {
        const double middle = (low + high) / 2;
        (sigmaOfPower(shape, middle, trials) < sigma ? low : high) = middle;
    }
    return (low + high) / 2;
}

double medianPower(double shape)
{
    return boost::math::gamma_p_inv(shape, 0.5);
}

double logWeightedTail(const std::vector<double> &weights, double each, double x)
{
    if (weights.empty() || !(each > 0) || std::isnan(x))
        return std::numeric_limits<double>::quiet_NaN();
    if (x <= 0)
        return 0;
    const double t = saddlePoint(weights, each, x);
    const Cumulants k = cumulantsAt(weights, each, t);
    const double r = std::copysign(std::sqrt(std::max(0.0, 2 * (t * x - k.value))), t);
    const double u = t * std::sqrt(k.second);
    constexpr double nearMean = 1e-4;
    if (std::abs(r) < nearMean) {
        // The two terms cancel at the mean; their difference tends to minus skewness / 6.
        double third = 0;
        for (const double w : weights)
            third += 2 * each * w * w * w;
        const double skewness = third / std::pow(k.second, 1.5);
        return std::log(0.5 - skewness / 6 / std::sqrt(2 * M_PI));
    }
    if (r > 5)
        return logNormalDensity(r) + std::log(millsRatio(r) + 1 / u - 1 / r);
    const double tail =
        std::exp(logNormalTail(r)) + std::exp(logNormalDensity(r)) * (1 / u - 1 / r);
    return std::log(std::clamp(tail, std::numeric_limits<double>::min(), 1.0));
}

double medianWeightedPower(const std::vector<double> &weights, double each)
{
    if (weights.empty() || !(each > 0))
        return std::numeric_limits<double>::quiet_NaN();
    // Below the mean, for the law leans to the right.
    double low = 0;
    double high = firstCumulant(weights, each, 0);
    while (high - low > 1e-9 * high) {
        const double middle = low + (high - low) / 2;
        (logWeightedTail(weights, each, middle) > -M_LN2 ? low : high) = middle;
    }
    return low;
}

} // namespace Tools
