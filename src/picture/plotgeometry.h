#pragma once

#include "picture/blockextremes.h"
#include "picture/plotdata.h"
#include "picture/zoom.h"

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QSize>
#include <vector>

/// Where things stand in a plot. Pixels are counted from the left upper corner of the widget
/// unless a name says "height": a height is counted in pixels from the widget's bottom edge.
namespace Plot {

// Space around the curves, pixels.
constexpr int marginBottom = 70;
constexpr int marginTop = 30;
constexpr int marginLeft = 60;
constexpr int marginRight = 30;

/// What the conversions between data and pixels depend on.
struct View {
    int width = 0;         ///< of the widget, pixels
    int height = 0;        ///< of the widget, pixels
    double first = 0;      ///< point index at the left margin
    double points = 1;     ///< X positions across the plot, above 0
    Range y;               ///< never of zero extent, always finite
    Range yScale;          ///< the same as they stand along Y, see scaledY()
    bool isLog = false;    ///< Y is logarithmic, `y` above 0
    int allPoints = 1;     ///< X positions across the plot when all are shown, at least 1
    int lastIndex = 0;     ///< last index of the first curve
    bool isZoomed = false; ///< only a part is shown, and nothing of it beyond the margins; so are
                           ///< all logarithmic views

    int plotWidth() const { return width - marginLeft - marginRight; }
    int plotHeight() const { return height - marginBottom - marginTop; }
    /// Pixels from one point to the next.
    double step() const { return double(plotWidth()) / points; }
    Range x() const { return {first, first + points}; }
    /// The pixels that curves may colour.
    QRect clip() const
    {
        return isZoomed ? QRect(marginLeft, marginTop, plotWidth(), plotHeight() + 1)
                        : QRect(0, 0, width, height);
    }
};

/// Points in sight, `end` not included, with the neighbours whose segments reach into it.
struct IndexRange {
    int begin = 0;
    int end = 0;
};

/// A text and the left end of its baseline.
struct Label {
    QPoint position;
    QString text;
};

/// Whether a widget of this size shows anything: it is more than 100 pixels wide or high.
bool isPainted(const QSize &size);

/// Smallest and largest sample of the active set (multiGraphs, or graphs where there are none).
/// The largest is at least -100000 and the smallest at most 100000: data that lie wholly beyond
/// keep that bound on the far side. NaN and infinite samples do not count; both are 0 when there
/// are no curves or none of them has a finite sample.
Range verticalRange(const PlotData &data);
/// The same in less time, with the blocks of the data.
Range verticalRange(const PlotData &data, const CurveBlocks &blocks);

/// What stands in the place of curves that cannot be drawn.
constexpr char noFiniteValues[] = "no finite values";

/// Whether a curve has samples and none of them is finite, so that nothing of it can be drawn.
bool lacksFinite(const std::vector<float> &curve);

/// Whether all visible curves that have samples lack finite ones; false without any such curve.
bool showsNothingFinite(const PlotData &data);

/// The view of the data in a widget of the given size. numPoints 0 becomes the length of the
/// longest curve. A range of no extent, as a constant curve has, is widened to both sides by 1
/// or a thousandth of the value, so that the curve runs through the middle.
View viewOf(const PlotData &data, const QSize &size);

/// The view of a part of the data. The part is taken as it is, see limitedZoom().
View viewOf(const PlotData &data, const QSize &size, const Zoom &zoom);

/// All that can be shown: indices 0 to the number of X positions, and the vertical range.
Range allOfX(const PlotData &data);
Range allOfY(const PlotData &data);

/// Fewest X positions that a zoomed plot shows.
constexpr double fewestPoints = 4;

/// A part that lies within the data and is not too small to be drawn; a direction in which it
/// holds everything is left free.
Zoom limitedZoom(const PlotData &data, const Zoom &wanted);

/// The points to draw of a curve with `count` samples; empty where none is in sight.
IndexRange pointsInSight(const View &view, int count);

/// Column of a point: marginLeft + (index - first) * step, truncated. Values beyond 1e9 pixels
/// stop there.
int xPixel(const View &view, int index);

/// Row of a value, truncated. Values beyond 1e9 pixels, infinite ones too, stop there.
int yPixel(const View &view, double value);

/// What stands in proportion to heights: the value, or its decimal logarithm; and back.
double scaledY(const View &view, double value);
double unscaledY(const View &view, double scaled);

/// Mouse position as a whole pixel, halves away from zero.
QPoint wholePixel(const QPointF &position);

/// Point index (with fraction) and value at a pixel of the widget. Left of the plot the index is
/// 0, right of it the last index of the first curve; above and below it the value is 0. In a
/// zoomed view the index beyond the margins is that of the nearest edge.
QPointF dataAt(const View &view, const QPoint &pixel);

/// The straight lines behind the two conversions, without rounding and bounds: the place of an
/// index and a value in pixels, and back. The view has an area.
QPointF placeOf(const View &view, const QPointF &coords);
QPointF coordsOf(const View &view, const QPointF &place);

/// Point indices and values from one pixel to the next.
QPointF dataPerPixel(const View &view);

/// Labels of the Y axis of a view of all, every 50 pixels up and down from the value 0, or up from
/// the lower end when all is above 0. Those that would lie outside the widget are left out.
std::vector<Label> yLabels(const View &view, int precision);

/// Where a row of the X axis has a label: the point and its distance from the left margin, pixels.
struct LabelPlace {
    int offset = 0;
    int index = 0;
};

/// The places of a row in a view of all, every 150 x `every` pixels.
std::vector<LabelPlace> labelPlaces(const View &view, int every);

/// The rows of texts along the X axis, lowest first. Points without a text are left out.
std::vector<Label> xLabels1(const View &view, const PlotData &data);
std::vector<Label> xLabels2(const View &view, const PlotData &data);
std::vector<Label> xLabels3(const View &view, const PlotData &data);

/// Cuts times to whole seconds.
///
/// @param keepsDifferences  not where neighbours would then have the same text
void cutToSeconds(std::vector<Label> &labels, bool keepsDifferences);

/// The text of a point in a row, 0 for the lowest; empty where the row has none for it.
QString rowText(const PlotData &data, int row, int index);

/// Value that the X axis has at an index with fraction; straight lines between the points.
/// Beyond the values of an unequally spaced axis the nearest one.
double axisValue(const PlotAxis &axis, double index);
/// The index, with fraction, of a value; the inverse where the values rise or fall steadily.
double axisIndex(const PlotAxis &axis, double value);

/// Texts of the point at `x`, as dataAt() gives it, from each row that has labels, "-" where the
/// row has none for that point. The third row reads "-" at index 0.
QVector<QString> labelsAt(const PlotData &data, double x);

/// Time of a point, "hh:mm:ss"; empty when beginTime is invalid.
QString timeText(const PlotData &data, int index);

/// A coordinate with the digits that one pixel can tell apart.
///
/// @param perPixel  change of the coordinate from one pixel to the next
QString coordinateText(double value, double perPixel);

/// Colour name and visibility of a curve, from the data or else from the defaults.
QString colourOf(const PlotData &data, int curve);
bool isVisible(const PlotData &data, int curve);

} // namespace Plot
