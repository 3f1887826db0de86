#include "plot/plotpainter.h"

#include "plot/columnruns.h"
#include "plot/plotgeometry.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr int gridSpacing = 50; // pixels
constexpr int tickLength = 6;   // pixels

void paintFrame(QPainter &painter, const QSize &size)
{
    const int right = size.width() - 1;
    const int bottom = size.height() - 1;
    painter.setPen(QColor("black"));
    painter.drawLine(0, 0, right, 0);
    painter.drawLine(0, bottom, right, bottom);
    painter.drawLine(0, 0, 0, bottom);
    painter.drawLine(right, 0, right, bottom);
}

QVector<QLine> segments(const View &view, const std::vector<float> &curve)
{
    QVector<QLine> lines;
    const int count = std::min(view.points, int(curve.size()));
    lines.reserve(std::max(0, count - 1));
    for (int i = 1; i < count; ++i) {
        const float before = curve[size_t(i) - 1];
        const float after = curve[size_t(i)];
        if (!std::isnan(before) && !std::isnan(after))
            lines.append(QLine(xPixel(view, i - 1), yPixel(view, before), xPixel(view, i),
                               yPixel(view, after)));
    }
    return lines;
}

void paintCurve(QPainter &painter, QImage &picture, const View &view,
                const std::vector<float> &curve, const QColor &colour)
{
    painter.setPen(colour);
    // Where segments overlap a translucent pen darkens, so each has to be drawn.
    if (!isDense(view) || colour.alpha() != 255) {
        painter.drawLines(segments(view, curve));
        return;
    }
    const ColumnRuns runs = columnRuns(view, curve);
    fillRuns(picture, runs, colour.rgb());
    painter.drawLines(runs.lines);
}

void paintSet(QPainter &painter, QImage &picture, const View &view, const PlotData &data,
              const std::vector<std::vector<float>> &set)
{
    for (int curve = 0; curve < int(set.size()); ++curve)
        if (isVisible(data, curve))
            paintCurve(painter, picture, view, set[size_t(curve)], QColor(colourOf(data, curve)));
}

void paintZeroLine(QPainter &painter, const View &view, const char *colour)
{
    if (view.y.min > 0 || view.points < 2)
        return;
    const int y = yPixel(view, 0);
    painter.setPen(QColor(colour));
    painter.drawLine(xPixel(view, 0), y, xPixel(view, view.points - 1), y);
}

// On a box of translucent white, so that the text stays legible over curves.
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

void paintLabelRow(QPainter &painter, const std::vector<Label> &labels)
{
    for (const Label &label : labels)
        paintLabel(painter, label);
}

void paintTicks(QPainter &painter, const View &view, int every)
{
    for (const int offset : labelOffsets(view, every)) {
        const int x = marginLeft + offset;
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

// The rows stand 15 pixels apart whatever size the application's font has.
QFont labelFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(12);
    return font;
}

} // namespace

void paintPlot(const PlotData &data, const QRect &selection, QImage &picture)
{
    if (!isPainted(picture.size()))
        return;
    paintCurves(data, picture);
    QPainter painter(&picture);
    paintLabels(painter, data, picture.size());
    if (!data.messageMode)
        paintSelection(painter, selection);
}

void paintCurves(const PlotData &data, QImage &picture)
{
    picture.fill(QColor("white"));
    QPainter painter(&picture);
    paintFrame(painter, picture.size());
    if (data.messageMode)
        return;

    const View view = viewOf(data, picture.size());
    if (!data.multiGraphs.empty()) {
        paintSet(painter, picture, view, data, data.multiGraphs);
        paintZeroLine(painter, view, "lightGray");
    }
    paintSet(painter, picture, view, data, data.graphs);
    paintZeroLine(painter, view, "black");

    painter.setPen(QColor("green"));
    for (const int marker : data.markers) {
        const int x = xPixel(view, marker);
        painter.drawLine(x, marginTop, x, view.height - marginBottom);
    }
}

void paintLabels(QPainter &painter, const PlotData &data, const QSize &size)
{
    painter.setPen(QColor("black"));
    if (data.messageMode) {
        painter.setFont(QFont("Arial", 11));
        paintLabel(painter, {QPoint(30, 60), data.message});
        return;
    }
    const View view = viewOf(data, size);
    painter.setFont(labelFont());
    paintLabelRow(painter, yLabels(view, data.yPrecision));
    paintTicks(painter, view, data.labelEvery1);
    paintLabelRow(painter, xLabels1(view, data));
    paintLabelRow(painter, xLabels2(view, data));
    paintLabelRow(painter, xLabels3(view, data));
    if (data.markers.empty())
        paintGrid(painter, view);
}

void paintSelection(QPainter &painter, const QRect &selection)
{
    if (selection.isNull())
        return;
    painter.setPen(QColor("black"));
    painter.setBrush(QColor(0, 50, 200, 100));
    painter.drawRect(selection.normalized());
}

} // namespace Plot
