#include "calc/whitening.h"

#include "calc/localmedian.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tools {

namespace {

constexpr double highestOfNoise = 30;
// Interpolation between so close values is right to 1e-6.
constexpr int entriesPerRatio = 64;

int widthOf(int window)
{
    return std::max(3, window | 1);
}

double lawOfMedian(double ratio, int m)
{
    double sum = 0;
    for (int j = m; j <= 2 * m; ++j)
        sum += std::log1p(ratio / j);
    return sum;
}

} // namespace

Whitening::Whitening(int window) : width(widthOf(window))
{
    const int m = (width - 1) / 2;
    do {
        table.push_back(lawOfMedian(double(table.size()) / entriesPerRatio, m));
    } while (table.back() < highestOfNoise);
    lastSlope = (table.back() - table[table.size() - 2]) * entriesPerRatio;
}

double Whitening::power(double ratio) const
{
    const double position = ratio * entriesPerRatio;
    const double last = double(table.size() - 1);
    if (!(position < last))
        return table.back() + (position - last) / entriesPerRatio * lastSlope;
    const auto entry = std::size_t(position);
    return table[entry] + (position - double(entry)) * (table[entry + 1] - table[entry]);
}

std::vector<float> Whitening::powers(const std::vector<double> &amplitudes, std::size_t first) const
{
    const std::vector<double> medians = localMedian(amplitudes, width, first);
    std::vector<float> result(amplitudes.size());
    for (std::size_t i = 0; i < amplitudes.size(); ++i) {
        const double ratio = amplitudes[i] / medians[i];
        result[i] = std::isfinite(ratio) ? float(power(ratio * ratio)) : 0.0F;
    }
    return result;
}

double medianWhitenedPower(double shape, int window)
{
    return shape == 1 ? lawOfMedian(1, widthOf(window) / 2) : medianPower(shape);
}

} // namespace Tools
