#pragma once

#include <complex>
#include <functional>
#include <vector>

/// Where a signal lies, from the powers around it.
namespace Sky {

/// Mean powers, in units of the noise, of places at which a signal's amplitude is known but for a
/// factor: neighbouring bins, dispersions, starts or rays.
struct PowerSamples {
    std::vector<double> powers; ///< mean of the days; noise has 1
    std::vector<double> days;   ///< that each is the mean of
    /// Correlation of the noise's amplitudes, row after row; the conjugate across the diagonal.
    std::vector<std::complex<double>> noise;
    /// The signal's amplitudes at a place, in phase with `noise`.
    std::function<std::vector<std::complex<double>>(double place)> amplitudes;
};

struct Located {
    double value = 0;
    double error = 0; ///< one sigma; not a number where the powers do not tell
};

/// Least squares for a place that all sets share, each with a strength of its own.
///
/// A power |s + n|^2 of a complex amplitude s in noise n of unit power has mean 1 + |s|^2, and two
/// of them the covariance |c|^2 + 2 Re(s1* s2 c), c the correlation of the noise. The weights are
/// those of the noise alone; the error is that of the estimate under the whole covariance, so that
/// it holds for strong signals as well.
///
/// Where the range is few errors wide, the value is the mean of all places of the range, each as
/// likely as it makes the powers, and the error holds 68 % of them, twice the error 95 % at least:
/// between two beams that hardly see the source the squared deviations are no parabola, and the
/// slope at their least would promise too much.
///
/// @param from, to  range in which the place is looked for
/// @param step      so fine that the amplitudes hardly change
Located locate(const std::vector<PowerSamples> &sets, double from, double to, double step);

} // namespace Sky
