#include "picture/blockextremes.h"

#include <algorithm>

namespace Plot {

namespace {

void join(ExtremeKeys &keys, const ExtremeKeys &other)
{
    keys.low = std::min(keys.low, other.low);
    keys.high = std::max(keys.high, other.high);
}

std::vector<BlockExtremes> blocksOfSet(const std::vector<std::vector<float>> &curves)
{
    std::vector<BlockExtremes> blocks;
    blocks.reserve(curves.size());
    for (const std::vector<float> &curve : curves)
        blocks.emplace_back(curve);
    return blocks;
}

} // namespace

BlockExtremes::BlockExtremes(const std::vector<float> &curve)
{
    const std::size_t blocks = curve.size() / blockSize;
    lows.reserve(blocks);
    highs.reserve(blocks);
    for (std::size_t block = 0; block < blocks; ++block) {
        const ExtremeKeys keys = extremeKeys(&curve[block * blockSize], blockSize);
        lows.push_back(keys.low);
        highs.push_back(keys.high);
    }
}

Extremes BlockExtremes::operator[](std::size_t block) const
{
    return extremesOf({lows[block], highs[block]});
}

bool BlockExtremes::isAllNan(std::size_t block) const
{
    const float infinity = std::numeric_limits<float>::infinity();
    return lows[block] > orderedKey(infinity) || highs[block] < orderedKey(-infinity);
}

Extremes BlockExtremes::between(const std::vector<float> &curve, std::size_t begin,
                                std::size_t end) const
{
    const std::size_t firstBlock = (begin + blockSize - 1) / blockSize;
    const std::size_t endBlock = std::min(end / blockSize, count());
    if (firstBlock >= endBlock)
        return extremes(&curve[begin], end - begin);
    ExtremeKeys keys = extremeKeys(&curve[begin], firstBlock * blockSize - begin);
    join(keys, extremeKeys(curve.data() + endBlock * blockSize, end - endBlock * blockSize));
    for (std::size_t block = firstBlock; block < endBlock; ++block)
        join(keys, {lows[block], highs[block]});
    return extremesOf(keys);
}

CurveBlocks blocksOf(const PlotData &data)
{
    return {blocksOfSet(data.graphs), blocksOfSet(data.multiGraphs)};
}

} // namespace Plot
