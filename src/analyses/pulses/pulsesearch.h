#pragma once

#include "analyses/pulses/channelmask.h"
#include "analyses/pulses/pulse.h"
#include "analyses/pulses/pulseparameters.h"
#include "jobs/control.h"

#include <functional>

/// The search of a recording for single pulses: `search` for one in memory; searchRay() and
/// joinRays() where its rays are read one after the other.
namespace Pulses {

/// What one ray gives.
struct RayPulses {
    RayPlace place;
    std::vector<Pulse> pulses; ///< judged as far as one ray tells
    ChannelMask mask;
    QStringList remarks; ///< samples that were left out
};

/// The samples of one ray as the search adds them up: a record of one module and ray, as long as
/// the stretch, whose `point` and begin are those of its first point. Every band is less its level
/// and in units of its noise, so that a sum over the bands has that of their root; what is masked
/// or no number is 0. Tools::sumChannels() of it is the series in which S/N is told.
struct PreparedRay {
    ObservationData data;
    ChannelMask mask;
    QStringList remarks; ///< samples that were left out
    QString problem;     ///< memory is short, or nothing is left; empty otherwise
};

/// @param data  with the samples of the ray at least
PreparedRay prepareRay(const ObservationData &data, const RayPlace &place, const PulsePlan &plan,
                       const PulseParameters &parameters, const Jobs::Control &control = {});

/// @param data  with the samples of the ray at least
RayPulses searchRay(const ObservationData &data, const RayPlace &place, const PulsePlan &plan,
                    const PulseParameters &parameters, const Jobs::Control &control = {});

/// Pulses of different rays that are one become one: the strongest ray gives the position, the
/// others confirm. With all rays known, the verdicts are final; sorted.
std::vector<Pulse> joinRays(const std::vector<RayPulses> &rays, const PulsePlan &plan);

struct PulseResult {
    PulsePlan plan;
    std::vector<Pulse> pulses; ///< sorted
    std::vector<RayPulses> rays;
    bool wasStopped = false;

    int candidates() const; ///< pulses whose verdict is none against them
};

/// Searches all rays of the plan.
///
/// @param data     with the samples of all rays of the plan
/// @param deliver  gets, after each ray, all that was found so far as `pulses` of the result will
///                 have it; may be empty
PulseResult search(const ObservationData &data, const PulseParameters &parameters,
                   const Jobs::Control &control = {},
                   const std::function<void(const std::vector<Pulse> &)> &deliver = {});

/// S/N over dispersion around a pulse, for its picture and its fit.
struct DispersionCurve {
    std::vector<double> dispersions; ///< pc/cm^3
    std::vector<double> snr;         ///< of the best place at each, a Gaussian of the pulse's width
    std::vector<double> fitted;      ///< Cordes & McLaughlin 2003, through them
};
DispersionCurve dispersionCurve(const PreparedRay &ray, const PulsePlan &plan, const Pulse &pulse);

} // namespace Pulses
