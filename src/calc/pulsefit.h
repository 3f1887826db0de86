#pragma once

#include <vector>

/// A dispersed Gaussian pulse fitted to the samples of all bands.
namespace Tools {

/// S/N of a Gaussian pulse that is added up at a dispersion whose delay over the band is wrong by
/// so many of its full widths at half maximum, over that at the right one: sqrt(pi) / 2 erf(zeta) /
/// zeta (Cordes & McLaughlin 2003, ApJ 596, 1142, eq. 12), zeta = sqrt(ln 2) times those widths.
double snrAtWrongDelay(double widths);

/// What a fit begins with, and what it gives. Points count from the first sample.
struct PulseShape {
    double height = 0;     ///< of the peak in each band, units of the samples
    double point = 0;      ///< of the peak in the band of delay 0
    double dispersion = 0; ///< pc/cm^3
    double fwhm = 1;       ///< points
};

struct PulseFit {
    PulseShape shape;
    PulseShape error;               ///< standard deviations, from the noise of the samples
    double pointWithDispersion = 0; ///< covariance of both
    bool isFitted = false;          ///< false: the fit left the neighbourhood of its begin
};

/// The samples that are fitted; those that are exactly 0 were left out of the search and do not
/// count.
struct PulseBands {
    std::vector<const float *> samples; ///< noise of standard deviation 1, level 0
    std::vector<double> delays;         ///< of each band at dispersion 1, samples
    int count = 0;                      ///< samples of each
};

/// Least squares over height, time, dispersion and width of all samples near the pulse; a sample is
/// the mean of the Gaussian over one step. No delay is rounded.
///
/// @param fitsDispersion  false where the bands cannot tell it
PulseFit fitPulse(const PulseBands &bands, const PulseShape &begin, bool fitsDispersion);

} // namespace Tools
