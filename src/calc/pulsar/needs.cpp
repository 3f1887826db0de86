#include "calc/pulsar/needs.h"

#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/scan.h"

#include <algorithm>

namespace {

// Samples beside a stretch that its levels are judged by.
constexpr int levelMargin = 1024;

// A sum is made at one dispersion, or at many between two.
struct DispersionSpan {
    double least = 0; // pc/cm^3
    double largest = 0;
};

std::vector<DispersionSpan> spansOf(const PulsarAnalysis &analysis, const PulsarParameters &given)
{
    std::vector<DispersionSpan> spans;
    if (analysis.reads(pulsarField("--compare"))) {
        for (const double dispersion : given.dispersions)
            spans.push_back({dispersion, dispersion});
        return spans;
    }
    if (isScan(analysis.name)) {
        const std::vector<double> trials = Pulsar::trialDispersions(given);
        return {{trials.front(), trials.back()}};
    }
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

std::vector<SampleRange> rangesOfSums(const PulsarAnalysis &analysis, const ObservationData &header,
                                      const PulsarParameters &given)
{
    const int count = analysis.points(header, given);
    const std::vector<int> starts = analysis.reads(pulsarField("--each-start"))
                                        ? Pulsar::scanStarts(header, given)
                                        : std::vector{given.firstPoint};
    std::vector<SampleRange> ranges;
    for (const DispersionSpan &span : spansOf(analysis, given)) {
        const Tools::BandDelays least = Pulsar::bandDelays(header, span.least);
        const Tools::BandDelays largest = Pulsar::bandDelays(header, span.largest);
        for (const int start : starts) {
            addSum(header.npoints, start, count, least, largest, ranges);
            if (given.noise == "backSum")
                addSum(header.npoints, start, count, least.reversed(), largest.reversed(), ranges);
        }
    }
    return joined(ranges);
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

PulsarNeeds findNeeds(const QString &action, const ObservationData &recording,
                      const PulsarParameters &parameters)
{
    const PulsarAnalysis &analysis = *findAnalysis(action);
    const ObservationData header = Pulsar::wholePointsOf(recording);
    PulsarNeeds needs = {parameters.module, parameters.ray, {}};
    if (analysis.onChannel) {
        const int first = parameters.firstPoint;
        const int end = first + analysis.points(header, parameters);
        needs.ranges = {{parameters.channel - 1, first, end}};
    } else {
        needs.ranges = rangesOfSums(analysis, header, parameters);
    }
    if (parameters.deleteStep)
        needs.ranges = withLevelMargins(needs.ranges, header.npoints);
    return needs;
}

qint64 findBytes(const QString &action, const ObservationData &header,
                 const PulsarParameters &parameters)
{
    qint64 samples = 0;
    for (const SampleRange &range : findNeeds(action, header, parameters).ranges)
        samples += range.end - range.begin;
    const int copies = parameters.deleteStep ? 2 : 1;
    return copies * samples * qint64(sizeof(float)) +
           findAnalysis(action)->bytes(Pulsar::wholePointsOf(header), parameters);
}
