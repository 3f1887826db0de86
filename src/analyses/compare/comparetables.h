#pragma once

#include "analyses/compare/comparedays.h"
#include "results/resulttable.h"

/// Compared days as tables: what the batch program writes and a form saves.
namespace Compare {

/// The parameters as lines of a header, those without a value left out.
std::vector<Results::HeaderLine> parameterLines(const CompareParameters &parameters);

/// What was found out, as lines of a header.
std::vector<Results::HeaderLine> comparisonLines(const CompareProducts &products,
                                                 const Comparison &comparison);

/// Sidereal time and mean day of every point.
std::vector<Results::Column> meanColumns(const ComparePlan &plan, const Comparison &comparison);

/// The listed differences, in their order.
std::vector<Results::Column> differencesColumns(const CompareProducts &products,
                                                const Comparison &comparison);

/// @param counts  one per day
std::vector<Results::Column> daysColumns(const CompareProducts &products,
                                         const Comparison &comparison,
                                         const std::vector<bool> &counts);

/// Sidereal time in hours as "hh:mm:ss.s".
QString siderealText(double hours);

/// "2: 5.1, 4: 7.0": rays with their S/N; "-" for none.
QString raysText(const std::vector<SharingRay> &rays);

} // namespace Compare
