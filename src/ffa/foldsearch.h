#pragma once

#include "ffa/ffaplan.h"

#include <QtGlobal>
#include <array>
#include <vector>

namespace Ffa {

namespace Kernels {
struct MergeEntry;
struct WidthConstants;
} // namespace Kernels

struct KernelSet;

/// Zeroed floats that begin on a cache line.
class AlignedFloats {
public:
    explicit AlignedFloats(quint64 count);
    AlignedFloats(const AlignedFloats &) = delete;
    AlignedFloats &operator=(const AlignedFloats &) = delete;

    float *data() const { return first; }

private:
    std::vector<float> storage;
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
    /// Floats that must be readable after the end of a series given to run().
    static constexpr int seriesSlack = 32;

    FoldSearch(const FoldLimits &limits, const quint64 *widths, quint64 nwidths,
               Lanes lanes = Lanes::Automatic);
    ~FoldSearch();

    /// Bytes an object takes. Exact up to 2^62, larger beyond.
    static double bytesNeeded(const FoldLimits &limits, const quint64 *widths, quint64 nwidths);

    /// Writes the S/N of the leading `fold.evaluated` profiles of one fold.
    ///
    /// @param series    fold.rows x fold.bins samples and the slack
    /// @param stdnoise  standard deviation of one value of a profile
    /// @param snr       [profile][width]
    void run(const float *series, const PlanFold &fold, float stdnoise, float *snr);

private:
    void runPlain(const float *series, const PlanFold &fold, float stdnoise, float *snr);
    void prepare(int rows, qint32 bins);
    void transform(int depth, int rows, const float *series, float *out, float *other) const;

    const std::vector<quint64> widths;
    const KernelSet *const preferred;
    AlignedFloats block;
    AlignedFloats otherBlock;
    AlignedFloats tile; ///< a few rows, their tile and the rises, or the sums of one profile
    std::vector<Kernels::WidthConstants> constants;
    std::vector<Kernels::MergeEntry> entries;

    // Of the fold at hand:
    const KernelSet *kernels = nullptr;
    qint32 bins = 0;
    qint64 stride = 0; ///< floats per row
    /// Merge tables of the two row counts at each depth of the recursion: all sub-blocks of
    /// one depth have `fewestRows` rows or one more.
    struct Depth {
        int fewestRows = 0;
        std::array<const Kernels::MergeEntry *, 2> tables = {};
    };
    std::array<Depth, 32> depths = {};
};

} // namespace Ffa
