#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

/// The inner loops of the fast search, over vectors of `Lanes` floats. They are templates to
/// be inlined into functions compiled per instruction set; vectors wider than the processor's
/// are split by the compiler. Every float operation is that of the plain building blocks, in
/// the same order for each value, so results are equal to the last bit.
///
/// A row of b bins is stored in `vectorsPerRow()` whole vectors and repeats its first values
/// after its end, so that a vector that starts at any bin holds consecutive bins, read
/// circularly. What follows the `Lanes` repeated values is never looked at.
namespace Ffa::Kernels {

#define ZRT_INLINE inline __attribute__((always_inline))

// Vectors only pass between functions that are inlined, so their calling convention, which
// differs between the instruction sets, does not matter. Templates are compiled at the end of
// the file, hence no pop.
#pragma GCC diagnostic ignored "-Wpsabi"

template <int Lanes>
struct VectorTypes;

template <>
struct VectorTypes<8> {
    typedef float Floats __attribute__((vector_size(32)));
    typedef std::int32_t Ints __attribute__((vector_size(32)));
    typedef float Half __attribute__((vector_size(16)));
    typedef double HalfDoubles __attribute__((vector_size(32)));
    static constexpr Ints laneNumbers = {0, 1, 2, 3, 4, 5, 6, 7};
    static ZRT_INLINE HalfDoubles widen(const Half &x)
    {
        return __builtin_convertvector(x, HalfDoubles);
    }
    static ZRT_INLINE Half narrow(const HalfDoubles &x) { return __builtin_convertvector(x, Half); }
};

template <>
struct VectorTypes<16> {
    typedef float Floats __attribute__((vector_size(64)));
    typedef std::int32_t Ints __attribute__((vector_size(64)));
    typedef float Half __attribute__((vector_size(32)));
    typedef double HalfDoubles __attribute__((vector_size(64)));
    static constexpr Ints laneNumbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    static ZRT_INLINE HalfDoubles widen(const Half &x)
    {
        return __builtin_convertvector(x, HalfDoubles);
    }
    static ZRT_INLINE Half narrow(const HalfDoubles &x) { return __builtin_convertvector(x, Half); }
};

typedef float Quad __attribute__((vector_size(16)));

template <typename Vector>
ZRT_INLINE Vector load(const float *from)
{
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

template <typename Vector>
ZRT_INLINE void store(float *to, const Vector &vector)
{
    std::memcpy(to, &vector, sizeof vector);
}

/// Fewest bins of a row: a leaf reads up to 3 bins past the repeated values.
constexpr int fewestBins(int lanes)
{
    return lanes + 3;
}

constexpr std::int64_t vectorsPerRow(std::int64_t bins, int lanes)
{
    return (bins + lanes + lanes - 1) / lanes;
}

/// One output row of a merge as places of floats, computed once for all sub-blocks of as many
/// rows.
struct MergeEntry {
    std::int32_t head; ///< first bin of the head row, from the head's begin
    std::int32_t tail; ///< bin of the tail row that is added to bin 0, from the tail's begin
    std::int32_t wrap; ///< bins that the output row has before the tail row starts again
};

/// Row of a half that is merged into row `row`; see mergeStep().
ZRT_INLINE int rowOfHalf(int row, float slope, int halfRows)
{
    constexpr float half = 0.5f;
    const int nearest = int(float(row) * slope + half);
    return nearest < halfRows ? nearest : halfRows - 1;
}

/// Entries of a merge of `rows` rows. Odd rows wrap where the even row before them does.
///
/// @param keptRows  the halves keep their last so many rows, 2^k, in a ring; 0: all rows
template <int Lanes>
ZRT_INLINE void fillMergeTable(int rows, int bins, int keptRows, MergeEntry *entries)
{
    const int stride = int(vectorsPerRow(bins, Lanes) * Lanes);
    const int mask = keptRows - 1; // of all ones for 0
    const int headRows = rows / 2;
    const int tailRows = rows - headRows;
    const float headSlope = float(headRows - 1) / float(rows - 1);
    const float tailSlope = float(tailRows - 1) / float(rows - 1);
    const double turnsPerBin = 1.0 / bins;
    for (int s = 0; s < rows; ++s) {
        const int head = rowOfHalf(s, headSlope, headRows);
        const int tail = rowOfHalf(s, tailSlope, tailRows);
        const int even = s & ~1;
        const int evenShift = even - rowOfHalf(even, tailSlope, tailRows);
        // The remainder without a division. Where the product falls just short of a whole
        // number it is `bins`, a row that wraps at once, which is as good as 0.
        const int first = evenShift - int(evenShift * turnsPerBin) * bins;
        const int shift = s - tail - evenShift + first;
        entries[s] = {(head & mask) * stride, (tail & mask) * stride + shift,
                      (bins - first + Lanes - 1) / Lanes * Lanes};
    }
}

/// Writes `Rows` consecutive output rows of a merge side by side; where one wraps they all do.
///
/// The wrap of the tail row falls on a vector boundary of the output, because the vector that
/// crosses the row's end finds the first bins repeated there: loads of the head and stores are
/// aligned, and there is one loop, of a length that all rows share and the processor predicts.
/// The second row of a pair is shifted by at most one bin more, so that with one more bin
/// repeated it can wrap where the first does.
template <int Lanes, int Rows>
ZRT_INLINE void mergeTogether(const MergeEntry *entries, const float *head, const float *tail,
                              std::int64_t bins, std::int64_t stride, float *out)
{
    using Floats = typename VectorTypes<Lanes>::Floats;
    const float *x[Rows];
    const float *y[Rows];
    for (int r = 0; r < Rows; ++r) {
        x[r] = head + entries[r].head;
        y[r] = tail + entries[r].tail;
    }
    const std::int64_t lastBeforeWrap = entries[0].wrap - 1;
    for (std::int64_t i = 0; i < stride; i += Lanes) {
        // The sign of the difference instead of a condition, of which the compiler would make
        // two loops.
        const std::int64_t at = i - (bins & ((lastBeforeWrap - i) >> 63));
        for (int r = 0; r < Rows; ++r)
            store<Floats>(out + r * stride + i, load<Floats>(x[r] + i) + load<Floats>(y[r] + at));
    }
}

/// Writes the output rows from `first`, which is even, to before `end`.
///
/// @param outMask  row s goes to out + (s & outMask) x stride
template <int Lanes>
ZRT_INLINE void mergeRows(const MergeEntry *entries, int first, int end, const float *head,
                          const float *tail, std::int64_t bins, float *out, std::int64_t outMask)
{
    const std::int64_t stride = vectorsPerRow(bins, Lanes) * Lanes;
    int s = first;
    for (; s + 1 < end; s += 2)
        mergeTogether<Lanes, 2>(entries + s, head, tail, bins, stride,
                                out + (s & outMask) * stride);
    if (s < end)
        mergeTogether<Lanes, 1>(entries + s, head, tail, bins, stride,
                                out + (s & outMask) * stride);
}

/// One vector of a row of a series, from bin `at`. Where the row's end lies before the
/// vector's, its bins beyond come from the row's begin, one row earlier in the series.
template <int Lanes, bool Wraps>
ZRT_INLINE typename VectorTypes<Lanes>::Floats seriesVector(const float *row, std::int64_t at,
                                                            std::int64_t bins)
{
    using Types = VectorTypes<Lanes>;
    using Floats = typename Types::Floats;
    if constexpr (Wraps) {
        const typename Types::Ints beyond = Types::laneNumbers + int(at - bins) >= 0;
        return beyond ? load<Floats>(row + (at - bins)) : load<Floats>(row + at);
    } else {
        return load<Floats>(row + at);
    }
}

/// One vector of a transform of two to four rows, whole in registers: two levels of the
/// transform for one pass over memory.
///
/// @param at   first bin read of row 0
/// @param out  row s at out + s x stride
template <int Lanes, int Rows, bool Wraps>
ZRT_INLINE void leafVector(const float *series, std::int64_t at, std::int64_t bins,
                           std::int64_t stride, float *out)
{
    using Floats = typename VectorTypes<Lanes>::Floats;
    // Inlined even in unoptimised builds: see the note on vectors above.
    const auto bin = [&](int row, int shift) __attribute__((always_inline))
    {
        return seriesVector<Lanes, Wraps>(series + row * bins, at + shift, bins);
    };
    const auto write = [&](int row, const Floats &sum) __attribute__((always_inline))
    {
        store<Floats>(out + row * stride, sum);
    };
    if constexpr (Rows == 2) {
        write(0, bin(0, 0) + bin(1, 0));
        write(1, bin(0, 0) + bin(1, 1));
    } else if constexpr (Rows == 3) {
        write(0, bin(0, 0) + (bin(1, 0) + bin(2, 0)));
        write(1, bin(0, 0) + (bin(1, 0) + bin(2, 1)));
        write(2, bin(0, 0) + (bin(1, 1) + bin(2, 2)));
    } else {
        const Floats straight = bin(0, 0) + bin(1, 0);
        const Floats drifting = bin(0, 0) + bin(1, 1);
        write(0, straight + (bin(2, 0) + bin(3, 0)));
        write(1, straight + (bin(2, 1) + bin(3, 1)));
        write(2, drifting + (bin(2, 1) + bin(3, 2)));
        write(3, drifting + (bin(2, 2) + bin(3, 3)));
    }
}

/// Transform of `Rows` consecutive rows of a series, which can be read a little before its
/// begin and after its end.
template <int Lanes, int Rows>
ZRT_INLINE void leafRows(const float *series, std::int64_t bins, float *out)
{
    const std::int64_t stride = vectorsPerRow(bins, Lanes) * Lanes;
    std::int64_t at = 0;
    for (; at + Lanes + 3 <= bins; at += Lanes)
        leafVector<Lanes, Rows, false>(series, at, bins, stride, out + at);
    for (; at < bins; at += Lanes)
        leafVector<Lanes, Rows, true>(series, at, bins, stride, out + at);
    for (; at < stride; at += Lanes)
        leafVector<Lanes, Rows, false>(series, at - bins, bins, stride, out + at);
}

/// Turns bins `bin` to `bin` + 3 of `Lanes` rows into vectors of a tile, which hold the same bin
/// of every row: tile[bin][row].
template <int Lanes>
ZRT_INLINE void transposeBins(const float *rows, std::int64_t stride, std::int64_t bin, float *tile)
{
    for (int r = 0; r < Lanes; r += 4) {
        const float *const from = rows + r * stride + bin;
        const Quad a = load<Quad>(from);
        const Quad b = load<Quad>(from + stride);
        const Quad c = load<Quad>(from + 2 * stride);
        const Quad d = load<Quad>(from + 3 * stride);
        const Quad ab01 = __builtin_shufflevector(a, b, 0, 4, 1, 5);
        const Quad ab23 = __builtin_shufflevector(a, b, 2, 6, 3, 7);
        const Quad cd01 = __builtin_shufflevector(c, d, 0, 4, 1, 5);
        const Quad cd23 = __builtin_shufflevector(c, d, 2, 6, 3, 7);
        float *const to = tile + bin * Lanes + r;
        store<Quad>(to, __builtin_shufflevector(ab01, cd01, 0, 1, 4, 5));
        store<Quad>(to + Lanes, __builtin_shufflevector(ab01, cd01, 2, 3, 6, 7));
        store<Quad>(to + 2 * Lanes, __builtin_shufflevector(ab23, cd23, 0, 1, 4, 5));
        store<Quad>(to + 3 * Lanes, __builtin_shufflevector(ab23, cd23, 2, 3, 6, 7));
    }
}

/// circularPrefixSum() of `Lanes` rows, side by side as a tile; `extra` vectors beyond the bins,
/// at most as many again.
///
/// The sums wait for each other; turning the rows, some bins ahead, fills that time.
template <int Lanes>
ZRT_INLINE void prefixSums(const float *rows, std::int64_t bins, std::int64_t extra, float *tile)
{
    using Types = VectorTypes<Lanes>;
    using Floats = typename Types::Floats;
    using Half = typename Types::Half;
    constexpr std::int64_t ahead = 16; // bins; what was stored in quarters can be read whole
    const std::int64_t stride = vectorsPerRow(bins, Lanes) * Lanes;
    typename Types::HalfDoubles low = {};
    typename Types::HalfDoubles high = {};
    const auto sumBin = [&](std::int64_t i) __attribute__((always_inline))
    {
        float *const at = tile + i * Lanes;
        low += Types::widen(load<Half>(at));
        high += Types::widen(load<Half>(at + Lanes / 2));
        store(at, Types::narrow(low));
        store(at + Lanes / 2, Types::narrow(high));
    };
    std::int64_t bin = 0;
    for (; bin < std::min(ahead, bins); bin += 4)
        transposeBins<Lanes>(rows, stride, bin, tile);
    std::int64_t summed = 0;
    for (; bin < bins; bin += 4) {
        transposeBins<Lanes>(rows, stride, bin, tile);
        for (const std::int64_t end = summed + 4; summed < end; ++summed)
            sumBin(summed);
    }
    for (; summed < bins; ++summed)
        sumBin(summed);
    const Floats total = load<Floats>(tile + (bins - 1) * Lanes);
    for (std::int64_t i = 0; i < extra; ++i)
        store<Floats>(tile + (bins + i) * Lanes, load<Floats>(tile + i * Lanes) + total);
}

/// Constants of one boxcar width for the profiles of one fold.
struct WidthConstants {
    float heightAndBase;
    float base;
    std::int64_t width;
};

/// Largest P[i + w] - P[i] of every row of a tile for `Widths` widths at once: the sums at i
/// are loaded once for all of them, and the chains of comparisons hide each other's latency.
template <int Lanes, int Widths>
ZRT_INLINE void largestRises(const float *tile, std::int64_t bins, const WidthConstants *widths,
                             float *out)
{
    using Floats = typename VectorTypes<Lanes>::Floats;
    Floats largest[Widths];
    for (int j = 0; j < Widths; ++j)
        largest[j] = load<Floats>(tile + widths[j].width * Lanes) - load<Floats>(tile);
    for (std::int64_t i = 1; i < bins; ++i) {
        const float *const at = tile + i * Lanes;
        const Floats here = load<Floats>(at);
        for (int j = 0; j < Widths; ++j) {
            const Floats rise = load<Floats>(at + widths[j].width * Lanes) - here;
            largest[j] = largest[j] < rise ? rise : largest[j];
        }
    }
    for (int j = 0; j < Widths; ++j)
        store<Floats>(out + j * Lanes, largest[j]);
}

/// S/N of every row of a tile of prefix sums at every width.
///
/// @param rises  room for nwidths vectors
/// @param rows   leading rows to write
/// @param snr    [row][width]
template <int Lanes>
ZRT_INLINE void tileSnr(const float *tile, std::int64_t bins, const WidthConstants *widths,
                        std::int64_t nwidths, float stdnoise, float *rises, int rows, float *snr)
{
    using Floats = typename VectorTypes<Lanes>::Floats;
    std::int64_t j = 0;
    for (; j + 5 < nwidths; j += 6)
        largestRises<Lanes, 6>(tile, bins, widths + j, rises + j * Lanes);
    switch (nwidths - j) {
    case 5:
        largestRises<Lanes, 5>(tile, bins, widths + j, rises + j * Lanes);
        break;
    case 4:
        largestRises<Lanes, 4>(tile, bins, widths + j, rises + j * Lanes);
        break;
    case 3:
        largestRises<Lanes, 3>(tile, bins, widths + j, rises + j * Lanes);
        break;
    case 2:
        largestRises<Lanes, 2>(tile, bins, widths + j, rises + j * Lanes);
        break;
    case 1:
        largestRises<Lanes, 1>(tile, bins, widths + j, rises + j * Lanes);
        break;
    default:
        break;
    }
    const Floats total = load<Floats>(tile + (bins - 1) * Lanes);
    for (j = 0; j < nwidths; ++j) {
        const Floats rise = load<Floats>(rises + j * Lanes);
        store<Floats>(rises + j * Lanes,
                      (widths[j].heightAndBase * rise - widths[j].base * total) / stdnoise);
    }
    for (int row = 0; row < rows; ++row) {
        for (j = 0; j < nwidths; ++j)
            snr[row * nwidths + j] = rises[j * Lanes + row];
    }
}

} // namespace Ffa::Kernels
