#pragma once

#include <vector>

namespace Tools {

/// A line of an amplitude spectrum that stands out of the noise around it.
struct SpectrumLine {
    int number = 0;
    double amplitude = 0;
    double snr = 0; ///< amplitude over the noise level
};

/// Noise level around every line of an amplitude spectrum, see localNoise(). Line 0 is the mean of
/// the series, not noise; it has the level of line 1.
///
/// @param window  lines, odd
std::vector<double> amplitudeNoise(const std::vector<double> &spectrum, int window);

/// The `count` lines that stand highest above their noise levels, the highest first. Only lines
/// higher than both neighbours count, for a frequency spreads over several; line 0 does not count.
std::vector<SpectrumLine> strongestLines(const std::vector<double> &spectrum,
                                         const std::vector<double> &levels, int count);

/// Lines, without line 0, that noise of these levels is expected to lift above an amplitude:
/// the sum of exp(-amplitude^2 / (2 level^2)).
double expectedAbove(const std::vector<double> &levels, double amplitude);

} // namespace Tools
