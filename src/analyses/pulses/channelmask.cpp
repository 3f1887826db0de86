#include "analyses/pulses/channelmask.h"

#include "base/targetclones.h"
#include "calc/robuststatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace Pulses {

namespace {

constexpr std::size_t kinds = 3; // variance, kurtosis, correlation
constexpr int neighboursEachSide = 4;
constexpr double timesBesides = 2; // a bright pulse has not the same strength in all channels

using Statistics = std::array<float, kinds>;

constexpr int partPoints = 32;
constexpr std::size_t partsLeftOut = 2;

// Sums of powers and of products of neighbours.
using Sums = std::array<double, 5>;

// Those of a part, in sixteen lanes.
ZRT_TARGET_CLONES
void partSums(const float *samples, Sums &sums)
{
    constexpr int width = 16;
    float lanes[5][width] = {};
    for (int i = 0; i < partPoints; i += width) {
        for (int k = 0; k < width; ++k) {
            const float x = samples[i + k];
            const float square = x * x;
            lanes[0][k] += x;
            lanes[1][k] += square;
            lanes[2][k] += square * x;
            lanes[3][k] += square * square;
            lanes[4][k] += x * samples[i + k + 1];
        }
    }
    for (std::size_t s = 0; s < sums.size(); ++s) {
        sums[s] = 0;
        for (int k = 0; k < width; ++k)
            sums[s] += double(lanes[s][k]);
    }
}

// Of a block without its two strongest parts: there a short pulse may be, which must not be masked;
// interference that is as short gets its verdict as a pulse.
Statistics statisticsOf(const float *samples, int count)
{
    const int parts = (count - 1) / partPoints;
    std::vector<Sums> all(static_cast<std::size_t>(parts));
    for (int part = 0; part < parts; ++part)
        partSums(samples + part * partPoints, all[std::size_t(part)]);
    std::partial_sort(all.begin(), all.begin() + partsLeftOut, all.end(),
                      [](const Sums &a, const Sums &b) { return a[1] > b[1]; });
    Sums sums = {};
    for (std::size_t part = partsLeftOut; part < all.size(); ++part)
        for (std::size_t s = 0; s < sums.size(); ++s)
            sums[s] += all[part][s];
    const double n = double(all.size() - partsLeftOut) * partPoints;
    const double mean = sums[0] / n;
    const double variance = sums[1] / n - mean * mean;
    if (!(variance > 0))
        return {};
    const double fourth = sums[3] / n - 4 * mean * sums[2] / n + 6 * mean * mean * sums[1] / n -
                          3 * mean * mean * mean * mean;
    return {float(std::log(variance)), float(fourth / variance / variance - 3),
            float((sums[4] / n - mean * mean) / variance)};
}

// What white noise scatters in a block: few blocks would tell less.
double leastScatter(std::size_t kind)
{
    constexpr double n = maskBlockPoints;
    return std::sqrt((kind == 0 ? 2 : kind == 1 ? 24 : 1) / n);
}

// By how many robust sigmas each block of a channel stands out among the others.
void standardise(std::vector<float> &values, double least)
{
    std::vector<float> scratch;
    const Tools::RobustLevel level = Tools::robustLevel(values.data(), int(values.size()), scratch);
    for (float &value : values)
        value = float((double(value) - level.median) / std::max(level.spread, least));
}

class Outliers {
public:
    Outliers(const std::vector<const float *> &bands, int count)
        : channels(int(bands.size())), blocks(count / maskBlockPoints)
    {
        for (std::vector<std::vector<float>> &kind : sigmas)
            kind.assign(std::size_t(channels), std::vector<float>(std::size_t(blocks)));
        for (int channel = 0; channel < channels; ++channel) {
            for (int block = 0; block < blocks; ++block) {
                const Statistics found = statisticsOf(
                    bands[std::size_t(channel)] + block * maskBlockPoints,
                    block + 1 == blocks ? count - block * maskBlockPoints : maskBlockPoints);
                for (std::size_t kind = 0; kind < kinds; ++kind)
                    sigmas[kind][std::size_t(channel)][std::size_t(block)] = found[kind];
            }
            for (std::size_t kind = 0; kind < kinds; ++kind)
                standardise(sigmas[kind][std::size_t(channel)], leastScatter(kind));
        }
    }

