#include "calc/notch.h"

#include "calc/fourier.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numeric>
#include <utility>

namespace Tools {

namespace {

using Values = std::vector<double>;

constexpr double leastSines = 16;           // in a band
constexpr std::size_t mostLengthening = 64; // of the series, to get so many
constexpr double leastRest = 3e-6;          // of the gradient, where the fit ends
constexpr int mostSteps = 100;
// A longer series is fitted in pieces, so that memory stays small and a stop waits for one
// transform of this length at most. Neighbours overlap, where the fits of both are blended.
constexpr std::size_t longestTransform = std::size_t(1) << 20;
constexpr std::size_t longestPiece = longestTransform / 5 * 4;
constexpr std::size_t overlap = longestPiece / 16;

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

// A range of steps of the spectrum.
struct Range {
    std::size_t first, last;
};

// Length of the transform whose sines are fitted.
std::size_t fittedLength(std::size_t count, double tsamp, const std::vector<NotchBand> &bands)
{
    double narrowest = 1; // cycles a sample
    for (const NotchBand &band : bands)
        narrowest = std::min(narrowest, (band.high - band.low) * tsamp);
    const double wanted = std::min(
        {leastSines / narrowest, double(mostLengthening * count), double(longestTransform)});
    const auto least = std::max(count + count / 4, std::size_t(wanted));
    return std::bit_ceil(std::max(least, std::size_t(4)));
}

std::vector<Range> rangesOf(const std::vector<NotchBand> &bands, double tsamp, std::size_t length)
{
    std::vector<Range> ranges;
    for (const NotchBand &band : bands) {
        const double bins = double(length) * tsamp;
        const double half = double(length / 2);
        const double low = std::min(std::max(1.0, std::ceil(band.low * bins)), half);
        const double high = std::min(std::floor(band.high * bins), half);
        ranges.push_back({std::size_t(low), std::size_t(std::max(low, high))});
    }
    return ranges;
}

// Sines of a transform of which the first values are the series. Only the amplitudes within the
// bands are kept.
class BandFit {
public:
    BandFit(std::size_t points, double tsamp, const std::vector<NotchBand> &bands)
        : count(points), length(fittedLength(points, tsamp, bands)),
          ranges(rangesOf(bands, tsamp, length)), values(length), spectrum(length / 2 + 1)
    {
        bins.push_back(0);
        for (const Range &range : ranges) {
            for (std::size_t k = range.first; k <= range.last; ++k) {
                bins.push_back(k);
                bins.push_back(length - k);
            }
        }
        std::sort(bins.begin(), bins.end());
        bins.erase(std::unique(bins.begin(), bins.end()), bins.end());
    }

    // Amplitudes of the best sum and of a level, which only a fit with the sum tells from a low
    // band: least squares by conjugate gradients (Hestenes & Stiefel 1952).
    Values fit(Values rest, const std::function<bool()> &goOn)
    {
        Values amplitudes(bins.size());
        Values gradient(bins.size());
        findAmplitudes(rest, gradient);
        Values direction = gradient;
        double power = dot(gradient, gradient);
        const double enough = leastRest * leastRest * power;
        for (int step = 0; step < mostSteps && power > enough; ++step) {
            if (!goOn())
                break;
            const Values &change = seriesOf(direction);
            const double reach = dot(change, change);
            if (!(reach > 0))
                break;
            const double factor = power / reach;
            for (std::size_t i = 0; i < bins.size(); ++i)
                amplitudes[i] += factor * direction[i];
            for (std::size_t i = 0; i < count; ++i)
                rest[i] -= factor * change[i];
            if (!goOn())
                break;
            findAmplitudes(rest, gradient);
            const double before = power;
            power = dot(gradient, gradient);
            for (std::size_t i = 0; i < bins.size(); ++i)
                direction[i] = gradient[i] + power / before * direction[i];
        }
        return amplitudes;
    }

    // What one band adds to the series, until the next call. Its amplitudes go, so that bands may
    // overlap.
    const Values &takePart(std::size_t band, Values &amplitudes)
    {
        Values part(bins.size());
        for (std::size_t i = 0; i < bins.size(); ++i) {
            // Amplitudes k and length - k are those of one frequency.
            const std::size_t k = std::min(bins[i], length - bins[i]);
            if (k >= ranges[band].first && k <= ranges[band].last)
                std::swap(part[i], amplitudes[i]);
        }
        return seriesOf(part);
    }

private:
    // The Hartley transform, sum of values[i] (cos + sin)(2 pi i k / length), over sqrt(length): it
    // is real, orthogonal and its own inverse (Bracewell 1983, J. Opt. Soc. Am. 73, 1832).
    void transform()
    {
        complexSpectrum(values.data(), spectrum.data(), int(length), int(spectrum.size()));
        const double scale = std::sqrt(double(length)) / 2;
        for (std::size_t k = 0; k < spectrum.size(); ++k) {
            const std::complex<double> value = scale * spectrum[k];
            values[(length - k) % length] = value.real() + value.imag();
            values[k] = value.real() - value.imag();
        }
    }

