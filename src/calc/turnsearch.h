#pragma once

#include <QtGlobal>
#include <cstdint>
#include <functional>
#include <vector>

/// Periods of pulses that come in few of many turns, from their arrival times alone.
namespace Tools {

/// Arrival times, s, rising within each group. Within a group the turns between two pulses are
/// counted; from one group to the next nothing is known, so that each has a phase of its own.
using TimeGroups = std::vector<std::vector<double>>;

int countOf(const TimeGroups &groups);
/// Times less phases less the period: what is left to tell a period from chance.
int freedomOf(const TimeGroups &groups);
/// From the first to the last time of the longest group, s.
double longestOf(const TimeGroups &groups);

struct PeriodRange {
    double least = 0; ///< s
    double most = 0;  ///< s
};

/// A period at which all times come after whole turns, as near as least squares bring them.
struct TurnSolution {
    double period = 0;         ///< s
    std::vector<qint64> turns; ///< of each time, group after group, since the first of its group
    double squares = 0;        ///< sum of the squared residuals, turns^2
};

/// How many such solutions random times have in a range of periods, with a sum of squares up to
/// `squares`: its natural logarithm.
///
/// Whole turns N_i of random times fill space evenly. Those that some frequency and some phases
/// bring within `squares` fill the volume
///
///     (f_most - f_least) sqrt(sum of all (t - mean of the group)^2) prod sqrt(n_group)
///     V_m squares^(m / 2),
///
/// V_m that of the unit ball in m = freedomOf() dimensions, and each of them is one solution.
double logChanceCount(const TimeGroups &groups, const PeriodRange &range, double squares);

struct TurnSearch {
    std::vector<TurnSolution> solutions; ///< the smallest squares first, all turns different
    /// Smallest sum of squares of each of so many parts of the range, equal in the logarithm of the
    /// period, the shortest first; a grid's steps leave up to 5e-4 turns^2 a time.
    std::vector<double> curve;
    bool isStopped = false;
};

/// Looks at all frequencies, in steps that shift the last time of a group against its first by a
/// tenth of a turn. From the whole turns of a trial on, least squares give the period, so that
/// finer steps find the same solutions. All are found of which random times have
/// `expected` or fewer.
///
/// @param groups    at least freedomOf() 1
/// @param parts     of the curve; 0: none
/// @param progress  0 to 100; false ends it
TurnSearch searchTurns(const TimeGroups &groups, const PeriodRange &range, double expected,
                       int parts, const std::function<bool(int percent)> &progress = {});

/// Additions that searchTurns() takes, of each time in each trial.
double stepsOfSearch(const TimeGroups &groups, const PeriodRange &range);

/// Times that come at random, as many as in each group and spread as those: even in the stretch
/// that probably had them, longer than from first to last by a mean distance to either side.
TimeGroups randomTimes(const TimeGroups &groups, std::uint32_t seed);

} // namespace Tools
