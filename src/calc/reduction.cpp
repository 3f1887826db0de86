#include "calc/reduction.h"

#include "base/targetclones.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace Tools {

namespace {

struct Extent {
    float low = 0;
    float high = 0;
    double sum = 0;     // counted from the first value, so that a high level costs no digits
    double squares = 0; // counted likewise
};

template <typename Value>
[[gnu::always_inline]] inline Extent extentOfValues(const Value *values, int count)
{
    Value low = values[0];
    Value high = values[0];
    const double origin = values[0];
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < count; ++i) {
        low = values[i] < low ? values[i] : low;
        high = values[i] > high ? values[i] : high;
        const double value = values[i] - origin;
        sum += value;
        squares += value * value;
    }
    return {float(low), float(high), sum, squares};
}

ZRT_TARGET_CLONES
Extent extentOf(const float *samples, int count)
{
    return extentOfValues(samples, count);
}

ZRT_TARGET_CLONES
Extent extentOf(const double *sums, int count)
{
    return extentOfValues(sums, count);
}

// What a column shows; NaN of no finite value.
struct Column {
    float low = NAN;
    float high = NAN;
    float mean = NAN;
    float variance = NAN;
};

template <typename Value>
Column columnOf(const Value *values, int count)
{
    const Extent extent = extentOf(values, count);
    const double mean = extent.sum / count;
    return {extent.low, extent.high, float(double(values[0]) + mean),
            float(std::max(0.0, extent.squares / count - mean * mean))};
}

// The same of the finite values, where there are others.
template <typename Value>
Column columnOfFinite(const Value *values, int count)
{
    const Column column = columnOf(values, count);
    if (std::isfinite(column.mean))
        return column;
    std::vector<Value> finite;
    std::copy_if(values, values + count, std::back_inserter(finite),
                 [](Value value) { return std::isfinite(value); });
    return finite.empty() ? Column() : columnOf(finite.data(), int(finite.size()));
}

// What the columns `begin` .. `end - 1` of a row show of `points` points from `offset` on.
void fillRow(Reduction &reduction, int row, int begin, int end, const ObservationData &data,
             const std::vector<double> &sums, int offset, int points)
{
    const Column column = row == reduction.channels
                              ? columnOfFinite(sums.data() + offset, points)
                              : columnOfFinite(data.samples[0][row][0] + offset, points);
    for (int i = begin; i < end; ++i) {
        const std::size_t index = reduction.index(row, i);
        reduction.low[index] = column.low;
        reduction.high[index] = column.high;
        reduction.mean[index] = column.mean;
        reduction.variance[index] = column.variance;
    }
}

int rowsOf(const Reduction &reduction, const std::vector<double> &sums)
{
    return reduction.channels + (sums.empty() ? 0 : 1);
}

} // namespace

int Reduction::columnOf(int point) const
{
    int column = int(qint64(point - first) * columns / count);
    // Columns begin at rounded points.
    while (column + 1 < columns && columnFirst(column + 1) <= point)
        ++column;
    return std::clamp(column, 0, columns - 1);
}

Reduction emptyReduction(int first, int count, int columns, int channels)
{
    Reduction reduction{first, count, columns, channels, {}, {}, {}, {}};
    const std::size_t size = std::size_t(channels + 1) * std::size_t(columns);
    for (std::vector<float> *values :
         {&reduction.low, &reduction.high, &reduction.mean, &reduction.variance})
        values->assign(size, std::numeric_limits<float>::quiet_NaN());
    return reduction;
}

void fillColumns(Reduction &reduction, int column, int columns, const ObservationData &data,
                 const std::vector<double> &sums, int offset)
{
    const int begin = reduction.columnFirst(column);
    for (int row = 0; row < rowsOf(reduction, sums); ++row) {
        for (int i = column; i < column + columns; ++i) {
            const int point = reduction.columnFirst(i);
            const int points = reduction.columnFirst(i + 1) - point;
            fillRow(reduction, row, i, i + 1, data, sums, offset + point - begin, points);
        }
    }
}

void fillGlance(Reduction &reduction, int column, int columns, const ObservationData &data,
                const std::vector<double> &sums, int offset, int points)
{
    for (int row = 0; row < rowsOf(reduction, sums); ++row)
        fillRow(reduction, row, column, column + columns, data, sums, offset, points);
}

RowMoments rowMoments(const Reduction &reduction, int row, int beginColumn, int endColumn)
{
    RowMoments moments;
    double sum = 0;
    for (const bool isMeanKnown : {false, true}) {
        double squares = 0;
        for (int i = beginColumn; i < endColumn; ++i) {
            const std::size_t index = reduction.index(row, i);
            const double mean = reduction.mean[index];
            if (!std::isfinite(mean))
                continue;
            const int points = reduction.columnFirst(i + 1) - reduction.columnFirst(i);
            if (isMeanKnown) {
                const double distance = mean - moments.mean;
                squares += points * (reduction.variance[index] + distance * distance);
                continue;
            }
            const double low = reduction.low[index];
            const double high = reduction.high[index];
            moments.min = moments.points == 0 ? low : std::min(moments.min, low);
            moments.max = moments.points == 0 ? high : std::max(moments.max, high);
            moments.points += points;
            sum += points * mean;
        }
        if (moments.points == 0)
            return moments;
        moments.mean = sum / double(moments.points);
        moments.sigma = std::sqrt(squares / double(moments.points));
    }
    return moments;
}

ObservationData recordOfMeans(const Reduction &reduction, const ObservationData &header)
{
    ObservationData data = header;
    data.modules = 1;
    data.rays = 1;
    data.channels = reduction.channels;
    data.npoints = reduction.columns;
    data.tresolution = header.tresolution * reduction.count / reduction.columns;
    const auto block = SampleBlock::allocate(1, data.channels, 1, data.npoints);
    if (!block)
        return data;
    for (int channel = 0; channel < data.channels; ++channel)
        std::copy_n(reduction.mean.begin() + std::ptrdiff_t(reduction.index(channel, 0)),
                    reduction.columns, block->ray(0, channel, 0));
    data.samples = Samples(block);
    return data;
}

} // namespace Tools
