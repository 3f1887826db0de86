#include "simulator/samplesource.h"

#include "simulator/normalcurve.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr double widthPerSigma = 2.3548200450309493; // full width at half maximum of a Gaussian
constexpr double rootOfTwoPi = 2.5066282746310002;
constexpr double reachInTails = 18; // beyond it a tail is below 2e-8
constexpr double leastShare = 1e-4; // of a pulse that a far ray still has
constexpr double reachInSigmas = 6; // beyond it a pulse is below 2e-8 of its peak

// Generators beside that of the noise: what they draw must not move the noise.
enum Stream : unsigned { driftStream = 1, impulseStream = 2 };

std::mt19937 generatorOf(quint32 seed, Stream stream)
{
    std::seed_seq sequence{unsigned(seed), unsigned(stream)};
    return std::mt19937(sequence);
}

// Uniform from -1 to below 1.
double symmetricDraw(std::mt19937 &generator)
{
    return generator() / 2147483648.0 - 1;
}

} // namespace

SampleSource::SampleSource(const Simulation &s)
    : simulation(s), drawn(drawPulses(s)), bands(int(s.fbands.size())), stride(floatsPerPoint(s)),
      step(s.msPerPoint / 1000), generator(s.seed)
{
    driftKnots.resize(std::size_t(s.modules) * std::size_t(s.rays));
    if (s.drift > 0) {
        std::mt19937 drift = generatorOf(s.seed, driftStream);
        const int knots = int((s.earlierPoints + s.npoints) * step / s.driftTime) + 4;
        for (std::vector<double> &row : driftKnots) {
            row.resize(std::size_t(knots));
            for (double &knot : row)
                knot = s.drift * s.sigma * symmetricDraw(drift);
        }
    }
    if (s.noise)
        generator.discard(quint64(s.earlierPoints) * driftKnots.size() * quint64(bands));
    std::mt19937 sparks = generatorOf(s.seed, impulseStream);
    for (const Impulses &impulses : s.impulses) {
        std::vector<int> points(std::size_t(impulses.count));
        for (int &point : points)
            point = int((quint64(sparks()) * quint64(s.npoints)) >> 32);
        std::sort(points.begin(), points.end());
        impulsePoints.push_back(points);
    }
}

void SampleSource::read(float *block, int count)
{
    fillWithNoise(block, count);
    for (const PulseTrain &train : simulation.pulseTrains)
        addTrain(block, count, train);
    for (const PulseTrain &train : simulation.trainsEverywhere)
        addEverywhere(block, count, train);
    for (const SinglePulse &pulse : simulation.pulses)
        addSingle(block, count, pulse);
    for (const SinglePulse &pulse : drawn.ofRays)
        addSingle(block, count, pulse);
    for (const SinglePulse &pulse : drawn.everywhere) {
        for (int module = 1; module <= simulation.modules; ++module)
            for (int ray = 1; ray <= simulation.rays; ++ray)
                addSingle(block, count, pulse, module, ray, 1);
    }
    for (const PulseSeries &series : simulation.pulseSeries)
        addSeries(block, count, series);
    for (const NarrowBandLine &line : simulation.lines)
        addLine(block, count, line);
    for (std::size_t i = 0; i < impulsePoints.size(); ++i)
        addImpulses(block, count, i);
    for (const GainStep &gainStep : simulation.gainSteps)
        multiply(block, count, gainStep);
    fillMeanChannel(block, count);
    nextPoint += count;
}

// First band of a ray, numbers from 1, at the first point of the block.
float *SampleSource::row(float *block, int module, int ray) const
{
    return block + (qint64(module - 1) * simulation.rays + (ray - 1)) * (bands + 1);
}

// Uniform cubic B-spline: smooth, and between the smallest and the largest of its knots.
double SampleSource::level(const std::vector<double> &knots, int point) const
{
    if (knots.empty())
        return simulation.level;
    const double position = (simulation.earlierPoints + point) * step / simulation.driftTime;
    const int first = int(position);
    const double u = position - first;
    const double v = 1 - u;
    const double *knot = knots.data() + first;
    return simulation.level + (v * v * v * knot[0] + (3 * u * u * u - 6 * u * u + 4) * knot[1] +
                               (3 * v * v * v - 6 * v * v + 4) * knot[2] + u * u * u * knot[3]) /
                                  6;
}

