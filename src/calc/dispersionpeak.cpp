#include "calc/dispersionpeak.h"

#include "calc/localmedian.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Tools {

namespace {

using Amplitude = std::complex<double>;

constexpr double smallestSnr = 5;
constexpr double stepsPerTurn = 16;  // of the delay across the bands
constexpr double turnsBeyond = 0.75; // searched on either side of the scan
constexpr double mostSteps = 1e6;
constexpr double equalSigmas = 3; // maxima that differ by less are as good as each other
constexpr int rivals = 16;        // lower maxima that are looked at
constexpr double sameSeries = 1e-9;

struct Sums {
    Amplitude value;  // S
    Amplitude first;  // its derivative by the dispersion
    Amplitude second; // and the second one
};

// The sum of the bands, all of them turned to where they belong at one dispersion.
class SumAt {
public:
    SumAt(const BandHarmonics &of, double dispersion) : harmonics(of)
    {
        for (const double delay : harmonics.delays) {
            const double turn = 2 * M_PI * harmonics.frequency * delay;
            turns.push_back(turn);
            phases.push_back(std::polar(1.0, turn * dispersion));
        }
    }

    Sums of(const Amplitude *bands) const
    {
        Sums sums;
        for (std::size_t b = 0; b < turns.size(); ++b) {
            const Amplitude term = bands[b] * phases[b];
            const Amplitude slope(-turns[b] * term.imag(), turns[b] * term.real());
            sums.value += term;
            sums.first += slope;
            sums.second -= turns[b] * turns[b] * term;
        }
        return sums;
    }

