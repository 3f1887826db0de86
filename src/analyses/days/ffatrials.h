#pragma once

#include "calc/ffasearch.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

/// The trials of a fast folding search that all days have in common.
namespace Days {

/// Periods in rising order, whatever step of the search they come from.
struct FfaTrials {
    FfaParameters ffa;           ///< of the search
    double tsamp = 0;            ///< s
    int points = 0;              ///< of the series
    std::vector<double> periods; ///< s
    std::vector<int> foldBins;   ///< phase bins of the fold of each period
    std::vector<int> places;     ///< of each period in a Periodogram
    std::vector<int> widths;     ///< of the boxcars, bins, rising
    std::vector<float> noise;    ///< [width][trial]: sigma that white noise has in units of the S/N
                                 ///< as a search tells it

    int count() const { return int(periods.size()); }
    /// Period of the trial nearest to a place, s; 1 without trials.
    double periodAt(double place) const
    {
        const double last = double(periods.size()) - 1;
        return last < 0 ? 1 : periods[std::size_t(std::clamp(std::round(place), 0.0, last))];
    }
    /// Index of the trial nearest to a period, s; there must be one.
    std::size_t nearestTo(double period) const
    {
        const auto after = std::lower_bound(periods.begin(), periods.end(), period);
        const auto index = std::size_t(after - periods.begin());
        const bool isEarlier =
            after == periods.end() || (index > 0 && period - periods[index - 1] < *after - period);
        return index - (isEarlier ? 1 : 0);
    }
    double length() const { return points * tsamp; } ///< s
    /// Bins that a pulse drifts over the series where it is folded at a trial that is so much off
    /// its period.
    double driftBins(std::size_t trial, double off) const
    {
        return off / periods[trial] * length() / periods[trial] * foldBins[trial];
    }
};

/// The search that a user asks for, ready to be made: a period of 0, or a window of the running
/// median of 0, becomes what suits the series, and the shortest period is moved to the nearest one
/// without whole downsampling factors, at which S/N comes out too low.
///
/// @param tsamp  s
FfaParameters ffaOfDays(FfaParameters ffa, int points, double tsamp);

/// Fewest trials whose own distribution tells what noise makes of their sums.
inline constexpr int fewestTrials = 400;

/// Everything that forbids the search of a series; empty when it can be made.
///
/// @param ffa  of ffaOfDays()
std::vector<FieldProblem> problemsOfTrials(const FfaParameters &ffa, int points, double tsamp);

/// @param ffa  of ffaOfDays(), without problems
std::shared_ptr<const FfaTrials> ffaTrials(const FfaParameters &ffa, int points, double tsamp);

/// The trial of a day that comes nearest to each barycentric period.
///
/// @param ratio  frequency at the telescope over the one at the barycentre
/// @return an index of `periods` each
std::vector<int> nearestTrials(const std::vector<double> &periods, double ratio);

} // namespace Days
