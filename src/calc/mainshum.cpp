#include "calc/mainshum.h"

#include "calc/blockline.h"
#include "calc/fourier.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>

namespace Tools {

namespace {

constexpr int fewestValues = 64;
constexpr int longestStretch = 1 << 20;
constexpr int mostStretches = 64;
constexpr double hannPower = 3.0 / 8; // mean square of the window

constexpr double mainsRange = 0.01; // of the nominal frequency
constexpr double surroundings = 10; // Hz to either side
constexpr int fewestAround = 32;    // powers that tell the noise
constexpr double lowestFolded = 5;  // Hz
// Excess of a power over the noise, in standard deviations of the noise: the highest of a line,
// and where it ends.
constexpr double leastExcess = 19;
constexpr double edgeExcess = 4;
constexpr double leastDominance = 4; // of the excess over that of every other line
constexpr std::size_t hannReach = 2; // steps to either side, of a sine under the window

// Blocks of the envelope of a band: turns of its width in one, and cycles at least.
constexpr double envelopeTurns = 0.06;
constexpr double envelopeCycles = 4;

constexpr double leastRest = 1e-6; // of the variance

// Between the noise of values so many steps apart.
constexpr std::array<double, 3> hannCorrelation = {1, 2.0 / 3, 1.0 / 6};

constexpr std::array<double, 4> mainsFrequencies = {50, 60, 100, 120}; // Hz

// The frequency nearest to `mains` that shows at the frequency `shown` in samples of that rate.
double nearestImage(double shown, double mains, double rate)
{
    const double below = std::floor(mains / rate) * rate;
    double nearest = below + shown;
    for (const double image : {below - shown, below + rate - shown, below + rate + shown}) {
        if (std::abs(image - mains) < std::abs(nearest - mains))
            nearest = image;
    }
    return nearest;
}

// The part of a spectrum round one mains frequency. Where two frequencies show at the same place,
// the one nearer to `about` is taken.
class Band {
public:
    Band(const PowerSpectrum &powers, double mains, double about)
        : spectrum(powers), nominal(mains), imageOf(about)
    {
        const double centre = foldedFrequency(mains, powers.rate);
        first = std::max<std::size_t>(1, indexOf(centre - surroundings));
        end = indexOf(centre + surroundings) + 1;
        std::vector<double> around;
        for (std::size_t i = first; i < end; ++i) {
            if (!isMains(i))
                around.push_back(powerAt(i));
        }
        if (int(around.size()) < fewestAround)
            return;
        highest = *std::max_element(around.begin(), around.end());
        noise = noiseOf(around);
    }

    // Lines near the mains frequency.
    std::vector<MainsLine> findLines() const
    {
        const bool isFolded = nominal > spectrum.rate / 2;
        const double lowest = foldedFrequency(nominal, spectrum.rate) - mainsRange * nominal;
        if (isFolded && lowest < lowestFolded)
            return {};
        return linesWhere([](const MainsLine &) { return true; });
    }

    // Lines where the doubles of others show.
    std::vector<MainsLine> findDoubles(const std::vector<MainsLine> &singles) const
    {
        return linesWhere([&](const MainsLine &line) {
            return std::any_of(singles.begin(), singles.end(), [&](const MainsLine &single) {
                const double expected = foldedFrequency(2 * single.frequency, spectrum.rate);
                const double shown = foldedFrequency(line.frequency, spectrum.rate);
                return std::abs(shown - expected) < single.to - single.from;
            });
        });
    }

private:
    double powerAt(std::size_t i) const { return spectrum.powers[i]; }
    bool stands(std::size_t i) const
    {
        return i < end && powerAt(i) > noise + edgeExcess * deviation();
    }
    double deviation() const { return noise / std::sqrt(spectrum.averaged); }

    template <typename Accept>
    std::vector<MainsLine> linesWhere(const Accept &accept) const
    {
        std::vector<MainsLine> lines;
        if (!(noise > 0))
            return lines;
        const double least =
            noise + std::max(leastExcess * deviation(), leastDominance * (highest - noise));
        for (std::size_t i = first; i < end; ++i) {
            const std::size_t low = i;
            // One value that noise has pushed down does not end a line.
            while (stands(i) || (i > low && stands(i + 1)))
                ++i;
            if (i == low)
                continue;
            const MainsLine line = measure(low, i - 1);
            if (line.strength * noise > least &&
                std::abs(line.frequency - nominal) < mainsRange * nominal && accept(line))
                lines.push_back(line);
        }
        return lines;
    }

    std::size_t indexOf(double frequency) const
    {
        const double last = double(spectrum.powers.size()) - 1;
        return std::size_t(std::clamp(std::round(frequency / spectrum.step), 0.0, last));
    }