void SampleSource::fillWithNoise(float *block, int count)
{
    const float *const table = noiseTable().data();
    const float sigma = float(simulation.sigma);
    float *out = block;
    for (int point = nextPoint; point < nextPoint + count; ++point) {
        for (const std::vector<double> &row : driftKnots) {
            const float mean = float(level(row, point));
            if (simulation.noise) {
                for (int band = 0; band < bands; ++band) {
                    const quint32 draw = quint32(generator());
                    out[band] = mean + sigma * (table[draw & 0xffff] + table[draw >> 16]);
                }
            } else {
                std::fill_n(out, bands, mean);
            }
            out += bands + 1;
        }
    }
}

// Adds a train, in one band that receives it `offset` seconds late, to points that stand `apart`
// floats from each other.
void SampleSource::addTrain(float *firstPoint, qint64 apart, int count, const PulseTrain &train,
                            double offset) const
{
    const double reach = reachInSigmas * train.width / widthPerSigma + step;
    const double height = train.strength * simulation.sigma;
    const double from = nextPoint * step - reach - offset;
    const double to = (qint64(nextPoint) + count) * step + reach - offset;
    const double first = std::ceil(from / train.period);
    const qint64 pulses = qint64(std::floor(to / train.period) - first) + 1;
    for (qint64 i = 0; i < pulses; ++i)
        addPulse(firstPoint, apart, count, (first + double(i)) * train.period + offset, train.width,
                 height);
}

void SampleSource::addTrain(float *block, int count, const PulseTrain &train) const
{
    for (int band = 0; band < bands; ++band)
        addTrain(row(block, train.module, train.ray) + band, stride, count, train,
                 train.phase * train.period + lag(simulation, band, train.dispersion));
}

void SampleSource::addEverywhere(float *block, int count, const PulseTrain &train) const
{
    std::vector<float> sum(std::size_t(count), 0);
    addTrain(sum.data(), 1, count, train, train.phase * train.period);
    for (const float value : sum) {
        for (float *const end = block + stride; block < end; ++block)
            *block += value;
    }
}

void SampleSource::addSingle(float *block, int count, const SinglePulse &pulse) const
{
    addSingle(block, count, pulse, pulse.module, pulse.ray, 1);
    for (int ray = 1; pulse.beam > 0 && ray <= simulation.rays; ++ray) {
        const double halves = 2 * (ray - pulse.ray) / pulse.beam;
        const double share = std::exp2(-halves * halves);
        if (ray != pulse.ray && share > leastShare)
            addSingle(block, count, pulse, pulse.module, ray, share);
    }
}

void SampleSource::addSingle(float *block, int count, const SinglePulse &pulse, int module, int ray,
                             double share) const
{
    const double height = share * pulse.strength * simulation.sigma;
    const double reference = simulation.fbands.back();
    for (int band = 0; band < bands; ++band) {
        const double frequency = simulation.fbands[std::size_t(band)];
        const double swept = pulse.sweep == 0 ? 0 : (frequency - reference) / pulse.sweep;
        const double time = pulse.time + lag(simulation, band, pulse.dispersion) + swept;
        float *const out = row(block, module, ray) + band;
        if (pulse.scattering <= 0) {
            addPulse(out, stride, count, time, pulse.width, height);
            continue;
        }
        const double ratio = reference / frequency;
        addScattered(out, stride, count, time, pulse, height,
                     pulse.scattering * ratio * ratio * ratio * ratio);
    }
}

