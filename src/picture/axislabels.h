#pragma once

#include "picture/plotgeometry.h"

#include <array>
#include <functional>
#include <vector>

/// The texts along both axes as they fit beside each other and beside the plot. A view of all has
/// them where plotgeometry.h puts them, as far as there is room; a zoomed one has round values.
namespace Plot {

/// Pixels that a text is wide.
using TextWidth = std::function<int(const QString &text)>;

struct YAxisLabels {
    std::vector<Label> labels;
    /// What has to be added to the labels, "24000000 +"; empty where they are whole values.
    QString base;
};

/// Labels of the Y axis that end before the plot begins: in fixed notation, or where that has no
/// room with an exponent, or as differences from a base that they share.
///
/// @param precision  decimals of the fixed notation in a view of all
YAxisLabels yAxisLabels(const View &view, int precision, const TextWidth &widthOf);

struct XAxisLabels {
    std::vector<int> ticks; ///< distances from the left margin, pixels
    std::vector<int> grid;  ///< the same, of the vertical lines
    std::vector<Label> labels;
};

/// Rows of texts along the X axis, from the lowest, where none touches another. In a zoomed view
/// the lowest row has round values, and the others tell the nearest point.
///
/// @param rowHeight  pixels from one row to the next in a zoomed view
XAxisLabels xAxisLabels(const View &view, const PlotData &data, const TextWidth &widthOf,
                        int rowHeight);

/// Names of the axes: the rows' in the left margin at the heights of the rows, that of Y above it.
std::vector<Label> axisNames(const View &view, const PlotData &data, const TextWidth &widthOf,
                             int rowHeight);

/// Heights of the baselines of the three rows of a view.
std::array<int, 3> rowHeights(const View &view, const PlotData &data, int rowHeight);

} // namespace Plot
