#include "calc/periodlikelihood.h"

#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Tools {

namespace {

constexpr int steps = 24; // of the period to either side
constexpr int mostPasses = 6;
constexpr int binsPerWidth = 16;
constexpr int mostBins = 1 << 16;
constexpr double fewestSteps = 2;    // in the scatter of a pass that ends the search
constexpr double leastRange = 3.5;   // scatters to either side
constexpr double nextRange = 7;      // scatters
constexpr double windowWidths = 2.5; // to either side of the pulse
constexpr double shapeNoise = 0.12;  // of the height of a pulse of one sample
constexpr int parts = 64;            // in which the heights may change
constexpr int steadyParts = 8;
constexpr double changeGain = 16; // of S/N^2, at which heights count as changing
const double sigmasPerWidth = 2 * std::sqrt(2 * std::numbers::ln2);

using Vector = std::vector<double>;

// Weighed samples around each of `bins` phases, twice round. A sample is shared by the two bins
// nearest to its centre, so that the sums change smoothly with the period.
struct CentreFold {
    explicit CentreFold(int binCount)
        : bins(binCount), sums(2 * std::size_t(binCount)), weights(sums.size()),
          squares(sums.size())
    {}

    void clear()
    {
        for (Vector *const values : {&sums, &weights, &squares})
            std::fill(values->begin(), values->end(), 0.0);
    }

    // Phase 0 is at `origin`, in samples from the begin of the series.
    void add(const Vector &series, int from, int to, double period, double origin, double weight)
    {
        const double turns = std::ceil(origin / period); // keeps the phase above 0
        const double perSample = 1 / period;
        for (int i = from; i < to; ++i) {
            const double time = (i + 0.5 - origin) * perSample + turns;
            const double place = (time - double(qint64(time))) * bins + 0.5;
            const int next = std::min(int(place), bins);
            const double part = (place - next) * weight;
            const double rest = weight - part;
            const double sample = series[std::size_t(i)];
            const auto b = std::size_t(next);
            sums[b] += part * sample;
            weights[b] += part;
            squares[b] += part * weight;
            const std::size_t before = b > 0 ? b - 1 : std::size_t(bins) - 1;
            sums[before] += rest * sample;
            weights[before] += rest;
            squares[before] += rest * weight;
        }
    }

    void close()
    {
        for (Vector *const values : {&sums, &weights, &squares}) {
            (*values)[0] += (*values)[std::size_t(bins)];
            std::copy(values->begin(), values->begin() + bins, values->begin() + bins);
        }
    }

    const int bins;
    Vector sums;
    Vector weights;
    Vector squares;
};

// A Gaussian averaged over a sample, at the bins to either side of its centre.
struct PulseShape {
    double sigma = 0; // bins
    Vector heights;

    int reach() const { return int(heights.size()) / 2; }
};

PulseShape pulseShape(double sigma, double sample, int bins)
{
    constexpr double cut = 4; // sigma
    constexpr double leastSigma = 0.05;
    const double half = std::max(sample, 1.0) / 2;
    const int reach = std::min((bins - 1) / 2, int(std::ceil(cut * sigma + half + 0.5)));
    PulseShape shape = {sigma, Vector(2 * std::size_t(reach) + 1)};
    const auto below = [sigma](double x) {
        return std::erfc(-x / sigma / std::numbers::sqrt2) / 2;
    };
    for (int i = -reach; i <= reach; ++i) {
        double &height = shape.heights[std::size_t(i + reach)];
        if (sigma < leastSigma) {
            height = std::max(0.0, std::min(i + 0.5, half) - std::max(i - 0.5, -half));
            continue;
        }
        for (int turn = -1; turn <= 1; ++turn) // tails of the pulses before and after
            height += below(i + turn * bins + half) - below(i + turn * bins - half);
    }
    return shape;
}

// The sum over samples that fits the height of a pulse, and its variance in units of that of a
// sample.
struct HeightSum {
    double value = 0;
    double variance = 0;
};

// @param bin      of the pulse's centre
// @param samples  of the whole fold
HeightSum heightSum(const CentreFold &fold, const PulseShape &shape, int bin, double samples)
{
    const int first = (bin - shape.reach() + fold.bins) % fold.bins;
    const double *const sums = fold.sums.data() + first;
    const double *const weights = fold.weights.data() + first;
    const double *const squares = fold.squares.data() + first;
    HeightSum sum;
    double level = 0;
    for (std::size_t i = 0; i < shape.heights.size(); ++i) {
        const double height = shape.heights[i];
        sum.value += sums[i] * height;
        level += weights[i] * height;
        sum.variance += squares[i] * height * height;
    }
    sum.variance -= level * level / samples; // the mean of the series is 0
    return sum;
}

// Heights that a source has while it crosses a beam, 1 at most, in equal parts of the series.
struct Envelope {
    Vector heights;

