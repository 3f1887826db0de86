#include "ffa/foldsearch.h"

#include "base/targetclones.h"
#include "ffa/boxcar.h"
#include "ffa/foldkernels.h"
#include "ffa/foldtransform.h"

#include <algorithm>
#include <cmath>

namespace Ffa {

using Kernels::MergeEntry;
using Kernels::WidthConstants;

/// What a tile is computed from and into.
struct TileTask {
    const MergeEntry *entries; ///< of the last merge, from the tile's first row
    const float *head;
    const float *tail;
    qint32 bins;
    const WidthConstants *widths;
    qint64 nwidths;
    qint64 widest;
    float stdnoise;
    float *rowMajor; ///< room for one row per lane
    float *tile;     ///< room for bins + max(widest, 3) vectors
    float *rises;    ///< room for nwidths vectors
};

/// The kernels for one vector width.
struct KernelSet {
    int lanes;
    void (*fillMergeTable)(int rows, int bins, MergeEntry *entries);
    void (*mergeRows)(const MergeEntry *entries, int count, const float *head, const float *tail,
                      int bins, float *out);
    void (*leafRows)(const float *series, int rows, int bins, float *out);
    void (*tileRows)(const TileTask &task, int rows, float *snr);
};

namespace {

// Leaves of the transform have this many rows at the most; fewer than two never occur below
// a block of more than `leafRows` rows.
constexpr int leafRows = 4;

template <int L>
ZRT_INLINE void leafOfRows(const float *series, int rows, int bins, float *out)
{
    if (rows == 4)
        Kernels::leafRows<L, 4>(series, bins, out);
    else if (rows == 3)
        Kernels::leafRows<L, 3>(series, bins, out);
    else
        Kernels::leafRows<L, 2>(series, bins, out);
}

template <int L>
ZRT_INLINE void tileOfRows(const TileTask &task, int rows, float *snr)
{
    Kernels::mergeRows<L>(task.entries, rows, task.head, task.tail, task.bins, task.rowMajor);
    Kernels::transposeRows<L>(task.rowMajor, task.bins, task.tile);
    Kernels::prefixSums<L>(task.tile, task.bins, task.widest);
    Kernels::tileSnr<L>(task.tile, task.bins, task.widths, task.nwidths, task.stdnoise, task.rises,
                        rows, snr);
}

ZRT_TARGET_CLONES
void fillMergeTable8(int rows, int bins, MergeEntry *entries)
{
    Kernels::fillMergeTable<8>(rows, bins, entries);
}

ZRT_TARGET_CLONES
void fillMergeTable16(int rows, int bins, MergeEntry *entries)
{
    Kernels::fillMergeTable<16>(rows, bins, entries);
}

ZRT_TARGET_CLONES
void mergeRows8(const MergeEntry *entries, int count, const float *head, const float *tail,
                int bins, float *out)
{
    Kernels::mergeRows<8>(entries, count, head, tail, bins, out);
}

ZRT_TARGET_CLONES
void mergeRows16(const MergeEntry *entries, int count, const float *head, const float *tail,
                 int bins, float *out)
{
    Kernels::mergeRows<16>(entries, count, head, tail, bins, out);
}

ZRT_TARGET_CLONES
void leafRows8(const float *series, int rows, int bins, float *out)
{
    leafOfRows<8>(series, rows, bins, out);
}

ZRT_TARGET_CLONES
void leafRows16(const float *series, int rows, int bins, float *out)
{
    leafOfRows<16>(series, rows, bins, out);
}

ZRT_TARGET_CLONES
void tileRows8(const TileTask &task, int rows, float *snr)
{
    tileOfRows<8>(task, rows, snr);
}

ZRT_TARGET_CLONES
void tileRows16(const TileTask &task, int rows, float *snr)
{
    tileOfRows<16>(task, rows, snr);
}

constexpr KernelSet kernels8 = {8, fillMergeTable8, mergeRows8, leafRows8, tileRows8};
constexpr KernelSet kernels16 = {16, fillMergeTable16, mergeRows16, leafRows16, tileRows16};

const KernelSet *choose(Lanes lanes)
{
#if defined(__x86_64__)
    if (lanes == Lanes::Automatic && __builtin_cpu_supports("avx512f"))
        return &kernels16;
#endif
    return lanes == Lanes::Sixteen ? &kernels16 : &kernels8;
}

// Sizes in doubles, because those of a nonsensical search pass any integer.
struct Sizes {
    double block;  ///< floats of a block
    double tile;   ///< floats of the tile and what is kept beside it
    double tables; ///< entries
};

Sizes sizesFor(const FoldLimits &limits, const quint64 *widths, quint64 nwidths)
{
    constexpr double mostLanes = 16;
    const double samples = double(limits.samples);
    const double binsMax = limits.binsMax;
    const double widest = std::max(3.0, double(widestOf(widths, nwidths)));
    Sizes sizes;
    // Rows of `bins` floats take less than bins + 2 x lanes; short rows take the plain road.
    const double shortest = std::max(limits.binsMin, Kernels::fewestBins(8));
    sizes.block = samples + 2 * mostLanes * std::ceil(samples / shortest);
    sizes.tile = mostLanes * (binsMax + 2 * mostLanes) + mostLanes * (binsMax + widest) +
                 mostLanes * double(nwidths);
    // One table of all rows, then two of every half, quarter and so on.
    sizes.tables = 3 * samples / shortest + 64;
    return sizes;
}

} // namespace

AlignedFloats::AlignedFloats(quint64 count)
{
    constexpr quint64 floatsPerLine = 16;
    storage.resize(count + floatsPerLine - 1);
    const auto address = reinterpret_cast<quintptr>(storage.data());
    first =
        storage.data() + (floatsPerLine - address / sizeof(float) % floatsPerLine) % floatsPerLine;
}

FoldSearch::FoldSearch(const FoldLimits &limits, const quint64 *widthsIn, quint64 nwidths,
                       Lanes lanes)
    : widths(widthsIn, widthsIn + nwidths), preferred(choose(lanes)),
      block(quint64(sizesFor(limits, widthsIn, nwidths).block)),
      otherBlock(quint64(sizesFor(limits, widthsIn, nwidths).block)),
      tile(quint64(sizesFor(limits, widthsIn, nwidths).tile)), constants(nwidths),
      entries(quint64(sizesFor(limits, widthsIn, nwidths).tables))
{}

FoldSearch::~FoldSearch() = default;

double FoldSearch::bytesNeeded(const FoldLimits &limits, const quint64 *widths, quint64 nwidths)
{
    const Sizes sizes = sizesFor(limits, widths, nwidths);
    return (2 * sizes.block + sizes.tile) * sizeof(float) + sizes.tables * sizeof(MergeEntry) +
           double(nwidths) * (sizeof(WidthConstants) + sizeof(quint64));
}

void FoldSearch::run(const float *series, const PlanFold &fold, float stdnoise, float *snr)
{
    kernels = preferred;
    if (fold.bins < Kernels::fewestBins(kernels->lanes))
        kernels = &kernels8;
    constexpr quint64 mostRows = 1 << 30;
    if (fold.bins < Kernels::fewestBins(kernels->lanes) || fold.rows <= leafRows ||
        fold.rows > mostRows) {
        runPlain(series, fold, stdnoise, snr);
        return;
    }
    const int rows = int(fold.rows);
    const int headRows = rows / 2;
    prepare(rows, fold.bins);
    // The last merge is not made here but in the tiles, and only for the rows wanted.
    const qint64 tailBegin = headRows * stride;
    transform(1, headRows, series, block.data(), otherBlock.data());
    transform(1, rows - headRows, series + qint64(headRows) * bins, block.data() + tailBegin,
              otherBlock.data() + tailBegin);

    TileTask task;
    task.entries = depths[0].tables[0];
    task.head = block.data();
    task.tail = block.data() + tailBegin;
    task.bins = bins;
    task.widths = constants.data();
    task.nwidths = qint64(widths.size());
    task.widest = qint64(widestOf(widths.data(), widths.size()));
    task.stdnoise = stdnoise;
    task.rowMajor = tile.data();
    task.tile = task.rowMajor + kernels->lanes * stride;
    task.rises = task.tile + (bins + std::max(task.widest, qint64(3))) * kernels->lanes;
    const int evaluated = int(fold.evaluated);
    for (int row = 0; row < evaluated; row += kernels->lanes) {
        kernels->tileRows(task, std::min(kernels->lanes, evaluated - row), snr);
        task.entries += kernels->lanes;
        snr += kernels->lanes * task.nwidths;
    }
}

// Short rows do not repeat enough bins for the kernels, and few rows leave nothing to gain.
void FoldSearch::runPlain(const float *series, const PlanFold &fold, float stdnoise, float *snr)
{
    const quint64 columns = quint64(fold.bins);
    foldTransform({series, fold.rows, columns}, {otherBlock.data(), fold.rows, columns},
                  {block.data(), fold.rows, columns});
    boxcarSnr(ConstBlock{block.data(), fold.evaluated, columns}, widths.data(), widths.size(),
              stdnoise, tile.data(), snr);
}

// Sets up what depends on the fold's shape only: all sub-blocks share the merge tables, all
// rows the constants of the widths.
void FoldSearch::prepare(int rows, qint32 foldBins)
{
    bins = foldBins;
    stride = Kernels::vectorsPerRow(bins, kernels->lanes) * kernels->lanes;
    for (std::size_t j = 0; j < widths.size(); ++j) {
        const BoxcarShape shape = boxcarShape(quint32(bins), widths[j]);
        constants[j] = {shape.heightAndBase, shape.base, qint64(widths[j])};
    }
    MergeEntry *next = entries.data();
    for (int depth = 0; rows >> depth >= leafRows; ++depth) {
        Depth &at = depths[std::size_t(depth)];
        at.fewestRows = rows >> depth;
        const int sizes = depth == 0 ? 1 : 2;
        for (int size = 0; size < sizes; ++size) {
            kernels->fillMergeTable(at.fewestRows + size, bins, next);
            at.tables[std::size_t(size)] = next;
            next += at.fewestRows + size;
        }
    }
}

// Depth first, so that small sub-blocks are merged while they are in the nearest cache.
void FoldSearch::transform(int depth, int rows, const float *series, float *out, float *other) const
{
    if (rows <= leafRows) {
        kernels->leafRows(series, rows, bins, out);
        return;
    }
    const int headRows = rows / 2;
    const qint64 tailBegin = headRows * stride;
    transform(depth + 1, headRows, series, other, out);
    transform(depth + 1, rows - headRows, series + qint64(headRows) * bins, other + tailBegin,
              out + tailBegin);
    const Depth &at = depths[std::size_t(depth)];
    kernels->mergeRows(at.tables[std::size_t(rows - at.fewestRows)], rows, other, other + tailBegin,
                       bins, out);
}

} // namespace Ffa
