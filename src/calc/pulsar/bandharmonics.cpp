#include "calc/pulsar/bandharmonics.h"

#include "calc/approximation.h"
#include "calc/baseline.h"
#include "calc/fourier.h"
#include "calc/pulsar/bandsum.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <optional>

namespace Pulsar {

namespace {

// Samples by which each band is read later; nothing where it is not read.
using Shifts = std::vector<std::optional<int>>;

constexpr int fewestLinesBeside = 32; // on a side
constexpr int mostLinesBeside = 200;

// The lines of a spectrum that tell the noise of one: as many above as below, or more on one side
// where the spectrum ends. The noise of a low line is that of a narrower range, for it changes
// fast.
std::vector<int> linesBeside(int line, int spectrumLength, bool withNull)
{
    const int spread = withNull ? 2 : 1; // lines in the width of one
    const int reach = spread * std::clamp(line / 2, fewestLinesBeside, mostLinesBeside);
    const int first = std::max(1, std::min(line - reach, spectrumLength - 1 - 2 * reach));
    const int last = std::min(spectrumLength - 1, first + 2 * reach);
    std::vector<int> lines;
    for (int i = first; i <= last; ++i) {
        if (std::abs(i - line) > spread)
            lines.push_back(i);
    }
    return lines;
}

// exp(-2 pi i line shift / period), exact for any product.
std::complex<double> turnBack(int line, int shift, qint64 period)
{
    const double turn = double(qint64(line) * shift % period) / double(period);
    return std::polar(1.0, -2 * M_PI * turn);
}

// Takes the base line off, and what it leaves of a level: with zeros behind, that would leak into
// every line with a phase of its own.
void removeLevel(std::vector<double> &series, const std::vector<double> &baseline)
{
    std::vector<double> rest(series.size());
    double sum = 0;
    for (std::size_t i = 0; i < series.size(); ++i)
        sum += rest[i] = series[i] - baseline[i];
    for (double &value : rest)
        value -= sum / double(rest.size());
    Tools::clearResidue(series.data(), rest.data(), int(rest.size()));
    series.swap(rest);
}

// Samples by which a sum reads each band later at `dispersion`. Where the recording is too short
// for that the shift is less; nothing for a band that the scan never reads whole, and for those
// below it, at which the sums have stopped.
Shifts readableShifts(const ObservationData &data, int firstPoint, double dispersion,
                      double largest)
{
    const Tools::BandDelays delays = bandDelays(data, dispersion);
    const Tools::BandDelays ofLargest = bandDelays(data, largest);
    Shifts shifts(sumBands);
    for (int band = sumBands - 1; band >= 0; --band) {
        const int atLargest = ofLargest.shift(band);
        const int least = std::max(std::min(0, atLargest), -firstPoint);
        const int most = std::min(std::max(0, atLargest), data.npoints - fixedPoints - firstPoint);
        if (least > most)
            break;
        shifts[std::size_t(band)] = std::clamp(delays.shift(band), least, most);
    }
    return shifts;
}

// The harmonic in every band, each read at its delay and freed of its own base line.
Tools::BandHarmonics bandHarmonics(const ObservationData &data, const PulsarParameters &given,
                                   int averageCount, const Shifts &shifts)
{
    const int length = Tools::averagedLength(fixedPoints, averageCount, given.withNull);
    const qint64 period = qint64(length) << averageCount; // of line 1, samples
    Tools::BandHarmonics harmonics;
    harmonics.number = given.harmonicNum;
    harmonics.highest = length / 2 - 1;
    harmonics.frequency = double(harmonics.number) / double(period);
    const std::vector<int> lines = linesBeside(harmonics.number, length / 2, given.withNull);
    harmonics.amplitudes.resize(sumBands);
    harmonics.beside.resize(lines.size() * sumBands);

    const Tools::BandDelays perUnit = bandDelays(data, 1);
    std::vector<double> baseline(fixedPoints);
    std::vector<double> averaged(2 * std::size_t(fixedPoints));
    auto spectrum = std::vector<std::complex<double>>(std::size_t(length / 2));
    for (int band = 0; band < sumBands; ++band) {
        const std::size_t b = std::size_t(band);
        harmonics.delays.push_back(perUnit.delay(band));
        if (!shifts[b])
            continue;
        const float *const samples =
            channelSamples(data, given, band) + given.firstPoint + *shifts[b];
        std::vector<double> series(samples, samples + fixedPoints);
        if (!Tools::findBaseline(given.noise, series.data(), baseline.data(), int(series.size())))
            continue;
        removeLevel(series, baseline);
        Tools::averagePairs(series.data(), averaged.data(), fixedPoints, averageCount,
                            given.withNull);
        Tools::complexSpectrum(averaged.data(), spectrum.data(), length, length / 2);
        const auto inStep = [&](int line) {
            return spectrum[std::size_t(line)] * turnBack(line, *shifts[b], period);
        };
        harmonics.amplitudes[b] = inStep(harmonics.number);
        for (std::size_t i = 0; i < lines.size(); ++i)
            harmonics.beside[i * sumBands + b] = inStep(lines[i]);
    }
    return harmonics;
}

} // namespace

Tools::DispersionPeak findDispersion(const ObservationData &data, const PulsarParameters &given,
                                     int averageCount, double strongest, double largest)
{
    constexpr int mostReadings = 5;
    const int firstPoint = given.firstPoint;
    Tools::DispersionPeak peak;
    Shifts shifts = readableShifts(data, firstPoint, strongest, largest);
    for (int reading = 0; reading < mostReadings; ++reading) {
        peak =
            Tools::findDispersionPeak(bandHarmonics(data, given, averageCount, shifts), 0, largest);
        if (!peak.unconstrained.isEmpty())
            break;
        const Shifts next =
            readableShifts(data, firstPoint, std::clamp(peak.dispersion, 0.0, largest), largest);
        const bool isNear = std::equal(next.begin(), next.end(), shifts.begin(),
                                       [](auto a, auto b) { return !a || std::abs(*a - *b) <= 1; });
        if (isNear)
            break;
        shifts = next;
    }
    return peak;
}

} // namespace Pulsar
