#pragma once

#include "analyses/days/dayspectra.h"
#include "results/resulttable.h"

/// A stack of days as tables: what the batch program writes and a form saves.
namespace Days {

/// The parameters as lines of a header, those without a value left out.
std::vector<Results::HeaderLine> parameterLines(const FourierDaysParameters &parameters);

/// What was found out, as lines of a header.
std::vector<Results::HeaderLine> stackLines(const FourierStack &stack, const DayPlan &plan,
                                            const FourierDaysChoice &choice);

/// The recordings that give no day, each with its reason.
std::vector<Results::HeaderLine> leftOutLines(const RecordingSet &set, const DayList &list);

/// Frequency, mean power and significance of every bin.
std::vector<Results::Column> spectrumColumns(const FourierStack &stack);

/// The lines with all that is told of them, in the order of the stack.
std::vector<Results::Column> linesColumns(const FourierStack &stack);

/// @param verdicts, chosen  one per day
std::vector<Results::Column> daysColumns(const std::vector<FourierDay> &days,
                                         const std::vector<DayVerdict> &verdicts,
                                         const std::vector<bool> &chosen);

/// The three tables of a stack and what each is called in the names of files: the stack itself, its
/// lines, its days.
///
/// @param request  lines of the header of each
std::vector<std::pair<QString, Results::ResultTable>>
stackTables(const std::vector<Results::HeaderLine> &request, const DaySpectra &spectra,
            const StackOutcome &outcome, const RecordingSet &set);

} // namespace Days
