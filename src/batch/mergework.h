#pragma once

#include "batch/failure.h"
#include "results/resulttable.h"

#include <QStringList>

namespace Batch {

/// What is merged, and what is kept of it.
struct MergeRequest {
    QString output;
    Results::Format format = Results::Format::Text;
    double threshold = 0;  ///< true S/N
    bool onlyBase = false; ///< leave out harmonics, mains hum and what does not fold
};

/// Joins the candidates of many results into one table: each candidate once, sorted, the same
/// whatever the order of the inputs.
Failure mergeCandidates(const QStringList &inputs, const MergeRequest &request);

} // namespace Batch
