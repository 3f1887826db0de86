#include "calc/notch.h"

#include "calc/fourier.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numeric>

namespace Tools {

namespace {

using Values = std::vector<double>;

constexpr double leastSines = 16;           // in a band
constexpr std::size_t mostLengthening = 64; // of the series, to get so many
constexpr double leastRest = 3e-6;          // of the gradient, where the fit ends
constexpr int mostSteps = 100;

double dot(const Values &a, const Values &b)
{
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

double meanOf(const Values &series)
{
    return std::accumulate(series.begin(), series.end(), 0.0) / double(series.size());
}

double varianceOf(const Values &series)
{
    const double mean = meanOf(series);
    double squares = 0;
    for (const double value : series)
        squares += (value - mean) * (value - mean);
    return squares / double(series.size());
}

void addLevel(double level, Values &series)
{
    for (double &value : series)
        value += level;
}

// Sines of a transform of which the first values are the series.
class BandFit {
public:
    BandFit(std::size_t points, double tsamp, const std::vector<NotchBand> &bands) : count(points)
    {
        double narrowest = 1; // cycles a sample
        for (const NotchBand &band : bands)
            narrowest = std::min(narrowest, (band.high - band.low) * tsamp);
        const double wanted = std::min(leastSines / narrowest, double(mostLengthening * count));
        const auto least = std::max(count + count / 4, std::size_t(wanted));
        length = std::bit_ceil(std::max(least, std::size_t(4)));
        spectrum.resize(length / 2 + 1);
        for (const NotchBand &band : bands) {
            const double bins = double(length) * tsamp;
            const double half = double(length / 2);
            const double low = std::min(std::max(1.0, std::ceil(band.low * bins)), half);
            const double high = std::min(std::floor(band.high * bins), half);
            ranges.push_back({std::size_t(low), std::size_t(std::max(low, high))});
        }
    }

    // Amplitudes of the best sum and of a level, which only a fit with the sum tells from a low
    // band: least squares by conjugate gradients (Hestenes & Stiefel 1952).
    Values fit(Values rest)
    {
        Values amplitudes(length);
        rest.resize(length);
        Values gradient = amplitudesOf(rest);
        Values direction = gradient;
        double power = dot(gradient, gradient);
        const double enough = leastRest * leastRest * power;
        for (int step = 0; step < mostSteps && power > enough; ++step) {
            const Values change = seriesOf(direction);
            const double reach = dot(change, change);
            if (!(reach > 0))
                break;
            const double factor = power / reach;
            for (std::size_t i = 0; i < length; ++i) {
                amplitudes[i] += factor * direction[i];
                rest[i] -= factor * change[i];
            }
            gradient = amplitudesOf(rest);
            const double before = power;
            power = dot(gradient, gradient);
            for (std::size_t i = 0; i < length; ++i)
                direction[i] = gradient[i] + power / before * direction[i];
        }
        return amplitudes;
    }

    // What one band adds to the series. Its amplitudes go, so that bands may overlap.
    Values takePart(std::size_t band, Values &amplitudes)
    {
        Values part(length);
        copyRange(ranges[band], amplitudes, part);
        copyRange(ranges[band], Values(length), amplitudes);
        return seriesOf(std::move(part));
    }

private:
    struct Range {
        std::size_t first, last;
    };

    // Amplitudes k and length - k are those of one frequency.
    void copyRange(const Range &range, const Values &from, Values &to) const
    {
        for (std::size_t k = range.first; k <= range.last; ++k) {
            to[k] = from[k];
            to[length - k] = from[length - k];
        }
    }

    // The Hartley transform, sum of values[i] (cos + sin)(2 pi i k / length), over sqrt(length): it
    // is real, orthogonal and its own inverse (Bracewell 1983, J. Opt. Soc. Am. 73, 1832).
    void transform(Values &values)
    {
        complexSpectrum(values.data(), spectrum.data(), int(length), int(spectrum.size()));
        const double scale = std::sqrt(double(length)) / 2;
        for (std::size_t k = 0; k < spectrum.size(); ++k) {
            const std::complex<double> value = scale * spectrum[k];
            values[(length - k) % length] = value.real() + value.imag();
            values[k] = value.real() - value.imag();
        }
    }

    Values amplitudesOf(Values series)
    {
        transform(series);
        Values amplitudes(length);
        amplitudes[0] = series[0];
        for (const Range &range : ranges)
            copyRange(range, series, amplitudes);
        return amplitudes;
    }

    Values seriesOf(Values amplitudes)
    {
        transform(amplitudes);
        std::fill(amplitudes.begin() + std::ptrdiff_t(count), amplitudes.end(), 0.0);
        return amplitudes;
    }

    std::size_t count;
    std::size_t length = 0;
    std::vector<Range> ranges;
    std::vector<std::complex<double>> spectrum;
};

} // namespace

std::vector<double> notch(std::vector<double> &series, double tsamp,
                          const std::vector<NotchBand> &bands)
{
    std::vector<double> shares(bands.size());
    const double whole = varianceOf(series);
    if (bands.empty() || !(whole > 0))
        return shares;
    const double mean = meanOf(series);
    addLevel(-mean, series); // a level far above the signal would decide where the fit ends
    BandFit fit(series.size(), tsamp, bands);
    Values amplitudes = fit.fit(series);
    double before = whole;
    for (std::size_t band = 0; band < bands.size(); ++band) {
        const Values part = fit.takePart(band, amplitudes);
        for (std::size_t i = 0; i < series.size(); ++i)
            series[i] -= part[i];
        const double after = varianceOf(series);
        shares[band] = (before - after) / whole;
        before = after;
    }
    addLevel(mean - meanOf(series), series);
    return shares;
}

} // namespace Tools
