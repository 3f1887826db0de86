#pragma once

#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"

#include <optional>
#include <vector>

class QPainter;

namespace Plot {
struct Marks;
}

/// The list of a plot's curves that is painted over it: a name per visible curve that has one,
/// beside a piece of its line.
namespace Plot {

/// The most of a plot's area that a list of its curves may take.
constexpr double legendShare = 1.0 / 3;

/// The size of the list in pixels: one column of names or several, and where all of them would take
/// more than a third of the area, the first ones. Empty where no visible curve has a name or there
/// is no room. Takes the fonts of a QGuiApplication.
QSize legendSize(const PlotData &data, const QRect &area);

/// Columns of the picture with something that the list must not hide: markers, cursors, harmonics.
std::vector<int> columnsToSpare(const PlotData &data, const View &view, const Marks &marks);

/// The left upper corner of a rectangle that lies in that corner of an area where it hides the
/// fewest pixels of the visible curves; the upper right one where several are equal. Where all four
/// hide something, a curve or a column that is to be spared, other places at the upper and the
/// lower edge count as well.
///
/// @param blocks  of the data, or empty
/// @param area    within the plot, at least of the rectangle's size
QPoint emptiestCorner(const PlotData &data, const CurveBlocks &blocks, const View &view,
                      const QRect &area, const QSize &size, const std::vector<int> &spared = {});

/// How many pixels of the visible curves a rectangle hides; a column that is to be spared counts as
/// a million.
double hiddenPixels(const PlotData &data, const CurveBlocks &blocks, const View &view,
                    const QRect &rectangle, const std::vector<int> &spared = {});

/// The part of a plot that a legend may take.
QRect legendArea(const View &view);

/// Where a picture of that size has its list, unless a user has put it elsewhere: in the emptiest
/// corner; nothing where there is no list or no room for it.
std::optional<QPoint> legendPlace(const PlotData &data, const CurveBlocks &blocks,
                                  const QSize &size, const Zoom &zoom, const Marks &marks);

/// Draws the list for an area, see legendSize(), with its left upper corner there, in the painter's
/// font.
void paintLegend(QPainter &painter, const PlotData &data, const QRect &area, const QPoint &corner);

} // namespace Plot
