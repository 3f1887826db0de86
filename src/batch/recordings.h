#pragma once

#include "batch/failure.h"
#include "batch/resulttable.h"
#include "batch/runner.h"
#include "data/recordingfile.h"

namespace Batch {

/// Opens a recording and checks that it has the size that its passport announces: one that is
/// too short is ignored, as everywhere without a window, and the reader's text is printed.
Failure openRecordingFile(RecordingFile &file, const QString &path, const Control &control);

/// Whether a recording has that module and ray, both from 1.
Failure findRay(const RecordingFile &file, int module, int ray);

/// Rays of modules, each list ascending, from 1.
struct RaySelection {
    std::vector<int> modules;
    std::vector<int> rays;

    int count() const { return int(modules.size() * rays.size()); }
};

/// Reads rays that are in the recording, the points from `first` on and before `end`, as far as
/// they are in it. The record has the chosen modules and rays only and is as long as the
/// recording; what was not read is 0.
Failure readRays(RecordingFile &file, const RaySelection &selection, qint64 first, qint64 end,
                 const Control &control, ObservationData &data);

/// What an end of reading other than Complete means for the program.
Failure failureOf(StretchEnd end, const QString &reason);

/// Bytes that readRays() takes for one ray and so many points.
qint64 memoryOfRay(const RecordingFile &file, qint64 points);

/// Which program, which command, which file with its size and its time of change (UTC).
std::vector<HeaderLine> inputHeader(const QString &command, const QString &path);

} // namespace Batch
