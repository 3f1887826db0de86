#include "picture/plotmarks.h"

#include "calc/combfit.h"
#include "picture/legend.h"
#include "picture/plotpainter.h"
#include "picture/verticallines.h"
#include "results/reporttext.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>

namespace Plot {

namespace {

const QColor cursorColour(160, 0, 160);
const QColor harmonicsColour(190, 80, 0);
const QColor readOutColour(110, 110, 110);
constexpr int cursorAlpha = 120;
constexpr int harmonicAlpha = 60;
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

// A pale line, so that what it points at stays in sight, with strong ends beyond the curves.
void drawVertical(QPainter &painter, const View &view, double x, int alpha)
{
    const QRect area(marginLeft, marginTop, view.plotWidth(), view.plotHeight());
    if (x < area.left() || x > area.right() + 1)
        return;
    const QPen strong = painter.pen();
    for (const Rows &end : markerEnds(view))
        painter.drawLine(QLineF(x, end.first, x, end.last));
    QColor pale = strong.color();
    pale.setAlpha(alpha);
    painter.setPen(QPen(pale, 0, strong.style()));
    painter.drawLine(QLineF(x, area.top(), x, area.bottom() + 1));
    painter.setPen(strong);
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
        painter.drawRect(QRectF(place.x() - 3, place.y() - 3, 6, 6));
}

void paintCursors(QPainter &painter, const PlotData &data, const View &view, const Marks &marks)
{
    for (int number = 0; number < int(marks.cursors.size()); ++number) {
        const auto &cursor = marks.cursors[size_t(number)];
        if (!cursor)
            continue;
        painter.setPen(cursorColour);
        const QPointF place = samplePlace(view, data, *cursor);
        drawVertical(painter, view, place.x(), cursorAlpha);
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
    painter.setPen(harmonicsColour);
    for (const Harmonic &harmonic : harmonics) {
        drawVertical(painter, view, std::trunc(harmonic.x),
                     harmonic.number == 1 ? cursorAlpha : harmonicAlpha);
        if (harmonic.x - lastNumber < closestNumbers)
            continue;
        // below the axis, where no curve is
        const QString number = QString::number(harmonic.number);
        const int width = painter.fontMetrics().horizontalAdvance(number);
        paintLabel(painter,
                   {QPoint(int(harmonic.x) - width / 2, view.height - marginBottom + 17), number});
        lastNumber = harmonic.x;
    }
}

void paintReadOut(QPainter &painter, const PlotData &data, const View &view, int index)
{
    painter.setPen(QPen(readOutColour, 0, Qt::DotLine));
    drawVertical(painter, view, xPixel(view, index), cursorAlpha);
    painter.setPen(readOutColour);
    for (int curve = 0; curve < int(markedCurves(data).size()); ++curve)
        if (isVisible(data, curve))
            drawSample(painter, view, samplePlace(view, data, {curve, index}));
}

void paintTexts(QPainter &painter, const PlotData &data, const View &view, const Marks &marks)
{
    QStringList cursors = cursorTexts(data, marks);
    painter.setPen(cursors.isEmpty() ? QColor("black") : cursorColour);
    if (cursors.isEmpty())
        cursors = marks.hover;
    for (int line = 0; line < cursors.size(); ++line)
        paintLabel(painter, {QPoint(marginLeft, line == 0 ? upperLine : lowerLine), cursors[line]});
    const QString harmonics = harmonicsText(marks);
    if (harmonics.isEmpty())
        return;
    painter.setPen(harmonicsColour);
    const auto atRight = [&](int baseline, const QString &text) {
        const int width = painter.fontMetrics().horizontalAdvance(text);
        paintLabel(
            painter,
            {QPoint(std::max(marginLeft, view.width - marginRight - width), baseline), text});
    };
    // below the first line of the cursors that may be long
    atRight(cursors.isEmpty() ? upperLine : lowerLine, harmonics);
    if (marks.asksForNumber && cursors.isEmpty())
        atRight(lowerLine, "Is the line a higher harmonic? Type its number, 2 to 9");
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
    View pointed = view;
    pointed.first = coords.x() - reach / view.step();
    pointed.points = 2 * reach / view.step();
    const IndexRange around = pointsInSight(pointed, view.allPoints);
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
        const double nearestValue = std::fmin(std::fmax(coords.y(), low), high);
        const double away =
            std::abs(placeOf(view, {0, coords.y()}).y() - placeOf(view, {0, nearestValue}).y());
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

bool isAmplitudeSpectrum(const PlotData &data)
{
    return isSpectrum(data) && data.hasAmplitudes;
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
    const double frequency = *marks.fundamental;
    const double error = marks.fundamentalError;
    const auto text = [](double value, double sigma) {
        return sigma > 0 ? ReportText::withError(value, sigma)
                         : QString::number(value, 'g', significantDigits);
    };
    QString harmonics =
        QString("harmonics of %1 Hz, period %2 s")
            .arg(text(frequency, error), text(1 / frequency, error / (frequency * frequency)));
    if (marks.fittedLines > 0)
        harmonics += QString(", from %1 line%2")
                         .arg(marks.fittedLines)
                         .arg(marks.fittedLines == 1 ? "" : "s");
    return harmonics;
}

void fitHarmonics(Marks &marks, const PlotData &data, double frequency, int number)
{
    marks.fundamental = frequency / number;
    marks.fundamentalError = 0;
    marks.fittedLines = 0;
    const auto &curves = markedCurves(data);
    int curve = 0;
    while (curve < int(curves.size()) && !isVisible(data, curve))
        ++curve;
    const double step = data.x.step;
    if (!isAmplitudeSpectrum(data) || curve == int(curves.size()) || !(step > 0) ||
        data.x.first != 0 || !data.x.values.empty())
        return;
    const std::vector<float> &shown = curves[size_t(curve)];
    const std::vector<double> amplitudes(shown.begin(), shown.end());
    const Tools::CombFit fit = Tools::fitComb(amplitudes, *marks.fundamental / step, number);
    if (fit.lines == 0)
        return;
    marks.fundamental = fit.fundamental * step;
    marks.fundamentalError = fit.error * step;
    marks.fittedLines = fit.lines;
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
        paintLegend(painter, data, legendArea(view), *marks.legend);
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
