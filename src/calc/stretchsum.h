#pragma once

#include "data/recordingfile.h"

#include <vector>

namespace Tools {

/// Points outside a stretch that its delayed sum takes in.
struct DelayReach {
    int before = 0;
    int after = 0;
};

/// How far the bands are shifted by sumChannels(), at most a whole recording.
///
/// @param header  of the whole recording or of a part of it; fbands, channels, tresolution
/// @return nothing reaches out where a frequency or the step is no usable number: sumChannels()
///         then says so
DelayReach delayReach(const ObservationData &header, double dispersion);

/// Result of a sum over a part of a recording in its file.
struct StretchSum {
    std::vector<double> sums; ///< empty on refusal
    StretchEnd end = StretchEnd::Refused;
    QString reason; ///< as of RecordingFile::read
};

/// The elements `first` .. `first + count - 1` of what sumChannels() gives for the whole
/// recording, equal to the last bit. Only these points and those that the delays reach are
/// read; where they reach beyond the end of the recording they go on at its beginning.
StretchSum sumChannels(RecordingFile &file, double dispersion, int module, int ray, int first,
                       int count, const SampleReadingHooks &hooks = {});

} // namespace Tools
