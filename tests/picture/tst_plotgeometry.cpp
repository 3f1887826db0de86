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
    const Plot::Range range = Plot::verticalRange(data);
    return rangeText(range);
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

void add(const char *name, const QString &result, const char *expected)
{
    QTest::newRow(name) << result << expected;
}

void addRanges()
{
    add("range of all curves of the second set", rangeOf({{5}, {7, 6}}), "5..7");
    add("range above the bound", rangeOf({{100001, 200000}}), "100000..200000");
    add("range without what is not finite", rangeOf({{NAN, -2, -INFINITY, 1}}), "-2..1");

    add("range of nothing finite", rangeOf({{NAN, INFINITY}, {-INFINITY}}), "0..0");
    add("range of no samples", rangeOf({{}}), "0..0");

    add("row truncated upwards", pixelOf(ranged(0, 100), 1, 0.5), "66,328");
    add("column truncated", pixelOf(ranged(0, 100, 7), 1, 0), "145,330");
    add("longest curve", pixelOf(ranged(0, 100, 0), 4, 0), "660,330");
    add("beyond an int", pixelOf(ranged(0, 1e-9), 2000000000, 1e9), "1000000000,-1000000000");
    add("constant in the middle", pixelOf(ranged(1e30, 1e30), 0, 1e30), "60,180");
    add("left of the plot and below", pointAt(59, 331), "0,0");
    add("right of it, the end of the first curve, and above", pointAt(661, 29), "1,0");

    add("up from below", yLabels(30, 180, 0), "14,184 30; 14,134 80; 14,84 130; 14,34 180");
    add("up and down from zero", yLabels(-61, 89, 1), "14,123 0.0; 14,73 50.0; 14,173 -50.0");
    add("none within 10 pixels of the end", yLabels(-60, 90, 0), "14,124 0; 14,74 50");
    add("minus nothing loses its sign", yLabels(-0.09, 0, 1), "14,34 0.0; 14,84 0; 14,134 -0.1");
    add("3 decimals keep it", yLabels(-0.0004, 0, 3), "14,34 0.000; 14,84 -0.000; 14,134 -0.000");
    add("zero has no sign", yLabels(-0.4, 0.7, 3), "14,129 0.000; 14,79 0.367");
    add("few far below zero", yLabels(-1048576, -1048576 + 1.0 / 1024, 0),
        "14,34 -1048576; 14,84 -1048576; 14,134 -1048576");
}

void addTexts()
{
    PlotData data = ranged(0, 1, 90); // 450 pixels are 67.5 points and round to 68
    const Plot::View view = Plot::viewOf(data, usualSize);
    data.labelEvery1 = 3;
    add("numbers", listed(Plot::xLabels1(view, data)), "60,385 0; 510,385 68");
    data.labelsX1 = data.labelsX2 = data.labelsX3 = QVector<QString>(24, "12:10:52.1");
    data.labelsX2[23] = "2024-01-01";
    data.labelEvery1 = 0;
    data.labelEvery3 = 2;
    add("lower row", listed(Plot::xLabels1(view, data)), "60,390 12:10:52.1; 210,390 12:10:52.1");
    add("seconds", listed(Plot::xLabels2(view, data)), "60,370 12:10:52; 210,370 2024-01-01");
    add("upper row", listed(Plot::xLabels3(view, data)), "60,355 12:10:52.1");

    data.labelsX2.clear();
    data.labelsX1 = {"a0", "a1", "a2"};
    data.labelsX3 = {"c0", "c1"};
    const auto texts = [&](double x) { return Plot::labelsAt(data, x).toList().join(' '); };
    add("index truncated, none in the third row at the first point", texts(0.9), "a0 -");
    add("past the texts of a row", texts(2.0), "a2 -");

    data.msPerPoint = 12.4928;
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC);
    add("last point of a second", Plot::timeText(data, 80), "12:00:00");
}

