#pragma once

#include <cstddef>
#include <vector>

namespace Tools {

/// Median of the `window` values around each value. Near the ends the window is shifted, not
/// shortened, so that every median is one of as many values: the first and the last
/// window / 2 + 1 medians are equal. A value that is no number counts as above all others. Takes
/// some fifty nanoseconds a value, with the window hardly mattering between 129 and 513.
///
/// @param window  odd, at least 1; more than there are values counts as all of them, or as one less
///                where their number is even
/// @param first   values before it enter no window; theirs is the median at the first. Where a base
///                line has taken the lowest lines of a spectrum away, they would pull it down.
/// @return as many medians as values
std::vector<double> localMedian(const std::vector<double> &values, int window,
                                std::size_t first = 0);

/// How the noise of a spectrum is distributed around its level.
enum class NoiseLaw {
    Exponential, ///< powers; their level is their mean
    Rayleigh ///< amplitudes; their level is the standard deviation of the real and of the imaginary
             ///< part, the mean amplitude over sqrt(pi / 2): noise exceeds x levels with the
             ///< probability exp(-x^2 / 2)
};

/// Expected median of `window` independent noise values of level 1: the mean of the middle one of
/// the sorted values. An exponential law gives the sum of 1/k over k from (window + 1) / 2 to
/// window (Renyi 1953, Acta Math. Hung. 4, 191), which falls towards ln 2 as the window grows; a
/// Rayleigh law about the root of twice that. Values that are not independent, those of a spectrum
/// padded with zeros, have the expected median of a smaller window: of 129 such values it is 0.6 %
/// more in power.
///
/// @param window  odd, at least 1
double expectedMedian(NoiseLaw law, int window);

/// Noise level around each value of a spectrum: the local median over the expected one, so that the
/// level has no bias. Lines hardly count as long as they are few in a window.
///
/// @param window  as of localMedian()
std::vector<double> localNoise(const std::vector<double> &values, int window, NoiseLaw law);

} // namespace Tools
