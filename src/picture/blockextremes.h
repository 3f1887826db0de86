#pragma once

#include "picture/extremes.h"
#include "picture/plotdata.h"

#include <cstdint>
#include <vector>

namespace Plot {

/// Extremes of the blocks of a curve, so that a long stretch of it is known from few numbers.
/// It belongs to the samples it was made from and is made anew when they change. A default
/// constructed one belongs to no curve and has no blocks.
class BlockExtremes {
public:
    static constexpr std::size_t blockSize = 256;

    BlockExtremes() = default;
    explicit BlockExtremes(const std::vector<float> &curve);

    /// The number of whole blocks; the samples after the last one are in none.
    std::size_t count() const { return lows.size(); }
    /// The extremes of one block.
    Extremes operator[](std::size_t block) const;
    bool isAllNan(std::size_t block) const;

    /// The extremes of the samples `begin` to `end` - 1, at least one, as extremes() gives them.
    Extremes between(const std::vector<float> &curve, std::size_t begin, std::size_t end) const;

private:
    std::vector<std::int32_t> lows; // in the order of the floats, see extremes.cpp
    std::vector<std::int32_t> highs;
};

/// The blocks of every curve of a plot; where there are none the painting reads all samples.
struct CurveBlocks {
    std::vector<BlockExtremes> graphs;
    std::vector<BlockExtremes> multiGraphs;
};

CurveBlocks blocksOf(const PlotData &data);

} // namespace Plot
