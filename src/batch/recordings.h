#pragma once

#include "batch/failure.h"
#include "batch/runner.h"
#include "data/recordingfile.h"
#include "results/resulttable.h"

#include <optional>

namespace Batch {

/// Opens a recording and checks that it has the size that its passport announces: one that is
/// too short is ignored, as everywhere without a window, and the reader's text is printed.
Failure openRecordingFile(RecordingFile &file, const QString &path, const Control &control);

/// Whether a recording has that module and ray, both places in the file from 1.
Failure findRay(const RecordingFile &file, int module, int ray);

/// What the passport numbers.
enum class Numbered { Module, Ray };

/// Places from 1 of the modules, or rays, that the passport gives these numbers.
///
/// @param places  filled in the order of the numbers
/// @return which number is not in the recording, and which ones are
Failure findPlaces(const RecordingFile &file, Numbered what, const std::vector<int> &numbers,
                   std::vector<int> &places);

/// The same for one number; where none is given the place stays.
Failure findPlace(const RecordingFile &file, Numbered what, const std::optional<int> &number,
                  int &place);

/// Rays of modules, each list ascending, places in the file from 1.
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

/// The rays in groups that are read at once: a recording stands in the file point by point, so that
/// every reading passes through all of it.
///
/// @param bytesOfRay  of memory
std::vector<RaySelection> groupsOf(const RaySelection &all, qint64 bytesOfRay);

/// Which program, which command, which file with its size and its time of change (UTC).
std::vector<Results::HeaderLine> inputHeader(const QString &command, const QString &path);

/// The module and ray of a result by their true numbers, and when the recording begins.
///
/// @param module, ray  places in the file, from 1
std::vector<Results::HeaderLine> rayLines(const ObservationData &header, int module, int ray);
/// When the recording begins, UTC; "unknown" where its passport does not say.
Results::HeaderLine beginLine(const ObservationData &header);

/// Refuses a header that has lost the value of one of its lines.
Failure checkHeader(const std::vector<Results::HeaderLine> &lines, const QString &path);

} // namespace Batch
