#include "analyses/pulses/pulsemeter.h"

#include "analyses/days/stackevidence.h"
#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/pulsefit.h"
#include "coords/barycentre.h"
#include "coords/skyclock.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Pulses {

namespace {

constexpr double boxcarPerWidth = 1.2; // the best boxcar of a Gaussian over its width
constexpr double sameSigmas = 3;       // within which a dispersion is that of a known pulsar
constexpr double sameShare = 0.02;     // or so much of it, where the pulse is no Gaussian
constexpr double msPerDay = 86400000;

} // namespace

// A record of the samples around a pulse, for Tools::sumChannels().
struct PulseMeter::Stretch {
    ObservationData data;
    int begin = 0; // point of the search at which it begins
    int clean = 0; // points at its begin that are there for delays only
};

PulseMeter::PulseMeter(const ObservationData &recording, const RayPlace &rayPlace,
                       const PulsePlan &pulsePlan, const PulseParameters &pulseParameters,
                       const PreparedBands &preparedBands, const Tools::DispersionTree &trials,
                       const std::vector<float> &boxcarScales)
    : header(recording), place(rayPlace), plan(pulsePlan), parameters(pulseParameters),
      bands(preparedBands), tree(trials), scales(boxcarScales), clock(recording),
      beam(
          Days::beamOf(Days::siteOf(recording.filePath), rayPlace.moduleNumber, rayPlace.rayNumber))
{
    const Tools::BandDelays unit(header, plan.bands, 1, Tools::ShiftRounding::Nearest);
    for (int band = 0; band < plan.bands; ++band) {
        delays.push_back(unit.delay(band));
        const float *const row = bands.rows.row(band);
        if (std::any_of(row, row + plan.points, [](float sample) { return sample != 0; }))
            liveBands.push_back(band);
    }
}

float PulseMeter::scaleOf(int trial, int width) const
{
    const auto index = std::lower_bound(plan.widths.begin(), plan.widths.end(), width);
    return scales[std::size_t(trial) * plan.widths.size() +
                  std::size_t(index - plan.widths.begin())];
}

PulseMeter::Stretch PulseMeter::stretchAround(const Tools::BoxcarEvent &best) const
{
    Stretch stretch;
    // At dispersion 0 the pulse lies within its delay over the bands.
    const int reach = plan.longestDelay + 2 * plan.widths.back();
    stretch.clean = tree.earliest();
    stretch.begin = best.first - reach - stretch.clean;
    const int length = stretch.clean + 2 * reach + best.width + plan.widths.back() + tree.latest();
    const auto block = SampleBlock::allocate(1, plan.bands + 1, 1, length);
    if (!block)
        return stretch;
    const int from = std::max(0, stretch.begin);
    const int to = std::min(plan.points, stretch.begin + length);
    for (int band = 0; band < plan.bands && from < to; ++band)
        std::copy(bands.rows.row(band) + from, bands.rows.row(band) + to,
                  block->ray(0, band, 0) + (from - stretch.begin));
    ObservationData &data = stretch.data;
    data.npoints = length;
    data.modules = data.rays = 1;
    data.channels = plan.bands + 1;
    data.tresolution = header.tresolution;
    data.fbands = header.fbands;
    data.samples = Samples(block);
    return stretch;
}

// S/N in double: of the pulse, and the best at dispersion 0 around it.
void PulseMeter::addSnr(const Stretch &stretch, const Tools::BoxcarEvent &best, Pulse &pulse) const
{
    const double dispersion = plan.dispersions[std::size_t(best.trial)];
    const std::vector<double> sums = Tools::sumChannels(stretch.data, dispersion, 0, 0);
    const auto begin = sums.begin() + (best.first - stretch.begin);
    pulse.snr =
        std::accumulate(begin, begin + best.width, 0.0) * double(scaleOf(best.trial, best.width));
    double total = 0;
    double most = 0;
    for (const int band : liveBands) {
        const float *const row = stretch.data.samples[0][band][0] + (best.first - stretch.begin) +
                                 tree.shift(best.trial, band);
        const double share = std::accumulate(row, row + best.width, 0.0);
        total += share;
        most = std::max(most, share);
    }
    pulse.channelShare = total > 0 ? most / total : 0;
    if (!plan.isDispersionKnown)
        return;
    const std::vector<double> atZero = Tools::sumChannels(stretch.data, 0, 0, 0);
    std::vector<double> running(atZero.size() + 1, 0.0);
    std::partial_sum(atZero.begin(), atZero.end(), running.begin() + 1);
    const int delay = int(std::lround(dispersion / plan.dispersions.back() * plan.longestDelay));
    const int reach = delay + best.width;
    for (const int width : plan.widths) {
        const double scale = double(scaleOf(0, width));
        for (int i = best.first - reach; i <= best.first + reach; ++i) {
            const std::size_t at = std::size_t(i - stretch.begin);
            pulse.snrAtZero =
                std::max(pulse.snrAtZero, (running[at + std::size_t(width)] - running[at]) * scale);
        }
    }
}

