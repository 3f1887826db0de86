#include "ffa/foldtransform.h"

#include "ffa/elementwise.h"

#include <algorithm>

namespace Ffa {

namespace {

// Nearest row of a half, halves up. Past some 2^23 rows single precision can step over the
// end of the half.
quint64 rowOfHalf(quint64 row, quint64 halfRows, quint64 rows)
{
    const float slope = float(halfRows - 1) / float(rows - 1);
    constexpr float half = 0.5f;
    const auto nearest = quint64(float(row) * slope + half);
    return std::min(nearest, halfRows - 1);
}

} // namespace

MergeStep mergeStep(quint64 row, quint64 rows)
{
    MergeStep step;
    step.head = rowOfHalf(row, rows / 2, rows);
    step.tail = rowOfHalf(row, rows - rows / 2, rows);
    step.shift = row - step.tail;
    return step;
}

void mergeHalves(ConstBlock head, ConstBlock tail, Block out)
{
    for (quint64 s = 0; s < out.rows; ++s) {
        const MergeStep step = mergeStep(s, out.rows);
        rollAdd(head.row(step.head), tail.row(step.tail), out.columns, step.shift, out.row(s));
    }
}

void foldTransform(ConstBlock in, Block scratch, Block out)
{
    if (in.rows == 1) {
        std::copy_n(in.data, in.columns, out.data);
        return;
    }
    if (in.rows == 2) {
        rollAdd(in.row(0), in.row(1), in.columns, 0, out.row(0));
        rollAdd(in.row(0), in.row(1), in.columns, 1, out.row(1));
        return;
    }
    foldTransform(in.head(), out.head(), scratch.head());
    foldTransform(in.tail(), out.tail(), scratch.tail());
    mergeHalves({scratch.data, scratch.head().rows, scratch.columns},
                {scratch.tail().data, scratch.tail().rows, scratch.columns}, out);
}

} // namespace Ffa
