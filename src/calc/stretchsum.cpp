#include "calc/stretchsum.h"

#include "calc/channelsum.h"

#include <algorithm>
#include <cmath>

namespace Tools {

DelayReach delayReach(const ObservationData &header, double dispersion)
{
    DelayReach reach;
    const int reference = header.channels - 2;
    if (reference < 0 || !areFrequencies(header.fbands, reference + 1))
        return reach;
    const auto limited = [&header](int shift) { return std::min(shift, header.npoints); };
    for (int c = 0; c < reference; ++c) {
        const double delay =
            dispersionDelay(header.fbands[std::size_t(c)], header.fbands[std::size_t(reference)],
                            dispersion, header.tresolution);
        if (!isShift(delay)) // of NaN too
            return {};
        const int shift = wholeRecordingShift(delay);
        reach.after = std::max(reach.after, limited(shift));
        reach.before = std::max(reach.before, limited(-shift));
    }
    return reach;
}

StretchSum sumChannels(RecordingFile &file, double dispersion, int module, int ray, int first,
                       int count, const SampleReadingHooks &hooks)
{
    const ObservationData &header = file.header();
    StretchSum result;
    if (first < 0 || count < 1 || qint64(first) + count > header.npoints) {
        result.reason = QString("%1 has no points %2 to %3.")
                            .arg(header.filePath)
                            .arg(first)
                            .arg(qint64(first) + count - 1);
        return result;
    }
    const DelayReach reach = delayReach(header, dispersion);
    // With all points at hand the shifts wrap as they do in the recording.
    const bool needsAll = qint64(count) + reach.before + reach.after >= header.npoints;
    Stretch stretch;
    stretch.modules = {module};
    stretch.rays = {ray};
    stretch.first = needsAll ? 0 : first - reach.before;
    stretch.count = needsAll ? header.npoints : reach.before + count + reach.after;
    stretch.wraps = true;
    const StretchReading reading = file.read(stretch, hooks);
    result.end = reading.end;
    result.reason = reading.reason;
    if (!reading.data.samples)
        return result;
    const std::vector<double> all = sumChannels(reading.data, dispersion, 0, 0);
    if (all.empty()) {
        result.end = StretchEnd::Refused;
        result.reason =
            QString("%1: its frequencies or its step are no usable numbers.").arg(header.filePath);
        return result;
    }
    const auto begin = all.begin() + (needsAll ? first : reach.before);
    result.sums.assign(begin, begin + count);
    return result;
}

} // namespace Tools
