#pragma once

#include "analyses/days/dayplace.h"
#include "analyses/pulses/preparedbands.h"
#include "analyses/pulses/pulse.h"
#include "calc/boxcarsearch.h"
#include "data/recordingtime.h"

namespace Pulses {

/// Measures the pulses of one ray. Refers to all that it is made of.
class PulseMeter {
public:
    /// @param header  of the recording
    /// @param scales  of Tools::boxcarScales(), [trial][width]
    PulseMeter(const ObservationData &header, const RayPlace &place, const PulsePlan &plan,
               const PulseParameters &parameters, const PreparedBands &bands,
               const Tools::DispersionTree &tree, const std::vector<float> &scales);

    /// A pulse with all that its ray tells of it, but for the verdict.
    ///
    /// @param peaks  all of the ray
    /// @param group  indices of the pulse, the strongest first
    Pulse measure(const std::vector<Tools::BoxcarEvent> &peaks,
                  const std::vector<int> &group) const;

private:
    struct Stretch;
    Stretch stretchAround(const Tools::BoxcarEvent &best) const;
    void addSnr(const Stretch &stretch, const Tools::BoxcarEvent &best, Pulse &pulse) const;
    void addFit(const Tools::BoxcarEvent &best, Pulse &pulse) const;
    void addTimes(Pulse &pulse) const;
    void addSource(Pulse &pulse) const;
    float scaleOf(int trial, int width) const;

    const ObservationData &header;
    const RayPlace &place;
    const PulsePlan &plan;
    const PulseParameters &parameters;
    const PreparedBands &bands;
    const Tools::DispersionTree &tree;
    const std::vector<float> &scales;
    const RecordingClock clock;
    const Days::Beam beam;
    std::vector<double> delays; // of each band at dispersion 1, samples
    std::vector<int> liveBands;
};

} // namespace Pulses
