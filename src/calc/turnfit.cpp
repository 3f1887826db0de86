#include "calc/turnfit.h"

#include <algorithm>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <limits>
#include <numbers>

namespace Tools {

namespace {

constexpr double oneSigma = 0.682689;
constexpr double twoSigma = 0.954500;

// Takes the weighted mean of each cluster off.
void centre(const std::vector<CountedTime> &times, const std::vector<double> &weights,
            std::vector<double> &values)
{
    int clusters = 0;
    for (const CountedTime &time : times)
        clusters = std::max(clusters, time.cluster + 1);
    for (int cluster = 0; cluster < clusters; ++cluster) {
        double sum = 0;
        double weight = 0;
        for (std::size_t i = 0; i < times.size(); ++i) {
            if (times[i].cluster == cluster) {
                sum += weights[i] * values[i];
                weight += weights[i];
            }
        }
        for (std::size_t i = 0; i < times.size(); ++i) {
            if (times[i].cluster == cluster)
                values[i] -= sum / weight;
        }
    }
}

std::vector<double> weightsOf(const std::vector<CountedTime> &times)
{
    std::vector<double> weights;
    double sum = 0;
    for (const CountedTime &time : times) {
        weights.push_back(1 / (time.error * time.error));
        sum += weights.back();
    }
    for (double &weight : weights)
        weight *= double(times.size()) / sum;
    return weights;
}

double product(const std::vector<double> &weights, const std::vector<double> &a,
               const std::vector<double> &b)
{
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += weights[i] * a[i] * b[i];
    return sum;
}

int clustersOf(const std::vector<CountedTime> &times)
{
    std::vector<int> clusters;
    for (const CountedTime &time : times)
        clusters.push_back(time.cluster);
    std::sort(clusters.begin(), clusters.end());
    return int(std::unique(clusters.begin(), clusters.end()) - clusters.begin());
}

} // namespace

double TurnFit::rms() const
{
    return freedom > 0 ? std::sqrt(squares / freedom) : 0;
}

TurnFit fitTurns(const std::vector<CountedTime> &times, bool withDerivative)
{
    TurnFit fit;
    const std::vector<double> weights = weightsOf(times);
    double middle = 0;
    for (const CountedTime &time : times)
        middle += double(time.turn) / double(times.size());
    std::vector<double> x;
    std::vector<double> z;
    std::vector<double> y;
    for (const CountedTime &time : times) {
        x.push_back(double(time.turn) - middle);
        z.push_back(x.back() * x.back());
        y.push_back(time.time);
    }
    for (std::vector<double> *const values : {&x, &z, &y})
        centre(times, weights, *values);

    fit.freedom = int(times.size()) - clustersOf(times) - (withDerivative ? 2 : 1);
    const double xx = product(weights, x, x);
    // The column of the change is made orthogonal to that of the period.
    const double shared = product(weights, x, z) / xx;
    for (std::size_t i = 0; i < z.size(); ++i)
        z[i] -= shared * x[i];
    const double zz = product(weights, z, z);
    const double change = withDerivative && zz > 0 ? product(weights, z, y) / zz : 0;
    const double straight = product(weights, x, y) / xx;
    for (std::size_t i = 0; i < y.size(); ++i)
        fit.residuals.push_back(y[i] - straight * x[i] - change * z[i]);
    fit.squares = product(weights, fit.residuals, fit.residuals);
    fit.period = straight - change * shared;
    if (fit.freedom < 1)
        return fit;
    const double variance = 1 / xx + (withDerivative && zz > 0 ? shared * shared / zz : 0);
    const double standard = fit.rms() * std::sqrt(variance);
    fit.error = standard * studentFactor(oneSigma, fit.freedom);
    fit.error95 = standard * studentFactor(twoSigma, fit.freedom);
    if (withDerivative && zz > 0) {
        fit.derivative = 2 * change / fit.period;
        fit.derivativeError =
            2 * fit.rms() / std::sqrt(zz) / fit.period * studentFactor(oneSigma, fit.freedom);
    }
    return fit;
}

double probabilityOfFall(const TurnFit &simple, const TurnFit &rich)
{
    const int more = simple.freedom - rich.freedom;
    if (rich.freedom < 1 || more < 1)
        return 1;
    if (!(rich.squares > 0))
        return 0;
    const double ratio = (simple.squares - rich.squares) / more / (rich.squares / rich.freedom);
    if (!(ratio > 0))
        return 1;
    const boost::math::fisher_f_distribution<double> law(more, rich.freedom);
    return boost::math::cdf(boost::math::complement(law, ratio));
}

double studentFactor(double share, int freedom)
{
    const boost::math::students_t_distribution<double> law(freedom);
    return boost::math::quantile(law, (1 + share) / 2);
}

double hOfPhases(const std::vector<double> &phases)
{
    constexpr int mostHarmonics = 20;
    double sum = 0;
    double highest = 0;
    for (int k = 1; k <= mostHarmonics && !phases.empty(); ++k) {
        double re = 0;
        double im = 0;
        for (const double phase : phases) {
            re += std::cos(2 * std::numbers::pi * k * phase);
            im += std::sin(2 * std::numbers::pi * k * phase);
        }
        sum += 2 * (re * re + im * im) / double(phases.size());
        highest = std::max(highest, sum - 4 * k + 4);
    }
    return highest;
}

} // namespace Tools
