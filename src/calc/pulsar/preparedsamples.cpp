#include "calc/pulsar/preparedsamples.h"

#include "calc/leveljumps.h"
#include "calc/pulsar/actions.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/channelsoff.h"
#include "calc/pulsar/computedon.h"
#include "calc/pulsar/pulsaranalyses.h"

#include <algorithm>
#include <optional>

namespace {

FieldProblem emptyChannels(const std::vector<int> &empty, const PulsarNeeds &needs,
                           bool isOnChannel)
{
    const QString text = Tools::noFiniteText(empty) +
                         QString(" between the points %1 and %2.\nChoose another stretch, %3")
                             .arg(needs.begin())
                             .arg(needs.end() - 1)
                             .arg(isOnChannel ? "channel, ray or module."
                                              : "ray or module, or leave the channels out.");
    return {isOnChannel ? "channel" : "", text};
}

// Takes the jumps of the levels out of a working copy. A jump of a band shows, in a sum, by the
// band's delay at `markDispersion` earlier.
void deleteJumps(const PulsarNeeds &needs, const Tools::FiniteSamples &finite,
                 double markDispersion, const Jobs::Control &control, PreparedSamples &prepared)
{
    std::vector<bool> own(std::size_t(prepared.data.channels), false);
    for (const SampleRange &range : needs.ranges)
        own[std::size_t(range.channel)] = true;
    const auto copy = finite.samples.withOwnRows(needs.module - 1, needs.ray - 1, own);
    if (!copy) {
        prepared.remark = "There is no memory to delete steps; the data are as recorded.";
        return;
    }
    std::optional<Tools::BandDelays> delays;
    if (markDispersion > 0)
        delays = Pulsar::bandDelays(prepared.data, markDispersion);
    int done = 0;
    for (const SampleRange &range : needs.ranges) {
        const int count = range.end - range.begin;
        const float *const levels =
            finite.samples[needs.module - 1][range.channel][needs.ray - 1] + range.begin;
        float *const corrected =
            copy->ray(needs.module - 1, range.channel, needs.ray - 1) + range.begin;
        std::copy_n(levels, count, corrected);
        const int percent = 100 * done++ / int(needs.ranges.size());
        const std::vector<Tools::LevelJump> jumps = Tools::findLevelJumps(
            corrected, count, [&] { return Pulsar::goesOn(control, percent); });
        Tools::removeLevelJumps(corrected, count, jumps);
        if (!jumps.empty())
            Tools::replaceAgain(corrected, range, finite.replaced);
        const int shift = delays ? delays->shift(range.channel) : 0;
        for (const Tools::LevelJump &jump : jumps)
            prepared.jumpPoints.push_back(range.begin + jump.point - shift);
        prepared.jumps += int(jumps.size());
        if (!Pulsar::goesOn(control, percent))
            return;
    }
    std::vector<int> &points = prepared.jumpPoints;
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    prepared.data.samples = Samples(copy);
}

} // namespace

PreparedSamples prepareSamples(const QString &action, const ObservationData &data,
                               const PulsarParameters &parameters, const Jobs::Control &control)
{
    PreparedSamples prepared;
    prepared.data = data;
    prepared.recorded = data.samples;
    prepared.points = findAnalysis(action)->points(data, parameters);
    const PulsarNeeds needs = findNeeds(action, data, parameters);
    const bool isOnChannel = worksOnChannel(action);
    if (!isOnChannel && !parameters.channelsOff.isEmpty()) {
        const std::optional<std::vector<bool>> off =
            channelsOff(parameters.channelsOff, data.channels);
        prepared.data.samples = data.samples.withChannelsOff(off.value_or(std::vector<bool>()));
        if (!prepared.data.samples) {
            prepared.problems = {{"", "There is no memory to leave out channels."}};
            return prepared;
        }
    }
    const Tools::FiniteSamples finite =
        Tools::finiteSamples(prepared.data, needs.module - 1, needs.ray - 1, needs.ranges);
    if (!finite.samples)
        prepared.problems = {{"", "There is not enough memory. Close other programs."}};
    else if (!finite.empty.empty())
        prepared.problems = {emptyChannels(finite.empty, needs, isOnChannel)};
    if (!prepared.problems.empty())
        return prepared;
    if (!finite.replaced.empty()) {
        prepared.data.samples = finite.samples;
        prepared.nonFinite =
            Tools::nonFiniteText(finite.replaced) +
            (action == "showNative" ? " They are not drawn; the base line takes the median of the "
                                      "channel for them."
                                    : " They count as the median of their channel.");
    }
    if (parameters.deleteStep)
        deleteJumps(needs, finite, isOnChannel ? 0 : parameters.dispersion, control, prepared);
    return prepared;
}
