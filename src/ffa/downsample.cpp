#include "ffa/downsample.h"

#include "ffa/ffaplan.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Ffa {

void downsample(const float *data, quint64 size, double factor, float *out)
{
    if (!(factor > 1 && factor <= double(size)))
        throw std::invalid_argument("Downsampling factor must verify: 1 < f <= size");
    const quint64 length = downsampledLength(size, factor);
    for (quint64 i = 0; i < length; ++i) {
        const double start = double(i) * factor;
        const double end = start + factor;
        // Truncation is floor here, and the signed conversion is a single instruction.
        const auto first = qint64(start);
        const auto last = std::min(qint64(end), qint64(size - 1));
        float sum = float(double(first + 1) - start) * data[first];
        for (qint64 j = first + 1; j < last; ++j)
            sum += data[j];
        sum += float(end - double(last)) * data[last];
        out[i] = sum;
    }
}

double downsampledVariance(quint64 size, double factor)
{
    const double whole = std::floor(factor);
    const double x = double(downsampledLength(size, factor)) * (factor - whole);
    if (x > 1)
        return factor - 1.0 / 3.0;
    return (whole - 1) * (whole - 1) + 2.0 / 3.0 * (x * x) - x + 1;
}

} // namespace Ffa
