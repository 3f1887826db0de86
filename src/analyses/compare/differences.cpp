#include "analyses/compare/differences.h"

#include "calc/robuststatistics.h"

#include <algorithm>
#include <boost/math/statistics/univariate_statistics.hpp>
#include <cmath>
#include <limits>
#include <numbers>

namespace Compare {

namespace {

constexpr int mostWidths = 12; // up to 2048 points

double normalTail(double sigma)
{
    return std::erfc(sigma / std::numbers::sqrt2) / 2;
}

// Probability that of two normal values with this correlation the first is below a limit and the
// second above it, by Simpson's rule over the second.
double crossing(double limit, double correlation)
{
    constexpr double reach = 8; // sigma above the limit
    constexpr int steps = 160;
    const double own = std::sqrt(1 - correlation * correlation);
    const auto density = [&](double x) {
        const double root = std::sqrt(2 * std::numbers::pi);
        return std::exp(-x * x / 2) / root * normalTail((correlation * x - limit) / own);
    };
    double sum = density(limit) + density(limit + reach);
    for (int i = 1; i < steps; ++i)
        sum += (i % 2 == 1 ? 4 : 2) * density(limit + reach * i / steps);
    return sum * reach / (3 * steps);
}

// The local extremes of one width above the limit.
void addExtremes(const DayBoxcars &boxcars, int day, int widthIndex, int points, double limit,
                 std::vector<Difference> &found)
{
    const int width = 1 << widthIndex;
    const auto strength = [&](int first) {
        const double snr = first < 0 ? 0 : std::abs(boxcars.snr(first, widthIndex));
        return std::isfinite(snr) ? snr : 0;
    };
    double before = 0;
    double here = strength(0);
    for (int first = 0; first + width <= points; ++first) {
        const double next = strength(first + 1);
        if (here >= limit && here > before && here >= next)
            found.push_back({day, first, width, boxcars.snr(first, widthIndex), 0});
        before = here;
        here = next;
    }
}

} // namespace

DayBoxcars::DayBoxcars(const std::vector<float> &differences)
    : sums(differences.size() + 1), missing(differences.size() + 1)
{
    const int points = int(differences.size());
    for (std::size_t i = 0; i < differences.size(); ++i) {
        const bool isNumber = std::isfinite(differences[i]);
        sums[i + 1] = sums[i] + (isNumber ? double(differences[i]) : 0);
        missing[i + 1] = missing[i] + (isNumber ? 0 : 1);
    }
    std::vector<double> values;
    for (int k = 0; k < mostWidths && (1 << k) * fewestInDay <= points; ++k) {
        const int width = 1 << k;
        scatters.push_back(1);
        counts.push_back(0);
        for (int first = 0; first + width <= points; ++first)
            counts.back() += missing[std::size_t(first + width)] == missing[std::size_t(first)];
        values.clear();
        // A quarter apart they say all that they know of their scatter.
        for (int first = 0; first + width <= points; first += std::max(1, width / 4)) {
            if (const double value = snr(first, k); std::isfinite(value))
                values.push_back(value);
        }
        scatters.back() =
            std::max(1.0, Tools::madToSigma * Tools::medianAbsoluteDeviation(values, 0));
    }
}

double DayBoxcars::snr(int first, int widthIndex) const
{
    const std::size_t begin = std::size_t(first);
    const std::size_t end = begin + (std::size_t(1) << widthIndex);
    if (first < 0 || end >= sums.size() || missing[end] != missing[begin])
        return std::numeric_limits<double>::quiet_NaN();
    return (sums[end] - sums[begin]) /
           (scatters[std::size_t(widthIndex)] * std::sqrt(double(end - begin)));
}

void DayBoxcars::shareScatters(std::vector<DayBoxcars> &days)
{
    for (int k = 0; k < mostWidths; ++k) {
        std::vector<double> all;
        for (const DayBoxcars &day : days) {
            if (k < day.widths())
                all.push_back(day.scatters[std::size_t(k)]);
        }
        if (all.empty())
            return;
        const double common = boost::math::statistics::median(all);
        for (DayBoxcars &day : days) {
            if (k < day.widths())
                day.scatters[std::size_t(k)] = common;
        }
    }
}

double expectedByChance(const std::vector<DayBoxcars> &days, double snr)
{
    std::vector<double> counts;
    for (const DayBoxcars &day : days) {
        counts.resize(std::max(counts.size(), std::size_t(day.widths())));
        for (int k = 0; k < day.widths(); ++k)
            counts[std::size_t(k)] += day.count(k);
    }
    double expected = 0;
    for (std::size_t k = 0; k < counts.size(); ++k) {
        const double correlation = 1 - 1.0 / double(std::size_t(1) << k);
        expected += 2 * counts[k] * crossing(std::abs(snr), correlation);
    }
    return expected;
}

double limitFor(const std::vector<DayBoxcars> &days, double byChance)
{
    double low = 1;
    double high = 20;
    constexpr double accuracy = 1e-4;
    while (high - low > accuracy) {
        const double middle = (low + high) / 2;
        (expectedByChance(days, middle) > byChance ? low : high) = middle;
    }
    return high;
}

std::vector<Difference> findDifferences(const std::vector<DayBoxcars> &days, double limit,
                                        const Jobs::Control &control)
{
    std::vector<Difference> all;
    for (std::size_t day = 0; day < days.size(); ++day) {
        if (control.isStopped())
            return {};
        const int points = days[day].points();
        std::vector<Difference> found;
        for (int k = 0; k < days[day].widths(); ++k)
            addExtremes(days[day], int(day), k, points, limit, found);
        std::stable_sort(found.begin(), found.end(), [](const Difference &a, const Difference &b) {
            return std::abs(a.snr) > std::abs(b.snr);
        });
        std::vector<bool> taken(std::size_t(points) + 2); // with a point on either side
        for (const Difference &one : found) {
            const auto begin = taken.begin() + one.first;
            if (std::find(begin, begin + one.width + 2, true) != begin + one.width + 2)
                continue;
            std::fill(begin + 1, begin + 1 + one.width, true);
            all.push_back(one);
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const Difference &a, const Difference &b) {
        return std::abs(a.snr) > std::abs(b.snr);
    });
    return all;
}

} // namespace Compare
