#include "picture/plotgeometry.h"

#include "picture/plotmarks.h"
#include "picture/straightplot.h"
#include "support/testmain.h"

#include <cmath>

namespace {

const QSize usualSize(690, 400); // leaves the curves 600 x 300
const QSize lowSize(690, 250);   // leaves them 600 x 150

PlotData ranged(double yMin, double yMax, int numPoints = 100)
{
    return TestSupport::dataOf({{1, 2}, {3, 4, 5, 6}}, numPoints, yMin, yMax);
}

// Results as texts, so that one table can hold them all.

QString rangeText(const Plot::Range &range)
{
    return QString("%1..%2").arg(range.min).arg(range.max);
}

QString rangeOf(const std::vector<std::vector<float>> &curves)
{
    PlotData data = ranged(0, 0);
    data.multiGraphs = curves;
    return rangeText(Plot::verticalRange(data));
}

QString pixelOf(const PlotData &data, int index, double value)
{
    const Plot::View view = Plot::viewOf(data, usualSize);
    return QString("%1,%2").arg(Plot::xPixel(view, index)).arg(Plot::yPixel(view, value));
}

QString pointAt(int x, int y)
{
    const QPointF point = Plot::dataAt(Plot::viewOf(ranged(-10, 50), usualSize), {x, y});
    return QString("%1,%2").arg(point.x()).arg(point.y());
}

QString listed(const std::vector<Plot::Label> &labels)
{
    QStringList texts;
    for (const auto &[position, text] : labels)
        texts.append(QString("%1,%2 %3").arg(position.x()).arg(position.y()).arg(text));
    return texts.join("; ");
}

// A plot of 100 points over 600 x 300 pixels, zoomed to points 20.5 to 60.5 and to half of Y.
const Plot::Zoom part = {Plot::Range{20.5, 60.5}, Plot::Range{0, 30}};

QString zoomed(const Plot::Zoom &wanted)
{
    const Plot::Zoom zoom = Plot::limitedZoom(ranged(-10, 50), wanted);
    return (zoom.x ? rangeText(*zoom.x) : "all") + " " + (zoom.y ? rangeText(*zoom.y) : "all");
}

QString historyOf(const std::vector<std::pair<double, int>> &steps)
{
    Plot::ZoomHistory history;
    for (const auto &[first, gesture] : steps)
        history.note({Plot::Range{first, 100}, {}}, gesture);
    QString text;
    while (const auto zoom = history.back())
        text += QString::number(zoom->x->min) + " ";
    return text;
}

QString yLabels(double yMin, double yMax, int precision)
{
    return listed(Plot::yLabels(Plot::viewOf(ranged(yMin, yMax), lowSize), precision));
}

} // namespace

class TestPlotGeometry : public QObject {
    Q_OBJECT

private slots:
    void ranges();
    void texts();
    void zooms();
    void viewsOfAPart();
    void marks();
};

