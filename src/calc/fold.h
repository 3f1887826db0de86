#pragma once

#include <vector>

namespace Tools {

/// A series folded on a period.
struct FoldedProfile {
    std::vector<double> bins;    ///< mean of the samples of each phase bin, in their units
    std::vector<double> weights; ///< samples that went into each bin, shared ones by overlap
    double periods = 0;          ///< periods folded

    /// Noise of the bins, for samples of independent noise with variance 1: the variance of each
    /// bin, and its covariance with the bin before it (of bin 0: with the last one), which comes
    /// from the samples that both share. Where the bin edges drift through the samples, a bin of L
    /// samples a period has the variance (1 - 1 / (3 L)) / weight, w bins together, L w of at least
    /// one, (1 - 1 / (3 L w)) / weight; where every edge falls between two samples nothing is
    /// shared.
    std::vector<double> variances;
    std::vector<double> covariances;
};

/// Folds a series: sample i covers the time from i to i + 1 samples, phase 0 is the begin of
/// sample 0, or of what lies `firstSample` samples before it. A bin holds the mean of the samples
/// that overlap it, each weighted by its overlap.
///
/// @param period       in samples, at least 2
/// @param bins         at least 2; with more bins than samples in a period the noise leaves out
///                     what bins share that are not neighbours
/// @param firstSample  number of samples[0] where it is part of a longer series; a part of a sample
///                     shifts the phase by it
FoldedProfile fold(const double *samples, int count, double period, int bins,
                   double firstSample = 0);

/// The best boxcar of a profile.
struct BoxcarPeak {
    double snr = 0;
    int width = 0;    ///< bins
    double phase = 0; ///< of the boxcar's centre, 0 to 1
};

/// Widths that are tried on a profile: every one up to ten bins, then in steps of a tenth, for the
/// S/N of a pulse hardly depends on less; up to half of the bins.
std::vector<int> boxcarWidths(int bins);

/// Highest S/N of a boxcar of each of these widths, read circularly, over a flat baseline that
/// keeps the profile's total: S_w - w T / b with the sum S_w of w bins, the total T and the number
/// b of bins, against the standard deviation that noise gives this difference.
///
/// @param sampleSigma  noise of one sample; 0 gives empty peaks
/// @return one per width of boxcarWidths()
std::vector<BoxcarPeak> boxcarPeaks(const FoldedProfile &profile, double sampleSigma);

/// The highest of boxcarPeaks().
BoxcarPeak bestBoxcar(const FoldedProfile &profile, double sampleSigma);

/// S/N that the best boxcar of a profile of white noise is expected to have: the highest of n
/// independent values of unit Gaussian noise is expected where (1 - Q(x))^n = 0.5264, with the
/// Gaussian tail Q (Chen & Tyler 1999, Commun. Stat. Simul. Comput. 28, 177). A profile of b bins
/// with all its boxcars counts as n = b (0.7 + 0.47 log2 b) values, which simulated noise of 4 to
/// 4096 bins gives within 0.03 in x; where a bin is one sample long it stays up to 0.12 lower. One
/// fold scatters by 0.3 to 0.6.
double expectedNoisePeak(int bins);

} // namespace Tools
