#pragma once

#include "analyses/days/ffatrials.h"
#include "calc/phasemaximum.h"

#include <vector>

/// Sums of the periodograms of many days, and what noise makes of them.
namespace Days {

/// The S/N of all trials of a day, each width less its median and in units of its robust scatter
/// (1.4826 median absolute deviations), so that every day counts as much and noise has median 0.
///
/// @param snr     of a Periodogram: [place][width]
/// @return [width][trial], in the order of `trials`
std::vector<float> standardisedTrials(const std::vector<float> &snr, const FfaTrials &trials);

/// The best width of each trial.
///
/// @param snr  [width][trial]
std::vector<float> bestOfWidths(const std::vector<float> &snr, int trials);

/// A day as a stack of trials takes it.
struct DayTrials {
    const float *snr = nullptr;   ///< [width][trial], standardised
    const int *nearest = nullptr; ///< of nearestTrials(); null: the trial itself
};

/// Sum over the days at each barycentric period, in the order of the days added in double.
///
/// @return [width][trial]
std::vector<double> stackTrials(const std::vector<DayTrials> &days, int trials, int widths);

/// What noise makes of a sum over so many days, at each width.
std::vector<Tools::PhaseMaximum> lawsOfTrials(const FfaTrials &trials, double days);

/// Where noise lies in a stack and how far it scatters, from the stack itself.
struct TrialLevels {
    std::vector<double> level;   ///< [width][trial]: the median that noise has there
    std::vector<double> scatter; ///< of each width: 1.4826 median absolute deviations
};

/// More bins mean more phases, of which the best is higher: the level of a width follows its
/// medians at every number of bins, smoothed by a parabola over its logarithm, and what is then
/// left over period by a running median. The scatter is that of the trials around the level, but
/// not below that of independent days: what all days have in common widens it, and few trials
/// cannot make it too small.
///
/// @param laws  of lawsOfTrials()
TrialLevels levelsOfTrials(const std::vector<double> &stack, const FfaTrials &trials,
                           const std::vector<Tools::PhaseMaximum> &laws);

/// The significance of each trial, one trial, and the width that has it.
struct TrialSignificance {
    std::vector<float> sigma;
    std::vector<int> width; ///< index
};
TrialSignificance bestSignificance(const std::vector<double> &stack, int trials,
                                   const TrialLevels &levels,
                                   const std::vector<Tools::PhaseMaximum> &laws);

/// Independent trials that a search of so many periods at so many widths counts as: with them a
/// stack of noise has a peak of probability p in a share p of all cases. Found by simulation of 1
/// to 365 days, where the widest of the widths tells most: the more days, the less the widths have
/// in common, and the more tell the small differences between trials that no level follows.
double countOfPeriodTrials(const FfaTrials &trials, double days);

/// A peak of the stack.
struct StackPeriod {
    int trial = 0;
    double sigma = 0; ///< one trial, of its best width
};

/// The peaks of the significance, strongest first, their neighbours merged into them: see
/// Tools::takeNeighbours().
///
/// @param sigma  of each trial, one trial, of its best width
std::vector<StackPeriod> findPeriods(const std::vector<float> &sigma, const FfaTrials &trials,
                                     double lowestSigma, int most);

/// Where a signal lies among places at which it was looked for.
struct PlaceEstimate {
    double value = 0;
    double error = 0; ///< standard deviation
};

/// Mean and scatter of the places from `begin` to before `end`, each as likely as its excess makes
/// it: as exp(excess^2 / 4). A filter matched to the place has exp(excess^2 / 2); the best of
/// many phases is less alike from place to place, and simulated pulses scatter by half more. How
/// well the best of them tells a place that lies between is in the error as well.
///
/// @param places     ascending
/// @param excesses   above the noise, in its scatters
/// @param best       index of the highest
/// @param ofSpacing  error of the best place of a signal without noise, as part of the spacing
PlaceEstimate placeOf(const std::vector<double> &places, const std::vector<double> &excesses,
                      std::size_t begin, std::size_t end, std::size_t best, double ofSpacing);

} // namespace Days
