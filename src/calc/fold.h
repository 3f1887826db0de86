#pragma once

#include <vector>

namespace Tools {

/// A series folded on a period.
struct FoldedProfile {
    std::vector<double> bins;    ///< mean of the samples of each phase bin, in their units
    std::vector<double> weights; ///< samples that went into each bin, shared ones by overlap
    double periods = 0;          ///< periods folded
};

/// Folds a series: sample i covers the time from i to i + 1 samples, phase 0 is the begin of
/// sample 0, or of the one `firstSample` before it. A bin holds the mean of the samples that
/// overlap it, each weighted by its overlap.
///
/// @param period       in samples, at least 2
/// @param bins         at least 2
/// @param firstSample  number of samples[0] where it is part of a longer series
FoldedProfile fold(const double *samples, int count, double period, int bins, int firstSample = 0);

/// The best boxcar of a profile.
struct BoxcarPeak {
    double snr = 0;
    int width = 0;    ///< bins
    double phase = 0; ///< of the boxcar's centre, 0 to 1
};

/// Highest S/N of a boxcar of 1 to half the bins, in steps of a tenth, read circularly, over a flat
/// baseline that keeps the profile's total: (S_w - w T / b) / (sigma sqrt(w (b - w) / b)) with the
/// sum S_w of w bins, the total T and the number b of bins (Morello et al. 2020, MNRAS 497, 4654).
///
/// @param binSigma  noise of one bin; 0 gives an empty peak
BoxcarPeak bestBoxcar(const std::vector<double> &profile, double binSigma);

} // namespace Tools
