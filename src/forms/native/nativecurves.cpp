#include "forms/native/nativecurves.h"

#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/robuststatistics.h"
#include "calc/stretchsum.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr double stackSigmas = 8;  // robust sigmas from one stacked band to the next
constexpr int levelSamples = 8192; // that a stacked band's level is judged by

bool isOff(const std::vector<bool> &channelsOff, int channel)
{
    return std::size_t(channel) < channelsOff.size() && channelsOff[std::size_t(channel)];
}

bool isOff(const NativeChoice &choice, int channel)
{
    return isOff(choice.channelsOff, channel);
}

std::vector<float> toFloat(const std::vector<double> &series)
{
    return std::vector<float>(series.begin(), series.end());
}

// Level and noise of a band, estimated from some thousand equally spaced samples.
Tools::RobustLevel levelOf(const NativePicture &picture, int band, const std::vector<float> &curve)
{
    if (!picture.window.samples) {
        const Tools::Reduction &reduction = picture.reduction;
        const Tools::RowMoments moments = Tools::rowMoments(reduction, band, 0, reduction.columns);
        return {moments.mean, moments.sigma};
    }
    std::vector<float> some;
    std::vector<float> scratch;
    const std::size_t step = curve.size() / levelSamples + 1;
    for (std::size_t i = 0; i < curve.size(); i += step)
        some.push_back(curve[i]);
    return Tools::robustLevel(some.data(), int(some.size()), scratch);
}

// A row of a reduction as pairs of its extremes.
std::vector<float> pairs(const Tools::Reduction &reduction, int row)
{
    std::vector<float> curve(2 * std::size_t(reduction.columns));
    for (int i = 0; i < reduction.columns; ++i) {
        const std::size_t index = reduction.index(row, i);
        curve[2 * std::size_t(i)] = reduction.low[index];
        curve[2 * std::size_t(i) + 1] = reduction.high[index];
    }
    return curve;
}

// The curve of one channel within the part.
std::vector<float> channelCurve(const NativePicture &picture, int channel)
{
    if (!picture.window.samples)
        return pairs(picture.reduction, channel);
    const float *const samples = picture.window.samples[0][channel][0] + picture.offset;
    return std::vector<float>(samples, samples + picture.request.domain.count);
}

void addMarkers(NativeCurves &drawn, const NativePicture &picture, int channel, int shift)
{
    if (std::size_t(channel) >= picture.jumps.size())
        return;
    for (const Tools::LevelJump &jump : picture.jumps[std::size_t(channel)]) {
        const int index = jump.point - picture.offset - shift;
        if (index >= 0 && index < drawn.count)
            drawn.markers.push_back(index);
    }
}

void drawChannel(NativeCurves &drawn, const NativePicture &picture, int channel)
{
    drawn.row = channel;
    if (picture.window.samples) {
        const float *const samples = picture.window.samples[0][channel][0] + picture.offset;
        drawn.series.assign(samples, samples + drawn.count);
    }
}

void drawStack(NativeCurves &drawn, const NativePicture &picture, const NativeChoice &choice)
{
    for (int band = 0; band < picture.reduction.channels - 1; ++band) {
        if (isOff(choice, band))
            continue;
        drawn.curves.push_back(channelCurve(picture, band));
        std::vector<float> &curve = drawn.curves.back();
        const Tools::RobustLevel level = levelOf(picture, band, curve);
        const double scale = level.spread > 0 ? 1 / (stackSigmas * level.spread) : 0;
        for (float &value : curve)
            value = float(band + 1 + (value - level.median) * scale);
        drawn.names << QString("channel %1").arg(band + 1);
        addMarkers(drawn, picture, band, 0);
    }
    if (drawn.curves.empty())
        drawn.problem = "All channels are switched off.";
}

