#include "ffa/foldsearch.h"

#include "base/targetclones.h"
#include "ffa/boxcar.h"
#include "ffa/foldkernels.h"
#include "ffa/foldtransform.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Ffa {

using Kernels::MergeEntry;
using Kernels::WidthConstants;

/// What a tile is computed from and into.
struct TileTask {
    qint32 bins;
    const WidthConstants *widths;
    qint64 nwidths;
    qint64 widest;
    float stdnoise;
    const float *rowMajor; ///< one row per lane
    float *tile;           ///< room for bins + max(widest, 3) vectors
    float *rises;          ///< room for nwidths vectors
};

/// The kernels for one vector width.
struct KernelSet {
    int lanes;
    void (*fillMergeTable)(int rows, int bins, int keptRows, MergeEntry *entries);
    void (*mergeRows)(const MergeEntry *entries, int first, int end, const float *head,
                      const float *tail, int bins, float *out, qint64 outMask);
    void (*leafRows)(const float *series, int rows, int bins, float *out);
    void (*tileRows)(const TileTask &task, int rows, float *snr);
};

namespace {

// Sizes that fit a nearest cache of 32 KiB: a block with its merged copy; the rings of a pass.
// Short rows have longer rings, so that more of them are merged per call.
constexpr qint64 blockBytes = 16 << 10;
constexpr qint64 ringBytes = 24 << 10;
constexpr qint64 shortRowBytes = 512;

// Rows of a leaf of the transform at the most. Halving a block of more never leaves one row.
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
    Kernels::prefixSums<L>(task.rowMajor, task.bins, task.widest, task.tile);
    Kernels::tileSnr<L>(task.tile, task.bins, task.widths, task.nwidths, task.stdnoise, task.rises,
                        rows, snr);
}

ZRT_TARGET_CLONES
void fillMergeTable8(int rows, int bins, int keptRows, MergeEntry *entries)
{
    Kernels::fillMergeTable<8>(rows, bins, keptRows, entries);
}

ZRT_TARGET_CLONES
void fillMergeTable16(int rows, int bins, int keptRows, MergeEntry *entries)
{
    Kernels::fillMergeTable<16>(rows, bins, keptRows, entries);
}

ZRT_TARGET_CLONES
void mergeRows8(const MergeEntry *entries, int first, int end, const float *head, const float *tail,
                int bins, float *out, qint64 outMask)
{
    Kernels::mergeRows<8>(entries, first, end, head, tail, bins, out, outMask);
}

ZRT_TARGET_CLONES
void mergeRows16(const MergeEntry *entries, int first, int end, const float *head,
                 const float *tail, int bins, float *out, qint64 outMask)
{
    Kernels::mergeRows<16>(entries, first, end, head, tail, bins, out, outMask);
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

} // namespace

/// Merges of a few levels that run together: a row is merged as soon as the rows it needs
/// are, which are kept no longer than that. Node 1 is the root, node n has the halves 2n and
/// 2n + 1, and the blocks below the last level are stored whole.
struct MergeTree {
    static constexpr int mostLevels = 4;
    struct Node {
        const MergeEntry *entries = nullptr;
        int rows = 0;
        int done = 0; ///< rows made
        int step = 0; ///< rows to make at a time
        float headSlope = 0;
        float tailSlope = 0;
        float *out = nullptr;
        qint64 outMask = -1; ///< row s is at out + (s & outMask) x stride
    };
    std::array<Node, 2 << mostLevels> nodes;
};

namespace {

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
    // Rows of `bins` floats take less than bins + 3 x lanes; short rows take the plain road.
    const double shortest = std::max(limits.binsMin, Kernels::fewestBins(8));
    sizes.block = samples + 3 * mostLanes * std::ceil(samples / shortest);
    sizes.tile = mostLanes * (binsMax + 3 * mostLanes) + mostLanes * (binsMax + widest) +
                 mostLanes * double(nwidths);
    // One table of all rows, then two of every half, quarter and so on.
    sizes.tables = 3 * samples / shortest + 64;
    return sizes;
}

} // namespace

AlignedFloats::AlignedFloats(quint64 count)
{
    constexpr quint64 floatsPerLine = 16;
    storage = std::make_unique_for_overwrite<float[]>(count + floatsPerLine - 1);
    const auto address = reinterpret_cast<quintptr>(storage.get());
    first =
        storage.get() + (floatsPerLine - address / sizeof(float) % floatsPerLine) % floatsPerLine;
}

