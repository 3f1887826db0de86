#pragma once

#include "plot/plotgeometry.h"

#include <QImage>
#include <QRect>

class QPainter;

/// Paints a plot onto a picture, without a widget. The functions below do so layer by layer;
/// together, in their order, they are paintPlot().
namespace Plot {

/// The whole plot. Nothing is painted when the picture is at most 100 x 100 pixels.
///
/// @param selection  see paintSelection()
/// @param picture    Format_RGB32 at device pixel ratio 1
void paintPlot(const PlotData &data, const QRect &selection, QImage &picture);

/// White ground, frame, curves with the line of value 0, and markers. NaN samples leave a gap:
/// the segments that meet one are not drawn. Infinite samples lie beyond every edge, so their
/// segments run straight out of the picture.
///
/// Curves with more points than the plot has columns take a shorter way than a line per
/// segment and give the same pixels.
/// Of a zoomed view nothing is painted beyond the margins.
///
/// @param picture  as above, of the view's size
void paintCurves(const PlotData &data, const View &view, QImage &picture);

/// Texts of both axes with their ticks, and the grid; or the message.
///
/// @param view  in the painter's units
void paintLabels(QPainter &painter, const PlotData &data, const View &view);

/// The translucent rectangle from its left upper corner to the point its size away from there;
/// one without width and height is not drawn.
void paintSelection(QPainter &painter, const QRect &selection);

} // namespace Plot