    // <t^power a^2>, t the time from the middle in lengths of the series.
    double moment(int power) const
    {
        double sum = 0;
        for (std::size_t i = 0; i < heights.size(); ++i) {
            const double time = (double(i) + 0.5) / double(heights.size()) - 0.5;
            sum += std::pow(time, power) * heights[i] * heights[i];
        }
        return sum / double(heights.size());
    }
    double centre() const { return moment(1) / moment(0); }
    // Length of steady pulses that would tell a period as well, in lengths of the series.
    double length() const { return std::sqrt(12 * (moment(2) / moment(0) - centre() * centre())); }

    // Of pulses whose heights in each part are measured.
    double snrOf(const std::vector<HeightSum> &measured) const
    {
        double value = 0;
        double variance = 0;
        for (std::size_t i = 0; i < measured.size(); ++i) {
            value += heights[i] * measured[i].value;
            variance += heights[i] * heights[i] * measured[i].variance;
        }
        return variance > 0 ? value / std::sqrt(variance) : 0;
    }
};

// Steady first, then Gaussians of all widths and places.
std::vector<Envelope> allEnvelopes()
{
    constexpr double widest = 1; // full width at half maximum, of the series
    constexpr double narrowest = 0.06;
    constexpr double ratio = 1.4;
    constexpr double apart = 0.25; // of the width
    std::vector<Envelope> envelopes = {{Vector(std::size_t(parts), 1.0)}};
    for (double width = widest; width > narrowest; width /= ratio) {
        for (double centre = 0; centre < 1 + apart * width; centre += apart * width) {
            Envelope envelope;
            for (int part = 0; part < parts; ++part) {
                const double x = ((part + 0.5) / parts - centre) / width;
                envelope.heights.push_back(std::exp(-4 * std::numbers::ln2 * x * x));
            }
            envelopes.push_back(std::move(envelope));
        }
    }
    return envelopes;
}

// Likelihoods of one trial period, in units of exp(highest).
struct Likelihood {
    double highest = 0; // logarithm
    double sum = 0;
    double widths = 0; // weighed by likelihood, turns
    double phase = 0;  // of the highest

    void add(double logarithm, double width, double itsPhase)
    {
        constexpr double negligible = 25;
        if (logarithm > highest) {
            const double scale = std::exp(highest - logarithm);
            sum *= scale;
            widths *= scale;
            highest = logarithm;
            phase = itsPhase;
        }
        if (logarithm < highest - negligible)
            return;
        const double share = std::exp(logarithm - highest);
        sum += share;
        widths += share * width;
    }
};

// What one pass over trial periods tells, as drifts in turns over the series.
struct Pass {
    double mean = 0;
    double scatter = 0;
    double step = 0;
    PulseTrain train; // but for the period
};

class PeriodPasses {
public:
    PeriodPasses(const Vector &allSamples, double noiseVariance,
                 const std::function<bool(int)> &progressOf)
        : series(allSamples), variance(noiseVariance), progress(progressOf),
          envelopes(allEnvelopes()), envelope(&envelopes.front()),
          origin(double(allSamples.size()) / 2)
    {}

    LikelyPeriod run(PulseTrain train, double drift)
    {
        const double given = train.period;
        const double steadyRange = drift;
        Pass pass;
        for (int i = 0; i < mostPasses; ++i) {
            if (!runPass(train, drift, 100 * i / mostPasses, pass))
                return {};
            const double settled = pass.train.width / train.width;
            const double farthest = periodOf(mostDrift(steadyRange, given), given);
            const double period = train.period + periodOf(pass.mean, train.period);
            train = pass.train;
            train.period = std::clamp(period, given - farthest, given + farthest);
            // Only pulses that stand still at their phase show how their heights change.
            const Envelope *const before = envelope;
            chooseEnvelope(train);
            const double most = mostDrift(steadyRange, given);
            if (envelope != before) {
                drift = most;
                continue;
            }
            const bool isWide = drift > leastRange * pass.scatter || drift >= most;
            if (isWide && pass.scatter > fewestSteps * pass.step && settled > 0.5 && settled < 1.6)
                break;
            drift =
                std::min({2 * drift, most, nextRange * std::max(pass.scatter, 0.7 * pass.step)});
        }
        const double error = pass.scatter * std::sqrt(scaleOfHeights(train));
        return {train.period, periodOf(error, train.period)};
    }

private:
    // A quarter of the period to either side at most.
    double mostDrift(double steadyRange, double period) const
    {
        return std::min(steadyRange / envelope->length(), double(series.size()) / period / 4);
    }

