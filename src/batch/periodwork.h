#pragma once

#include "analyses/timing/periodparameters.h"
#include "batch/tablework.h"

namespace Batch {

struct PeriodRequest {
    Timing::PeriodParameters parameters;
    OutputOptions output;
};

/// The period of the arrival times in each input: its candidates, the times with their turns, rank
/// over period, and pictures.
Work periodWork(const PeriodRequest &request);

/// Where the results of typed times go by, in the current folder.
QString typedTimesName();

} // namespace Batch
