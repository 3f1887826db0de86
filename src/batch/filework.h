#pragma once

#include "batch/tablework.h"

#include <optional>

namespace Batch {

/// Recordings and result files as text: "<input>.txt".
Work textWork(const OutputOptions &output);

/// Pictures of results of this program, curves and candidates: the name of the result with another
/// ending.
Work plotWork(const OutputOptions &output);

/// What of a recording goes into a file of another program.
struct ExportRequest {
    QString kind = "fil";            ///< "fil", or "dat" with its ".inf"
    int module = 1;                  ///< place in the file, from 1
    int ray = 1;                     ///< place in the file, from 1
    std::optional<int> moduleNumber; ///< by the passport, instead of the place
    std::optional<int> rayNumber;
    double dispersion = 0; ///< pc/cm^3, of the sum in a ".dat"
    OutputOptions output;
};

/// SIGPROC filterbanks of all bands of a ray, highest band first; or the sum of the bands as
/// float32 values with a PRESTO-style description.
Work exportWork(const ExportRequest &request);

/// Recordings made of SIGPROC filterbanks of 8, 16 or 32 bits: "<input>.pnt".
Work importWork(const OutputOptions &output);

} // namespace Batch
