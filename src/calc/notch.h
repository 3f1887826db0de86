#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace Tools {

/// Frequencies to take out of a series.
struct NotchBand {
    double low = 0;  ///< Hz, above 0, as the sampling shows it
    double high = 0; ///< Hz, above `low`, at most half of the rate
};

/// Takes out of a series all that oscillates within bands: least squares finds the sum of sines of
/// frequencies within the bands that fits the series best, and this sum is subtracted. No window
/// and no continuation beyond the ends is needed, so that a line goes right up to both ends, also
/// one that wanders within its band, and what lies further from a band than some 10 / (length of
/// the series) stays as it is. The mean of the series stays too. A line leaves some 0.1 % of its
/// amplitude (root mean square), up to 1 % at the ends.
///
/// The sines are those of a transform longer than the series, their amplitudes are solved for by
/// conjugate gradients, which need some 10 to 40 pairs of transforms: the functions that are
/// limited to a band have nearly the same weight in the series, except for a few (Slepian 1978,
/// Bell Syst. Tech. J. 57, 1371). A series beyond 0.8 million values goes in overlapping pieces of
/// that length, which then stand for "the series" above.
///
/// @param series at least 2 finite values; without bands it keeps its bits
/// @param tsamp  s, above 0
/// @param mayGoOn asked before every transform, may be empty; false ends it, and the series is
///               of no use then
/// @return for each band the part of the variance of the series that goes with it
std::vector<double> notch(std::vector<double> &series, double tsamp,
                          const std::vector<NotchBand> &bands,
                          const std::function<bool()> &mayGoOn = {});

/// Memory that notch() takes beside a series of so many points.
double notchBytes(std::size_t points, double tsamp, const std::vector<NotchBand> &bands);

} // namespace Tools