void addZooms()
{
    const Plot::Range all{0, 1000};
    const auto zoomAt = [&](double anchor, double factor) {
        return rangeText(Plot::zoomedAt({200, 600}, all, anchor, factor, 4));
    };
    add("zoom keeps the anchor's place", zoomAt(300, 0.5), "250..450");
    add("zoom out moves up into the data", zoomAt(600, 1.8), "0..720");
    add("zoom out moves down into the data", zoomAt(200, 2.2), "120..1000");
    add("no smaller than the smallest", zoomAt(300, 1e-9), "299..303");
    add("no zoom without a factor", zoomAt(300, NAN), "200..600");
    add("zoom of a range that runs down", rangeText(Plot::zoomedAt({9, 1}, {10, 0}, 3, 0.5, 0.1)),
        "6..2");
    add("pan to the edge", rangeText(Plot::panned({200, 600}, all, 500)), "600..1000");
    add("pan down a range that runs down", rangeText(Plot::panned({9, 1}, {10, 0}, -3)), "8..0");
    add("all is no zoom", zoomed({Plot::Range{-5, 200}, Plot::Range{-10, 50}}), "all all");
    add("what is no number is all", zoomed({Plot::Range{NAN, 3}, Plot::Range{5, INFINITY}}),
        "all all");
    add("too few points get neighbours", zoomed({Plot::Range{50, 50}, {}}), "48..52 all");
    add("one step per gesture", historyOf({{1, 1}, {2, 1}, {3, 2}, {4, 0}, {5, 0}}), "5 4 3 1 ");
}

void addViewsOfAPart()
{
    const Plot::View view40 = Plot::viewOf(ranged(-10, 50), usualSize, part);
    const QPointF inPart = Plot::dataAt(view40, {360, 180});
    add("middle of a part", rangeText({inPart.x(), inPart.y()}), "40.5..15");
    add("left of a part", QString::number(Plot::dataAt(view40, {0, 180}).x()), "20.5");
    const Plot::IndexRange sight = Plot::pointsInSight(view40, 50);
    add("neighbours out of sight, end of the curve",
        rangeText({double(sight.begin), double(sight.end)}), "19..50");
    PlotData times = ranged(0, 1);
    times.textX2 = [](int i) { return QString("12:10:52.%1").arg(i); };
    add("numbers stand at their points", listed(Plot::xLabels1(view40, times)).left(24),
        "67,385 21; 217,385 31; 3");
    add("fractions where seconds are the same", listed(Plot::xLabels2(view40, times)).left(22),
        "67,370 12:10:52.21; 21");
    add("value on an uneven falling axis",
        QString::number(Plot::axisIndex({"period", "s", 0, 1, {8, 4, 2, 1}}, 3)), "1.5");
}

void addMarks()
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
    add("harmonics up to the last line", harmonics({}, 10),
        "1 at 180, 2 at 300, 3 at 420, 4 at 540, ");
    add("harmonics in sight", harmonics({Plot::Range{30, 70}, {}}, 10), "2 at 210, 3 at 510, ");
    add("harmonics too close together", harmonics({}, 0.01), "1 at 60.12, ");
    add("highest line near the pointer", QString::number(Plot::peakFrequency(spectrum, 21.7, 2)),
        "10");
    Plot::Marks marks;
    marks.cursors = {Plot::Cursor{0, 20}, Plot::Cursor{0, 28}};
    add("both cursors", Plot::cursorTexts(spectrum, marks).join("|"),
        "1:  10.00 Hz,  5      2:  14.00 Hz,  1|2 - 1:  4.00 Hz,  -4      1 / (2 - 1):  0.25 s");
}

} // namespace

class TestPlotGeometry : public QObject {
    Q_OBJECT

private slots:
    void workedByHand_data();
    void workedByHand();
};

void TestPlotGeometry::workedByHand_data()
{
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("expected");
    addRanges();
    addTexts();
    addZooms();
    addViewsOfAPart();
    addMarks();
}

void TestPlotGeometry::workedByHand()
{
    QFETCH(QString, result);
    QTEST(result, "expected");
}

ZRT_UNIT_TEST_MAIN(TestPlotGeometry)

#include "tst_plotgeometry.moc"