    int blockCount() const { return blocks; }

    // The kind that stands out most where one does.
    std::optional<MaskedBlock> at(int channel, int block) const
    {
        MaskedBlock worst;
        for (std::size_t kind = 0; kind < kinds; ++kind) {
            const double own =
                std::abs(double(sigmas[kind][std::size_t(channel)][std::size_t(block)]));
            if (own >= maskSigmas &&
                own - timesBesides * besides(kind, channel, block) >= maskSigmas &&
                own > worst.sigmas) {
                worst.reason = MaskReason(kind);
                worst.sigmas = own;
            }
        }
        return worst.sigmas > 0 ? std::optional(worst) : std::nullopt;
    }

private:
    // What the neighbouring channels have there; a dispersed pulse reaches them a block earlier or
    // later.
    double besides(std::size_t kind, int channel, int block) const
    {
        std::vector<double> values;
        for (int other = channel - neighboursEachSide; other <= channel + neighboursEachSide;
             ++other) {
            if (other < 0 || other >= channels || other == channel)
                continue;
            double most = 0;
            for (int near = std::max(0, block - 1); near <= std::min(blocks - 1, block + 1); ++near)
                most = std::max(
                    most, std::abs(double(sigmas[kind][std::size_t(other)][std::size_t(near)])));
            values.push_back(most);
        }
        const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    const int channels;
    const int blocks;
    std::array<std::vector<std::vector<float>>, kinds> sigmas; // [channel][block]
};

QString nameOfReason(MaskReason reason)
{
    switch (reason) {
    case MaskReason::Variance:
        return "variance";
    case MaskReason::Kurtosis:
        return "kurtosis";
    case MaskReason::Correlation:
        return "correlation of neighbouring samples";
    case MaskReason::Dead:
        break;
    }
    return "no signal";
}

} // namespace

ChannelMask findInterference(const std::vector<const float *> &bands, int count, int firstPoint)
{
    ChannelMask mask;
    if (int(bands.size()) < fewestBandsToMask || count < 2 * maskBlockPoints)
        return mask;
    const Outliers outliers(bands, count);
    qint64 masked = 0;
    for (int channel = 0; channel < int(bands.size()); ++channel) {
        for (int block = 0; block < outliers.blockCount(); ++block) {
            auto found = outliers.at(channel, block);
            if (!found)
                continue;
            const int begin = block * maskBlockPoints;
            found->channel = channel;
            found->first = firstPoint + begin;
            found->count = block + 1 == outliers.blockCount() ? count - begin : maskBlockPoints;
            masked += found->count;
            mask.blocks.push_back(*found);
        }
    }
    mask.share = double(masked) / (double(count) * double(bands.size()));
    return mask;
}

QStringList maskLines(const ChannelMask &mask)
{
    QStringList lines;
    for (std::size_t i = 0; i < mask.blocks.size();) {
        MaskedBlock run = mask.blocks[i];
        for (++i; i < mask.blocks.size() && mask.blocks[i].channel == run.channel &&
                  mask.blocks[i].first == run.first + run.count;
             ++i) {
            run.count += mask.blocks[i].count;
            if (mask.blocks[i].sigmas > run.sigmas) {
                run.sigmas = mask.blocks[i].sigmas;
                run.reason = mask.blocks[i].reason;
            }
        }
        QString line = QString("channel %1 at points %2 to %3: %4")
                           .arg(run.channel + 1)
                           .arg(run.first)
                           .arg(run.first + run.count - 1)
                           .arg(nameOfReason(run.reason));
        if (run.reason != MaskReason::Dead)
            line += QString(", %1 sigma").arg(run.sigmas, 0, 'f', 1);
        lines << line;
    }
    return lines;
}

} // namespace Pulses
