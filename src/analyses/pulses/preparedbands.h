#pragma once

#include "analyses/pulses/channelmask.h"
#include "analyses/pulses/pulseparameters.h"
#include "calc/dedispersion.h"
#include "jobs/control.h"

namespace Pulses {

/// The bands of one ray as the search adds them up: every band less its level, in units of its
/// noise, 0 where samples were left out.
struct PreparedBands {
    Tools::BandRows rows;
    ChannelMask mask;
    QStringList remarks; ///< samples that were left out
    QString problem;     ///< why there is nothing to search; empty otherwise
};

/// @param data   with the samples of the ray
/// @param tree   tells the room around the rows
PreparedBands prepareBands(const ObservationData &data, const RayPlace &place,
                           const PulsePlan &plan, const PulseParameters &parameters,
                           const Tools::DispersionTree &tree, const Jobs::Control &control);

} // namespace Pulses
