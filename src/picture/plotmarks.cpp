#include "picture/plotmarks.h"

#include "picture/legend.h"
#include "picture/plotpainter.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>

namespace Plot {

namespace {

const QColor cursorColour(160, 0, 160);
const QColor harmonicsColour(230, 110, 0);
const QColor readOutColour(110, 110, 110);
constexpr double closestHarmonics = 3; // pixels
constexpr double closestNumbers = 26;  // pixels
constexpr double mostHarmonics = 1e9;
constexpr int significantDigits = 7; // of values and reciprocals
constexpr int upperLine = 14;        // baselines of the two lines of text above the plot
constexpr int lowerLine = 27;

QString withUnit(const QString &number, const QString &unit)
{
    return unit.isEmpty() ? number : number + " " + unit;
}

QString valueText(double value, const QString &unit)
{
    return std::isnan(value) ? "-" : withUnit(QString::number(value, 'g', significantDigits), unit);
}

// Change of X from a point to the next.
double axisStepAt(const PlotAxis &axis, double index)
{
    const double ahead = axisValue(axis, index + 1) - axisValue(axis, index);
    return std::abs(ahead != 0 ? ahead : axisValue(axis, index) - axisValue(axis, index - 1));
}

// An X value, or a difference of two, where neighbouring points are `step` apart. One digit more
// than the step: points need not stand at round values.
QString digitsOf(double value, double step)
{
    return coordinateText(value, step / 10);
}

QString reciprocalUnit(const QString &unit)
{
    if (unit == "s")
        return "Hz";
    if (unit == "Hz")
        return "s";
    return unit.isEmpty() ? unit : "1/(" + unit + ")";
}

void drawVertical(QPainter &painter, const View &view, double x)
{
    const QRect area(marginLeft, marginTop, view.plotWidth(), view.plotHeight());
    if (x >= area.left() && x <= area.right() + 1)
        painter.drawLine(QLineF(x, area.top(), x, area.bottom() + 1));
}

// The place of a point, on the pixels where its curve is drawn.
QPointF samplePlace(const View &view, const PlotData &data, const Cursor &cursor)
{
    const double value = valueAt(data, cursor);
    return QPointF(xPixel(view, cursor.index), std::isnan(value) ? -1 : yPixel(view, value));
}

void drawSample(QPainter &painter, const View &view, const QPointF &place)
{
    if (view.clip().contains(place.toPoint()) && place.y() >= marginTop)
        painter.fillRect(QRectF(place.x() - 2, place.y() - 2, 5, 5), painter.pen().color());
}

void paintCursors(QPainter &painter, const PlotData &data, const View &view, const Marks &marks)
{
    for (int number = 0; number < int(marks.cursors.size()); ++number) {
        const auto &cursor = marks.cursors[size_t(number)];
        if (!cursor)
            continue;
        painter.setPen(cursorColour);
        const QPointF place = samplePlace(view, data, *cursor);
        drawVertical(painter, view, place.x());
        drawSample(painter, view, place);
        if (place.x() >= marginLeft && place.x() <= view.width - marginRight)
            paintLabel(painter,
                       {QPoint(int(place.x()) + 3, marginTop + 12), QString::number(number + 1)});
    }
}

void paintHarmonics(QPainter &painter, const PlotData &data, const View &view, double fundamental)
{
    const std::vector<Harmonic> harmonics = harmonicsInSight(data, view, fundamental);
    double lastNumber = -closestNumbers;
    for (const Harmonic &harmonic : harmonics) {
        QColor colour = harmonicsColour;
        colour.setAlpha(harmonic.number == 1 ? 255 : 150);
        painter.setPen(colour);
        drawVertical(painter, view, std::trunc(harmonic.x));
        if (harmonic.x - lastNumber < closestNumbers)
            continue;
        painter.setPen(harmonicsColour);
        paintLabel(painter, {QPoint(int(harmonic.x) + 3, view.height - marginBottom - 3),
                             QString::number(harmonic.number)});
        lastNumber = harmonic.x;
    }
}

void paintReadOut(QPainter &painter, const PlotData &data, const View &view, int index)
{
    painter.setPen(QPen(readOutColour, 0, Qt::DotLine));
    drawVertical(painter, view, xPixel(view, index));
    painter.setPen(readOutColour);
    for (int curve = 0; curve < int(markedCurves(data).size()); ++curve)
        if (isVisible(data, curve))
            drawSample(painter, view, samplePlace(view, data, {curve, index}));
}

void paintTexts(QPainter &painter, const PlotData &data, const View &view, const Marks &marks)
{
    const QStringList cursors = cursorTexts(data, marks);
    painter.setPen(cursorColour);
    for (int line = 0; line < cursors.size(); ++line)
        paintLabel(painter, {QPoint(marginLeft, line == 0 ? upperLine : lowerLine), cursors[line]});
    const QString harmonics = harmonicsText(marks);
    if (harmonics.isEmpty())
        return;
    painter.setPen(harmonicsColour);
    const int width = painter.fontMetrics().horizontalAdvance(harmonics);
    const int right = std::max(marginLeft, view.width - marginRight - width);
    // at the right, below the first line of the cursors that may be long
    paintLabel(painter, {QPoint(right, cursors.isEmpty() ? upperLine : lowerLine), harmonics});
}

} // namespace

const std::vector<std::vector<float>> &markedCurves(const PlotData &data)
{
    return data.graphs.empty() ? data.multiGraphs : data.graphs;
}

void moveCursors(Marks &marks, const IndexMap &map, const Range &all)
{
    for (auto &cursor : marks.cursors) {
        if (!cursor)
            continue;
        // Among more or fewer points a cursor would come to stand beside its place.
        const double index = std::round(map(cursor->index));
        if (map.factor == 1 && index >= 0 && index < all.max)
            cursor->index = int(index);
        else
            cursor.reset();
    }
}

double valueAt(const PlotData &data, const Cursor &cursor)
{
    const auto &curves = markedCurves(data);
    if (cursor.curve < 0 || size_t(cursor.curve) >= curves.size())
        return NAN;
    const std::vector<float> &curve = curves[size_t(cursor.curve)];
    const bool isInside = cursor.index >= 0 && size_t(cursor.index) < curve.size();
    return isInside ? double(curve[size_t(cursor.index)]) : NAN;
}

std::optional<Cursor> nearestSample(const PlotData &data, const View &view, const QPointF &coords)
{
    constexpr double reach = 2;   // pixels to both sides: steep lines count as a whole
    constexpr double atCurve = 4; // pixels
    const int index = int(std::clamp<double>(std::round(coords.x()), 0, view.allPoints - 1));
    const IndexRange around =
        pointsInSight({view.width, view.height, coords.x() - reach / view.step(),
                       2 * reach / view.step(), view.y, view.allPoints},
                      view.allPoints);
    std::optional<Cursor> nearest;
    double distance = atCurve;
    for (int curve = 0; curve < int(markedCurves(data).size()); ++curve) {
        if (!isVisible(data, curve) || std::isnan(valueAt(data, {curve, index})))
            continue;
        if (!nearest)
            nearest = Cursor{curve, index};
        double low = std::numeric_limits<double>::infinity();
        double high = -low;
        for (int i = around.begin; i < around.end; ++i) {
            low = std::fmin(low, valueAt(data, {curve, i}));
            high = std::fmax(high, valueAt(data, {curve, i}));
        }
        const double beside = std::max({0.0, low - coords.y(), coords.y() - high});
        const double away = beside / dataPerPixel(view).y();
        if (away < distance) {
            distance = away;
            nearest = Cursor{curve, index};
        }
    }
    return nearest;
}

bool isSpectrum(const PlotData &data)
{
    return data.x.unit == "Hz";
}

double peakFrequency(const PlotData &data, double index, double reach)
{
    const auto &curves = markedCurves(data);
    for (int curve = 0; curve < int(curves.size()); ++curve) {
        const double last = double(curves[size_t(curve)].size()) - 1;
        if (!isVisible(data, curve) || last < 0)
            continue;
        const int begin = int(std::clamp(std::ceil(index - reach), 0.0, last));
        const int end = int(std::clamp(std::floor(index + reach), 0.0, last));
        std::optional<int> highest;
        for (int i = begin; i <= end; ++i) {
            const double value = valueAt(data, {curve, i});
            if (!std::isnan(value) && (!highest || value > valueAt(data, {curve, *highest})))
                highest = i;
        }
        if (highest)
            return axisValue(data.x, *highest);
    }
    return axisValue(data.x, index);
}

QString axisText(const PlotData &data, double index)
{
    if (data.x.name.isEmpty())
        return "point " + QString::number(qint64(std::round(index)));
    return withUnit(digitsOf(axisValue(data.x, index), axisStepAt(data.x, index)), data.x.unit);
}

QStringList cursorTexts(const PlotData &data, const Marks &marks)
{
    QStringList both;
    for (int number = 0; number < int(marks.cursors.size()); ++number)
        if (const auto &cursor = marks.cursors[size_t(number)])
            both << QString("%1:  %2,  %3")
                        .arg(number + 1)
                        .arg(axisText(data, cursor->index),
                             valueText(valueAt(data, *cursor), data.yUnit));
    if (both.size() < 2)
        return both;
    const Cursor &first = *marks.cursors[0];
    const Cursor &second = *marks.cursors[1];
    const double way = axisValue(data.x, second.index) - axisValue(data.x, first.index);
    const QString wayText = withUnit(digitsOf(way, axisStepAt(data.x, second.index)), data.x.unit);
    QString differences =
        QString("2 - 1:  %1,  %2")
            .arg(wayText, valueText(valueAt(data, second) - valueAt(data, first), data.yUnit));
    if (way != 0)
        differences += "      1 / (2 - 1):  " + valueText(1 / way, reciprocalUnit(data.x.unit));
    return {both.join("      "), differences};
}

QString harmonicsText(const Marks &marks)
{
    if (!marks.fundamental)
        return {};
    return QString("harmonics of %1 Hz, period %2 s")
        .arg(QString::number(*marks.fundamental, 'g', significantDigits),
             QString::number(1 / *marks.fundamental, 'g', significantDigits));
}

std::vector<Harmonic> harmonicsInSight(const PlotData &data, const View &view, double fundamental)
{
    std::vector<Harmonic> harmonics;
    if (!(fundamental > 0) || !std::isfinite(fundamental) || view.plotWidth() <= 0)
        return harmonics;
    const auto place = [&](double number) {
        return placeOf(view, {axisIndex(data.x, number * fundamental), 0}).x();
    };
    const double left = axisValue(data.x, view.first);
    const double right = axisValue(data.x, std::min(view.x().max, double(view.allPoints - 1)));
    const double first = std::max(1.0, std::ceil(std::min(left, right) / fundamental));
    const double last = std::floor(std::max(left, right) / fundamental);
    if (last - first > view.plotWidth() / closestHarmonics || last > mostHarmonics) {
        if (first == 1 && last >= 1)
            harmonics.push_back({1, place(1)});
        return harmonics;
    }
    if (last >= first)
        for (int number = int(first); number <= int(last); ++number)
            harmonics.push_back({number, place(number)});
    return harmonics;
}

void paintMarks(QPainter &painter, const PlotData &data, const View &view, const Marks &marks)
{
    painter.save();
    painter.setFont(labelFont());
    if (marks.fundamental)
        paintHarmonics(painter, data, view, *marks.fundamental);
    paintCursors(painter, data, view, marks);
    if (marks.readOut)
        paintReadOut(painter, data, view, *marks.readOut);
    paintTexts(painter, data, view, marks);
    if (marks.legend)
        paintLegend(painter, data, *marks.legend);
    // not by clipping: that is lost on the way to a file
    paintSelection(painter, view.isZoomed
                                ? marks.selection.intersected(view.clip().adjusted(0, 0, -1, -1))
                                : marks.selection);
    painter.restore();
}

void paintSelection(QPainter &painter, const QRect &selection)
{
    if (selection.isNull())
        return;
    painter.setPen(QColor("black"));
    painter.setBrush(QColor(0, 50, 200, 100));
    painter.drawRect(selection);
}

} // namespace Plot
