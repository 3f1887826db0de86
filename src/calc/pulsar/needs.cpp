#include "calc/pulsar/pulsarcalculate.h"

#include "calc/levelsteps.h"
#include "calc/pulsar/channelsoff.h"
#include "calc/pulsar/computedon.h"
#include "calc/pulsar/pulsaranalyses.h"

#include <algorithm>
#include <optional>

// Before an action computes: which samples it takes in, and what stands in the place of those that
// are no numbers or follow a step of the level.

namespace {

// Samples beside a stretch that its levels are judged by.
constexpr int levelMargin = 1024;

// A sum is made at one dispersion, or at many between two.
struct DispersionSpan {
    double least = 0; // pc/cm^3
    double largest = 0;
};

std::vector<DispersionSpan> spansOf(const QString &action, const PulsarParameters &given,
                                    const std::vector<double> &trials)
{
    std::vector<DispersionSpan> spans;
    if (reads(action, "--compare")) {
        for (const double dispersion : given.dispersions)
            spans.push_back({dispersion, dispersion});
        return spans;
    }
    if (isScan(action))
        return {{trials.front(), trials.back()}};
    return {{given.dispersion, given.dispersion}};
}

// The ranges that sums of `count` points from `start` on take in between two dispersions, band by
// band from the last one down. Bands below the first that ends beyond the recording are not
// reached.
void addSum(int npoints, int start, int count, const Tools::BandDelays &least,
            const Tools::BandDelays &largest, std::vector<SampleRange> &ranges)
{
    for (int band = least.bands() - 1; band >= 0; --band) {
        const auto [early, late] = std::minmax({least.shift(band), largest.shift(band)});
        const qint64 begin = std::max<qint64>(0, qint64(start) + early);
        const qint64 end = std::min<qint64>(npoints, qint64(start) + count + late);
        if (begin < end)
            ranges.push_back({band, int(begin), int(end)});
        if (qint64(start) + count + early > npoints)
            return;
    }
}

// Ascending by channel and begin; what overlaps or touches becomes one.
std::vector<SampleRange> joined(std::vector<SampleRange> ranges)
{
    std::sort(ranges.begin(), ranges.end(), [](const SampleRange &a, const SampleRange &b) {
        return a.channel != b.channel ? a.channel < b.channel : a.begin < b.begin;
    });
    std::vector<SampleRange> result;
    for (const SampleRange &range : ranges) {
        if (!result.empty() && result.back().channel == range.channel &&
            result.back().end >= range.begin)
            result.back().end = std::max(result.back().end, range.end);
        else
            result.push_back(range);
    }
    return result;
}

// One range a channel, with the margins.
std::vector<SampleRange> withLevelMargins(std::vector<SampleRange> ranges, int npoints)
{
    for (SampleRange &range : ranges) {
        range.begin = std::max(0, range.begin - levelMargin);
        range.end = int(std::min<qint64>(npoints, qint64(range.end) + levelMargin));
    }
    std::vector<SampleRange> result;
    for (const SampleRange &range : ranges) {
        if (!result.empty() && result.back().channel == range.channel)
            result.back().end = std::max(result.back().end, range.end);
        else
            result.push_back(range);
    }
    return result;
}

} // namespace

int PulsarNeeds::begin() const
{
    const auto first =
        std::min_element(ranges.begin(), ranges.end(),
                         [](const auto &a, const auto &b) { return a.begin < b.begin; });
    return first == ranges.end() ? 0 : first->begin;
}

int PulsarNeeds::end() const
{
    const auto last = std::max_element(ranges.begin(), ranges.end(),
                                       [](const auto &a, const auto &b) { return a.end < b.end; });
    return last == ranges.end() ? 0 : last->end;
}

PulsarNeeds PulsarCalculate::needs(const QString &action) const
{
    PulsarNeeds needs = {parameters.module, parameters.ray, {}};
    if (worksOnChannel(action)) {
        const int first = parameters.firstPoint;
        needs.ranges = {{parameters.channel - 1, first, first + channelPoints(action)}};
    } else {
        const std::vector<int> starts =
            reads(action, "--each-start") ? scanStarts() : std::vector{parameters.firstPoint};
        for (const DispersionSpan &span : spansOf(action, parameters, trialDispersions())) {
            const Tools::BandDelays least = bandDelays(span.least);
            const Tools::BandDelays largest = bandDelays(span.largest);
            for (const int start : starts) {
                addSum(data.npoints, start, stretch, least, largest, needs.ranges);
                if (parameters.noise == "backSum")
                    addSum(data.npoints, start, stretch, least.reversed(), largest.reversed(),
                           needs.ranges);
            }
        }
        needs.ranges = joined(needs.ranges);
    }
    if (parameters.deleteStep)
        needs.ranges = withLevelMargins(needs.ranges, data.npoints);
    return needs;
}