    Sums ofHarmonic() const { return of(harmonics.amplitudes.data()); }

private:
    const BandHarmonics &harmonics;
    std::vector<double> turns; // by which a unit of dispersion turns each band
    std::vector<Amplitude> phases;
};

// Mean of |function(line)|^2 over the lines beside the harmonic, by its median.
template <typename Function>
double noisePower(const BandHarmonics &harmonics, Function function)
{
    const std::size_t bands = harmonics.delays.size();
    std::vector<double> powers;
    for (std::size_t i = 0; i + bands <= harmonics.beside.size(); i += bands)
        powers.push_back(std::norm(function(harmonics.beside.data() + i)));
    if (powers.size() % 2 == 0)
        powers.pop_back();
    return localNoise(powers, int(powers.size()), NoiseLaw::Exponential)[0];
}

struct Maximum {
    double height = 0;
    double dispersion = 0;
};

// Delays of the bands that hold something, ascending, samples per unit of dispersion.
std::vector<double> delaysInUse(const BandHarmonics &harmonics)
{
    std::vector<double> delays;
    for (std::size_t b = 0; b < harmonics.delays.size(); ++b) {
        if (harmonics.amplitudes[b] != 0.0)
            delays.push_back(harmonics.delays[b]);
    }
    std::sort(delays.begin(), delays.end());
    return delays;
}

// Heights of the curve at equally spaced dispersions. The terms are turned from one to the next.
std::vector<double> heightsOf(const BandHarmonics &harmonics, double first, double step,
                              std::size_t count)
{
    std::vector<Amplitude> terms = harmonics.amplitudes;
    std::vector<Amplitude> turns;
    for (std::size_t b = 0; b < terms.size(); ++b) {
        const double turn = 2 * M_PI * harmonics.frequency * harmonics.delays[b];
        terms[b] *= std::polar(1.0, turn * first);
        turns.push_back(std::polar(1.0, turn * step));
    }
    std::vector<double> heights(count);
    for (double &height : heights) {
        Amplitude sum = 0;
        for (std::size_t b = 0; b < terms.size(); ++b) {
            sum += terms[b];
            terms[b] *= turns[b];
        }
        height = std::abs(sum);
    }
    return heights;
}

// The maximum next to `dispersion`, at most `step` away.
Maximum refined(const BandHarmonics &harmonics, double dispersion, double step)
{
    constexpr int newtonSteps = 8;
    const double low = dispersion - step;
    const double high = dispersion + step;
    for (int i = 0; i < newtonSteps; ++i) {
        const Sums s = SumAt(harmonics, dispersion).ofHarmonic();
        const double slope = (std::conj(s.value) * s.first).real();
        const double bend = std::norm(s.first) + (std::conj(s.value) * s.second).real();
        if (!(bend < 0))
            break;
        dispersion = std::clamp(dispersion - slope / bend, low, high);
    }
    return {std::abs(SumAt(harmonics, dispersion).ofHarmonic().value), dispersion};
}

// Maxima of the curve between two dispersions, the highest first.
std::vector<Maximum> findMaxima(const BandHarmonics &harmonics, double first, double step,
                                std::size_t count)
{
    const std::vector<double> heights = heightsOf(harmonics, first, step, count);
    std::vector<Maximum> maxima;
    for (std::size_t i = 1; i + 1 < count; ++i) {
        if (heights[i] >= heights[i - 1] && heights[i] > heights[i + 1])
            maxima.push_back({heights[i], first + double(i) * step});
    }
    const auto isHigher = [](const Maximum &a, const Maximum &b) { return a.height > b.height; };
    std::sort(maxima.begin(), maxima.end(), isHigher);
    maxima.resize(std::min<std::size_t>(maxima.size(), rivals));
    for (Maximum &maximum : maxima)
        maximum = refined(harmonics, maximum.dispersion, step);
    std::sort(maxima.begin(), maxima.end(), isHigher);
    return maxima;
}

// Whether all bands that hold something hold the same, as after dedispersion.
bool areOneSeries(const BandHarmonics &harmonics)
{
    const std::size_t bands = harmonics.delays.size();
    double power = 0;
    double differences = 0;
    for (std::size_t i = 0; i + bands <= harmonics.beside.size(); i += bands) {
        const Amplitude *reference = nullptr;
        for (std::size_t b = 0; b < bands; ++b) {
            if (harmonics.amplitudes[b] == 0.0)
                continue;
            const Amplitude &value = harmonics.beside[i + b];
            reference = reference ? reference : &value;
            power += std::norm(value);
            differences += std::norm(value - *reference);
        }
    }
    return power > 0 && differences <= sameSeries * power;
}

// A maximum that noise may have lifted to the height of the best one; none: the best one itself.
Maximum equalOf(const BandHarmonics &harmonics, const std::vector<Maximum> &maxima)
{
    const Maximum &best = maxima[0];
    const SumAt atBest(harmonics, best.dispersion);
    const Amplitude ofBest = std::conj(atBest.ofHarmonic().value) / best.height;
    for (std::size_t i = 1; i < maxima.size(); ++i) {
        const Maximum &other = maxima[i];
        if (2 * other.height < best.height)
            break;
        const SumAt atOther(harmonics, other.dispersion);
        const Amplitude ofOther = std::conj(atOther.ofHarmonic().value) / other.height;
        const double power = noisePower(harmonics, [&](const Amplitude *line) {
            return ofBest * atBest.of(line).value - ofOther * atOther.of(line).value;
        });
        if (best.height - other.height < equalSigmas * std::sqrt(power / 2))
            return other;
    }
    return best;
}

// Why a harmonic whose error is this large does not tell the dispersion, and which one could.
QString tooLowText(const BandHarmonics &harmonics, double error, double scanned)
{
    const double factor = std::ceil(2 * error / scanned);
    const QString wish =
        factor * harmonics.number <= harmonics.highest
            ? QString("one as strong with a number %1 times as high would").arg(factor, 0, 'f', 0)
            : QString("none of this spectrum is high enough");
    return QString("its error would be %1 pc/cm^3, more than half of the scan; %2")
        .arg(error, 0, 'g', 2)
        .arg(wish);
}

// Why the bands cannot tell any dispersion; empty where they may.
QString refusalOf(const BandHarmonics &harmonics, const std::vector<double> &delays)
{
    const auto isFinite = [](const Amplitude &value) { return std::isfinite(std::norm(value)); };
    if (!std::all_of(harmonics.amplitudes.begin(), harmonics.amplitudes.end(), isFinite) ||
        !std::all_of(harmonics.beside.begin(), harmonics.beside.end(), isFinite))
        return "the recording holds samples that are no numbers";
    if (delays.size() < 2)
        return "fewer than two bands hold more than a level";
    if (!(delays.back() > delays.front()))
        return "its bands have no delay against each other";
    if (areOneSeries(harmonics))
        return "all bands hold the same series, as after a dedispersion";
    return {};
}

// The dispersion and error of the highest maximum, unless noise or a rival spoils it.
DispersionPeak measured(const BandHarmonics &harmonics, const std::vector<Maximum> &maxima)
{
    DispersionPeak peak;
    peak.dispersion = maxima[0].dispersion;
    const SumAt sum(harmonics, peak.dispersion);
    const Sums s = sum.ofHarmonic();
    const double noise =
        noisePower(harmonics, [&](const Amplitude *line) { return sum.of(line).value; });
    peak.snr = std::abs(s.value) / std::sqrt(noise / 2);
    if (!(peak.snr > smallestSnr)) {
        peak.unconstrained = QString("its largest value is only %1 times the noise around it")
                                 .arg(peak.snr, 0, 'g', 2);
        return peak;
    }
    const Maximum equal = equalOf(harmonics, maxima);
    if (equal.dispersion != peak.dispersion) {
        peak.unconstrained = QString("its maxima at %1 and %2 pc/cm^3 are equally high within "
                                     "the noise")
                                 .arg(peak.dispersion, 0, 'f', 2)
                                 .arg(equal.dispersion, 0, 'f', 2);
        return peak;
    }
    const double bend = -std::norm(s.first) - (std::conj(s.value) * s.second).real();
    const double power = noisePower(harmonics, [&](const Amplitude *line) {
        const Sums n = sum.of(line);
        return std::conj(s.value) * n.first + std::conj(s.first) * n.value;
    });
    peak.error = std::sqrt(power / 2) / bend;
    return peak;
}

} // namespace

DispersionPeak findDispersionPeak(const BandHarmonics &harmonics, double first, double last)
{
    DispersionPeak peak;
    const std::vector<double> delays = delaysInUse(harmonics);
    peak.unconstrained = refusalOf(harmonics, delays);
    if (!peak.unconstrained.isEmpty())
        return peak;
    const double turns = harmonics.frequency * (delays.back() - delays.front()); // per pc/cm^3
    const double step = 1 / (turns * stepsPerTurn);
    const double begin = first - turnsBeyond / turns;
    const double steps = std::ceil((last + turnsBeyond / turns - begin) / step) + 1;
    if (!(steps <= mostSteps)) {
        peak.unconstrained = "the scan is too wide for its short period";
        return peak;
    }
    const std::vector<Maximum> maxima = findMaxima(harmonics, begin, step, std::size_t(steps));
    if (maxima.empty()) {
        peak.unconstrained = "it has no maximum in or near the scan";
        return peak;
    }
    peak = measured(harmonics, maxima);
    if (peak.unconstrained.isEmpty() && !(peak.error < (last - first) / 2))
        peak.unconstrained = tooLowText(harmonics, peak.error, last - first);
    return peak;
}

} // namespace Tools
