#pragma once

#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"

#include <QImage>
#include <QLine>
#include <QVector>
#include <vector>

namespace Plot {

/// The pixels of a curve that has more points than the plot has columns: one vertical run per
/// column, and the few segments that are not part of one.
struct ColumnRuns {
    std::vector<int> top;    ///< first row of the run in column marginLeft + i
    std::vector<int> bottom; ///< its last row; above `top` where there is no run
    QVector<QLine> lines;    ///< left to QPainter: at NaN samples and beyond the picture
};

/// Whether columnRuns() may be used: the plot has an area and more points than columns.
bool isDense(const View &view);

/// Reduces a curve to runs. Runs and lines together are the pixels that QPainter gives for one
/// line of a cosmetic or one pixel wide pen per pair of neighbouring points; pairs with a NaN
/// have none. Samples beyond view.allPoints are not read. In a zoomed view the caller draws the
/// lines within view.clip() and fills the runs in its rows only.
///
/// @param view    dense, see above
/// @param blocks  those of the curve, or none; they only save time
ColumnRuns columnRuns(const View &view, const std::vector<float> &curve,
                      const BlockExtremes &blocks);

/// Rows of a picture, the last one included.
struct Rows {
    int first;
    int last;
};

/// Writes the part of the runs, not of the lines, that lies in the given rows into a picture.
///
/// @param picture  of the view's size, 32 bits per pixel
/// @param rows     within the picture
void fillRuns(QImage &picture, const ColumnRuns &runs, QRgb colour, const Rows &rows);

} // namespace Plot