    double frequencyAt(std::size_t i) const
    {
        return nearestImage(double(i) * spectrum.step, imageOf, spectrum.rate);
    }

    // Whether a value may hold hum of any mains frequency, its skirts included.
    bool isMains(std::size_t i) const
    {
        const double shown = double(i) * spectrum.step;
        return std::any_of(mainsFrequencies.begin(), mainsFrequencies.end(), [&](double mains) {
            const double image = nearestImage(shown, mains, spectrum.rate);
            return std::abs(image - mains) < 2 * mainsRange * mains;
        });
    }

    // The mean of exponentially distributed powers, or of means of some, from their median
    // (Wilson & Hilferty 1931, PNAS 17, 684).
    double noiseOf(std::vector<double> &powers) const
    {
        const auto middle = powers.begin() + std::ptrdiff_t(powers.size() / 2);
        std::nth_element(powers.begin(), middle, powers.end());
        return *middle / std::pow(1 - 1.0 / (9 * spectrum.averaged), 3);
    }

    MainsLine measure(std::size_t low, std::size_t high) const
    {
        low = std::max(first, low - std::min(low, hannReach));
        high = std::min(end - 1, high + hannReach);
        MainsLine line;
        line.nominal = nominal;
        double moment = 0;
        for (std::size_t i = low; i <= high; ++i) {
            const double power = powerAt(i) - noise;
            line.variance += power;
            moment += power * frequencyAt(i);
            line.strength = std::max(line.strength, powerAt(i) / noise);
        }
        line.frequency = moment / line.variance;
        line.from = std::min(frequencyAt(low), frequencyAt(high));
        line.to = std::max(frequencyAt(low), frequencyAt(high));
        line.error = std::sqrt(momentVariance(low, high, line.frequency)) / line.variance;
        return line;
    }

    // Variance of the sum of frequency times power that the noise makes. Power p over noise of the
    // mean n scatters by n (2 p + n); neighbours under a Hann window are correlated.
    double momentVariance(std::size_t low, std::size_t high, double centre) const
    {
        double variance = 0;
        for (std::size_t i = low; i <= high; ++i) {
            const double p = std::max(powerAt(i) - noise, 0.0);
            for (std::size_t lag = 0; lag < hannCorrelation.size() && i + lag <= high; ++lag) {
                const double r = hannCorrelation[lag];
                const double q = std::max(powerAt(i + lag) - noise, 0.0);
                variance += (lag == 0 ? 1 : 2) * (frequencyAt(i) - centre) *
                            (frequencyAt(i + lag) - centre) * r * noise *
                            (2 * std::sqrt(p * q) + r * noise);
            }
        }
        return variance / spectrum.averaged;
    }

    const PowerSpectrum &spectrum;
    const double nominal;
    const double imageOf;
    std::size_t first = 1;
    std::size_t end = 1;
    double noise = 0;   // mean power round the mains line; 0: not known
    double highest = 0; // power there
};

// 50 or 60 Hz.
double mainsOf(const MainsLine &line)
{
    return std::fmod(line.nominal, 50) == 0 ? 50 : 60;
}

// Names a line that may be of either mains by the one that has more lines, or that it is nearer to.
void dropSecondNames(std::vector<MainsLine> &lines, double rate)
{
    const std::vector<MainsLine> all = lines;
    const auto place = [=](const MainsLine &line) { return foldedFrequency(line.frequency, rate); };
    const auto linesOf = [&all](double mains) {
        return std::count_if(all.begin(), all.end(),
                             [=](const MainsLine &line) { return mainsOf(line) == mains; });
    };
    const auto offset = [](const MainsLine &line) {
        return std::abs(line.frequency / line.nominal - 1);
    };
    const auto isSecond = [&](const MainsLine &line) {
        return std::any_of(all.begin(), all.end(), [&](const MainsLine &other) {
            const auto more = linesOf(mainsOf(other)) - linesOf(mainsOf(line));
            const bool isSame = mainsOf(other) != mainsOf(line) &&
                                std::abs(place(other) - place(line)) < (line.to - line.from) / 2;
            return isSame && (more > 0 || (more == 0 && offset(other) < offset(line)));
        });
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isSecond), lines.end());
}

// Frequency of the line with most power; `otherwise` of none.
double strongest(const std::vector<MainsLine> &lines, double otherwise)
{
    const auto line =
        std::max_element(lines.begin(), lines.end(), [](const MainsLine &a, const MainsLine &b) {
            return a.variance < b.variance;
        });
    return line == lines.end() ? otherwise : line->frequency;
}

} // namespace