FoldSearch::FoldSearch(const FoldLimits &limits, const quint64 *widthsIn, quint64 nwidths,
                       Lanes lanes)
    : widths(widthsIn, widthsIn + nwidths), preferred(choose(lanes)),
      block(quint64(sizesFor(limits, widthsIn, nwidths).block)),
      otherBlock(quint64(sizesFor(limits, widthsIn, nwidths).block)),
      tile(quint64(sizesFor(limits, widthsIn, nwidths).tile)), rings(ringBytes / sizeof(float)),
      constants(nwidths), entries(quint64(sizesFor(limits, widthsIn, nwidths).tables))
{
    // The last tile of a fold may have lanes without a row; they are computed all the same.
    std::fill_n(tile.data(), quint64(sizesFor(limits, widthsIn, nwidths).tile), 0.0f);
}

FoldSearch::~FoldSearch() = default;

double FoldSearch::bytesNeeded(const FoldLimits &limits, const quint64 *widths, quint64 nwidths)
{
    const Sizes sizes = sizesFor(limits, widths, nwidths);
    return (2 * sizes.block + sizes.tile) * sizeof(float) + ringBytes +
           sizes.tables * sizeof(MergeEntry) +
           double(nwidths) * (sizeof(WidthConstants) + sizeof(quint64));
}

