#include "calc/pulsar/sumreach.h"

#include "base/timetext.h"
#include "calc/pulsar/bandsum.h"
#include "data/recordingtime.h"

#include <algorithm>

namespace Pulsar {

QString pointText(const ObservationData &header, const PulsarParameters &parameters, int point)
{
    if (parameters.startTime.isEmpty())
        return QString::number(point);
    return textOfTime(RecordingClock(header).utc(point), "hh:mm:ss.zzz");
}

QString SumReach::fullStartText() const
{
    const int last = lastFullStart();
    if (last < 0)
        return "at this dispersion no first point has every band whole";
    return QString("up to %1 every band has all its points")
        .arg(pointText(header, parameters, last));
}

// Samples by which the sum, and the sum with opposite delays where there is one, reads a band later
// at most (`sign` 1) or earlier (`sign` -1).
int SumReach::longestReading(int sign) const
{
    const Tools::BandDelays delays = bandDelays(header, dispersion);
    const double later = delays.longestLater();
    const double earlier = delays.longestEarlier();
    const double longest = parameters.noise == "backSum" ? std::max(later, earlier)
                           : sign > 0                    ? later
                                                         : earlier;
    return int(std::min(longest, double(header.npoints)));
}

int SumReach::lastFullStart() const
{
    const int last = header.npoints - points - std::max(1, longestReading(1));
    return std::max(-1, last);
}

int SumReach::pointsWithoutAllBands(int firstPoint) const
{
    return std::clamp(longestReading(-1) - firstPoint, 0, points);
}

} // namespace Pulsar
