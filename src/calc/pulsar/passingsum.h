#pragma once

#include "calc/banddelays.h"

#include <vector>

namespace Pulsar {

/// The sum of the bands of one ray over a stretch, made while the points of the recording pass by
/// in the order of the file: no samples are kept. It is that of sumChannels(). The bands may be
/// added in another order; sums of floats of like size are exact, so that it does not show.
class PassingSum {
public:
    /// @param delays  of sumBands bands, all of which have shifts
    /// @param first   point at which the last band begins, counted as those of add()
    /// @param count   points of the stretch
    PassingSum(const Tools::BandDelays &delays, qint64 first, int count);

    /// Takes in what the stretch needs of some points. Every point comes once.
    ///
    /// @param bands       samples of all bands at the first point
    /// @param stride      values from one point to the next
    /// @param firstPoint  its number
    void add(const float *bands, qint64 stride, qint64 firstPoint, int points);

    /// `count` sums; what no band was there for is 0.
    const std::vector<double> &sums() const { return sum; }

private:
    std::vector<qint64> firsts; // point of each band that belongs to the first sum
    std::vector<double> sum;
};

} // namespace Pulsar
