#pragma once

#include "data/recordingfile.h"

#include <vector>

namespace Tools {

/// Points outside a stretch that its delayed sum takes in.
struct DelayReach {
    int before = 0;
    int after = 0;
};

/// How far the bands are shifted by sumStretch(), at most a whole recording.
///
/// @param header  of the whole recording or of a part of it; fbands, channels, tresolution
/// @return nothing reaches out where a frequency or the step is no usable number: sumChannels()
///         then says so
DelayReach delayReach(const ObservationData &header, double dispersion);

/// A sum over a part of a recording in its file.
struct SeriesOfStretch {
    std::vector<double> sums;
    QString remark; ///< which samples were no finite numbers; empty where all were
};
using StretchSum = StretchResult<SeriesOfStretch>;

/// The elements `first` .. `first + count - 1` of what sumChannels() gives for the whole
/// recording, equal to the last bit. Only these points and those that the delays reach are
/// read; where they reach beyond the end of the recording they go on at its beginning. Samples
/// that are no finite numbers count as the median of what was read of their band; a band without
/// any finite one is refused.
StretchSum sumStretch(RecordingFile &file, double dispersion, int module, int ray, int first,
                      int count, const SampleReadingHooks &hooks = {});

} // namespace Tools