void TestPlotGeometry::ranges()
{
    QCOMPARE(rangeOf({{5}, {7, 6}}), QString("5..7")); // all curves of the second set
    QCOMPARE(rangeOf({{100001, 200000}}), QString("100000..200000")); // above the bound
    QCOMPARE(rangeOf({{NAN, -2, -INFINITY, 1}}), QString("-2..1"));

    QCOMPARE(rangeOf({{NAN, INFINITY}, {-INFINITY}}), QString("0..0")); // nothing finite
    QCOMPARE(rangeOf({{}}), QString("0..0"));                           // no samples

    QCOMPARE(pixelOf(ranged(0, 100), 1, 0.5), QString("66,328"));   // row truncated upwards
    QCOMPARE(pixelOf(ranged(0, 100, 7), 1, 0), QString("145,330")); // column truncated
    QCOMPARE(pixelOf(ranged(0, 100, 0), 4, 0), QString("660,330")); // longest curve
    // beyond an int
    QCOMPARE(pixelOf(ranged(0, 1e-9), 2000000000, 1e9), QString("1000000000,-1000000000"));
    QCOMPARE(pixelOf(ranged(1e30, 1e30), 0, 1e30), QString("60,180")); // constant in the middle
    QCOMPARE(pointAt(59, 331), QString("0,0"));                        // left of the plot and below
    // right of it, the end of the first curve, and above
    QCOMPARE(pointAt(661, 29), QString("1,0"));

    // up from below
    QCOMPARE(yLabels(30, 180, 0), QString("14,184 30; 14,134 80; 14,84 130; 14,34 180"));
    // up and down from zero
    QCOMPARE(yLabels(-61, 89, 1), QString("14,123 0.0; 14,73 50.0; 14,173 -50.0"));
    // none within 10 pixels of the end
    QCOMPARE(yLabels(-60, 90, 0), QString("14,124 0; 14,74 50"));
    // minus nothing loses its sign
    QCOMPARE(yLabels(-0.09, 0, 1), QString("14,34 0.0; 14,84 0; 14,134 -0.1"));
    // 3 decimals keep it
    QCOMPARE(yLabels(-0.0004, 0, 3), QString("14,34 0.000; 14,84 -0.000; 14,134 -0.000"));
    QCOMPARE(yLabels(-0.4, 0.7, 3), QString("14,129 0.000; 14,79 0.367")); // zero has no sign
    // few far below zero
    QCOMPARE(yLabels(-1048576, -1048576 + 1.0 / 1024, 0),
             QString("14,34 -1048576; 14,84 -1048576; 14,134 -1048576"));
}

void TestPlotGeometry::texts()
{
    PlotData data = ranged(0, 1, 90); // 450 pixels are 67.5 points and round to 68
    const Plot::View view = Plot::viewOf(data, usualSize);
    data.labelEvery1 = 3;
    QCOMPARE(listed(Plot::xLabels1(view, data)), QString("60,385 0; 510,385 68")); // numbers
    data.labelsX1 = data.labelsX2 = data.labelsX3 = QVector<QString>(24, "12:10:52.1");
    data.labelsX2[23] = "2024-01-01";
    data.labelEvery1 = 0;
    data.labelEvery3 = 2;
    // lower row
    QCOMPARE(listed(Plot::xLabels1(view, data)), QString("60,390 12:10:52.1; 210,390 12:10:52.1"));
    // seconds
    QCOMPARE(listed(Plot::xLabels2(view, data)), QString("60,370 12:10:52; 210,370 2024-01-01"));
    QCOMPARE(listed(Plot::xLabels3(view, data)), QString("60,355 12:10:52.1")); // upper row

    data.labelsX2.clear();
    data.labelsX1 = {"a0", "a1", "a2"};
    data.labelsX3 = {"c0", "c1"};
    const auto textsAt = [&](double x) { return Plot::labelsAt(data, x).toList().join(' '); };
    // index truncated, none in the third row at the first point
    QCOMPARE(textsAt(0.9), QString("a0 -"));
    QCOMPARE(textsAt(2.0), QString("a2 -")); // past the texts of a row

    data.msPerPoint = 12.4928;
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC);
    QCOMPARE(Plot::timeText(data, 80), QString("12:00:00")); // last point of a second
}

