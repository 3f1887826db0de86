#include "calc/combfit.h"

#include "calc/localmedian.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace Tools {

namespace {

constexpr int noiseWindow = 257; // lines
constexpr double leastSnr = 4.5;
constexpr int mostHarmonics = 128;

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

// Correlation of the powers of neighbouring values that are noise, in part of a spectrum.
double correlation(const std::vector<double> &amplitudes, const std::vector<double> &levels,
                   std::size_t begin, std::size_t end)
{
    constexpr double most = 3; // levels; more may be a line
    double sum = 0;
    double squares = 0;
    double products = 0;
    double count = 0;
    for (std::size_t i = begin + 1; i < end; ++i) {
        const double first = amplitudes[i - 1] / levels[i - 1];
        const double second = amplitudes[i] / levels[i];
        if (!(first < most) || !(second < most))
            continue;
        sum += first * first + second * second;
        squares += std::pow(first, 4) + std::pow(second, 4);
        products += std::pow(first * second, 2);
        ++count;
    }
    const double mean = sum / (2 * count);
    const double variance = squares / (2 * count) - mean * mean;
    return variance > 0 ? (products / count - mean * mean) / variance : 0;
}

// Whether the series was padded with zeros to double its length: then neighbouring powers of noise
// have the correlation (2 / pi)^2, else none. The wings of strong lines look alike, hence the
// quietest eighths of the spectrum decide.
bool isPadded(const std::vector<double> &amplitudes, const std::vector<double> &levels)
{
    constexpr std::size_t parts = 8;
    constexpr double halfway = 0.2;
    std::array<double, parts> found;
    const std::size_t n = amplitudes.size() - 1;
    for (std::size_t part = 0; part < parts; ++part)
        found[part] =
            correlation(amplitudes, levels, 1 + n * part / parts, 1 + n * (part + 1) / parts);
    std::nth_element(found.begin(), found.begin() + 2, found.end());
    return found[2] > halfway;
}

// Heights of the line of a signal that passes through a beam in the middle of the series, against
// the distance from its place in units of the resolution.
class LineShape {
public:
    // duration: sigma of the beam over the length of the series; 0: the signal is steady
    explicit LineShape(double duration)
    {
        constexpr double pi = 3.14159265358979323846;
        constexpr int moments = 128; // of the later half; the earlier one is its mirror image
        std::array<double, moments> times;
        std::array<double, moments> beam;
        for (std::size_t i = 0; i < moments; ++i) {
            times[i] = (double(i) + 0.5) / (2 * moments);
            beam[i] = duration > 0 ? std::exp(-0.5 * std::pow(times[i] / duration, 2)) : 1;
        }
        const double sum = std::accumulate(beam.begin(), beam.end(), 0.0);
        for (std::size_t step = 0; step < count; ++step) {
            double height = 0;
            for (std::size_t i = 0; i < moments; ++i)
                height += beam[i] * std::cos(2 * pi * times[i] * double(step) / perUnit);
            heights[step] = std::abs(height / sum);
        }
    }

    double at(double distance) const
    {
        const double place = std::min(std::abs(distance) * perUnit, double(count - 2));
        const auto step = std::size_t(place);
        const double part = place - double(step);
        return heights[step] * (1 - part) + heights[step + 1] * part;
    }

private:
    static constexpr int perUnit = 100;
    static constexpr std::size_t count = 4 * perUnit;
    std::array<double, count> heights;
};

// From that of a steady signal to ever shorter ones, each as far from the next.
const std::vector<LineShape> &lineShapes()
{
    static const std::vector<LineShape> shapes = [] {
        constexpr double longest = 0.5;
        constexpr double shortest = 0.08;
        constexpr double ratio = 1.08;
        std::vector<LineShape> made{LineShape(0)};
        for (double duration = longest; duration > shortest; duration /= ratio)
            made.emplace_back(duration);
        return made;
    }();
    return shapes;
}

struct Line {
    int harmonic = 0;
    int peak = 0;     // index of the largest value
    double place = 0; // of this line alone
    double error = 0; // one sigma; 0: there is no line
};

// How likely the values around lines are.
struct Likelihood {
    double logarithm = 0;
    double misfit = 0; // expected to be the number of values
    int values = 0;

    Likelihood &operator+=(const Likelihood &other)
    {
        logarithm += other.logarithm;
        misfit += other.misfit;
        values += other.values;
        return *this;
    }
};

// Frequencies at even distances, and how likely each is.
struct Grid {
    static constexpr int steps = 32; // on either side of the middle
    double middle = 0;
    double range = 0; // from the middle to an end
    std::array<double, 2 *steps + 1> weights = {};

