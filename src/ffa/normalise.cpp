#include "ffa/normalise.h"

#include <cmath>
#include <limits>
#include <utility>

namespace Ffa {

namespace {

template <typename Value>
double meanOf(const Value *data, qint64 count)
{
    double sum = 0;
    for (qint64 i = 0; i < count; ++i)
        sum += double(data[i]);
    return sum / double(count);
}

template <typename Value>
double deviationAround(double mean, const Value *data, qint64 count)
{
    double squares = 0;
    for (qint64 i = 0; i < count; ++i) {
        const double rest = double(data[i]) - mean;
        squares += rest * rest;
    }
    return std::sqrt(squares / double(count - 1));
}

template <typename Value>
void normalize(Value *data, qint64 count)
{
    if (count < 1)
        return;
    const double mean = meanOf(data, count);
    const double sigma = deviationAround(mean, data, count);
    for (qint64 i = 0; i < count; ++i)
        data[i] = Value((double(data[i]) - mean) / sigma);
}

} // namespace

void normalizeSeries(float *data, quint64 size)
{
    normalize(data, qint64(size));
}

void normalizeSeries(double *data, qint32 count)
{
    normalize(data, count);
}

std::vector<float> normalizeSeries(std::vector<float> series)
{
    normalize(series.data(), qint64(series.size()));
    return series;
}

std::vector<double> normalizeSeries(std::vector<double> series)
{
    normalize(series.data(), qint64(series.size()));
    return series;
}

double sampleDeviation(const double *data, qint32 count)
{
    if (count < 2)
        return std::numeric_limits<double>::quiet_NaN();
    return deviationAround(meanOf(data, count), data, count);
}

} // namespace Ffa
