#pragma once

#include <vector>

namespace Tools {

/// Standard deviation of a normal distribution per median absolute deviation.
inline constexpr double madToSigma = 1.4826;

/// Median of the absolute deviations of the finite values from `median`; 0 of none.
double medianAbsoluteDeviation(std::vector<double> values, double median);

/// Standard deviation of normal noise, outliers hardly counting: 1.4826 times the median absolute
/// deviation. Samples so coarse that more than 2 % of the deviations equal their median do not tell
/// it that way: few whole numbers give a median of 0 or 1. Theirs is the sample standard deviation
/// of the values within 3.5 sigma of the centre, where sigma allows for half a step more in the
/// median: what the coarse samples scatter, rounding included.
///
/// @param values      finite and other numbers; the others do not count
/// @param centre      their median
/// @param deviation   their median absolute deviation from it
/// @param resolution  values that differ by less count as equal
/// @return 0 where all values are equal
template <typename Value>
double noiseSigma(const std::vector<Value> &values, double centre, double deviation,
                  double resolution);

/// Distance below which numbers around `value` that were stored as floats are equal.
double floatResolution(double value);

/// Where a series lies and how far it scatters, outliers hardly counting.
struct RobustLevel {
    double median = 0;
    double spread = 0; ///< see noiseSigma()
};

/// Level and spread of the finite values; both are 0 where there is none.
///
/// @param scratch  any; keeps its memory for the next call
RobustLevel robustLevel(const float *values, int count, std::vector<float> &scratch);

/// How far a part of a series stands out.
struct PartSignal {
    double snr = 0;       ///< 0 where the surroundings have no noise or are missing
    int surroundings = 0; ///< points that the part is compared with
};

/// S/N of the points `begin` .. `end - 1` of a series against what stands around them:
/// sum(x - m) / (s sqrt(n)), n finite points in the part, m the median and s the robust standard
/// deviation (noiseSigma) of up to 5 n, at least 256, points on either side.
PartSignal partSignal(const std::vector<double> &series, int begin, int end);

} // namespace Tools
