#include "calc/finitesamples.h"

#include "base/targetclones.h"
#include "calc/robuststatistics.h"

#include <QStringList>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace Tools {

namespace {

// All bits of the exponent are set in what is no finite number, and in nothing else.
constexpr std::uint32_t exponentBits = 0x7f800000;
constexpr qint64 blockSamples = 1024;
constexpr int mostSpans = 4;
constexpr int mostGroups = 6;

// The largest exponent of a block tells whether all are finite, without a branch in the loop.
ZRT_TARGET_CLONES
std::uint32_t largestExponent(const float *samples, qint64 count)
{
    std::uint32_t largest = 0;
    for (qint64 i = 0; i < count; ++i) {
        const std::uint32_t exponent = std::bit_cast<std::uint32_t>(samples[i]) & exponentBits;
        largest = std::max(largest, exponent);
    }
    return largest;
}

// Adds the spans of one range.
void addSpans(const float *samples, const SampleRange &range, NonFiniteSamples &found)
{
    for (qint64 first = range.begin; first < range.end; first += blockSamples) {
        const qint64 end = std::min<qint64>(first + blockSamples, range.end);
        if (areFinite(samples + first, end - first))
            continue;
        for (int point = int(first); point < end; ++point) {
            if (std::isfinite(samples[point]))
                continue;
            ++found.count;
            if (!found.spans.empty() && found.spans.back().end == point)
                ++found.spans.back().end;
            else
                found.spans.push_back({point, point + 1});
        }
    }
}

using RangeIterator = std::vector<SampleRange>::const_iterator;

// Writes a channel's row: its samples, and their median where there is no finite one. False
// where there is none at all.
bool writeRow(const float *recorded, RangeIterator begin, RangeIterator end,
              const NonFiniteSamples &missing, float *row)
{
    std::vector<float> values;
    for (auto range = begin; range != end; ++range) {
        std::copy(recorded + range->begin, recorded + range->end, row + range->begin);
        values.insert(values.end(), recorded + range->begin, recorded + range->end);
    }
    if (qint64(values.size()) == missing.count)
        return false;
    std::vector<float> scratch;
    const float median = float(robustLevel(values.data(), int(values.size()), scratch).median);
    for (const PointSpan &span : missing.spans)
        std::fill(row + span.begin, row + span.end, median);
    return true;
}

QString spansText(const std::vector<PointSpan> &spans, qint64 firstPoint)
{
    QStringList texts;
    for (std::size_t i = 0; i < spans.size() && texts.size() < mostSpans; ++i) {
        const qint64 first = firstPoint + spans[i].begin;
        const qint64 last = firstPoint + spans[i].end - 1;
        texts << (first == last ? QString::number(first)
                                : QString("%1 to %2").arg(first).arg(last));
    }
    const bool isOne = spans.size() == 1 && spans[0].end - spans[0].begin == 1;
    QString text = (isOne ? "point " : "points ") + texts.join(", ");
    if (spans.size() > mostSpans)
        text += QString(" and others up to %1").arg(firstPoint + spans.back().end - 1);
    return text;
}

bool haveSamePoints(const NonFiniteSamples &a, const NonFiniteSamples &b)
{
    return std::equal(a.spans.begin(), a.spans.end(), b.spans.begin(), b.spans.end(),
                      [](const PointSpan &s, const PointSpan &t) {
                          return s.begin == t.begin && s.end == t.end;
                      });
}

} // namespace

bool areFinite(const float *samples, qint64 count)
{
    return largestExponent(samples, count) != exponentBits;
}

FiniteSamples finiteSamples(const ObservationData &data, int module, int ray,
                            const std::vector<SampleRange> &ranges)
{
    FiniteSamples result;
    result.samples = data.samples;
    std::vector<bool> own(std::size_t(data.channels), false);
    for (const SampleRange &range : ranges) {
        const float *const samples = data.samples[module][range.channel][ray];
        if (areFinite(samples + range.begin, qint64(range.end) - range.begin))
            continue;
        if (result.replaced.empty() || result.replaced.back().channel != range.channel)
            result.replaced.push_back({range.channel, 0, {}});
        addSpans(samples, range, result.replaced.back());
        own[std::size_t(range.channel)] = true;
    }
    if (result.replaced.empty())
        return result;

    const auto block = data.samples.withOwnRows(module, ray, own);
    result.samples = Samples(block);
    if (!block)
        return result;
    for (const NonFiniteSamples &missing : result.replaced) {
        const auto isHere = [&missing](const SampleRange &range) {
            return range.channel == missing.channel;
        };
        const auto begin = std::find_if(ranges.begin(), ranges.end(), isHere);
        const auto end = std::find_if_not(begin, ranges.end(), isHere);
        if (!writeRow(data.samples[module][missing.channel][ray], begin, end, missing,
                      block->ray(module, missing.channel, ray)))
            result.empty.push_back(missing.channel);
    }
    return result;
}