    double at(std::size_t i) const { return middle + range * (double(i) - steps) / steps; }
};

struct Estimate {
    double value = 0;
    double error = 0;
};

// Mean, and the error of which one holds in 68 % and two in 95 % of cases, or more.
Estimate estimateFrom(const Grid &grid)
{
    constexpr double oneSigma = 0.6827;
    constexpr double twoSigma = 0.9545;
    const double sum = std::accumulate(grid.weights.begin(), grid.weights.end(), 0.0);
    double mean = 0;
    for (std::size_t i = 0; i < grid.weights.size(); ++i)
        mean += grid.weights[i] / sum * grid.at(i);
    std::vector<std::pair<double, double>> around; // distance, weight
    for (std::size_t i = 0; i < grid.weights.size(); ++i)
        around.emplace_back(std::abs(grid.at(i) - mean), grid.weights[i] / sum);
    std::sort(around.begin(), around.end());
    const auto halfWidth = [&around](double share) {
        double inside = 0;
        double before = 0;
        for (const auto &[distance, weight] : around) {
            if (inside + weight >= share)
                return before + (distance - before) * (share - inside) / weight;
            inside += weight;
            before = distance;
        }
        return before;
    };
    return {mean, std::max(halfWidth(oneSigma), halfWidth(twoSigma) / 2)};
}

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
        constexpr double sigmas = 8;
        const double range = std::min(sigmas * error, lineReach() / lines.front().harmonic);
        const Estimate all = estimate(lines, fundamental, range);
        return {all.value, all.error, int(lines.size())};
    }

