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

/// Reads one ray of one module, the points from `first` on and before `end`, as far as they are
/// in the recording. The record has one module and one ray and is as long as the recording;
/// what was not read is 0.
///
/// @param module, ray  from 1, in the recording
Failure readRay(RecordingFile &file, int module, int ray, qint64 first, qint64 end,
                const Control &control, ObservationData &data);

/// Bytes that readRay() takes for so many points.
qint64 memoryOfRay(const RecordingFile &file, qint64 points);

/// Which program, which command, which file with its size and its time of change (UTC).
std::vector<HeaderLine> inputHeader(const QString &command, const QString &path);

} // namespace Batch