void TestPlotGeometry::zooms()
{
    const Plot::Range all{0, 1000};
    const auto zoomAt = [&](double anchor, double factor) {
        return rangeText(Plot::zoomedAt({200, 600}, all, anchor, factor, 4));
    };
    QCOMPARE(zoomAt(300, 0.5), QString("250..450"));  // zoom keeps the anchor's place
    QCOMPARE(zoomAt(600, 1.8), QString("0..720"));    // zoom out moves up into the data
    QCOMPARE(zoomAt(200, 2.2), QString("120..1000")); // zoom out moves down into the data
    QCOMPARE(zoomAt(300, 1e-9), QString("299..303")); // no smaller than the smallest
    QCOMPARE(zoomAt(300, NAN), QString("200..600"));  // no zoom without a factor
    // zoom of a range that runs down
    QCOMPARE(rangeText(Plot::zoomedAt({9, 1}, {10, 0}, 3, 0.5, 0.1)), QString("6..2"));
    // pan to the edge
    QCOMPARE(rangeText(Plot::panned({200, 600}, all, 500)), QString("600..1000"));
    // pan down a range that runs down
    QCOMPARE(rangeText(Plot::panned({9, 1}, {10, 0}, -3)), QString("8..0"));
    // all is no zoom
    QCOMPARE(zoomed({Plot::Range{-5, 200}, Plot::Range{-10, 50}}), QString("all all"));
    // what is no number is all
    QCOMPARE(zoomed({Plot::Range{NAN, 3}, Plot::Range{5, INFINITY}}), QString("all all"));
    // too few points get neighbours
    QCOMPARE(zoomed({Plot::Range{50, 50}, {}}), QString("48..52 all"));
    // one step back per gesture
    QCOMPARE(historyOf({{1, 1}, {2, 1}, {3, 2}, {4, 0}, {5, 0}}), QString("5 4 3 1 "));
}

void TestPlotGeometry::viewsOfAPart()
{
    const Plot::View view40 = Plot::viewOf(ranged(-10, 50), usualSize, part);
    const QPointF inPart = Plot::dataAt(view40, {360, 180});
    QCOMPARE(rangeText({inPart.x(), inPart.y()}), QString("40.5..15")); // middle of a part
    // left of a part
    QCOMPARE(QString::number(Plot::dataAt(view40, {0, 180}).x()), QString("20.5"));
    const Plot::IndexRange sight = Plot::pointsInSight(view40, 50);
    // neighbours out of sight, end of the curve
    QCOMPARE(rangeText({double(sight.begin), double(sight.end)}), QString("19..50"));
    // value on an uneven falling axis
    QCOMPARE(QString::number(Plot::axisIndex({"period", "s", 0, 1, {8, 4, 2, 1}}, 3)),
             QString("1.5"));
}

void TestPlotGeometry::marks()
{
    PlotData spectrum = ranged(0, 8);
    spectrum.graphs = {std::vector<float>(100, 1.0F)};
    spectrum.graphs[0][20] = 5;
    spectrum.x = {"frequency", "Hz", 0, 0.5, {}};
    const auto harmonics = [&](const Plot::Zoom &zoom, double fundamental) {
        QString text;
        const Plot::View inSight = Plot::viewOf(spectrum, usualSize, zoom);
        for (const auto &[number, x] : Plot::harmonicsInSight(spectrum, inSight, fundamental))
            text += QString("%1 at %2, ").arg(number).arg(x);
        return text;
    };
    // harmonics up to the last line
    QCOMPARE(harmonics({}, 10), QString("1 at 180, 2 at 300, 3 at 420, 4 at 540, "));
    // harmonics in sight
    QCOMPARE(harmonics({Plot::Range{30, 70}, {}}, 10), QString("2 at 210, 3 at 510, "));
    QCOMPARE(harmonics({}, 0.01), QString("1 at 60.12, ")); // harmonics too close together
    // highest line near the pointer
    QCOMPARE(QString::number(Plot::peakFrequency(spectrum, 21.7, 2)), QString("10"));
    Plot::Marks both;
    both.cursors = {Plot::Cursor{0, 20}, Plot::Cursor{0, 28}};
    QCOMPARE(Plot::cursorTexts(spectrum, both).join("|"),
             QString("1:  10.00 Hz,  5      2:  14.00 Hz,  1|2 - 1:  4.00 Hz,  -4      1 / (2 - "
                     "1):  0.25 s"));
}

ZRT_UNIT_TEST_MAIN(TestPlotGeometry)

#include "tst_plotgeometry.moc"
