#pragma once

#include "picture/axislabels.h"
#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"

#include <QFont>
#include <QImage>

class QPaintDevice;
class QPainter;

/// Paints a plot onto a picture, without a widget. The functions below do so layer by layer;
/// together, in their order, they are paintPlot(), and paintMarks() draws over it.
namespace Plot {

/// The whole plot. Nothing is painted when the picture is at most 100 x 100 pixels.
///
/// @param zoom     the part to show, within the data; see limitedZoom()
/// @param blocks   of the data, or empty; with them long curves take a shorter way to the same
///                 pixels
/// @param picture  Format_RGB32 at device pixel ratio 1
void paintPlot(const PlotData &data, const Zoom &zoom, const CurveBlocks &blocks, QImage &picture);

/// White ground, frame, grid, curves with the line of value 0, and markers. NaN samples leave a
/// gap: the segments that meet one are not drawn. Infinite samples lie beyond every edge, so their
/// segments run straight out of the picture.
///
/// Curves with more points than the plot has columns take a shorter way than a line per
/// segment and give the same pixels. A zoomed view colours nothing beyond the margins.
///
/// @param x        of the data, see xAxisOf()
/// @param picture  as above, of the view's size
void paintCurves(const PlotData &data, const View &view, const CurveBlocks &blocks,
                 const XAxisLabels &x, QImage &picture);

/// The rows of texts along X in the font of a plot, which the texts and the grid share; nothing
/// where there is a message.
///
/// @param device  that they are painted on
XAxisLabels xAxisOf(const PlotData &data, const View &view, const QPaintDevice &device);

/// Texts of both axes with their ticks and names; or the message.
///
/// @param view  in the painter's units
/// @param x     of the data, see xAxisOf()
void paintLabels(QPainter &painter, const PlotData &data, const View &view, const XAxisLabels &x);

/// The samples themselves on the lines between them, in a view zoomed in so far that they stand
/// apart; otherwise nothing.
void paintSamples(QPainter &painter, const View &view, const std::vector<float> &curve);

/// The rows of texts along X with their names, below a picture that shares the axis of a plot.
///
/// @param bottom  of that picture, where the ticks begin
void paintXAxis(QPainter &painter, const PlotData &data, const View &view, int bottom);

/// Where what is left out stands in a view, pixels: at least three wide, none that is out of sight.
std::vector<Range> leftOutInSight(const PlotData &data, const View &view);

/// Shades what is left out, wherever painted curves leave the ground free, with ends above the
/// plot.
void paintLeftOut(QImage &picture, const PlotData &data, const View &view);

/// Columns of the grid's lines; none where there are markers.
std::vector<int> gridColumns(const PlotData &data, const XAxisLabels &x);

/// The markers, wherever painted curves leave the ground free, with ends beyond the plot.
void paintMarkers(QImage &picture, const PlotData &data, const View &view);

/// A font as large as the user has it, but not below or above so many pixels.
QFont fontWithin(const QFont &font, int least, int most);

/// That font, or one as much smaller as a text needs to fit, but not below so many pixels.
QFont fontForWidth(const QFont &font, const QString &text, int width, int least);

/// The font of the texts of a plot that shows all.
QFont labelFont();
/// The font of the texts in a view: where it is zoomed the user's, as large as the margins allow.
QFont labelFont(const View &view);

/// A text on a box of translucent white, so that it stays legible over curves.
void paintLabel(QPainter &painter, const Label &label);

} // namespace Plot
