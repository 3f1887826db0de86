#include "analyses/sky/located.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Sky {

namespace {

using Vector = std::vector<double>;
// Noise of its own in every power, as part of its variance: rounding and the levels around it make
// powers less alike than their correlation says, where that is nearly one.
constexpr double ownNoise = 0.01;
// Shares of a Gaussian within one and two standard deviations.
constexpr double oneError = 0.6827;
constexpr double twoErrors = 0.9545;

double dot(const Vector &a, const Vector &b)
{
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i] * b[i];
    return sum;
}

// A symmetric positive matrix, row after row.
struct Matrix {
    std::size_t size = 0;
    Vector values;

    double &at(std::size_t row, std::size_t column) { return values[row * size + column]; }
    double at(std::size_t row, std::size_t column) const { return values[row * size + column]; }

    Vector times(const Vector &x) const
    {
        Vector product(size);
        for (std::size_t row = 0; row < size; ++row)
            for (std::size_t column = 0; column < size; ++column)
                product[row] += at(row, column) * x[column];
        return product;
    }
};

// Cholesky's decomposition: solves matrix x = right.
class Solver {
public:
    explicit Solver(Matrix matrix) : factor(std::move(matrix))
    {
        for (std::size_t row = 0; row < factor.size; ++row) {
            for (std::size_t column = 0; column <= row; ++column) {
                double sum = factor.at(row, column);
                for (std::size_t k = 0; k < column; ++k)
                    sum -= factor.at(row, k) * factor.at(column, k);
                factor.at(row, column) =
                    row == column ? std::sqrt(std::max(sum, std::numeric_limits<double>::min()))
                                  : sum / factor.at(column, column);
            }
        }
    }

    Vector solve(Vector x) const
    {
        const std::size_t n = factor.size;
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t k = 0; k < i; ++k)
                x[i] -= factor.at(i, k) * x[k];
            x[i] /= factor.at(i, i);
        }
        for (std::size_t i = n; i-- > 0;) {
            for (std::size_t k = i + 1; k < n; ++k)
                x[i] -= factor.at(k, i) * x[k];
            x[i] /= factor.at(i, i);
        }
        return x;
    }

private:
    Matrix factor;
};

class Fit {
public:
    explicit Fit(const PowerSamples &powerSamples)
        : samples(powerSamples), solver(covariance({}, 0, ownNoise)), excess(samples.powers)
    {
        for (double &value : excess)
            value -= 1;
    }

    Vector shapeAt(double place) const
    {
        Vector shape;
        for (const std::complex<double> &amplitude : samples.amplitudes(place))
            shape.push_back(std::norm(amplitude));
        return shape;
    }

    double strengthAt(double place) const
    {
        const Vector shape = shapeAt(place);
        const Vector weighted = solver.solve(shape);
        return std::max(0.0, dot(weighted, excess) / dot(weighted, shape));
    }

    // What a signal at this place takes off the squared deviations.
    double gainAt(double place) const
    {
        const Vector shape = shapeAt(place);
        const Vector weighted = solver.solve(shape);
        const double fitted = std::max(0.0, dot(weighted, excess));
        return fitted * fitted / dot(weighted, shape);
    }

    // The curvature of the squared deviations and the variance of their slope.
    void addErrors(double place, double step, double strength, double &curvature,
                   double &slopeVariance) const
    {
        const Vector shape = shapeAt(place);
        const Vector above = shapeAt(place + step);
        const Vector below = shapeAt(place - step);
        Vector slope(shape.size());
        for (std::size_t i = 0; i < slope.size(); ++i)
            slope[i] = (above[i] - below[i]) / (2 * step);
        const Vector weighted = solver.solve(shape);
        const double share = dot(weighted, slope) / dot(weighted, shape);
        for (std::size_t i = 0; i < slope.size(); ++i)
            slope[i] -= share * shape[i];
        const Vector filter = solver.solve(slope);
        curvature += strength * strength * dot(slope, filter);
        const Matrix whole = covariance(samples.amplitudes(place), strength, 0);
        slopeVariance += strength * strength * dot(filter, whole.times(filter));
    }

private:
    Matrix covariance(const std::vector<std::complex<double>> &amplitudes, double strength,
                      double own) const
    {
        const std::size_t n = samples.powers.size();
        Matrix matrix = {n, Vector(n * n)};
        for (std::size_t j = 0; j < n; ++j) {
            for (std::size_t k = 0; k < n; ++k) {
                const std::complex<double> c = samples.noise[j * n + k];
                double value = std::norm(c) + (j == k ? own : 0);
                if (strength > 0)
                    value += 2 * strength * (std::conj(amplitudes[j]) * amplitudes[k] * c).real();
                matrix.at(j, k) = value / std::max(samples.days[j], samples.days[k]);
            }
        }
        return matrix;
    }

