#pragma once

#include "analyses/pulses/pulse.h"
#include "analyses/timing/arrivaltimes.h"
#include "data/observationdata.h"

namespace Timing {

/// UTC at infinite frequency of pulses of one source, all made with one dispersion: the mean of
/// theirs. A pulse's own dispersion moves the time at infinite frequency by more than the pulse is
/// wide; what it tells best is the time in the middle of the bands. Errors are those of a matched
/// filter of its width and S/N. Pulses of a recording without a begin are left out.
///
/// @param header  of the recording; samples are not looked at
ArrivalTimes timesOfPulses(const std::vector<Pulses::Pulse> &pulses, const ObservationData &header);

} // namespace Timing