// Samples of a channel of the selected module and ray, indexed as in the recording.
const float *PulsarCalculate::bandSamples(int channel) const
{
    const Samples &samples = workingCopy ? workingCopy : data.samples;
    return samples[parameters.module - 1][channel][parameters.ray - 1];
}

// Looks through what the action takes in. Where it has samples that are no numbers, or steps are
// to be deleted, the working copy is made.
bool PulsarCalculate::prepareSamples(const QString &action)
{
    const PulsarNeeds needed = needs(action);
    const bool isOnChannel = worksOnChannel(action);
    ObservationData taken = data;
    if (!isOnChannel && !parameters.channelsOff.isEmpty()) {
        workingCopy = data.samples.withChannelsOff(
            channelsOff(parameters.channelsOff, data.channels).value_or(std::vector<bool>()));
        taken.samples = workingCopy;
        if (!workingCopy)
            return refuse("There is no memory to leave out channels.");
    }
    const Tools::FiniteSamples finite =
        Tools::finiteSamples(taken, needed.module - 1, needed.ray - 1, needed.ranges);
    if (!finite.samples)
        return refuse("There is not enough memory. Close other programs.");
    if (!finite.empty.empty())
        return refuse(Tools::noFiniteText(finite.empty) +
                          QString(" between the points %1 and %2.\nChoose another stretch, %3")
                              .arg(needed.begin())
                              .arg(needed.end() - 1)
                              .arg(isOnChannel ? "channel, ray or module."
                                               : "ray or module, or leave the channels out."),
                      isOnChannel ? "channel" : "");
    if (!finite.replaced.empty()) {
        workingCopy = finite.samples;
        outcome.nonFinite =
            Tools::nonFiniteText(finite.replaced) +
            (action == "showNative" ? " They are not drawn; the base line takes the median of the "
                                      "channel for them."
                                    : " They count as the median of their channel.");
        outcome.remarks << outcome.nonFinite;
    }
    return !parameters.deleteStep ||
           deleteSteps(needed, finite, isOnChannel ? 0 : parameters.dispersion);
}

// Takes the jumps of the levels out of a working copy. A step of a band shows, in a sum, by the
// band's delay at `markDispersion` earlier. False when the user wants to stop.
bool PulsarCalculate::deleteSteps(const PulsarNeeds &needed, const Tools::FiniteSamples &finite,
                                  double markDispersion)
{
    std::vector<bool> own(std::size_t(data.channels), false);
    for (const SampleRange &range : needed.ranges)
        own[std::size_t(range.channel)] = true;
    const auto copy = finite.samples.withOwnRows(needed.module - 1, needed.ray - 1, own);
    if (!copy) {
        outcome.remarks << "There is no memory to delete steps; the data are as recorded.";
        return true;
    }
    std::optional<Tools::BandDelays> delays;
    if (markDispersion > 0)
        delays = bandDelays(markDispersion);
    int done = 0;
    for (const SampleRange &range : needed.ranges) {
        const int count = range.end - range.begin;
        const float *const recorded = bandSamples(range.channel) + range.begin;
        float *const corrected =
            copy->ray(needed.module - 1, range.channel, needed.ray - 1) + range.begin;
        std::copy_n(recorded, count, corrected);
        const int percent = 100 * done++ / int(needed.ranges.size());
        const std::vector<Tools::LevelStep> steps =
            Tools::findLevelSteps(corrected, count, [this, percent] { return goOn(percent); });
        Tools::removeLevelSteps(corrected, count, steps);
        if (!steps.empty())
            Tools::replaceAgain(corrected, range, finite.replaced);
        const int shift = delays ? delays->shift(range.channel) : 0;
        for (const Tools::LevelStep &step : steps)
            stepPoints.push_back(range.begin + step.point - shift);
        stepCount += int(steps.size());
        if (!goOn(percent))
            return false;
    }
    workingCopy = Samples(copy);
    return true;
}

// Tells of the steps in the description and marks them where the X values are points.
void PulsarCalculate::markSteps()
{
    if (!parameters.deleteStep)
        return;
    std::sort(stepPoints.begin(), stepPoints.end());
    stepPoints.erase(std::unique(stepPoints.begin(), stepPoints.end()), stepPoints.end());
    outcome.steps = stepCount;
    outcome.description += "\nDeleted steps = " + QString::number(stepCount);
    if (outcome.axis.kind != PulsarAxis::Kind::Points)
        return;
    for (const int point : stepPoints) {
        const int index = int((point - outcome.axis.first) / outcome.axis.step);
        if (point >= outcome.axis.first && index < outcome.points)
            outcome.markers.push_back(index);
    }
}
