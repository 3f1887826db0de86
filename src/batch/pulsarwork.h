#pragma once

#include "batch/tablework.h"
#include "calc/pulsar/pulsarresult.h"

#include <optional>

namespace Batch {

/// An action of the pulsar form on each recording.
struct PulsarRequest {
    QString command;                 ///< "sum", "fourier", ...
    QString action;                  ///< of PulsarCalculate
    PulsarParameters parameters;     ///< startTime instead of a first point where it is not empty
    std::optional<int> moduleNumber; ///< by the passport, instead of the place in the file
    std::optional<int> rayNumber;
    OutputOptions output;
};

/// Reads only what the action needs and gives what the form shows, to the last digit.
Work pulsarWork(const PulsarRequest &request);

} // namespace Batch
