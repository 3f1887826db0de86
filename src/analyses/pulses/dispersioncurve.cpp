#include "analyses/pulses/pulsesearch.h"
#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/dispersiongrid.h"
#include "calc/pulsefit.h"

#include <algorithm>
#include <cmath>

namespace Pulses {

namespace {

constexpr double widthPerSigma = 2.3548200450309493;
constexpr double stepInWidths = 0.25; // delay over the bands from a dispersion to the next
constexpr int stepsEachSide = 16;
constexpr double templateReach = 1.5; // widths

std::vector<double> gaussian(double fwhm)
{
    const int reach = int(std::ceil(templateReach * fwhm)) + 1;
    std::vector<double> shape;
    double squares = 0;
    for (int i = -reach; i <= reach; ++i) {
        const double x = i * widthPerSigma / fwhm;
        shape.push_back(std::exp(-x * x / 2));
        squares += shape.back() * shape.back();
    }
    for (double &value : shape)
        value /= std::sqrt(squares);
    return shape;
}

// The samples near the pulse at all dispersions of the curve, from `begin` on.
ObservationData cutOut(const ObservationData &data, int begin, int length)
{
    ObservationData part = data;
    part.npoints = length;
    const auto block = SampleBlock::allocate(1, data.channels, 1, length);
    part.samples = block ? Samples(block) : Samples();
    const int from = std::max(0, begin);
    const int to = std::min(data.npoints, begin + length);
    for (int band = 0; block && band < data.channels - 1 && from < to; ++band)
        std::copy(data.samples[0][band][0] + from, data.samples[0][band][0] + to,
                  block->ray(0, band, 0) + (from - begin));
    return part;
}

} // namespace

DispersionCurve dispersionCurve(const PreparedRay &ray, const PulsePlan &plan, const Pulse &pulse)
{
    DispersionCurve curve;
    const double spread = Tools::delaySpread(ray.data, plan.bands);
    const double fwhm = std::max(1.0, pulse.fwhm.value);
    if (!plan.isDispersionKnown || ray.data.samples == nullptr || !std::isfinite(fwhm))
        return curve;
    const double step = stepInWidths * fwhm / spread;
    const double least = pulse.dispersion.value - stepsEachSide * step;
    const double most = pulse.dispersion.value + stepsEachSide * step;
    const std::vector<double> shape = gaussian(fwhm);
    const int room = int(std::ceil(spread * std::max(std::abs(least), std::abs(most)))) + 1;
    const int reach = int(std::ceil(2 * stepsEachSide * stepInWidths * fwhm)) + int(shape.size());
    const int centre = int(std::lround(pulse.point.value)) - plan.firstPoint;
    const ObservationData part = cutOut(ray.data, centre - reach - room, 2 * (reach + room) + 1);
    if (part.samples == nullptr)
        return curve;
    const double noise = std::sqrt(double(plan.bands));
    for (int i = -stepsEachSide; i <= stepsEachSide; ++i) {
        const double dispersion = pulse.dispersion.value + i * step;
        const std::vector<double> sums = Tools::sumChannels(part, dispersion, 0, 0);
        double best = 0;
        for (int at = room; at + int(shape.size()) <= room + 2 * reach + 1; ++at) {
            double sum = 0;
            for (std::size_t k = 0; k < shape.size(); ++k)
                sum += shape[k] * sums[std::size_t(at) + k];
            best = std::max(best, sum / noise);
        }
        curve.dispersions.push_back(dispersion);
        curve.snr.push_back(best);
    }
    // Height by least squares; where and how wide the curve is, the pulse tells.
    double products = 0;
    double squares = 0;
    for (int i = -stepsEachSide; i <= stepsEachSide; ++i) {
        const double law = Tools::snrAtWrongDelay(i * stepInWidths);
        curve.fitted.push_back(law);
        products += law * curve.snr[std::size_t(i + stepsEachSide)];
        squares += law * law;
    }
    for (double &value : curve.fitted)
        value *= products / squares;
    return curve;
}

} // namespace Pulses
