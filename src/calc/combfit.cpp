#include "calc/combfit.h"

#include "calc/localmedian.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Tools {

namespace {

constexpr int noiseWindow = 257; // lines
constexpr double leastSnr = 4.5;
constexpr int mostHarmonics = 128;

double sinc(double x)
{
    constexpr double pi = 3.14159265358979323846;
    return x == 0 ? 1 : std::abs(std::sin(pi * x) / (pi * x));
}

// ln I0(x) to 0.1 %, by the two series of Abramowitz and Stegun, 9.8.1 and 9.8.2, cut short.
double logBesselI0(double x)
{
    if (x < 3.75) {
        const double t = x * x / (3.75 * 3.75);
        return std::log1p(t * (3.5156229 + t * (3.0899424 + t * (1.2067492 + t * 0.2659732))));
    }
    const double t = 3.75 / x;
    return x - 0.5 * std::log(x) + std::log(0.39894228 + t * (0.01328592 + t * 0.00225319));
}

// I1(x) / I0(x), between the bounds of Amos 1974, Math. Comp. 28, 239.
double besselRatio(double x)
{
    return x / (0.5 + std::sqrt(x * x + 2.25));
}

// Whether the series was padded with zeros to double its length: then neighbouring powers of noise
// have the correlation (2 / pi)^2, else none.
bool isPadded(const std::vector<double> &amplitudes, const std::vector<double> &levels)
{
    constexpr double most = 4; // levels; lines would rule the sum
    constexpr double halfway = 0.2;
    double sum = 0;
    double squares = 0;
    double products = 0;
    double before = 0;
    double count = 0;
    for (std::size_t i = 1; i < amplitudes.size(); ++i) {
        const double ratio = levels[i] > 0 ? std::min(amplitudes[i] / levels[i], most) : 0;
        const double power = ratio * ratio;
        sum += power;
        squares += power * power;
        products += power * before;
        before = power;
        ++count;
    }
    const double mean = sum / count;
    const double variance = squares / count - mean * mean;
    return variance > 0 && products / count - mean * mean > halfway * variance;
}

struct Line {
    double place = 0;
    double error = 0; // one sigma; 0: there is no line
};

// Fits harmonics in a spectrum whose lines are 1 / `padding` of the resolution apart.
class Comb {
public:
    Comb(const std::vector<double> &spectrum, const std::vector<double> &noise, int paddingFactor)
        : amplitudes(spectrum), levels(noise), padding(paddingFactor)
    {}

    CombFit fit(double start, int number)
    {
        fundamental = start;
        error = 0.5 / number;
        if (!add(number))
            return {};
        const double last = double(amplitudes.size()) - 1;
        for (int harmonic = 1; harmonic <= mostHarmonics && harmonic * fundamental < last;
             ++harmonic)
            if (harmonic != number)
                add(harmonic);
        // For simulated combs of 1 to 12 lines this makes two errors hold in 95 % of cases.
        constexpr double allowance = 1.2;
        return {fundamental, allowance * error * std::sqrt(scatter()), int(lines.size())};
    }

private:
    struct Used {
        int harmonic;
        Line line;
    };

    // How likely the amplitudes around a value are where a steady signal stands at `place`: the law
    // of Rice, with the height of the signal that fits best.
    struct Likelihood {
        double logarithm = 0;
        double misfit = 0; // squared differences over noise
        int values = 0;
    };
    Likelihood likelihoodAt(double place, int middle) const
    {
        const int reach = 2 * padding;
        const int first = std::max(1, middle - reach);
        const int last = std::min(int(amplitudes.size()) - 1, middle + reach);
        const double level = levels[std::size_t(middle)];
        double height = amplitudes[std::size_t(middle)] / level;
        constexpr int iterations = 4;
        for (int iteration = 0; iteration < iterations; ++iteration) {
            double product = 0;
            double squares = 0;
            for (int i = first; i <= last; ++i) {
                const double shape = sinc((i - place) / padding);
                const double value = amplitudes[std::size_t(i)] / level;
                product += shape * value * besselRatio(value * height * shape);
                squares += shape * shape;
            }
            height = product / squares;
        }
        Likelihood found;
        for (int i = first; i <= last; ++i) {
            const double expected = height * sinc((i - place) / padding);
            const double value = amplitudes[std::size_t(i)] / level;
            found.logarithm += logBesselI0(value * expected) - 0.5 * expected * expected;
            found.misfit += std::pow(value - expected, 2);
            ++found.values;
        }
        found.logarithm /= padding; // values between those of the series tell little new
        return found;
    }

