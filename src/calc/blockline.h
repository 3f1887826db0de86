#pragma once

#include <cstddef>
#include <vector>

namespace Tools {

/// A series cut into blocks of one length; what is left over belongs to the last one.
struct SeriesBlocks {
    std::ptrdiff_t count;  ///< values of the series
    std::ptrdiff_t length; ///< of a block, 1 to count

    std::ptrdiff_t number() const { return count / length; }
    std::ptrdiff_t endOf(std::ptrdiff_t k) const
    {
        return k + 1 == number() ? count : (k + 1) * length;
    }
    double centreOf(std::ptrdiff_t k) const { return double(k * length + endOf(k) - 1) / 2; }
};

/// The line through values at the centres of blocks, level before the first and behind the last
/// one, asked at rising places of the series.
template <typename Value>
class BlockLine {
public:
    /// @param values  one per block, kept by the caller
    BlockLine(const SeriesBlocks &seriesBlocks, const std::vector<Value> &values)
        : blocks(seriesBlocks), atCentres(values)
    {}

    Value at(std::ptrdiff_t i)
    {
        while (passed + 1 < blocks.number() && blocks.centreOf(passed + 1) <= double(i))
            ++passed;
        Value value = atCentres[std::size_t(passed)];
        const double from = blocks.centreOf(passed);
        if (double(i) > from && passed + 1 < blocks.number()) {
            const double part = (double(i) - from) / (blocks.centreOf(passed + 1) - from);
            value += part * (atCentres[std::size_t(passed) + 1] - value);
        }
        return value;
    }

private:
    SeriesBlocks blocks;
    const std::vector<Value> &atCentres;
    std::ptrdiff_t passed = 0; // the block whose centre was passed last
};

} // namespace Tools
