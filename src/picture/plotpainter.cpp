#include "picture/plotpainter.h"

#include "picture/columnruns.h"
#include "picture/plotgeometry.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr int gridSpacing = 50; // pixels
constexpr int tickLength = 6;   // pixels

// White with a black edge.
void fillGround(QImage &picture, const Rows &rows)
{
    const QRgb white = QColor("white").rgb();
    const QRgb black = QColor("black").rgb();
    const int width = picture.width();
    const int lastRow = picture.height() - 1;
    for (int row = rows.first; row <= rows.last; ++row) {
        auto *line = reinterpret_cast<QRgb *>(picture.scanLine(row));
        std::fill_n(line, width, row == 0 || row == lastRow ? black : white);
        line[0] = line[width - 1] = black;
    }
}

// Draws a line for each pair of neighbouring points in sight, a few thousand at a time.
void drawSegments(QPainter &painter, const View &view, const std::vector<float> &curve)
{
    constexpr int mostLines = 4096;
    const IndexRange points = pointsInSight(view, int(curve.size()));
    QVector<QLine> lines;
    lines.reserve(std::clamp(points.end - points.begin, 0, mostLines));
    for (int i = points.begin + 1; i < points.end; ++i) {
        const float before = curve[size_t(i) - 1];
        const float after = curve[size_t(i)];
        if (!std::isnan(before) && !std::isnan(after))
            lines.append(QLine(xPixel(view, i - 1), yPixel(view, before), xPixel(view, i),
                               yPixel(view, after)));
        if (lines.size() == mostLines) {
            painter.drawLines(lines);
            lines.clear();
        }
    }
    painter.drawLines(lines);
    paintSamples(painter, view, curve);
}

struct Curve {
    const std::vector<float> *samples;
    const BlockExtremes *blocks;
    QColor colour;
};

std::vector<Curve> visibleCurves(const PlotData &data, const std::vector<std::vector<float>> &set,
                                 const std::vector<BlockExtremes> &blocks)
{
    static const BlockExtremes noBlocks;
    std::vector<Curve> curves;
    for (size_t i = 0; i < set.size(); ++i)
        if (isVisible(data, int(i)))
            curves.push_back({&set[i], i < blocks.size() ? &blocks[i] : &noBlocks,
                              QColor(colourOf(data, int(i)))});
    return curves;
}

// Where segments overlap a translucent pen darkens, so there each has to be drawn.
bool hasRuns(const View &view, const Curve &curve)
{
    return isDense(view) && curve.colour.alpha() == 255;
}

Rows clippedRows(const View &view, const Rows &rows)
{
    return {std::max(rows.first, view.clip().top()), std::min(rows.last, view.clip().bottom())};
}

void paintCurve(QPainter &painter, QImage &picture, const View &view, const Curve &curve)
{
    painter.setPen(curve.colour);
    if (!hasRuns(view, curve)) {
        drawSegments(painter, view, *curve.samples);
        return;
    }
    const ColumnRuns runs = columnRuns(view, *curve.samples, *curve.blocks);
    fillRuns(picture, runs, curve.colour.rgb(), clippedRows(view, {0, picture.height() - 1}));
    painter.drawLines(runs.lines);
}

// The runs of the first curve follow the ground while its rows are still in the processor's
// cache: a large picture is bound by the memory, and so passes through it once, not twice.
QVector<QLine> fillGroundAndRuns(QImage &picture, const View &view, const Curve &curve)
{
    constexpr int bandRows = 16;
    const ColumnRuns runs = columnRuns(view, *curve.samples, *curve.blocks);
    for (int first = 0; first < picture.height(); first += bandRows) {
        const Rows band{first, std::min(first + bandRows, picture.height()) - 1};
        fillGround(picture, band);
        fillRuns(picture, runs, curve.colour.rgb(), clippedRows(view, band));
    }
    return runs.lines;
}

void paintZeroLine(QPainter &painter, const View &view, const char *colour)
{
    if (view.y.min > 0 || view.allPoints < 2)
        return;
    const int y = yPixel(view, 0);
    painter.setPen(QColor(colour));
    painter.drawLine(xPixel(view, 0), y, xPixel(view, view.allPoints - 1), y);
}

// A text that would run over the right edge moves left until it just fits.
void paintLabelRow(QPainter &painter, const View &view, const std::vector<Label> &labels)
{
    for (Label label : labels) {
        const int last = view.width - 2 - painter.fontMetrics().horizontalAdvance(label.text);
        label.position.setX(std::min(label.position.x(), std::max(last, 0)));
        paintLabel(painter, label);
    }
}

