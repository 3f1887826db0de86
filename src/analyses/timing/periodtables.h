#pragma once

#include "analyses/timing/periodsearch.h"
#include "results/resulttable.h"

/// The period of arrival times as tables: what the batch program writes and a form saves.
namespace Timing {

/// The parameters as lines of a header, those without a value left out.
std::vector<Results::HeaderLine> parameterLines(const PeriodParameters &parameters);

/// What was found out, as lines of a header.
std::vector<Results::HeaderLine> outcomeLines(const PeriodSearch &search);

/// The families, the least expected by chance first.
std::vector<Results::Column> familyColumns(const PeriodSearch &search);

/// The times with the turns and residuals of the first family.
std::vector<Results::Column> timeColumns(const PeriodSearch &search);

/// Rank over period.
std::vector<Results::Column> curveColumns(const PeriodSearch &search);

} // namespace Timing
