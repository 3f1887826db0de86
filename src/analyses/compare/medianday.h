#pragma once

#include "jobs/control.h"

#include <vector>

/// The mean day of many and how far each differs from the others. A transit telescope sees the same
/// sky at the same sidereal time, so that what differs is weather, interference or a transient.
namespace Compare {

/// Days with which a day is compared: fewer do not tell whose a difference is.
inline constexpr int fewestOthers = 3;

struct MedianDay {
    /// Median of all days at each point; NaN where none has a value.
    std::vector<float> median;
    /// Of each day: its value less the median of the other days, over what noise of standard
    /// deviation 1 scatters there; NaN where fewer than fewestOthers other days have a value. Its
    /// own value is not in that median, so that a strong day does not hide itself.
    std::vector<std::vector<float>> differences;
};

/// @param days    values of each, `points` many, scaled to noise of standard deviation 1; NaN where
///                a day has none. A null pointer stands for a day that does not count
/// @return differences has an empty row for a day that does not count; nothing at all when stopped
MedianDay medianDay(const std::vector<const float *> &days, int points,
                    const Jobs::Control &control = {});

/// Variance of the median of so many independent normal values of variance 1. From 3 values on it
/// is right to 0.3 %: pi / (2 (n + c)), where c was fitted to tables of order statistics.
double varianceOfMedian(int count);

} // namespace Compare
