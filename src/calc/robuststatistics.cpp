#include "calc/robuststatistics.h"

#include "calc/seriesstatistics.h"

#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>

namespace Tools {

namespace {

constexpr int sideFactor = 5;     // surroundings on a side, lengths of the part
constexpr int shortestSide = 256; // points

// Beyond this share of deviations that equal their median, the step between neighbouring values
// exceeds a twentieth of sigma, and the median can be wrong by some per cent.
constexpr double coarseShare = 0.02;
constexpr double clipSigmas = 3.5;

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

// Takes in the finite values within `reach` of the centre.
template <typename Value>
double standardDeviation(const std::vector<Value> &values, double centre, double reach)
{
    const auto isInside = [&](Value value) { return std::abs(double(value) - centre) <= reach; };
    qint64 count = 0;
    double sum = 0;
    for (const Value value : values) {
        if (isInside(value)) {
            sum += double(value) - centre;
            ++count;
        }
    }
    const double mean = centre + sum / double(std::max<qint64>(count, 1));
    double squares = 0;
    for (const Value value : values) {
        if (isInside(value))
            squares += (double(value) - mean) * (double(value) - mean);
    }
    return count > 1 ? std::sqrt(squares / double(count - 1)) : 0;
}

} // namespace

double medianAbsoluteDeviation(std::vector<double> values, double median)
{
    values.erase(std::remove_if(values.begin(), values.end(),
                                [](double value) { return !std::isfinite(value); }),
                 values.end());
    return values.empty() ? 0 : deviationOf(values, median);
}

double floatResolution(double value)
{
    // Half a unit for each sample of two differences; a unit is at most this part of the value.
    constexpr double roundings = 1.5;
    return roundings * std::numeric_limits<float>::epsilon() * std::abs(value);
}

template <typename Value>
double noiseSigma(const std::vector<Value> &values, double centre, double deviation,
                  double resolution)
{
    qint64 finite = 0;
    qint64 equal = 0;
    double step = std::numeric_limits<double>::infinity();
    for (const Value value : values) {
        const double distance = std::abs(std::abs(double(value) - centre) - deviation);
        if (!std::isfinite(distance))
            continue;
        ++finite;
        if (distance <= resolution)
            ++equal;
        else
            step = std::min(step, distance);
    }
    const double sigma = madToSigma * deviation;
    // The median itself is one or two of the deviations.
    if (deviation > resolution && double(equal - 2) <= coarseShare * double(finite))
        return sigma;
    if (deviation > resolution) // of values that all lie half a step from the centre
        step = std::min(step, 2 * deviation);
    if (std::isinf(step))
        return 0;
    // The median of coarse values is right to half a step.
    return standardDeviation(values, centre, clipSigmas * madToSigma * (deviation + step / 2));
}

template double noiseSigma(const std::vector<float> &, double, double, double);
template double noiseSigma(const std::vector<double> &, double, double, double);

RobustLevel robustLevel(const float *values, int count, std::vector<float> &scratch)
{
    scratch.clear();
    std::copy_if(values, values + count, std::back_inserter(scratch),
                 [](float value) { return std::isfinite(value); });
    if (scratch.empty())
        return {};
    RobustLevel level;
    level.median = medianOf(scratch);
    const double deviation = deviationOf(scratch, level.median);
    scratch.assign(values, values + count);
    level.spread = noiseSigma(scratch, level.median, deviation, floatResolution(level.median));
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
    if (noise.count == 0)
        return signal;
    const double sigma =
        noiseSigma(around, noise.median, medianAbsoluteDeviation(around, noise.median),
                   floatResolution(noise.median));
    if (sigma == 0)
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
        signal.snr = sum / (sigma * std::sqrt(double(count)));
    return signal;
}

} // namespace Tools