private:
    // Places from a peak that its line may have.
    double lineReach() const { return 0.9 * padding; }

    // The law of Rice for a signal at a place near a peak, with the height that fits best.
    Likelihood likelihoodAt(double place, int peak, const LineShape &shape) const
    {
        constexpr int mostValues = 9;
        const int reach = 2 * padding;
        const int first = std::max(1, peak - reach);
        const int last = std::min(int(amplitudes.size()) - 1, peak + reach);
        const auto count = std::size_t(last - first + 1);
        const double level = levels[std::size_t(peak)];
        std::array<double, mostValues> heights;
        std::array<double, mostValues> values;
        double squares = 0;
        for (std::size_t i = 0; i < count; ++i) {
            heights[i] = shape.at((first + double(i) - place) / padding);
            values[i] = amplitudes[std::size_t(first) + i] / level;
            squares += heights[i] * heights[i];
        }
        double height = amplitudes[std::size_t(peak)] / level;
        constexpr int iterations = 4;
        for (int iteration = 0; iteration < iterations; ++iteration) {
            double product = 0;
            for (std::size_t i = 0; i < count; ++i)
                product += heights[i] * values[i] * besselRatio(values[i] * height * heights[i]);
            height = product / squares;
        }
        Likelihood found;
        for (std::size_t i = 0; i < count; ++i) {
            const double expected = height * heights[i];
            found.logarithm += logBesselI0(values[i] * expected) - 0.5 * expected * expected;
            // The power of a signal in noise has this mean, and the variance 4 mean - 4.
            const double mean = expected * expected + 2;
            found.misfit += std::pow(values[i] * values[i] - mean, 2) / (4 * mean - 4);
        }
        found.values = int(count);
        return found;
    }

    Likelihood likelihoodAt(double frequency, const std::vector<Line> &of,
                            const LineShape &shape) const
    {
        Likelihood sum;
        for (const Line &line : of)
            sum += likelihoodAt(line.harmonic * frequency, line.peak, shape);
        return sum;
    }

    std::size_t bestShape(double frequency, const std::vector<Line> &of) const
    {
        std::size_t best = 0;
        double most = -std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < lineShapes().size(); ++i) {
            const double found = likelihoodAt(frequency, of, lineShapes()[i]).logarithm;
            if (found > most) {
                most = found;
                best = i;
            }
        }
        return best;
    }

    // By what to divide logarithms of likelihoods.
    double temperOf(const Likelihood &best, std::size_t lineCount, bool isSteady) const
    {
        // Values between those of the series tell something new, more of narrow lines: found in
        // simulations.
        const double perValue = padding == 1 ? 1 : isSteady ? 1.4 : 1.8;
        // Lines that no shape fits tell their place less well. That is not said of those that miss
        // by chance.
        constexpr double sigmas = 2;
        const double freedom = std::max(1.0, best.values - 2.0 * double(lineCount));
        return perValue * std::max(1.0, best.misfit / (freedom + sigmas * std::sqrt(2 * freedom)));
    }

    // Fills in how likely each frequency is, summed over shapes of the lines.
    // @param likeliest  frequency, from the last call
    void weigh(Grid &grid, const std::vector<Line> &of, double &likeliest) const
    {
        constexpr std::size_t shapesAround = 6;
        constexpr double priorOfSteady = 12; // as that of the other shapes together
        const std::size_t bestAt = bestShape(likeliest, of);
        std::vector<std::size_t> shapes = {0};
        const std::size_t end = std::min(bestAt + shapesAround + 1, lineShapes().size());
        for (std::size_t i = std::max(bestAt, shapesAround + 1) - shapesAround; i < end; i += 2)
            shapes.push_back(i);
        std::vector<std::array<double, 2 * Grid::steps + 1>> logarithms(shapes.size());
        Likelihood best;
        best.logarithm = -std::numeric_limits<double>::infinity();
        for (std::size_t shape = 0; shape < shapes.size(); ++shape)
            for (std::size_t i = 0; i < grid.weights.size(); ++i) {
                const Likelihood found = likelihoodAt(grid.at(i), of, lineShapes()[shapes[shape]]);
                logarithms[shape][i] = found.logarithm;
                if (found.logarithm > best.logarithm) {
                    best = found;
                    likeliest = grid.at(i);
                }
            }
        const double temper = temperOf(best, of.size(), bestAt == 0);
        grid.weights.fill(0);
        for (std::size_t shape = 0; shape < shapes.size(); ++shape)
            for (std::size_t i = 0; i < grid.weights.size(); ++i)
                grid.weights[i] += (shapes[shape] == 0 ? priorOfSteady : 1) *
                                   std::exp((logarithms[shape][i] - best.logarithm) / temper);
    }

    // Frequency of which all these lines are harmonics, within `range` of `middle`.
    Estimate estimate(const std::vector<Line> &of, double middle, double range) const
    {
        constexpr int mostPasses = 6;
        constexpr double negligible = 1e-6;
        constexpr double narrower = 0.6;
        Grid grid;
        grid.middle = middle;
        grid.range = range;
        double likeliest = middle;
        for (int pass = 0; pass < mostPasses; ++pass) {
            weigh(grid, of, likeliest);
            const double least =
                negligible * *std::max_element(grid.weights.begin(), grid.weights.end());
            const auto counts = [least](double weight) { return weight >= least; };
            const auto first = std::find_if(grid.weights.begin(), grid.weights.end(), counts);
            const auto last = std::find_if(grid.weights.rbegin(), grid.weights.rend(), counts);
            const double low = grid.at(std::size_t(first - grid.weights.begin()));
            const double high = grid.at(std::size_t(grid.weights.rend() - last) - 1);
            const double step = grid.range / Grid::steps;
            if ((high - low) / 2 + step > narrower * grid.range)
                break;
            grid.middle = (low + high) / 2;
            grid.range = (high - low) / 2 + step;
        }
        return estimateFrom(grid);
    }

    // The highest value within `reach` of a place, if noise hardly makes one as high there.
    Line lineNear(double place, double reach) const
    {
        const double last = double(amplitudes.size()) - 1;
        const int begin = int(std::clamp(std::ceil(place - reach), 1.0, last));
        const int end = int(std::clamp(std::floor(place + reach), 1.0, last));
        const auto peak =
            std::max_element(amplitudes.begin() + begin, amplitudes.begin() + end + 1);
        Line line{1, int(peak - amplitudes.begin()), 0, 0};
        constexpr double falseLines = 1e-4;
        const double least =
            lines.empty() ? leastSnr
                          : std::sqrt(2 * std::log(std::max(1, end - begin + 1) / falseLines));
        const double level = levels[std::size_t(line.peak)];
        if (!(level > 0) || !(*peak >= least * level))
            return {};
        const Estimate alone = estimate({line}, line.peak, lineReach());
        line.place = alone.value;
        line.error = alone.error;
        return line;
    }

    bool add(int harmonic)
    {
        constexpr double sigmas = 4;
        const double reach = 0.5 * padding + (lines.empty() ? 1.0 : sigmas) * harmonic * error;
        if (harmonic > 1 && !lines.empty() && reach > fundamental / 3)
            return false;
        Line line = lineNear(harmonic * fundamental, reach);
        if (line.error == 0)
            return false;
        line.harmonic = harmonic;
        lines.push_back(line);
        double weights = 0;
        double places = 0;
        for (const Line &used : lines) {
            const double weight = used.harmonic / (used.error * used.error);
            places += weight * used.place;
            weights += weight * used.harmonic;
        }
        fundamental = places / weights;
        error = 1 / std::sqrt(weights);
        return true;
    }

    const std::vector<double> &amplitudes;
    const std::vector<double> &levels;
    const int padding;
    std::vector<Line> lines;
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