// A pulse whose samples each decay by e within the tail; their sum stays the same.
void SampleSource::addScattered(float *firstPoint, qint64 apart, int count, double time,
                                const SinglePulse &pulse, double height, double tail) const
{
    const double reach = reachInSigmas * pulse.width / widthPerSigma + step;
    const double decay = std::exp(-step / tail);
    const qint64 first = qint64(std::floor((time - reach) / step));
    const qint64 end = qint64(std::ceil((time + reach + reachInTails * tail) / step));
    if (end < nextPoint || first >= qint64(nextPoint) + count)
        return;
    const double sigma = pulse.width / widthPerSigma / step; // points
    const double area = height * sigma * rootOfTwoPi;
    double below = normalDistribution((double(first) - 0.5 - time / step) / sigma);
    double value = 0;
    for (qint64 point = first; point < std::min(end, qint64(nextPoint) + count); ++point) {
        const double above = normalDistribution((double(point) + 0.5 - time / step) / sigma);
        value = decay * value + (1 - decay) * area * (above - below);
        below = above;
        if (point >= nextPoint)
            firstPoint[(point - nextPoint) * apart] += float(value);
    }
}

void SampleSource::addSeries(float *block, int count, const PulseSeries &series) const
{
    const double reach = reachInSigmas * series.width / widthPerSigma + step;
    for (int band = 0; band < bands; ++band) {
        const double offset = lag(simulation, band, series.dispersion);
        const double from = nextPoint * step - reach - offset;
        const double to = (qint64(nextPoint) + count) * step + reach - offset;
        float *const out = row(block, series.module, series.ray) + band;
        const auto first = std::lower_bound(series.times.begin(), series.times.end(), from);
        for (auto time = first; time != series.times.end() && *time <= to; ++time) {
            const double strength = series.strengths[std::size_t(time - series.times.begin())];
            addPulse(out, stride, count, *time + offset, series.width, strength * simulation.sigma);
        }
    }
}

// Adds a Gaussian to points that stand `apart` floats from each other. Its mean over a step is the
// difference of its integral at the two ends.
void SampleSource::addPulse(float *firstPoint, qint64 apart, int count, double time, double width,
                            double height) const
{
    const double sigma = width / widthPerSigma / step; // points
    const double area = height * sigma * rootOfTwoPi;
    const double peak = time / step - nextPoint;
    const double reach = reachInSigmas * sigma + 1;
    const int first = int(std::clamp(std::ceil(peak - reach), 0.0, double(count)));
    const int end = int(std::clamp(std::floor(peak + reach) + 1, 0.0, double(count)));
    double below = normalDistribution((first - 0.5 - peak) / sigma);
    for (int i = first; i < end; ++i) {
        const double above = normalDistribution((i + 0.5 - peak) / sigma);
        firstPoint[i * apart] += float(area * (above - below));
        below = above;
    }
}

void SampleSource::addLine(float *block, int count, const NarrowBandLine &line) const
{
    float *out = row(block, line.module, line.ray) + (line.band - 1);
    for (int i = 0; i < count; ++i, out += stride) {
        const double time = (qint64(nextPoint) + i) * step;
        if (time >= line.begin && time < line.end)
            *out += float(line.strength * simulation.sigma);
    }
}

void SampleSource::addImpulses(float *block, int count, std::size_t index) const
{
    const Impulses &impulses = simulation.impulses[index];
    const std::vector<int> &points = impulsePoints[index];
    const float height = float(impulses.strength * simulation.sigma);
    for (auto point = std::lower_bound(points.begin(), points.end(), nextPoint);
         point != points.end() && *point < nextPoint + count; ++point) {
        float *const out =
            row(block, impulses.module, impulses.ray) + (*point - nextPoint) * stride;
        for (int band = 0; band < bands; ++band)
            out[band] += height;
    }
}

void SampleSource::multiply(float *block, int count, const GainStep &gainStep) const
{
    const float factor = float(gainStep.factor);
    for (int i = std::max(0, gainStep.point - nextPoint); i < count; ++i) {
        float *const out = row(block, gainStep.module, gainStep.ray) + i * stride;
        for (int band = 0; band < bands; ++band)
            out[band] *= factor;
    }
}

void SampleSource::fillMeanChannel(float *block, int count) const
{
    const qint64 rowCount = qint64(driftKnots.size()) * count;
    for (qint64 i = 0; i < rowCount; ++i, block += bands + 1) {
        double sum = 0;
        for (int band = 0; band < bands; ++band)
            sum += block[band];
        block[bands] = float(sum / bands);
    }
}

} // namespace Simulator
