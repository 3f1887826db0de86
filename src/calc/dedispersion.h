#pragma once

#include "data/observationdata.h"

#include <functional>
#include <memory>
#include <vector>

/// Sums of the bands of one ray at many dispersions, in float.
namespace Tools {

/// The samples of some bands, to be written by the caller, each in a row with zeros before and
/// behind it.
class BandRows {
public:
    BandRows() = default;
    /// @param before, after  zeros around each row
    BandRows(int bands, int count, int before, int after);

    int bands() const { return rows; }
    int count() const { return samples; }
    /// The first sample of a band; `before` zeros stand in front of it.
    float *row(int band) { return values.get() + offset(band); }
    const float *row(int band) const { return values.get() + offset(band); }

private:
    std::size_t offset(int band) const { return std::size_t(band) * stride + std::size_t(margin); }

    std::unique_ptr<float[]> values;
    std::size_t stride = 0;
    int rows = 0;
    int samples = 0;
    int margin = 0;
};

/// The shifts of the bands at all dispersions of a search, and how their sums are made: pairs of
/// bands, then pairs of these, then all, always the same. Neighbouring dispersions often shift
/// the bands of a small part of the receiver's range by the same pattern; such a part is added
/// once for all of them.
class DispersionTree {
public:
    static constexpr int blockPoints = 1024; ///< so that a block stays in the second-level cache

    /// @param header       fbands, tresolution
    /// @param dispersions  ascending, pc/cm^3; every delay fits BandDelays::isShift()
    DispersionTree(const ObservationData &header, int bands,
                   const std::vector<double> &dispersions);

    int trials() const { return trialCount; }
    int earliest() const { return before; } ///< samples before a point that its sums take in
    int latest() const { return after; }    ///< samples behind it
    /// Samples by which a band is read later at a trial: those of Tools::sumChannels().
    int shift(int trial, int band) const
    {
        return shifts[std::size_t(trial) * std::size_t(bandCount) + std::size_t(band)];
    }

    /// The sums of the points from `first` on at all trials, in their order.
    ///
    /// @param rows   with earliest() zeros or more before each band, and latest() behind the last
    ///               point that is asked for
    /// @param count  1 to blockPoints
    /// @param take   gets `count` sums
    void sumBlock(const BandRows &rows, int first, int count,
                  const std::function<void(int trial, const float *sums)> &take);

    qint64 bytes() const; ///< of the memory it holds

private:
    // A way in which some trials shift the bands of a node against each other.
    struct Pattern {
        int firstTrial = 0;
        int lastTrial = 0;
        int leastShift = 0; // of the reference among them
        int mostShift = 0;
        std::size_t place = 0; // in the pool, of the sums from the least shift on
        bool isMade = false;   // in this block
    };
    // Some neighbouring bands; the last one is their reference.
    struct Node {
        int begin = 0;
        int end = 0;
        std::vector<int> parts; // nodes; empty: one band
        std::vector<Pattern> patterns;
        std::vector<int> patternOf; // index, one per trial

        int reference() const { return end - 1; }
    };

    int addNode(int begin, int end, int parts);
    void findShifts(const ObservationData &header, const std::vector<double> &dispersions);
    std::vector<int> findSegments() const;
    void findPatterns(Node &node, const std::vector<int> &segments) const;
    void findPlaces();
    const float *sumsOf(int index, const BandRows &rows, int first, int count, int trial,
                        int place);
    void make(const Node &node, const Pattern &pattern, const BandRows &rows, int first, int count,
              int trial);
    float *sumsAt(const Pattern &pattern);

    std::vector<Node> nodes;
    std::vector<float> pool;
    std::vector<int> shifts; // [trial][band]
    int bandCount = 0;
    int trialCount = 0;
    int before = 0;
    int after = 0;
    int root = 0;
};

} // namespace Tools