void PulseMeter::addFit(const Tools::BoxcarEvent &best, Pulse &pulse) const
{
    const double fwhm = std::max(1.0, best.width / boxcarPerWidth);
    Tools::PulseShape shape;
    shape.point = best.first + (best.width - 1) / 2.0;
    shape.dispersion = plan.dispersions[std::size_t(best.trial)];
    shape.fwhm = fwhm;
    shape.height = pulse.snr / std::sqrt(double(liveBands.size()) * best.width);
    Tools::PulseBands fitted;
    fitted.count = plan.points;
    for (const int band : liveBands) {
        fitted.samples.push_back(bands.rows.row(band));
        fitted.delays.push_back(delays[std::size_t(band)]);
    }
    const bool fitsDispersion = plan.isDispersionKnown && liveBands.size() > 1;
    const Tools::PulseFit fit = Tools::fitPulse(fitted, shape, fitsDispersion);
    // The fit takes neighbouring samples for independent; noise that they share widens errors.
    const double widening = std::max(1.0, 1 / (double(scaleOf(best.trial, best.width)) *
                                               std::sqrt(double(liveBands.size()) * best.width)));
    const auto measured = [&](double value, double error) {
        return Measured{value, fit.isFitted ? error * widening : unknown};
    };
    pulse.point = measured(plan.firstPoint + fit.shape.point, fit.error.point);
    pulse.fwhm = measured(fit.shape.fwhm, fit.error.fwhm);
    if (fitsDispersion)
        pulse.dispersion = measured(fit.shape.dispersion, fit.error.dispersion);
    else
        pulse.dispersion.value = shape.dispersion;
    // Time in the last band at infinite frequency, where dispersion and time err together.
    const double toInfinity = Tools::dispersionDelay(header.fbands[std::size_t(plan.bands - 1)],
                                                     1e12, 1, header.tresolution);
    pulse.infinitePoint = pulse.point.value - toInfinity * pulse.dispersion.value;
    const double variance = fit.error.point * fit.error.point +
                            toInfinity * toInfinity * fit.error.dispersion * fit.error.dispersion -
                            2 * toInfinity * fit.pointWithDispersion;
    pulse.infiniteError = fitsDispersion && fit.isFitted
                              ? std::sqrt(variance) * widening * header.tresolution
                              : unknown;
}

void PulseMeter::addTimes(Pulse &pulse) const
{
    if (!clock.isKnown())
        return;
    const auto utcAt = [&](double point) {
        return clock.utc(point).addMSecs(-qint64(std::llround(parameters.clockOffset * 1000)));
    };
    pulse.utc = utcAt(pulse.point.value);
    pulse.infiniteUtc = utcAt(pulse.infinitePoint);
    const QDateTime begin = clock.utc(0);
    pulse.infiniteMjd =
        Tools::modifiedJulianDay(begin) +
        (pulse.infinitePoint * header.tresolution * 1000 - parameters.clockOffset * 1000) /
            msPerDay;
}

void PulseMeter::addSource(Pulse &pulse) const
{
    pulse.position = {unknown, unknown};
    if (!beam.isKnown() || !pulse.utc.isValid())
        return;
    pulse.position = Tools::positionInBeam(pulse.utc, beam.delta);
    for (const Tools::KnownPulsar *const pulsar :
         Days::pulsarsInBeam(beam, pulse.position, pulse.utc.date(), 0)) {
        const double apart = std::abs(pulsar->dispersion - pulse.dispersion.value);
        if (apart <=
            std::max(sameSigmas * pulse.dispersion.error, sameShare * pulsar->dispersion)) {
            pulse.knownSource = pulsar->name;
            return;
        }
    }
}

Pulse PulseMeter::measure(const std::vector<Tools::BoxcarEvent> &peaks,
                          const std::vector<int> &group) const
{
    const Tools::BoxcarEvent &best = peaks[std::size_t(group.front())];
    Pulse pulse;
    pulse.module = place.moduleNumber;
    pulse.ray = place.rayNumber;
    pulse.firstPoint = plan.firstPoint + best.first;
    pulse.width = best.width;
    pulse.eventCount = int(group.size());
    for (std::size_t i = 0; i < std::min<std::size_t>(group.size(), mostEvents); ++i) {
        const Tools::BoxcarEvent &peak = peaks[std::size_t(group[i])];
        pulse.events.push_back({plan.firstPoint + peak.first, peak.width, peak.trial, peak.snr});
    }
    const Stretch stretch = stretchAround(best);
    if (stretch.data.samples == nullptr) { // memory is short: what the search tells remains
        pulse.snr = double(best.snr);
        pulse.point.value = pulse.firstPoint + (best.width - 1) / 2.0;
        pulse.dispersion.value = plan.dispersions[std::size_t(best.trial)];
    } else {
        addSnr(stretch, best, pulse);
        addFit(best, pulse);
        addTimes(pulse);
    }
    addSource(pulse);
    pulse.rays = {{pulse.module, pulse.ray, pulse.snr}};
    return pulse;
}

} // namespace Pulses
