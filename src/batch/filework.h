#pragma once

#include "batch/tablework.h"

namespace Batch {

/// Recordings and result files as text: "<input>.txt".
Work textWork(const OutputOptions &output);

/// Pictures of results of this program: the name of the result with another ending.
Work plotWork(const OutputOptions &output);

/// What of a recording goes into a file of another program.
struct ExportRequest {
    QString kind = "fil";  ///< "fil", or "dat" with its ".inf"
    int module = 1;        ///< from 1
    int ray = 1;           ///< from 1
    double dispersion = 0; ///< pc/cm^3, of the sum in a ".dat"
    OutputOptions output;
};

/// SIGPROC filterbanks of all bands of a ray, highest band first; or the sum of the bands as
/// float32 values with a PRESTO-style description.
Work exportWork(const ExportRequest &request);

/// Recordings made of SIGPROC filterbanks of 8, 16 or 32 bits: "<input>.pnt".
Work importWork(const OutputOptions &output);

} // namespace Batch