void FoldSearch::run(const float *series, const PlanFold &fold, float stdnoise, float *snr)
{
    kernels = preferred;
    if (fold.bins < Kernels::fewestBins(kernels->lanes))
        kernels = &kernels8;
    const qint64 rowFloats = Kernels::vectorsPerRow(fold.bins, kernels->lanes) * kernels->lanes;
    const quint64 mostRows = quint64(std::numeric_limits<qint32>::max() / rowFloats);
    if (fold.bins < Kernels::fewestBins(kernels->lanes) || fold.rows <= leafRows ||
        fold.rows > mostRows) {
        runPlain(series, fold, stdnoise, snr);
        return;
    }
    prepare(int(fold.rows), fold.bins);
    TileTask task;
    task.bins = bins;
    task.widths = constants.data();
    task.nwidths = qint64(widths.size());
    task.widest = qint64(std::min(widestOf(widths.data(), widths.size()), quint64(bins)));
    task.stdnoise = stdnoise;
    task.rowMajor = tile.data();
    task.tile = tile.data() + kernels->lanes * stride;
    task.rises = task.tile + (bins + std::max(task.widest, qint64(3))) * kernels->lanes;

    // The top of the transform is not stored: its rows go from the merge into the tile.
    MergeTree tree;
    tree.nodes[1].out = tile.data();
    tree.nodes[1].outMask = kernels->lanes - 1;
    plant(tree, 1, depths[0].passLevels, {0, int(fold.rows), series}, block.data(),
          otherBlock.data());
    const int evaluated = int(fold.evaluated);
    for (int row = 0; row < evaluated; row += kernels->lanes) {
        const int end = std::min(row + kernels->lanes, evaluated);
        grow(tree, 1, end);
        kernels->tileRows(task, end - row, snr);
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
    ringRows = stride * qint64(sizeof(float)) <= shortRowBytes ? 16 : 8;
    const auto profile = quint64(bins);
    for (std::size_t j = 0; j < widths.size(); ++j) {
        const BoxcarShape shape = boxcarShape(quint32(bins), widths[j]);
        // For widths of the whole profile and more the constants are not a number, and so is
        // the S/N, whatever the sums.
        constants[j] = {shape.heightAndBase, shape.base, qint64(std::min(widths[j], profile))};
    }
    // In a pass, every depth but the last merges rows that are kept in rings.
    MergeEntry *next = entries.data();
    int levelsToGo = 0;
    for (int depth = 0; rows >> depth >= leafRows; ++depth) {
        Depth &at = depths[std::size_t(depth)];
        at.fewestRows = rows >> depth;
        if (levelsToGo == 0)
            levelsToGo = at.passLevels = levelsPerPass(at.fewestRows);
        --levelsToGo;
        const int keptRows = levelsToGo > 0 ? ringRows : 0;
        const int sizes = depth == 0 ? 1 : 2;
        for (int size = 0; size < sizes; ++size) {
            kernels->fillMergeTable(at.fewestRows + size, bins, keptRows, next);
            at.tables[std::size_t(size)] = next;
            next += at.fewestRows + size;
        }
    }
}

// Levels to merge in one pass for a block of so many rows: as many as keep the rings in the
// nearest cache, spread evenly over the passes it takes until sub-blocks fit there whole.
int FoldSearch::levelsPerPass(int rows) const
{
    const qint64 rowBytes = stride * qint64(sizeof(float));
    if (rows * rowBytes <= 2 * blockBytes)
        return 1;
    const qint64 cachedRows = std::max(blockBytes / rowBytes, qint64(leafRows));
    int levels = 1;
    while (rows >> levels > cachedRows)
        ++levels;
    int most = 1;
    while (most < MergeTree::mostLevels && ((2 << most) - 2) * ringRows * rowBytes <= ringBytes)
        ++most;
    const int passes = (levels + most - 1) / most;
    return (levels + passes - 1) / passes;
}

// Sets up node `node` of a tree and those below it: transforms the blocks at the bottom, of
// the levels yet to go, into `blocks`, with `work` as room of the same size.
void FoldSearch::plant(MergeTree &tree, int node, int levels, const SubBlock &sub, float *blocks,
                       float *work)
{
    MergeTree::Node &at = tree.nodes[std::size_t(node)];
    at.rows = sub.rows;
    if (levels == 0) {
        transform(sub, blocks, work);
        at.done = sub.rows;
        at.out = blocks;
        return;
    }
    const int headRows = sub.rows / 2;
    const int tailRows = sub.rows - headRows;
    at.entries = tableFor(sub);
    at.done = 0;
    at.step = levels == 1 ? sub.rows : ringRows;
    at.headSlope = float(headRows - 1) / float(sub.rows - 1);
    at.tailSlope = float(tailRows - 1) / float(sub.rows - 1);
    if (node > 1) {
        at.out = rings.data() + (node - 2) * ringRows * stride;
        at.outMask = ringRows - 1;
    }
    const qint64 tailBegin = headRows * stride;
    plant(tree, 2 * node, levels - 1, {sub.depth + 1, headRows, sub.series}, blocks, work);
    plant(tree, 2 * node + 1, levels - 1,
          {sub.depth + 1, tailRows, sub.series + qint64(headRows) * bins}, blocks + tailBegin,
          work + tailBegin);
}

// Makes the rows of a node before `end`. Rows are asked for in order, and n at a time ask for
// at most n / 2 + 1 rows of each half, one more with whole pairs: so rings of n rows, n of 4
// and more, hold what is read, and the rows of all levels stay in the nearest cache.
void FoldSearch::grow(MergeTree &tree, int node, int end) const
{
    MergeTree::Node &at = tree.nodes[std::size_t(node)];
    const MergeTree::Node &head = tree.nodes[2 * std::size_t(node)];
    const MergeTree::Node &tail = tree.nodes[2 * std::size_t(node) + 1];
    const int wanted = std::min(at.rows, end + end % 2); // whole pairs
    while (at.done < wanted) {
        const int stop = std::min(wanted, at.done + at.step);
        if (head.done < head.rows)
            grow(tree, 2 * node, Kernels::rowOfHalf(stop - 1, at.headSlope, head.rows) + 1);
        if (tail.done < tail.rows)
            grow(tree, 2 * node + 1, Kernels::rowOfHalf(stop - 1, at.tailSlope, tail.rows) + 1);
        kernels->mergeRows(at.entries, at.done, stop, head.out, tail.out, bins, at.out, at.outMask);
        at.done = stop;
    }
}

const MergeEntry *FoldSearch::tableFor(const SubBlock &sub) const
{
    const Depth &at = depths[std::size_t(sub.depth)];
    return at.tables[std::size_t(sub.rows - at.fewestRows)];
}

// Depth first, so that sub-blocks are merged while they are in the nearest cache.
void FoldSearch::transform(const SubBlock &sub, float *out, float *work)
{
    if (sub.rows <= leafRows) {
        kernels->leafRows(sub.series, sub.rows, bins, out);
        return;
    }
    const int levels = depths[std::size_t(sub.depth)].passLevels;
    if (levels > 1) {
        MergeTree tree;
        tree.nodes[1].out = out;
        plant(tree, 1, levels, sub, work, out);
        grow(tree, 1, sub.rows);
        return;
    }
    const int headRows = sub.rows / 2;
    const qint64 tailBegin = headRows * stride;
    transform({sub.depth + 1, headRows, sub.series}, work, out);
    transform({sub.depth + 1, sub.rows - headRows, sub.series + qint64(headRows) * bins},
              work + tailBegin, out + tailBegin);
    kernels->mergeRows(tableFor(sub), 0, sub.rows, work, work + tailBegin, bins, out, -1);
}

} // namespace Ffa