    // A drift of d turns over the series belongs to a change of the period by d P^2 / N.
    double periodOf(double drift, double period) const
    {
        return drift * period * period / double(series.size());
    }

    int binsOf(const PulseTrain &train) const
    {
        constexpr int fewest = 64;
        const double finest = std::max(train.width, 0.3 / train.period);
        return std::clamp(int(binsPerWidth / finest), fewest, mostBins);
    }

    std::vector<PulseShape> shapesOf(const PulseTrain &train, int bins) const
    {
        constexpr double narrowest = 0.08;
        constexpr double widest = 0.9;
        constexpr double ratio = 1.5;
        const double sample = bins / train.period;
        std::vector<PulseShape> shapes = {pulseShape(0, sample, bins)};
        for (double sigma = narrowest; sigma < widest; sigma *= ratio) {
            if (sigma * train.width < 0.25)
                shapes.push_back(pulseShape(sigma * train.width * bins, sample, bins));
        }
        return shapes;
    }

    // By how much the noise under the pulses exceeds that of the series.
    double excessNoise(const PulseTrain &train) const
    {
        const double samples = std::max(1.0, train.width * train.period);
        const double pulses = double(series.size()) / train.period * envelope->moment(0);
        const double height = train.snr / std::sqrt(pulses * samples);
        const double share = shapeNoise * height / samples;
        return 1 + share * share / samples;
    }

    bool runPass(const PulseTrain &train, double drift, int percent, Pass &pass) const
    {
        const int bins = binsOf(train);
        const std::vector<PulseShape> shapes = shapesOf(train, bins);
        const double excess = excessNoise(train);
        CentreFold fold(bins);
        std::vector<Likelihood> trials;
        for (int i = -steps; i <= steps; ++i) {
            if (progress && !progress(percent + 100 * (i + steps) / (2 * steps + 1) / mostPasses))
                return false;
            const double period = train.period + periodOf(drift * i / steps, train.period);
            fold.clear();
            for (int part = 0; part < parts; ++part)
                fold.add(series, beginOf(part, parts), beginOf(part + 1, parts), period, origin,
                         envelope->heights[std::size_t(part)]);
            fold.close();
            trials.push_back(likelihoodOf(fold, shapes, train, variance * excess));
        }
        pass = passOf(trials, drift / steps);
        pass.train.snr *= std::sqrt(excess);
        return true;
    }

    Likelihood likelihoodOf(const CentreFold &fold, const std::vector<PulseShape> &shapes,
                            const PulseTrain &train, double noise) const
    {
        const int bins = fold.bins;
        const double sample = 1 / train.period;
        const int centre = int(std::floor(train.phase * bins));
        const double window = std::min(0.5, windowWidths * train.width + sample);
        const int reach = std::min((bins - 1) / 2, std::max(3, int(window * bins)));
        Likelihood likelihood;
        Vector snr(2 * std::size_t(reach) + 1);
        for (const PulseShape &shape : shapes) {
            for (int b = -reach; b <= reach; ++b) {
                const int bin = (centre + b + 2 * bins) % bins;
                const HeightSum sum = heightSum(fold, shape, bin, double(series.size()));
                snr[std::size_t(b + reach)] =
                    sum.variance > 0 ? sum.value / std::sqrt(noise * sum.variance) : 0;
            }
            const double width = std::hypot(sigmasPerWidth * shape.sigma / bins, 0.8 * sample);
            for (std::size_t i = 1; i + 1 < snr.size(); ++i)
                addBetween(&snr[i], width, double(centre) + double(i) - reach + 0.5, bins,
                           likelihood);
        }
        return likelihood;
    }

    // A parabola through three bins tells phases between them, which strong pulses need.
    static void addBetween(const double *snr, double width, double bin, int bins,
                           Likelihood &likelihood)
    {
        constexpr int places = 8;
        for (int place = 0; place < places; ++place) {
            const double x = (place + 0.5) / places - 0.5;
            const double value =
                snr[0] + x * (snr[1] - snr[-1]) / 2 + x * x * (snr[1] + snr[-1] - 2 * snr[0]) / 2;
            likelihood.add(value > 0 ? value * value / 2 : 0, width, (bin + x) / bins);
        }
    }

