#pragma once

#include "analyses/sky/skyplan.h"
#include "batch/tablework.h"

namespace Batch {

/// A map or a search over the days of folders. Parameters and days are those of the form.
struct SkyRequest {
    const Sky::SkyAnalysis *analysis = nullptr;
    Sky::SkyParameters parameters;
    QStringList folders;
    QString kept; ///< folder that keeps stacks; empty: Days::keptFolder() of the first folder
    Sky::DateRange dates;
    int part = 1; ///< of so many parts of the days, of which nothing but stacks are made
    int parts = 1;
    QString interference; ///< file of the list; "none"; empty: the user's own
    QString name;         ///< of a map
    OutputOptions output;
};

/// Adds up what is not added yet and, of the whole, makes the map or the table of candidates: one
/// item of work.
ExitCode workOnSky(const SkyRequest &request, const RunOptions &options);

} // namespace Batch
