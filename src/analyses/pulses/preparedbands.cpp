#include "analyses/pulses/preparedbands.h"

#include "calc/boxcarsearch.h"
#include "calc/finitesamples.h"
#include "calc/leveljumps.h"
#include "calc/pulsar/channelsoff.h"
#include "calc/robuststatistics.h"
#include "calc/runninglevel.h"

#include <algorithm>
#include <cmath>

namespace Pulses {

namespace {

constexpr int levelWidths = 16;     // of the widest boxcar, of the window of the level
constexpr int shortestLevel = 1024; // points
constexpr int scaleSamples = 16384; // that tell level and noise of a band
constexpr int scaleRun = 512;       // of them next to each other
constexpr int constantRun = 64;     // equal samples from which on they are no signal
constexpr int jumpMean = 4;         // points whose mean is searched for jumps
constexpr int jumpSide = 1024;      // points whose median is a level beside a jump

// Stretches of a band that are left out.
using Spans = std::vector<Tools::PointSpan>;

Spans findGaps(const float *samples, int count)
{
    Spans gaps;
    const bool areFinite = Tools::areFinite(samples, count);
    int begin = 0; // of the run of equal samples, or of those that are no numbers
    for (int i = 1; i <= count; ++i) {
        if (i < count && samples[i] == samples[i - 1])
            continue;
        if (i - begin >= constantRun)
            gaps.push_back({begin, i});
        begin = i;
    }
    if (areFinite)
        return gaps;
    for (int i = 0; i < count; ++i) {
        if (std::isfinite(samples[i]))
            continue;
        if (!gaps.empty() && gaps.back().end == i)
            gaps.back().end = i + 1;
        else
            gaps.push_back({i, i + 1});
    }
    return gaps;
}

// Level and noise of a band from runs of samples all over it.
Tools::RobustLevel scaleOf(const float *samples, int count)
{
    std::vector<float> some;
    const int runs = std::min(scaleSamples / scaleRun, std::max(1, count / scaleRun));
    for (int run = 0; run < runs; ++run) {
        const int begin = int(qint64(count) * run / runs);
        some.insert(some.end(), samples + begin, samples + std::min(count, begin + scaleRun));
    }
    std::vector<float> scratch;
    Tools::RobustLevel level = Tools::robustLevel(some.data(), int(some.size()), scratch);
    level.spread = Tools::robustSigma(some.data(), int(some.size()));
    return level;
}

void scale(const float *samples, int count, const Tools::RobustLevel &level, float *out)
{
    const float median = float(level.median);
    const float factor = float(1 / level.spread);
    for (int i = 0; i < count; ++i)
        out[i] = (samples[i] - median) * factor;
}

float medianOf(const float *samples, int count)
{
    std::vector<float> values(samples, samples + count);
    const auto middle = values.begin() + count / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

class Preparation {
public:
    Preparation(const ObservationData &recording, const RayPlace &rayPlace,
                const PulsePlan &pulsePlan, const PulseParameters &pulseParameters,
                PreparedBands &bands)
        : data(recording), place(rayPlace), plan(pulsePlan), parameters(pulseParameters),
          prepared(bands), gaps(std::size_t(plan.bands)), isDead(std::size_t(plan.bands), false)
    {}

    void run(const Jobs::Control &control)
    {
        scaleBands();
        live = int(std::count(isDead.begin(), isDead.end(), false));
        if (live == 0) {
            prepared.problem = QString("Module %1, ray %2: no channel holds a signal.")
                                   .arg(place.moduleNumber)
                                   .arg(place.rayNumber);
            return;
        }
        if (control.isStopped())
            return;
        removeJumps();
        const int window = std::max(shortestLevel, levelWidths * plan.widths.back());
        for (int band = 0; band < plan.bands; ++band) {
            if (!isDead[std::size_t(band)])
                Tools::subtractRunningLevel(row(band), plan.points, window);
        }
        if (control.isStopped())
            return;
        if (parameters.mask)
            mask();
        if (parameters.zeroDm)
            subtractMean();
        for (int band = 0; band < plan.bands; ++band) {
            for (const Tools::PointSpan &gap : gaps[std::size_t(band)])
                std::fill(row(band) + gap.begin, row(band) + gap.end, 0.0F);
        }
        addRemarks();
    }

private:
    float *row(int band) { return prepared.rows.row(band); }

    void scaleBands()
    {
        const std::vector<bool> off = channelsOff(parameters.channelsOff, plan.bands)
                                          .value_or(std::vector<bool>(std::size_t(plan.bands)));
        for (int band = 0; band < plan.bands; ++band) {
            const float *const samples =
                data.samples[place.module][band][place.ray] + plan.firstPoint;
            Tools::RobustLevel level;
            if (!off[std::size_t(band)]) {
                gaps[std::size_t(band)] = findGaps(samples, plan.points);
                level = scaleOf(samples, plan.points);
            }
            isDead[std::size_t(band)] = !(level.spread > 0) || !std::isfinite(level.spread);
            if (isDead[std::size_t(band)]) {
                std::fill_n(row(band), plan.points, 0.0F);
                gaps[std::size_t(band)].clear();
                (off[std::size_t(band)] ? channelsOffNumbers : deadChannels) << band;
                continue;
            }
            scale(samples, plan.points, level, row(band));
            for (const Tools::PointSpan &gap : gaps[std::size_t(band)])
                std::fill(row(band) + gap.begin, row(band) + gap.end, 0.0F);
        }
    }

    // Mean over the bands, in units of its own noise if the bands are independent.
    std::vector<float> meanSeries()
    {
        std::vector<float> mean(std::size_t(plan.points), 0.0F);
        for (int band = 0; band < plan.bands; ++band) {
            const float *const samples = row(band);
            for (int i = 0; i < plan.points; ++i)
                mean[std::size_t(i)] += samples[i];
        }
        const float factor = float(1 / std::sqrt(double(live)));
        for (float &value : mean)
            value *= factor;
        return mean;
    }

    // A step that all bands have is small in each of them; their mean tells where it is.
    void removeJumps()
    {
        const std::vector<float> mean = meanSeries();
        std::vector<float> means;
        for (int i = 0; i + jumpMean <= plan.points; i += jumpMean) {
            float sum = 0;
            for (int k = 0; k < jumpMean; ++k)
                sum += mean[std::size_t(i + k)];
            means.push_back(sum / jumpMean);
        }
        const std::vector<Tools::LevelJump> jumps =
            Tools::findLevelJumps(means.data(), int(means.size()));
        std::vector<int> points;
        for (const Tools::LevelJump &jump : jumps)
            points.push_back(exactPlace(mean, jump));
        for (int band = 0; band < plan.bands && !points.empty(); ++band) {
            if (!isDead[std::size_t(band)])
                removeJumps(row(band), points);
        }
    }

    // Where the samples fall best into the two levels.
    static int exactPlace(const std::vector<float> &mean, const Tools::LevelJump &jump)
    {
        const int begin = std::max(0, jump.point * jumpMean - 2 * jumpMean);
        const int end = std::min(int(mean.size()), begin + 4 * jumpMean);
        const int side = std::min({jumpSide, begin, int(mean.size()) - end});
        if (side < 1)
            return jump.point * jumpMean;
        const double middle = (double(medianOf(mean.data() + begin - side, side)) +
                               double(medianOf(mean.data() + end, side))) /
                              2;
        double sum = 0;
        double lowest = 0;
        int best = begin;
        for (int i = begin; i < end; ++i) {
            sum += (double(mean[std::size_t(i)]) - middle) * (jump.height > 0 ? 1 : -1);
            if (sum < lowest) {
                lowest = sum;
                best = i + 1;
            }
        }
        return best;
    }

    void removeJumps(float *samples, const std::vector<int> &points)
    {
        std::vector<Tools::LevelJump> jumps;
        for (std::size_t k = 0; k < points.size(); ++k) {
            const int before = points[k] - (k > 0 ? points[k - 1] : 0);
            const int after = (k + 1 < points.size() ? points[k + 1] : plan.points) - points[k];
            const int side = std::min({jumpSide, before, after});
            if (side > 0)
                jumps.push_back(
                    {points[k], double(medianOf(samples + points[k], side)) -
                                    double(medianOf(samples + points[k] - side, side))});
        }
        Tools::removeLevelJumps(samples, plan.points, jumps);
    }

    void mask()
    {
        std::vector<const float *> bands;
        std::vector<int> numbers;
        for (int band = 0; band < plan.bands; ++band) {
            if (isDead[std::size_t(band)])
                continue;
            bands.push_back(row(band));
            numbers.push_back(band);
        }
        prepared.mask = findInterference(bands, plan.points, plan.firstPoint);
        std::vector<int> masked(std::size_t(plan.points / maskBlockPoints + 1), 0);
        for (MaskedBlock &block : prepared.mask.blocks) {
            block.channel = numbers[std::size_t(block.channel)];
            const int begin = block.first - plan.firstPoint;
            gaps[std::size_t(block.channel)].push_back({begin, begin + block.count});
            ++masked[std::size_t(begin / maskBlockPoints)];
        }
        // Fewer channels have less noise together; the sums keep theirs.
        const int blocks = std::max(1, plan.points / maskBlockPoints);
        for (int block = 0; block < blocks; ++block) {
            const int missing = masked[std::size_t(block)];
            if (missing == 0 || missing == live)
                continue;
            const float factor = float(std::sqrt(double(live) / (live - missing)));
            const int begin = block * maskBlockPoints;
            const int end = block + 1 == blocks ? plan.points : begin + maskBlockPoints;
            for (int band = 0; band < plan.bands; ++band)
                std::for_each(row(band) + begin, row(band) + end,
                              [factor](float &sample) { sample *= factor; });
        }
    }

    void subtractMean()
    {
        // What is left out of the sums is left out of the mean.
        for (int band = 0; band < plan.bands; ++band) {
            for (const Tools::PointSpan &gap : gaps[std::size_t(band)])
                std::fill(row(band) + gap.begin, row(band) + gap.end, 0.0F);
        }
        const std::vector<float> mean = meanSeries();
        const float factor = float(1 / std::sqrt(double(live)));
        for (int band = 0; band < plan.bands; ++band) {
            if (isDead[std::size_t(band)])
                continue;
            float *const samples = row(band);
            for (int i = 0; i < plan.points; ++i)
                samples[i] -= mean[std::size_t(i)] * factor;
        }
    }

    void addRemarks()
    {
        qint64 missing = 0;
        int channels = 0;
        for (const Spans &spans : gaps) {
            for (const Tools::PointSpan &gap : spans)
                missing += gap.end - gap.begin;
            channels += spans.empty() ? 0 : 1;
        }
        for (const MaskedBlock &block : prepared.mask.blocks)
            missing -= block.count;
        if (missing > 0)
            prepared.remarks << QString("%1 samples in %2 channels are constant or no numbers and "
                                        "do not count.")
                                    .arg(missing)
                                    .arg(channels);
        if (!deadChannels.isEmpty())
            prepared.remarks << Tools::channelsText({deadChannels.begin(), deadChannels.end()}) +
                                    ": no signal.";
        if (!prepared.mask.blocks.empty())
            prepared.remarks << QString(
                                    "%1 blocks of %2 points, %3 % of all samples, are masked as "
                                    "interference in single channels.")
                                    .arg(prepared.mask.blocks.size())
                                    .arg(maskBlockPoints)
                                    .arg(100 * prepared.mask.share, 0, 'g', 2);
    }

    const ObservationData &data;
    const RayPlace &place;
    const PulsePlan &plan;
    const PulseParameters &parameters;
    PreparedBands &prepared;
    std::vector<Spans> gaps;
    std::vector<bool> isDead;
    QVector<int> deadChannels;
    QVector<int> channelsOffNumbers;
    int live = 0;
};

} // namespace

PreparedBands prepareBands(const ObservationData &data, const RayPlace &place,
                           const PulsePlan &plan, const PulseParameters &parameters,
                           const Tools::DispersionTree &tree, const Jobs::Control &control)
{
    PreparedBands prepared;
    prepared.rows = Tools::rowsFor(tree, plan.bands, plan.points, plan.widths);
    Preparation(data, place, plan, parameters, prepared).run(control);
    return prepared;
}

} // namespace Pulses
