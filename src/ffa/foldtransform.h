#pragma once

#include <QtGlobal>

namespace Ffa {

/// Row-major array of floats that belongs to someone else.
template <typename Value>
struct BasicBlock {
    Value *data = nullptr;
    quint64 rows = 0;
    quint64 columns = 0;

    Value *row(quint64 index) const { return data + index * columns; }
    /// The first floor(rows / 2) rows.
    BasicBlock head() const { return {data, rows / 2, columns}; }
    /// The rows after the head.
    BasicBlock tail() const { return {row(rows / 2), rows - rows / 2, columns}; }
};

using Block = BasicBlock<float>;
using ConstBlock = BasicBlock<const float>;

/// Rows of the two halves, and the shift between them, that add up to one output row of a
/// merge.
struct MergeStep {
    quint64 head = 0;
    quint64 tail = 0;
    quint64 shift = 0; ///< bins by which the tail row is read later
};

/// The step behind output row `row` of a merge of `rows` rows, 2 and more. The halves are
/// followed in single precision, halves rounded up (Staelin 1969, Proc. IEEE 57, 724, for
/// powers of two; any number of rows here).
MergeStep mergeStep(quint64 row, quint64 rows);

/// Adds the transforms of two halves of a fold: out row s is a head row and a tail row that
/// is read `shift` bins later, so that the pulses of one trial period line up.
///
/// @param out  head.rows + tail.rows rows; the halves as Block::head() and tail() cut them
void mergeHalves(ConstBlock head, ConstBlock tail, Block out);

/// Fast folding transform: out row s is the sum of all input rows along a drift that grows
/// to s bins from the first row to the last.
///
/// @param in       at least one row; not changed
/// @param scratch  same shape; its contents are lost
/// @param out      same shape; the three do not overlap
void foldTransform(ConstBlock in, Block scratch, Block out);

} // namespace Ffa
