#include "picture/plotpainter.h"

#include "picture/columnruns.h"
#include "picture/plotgeometry.h"
#include "picture/verticallines.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace Plot {

namespace {

constexpr int tickLength = 6; // pixels
constexpr int markerNameBaseline = marginTop - 8;
constexpr int usualFontPixels = 12;
constexpr int yBaseLeft = 4;
const QColor nameColour(90, 90, 90);

// What lies below the curves, so that the grid never cuts them.
struct Ground {
    std::vector<int> gridColumns;
    Rows gridRows;
};

// White with a black edge, and the grid.
void fillGround(QImage &picture, const Ground &ground, const Rows &rows)
{
    const QRgb white = QColor("white").rgb();
    const QRgb black = QColor("black").rgb();
    const int width = picture.width();
    const int lastRow = picture.height() - 1;
    for (int row = rows.first; row <= rows.last; ++row) {
        auto *line = reinterpret_cast<QRgb *>(picture.scanLine(row));
        std::fill_n(line, width, row == 0 || row == lastRow ? black : white);
        if (row >= ground.gridRows.first && row <= ground.gridRows.last && row < lastRow)
            for (const int column : ground.gridColumns)
                line[column] = gridColour;
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
QVector<QLine> fillGroundAndRuns(QImage &picture, const Ground &ground, const View &view,
                                 const Curve &curve)
{
    constexpr int bandRows = 16;
    const ColumnRuns runs = columnRuns(view, *curve.samples, *curve.blocks);
    for (int first = 0; first < picture.height(); first += bandRows) {
        const Rows band{first, std::min(first + bandRows, picture.height()) - 1};
        fillGround(picture, ground, band);
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

int rowHeightOf(const QFont &font)
{
    constexpr int most = 20; // so that three rows find room below the plot
    return std::min(QFontMetrics(font).ascent() + 5, most);
}

void paintTicks(QPainter &painter, const View &view, const std::vector<int> &ticks)
{
    for (const int offset : ticks) {
        const int x = marginLeft + offset;
        painter.drawLine(x, view.height - tickLength, x, view.height - 1);
        painter.drawLine(x, 0, x, tickLength - 1);
    }
}

// Smaller than the numbers, and so small that the names of rows fit beside the plot.
QFont nameFont(const QFont &numbers, const QStringList &rowNames)
{
    constexpr int smaller = 2; // pixels
    constexpr int room = marginLeft - 6;
    QFont font = numbers;
    font.setPixelSize(numbers.pixelSize() - smaller);
    const auto fits = [&] {
        return std::all_of(rowNames.begin(), rowNames.end(), [&](const QString &name) {
            return QFontMetrics(font).horizontalAdvance(name) <= room;
        });
    };
    while (font.pixelSize() > usualFontPixels - smaller && !fits())
        font.setPixelSize(font.pixelSize() - 1);
    return font;
}

// Names of the axes, smaller and paler than the numbers.
void paintNames(QPainter &painter, const PlotData &data, const View &view)
{
    const int rowHeight = rowHeightOf(painter.font());
    painter.setFont(nameFont(painter.font(), data.rowNames));
    painter.setPen(nameColour);
    const QFontMetrics metrics = painter.fontMetrics();
    for (Label &name : axisNames(
             view, data, [&](const QString &text) { return metrics.horizontalAdvance(text); },
             rowHeight))
        paintLabel(painter, name);
}

// A name that would touch the one before it stands a line higher.
void paintMarkerNames(QPainter &painter, const PlotData &data, const View &view)
{
    constexpr int higher = 11; // pixels
    painter.setPen(QColor("green"));
    const std::size_t named = std::min(data.markers.size(), data.markerStyles.size());
    int taken = 0;
    int baseline = markerNameBaseline;
    for (std::size_t i = 0; i < named; ++i) {
        const int x = xPixel(view, data.markers[i]);
        const QString &name = data.markerStyles[i].name;
        if (name.isEmpty() || x < marginLeft || x > view.width - marginRight)
            continue;
        const int width = painter.fontMetrics().horizontalAdvance(name);
        const bool isFree = x - width / 2 > taken;
        baseline = isFree || baseline < markerNameBaseline ? markerNameBaseline : baseline - higher;
        paintLabel(painter, {QPoint(x - width / 2, baseline), name});
        taken = x + width / 2 + 1;
    }
}

} // namespace

QFont fontWithin(const QFont &font, int least, int most)
{
    QFont fitting = font;
    fitting.setPixelSize(std::clamp(QFontInfo(font).pixelSize(), least, most));
    return fitting;
}

QFont fontForWidth(const QFont &font, const QString &text, int width, int least)
{
    QFont fitting = font;
    int pixels = QFontInfo(font).pixelSize();
    while (pixels > least && QFontMetrics(fitting).horizontalAdvance(text) > width)
        fitting.setPixelSize(--pixels);
    return fitting;
}

// The rows stand 15 pixels apart whatever size the application's font has.
QFont labelFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(usualFontPixels);
    return font;
}

QFont labelFont(const View &view)
{
    constexpr int least = 9;
    constexpr int most = 18; // the margins hold no more
    return view.isZoomed ? fontWithin(QGuiApplication::font(), least, most) : labelFont();
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
    constexpr int usualHeight = 12;
    const int width = painter.fontMetrics().horizontalAdvance(label.text) + 1;
    const int height = std::max(usualHeight, painter.font().pixelSize());
    const int x = label.position.x();
    const int y = label.position.y();
    painter.fillRect(x, y + 1 - height, width, height, QColor(255, 255, 255, 200));
    painter.drawText(label.position, label.text);
}

void paintPlot(const PlotData &data, const Zoom &zoom, const CurveBlocks &blocks, QImage &picture)
{
    if (!isPainted(picture.size()))
        return;
    const View view = viewOf(data, picture.size(), zoom);
    const XAxisLabels x = xAxisOf(data, view, picture);
    paintCurves(data, view, blocks, x, picture);
    QPainter painter(&picture);
    paintLabels(painter, data, view, x);
}

void paintCurves(const PlotData &data, const View &view, const CurveBlocks &blocks,
                 const XAxisLabels &x, QImage &picture)
{
    const Rows allRows{0, picture.height() - 1};
    if (data.messageMode) {
        fillGround(picture, {}, allRows);
        return;
    }
    Ground ground = {gridColumns(data, x), {marginTop, view.height - marginBottom}};
    std::erase_if(ground.gridColumns,
                  [&](int column) { return column < 1 || column >= picture.width() - 1; });
    const std::vector<Curve> lower = visibleCurves(data, data.multiGraphs, blocks.multiGraphs);
    const std::vector<Curve> upper = visibleCurves(data, data.graphs, blocks.graphs);

    const std::vector<Curve> &lowest = lower.empty() ? upper : lower;
    const bool lowestHasRuns = !lowest.empty() && hasRuns(view, lowest.front());
    QVector<QLine> lowestLines;
    if (lowestHasRuns)
        lowestLines = fillGroundAndRuns(picture, ground, view, lowest.front());
    else
        fillGround(picture, ground, allRows);

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

    painter.end();
    paintMarkers(picture, data, view);
    paintLeftOut(picture, data, view);
}

XAxisLabels xAxisOf(const PlotData &data, const View &view, const QPaintDevice &device)
{
    if (data.messageMode)
        return {};
    const QFont font = labelFont(view);
    const QFontMetrics metrics(font, &device);
    return xAxisLabels(
        view, data, [&](const QString &text) { return metrics.horizontalAdvance(text); },
        rowHeightOf(font));
}

void paintLabels(QPainter &painter, const PlotData &data, const View &view, const XAxisLabels &x)
{
    painter.setPen(QColor("black"));
    if (data.messageMode) {
        painter.setFont(QFont("Arial", 11));
        constexpr QPoint place(30, 60);
        const int room = view.width - 2 * place.x();
        if (painter.fontMetrics().horizontalAdvance(data.message) <= room)
            paintLabel(painter, {place, data.message});
        else
            painter.drawText(QRect(place.x(), place.y() - painter.fontMetrics().ascent(), room,
                                   view.height - place.y()),
                             Qt::TextWordWrap, data.message);
        return;
    }
    painter.setFont(labelFont(view));
    const QFontMetrics metrics = painter.fontMetrics();
    const YAxisLabels y = yAxisLabels(view, data.yPrecision, [&](const QString &text) {
        return metrics.horizontalAdvance(text);
    });
    for (const Label &label : y.labels)
        paintLabel(painter, label);
    paintTicks(painter, view, x.ticks);
    for (const Label &label : x.labels)
        paintLabel(painter, label);
    paintLabel(painter, {QPoint(yBaseLeft, marginTop - 4), y.base});
    paintMarkerNames(painter, data, view);
    paintNames(painter, data, view);
    if (showsNothingFinite(data)) {
        painter.setPen(QColor("black"));
        paintLabel(painter, {QPoint(marginLeft + 20, marginTop + 30), noFiniteValues});
    }
}

void paintXAxis(QPainter &painter, const PlotData &data, const View &view, int bottom)
{
    painter.setPen(QColor("black"));
    painter.setFont(labelFont(view));
    const XAxisLabels x = xAxisOf(data, view, *painter.device());
    for (const int offset : x.ticks)
        painter.drawLine(marginLeft + offset, bottom, marginLeft + offset, bottom + tickLength);
    for (const Label &label : x.labels)
        paintLabel(painter, label);
    PlotData rows = data;
    rows.yName.clear(); // that of the plot
    paintNames(painter, rows, view);
}

std::vector<Range> leftOutInSight(const PlotData &data, const View &view)
{
    constexpr double least = 3; // pixels
    std::vector<Range> shown;
    const double last = view.width - marginRight;
    for (const Range &part : data.leftOut) {
        double from = placeOf(view, {part.min, 0}).x();
        double to = placeOf(view, {part.max, 0}).x();
        const double missing = std::max(0.0, least - (to - from));
        from -= missing / 2;
        to += missing / 2;
        if (to > marginLeft && from < last)
            shown.push_back({std::max<double>(from, marginLeft), std::min(to, last)});
    }
    return shown;
}

void paintLeftOut(QImage &picture, const PlotData &data, const View &view)
{
    const Rows rows = {marginTop, view.height - marginBottom - 1};
    for (const Range &part : leftOutInSight(data, view)) {
        std::vector<int> columns(std::size_t(part.max) - std::size_t(part.min));
        std::iota(columns.begin(), columns.end(), int(part.min));
        paintBehind(picture, columns, rows, leftOutColour);
        paintBehind(picture, columns, markerEnds(view)[0], leftOutEndColour);
    }
}

std::vector<int> gridColumns(const PlotData &data, const XAxisLabels &x)
{
    if (!data.markers.empty())
        return {};
    std::vector<int> columns = x.grid;
    for (int &column : columns)
        column += marginLeft;
    return columns;
}

void paintMarkers(QImage &picture, const PlotData &data, const View &view)
{
    const Rows rows = {marginTop, view.height - marginBottom};
    for (std::size_t i = 0; i < data.markers.size(); ++i) {
        const int column = xPixel(view, data.markers[i]);
        if (view.isZoomed && (column < marginLeft || column > view.width - marginRight))
            continue;
        const bool hasStyle = i < data.markerStyles.size();
        paintBehind(picture, column, rows, markerColour,
                    hasStyle ? data.markerStyles[i].dashes : std::vector<int>());
        for (const Rows &end : markerEnds(view))
            paintBehind(picture, column, end, markerColour, {});
    }
}

} // namespace Plot
