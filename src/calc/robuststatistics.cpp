#include "calc/robuststatistics.h"

#include "calc/seriesstatistics.h"

#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace Tools {

namespace {

constexpr int sideFactor = 5;     // surroundings on a side, lengths of the part
constexpr int shortestSide = 256; // points

// Reorders the values, at least one; of an even number the mean of the two in the middle.
template <typename Value>
double medianOf(std::vector<Value> &values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return double(*middle);
    return (double(*std::max_element(values.begin(), middle)) + double(*middle)) / 2;
}

// Leaves the deviations in the values.
template <typename Value>
double deviationOf(std::vector<Value> &values, double median)
{
    for (Value &value : values)
        value = Value(std::abs(double(value) - median));
    return medianOf(values);
}

double standardDeviation(const std::vector<float> &values)
{
    double sum = 0;
    for (const float value : values)
        sum += double(value);
    const double mean = sum / double(values.size());
    double squares = 0;
    for (const float value : values)
        squares += (double(value) - mean) * (double(value) - mean);
    return values.size() > 1 ? std::sqrt(squares / double(values.size() - 1)) : 0;
}

} // namespace

double medianAbsoluteDeviation(std::vector<double> values, double median)
{
    values.erase(std::remove_if(values.begin(), values.end(),
                                [](double value) { return !std::isfinite(value); }),
                 values.end());
    return values.empty() ? 0 : deviationOf(values, median);
}

RobustLevel robustLevel(const float *values, int count, std::vector<float> &scratch)
{
    scratch.clear();
    std::copy_if(values, values + count, std::back_inserter(scratch),
                 [](float value) { return std::isfinite(value); });
    if (scratch.empty())
        return {};
    RobustLevel level;
    level.median = medianOf(scratch);
    const double sigma = standardDeviation(scratch);
    const double deviation = deviationOf(scratch, level.median);
    level.spread = deviation > 0 ? madToSigma * deviation : sigma;
    return level;
}

PartSignal partSignal(const std::vector<double> &series, int begin, int end)
{
    const int size = int(series.size());
    if (begin < 0 || end > size || begin >= end)
        return {};
    const int n = end - begin;
    const qint64 side = std::max<qint64>(shortestSide, qint64(sideFactor) * n);
    const auto at = [&](qint64 i) {
        return series.begin() + std::ptrdiff_t(std::clamp<qint64>(i, 0, size));
    };
    std::vector<double> around(at(begin - side), at(begin));
    around.insert(around.end(), at(end), at(end + side));
    const SeriesStatistics noise = seriesStatistics(around);
    PartSignal signal;
    signal.surroundings = int(noise.count);
    const double deviation =
        noise.count > 0 ? medianAbsoluteDeviation(std::move(around), noise.median) : 0;
    if (deviation == 0)
        return signal;
    double sum = 0;
    int count = 0;
    for (int i = begin; i < end; ++i) {
        if (!std::isfinite(series[std::size_t(i)]))
            continue;
        sum += series[std::size_t(i)] - noise.median;
        ++count;
    }
    if (count > 0)
        signal.snr = sum / (madToSigma * deviation * std::sqrt(double(count)));
    return signal;
}

} // namespace Tools
