#pragma once

#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"

class QPainter;

/// The list of a plot's curves that is painted over it: a name per visible curve that has one,
/// beside a piece of its line.
namespace Plot {

/// The size of the list in pixels; empty where no visible curve has a name. Takes the fonts of a
/// QGuiApplication.
QSize legendSize(const PlotData &data);

/// The left upper corner of a rectangle that lies in that corner of an area where it hides the
/// fewest pixels of the visible curves; the upper right one where several are equal.
///
/// @param blocks  of the data, or empty
/// @param area    within the plot, at least of the rectangle's size
QPoint emptiestCorner(const PlotData &data, const CurveBlocks &blocks, const View &view,
                      const QRect &area, const QSize &size);

/// The part of a plot that a legend may take.
QRect legendArea(const View &view);

/// Draws the list with its left upper corner there, in the painter's font.
void paintLegend(QPainter &painter, const PlotData &data, const QPoint &corner);

} // namespace Plot