    void findAmplitudes(const Values &series, Values &amplitudes)
    {
        std::fill(std::copy(series.begin(), series.end(), values.begin()), values.end(), 0.0);
        transform();
        for (std::size_t i = 0; i < bins.size(); ++i)
            amplitudes[i] = values[bins[i]];
    }

    // Zeros stand behind the series.
    const Values &seriesOf(const Values &amplitudes)
    {
        std::fill(values.begin(), values.end(), 0.0);
        for (std::size_t i = 0; i < bins.size(); ++i)
            values[bins[i]] = amplitudes[i];
        transform();
        std::fill(values.begin() + std::ptrdiff_t(count), values.end(), 0.0);
        return values;
    }

    const std::size_t count;
    const std::size_t length;
    const std::vector<Range> ranges;
    std::vector<std::size_t> bins; // of the amplitudes, in rising order
    Values values;                 // length of them: a series or all amplitudes
    std::vector<std::complex<double>> spectrum;
};

// The part of the series from `first` to before `last`.
struct Piece {
    std::size_t first, last;

    // Weight of the fit of this piece: the weights of all pieces at one value add up to 1.
    double weightAt(std::size_t index, std::size_t count) const
    {
        double weight = 1;
        if (first > 0)
            weight = std::min(weight, (double(index - first) + 0.5) / double(overlap));
        if (last < count)
            weight = std::min(weight, (double(last - index) - 0.5) / double(overlap));
        return weight;
    }
};

std::vector<Piece> piecesOf(std::size_t count)
{
    if (count <= longestPiece)
        return {{0, count}};
    const std::size_t most = longestPiece - overlap;
    const std::size_t number = (count - overlap + most - 1) / most;
    const std::size_t hop = (count - overlap + number - 1) / number;
    std::vector<Piece> pieces;
    for (std::size_t first = 0; first + overlap < count; first += hop)
        pieces.push_back({first, std::min(first + hop + overlap, count)});
    return pieces;
}

// Subtracts the weighted fit of one piece of `original` from the series, and adds to `squares`
// what each band takes from the sum of squares.
void notchPiece(const Piece &piece, const Values &original, Values &series, double tsamp,
                const std::vector<NotchBand> &bands, const std::function<bool()> &goOn,
                Values &squares)
{
    Values values(original.begin() + std::ptrdiff_t(piece.first),
                  original.begin() + std::ptrdiff_t(piece.last));
    BandFit fit(values.size(), tsamp, bands);
    Values amplitudes = fit.fit(std::move(values), goOn);
    for (std::size_t band = 0; band < bands.size() && goOn(); ++band) {
        const Values &part = fit.takePart(band, amplitudes);
        for (std::size_t i = piece.first; i < piece.last; ++i) {
            const double before = series[i];
            series[i] -= piece.weightAt(i, series.size()) * part[i - piece.first];
            squares[band] += before * before - series[i] * series[i];
        }
    }
}

} // namespace

std::vector<double> notch(std::vector<double> &series, double tsamp,
                          const std::vector<NotchBand> &bands, const std::function<bool()> &mayGoOn)
{
    const std::function<bool()> goOn = mayGoOn ? mayGoOn : [] { return true; };
    std::vector<double> shares(bands.size());
    if (bands.empty()) // without a look at the series, for most sums come with none
        return shares;
    const double whole = varianceOf(series) * double(series.size());
    if (!(whole > 0))
        return shares;
    const double mean = meanOf(series);
    addLevel(-mean, series); // a level far above the signal would decide where the fit ends
    const Values original = series;
    for (const Piece &piece : piecesOf(series.size())) {
        if (!goOn())
            return shares;
        notchPiece(piece, original, series, tsamp, bands, goOn, shares);
    }
    for (double &share : shares)
        share /= whole;
    addLevel(mean - meanOf(series), series);
    return shares;
}

double notchBytes(std::size_t points, double tsamp, const std::vector<NotchBand> &bands)
{
    if (bands.empty())
        return 0;
    const std::size_t piece = std::min(points, longestPiece);
    const std::size_t length = fittedLength(piece, tsamp, bands);
    double amplitudes = 1;
    for (const Range &range : rangesOf(bands, tsamp, length))
        amplitudes += 2 * double(range.last - range.first + 1);
    // The values, their spectrum and what the transform works on; the amplitudes, their gradient,
    // its direction and the places of all; what is left of the piece; the series as it was.
    return sizeof(double) *
           (6.0 * double(length) + 4 * amplitudes + double(piece) + double(points));
}

} // namespace Tools
