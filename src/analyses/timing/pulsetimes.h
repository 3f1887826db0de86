#pragma once

#include "analyses/pulses/pulse.h"
#include "analyses/timing/arrivaltimes.h"

namespace Timing {

/// UTC at infinite frequency of pulses, in the mean of their directions; pulses of a recording
/// without a begin have none and are left out.
ArrivalTimes timesOfPulses(const std::vector<Pulses::Pulse> &pulses);

} // namespace Timing