std::vector<SampleRange> wholeChannels(const ObservationData &data, int channels)
{
    std::vector<SampleRange> ranges;
    for (int channel = 0; channel < channels; ++channel)
        ranges.push_back({channel, 0, completePoints(data)});
    return ranges;
}

void replaceAgain(float *samples, const SampleRange &range,
                  const std::vector<NonFiniteSamples> &replaced)
{
    const auto ofChannel =
        std::find_if(replaced.begin(), replaced.end(), [&range](const NonFiniteSamples &missing) {
            return missing.channel == range.channel;
        });
    if (ofChannel == replaced.end())
        return;
    const auto fill = [&](float value) {
        for (const PointSpan &span : ofChannel->spans)
            std::fill(samples + (std::max(span.begin, range.begin) - range.begin),
                      samples +
                          (std::max(std::min(span.end, range.end), range.begin) - range.begin),
                      value);
    };
    fill(NAN);
    std::vector<float> scratch;
    fill(float(robustLevel(samples, range.end - range.begin, scratch).median));
}

Samples withGaps(const Samples &samples, int npoints, const std::vector<NonFiniteSamples> &replaced)
{
    if (replaced.empty())
        return samples;
    std::vector<bool> own(std::size_t(replaced.back().channel) + 1, false);
    for (const NonFiniteSamples &missing : replaced)
        own[std::size_t(missing.channel)] = true;
    const auto block = samples.withOwnRows(0, 0, own);
    if (!block)
        return {};
    for (const NonFiniteSamples &missing : replaced) {
        float *const row = block->ray(0, missing.channel, 0);
        std::copy_n(samples[0][missing.channel][0], npoints, row);
        for (const PointSpan &span : missing.spans)
            std::fill(row + span.begin, row + span.end, NAN);
    }
    return Samples(block);
}

QString nonFiniteText(const std::vector<NonFiniteSamples> &samples, qint64 firstPoint)
{
    if (samples.empty())
        return {};
    qint64 count = 0;
    std::vector<bool> isNamed(samples.size(), false);
    QStringList groups;
    int unnamed = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        count += samples[i].count;
        if (isNamed[i])
            continue;
        std::vector<int> channels;
        for (std::size_t other = i; other < samples.size(); ++other) {
            if (isNamed[other] || !haveSamePoints(samples[i], samples[other]))
                continue;
            isNamed[other] = true;
            channels.push_back(samples[other].channel);
        }
        if (groups.size() < mostGroups)
            groups << channelsText(channels) + " at " + spansText(samples[i].spans, firstPoint);
        else
            unnamed += int(channels.size());
    }
    QString text = (count == 1 ? QString("1 sample is no finite number: ")
                               : QString("%1 samples are no finite numbers: ").arg(count)) +
                   groups.join("; ");
    if (unnamed > 0)
        text += unnamed == 1 ? QString("; and 1 more channel")
                             : QString("; and %1 more channels").arg(unnamed);
    return text + ".";
}

QString noFiniteText(const std::vector<int> &channels)
{
    const QString named = channelsText(channels).replace(0, 1, 'C');
    return named + (channels.size() == 1 ? " holds" : " hold") + " no finite number";
}

QString channelsText(const std::vector<int> &channels)
{
    QStringList texts;
    for (std::size_t i = 0; i < channels.size();) {
        std::size_t end = i + 1;
        while (end < channels.size() && channels[end] == channels[end - 1] + 1)
            ++end;
        const int first = channels[i] + 1;
        const int last = channels[end - 1] + 1;
        texts << (end - i < 2   ? QString::number(first)
                  : end - i < 3 ? QString("%1, %2").arg(first).arg(last)
                                : QString("%1 to %2").arg(first).arg(last));
        i = end;
    }
    return (channels.size() == 1 ? "channel " : "channels ") + texts.join(", ");
}

} // namespace Tools
