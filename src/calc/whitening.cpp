#include "calc/whitening.h"

#include "calc/localmedian.h"

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

double lawOfMedian(double ratio, int first, int last)
{
    double sum = 0;
    for (int j = first; j <= last; ++j)
        sum += std::log1p(ratio / j);
    return sum;
}

// What padding to double the length adds to P, times the window. In 120 000 spectra of 8192 lines
// of white noise, windows of 65 to 513, the negative logarithm of the share above P exceeds P by
// that; it is the same for all these windows within 0.05 up to P = 4 and 1 at 10. Beyond 12 it goes
// on straight.
double addedByPadding(double power)
{
    constexpr double highest = 12;
    constexpr double slopeBeyond = -4.5;
    const double p = std::min(power, highest);
    return p * (-0.679 + p * (1.0954 + p * (-0.22625 + p * (0.016361 - 0.00043844 * p)))) +
           slopeBeyond * (power - p);
}

double interpolated(const std::vector<double> &table, double position)
{
    const auto entry = std::size_t(position);
    return table[entry] + (position - double(entry)) * (table[entry + 1] - table[entry]);
}

} // namespace

Whitening::Whitening(int window, Padding padding) : width(widthOf(window))
{
    const int m = (width - 1) / 2;
    const auto law = [&](double ratio, int first) {
        const double independent = lawOfMedian(ratio, first, 2 * m);
        return padding == Padding::None ? independent
                                        : independent + addedByPadding(independent) / width;
    };
    for (int i = 0; i <= entriesPerRatio; ++i)
        below.push_back(law(double(i) / entriesPerRatio, m + 1));
    do {
        above.push_back(law(1 + double(above.size()) / entriesPerRatio, m));
    } while (above.back() < highestOfNoise);
    lastSlope = (above.back() - above[above.size() - 2]) * entriesPerRatio;
}

double Whitening::power(double ratio) const
{
    if (ratio < 1)
        return interpolated(below, ratio * entriesPerRatio);
    if (ratio == 1)
        return (below.back() + above.front()) / 2;
    const double position = (ratio - 1) * entriesPerRatio;
    const double last = double(above.size() - 1);
    if (!(position < last))
        return above.back() + (position - last) / entriesPerRatio * lastSlope;
    return interpolated(above, position);
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

} // namespace Tools
