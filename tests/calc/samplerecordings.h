#pragma once

#include "support/recordings.h"

#include <cmath>

namespace TestSupport {

/// Noise whose sums over channels depend on the order of the additions.
inline float roughSample(int point, int module, int channel, int ray)
{
    const unsigned key =
        (unsigned(point) * 64 + unsigned(channel)) * 8 + unsigned(module * 4 + ray);
    return float((key * 2654435761U) >> 8) * 1.1F;
}

/// Changes the frequencies so that each of 32 bands is `lag` samples later than the next one
/// at this dispersion.
inline void spreadBands(ObservationData &data, double dispersion, double lag)
{
    const double perSample = data.tresolution / (0x1.034ccccccccccp+12 * dispersion);
    for (int c = 0; c < int(data.fbands.size()); ++c)
        data.fbands[std::size_t(c)] =
            1 / std::sqrt(1 / (111.5 * 111.5) + (31 - c) * lag * perSample);
}

} // namespace TestSupport
