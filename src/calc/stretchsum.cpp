#include "calc/stretchsum.h"

#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/finitesamples.h"

#include <algorithm>

namespace Tools {

DelayReach delayReach(const ObservationData &header, double dispersion)
{
    DelayReach reach;
    const int reference = header.channels - 2;
    if (reference < 0 || !areFrequencies(header.fbands, reference + 1))
        return reach;
    const BandDelays delays(header, reference + 1, dispersion, ShiftRounding::WholeRecording);
    if (delays.highestWithoutShift() >= 0)
        return reach;
    const double most = header.npoints;
    reach.before = int(std::min(delays.longestEarlier(), most));
    reach.after = int(std::min(delays.longestLater(), most));
    return reach;
}

namespace {

StretchSum refused(const RecordingFile &file, const QString &reason)
{
    return StretchSum::none(StretchEnd::Refused, QString("%1: %2").arg(file.path(), reason));
}

} // namespace

StretchSum sumStretch(RecordingFile &file, double dispersion, int module, int ray, int first,
                      int count, const SampleReadingHooks &hooks)
{
    const int points = file.completePoints();
    if (first < 0 || count < 1 || qint64(first) + count > points)
        return refused(file, QString("there are no points %1 to %2; the recording has %3.")
                                 .arg(first)
                                 .arg(qint64(first) + count - 1)
                                 .arg(points));
    const DelayReach reach = delayReach(file.header(), dispersion);
    // With all points at hand the shifts wrap as they do in the recording.
    const bool needsAll = qint64(count) + reach.before + reach.after >= points;
    Stretch stretch;
    stretch.modules = {module};
    stretch.rays = {ray};
    stretch.first = needsAll ? 0 : first - reach.before;
    stretch.count = needsAll ? points : reach.before + count + reach.after;
    stretch.wraps = true;
    const StretchReading reading = file.read(stretch, hooks);
    if (!reading.whole())
        return StretchSum::none(reading.end(), reading.reason());

    ObservationData data = *reading.whole();
    const FiniteSamples finite = finiteSamples(data, 0, 0, wholeChannels(data, data.channels - 1));
    if (!finite.samples)
        return refused(file, "there is not enough memory. Close other programs.");
    if (!finite.empty.empty())
        return refused(file,
                       noFiniteText(finite.empty) + ". Choose another ray, module or stretch.");
    data.samples = finite.samples;
    const std::vector<double> all = sumChannels(data, dispersion, 0, 0);
    if (all.empty())
        return refused(file, "its frequencies or its step are no usable numbers.");
    const auto begin = all.begin() + (needsAll ? first : reach.before);
    SeriesOfStretch series;
    series.sums.assign(begin, begin + count);
    series.remark = nonFiniteText(finite.replaced, stretch.first);
    return StretchSum::complete(std::move(series));
}

} // namespace Tools
