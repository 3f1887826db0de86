#include "calc/dedispersion.h"

#include "base/targetclones.h"
#include "calc/banddelays.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>

namespace Tools {

namespace {

// Sums of a part serve all dispersions that shift its bands alike, wherever they shift the part as
// a whole; so much longer than a block they may become.
constexpr int longestReach = 256;
// Sums of four bands serve several dispersions; those of eight hardly ever do, so that adding
// eight parts for every dispersion costs less than keeping sums of two of them.
constexpr int mostParts = 8;

// Adds the parts in pairs of pairs.
template <int partCount>
[[gnu::always_inline]] inline void addFixed(const float *const *parts, float *out, int count)
{
    std::array<const float *, partCount> p;
    std::copy_n(parts, partCount, p.begin());
    for (int i = 0; i < count; ++i) {
        float sum = p[0][i] + p[1][i];
        if constexpr (partCount == 3)
            sum += p[2][i];
        if constexpr (partCount >= 4)
            sum += p[2][i] + p[3][i];
        if constexpr (partCount == mostParts)
            sum += (p[4][i] + p[5][i]) + (p[6][i] + p[7][i]);
        out[i] = sum;
    }
}

ZRT_TARGET_CLONES
void addParts(const float *const *parts, int partCount, float *__restrict out, int count)
{
    switch (partCount) {
    case 2:
        return addFixed<2>(parts, out, count);
    case 3:
        return addFixed<3>(parts, out, count);
    case 4:
        return addFixed<4>(parts, out, count);
    default:
        return addFixed<mostParts>(parts, out, count);
    }
}

// Sums begin at a cache line, for stores across two lines are slow, and not all of them at the same
// place of a page.
constexpr std::size_t lineFloats = 16;

std::size_t alignedLength(int count)
{
    return (std::size_t(count) / lineFloats + 2) * lineFloats;
}

// Into how many parts the bands of the whole are divided.
int partsOfRoot(int bands)
{
    return bands >= 2 * mostParts ? mostParts : std::min(bands, mostParts / 2);
}

} // namespace

BandRows::BandRows(int bands, int count, int before, int after)
    : stride(std::size_t(before) + std::size_t(count) + std::size_t(after)), rows(bands),
      samples(count), margin(before)
{
    values = std::make_unique_for_overwrite<float[]>(stride * std::size_t(bands));
    for (int band = 0; band < bands; ++band) {
        std::fill_n(row(band) - before, before, 0.0F);
        std::fill_n(row(band) + count, after, 0.0F);
    }
}

DispersionTree::DispersionTree(const ObservationData &header, int bands,
                               const std::vector<double> &dispersions)
    : bandCount(bands), trialCount(int(dispersions.size()))
{
    findShifts(header, dispersions);
    root = addNode(0, bands, partsOfRoot(bands));
    const std::vector<int> segments = findSegments();
    for (Node &node : nodes)
        findPatterns(node, segments);
    findPlaces();
}

void DispersionTree::findShifts(const ObservationData &header,
                                const std::vector<double> &dispersions)
{
    shifts.reserve(dispersions.size() * std::size_t(bandCount));
    for (const double dispersion : dispersions) {
        const BandDelays delays(header, bandCount, dispersion, ShiftRounding::WholeRecording);
        for (int band = 0; band < bandCount; ++band) {
            const int by = delays.shift(band);
            shifts.push_back(by);
            before = std::max(before, -by);
            after = std::max(after, by);
        }
    }
}

int DispersionTree::addNode(int begin, int end, int parts)
{
    Node node;
    node.begin = begin;
    node.end = end;
    const int length = end - begin;
    for (int part = 0; part < parts && length > 1; ++part) {
        const int from = begin + length * part / parts;
        const int to = begin + length * (part + 1) / parts;
        node.parts.push_back(addNode(from, to, std::min(2, to - from)));
    }
    nodes.push_back(std::move(node));
    return int(nodes.size()) - 1;
}

// Stretches of trials, numbered, within which no band moves far. Patterns end with them, those of
// all nodes alike, so that a part holds what is asked of it.
std::vector<int> DispersionTree::findSegments() const
{
    std::vector<int> segments = {0};
    int first = 0;
    for (int trial = 1; trial < trialCount; ++trial) {
        bool isFar = false;
        for (int band = 0; band < bandCount; ++band)
            isFar |= std::abs(shift(trial, band) - shift(first, band)) > longestReach;
        if (isFar)
            first = trial;
        segments.push_back(segments.back() + (isFar ? 1 : 0));
    }
    return segments;
}

void DispersionTree::findPatterns(Node &node, const std::vector<int> &segments) const
{
    if (node.parts.empty())
        return;
    std::map<std::vector<int>, int> known;
    std::vector<int> key;
    for (int trial = 0; trial < trialCount; ++trial) {
        const int by = shift(trial, node.reference());
        key.assign(1, segments[std::size_t(trial)]);
        for (int band = node.begin; band < node.reference(); ++band)
            key.push_back(shift(trial, band) - by);
        const auto [found, isNew] = known.try_emplace(key, int(node.patterns.size()));
        if (isNew)
            node.patterns.push_back({trial, trial, by, by});
        Pattern &pattern = node.patterns[std::size_t(found->second)];
        pattern.lastTrial = trial;
        pattern.leastShift = std::min(pattern.leastShift, by);
        pattern.mostShift = std::max(pattern.mostShift, by);
        node.patternOf.push_back(found->second);
    }
}

// Gives each pattern a place in the pool from its first trial to its last one; then it is free for
// the next ones.
void DispersionTree::findPlaces()
{
    std::vector<Pattern *> all;
    int reach = 0;
    for (Node &node : nodes) {
        for (Pattern &pattern : node.patterns) {
            all.push_back(&pattern);
            reach = std::max(reach, pattern.mostShift - pattern.leastShift);
        }
    }
    std::sort(all.begin(), all.end(),
              [](const Pattern *a, const Pattern *b) { return a->firstTrial < b->firstTrial; });
    const std::size_t length = alignedLength(blockPoints + reach);
    std::vector<int> busyUntil; // trial
    for (Pattern *pattern : all) {
        auto place = std::find_if(busyUntil.begin(), busyUntil.end(),
                                  [&](int until) { return until < pattern->firstTrial; });
        if (place == busyUntil.end())
            place = busyUntil.insert(place, 0);
        *place = pattern->lastTrial;
        pattern->place = std::size_t(place - busyUntil.begin()) * length;
    }
    pool.resize(busyUntil.size() * length + lineFloats);
}

// The sums of a node from the place on at which its reference is read `place` samples later.
const float *DispersionTree::sumsOf(int index, const BandRows &rows, int first, int count,
                                    int trial, int place)
{
    Node &node = nodes[std::size_t(index)];
    if (node.parts.empty())
        return rows.row(node.begin) + first + place;
    Pattern &pattern = node.patterns[std::size_t(node.patternOf[std::size_t(trial)])];
    if (!pattern.isMade) {
        make(node, pattern, rows, first, count, trial);
        pattern.isMade = true;
    }
    return sumsAt(pattern) + (place - pattern.leastShift);
}

float *DispersionTree::sumsAt(const Pattern &pattern)
{
    const std::size_t line = lineFloats * sizeof(float);
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(pool.data()) % line;
    return pool.data() + (line - beyond) / sizeof(float) + pattern.place;
}

void DispersionTree::make(const Node &node, const Pattern &pattern, const BandRows &rows, int first,
                          int count, int trial)
{
    std::array<const float *, std::size_t(mostParts)> parts = {};
    for (std::size_t i = 0; i < node.parts.size(); ++i) {
        const int reference = nodes[std::size_t(node.parts[i])].reference();
        const int later = shift(trial, reference) - shift(trial, node.reference());
        parts[i] = sumsOf(node.parts[i], rows, first, count, trial, pattern.leastShift + later);
    }
    addParts(parts.data(), int(node.parts.size()), sumsAt(pattern),
             count + pattern.mostShift - pattern.leastShift);
}

void DispersionTree::sumBlock(const BandRows &rows, int first, int count,
                              const std::function<void(int trial, const float *sums)> &take)
{
    for (Node &node : nodes)
        for (Pattern &pattern : node.patterns)
            pattern.isMade = false;
    const int reference = nodes[std::size_t(root)].reference();
    for (int trial = 0; trial < trialCount; ++trial)
        take(trial, sumsOf(root, rows, first, count, trial, shift(trial, reference)));
}

qint64 DispersionTree::bytes() const
{
    qint64 total = qint64(shifts.size() * sizeof(int) + pool.size() * sizeof(float));
    for (const Node &node : nodes)
        total +=
            qint64(node.patterns.size() * sizeof(Pattern) + node.patternOf.size() * sizeof(int));
    return total;
}

} // namespace Tools
