#pragma once

#include "calc/fold.h"
#include "calc/profileharmonics.h"

#include <vector>

/// How far a profile stands out of its noise, each measure under its own name.
namespace Tools {

/// Maxima of noise: the highest bin, or the best boxcar of all widths of boxcarWidths().
enum class ProfileMaximum { Peak, Boxcar };

/// The Gaussian sigma that is as improbable as such a maximum in noise. Simulated with 200000
/// profiles of each number of bins; beyond what they reach, the number of independent places that
/// they show is continued.
///
/// @param snr     of boxcarPeaks() for width 1, or of bestBoxcar()
/// @param bins    16 to 1024; between the powers of two by interpolation
/// @param shared  of ProfileNoise
double sigmaOfMaximum(ProfileMaximum kind, double snr, int bins, double shared);

/// A profile's S/N by its names.
struct ProfileSnr {
    double peak = 0;        ///< highest bin less the mean of all, over the noise of that difference
    double peakSigma = 0;   ///< Gaussian sigma of noise that has such a peak in any bin
    BoxcarPeak boxcar;      ///< best boxcar of any width up to half a turn, see boxcarPeaks()
    double boxcarSigma = 0; ///< Gaussian sigma of noise that has such a boxcar
    int harmonics = 0;      ///< n of Z^2_n
    double z2 = 0;          ///< Z^2_n: sum over k = 1 .. n of 2 |c_k|^2 over its variance
    double z2Sigma = 0;     ///< Gaussian sigma of noise: Z^2_n has chi squared of 2 n degrees
    double h = 0;           ///< H, highest of Z^2_m - 4 m + 4 (de Jager et al. 1989, A&A 221, 180)
    double hSigma = 0;      ///< by exp(-0.4 H) (de Jager & Buesching 2010, A&A 517, L9)
    double area = 0;        ///< sum of the boxcar's bins less the mean outside twice its width
    double equivalentWidth = 0; ///< turns: area over the highest bin; 0 where there is no area
    double equivalentSnr = 0; ///< area over the noise of so many bins (Lorimer & Kramer 2005, 7.1)
};

/// @param profile    16 to 1024 bins, a power of two
/// @param harmonics  n of Z^2_n, less where there are not as many below half of the bins
ProfileSnr profileSnr(const std::vector<double> &profile, const ProfileNoise &noise, int harmonics);

/// The profile as boxcarPeaks() takes it, for samples of noise 1.
FoldedProfile foldedOf(const std::vector<double> &profile, const ProfileNoise &noise);

/// Mean outside of a stretch of `width` turns round a phase: the level below a pulse.
double offPulseLevel(const std::vector<double> &profile, double phase, double width);

/// Whether samples in bins of their own scatter more between bins than within them.
struct ChiSquared {
    double reduced = 0; ///< chi squared over the degrees of freedom; 0 where there are none
    int degrees = 0;    ///< bins with samples, less one
    double sigma = 0;   ///< Gaussian sigma of noise
};

/// Each sample counts wholly in the bin of its middle, so that bins share nothing; a bin without
/// samples does not count. The noise is that of the samples round the means of their bins.
///
/// @param phases  of the samples' middles, turns
ChiSquared chiSquaredOf(const double *samples, const double *phases, int count, int bins);

} // namespace Tools