    static Pass passOf(const std::vector<Likelihood> &trials, double step)
    {
        const auto best = std::max_element(
            trials.begin(), trials.end(),
            [](const Likelihood &a, const Likelihood &b) { return a.highest < b.highest; });
        double sum = 0;
        double mean = 0;
        double square = 0;
        double widths = 0;
        for (int i = -steps; i <= steps; ++i) {
            const Likelihood &trial = trials[std::size_t(i + steps)];
            const double scale = std::exp(trial.highest - best->highest);
            sum += scale * trial.sum;
            mean += scale * trial.sum * i;
            square += scale * trial.sum * i * i;
            widths += scale * trial.widths;
        }
        mean /= sum;
        Pass pass;
        pass.step = step;
        pass.mean = mean * step;
        pass.scatter = std::sqrt(std::max(0.0, square / sum - mean * mean)) * step;
        pass.train = {0, best->phase - std::floor(best->phase), widths / sum,
                      std::sqrt(2 * best->highest)};
        return pass;
    }

    int beginOf(int part, int count) const { return int(qint64(series.size()) * part / count); }

    // Heights of the pulses in equal parts of the series.
    std::vector<HeightSum> heightsOf(const PulseTrain &train, int count) const
    {
        const int bins = binsOf(train);
        const double sigma = train.width * bins / sigmasPerWidth;
        const PulseShape shape = pulseShape(sigma, bins / train.period, bins);
        const int bin = int(train.phase * bins) % bins;
        CentreFold fold(bins);
        std::vector<HeightSum> heights;
        for (int part = 0; part < count; ++part) {
            const int from = beginOf(part, count);
            const int to = beginOf(part + 1, count);
            fold.clear();
            fold.add(series, from, to, train.period, origin, 1);
            fold.close();
            heights.push_back(heightSum(fold, shape, bin, std::max(1, to - from)));
        }
        return heights;
    }

    // Moves the origin of phases to the middle of the heights.
    void chooseEnvelope(PulseTrain &train)
    {
        const std::vector<HeightSum> heights = heightsOf(train, parts);
        const auto powerOf = [&](const Envelope &one) {
            const double snr = std::max(0.0, one.snrOf(heights));
            return snr * snr / variance;
        };
        envelope = &envelopes.front();
        double most = powerOf(*envelope) + changeGain;
        for (const Envelope &one : envelopes) {
            if (powerOf(one) > most) {
                most = powerOf(one);
                envelope = &one;
            }
        }
        const double before = origin;
        origin = (0.5 + envelope->centre()) * double(series.size());
        train.phase += (before - origin) / train.period;
        train.phase -= std::floor(train.phase);
    }

    // What heights a that change with time do to the variance of the drift where they are taken as
    // steady. With M(a) = <a [1 t; t t^2]>, t the time from the middle of the series, it is the
    // lower right of M(a)^-1 M(1) M(a)^-1, where the likelihood promises that of M(a)^-1 / <a>.
    double scaleOfHeights(const PulseTrain &train) const
    {
        if (envelope != &envelopes.front())
            return 1;
        const double pulses = double(series.size()) / train.period;
        const int count = std::clamp(int(pulses / 2), 1, steadyParts);
        double zeroth = 0;
        double first = 0;
        double second = 0;
        double time = 0.5 / count - 0.5;
        for (const HeightSum &sum : heightsOf(train, count)) {
            const double height = sum.variance > 0 ? std::max(0.0, sum.value / sum.variance) : 0;
            zeroth += height / count;
            first += height * time / count;
            second += height * (time * time + 1.0 / 12 / count / count) / count;
            time += 1.0 / count;
        }
        const double determinant = zeroth * second - first * first;
        return determinant > 0 ? (first * first + zeroth * zeroth / 12) / determinant : 1;
    }

    const Vector &series;
    const double variance;
    const std::function<bool(int)> &progress;
    const std::vector<Envelope> envelopes;
    const Envelope *envelope; // the best of them
    double origin;            // of phases, samples
};

} // namespace

LikelyPeriod likelyPeriod(const std::vector<double> &series, double variance, PulseTrain train,
                          double drift, const std::function<bool(int percent)> &progress)
{
    return PeriodPasses(series, variance, progress).run(train, drift);
}

} // namespace Tools
