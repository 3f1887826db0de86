#include "ffa/downsample.h"

#include "ffa/ffaplan.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Ffa {

namespace {

// Output sample `index`; any factor, any place.
float averagedSample(const float *data, quint64 size, double factor, quint64 index)
{
    const double start = double(index) * factor;
    const double end = start + factor;
    const auto first = qint64(start);
    const auto last = std::min(qint64(end), qint64(size - 1));
    float sum = float(double(first + 1) - start) * data[first];
    for (qint64 j = first + 1; j < last; ++j)
        sum += data[j];
    return sum + float(end - double(last)) * data[last];
}

// Mean of cos(2 pi i turns) over i = 0 .. count - 1.
double meanCosine(double turns, double count)
{
    const double half = M_PI * (turns - std::round(turns));
    if (std::abs(half) * count < 1e-6)
        return 1;
    return std::cos((count - 1) * half) * std::sin(count * half) / (count * std::sin(half));
}

constexpr int fourierTerms = 64;

} // namespace

void downsample(const float *data, quint64 size, double factor, float *out)
{
    if (!(factor > 1 && factor <= double(size)))
        throw std::invalid_argument("Downsampling factor must verify: 1 < f <= size");
    const quint64 length = downsampledLength(size, factor);
    const auto whole = qint64(factor);
    // The same sums: of the samples inside, all but one or so are there for every output
    // sample. A loop of fixed length and a selection are predicted, one of varying length is not.
    for (quint64 i = 0; i + 1 < length; ++i) {
        const double start = double(i) * factor;
        const double end = start + factor;
        const auto first = qint64(start);
        const auto last = qint64(end);
        float sum = float(double(first + 1) - start) * data[first];
        for (qint64 j = first + 1; j < first + whole; ++j)
            sum += data[j];
        const float oneMore = sum + data[first + whole];
        sum = first + whole < last ? oneMore : sum;
        for (qint64 j = first + whole + 1; j < last; ++j)
            sum += data[j];
        out[i] = sum + float(end - double(last)) * data[last];
    }
    // The last interval may end beyond the data.
    out[length - 1] = averagedSample(data, size, factor, length - 1);
}

double downsampledVariance(quint64 size, double factor)
{
    const double whole = std::floor(factor);
    const double x = double(downsampledLength(size, factor)) * (factor - whole);
    if (x > 1)
        return factor - 1.0 / 3.0;
    return (whole - 1) * (whole - 1) + 2.0 / 3.0 * (x * x) - x + 1;
}

// With the fraction x of i factor, x (1 - x) = 1/6 - sum of cos(2 pi k x) / (pi k)^2 over k >= 1:
// its mean takes as many terms for a long series as for a short one.
double trueVariance(quint64 size, double factor)
{
    const double count = double(downsampledLength(size, factor));
    double shared = 1.0 / 6;
    for (int k = 1; k <= fourierTerms; ++k)
        shared -= meanCosine(k * (factor - std::floor(factor)), count) / (M_PI * M_PI * k * k);
    return factor - 2 * shared;
}

} // namespace Ffa
