#pragma once

#include "calc/ffaresult.h"

#include <functional>
#include <vector>

/// The searched series folded at one period.
struct FfaFold {
    double period = 0;           ///< s
    std::vector<double> profile; ///< mean of each phase bin, in sigmas of a sample
    int parts = 0;               ///< stretches of the series, equally long, earliest first
    std::vector<float> picture;  ///< [part][bin], as the profile; NaN where nothing was folded
    std::vector<int> widths;     ///< bins, 1 to half of the profile
    std::vector<double> snr;     ///< one per width
    int best = 0;                ///< index of the highest S/N
    double phase = 0;            ///< of that boxcar's centre, 0 to 1
};

/// A period made more precise.
struct FfaRefinement {
    double period = 0; ///< s
    double error = 0;  ///< s, one sigma
};

namespace Tools {

/// Folds the series with so many bins, or as many as the period has samples.
///
/// @param period  s, at least 2 samples
/// @param bins    at least 2
FfaFold foldSeries(const FfaResult &result, double period, int bins);

/// Folds the series, without its mains hum, at 49 periods around one, with up to 512 bins, as far
/// as the sampling allows. The last ones are as far away as makes a drift over the series of two
/// widths of the pulse, three bins of the search at least. From the highest S/N there
/// likelyPeriod() goes on.
///
/// @param searchedBins  of the fold that gave the period
/// @param progress      called with 0 to 100 before every fold; false ends it
/// @return period 0 when `progress` ended it
FfaRefinement refinePeriod(const FfaResult &result, double period, int searchedBins,
                           const std::function<bool(int percent)> &progress = {});

} // namespace Tools
