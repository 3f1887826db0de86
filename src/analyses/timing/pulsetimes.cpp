#include "analyses/timing/pulsetimes.h"

#include <cmath>

namespace Timing {

ArrivalTimes timesOfPulses(const std::vector<Pulses::Pulse> &pulses)
{
    constexpr qint64 msPerDay = 86400000;
    constexpr qint64 mjdOfUnixEpoch = 40587;
    ArrivalTimes times;
    times.scale = TimeScale::Utc;
    std::vector<Tools::SkyPosition> places;
    for (const Pulses::Pulse &pulse : pulses) {
        if (!pulse.infiniteUtc.isValid())
            continue;
        // The moment has whole ms; the day with its fraction tells what is below.
        const qint64 day = mjdOfUnixEpoch + pulse.infiniteUtc.toMSecsSinceEpoch() / msPerDay;
        const double second = (pulse.infiniteMjd - double(day)) * 86400;
        times.times.push_back(
            {day, second, std::isfinite(pulse.infiniteError) ? pulse.infiniteError : 0});
        places.push_back(pulse.position);
    }
    if (int(times.times.size()) < int(pulses.size()))
        times.remarks << "The recording tells no begin: its pulses have no times.";
    times.position = meanPosition(places);
    sortTimes(times);
    return times;
}

} // namespace Timing
