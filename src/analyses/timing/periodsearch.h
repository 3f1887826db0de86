#pragma once

#include "analyses/timing/periodparameters.h"
#include "analyses/timing/turncount.h"
#include "calc/turnsearch.h"
#include "jobs/control.h"

namespace Timing {

/// A period with its submultiples, which fit the same turns.
struct PeriodFamily {
    double period = 0;  ///< s: the longest of the family
    double error = 0;   ///< s: the true period lies within in 68.3 % of cases
    double error95 = 0; ///< s: in 95.4 %
    double rms = 0;     ///< s: root of the squared residuals over their degrees of freedom
    double rmsOverPeriod = 0;
    double expected = 0; ///< solutions as good that random times have in the whole range
    double chance = 0;   ///< probability that random times have one or more
    double h = 0;        ///< of the phases within the largest day; see Tools::hOfPhases()
    std::vector<qint64> turns;
    std::vector<double> submultiples; ///< s, that were found as well

    double rank() const; ///< -log10 of `expected`
};

/// What arrival times tell.
struct PeriodSearch {
    ArrivalTimes used;
    Tools::TimeGroups groups; ///< days; s since the midnight before the first time
    QStringList groupNames;
    Tools::PeriodRange range;           ///< as it was searched
    std::vector<PeriodFamily> families; ///< the least expected by chance first
    bool isClaimed = false;
    QString verdict;                  ///< a sentence or two
    double chanceRms = 0;             ///< rms / P that half of all random times reach
    double rareChanceRms = 0;         ///< that the share of parameters.chance reaches
    TurnCount count;                  ///< of the first family
    std::vector<double> curvePeriods; ///< s, rising
    std::vector<double> curveRanks;   ///< best PeriodFamily::rank() of each part
    QStringList remarks;
    QString problem; ///< why there is nothing of the above; empty: there is
    bool isStopped = false;
};

inline constexpr int mostFamilies = 50;
inline constexpr int curveParts = 2000;
/// A period is told only where it is so much less expected by chance than the next one.
inline constexpr double leastOdds = 20;

/// @param times       without a problem
/// @param parameters  without problems
PeriodSearch searchPeriod(const ArrivalTimes &times, const PeriodParameters &parameters,
                          const Jobs::Control &control = {});

} // namespace Timing