    Line lineNear(double place, double reach) const
    {
        const double last = double(amplitudes.size()) - 1;
        const int begin = int(std::clamp(std::ceil(place - reach), 1.0, last));
        const int end = int(std::clamp(std::floor(place + reach), 1.0, last));
        const auto peak =
            std::max_element(amplitudes.begin() + begin, amplitudes.begin() + end + 1);
        const int index = int(peak - amplitudes.begin());
        const double level = levels[std::size_t(index)];
        if (!(level > 0) || !(*peak >= leastSnr * level))
            return {};
        return lineAt(index);
    }

    // Mean and scatter of the place, as likely as each is.
    Line lineAt(int index) const
    {
        constexpr int steps = 60;
        const double range = 0.8 * padding;
        std::array<Likelihood, 2 * steps + 1> found;
        const auto placeOf = [&](int step) { return index + range * (step - steps) / steps; };
        std::size_t best = 0;
        for (int step = 0; step <= 2 * steps; ++step) {
            found[std::size_t(step)] = likelihoodAt(placeOf(step), index);
            if (found[std::size_t(step)].logarithm > found[best].logarithm)
                best = std::size_t(step);
        }
        // A line that is not as narrow as that of a steady signal tells its place less well.
        const double misfit =
            std::max(1.0, found[best].misfit / std::max(1, found[best].values - 2));
        double sum = 0;
        double places = 0;
        double squares = 0;
        for (int step = 0; step <= 2 * steps; ++step) {
            const double weight =
                std::exp((found[std::size_t(step)].logarithm - found[best].logarithm) / misfit);
            sum += weight;
            places += weight * placeOf(step);
            squares += weight * std::pow(placeOf(step) - index, 2);
        }
        const double mean = places / sum;
        const double stepError = range / steps;
        return {mean, std::sqrt(std::max(squares / sum - std::pow(mean - index, 2), 0.0) +
                                stepError * stepError / 12)};
    }

    bool add(int harmonic)
    {
        constexpr double sigmas = 4;
        const double reach = 0.5 * padding + (lines.empty() ? 1.0 : sigmas) * harmonic * error;
        if (harmonic > 1 && !lines.empty() && reach > fundamental / 3)
            return false;
        const Line line = lineNear(harmonic * fundamental, reach);
        if (line.error == 0)
            return false;
        lines.push_back({harmonic, line});
        double weights = 0;
        double places = 0;
        for (const Used &used : lines) {
            const double weight = used.harmonic / (used.line.error * used.line.error);
            places += weight * used.line.place;
            weights += weight * used.harmonic;
        }
        fundamental = places / weights;
        error = 1 / std::sqrt(weights);
        return true;
    }

    // Variance of the lines around the fundamental over the expected one, at least 1.
    double scatter() const
    {
        if (lines.size() < 2)
            return 1;
        double sum = 0;
        for (const Used &used : lines)
            sum += std::pow((used.line.place - used.harmonic * fundamental) / used.line.error, 2);
        return std::max(1.0, sum / double(lines.size() - 1));
    }

    const std::vector<double> &amplitudes;
    const std::vector<double> &levels;
    const int padding;
    std::vector<Used> lines;
    double fundamental = 0;
    double error = 0;
};

} // namespace

CombFit fitComb(const std::vector<double> &amplitudes, double start, int number)
{
    if (amplitudes.size() < 8 || number < 1 || !(start > 0) ||
        !(start * number < double(amplitudes.size())))
        return {};
    const std::vector<double> levels = localNoise(amplitudes, noiseWindow, NoiseLaw::Rayleigh);
    return Comb(amplitudes, levels, isPadded(amplitudes, levels) ? 2 : 1).fit(start, number);
}

} // namespace Tools
