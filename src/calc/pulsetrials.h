#pragma once

#include <vector>

/// How many pulses noise is expected to give in a search for single pulses.
namespace Tools {

/// What the number of trials depends on.
struct PulseTrials {
    double points = 0;       ///< in which boxcars begin, of all rays together
    std::vector<int> widths; ///< points, ascending
    int dispersions = 1;
    double delayOfStep = 0; ///< points between the earliest and the latest band that a dispersion
                            ///< has more than the one before
};

/// Pulses that white noise is expected to give above a threshold, joined as the search joins them.
///
/// Q(T) is the share of noise above T. Neighbouring boxcars, dispersions and widths are alike, so
/// that one pulse has several of them: with the correlation r, a value above T is followed by one
/// below it with the probability theta(r). Their product over the three directions counts the
/// pulses of each width. The directions are not independent, which a factor found by simulation
/// corrects: see expectedFactor.
double expectedPulses(const PulseTrials &trials, double threshold);

/// The threshold above which noise is expected to give so many.
///
/// @param expected  above 0
double pulseThreshold(const PulseTrials &trials, double expected);

/// Independent trials that give the same: expectedPulses() over Q.
double pulseTrials(const PulseTrials &trials, double threshold);

} // namespace Tools
