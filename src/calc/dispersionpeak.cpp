#include "calc/dispersionpeak.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tools {

namespace {

constexpr double smallestDelayShare = 0.25; // of the harmonic's period over the scan
constexpr double smallestSnr = 5;           // of the strongest amplitude
constexpr double fitDepth = 0.5;            // fit down to this share of the squared maximum
constexpr int fewestFitPoints = 5;

struct Parabola {
    double p = 0; // value at the vertex
    double q = 0; // minus the curvature: p - q (x - vertex)^2
    double vertex = 0;
};

// Least squares over the points [begin, end); x counted from the middle for good conditioning.
Parabola fitParabola(const std::vector<double> &x, const std::vector<double> &y, std::size_t begin,
                     std::size_t end)
{
    const double middle = (x[begin] + x[end - 1]) / 2;
    const double count = double(end - begin);
    double s2 = 0;
    double s4 = 0;
    double t0 = 0;
    double t1 = 0;
    double t2 = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const double u = x[i] - middle;
        s2 += u * u;
        s4 += u * u * u * u;
        t0 += y[i];
        t1 += u * y[i];
        t2 += u * u * y[i];
    }
    // The odd sums vanish for equally spaced points.
    const double c = (t2 - s2 * t0 / count) / (s4 - s2 * s2 / count);
    const double b = t1 / s2;
    const double a = (t0 - c * s2) / count;
    const double vertex = -b / (2 * c);
    return {a + b * vertex + c * vertex * vertex, -c, middle + vertex};
}

} // namespace

DispersionPeak findDispersionPeak(const std::vector<double> &dispersions,
                                  const std::vector<double> &amplitudes, const HarmonicScale &scale)
{
    DispersionPeak peak;
    const double scanned = dispersions.back() - dispersions.front();
    const double share = scale.bandDelay * scanned / scale.period;
    if (!(share > 0)) {
        peak.unconstrained = "its bands have no delay against each other";
        return peak;
    }
    if (share < smallestDelayShare) {
        peak.unconstrained =
            QString("the delay of the band changes by only %1 of the harmonic's period over the "
                    "scan; a harmonic number %2 times as high, or more, would tell")
                .arg(share, 0, 'g', 2)
                .arg(std::ceil(smallestDelayShare / share), 0, 'f', 0);
        return peak;
    }
    const auto top = std::max_element(amplitudes.begin(), amplitudes.end());
    if (!std::all_of(amplitudes.begin(), amplitudes.end(),
                     [](double a) { return std::isfinite(a); })) {
        peak.unconstrained = "the recording holds samples that are no numbers";
        return peak;
    }
    if (!(*top > smallestSnr * scale.noise)) {
        peak.unconstrained = QString("its largest value is only %1 times the noise around it")
                                 .arg(*top / scale.noise, 0, 'g', 2);
        return peak;
    }

    std::vector<double> power(amplitudes.size());
    std::transform(amplitudes.begin(), amplitudes.end(), power.begin(),
                   [](double a) { return a * a; });
    const std::size_t middle = std::size_t(top - amplitudes.begin());
    const double lowest = fitDepth * power[middle];
    std::size_t begin = middle;
    while (begin > 0 && power[begin - 1] >= lowest)
        --begin;
    std::size_t end = middle + 1;
    while (end < power.size() && power[end] >= lowest)
        ++end;
    // A peak of a few trials only is widened, so that the parabola is overdetermined.
    while (end - begin < fewestFitPoints && (begin > 0 || end < power.size())) {
        begin -= begin > 0;
        end += end < power.size();
    }

    const Parabola parabola = fitParabola(dispersions, power, begin, end);
    if (!(parabola.q > 0) || parabola.vertex < dispersions.front() ||
        parabola.vertex > dispersions.back()) {
        peak.unconstrained = "its maximum lies at the edge of the scan";
        return peak;
    }
    peak.dispersion = parabola.vertex;
    peak.error = std::hypot(scale.noise / std::sqrt(parabola.q), scale.rounding);
    return peak;
}

double noiseScaleAround(const std::vector<double> &spectrum, int index)
{
    constexpr int reach = 200;
    const int begin = std::max(1, index - reach); // value 0 is the mean, not noise
    const int end = std::min(int(spectrum.size()), index + reach + 1);
    if (begin >= end)
        return 0;
    std::vector<double> neighbours(spectrum.begin() + begin, spectrum.begin() + end);
    const auto middle = neighbours.begin() + std::ptrdiff_t(neighbours.size() / 2);
    std::nth_element(neighbours.begin(), middle, neighbours.end());
    return *middle / std::sqrt(std::log(4.0)); // median of a Rayleigh distribution
}

} // namespace Tools
