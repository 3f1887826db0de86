#pragma once

#include "data/observationdata.h"

#include <QString>
#include <vector>

/// Samples that are no finite numbers (NaN, infinite), before a sum or a baseline takes them in.

/// Samples of one channel that are taken in.
struct SampleRange {
    int channel = 0; ///< index from 0
    int begin = 0;   ///< point, index within the record
    int end = 0;     ///< not included
};

namespace Tools {

/// Whether all of `count` samples are finite; also of none.
bool areFinite(const float *samples, qint64 count);

/// Points that follow each other.
struct PointSpan {
    int begin = 0;
    int end = 0; ///< not included
};

/// The samples of a channel that are no finite numbers.
struct NonFiniteSamples {
    int channel = 0; ///< index from 0
    qint64 count = 0;
    std::vector<PointSpan> spans; ///< ascending, apart from each other
};

/// The samples of one ray for sums: finite all of them within some ranges.
struct FiniteSamples {
    /// Those of the record, or with the channel's median of the ranges in the place of what is
    /// no finite number. Outside the ranges and the ray, such a channel's samples are not to be
    /// read. Empty where memory is short.
    Samples samples;
    std::vector<NonFiniteSamples> replaced; ///< ascending by channel; channels without any are
                                            ///< left out
    std::vector<int> empty; ///< channels without a finite sample in their ranges, which stay as
                            ///< they are
};

/// @param data         with samples; only read
/// @param module, ray  indices from 0
/// @param ranges       within the record, ascending by channel and begin, apart from each other
FiniteSamples finiteSamples(const ObservationData &data, int module, int ray,
                            const std::vector<SampleRange> &ranges);

/// All samples of the channels from 0 on and before `channels`, as far as the record has them.
std::vector<SampleRange> wholeChannels(const ObservationData &data, int channels);

/// Writes the median of a range over those of its samples that were replaced before the levels
/// of the channel were changed.
///
/// @param samples  the first sample of the range
void replaceAgain(float *samples, const SampleRange &range,
                  const std::vector<NonFiniteSamples> &replaced);

/// Samples of one module and ray with NaN in the place of those that were replaced.
///
/// @return empty when memory is short
Samples withGaps(const Samples &samples, int npoints,
                 const std::vector<NonFiniteSamples> &replaced);

/// "4 samples are no finite numbers: channel 5 at points 100, 203 to 205." Channels with the same
/// points stand together; of many channels and points the first are named. Empty of none.
///
/// @param firstPoint  of the record, within the recording that the points are counted in
QString nonFiniteText(const std::vector<NonFiniteSamples> &samples, qint64 firstPoint = 0);

/// "Channel 5 holds no finite number": of channels without any.
QString noFiniteText(const std::vector<int> &channels);

/// "channel 5" or "channels 1 to 4, 7", counted from 1.
QString channelsText(const std::vector<int> &channels);

} // namespace Tools
