#pragma once

#include "analyses/pulses/repeating.h"
#include "batch/tablework.h"

namespace Batch {

/// Single pulses of recordings: a table of each.
struct PulsesRequest {
    Pulses::PulseParameters parameters;
    OutputOptions output;
};

/// What is wrong with the parameters, whatever the recordings are.
Failure refusalOf(const Pulses::PulseParameters &parameters);

Work pulsesWork(const PulsesRequest &request);

/// Which tables of pulses are joined, and what counts as a source that repeats.
struct RepeatsRequest {
    QString output;
    Results::Format format = Results::Format::Text;
    Pulses::RepeatingParameters parameters;
};

/// Joins tables of pulses into one list, and writes the sources that repeat beside it, the same
/// whatever the order of the inputs: "survey.txt" and "survey.sources.txt".
Failure joinPulses(const QStringList &inputs, const RepeatsRequest &request);

} // namespace Batch