void paintTicks(QPainter &painter, const View &view, int every)
{
    for (const LabelPlace &place : labelPlaces(view, every)) {
        const int x = marginLeft + place.offset;
        painter.drawLine(x, view.height - tickLength, x, view.height - 1);
        painter.drawLine(x, 0, x, tickLength - 1);
    }
}

void paintGrid(QPainter &painter, const View &view)
{
    painter.setPen(QColor(238, 238, 238));
    for (int offset = 0; offset < view.plotWidth(); offset += gridSpacing) {
        const int x = marginLeft + offset;
        painter.drawLine(x, marginTop, x, view.height - marginBottom);
    }
}

} // namespace

// The rows stand 15 pixels apart whatever size the application's font has.
QFont labelFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(12);
    return font;
}

void paintSamples(QPainter &painter, const View &view, const std::vector<float> &curve)
{
    constexpr double apart = 8; // pixels
    if (!view.isZoomed || view.step() < apart)
        return;
    const IndexRange points = pointsInSight(view, int(curve.size()));
    for (int i = points.begin; i < points.end; ++i) {
        if (std::isnan(curve[size_t(i)]))
            continue;
        const QPoint place(xPixel(view, i), yPixel(view, curve[size_t(i)]));
        if (view.clip().contains(place))
            painter.fillRect(QRect(place - QPoint(1, 1), QSize(3, 3)), painter.pen().color());
    }
}

void paintLabel(QPainter &painter, const Label &label)
{
    if (label.text.isEmpty())
        return;
    const int width = painter.fontMetrics().horizontalAdvance(label.text) + 1;
    const int x = label.position.x();
    const int y = label.position.y();
    painter.fillRect(x, y + 1 - 12, width, 12, QColor(255, 255, 255, 200));
    painter.drawText(label.position, label.text);
}

void paintPlot(const PlotData &data, const Zoom &zoom, const CurveBlocks &blocks, QImage &picture)
{
    if (!isPainted(picture.size()))
        return;
    const View view = viewOf(data, picture.size(), zoom);
    paintCurves(data, view, blocks, picture);
    QPainter painter(&picture);
    paintLabels(painter, data, view);
}

void paintCurves(const PlotData &data, const View &view, const CurveBlocks &blocks, QImage &picture)
{
    const Rows allRows{0, picture.height() - 1};
    if (data.messageMode) {
        fillGround(picture, allRows);
        return;
    }
    const std::vector<Curve> lower = visibleCurves(data, data.multiGraphs, blocks.multiGraphs);
    const std::vector<Curve> upper = visibleCurves(data, data.graphs, blocks.graphs);

    const std::vector<Curve> &lowest = lower.empty() ? upper : lower;
    const bool lowestHasRuns = !lowest.empty() && hasRuns(view, lowest.front());
    QVector<QLine> lowestLines;
    if (lowestHasRuns)
        lowestLines = fillGroundAndRuns(picture, view, lowest.front());
    else
        fillGround(picture, allRows);

    QPainter painter(&picture);
    if (view.isZoomed)
        painter.setClipRect(view.clip());
    const auto paintSet = [&](const std::vector<Curve> &curves) {
        for (const Curve &curve : curves)
            if (lowestHasRuns && &curve == &lowest.front()) {
                painter.setPen(curve.colour);
                painter.drawLines(lowestLines);
            } else {
                paintCurve(painter, picture, view, curve);
            }
    };
    if (!data.multiGraphs.empty()) {
        paintSet(lower);
        paintZeroLine(painter, view, "lightGray");
    }
    paintSet(upper);
    paintZeroLine(painter, view, "black");

    painter.setPen(QColor("green"));
    for (const int marker : data.markers) {
        const int x = xPixel(view, marker);
        painter.drawLine(x, marginTop, x, view.height - marginBottom);
    }
}

void paintLabels(QPainter &painter, const PlotData &data, const View &view)
{
    painter.setPen(QColor("black"));
    if (data.messageMode) {
        painter.setFont(QFont("Arial", 11));
        paintLabel(painter, {QPoint(30, 60), data.message});
        return;
    }
    painter.setFont(labelFont());
    paintLabelRow(painter, view, yLabels(view, yDecimals(view, data.yPrecision)));
    paintTicks(painter, view, data.labelEvery1);
    paintLabelRow(painter, view, xLabels1(view, data));
    paintLabelRow(painter, view, xLabels2(view, data));
    paintLabelRow(painter, view, xLabels3(view, data));
    if (data.markers.empty())
        paintGrid(painter, view);
    if (showsNothingFinite(data)) {
        painter.setPen(QColor("black"));
        paintLabel(painter, {QPoint(marginLeft + 20, marginTop + 30), noFiniteValues});
    }
}

} // namespace Plot
