#include "analyses/timing/pulsetimes.h"

#include "calc/banddelays.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace Timing {

namespace {

// Mean of the dispersions by their errors; 0 where none is known.
double commonDispersion(const std::vector<Pulses::Pulse> &pulses)
{
    double sum = 0;
    double weights = 0;
    for (const Pulses::Pulse &pulse : pulses) {
        const double weight = 1 / (pulse.dispersion.error * pulse.dispersion.error);
        if (!std::isfinite(pulse.dispersion.value * weight))
            continue;
        sum += weight * pulse.dispersion.value;
        weights += weight;
    }
    return weights > 0 ? sum / weights : 0;
}

// Mean of 1 / f^2 over the bands, MHz^-2.
double meanInverseSquare(const ObservationData &header)
{
    const int bands = header.channels - 1;
    double sum = 0;
    for (int band = 0; band < bands; ++band)
        sum += 1 / (header.fbands[std::size_t(band)] * header.fbands[std::size_t(band)]);
    return sum / bands;
}

double errorOf(const Pulses::Pulse &pulse, double step)
{
    constexpr double perWidth = 0.6; // sqrt(2) sigma / S/N of a Gaussian, by its full width
    const double points = std::isfinite(pulse.fwhm.value) ? pulse.fwhm.value : double(pulse.width);
    return step * std::hypot(perWidth * points / pulse.snr, 1 / std::sqrt(12.0));
}

} // namespace

ArrivalTimes timesOfPulses(const std::vector<Pulses::Pulse> &pulses, const ObservationData &header)
{
    constexpr double secondsPerDay = 86400;
    const double dispersion = commonDispersion(pulses);
    const double perDispersion = Tools::dispersionConstant * meanInverseSquare(header);
    ArrivalTimes times;
    times.scale = TimeScale::Utc;
    std::vector<Tools::SkyPosition> places;
    for (const Pulses::Pulse &pulse : pulses) {
        if (!std::isfinite(pulse.infiniteMjd))
            continue;
        const double own =
            std::isfinite(pulse.dispersion.value) ? pulse.dispersion.value : dispersion;
        const double day = std::floor(pulse.infiniteMjd);
        const double second =
            (pulse.infiniteMjd - day) * secondsPerDay + perDispersion * (own - dispersion);
        times.times.push_back({qint64(day), second, errorOf(pulse, header.tresolution)});
        places.push_back(pulse.position);
    }
    if (times.times.size() < pulses.size())
        times.remarks << "The recording tells no begin: its pulses have no times.";
    times.position = meanPosition(places);
    std::sort(times.times.begin(), times.times.end(), // the strongest came first
              [](const ArrivalTime &a, const ArrivalTime &b) {
                  return std::tie(a.day, a.second) < std::tie(b.day, b.second);
              });
    sortTimes(times);
    return times;
}

} // namespace Timing
