#include "ffa/boxcar.h"

#include "ffa/elementwise.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace Ffa {

void circularPrefixSum(const float *x, quint64 n, quint64 count, float *out)
{
    double sum = 0;
    for (quint64 i = 0; i < std::min(n, count); ++i) {
        sum += double(x[i]);
        out[i] = float(sum);
    }
    for (quint64 wraps = 1, begin = n; begin < count; ++wraps, begin += n)
        addConstant(out, float(wraps) * out[n - 1], std::min(n, count - begin), out + begin);
}

BoxcarShape boxcarShape(quint32 bins, quint64 width)
{
    const float b = float(bins);
    const float w = float(width);
    const float height = std::sqrt((b - w) / (b * w));
    const float base = w * height / (b - w);
    return {height + base, base};
}

void boxcarSnr(const float *profile, quint32 bins, const quint64 *widths, quint64 nwidths,
               float stdnoise, float *out)
{
    boxcarSnr(ConstBlock{profile, 1, bins}, widths, nwidths, stdnoise, out);
}

void boxcarSnr(ConstBlock profiles, const quint64 *widths, quint64 nwidths, float stdnoise,
               float *out)
{
    std::vector<float> sums(profiles.columns + widestOf(widths, nwidths));
    boxcarSnr(profiles, widths, nwidths, stdnoise, sums.data(), out);
}

void boxcarSnr(ConstBlock profiles, const quint64 *widths, quint64 nwidths, float stdnoise,
               float *sums, float *out)
{
    const quint64 bins = profiles.columns;
    const quint64 count = bins + widestOf(widths, nwidths);
    for (quint64 row = 0; row < profiles.rows; ++row) {
        circularPrefixSum(profiles.row(row), bins, count, sums);
        const float total = sums[bins - 1];
        for (quint64 j = 0; j < nwidths; ++j, ++out) {
            const BoxcarShape shape = boxcarShape(quint32(bins), widths[j]);
            const float best = largestDifference(sums + widths[j], sums, bins);
            *out = (shape.heightAndBase * best - shape.base * total) / stdnoise;
        }
    }
}

quint64 widestOf(const quint64 *widths, quint64 nwidths)
{
    return nwidths ? *std::max_element(widths, widths + nwidths) : 0;
}

void checkTrialWidths(const quint64 *widths, quint64 nwidths, quint64 columns)
{
    for (quint64 j = 0; j < nwidths; ++j) {
        if (widths[j] == 0 || widths[j] >= columns)
            throw std::invalid_argument("trial widths must be all > 0 and < columns");
    }
}

void checkStdNoise(float stdnoise)
{
    if (!(stdnoise > 0))
        throw std::invalid_argument("stdnoise must be > 0");
}

} // namespace Ffa