PowerSpectrum powerSpectrum(const std::vector<double> &series, double tsamp)
{
    PowerSpectrum spectrum;
    const auto count = std::ptrdiff_t(series.size());
    if (count < fewestValues)
        return spectrum;
    int length = fewestValues / 2;
    while (length < longestStretch && 4 * std::ptrdiff_t(length) <= count)
        length *= 2;
    const int stretches = int(std::min<std::ptrdiff_t>(count / length, mostStretches));
    std::vector<double> window(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i)
        window[std::size_t(i)] = (1 - std::cos(2 * M_PI * i / length)) / 2;
    std::vector<double> windowed(window.size());
    std::vector<double> amplitudes(static_cast<std::size_t>(length / 2));
    spectrum.powers.assign(amplitudes.size(), 0.0);
    for (int s = 0; s < stretches; ++s) {
        const std::ptrdiff_t begin = (count - length) * s / (stretches - 1);
        for (int i = 0; i < length; ++i)
            windowed[std::size_t(i)] = window[std::size_t(i)] * series[std::size_t(begin + i)];
        amplitudeSpectrum(windowed.data(), amplitudes.data(), length, length / 2);
        for (std::size_t k = 0; k < amplitudes.size(); ++k)
            spectrum.powers[k] += amplitudes[k] * amplitudes[k] / (2 * hannPower * stretches);
    }
    spectrum.rate = 1 / tsamp;
    spectrum.step = spectrum.rate / length;
    spectrum.averaged = stretches;
    return spectrum;
}

double foldedFrequency(double frequency, double rate)
{
    return std::abs(frequency - std::round(frequency / rate) * rate);
}

std::vector<MainsLine> findMains(const PowerSpectrum &spectrum)
{
    std::vector<MainsLine> lines;
    if (spectrum.powers.empty())
        return lines;
    for (const double mains : {50.0, 60.0}) {
        const std::vector<MainsLine> singles = Band(spectrum, mains, mains).findLines();
        const Band band(spectrum, 2 * mains, 2 * strongest(singles, mains));
        std::vector<MainsLine> doubles = band.findLines();
        if (doubles.empty())
            doubles = band.findDoubles(singles);
        lines.insert(lines.end(), singles.begin(), singles.end());
        lines.insert(lines.end(), doubles.begin(), doubles.end());
    }
    dropSecondNames(lines, spectrum.rate);
    return lines;
}

double sigmaWithoutMains(const std::vector<MainsLine> &lines)
{
    double rest = 1;
    for (const MainsLine &line : lines)
        rest -= line.variance;
    return std::sqrt(std::max(rest, leastRest));
}

void removeBand(std::vector<double> &series, double tsamp, double low, double high)
{
    const auto count = std::ptrdiff_t(series.size());
    double centre = (low + high) / 2;
    double seconds = std::max(envelopeTurns / (high - low), envelopeCycles / centre);
    // Where the mirror image of the carrier lies in the band too, the carrier is half of the rate,
    // whose amplitude is real.
    const double half = 1 / (2 * tsamp);
    const bool hasImage = (half - centre) * seconds < envelopeCycles;
    if (hasImage) {
        centre = half;
        seconds = std::max(envelopeTurns / (2 * (half - low)), envelopeCycles / centre);
    }
    const auto block =
        std::ptrdiff_t(std::clamp(seconds / tsamp, 1.0, std::max(1.0, double(count))));
    const SeriesBlocks blocks = {count, block};
    const std::complex<double> turn = std::polar(1.0, 2 * M_PI * centre * tsamp);

    std::vector<std::complex<double>> envelope(std::size_t(blocks.number()));
    std::complex<double> carrier = 1;
    for (std::ptrdiff_t k = 0; k < blocks.number(); ++k) {
        for (std::ptrdiff_t i = k * block; i < blocks.endOf(k); ++i) {
            envelope[std::size_t(k)] += series[std::size_t(i)] * std::conj(carrier);
            carrier *= turn;
        }
        envelope[std::size_t(k)] *= (hasImage ? 1 : 2) / double(blocks.endOf(k) - k * block);
    }
    carrier = 1;
    BlockLine<std::complex<double>> amplitude(blocks, envelope);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        series[std::size_t(i)] -= (amplitude.at(i) * carrier).real();
        carrier *= turn;
    }
}

void removeMains(std::vector<double> &series, double tsamp, std::vector<MainsLine> lines)
{
    std::sort(lines.begin(), lines.end(),
              [](const MainsLine &a, const MainsLine &b) { return a.variance > b.variance; });
    for (const MainsLine &line : lines) {
        const auto [low, high] = std::minmax(
            {foldedFrequency(line.from, 1 / tsamp), foldedFrequency(line.to, 1 / tsamp)});
        removeBand(series, tsamp, low, high);
    }
}

} // namespace Tools