void drawSum(NativeCurves &drawn, const NativePicture &picture, const NativeChoice &choice)
{
    drawn.names << QString("sum of the bands, DM %1").arg(choice.dispersion);
    drawn.row = picture.reduction.channels;
    if (!picture.window.samples) {
        drawn.curves.push_back(pairs(picture.reduction, drawn.row));
        return;
    }
    if (!bandsThatKeepFromSumming(picture, choice.channelsOff).empty()) {
        drawn.series.assign(std::size_t(drawn.count), NAN);
        drawn.curves.push_back(toFloat(drawn.series));
        return;
    }
    ObservationData data = picture.window;
    data.samples = choice.channelsOff.empty() ? picture.finite
                                              : picture.finite.withChannelsOff(choice.channelsOff);
    const std::vector<double> sums = data.channels < 2
                                         ? std::vector<double>()
                                         : Tools::sumChannels(data, choice.dispersion, 0, 0);
    if (sums.empty()) {
        drawn.problem = "The bands cannot be summed: the passport's frequencies or step are no "
                        "usable numbers, or the dispersion is too large.";
        return;
    }
    drawn.series.assign(sums.begin() + picture.offset, sums.begin() + picture.offset + drawn.count);
    drawn.curves.push_back(toFloat(drawn.series));
    const Tools::BandDelays delays(data, data.channels - 1, choice.dispersion,
                                   Tools::ShiftRounding::WholeRecording);
    for (int band = 0; band < delays.bands(); ++band) {
        if (!isOff(choice, band))
            addMarkers(drawn, picture, band, delays.shift(band));
    }
}

} // namespace

std::vector<int> bandsThatKeepFromSumming(const NativePicture &picture,
                                          const std::vector<bool> &channelsOff)
{
    std::vector<int> bands;
    std::copy_if(picture.bandsWithoutNumbers.begin(), picture.bandsWithoutNumbers.end(),
                 std::back_inserter(bands), [&](int band) { return !isOff(channelsOff, band); });
    return bands;
}

NativeCurves nativeCurves(const NativePicture &picture, const NativeChoice &choice)
{
    NativeCurves drawn;
    const NativeDomain &domain = picture.request.domain;
    drawn.first = domain.first;
    drawn.count = domain.count;
    if (!picture.window.samples) {
        drawn.count = 2 * picture.reduction.columns;
        drawn.step = double(domain.count) / drawn.count;
    }
    const int channel = std::clamp(choice.channel, 0, picture.reduction.channels - 1);
    switch (choice.show) {
    case NativeShow::Channel:
        drawChannel(drawn, picture, channel);
        drawn.curves.push_back(channelCurve(picture, channel));
        drawn.names << QString("channel %1").arg(channel + 1);
        addMarkers(drawn, picture, channel, 0);
        break;
    case NativeShow::Stack:
        drawChannel(drawn, picture, channel);
        drawStack(drawn, picture, choice);
        break;
    case NativeShow::Sum:
    case NativeShow::Waterfall:
        drawSum(drawn, picture, choice);
        break;
    }
    std::sort(drawn.markers.begin(), drawn.markers.end());
    drawn.markers.erase(std::unique(drawn.markers.begin(), drawn.markers.end()),
                        drawn.markers.end());
    const Plot::Range all = rangeInSight(drawn.curves, 0, drawn.count);
    drawn.min = all.min;
    drawn.max = all.max;
    return drawn;
}

Plot::Range rangeInSight(const std::vector<std::vector<float>> &curves, double first, double points)
{
    double min = INFINITY;
    double max = -INFINITY;
    for (const std::vector<float> &curve : curves) {
        const double size = double(curve.size());
        const auto begin = std::size_t(std::clamp(std::floor(first), 0.0, size));
        const auto end = std::size_t(std::clamp(std::ceil(first + points), double(begin), size));
        for (std::size_t i = begin; i < end; ++i) {
            if (!std::isfinite(curve[i]))
                continue;
            min = std::min(min, double(curve[i]));
            max = std::max(max, double(curve[i]));
        }
    }
    return min <= max ? Plot::Range{min, max} : Plot::Range{};
}

bool reachesWithin(const NativePicture &picture, double dispersion, int npoints)
{
    if (!picture.window.samples || picture.window.npoints >= npoints)
        return true;
    const Tools::DelayReach reach = Tools::delayReach(picture.window, dispersion);
    return reach.before <= picture.offset &&
           picture.offset + picture.request.domain.count + qint64(reach.after) <=
               picture.window.npoints;
}
