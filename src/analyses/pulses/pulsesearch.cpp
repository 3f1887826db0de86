#include "analyses/pulses/pulsesearch.h"

#include "analyses/pulses/pulsemeter.h"
#include "calc/boxcargroups.h"
#include "data/recordingfile.h"

#include <algorithm>
#include <cmath>

namespace Pulses {

namespace {

constexpr double mostOfOneChannel = 0.5;
// No pulsar is known below it: what is lower is of the Earth.
constexpr double leastSourceDispersion = 2; // pc/cm^3
constexpr double lowSigmas = 2;

Verdict verdictOf(const Pulse &pulse, const PulsePlan &plan, const PulseParameters &parameters)
{
    if (plan.bands >= fewestBandsToMask && pulse.channelShare > mostOfOneChannel)
        return {
            VerdictKind::OneChannel,
            QString("One channel carries %1 % of it.").arg(100 * pulse.channelShare, 0, 'f', 0)};
    // Where the bands hardly tell dispersions apart, 0 is no evidence.
    const Measured &dispersion = pulse.dispersion;
    const double error = std::isfinite(dispersion.error) ? dispersion.error : 0;
    const bool isLow = dispersion.value + lowSigmas * error < leastSourceDispersion;
    const bool isTold = isLow || dispersion.value - error > 0;
    const bool isAsStrong = pulse.snrAtZero >= pulse.snr && isTold;
    if (plan.isDispersionKnown && !parameters.zeroDm && (isAsStrong || isLow))
        return {VerdictKind::NotDispersed,
                QString("S/N %1 at dispersion 0, %2 at %3 +- %4 pc/cm^3.")
                    .arg(pulse.snrAtZero, 0, 'f', 1)
                    .arg(pulse.snr, 0, 'f', 1)
                    .arg(pulse.dispersion.value, 0, 'f', 1)
                    .arg(pulse.dispersion.error, 0, 'f', 1)};
    return {};
}

RayPulses withPlace(const RayPlace &place, const PreparedBands &bands)
{
    RayPulses found;
    found.place = place;
    found.mask = bands.mask;
    found.remarks = bands.remarks;
    if (!bands.problem.isEmpty())
        found.remarks << bands.problem;
    return found;
}

// Whether the samples tell the same of both.
bool isSameFit(const Pulse &a, const Pulse &b)
{
    const double apart = std::abs(a.point.value - b.point.value);
    const double dispersions = std::abs(a.dispersion.value - b.dispersion.value);
    return apart <= (a.fwhm.value + b.fwhm.value) / 4 &&
           dispersions <= std::hypot(a.dispersion.error, b.dispersion.error);
}

// A weak pulse can stand above the threshold at dispersions far apart and below it between them.
// Where a fit of all samples comes to the same pulse, the weaker one goes into the stronger.
void joinSameFits(std::vector<Pulse> &pulses)
{
    std::vector<Pulse> kept;
    for (Pulse &pulse : pulses) {
        const auto same = std::find_if(kept.begin(), kept.end(), [&](const Pulse &stronger) {
            return isSameFit(stronger, pulse);
        });
        if (same == kept.end())
            kept.push_back(std::move(pulse));
        else
            same->eventCount += pulse.eventCount;
    }
    pulses = std::move(kept);
}

} // namespace

RayPulses searchRay(const ObservationData &data, const RayPlace &place, const PulsePlan &plan,
                    const PulseParameters &parameters, const Jobs::Control &control)
{
    Tools::DispersionTree tree(data, plan.bands, plan.dispersions);
    const PreparedBands bands = prepareBands(data, place, plan, parameters, tree, control);
    RayPulses found = withPlace(place, bands);
    if (!bands.problem.isEmpty() || control.isStopped())
        return found;
    const std::vector<float> scales = Tools::boxcarScales(bands.rows, tree, plan.widths);
    const std::vector<Tools::BoxcarEvent> peaks = Tools::findBoxcars(
        bands.rows, tree, plan.widths, scales, float(plan.threshold), control.isStopped);
    const PulseMeter meter(data, place, plan, parameters, bands, tree, scales);
    for (const std::vector<int> &group : Tools::groupsOfBoxcars(peaks)) {
        if (control.isStopped())
            return found;
        Pulse pulse = meter.measure(peaks, group);
        pulse.verdict = verdictOf(pulse, plan, parameters);
        found.pulses.push_back(std::move(pulse));
    }
    sortPulses(found.pulses);
    joinSameFits(found.pulses);
    return found;
}

PreparedRay prepareRay(const ObservationData &data, const RayPlace &place, const PulsePlan &plan,
                       const PulseParameters &parameters, const Jobs::Control &control)
{
    PreparedRay prepared;
    const Tools::DispersionTree tree(data, plan.bands, plan.dispersions);
    PreparedBands bands = prepareBands(data, place, plan, parameters, tree, control);
    prepared.mask = bands.mask;
    prepared.remarks = bands.remarks;
    prepared.problem = bands.problem;
    if (!prepared.problem.isEmpty())
        return prepared;
    const auto block = SampleBlock::allocate(1, plan.bands + 1, 1, plan.points);
    if (!block) {
        prepared.problem = "Memory is short. Choose a shorter stretch or close other programs.";
        return prepared;
    }
    for (int band = 0; band < plan.bands; ++band)
        std::copy_n(bands.rows.row(band), plan.points, block->ray(0, band, 0));
    Stretch stretch;
    stretch.first = plan.firstPoint;
    stretch.count = plan.points;
    stretch.modules = {place.module};
    stretch.rays = {place.ray};
    prepared.data = stretchHeader(data, stretch);
    prepared.data.samples = Samples(block);
    return prepared;
}

int PulseResult::candidates() const
{
    return int(std::count_if(pulses.begin(), pulses.end(),
                             [](const Pulse &pulse) { return pulse.verdict.isCandidate(); }));
}

PulseResult search(const ObservationData &data, const PulseParameters &parameters,
                   const Jobs::Control &control,
                   const std::function<void(const std::vector<Pulse> &)> &deliver)
{
    PulseResult result;
    result.plan = planPulses(data, parameters);
    if (!result.plan.problems.empty())
        return result;
    for (std::size_t i = 0; i < result.plan.rays.size(); ++i) {
        RayPulses found = searchRay(data, result.plan.rays[i], result.plan, parameters, control);
        if (control.isStopped()) {
            result.wasStopped = true;
            return result;
        }
        result.rays.push_back(std::move(found));
        result.pulses = joinRays(result.rays, result.plan);
        control.progress(int(100 * (i + 1) / result.plan.rays.size()));
        if (deliver)
            deliver(result.pulses);
    }
    return result;
}

} // namespace Pulses
