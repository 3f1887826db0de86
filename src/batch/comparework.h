#pragma once

#include "analyses/compare/comparedays.h"
#include "batch/dayswork.h"

namespace Batch {

/// Days under each other; parameters and days are those of the form.
struct CompareRequest {
    Compare::CompareParameters parameters;
    QStringList folders;
    QString kept; ///< folder that keeps series; empty: Days::keptFolder() of the first folder
    QStringList daysOff; ///< dates, or names of days as Days::dayName() gives them
    OutputOptions output;
};

/// The mean day, the days and their differences from it: one item of work.
ExitCode compareDays(const CompareRequest &request, const RunOptions &options);

} // namespace Batch
