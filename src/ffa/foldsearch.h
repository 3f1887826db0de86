#pragma once

#include "ffa/ffaplan.h"

#include <QtGlobal>
#include <array>
#include <memory>
#include <vector>

namespace Ffa {

namespace Kernels {
struct MergeEntry;
struct WidthConstants;
} // namespace Kernels

struct KernelSet;
struct MergeTree;

/// Floats without values yet that begin on a cache line.
class AlignedFloats {
public:
    explicit AlignedFloats(quint64 count);
    AlignedFloats(const AlignedFloats &) = delete;
    AlignedFloats &operator=(const AlignedFloats &) = delete;

    float *data() const { return first; }

private:
    std::unique_ptr<float[]> storage;
    float *first = nullptr;
};

/// Bounds of the folds of one search.
struct FoldLimits {
    quint64 samples = 0; ///< of the longest downsampled series
    qint32 binsMin = 0;
    qint32 binsMax = 0;
};

/// Floats per vector of the kernels; Automatic takes what suits the processor.
enum class Lanes { Automatic, Eight, Sixteen };

/// Folds a series and measures the profiles: the values of foldTransform() and boxcarSnr(),
/// equal to the last bit, several times as fast. One object serves a whole search; its
/// buffers are allocated once.
class FoldSearch {
public:
    /// Floats that must be readable before and after a series given to run().
    static constexpr int seriesSlack = 48;

    FoldSearch(const FoldLimits &limits, const quint64 *widths, quint64 nwidths,
               Lanes lanes = Lanes::Automatic);
    ~FoldSearch();

    /// Bytes an object takes. Exact up to 2^62, larger beyond.
    static double bytesNeeded(const FoldLimits &limits, const quint64 *widths, quint64 nwidths);

    /// Writes the S/N of the leading `fold.evaluated` profiles of one fold.
    ///
    /// @param series    fold.rows x fold.bins samples, slack on both sides
    /// @param stdnoise  standard deviation of one value of a profile
    /// @param snr       [profile][width]
    void run(const float *series, const PlanFold &fold, float stdnoise, float *snr);

private:
    /// Consecutive rows of the series: one block of the transform, which halves `depth` times.
    struct SubBlock {
        int depth;
        int rows;
        const float *series;
    };

    void runPlain(const float *series, const PlanFold &fold, float stdnoise, float *snr);
    void prepare(int rows, qint32 bins);
    int levelsPerPass(int rows) const;
    void plant(MergeTree &tree, int node, int levels, const SubBlock &sub, float *blocks,
               float *work);
    void grow(MergeTree &tree, int node, int end) const;
    const Kernels::MergeEntry *tableFor(const SubBlock &sub) const;
    void transform(const SubBlock &sub, float *out, float *work);

    const std::vector<quint64> widths;
    const KernelSet *const preferred;
    AlignedFloats block;
    AlignedFloats otherBlock;
    AlignedFloats tile; ///< a few rows, their tile and the rises, or the sums of one profile
    AlignedFloats rings;
    std::vector<Kernels::WidthConstants> constants;
    std::vector<Kernels::MergeEntry> entries;

    // The fold at hand:
    const KernelSet *kernels = nullptr;
    qint32 bins = 0;
    qint64 stride = 0; ///< floats per row
    int ringRows = 0;  ///< of a pass over several levels
    /// Merge tables of one depth of the recursion, whose sub-blocks have all `fewestRows` rows
    /// or one more.
    struct Depth {
        int fewestRows = 0;
        int passLevels = 0; ///< depths merged in one pass from this one on
        std::array<const Kernels::MergeEntry *, 2> tables = {};
    };
    std::array<Depth, 32> depths = {};
};

} // namespace Ffa
