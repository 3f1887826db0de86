#pragma once

#include <vector>

namespace Tools {

/// Standard deviation of a normal distribution per median absolute deviation.
inline constexpr double madToSigma = 1.4826;

/// Median of the absolute deviations of the finite values from `median`; 0 of none.
double medianAbsoluteDeviation(std::vector<double> values, double median);

/// Where a series lies and how far it scatters, outliers hardly counting.
struct RobustLevel {
    double median = 0;
    double spread = 0; ///< 1.4826 MAD; the standard deviation where that is 0
};

/// Of the finite values; both are 0 of none.
///
/// @param scratch  any; keeps its memory for the next call
RobustLevel robustLevel(const float *values, int count, std::vector<float> &scratch);

/// How far a part of a series stands out.
struct PartSignal {
    double snr = 0;       ///< 0 where the surroundings have no noise or are missing
    int surroundings = 0; ///< points that the part is compared with
};

/// S/N of the points `begin` .. `end - 1` of a series against what stands around them:
/// sum(x - m) / (s sqrt(n)), n finite points in the part, m the median and s = 1.4826 MAD of up to
/// 5 n, at least 256, points on either side.
PartSignal partSignal(const std::vector<double> &series, int begin, int end);

} // namespace Tools