    const PowerSamples &samples;
    const Solver solver;
    Vector excess;
};

double gainOf(const std::vector<Fit> &fits, double place)
{
    double sum = 0;
    for (const Fit &fit : fits)
        sum += fit.gainAt(place);
    return sum;
}

// The maximum between two places around it, by thirds.
double maximumBetween(const std::vector<Fit> &fits, double from, double to)
{
    constexpr int rounds = 30;
    for (int round = 0; round < rounds; ++round) {
        const double third = (to - from) / 3;
        if (gainOf(fits, from + third) < gainOf(fits, to - third))
            from += third;
        else
            to -= third;
    }
    return (from + to) / 2;
}

double bestOf(const std::vector<Fit> &fits, double from, double to, int count)
{
    double best = from;
    double most = -1;
    for (int i = 0; i <= count; ++i) {
        const double place = from + (to - from) * i / count;
        const double gain = gainOf(fits, place);
        if (gain > most) {
            most = gain;
            best = place;
        }
    }
    const double apart = (to - from) / count;
    return maximumBetween(fits, std::max(from, best - apart), std::min(to, best + apart));
}

// Mean of the places in the range, each as likely as the powers are there, and the distance from it
// that holds one error of a Gaussian, or half of that which holds two. `scale` is the variance of
// the slope over what the weights promise.
Located meanOfPlaces(const std::vector<Fit> &fits, double from, double to, double best, int count,
                     double scale)
{
    const double most = gainOf(fits, best);
    double sum = 0;
    double mean = 0;
    Vector weights;
    for (int i = 0; i <= count; ++i) {
        const double place = from + (to - from) * i / count;
        weights.push_back(std::exp((gainOf(fits, place) - most) / (2 * scale)));
        sum += weights.back();
        mean += weights.back() * place;
    }
    mean /= sum;
    const double apart = (to - from) / count;
    // A place stands for all that are nearer to it than to its neighbours.
    const auto shareWithin = [&](double radius) {
        double inside = 0;
        for (int i = 0; i <= count; ++i) {
            const double place = from + apart * i;
            const double overlap = std::min(place + apart / 2, mean + radius) -
                                   std::max(place - apart / 2, mean - radius);
            inside += weights[std::size_t(i)] * std::max(0.0, overlap / apart);
        }
        return inside / sum;
    };
    const auto radiusOf = [&](double share) {
        double low = 0;
        double high = to - from;
        for (int round = 0; round < 40; ++round) {
            const double middle = (low + high) / 2;
            (shareWithin(middle) < share ? low : high) = middle;
        }
        return high;
    };
    return {mean, std::max(radiusOf(oneError), radiusOf(twoErrors) / 2)};
}

} // namespace

Located locate(const std::vector<PowerSamples> &sets, double from, double to, double step)
{
    constexpr int mostPlaces = 400;
    constexpr double perError = 3;
    const std::vector<Fit> fits(sets.begin(), sets.end());
    const double best = bestOf(fits, from, to, std::max(1, int(std::ceil((to - from) / step))));
    double curvature = 0;
    double slopeVariance = 0;
    for (const Fit &fit : fits)
        fit.addErrors(best, step / 10, fit.strengthAt(best), curvature, slopeVariance);
    const double error = std::sqrt(slopeVariance) / curvature;
    if (!(curvature > 0))
        return {best, std::numeric_limits<double>::quiet_NaN()};
    const double places = perError * (to - from) / error;
    if (places > mostPlaces)
        return {best, error};
    const int count = std::max(int(places), int((to - from) / step));
    return meanOfPlaces(fits, from, to, best, count, std::max(1.0, slopeVariance / curvature));
}

} // namespace Sky
