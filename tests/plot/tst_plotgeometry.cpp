#include "plot/plotgeometry.h"

#include "plot/extremes.h"
#include "support/testmain.h"

#include <cmath>
#include <limits>

Q_DECLARE_METATYPE(PlotData)
Q_DECLARE_METATYPE(std::vector<float>)

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// A widget of 690 x 400 pixels leaves the curves 600 x 300.
const QSize usualSize(690, 400);

PlotData ranged(double yMin, double yMax, int numPoints = 100)
{
    PlotData data;
    data.yMin = yMin;
    data.yMax = yMax;
    data.numPoints = numPoints;
    return data;
}

QVector<QString> numbered(const QString &prefix, int count)
{
    QVector<QString> texts;
    for (int i = 0; i < count; ++i)
        texts.append(prefix + QString::number(i));
    return texts;
}

// "x,y text" of each label, for comparisons that say what differs.
QStringList described(const std::vector<Plot::Label> &labels)
{
    QStringList lines;
    for (const Plot::Label &label : labels)
        lines.append(
            QString("%1,%2 %3").arg(label.position.x()).arg(label.position.y()).arg(label.text));
    return lines;
}

} // namespace

class TestPlotGeometry : public QObject {
    Q_OBJECT

private slots:
    void extremesOfAnyLength();
    void verticalRange_data();
    void verticalRange();
    void verticalRangeSkipsWhatIsNotFinite();
    void activeSet();
    void positionsAcrossThePlot();
    void dataToPixel_data();
    void dataToPixel();
    void pixelToData_data();
    void pixelToData();
    void wholePixels();
    void yLabels_data();
    void yLabels();
    void labelOfZeroHasNoSign();
    void yLabelsStayFewInNarrowRanges_data();
    void yLabelsStayFewInNarrowRanges();
    void xLabels();
    void xLabelsOfFewTexts();
    void timesAreCutToSeconds_data();
    void timesAreCutToSeconds();
    void labelsUnderThePointer_data();
    void labelsUnderThePointer();
    void timeOfPoint_data();
    void timeOfPoint();
    void coordinateDigits_data();
    void coordinateDigits();
};

void TestPlotGeometry::extremesOfAnyLength()
{
    for (int count = 1; count < 70; ++count)
        for (int place = 0; place < count; ++place) {
            std::vector<float> samples(size_t(count), -0.5F);
            samples[size_t(place)] = -7;
            samples[size_t(count - 1 - place)] = 3;
            auto found = Plot::extremes(samples.data(), samples.size());
            QCOMPARE(found.high, 3.0F);
            QCOMPARE(found.low, 2 * place + 1 == count ? (count == 1 ? 3.0F : -0.5F) : -7.0F);
            QVERIFY(found.finite());
            samples[size_t(place)] = -float(infinity);
            found = Plot::extremes(samples.data(), samples.size());
            QVERIFY(!found.finite() && !found.hasNan);
            samples[size_t(place)] = place % 2 != 0 ? float(notANumber) : -float(notANumber);
            QVERIFY(Plot::extremes(samples.data(), samples.size()).hasNan);
        }
}

void TestPlotGeometry::verticalRange_data()
{
    QTest::addColumn<std::vector<float>>("curve");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::newRow("both signs") << std::vector<float>{1, -2, 4} << -2.0 << 4.0;
    QTest::newRow("one point") << std::vector<float>{3} << 3.0 << 3.0;
    QTest::newRow("all above the bound")
        << std::vector<float>{100001, 200000} << 100000.0 << 200000.0;
    QTest::newRow("all below the bound")
        << std::vector<float>{-300000, -100001} << -300000.0 << -100000.0;
    QTest::newRow("just inside the bounds")
        << std::vector<float>{99999, 99999} << 99999.0 << 99999.0;
}

void TestPlotGeometry::verticalRange()
{
    QFETCH(std::vector<float>, curve);
    PlotData data;
    data.graphs = {curve};
    const Plot::Range range = Plot::verticalRange(data);
    QTEST(range.min, "min");
    QTEST(range.max, "max");
}

void TestPlotGeometry::verticalRangeSkipsWhatIsNotFinite()
{
    std::vector<float> curve(10000, 1.0F);
    curve[5] = -3;
    curve[9000] = 8;
    for (const double bad : {notANumber, infinity, -infinity})
        for (const size_t place : {size_t(0), size_t(4), size_t(9001), size_t(9999)}) {
            PlotData data;
            data.graphs = {curve};
            data.graphs[0][place] = float(bad);
            const Plot::Range range = Plot::verticalRange(data);
            QCOMPARE(range.min, -3.0);
            QCOMPARE(range.max, 8.0);
        }
}

void TestPlotGeometry::activeSet()
{
    PlotData data;
    QCOMPARE(Plot::verticalRange(data).min, 0.0);
    QCOMPARE(Plot::verticalRange(data).max, 0.0);
    data.graphs = {{1, 2}, {-5, 3}};
    QCOMPARE(Plot::verticalRange(data).min, -5.0);
    data.multiGraphs = {{10, 20}};
    QCOMPARE(Plot::verticalRange(data).min, 10.0);
    QCOMPARE(Plot::verticalRange(data).max, 20.0);
}

void TestPlotGeometry::positionsAcrossThePlot()
{
    PlotData data;
    data.graphs = {std::vector<float>(10), std::vector<float>(16)};
    data.numPoints = 0;
    QCOMPARE(Plot::viewOf(data, usualSize).points, 16);
    QCOMPARE(Plot::viewOf(data, usualSize).lastIndex, 9);
    data.numPoints = 12;
    QCOMPARE(Plot::viewOf(data, usualSize).points, 12);
    QCOMPARE(Plot::viewOf(ranged(0, 1, 0), usualSize).points, 1); // and not a division by 0
}

void TestPlotGeometry::dataToPixel_data()
{
    QTest::addColumn<PlotData>("data");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("value");
    QTest::addColumn<QPoint>("pixel");
    const PlotData usual = ranged(0, 100); // 6 pixels per point, 3 per unit
    QTest::newRow("origin") << usual << 0 << 0.0 << QPoint(60, 330);
    QTest::newRow("opposite corner") << usual << 100 << 100.0 << QPoint(660, 30);
    QTest::newRow("row truncated upwards") << usual << 1 << 0.5 << QPoint(66, 328);
    QTest::newRow("row above the widget truncated downwards")
        << usual << 1 << 110.1 << QPoint(66, 0);
    QTest::newRow("column truncated") << ranged(0, 100, 7) << 1 << 0.0 << QPoint(145, 330);
    QTest::newRow("beyond an int")
        << ranged(0, 1e-9) << 2000000000 << 1e9 << QPoint(1000000000, -1000000000);
    QTest::newRow("infinite") << usual << 0 << -infinity << QPoint(60, 1000000000);
    QTest::newRow("constant curve in the middle") << ranged(5, 5) << 0 << 5.0 << QPoint(60, 180);
    QTest::newRow("large constant in the middle")
        << ranged(1e30, 1e30) << 0 << 1e30 << QPoint(60, 180);
    QTest::newRow("range of no numbers")
        << ranged(notANumber, notANumber) << 0 << 0.0 << QPoint(60, 180);
}

void TestPlotGeometry::dataToPixel()
{
    QFETCH(PlotData, data);
    QFETCH(int, index);
    QFETCH(double, value);
    const Plot::View view = Plot::viewOf(data, usualSize);
    QTEST(QPoint(Plot::xPixel(view, index), Plot::yPixel(view, value)), "pixel");
}

void TestPlotGeometry::pixelToData_data()
{
    QTest::addColumn<QPoint>("pixel");
    QTest::addColumn<QPointF>("data");
    QTest::newRow("left lower corner") << QPoint(60, 330) << QPointF(0, -10);
    QTest::newRow("right upper corner") << QPoint(660, 30) << QPointF(100, 50);
    QTest::newRow("between points") << QPoint(61, 180) << QPointF(1 / 6.0, 20);
    QTest::newRow("left of the plot") << QPoint(59, 330) << QPointF(0, -10);
    QTest::newRow("right of the plot: end of the first curve")
        << QPoint(661, 330) << QPointF(41, -10);
    QTest::newRow("below the plot") << QPoint(360, 331) << QPointF(50, 0);
    QTest::newRow("above the plot") << QPoint(360, 29) << QPointF(50, 0);
}

void TestPlotGeometry::pixelToData()
{
    QFETCH(QPoint, pixel);
    PlotData data = ranged(-10, 50);
    data.graphs = {std::vector<float>(42), std::vector<float>(99)};
    QTEST(Plot::dataAt(Plot::viewOf(data, usualSize), pixel), "data");
}

void TestPlotGeometry::wholePixels()
{
    QCOMPARE(Plot::wholePixel({2.5, -2.5}), QPoint(3, -3));
    QCOMPARE(Plot::wholePixel({2.4, -2.4}), QPoint(2, -2));
}

void TestPlotGeometry::yLabels_data()
{
    QTest::addColumn<PlotData>("data");
    QTest::addColumn<int>("precision");
    QTest::addColumn<QStringList>("labels");
    QTest::newRow("up from the lower end")
        << ranged(30, 330) << 0
        << QStringList{"14,334 30",  "14,284 80", "14,234 130", "14,184 180",
                       "14,134 230", "14,84 280", "14,34 330"};
    QTest::newRow("up and down from zero")
        << ranged(-140, 160) << 1 << QStringList{"14,194 0.0",  "14,144 50.0",  "14,94 100.0",
                                                 "14,44 150.0", "14,244 -50.0", "14,294 -100.0"};
    // -110 would stand at height 80, which is no longer above it
    QTest::newRow("lowest label keeps its distance")
        << ranged(-110, 190) << 0
        << QStringList{"14,224 0", "14,174 50", "14,124 100", "14,74 150", "14,274 -50"};
    QTest::newRow("zero above the plot, labels in sight go into the margin")
        << ranged(-330, -30) << 0 << QStringList{"14,54 -50",   "14,104 -100", "14,154 -150",
                                                 "14,204 -200", "14,254 -250", "14,304 -300"};
    QTest::newRow("labels down from zero at the top")
        << ranged(-0.06, 0.0) << 3
        << QStringList{"14,34 0.000",   "14,84 -0.010",  "14,134 -0.020",
                       "14,184 -0.030", "14,234 -0.040", "14,284 -0.050"};
    QTest::newRow("minus nothing loses its sign")
        << ranged(-0.09, 0.0) << 1 << QStringList{"14,34 0.0", "14,84 0",     "14,134 0",
                                                  "14,184 0",  "14,234 -0.1", "14,284 -0.1"};
    QTest::newRow("with three decimals it keeps it")
        << ranged(-0.0004, 0.0) << 3
        << QStringList{"14,34 0.000",   "14,84 -0.000",  "14,134 -0.000",
                       "14,184 -0.000", "14,234 -0.000", "14,284 -0.000"};
}

void TestPlotGeometry::yLabels()
{
    QFETCH(PlotData, data);
    QFETCH(int, precision);
    QTEST(described(Plot::yLabels(Plot::viewOf(data, usualSize), precision)), "labels");
}

void TestPlotGeometry::labelOfZeroHasNoSign()
{
    for (int i = 1; i < 100; ++i) {
        const auto labels = Plot::yLabels(Plot::viewOf(ranged(-0.01 * i, 0.7), usualSize), 3);
        QCOMPARE(labels.front().text, QString("0.000"));
    }
}

void TestPlotGeometry::yLabelsStayFewInNarrowRanges_data()
{
    QTest::addColumn<PlotData>("data");
    QTest::addColumn<QSize>("size");
    QTest::newRow("far below zero") << ranged(-1e6, -1e6 + 1e-6) << usualSize;
    QTest::newRow("as far as doubles go") << ranged(-1e300, -0.999999999999999e300) << usualSize;
    QTest::newRow("constant below zero") << ranged(-1e9, -1e9) << usualSize;
    QTest::newRow("reversed") << ranged(-1e6 + 1e-6, -1e6) << usualSize;
    QTest::newRow("all doubles") << ranged(-infinity, infinity) << usualSize;
    QTest::newRow("no height") << ranged(-1, 1) << QSize(690, 20);
}

void TestPlotGeometry::yLabelsStayFewInNarrowRanges()
{
    QFETCH(PlotData, data);
    QFETCH(QSize, size);
    const auto labels = Plot::yLabels(Plot::viewOf(data, size), 3);
    QVERIFY(size.height() < 100 || labels.size() >= 4);
    QVERIFY(labels.size() <= 9);
    for (const Plot::Label &label : labels)
        QVERIFY(label.position.y() >= -20 && label.position.y() <= size.height() + 20);
}

void TestPlotGeometry::xLabels()
{
    PlotData data = ranged(0, 1, 90); // 6 2/3 pixels per point
    const Plot::View view = Plot::viewOf(data, usualSize);
    // 150 pixels are 22.5 points and round to 23
    QCOMPARE(described(Plot::xLabels1(view, data)),
             (QStringList{"60,385 0", "210,385 23", "360,385 45", "510,385 68"}));
    QVERIFY(Plot::xLabels2(view, data).empty());
    QVERIFY(Plot::xLabels3(view, data).empty());

    data.labelsX1 = numbered("a", 90);
    data.labelsX2 = numbered("b", 90);
    data.labelsX3 = numbered("c", 90);
    data.labelEvery1 = 0;
    data.labelEvery2 = 2;
    data.labelEvery3 = std::numeric_limits<int>::max();
    QCOMPARE(described(Plot::xLabels1(view, data)),
             (QStringList{"60,390 a0", "210,390 a23", "360,390 a45", "510,390 a68"}));
    QCOMPARE(described(Plot::xLabels2(view, data)), (QStringList{"60,370 b0", "360,370 b45"}));
    QCOMPARE(described(Plot::xLabels3(view, data)), (QStringList{"60,355 c0"}));
}

void TestPlotGeometry::xLabelsOfFewTexts()
{
    PlotData data = ranged(0, 1, 90);
    data.labelsX1 = numbered("a", 45);
    const Plot::View view = Plot::viewOf(data, usualSize);
    QCOMPARE(described(Plot::xLabels1(view, data)), (QStringList{"60,390 a0", "210,390 a23"}));
}

void TestPlotGeometry::timesAreCutToSeconds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("time with a fraction") << "12:10:52.123"
                                          << "12:10:52";
    QTest::newRow("date") << "2024-01-01"
                          << "2024-01-01";
    QTest::newRow("eight characters") << "12:10:52"
                                      << "12:10:52";
    QTest::newRow("third character of a short text") << "12:"
                                                     << "12:";
}

void TestPlotGeometry::timesAreCutToSeconds()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    PlotData data = ranged(0, 1, 1);
    data.labelsX1 = data.labelsX2 = data.labelsX3 = {text};
    const Plot::View view = Plot::viewOf(data, usualSize);
    QCOMPARE(Plot::xLabels1(view, data).front().text, text);
    QCOMPARE(Plot::xLabels2(view, data).front().text, shown);
    QCOMPARE(Plot::xLabels3(view, data).front().text, text);
}

void TestPlotGeometry::labelsUnderThePointer_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<QVector<QString>>("texts");
    QTest::newRow("third row has none at the first point")
        << 0.9 << QVector<QString>{"a0", "b0", "-"};
    QTest::newRow("index truncated") << 1.99 << QVector<QString>{"a1", "b1", "c1"};
    QTest::newRow("last text of one row") << 2.0 << QVector<QString>{"a2", "-", "c2"};
    QTest::newRow("past all texts") << 3.0 << QVector<QString>{"-", "-", "-"};
    QTest::newRow("before all texts") << -1.0 << QVector<QString>{"-", "-", "-"};
}

void TestPlotGeometry::labelsUnderThePointer()
{
    QFETCH(double, x);
    PlotData data;
    data.labelsX1 = numbered("a", 3);
    data.labelsX2 = numbered("b", 2);
    data.labelsX3 = numbered("c", 3);
    QTEST(Plot::labelsAt(data, x), "texts");
    data.labelsX2.clear();
    QCOMPARE(Plot::labelsAt(data, x).size(), 2);
}

void TestPlotGeometry::timeOfPoint_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("msPerPoint");
    QTest::addColumn<QString>("text");
    QTest::newRow("first point") << 0 << 12.4928 << "12:00:00";
    QTest::newRow("last point of a second") << 80 << 12.4928 << "12:00:00"; // 999.424 ms
    QTest::newRow("milliseconds rounded down") << 1 << 999.9999 << "12:00:00";
    QTest::newRow("first point of a second") << 81 << 12.4928 << "12:00:01";
    QTest::newRow("before the begin rounds down too") << -1 << 0.5 << "11:59:59";
    QTest::newRow("beyond all calendars") << 2000000000 << 1e300 << "";
}

void TestPlotGeometry::timeOfPoint()
{
    QFETCH(int, index);
    QFETCH(double, msPerPoint);
    PlotData data;
    data.msPerPoint = msPerPoint;
    QCOMPARE(Plot::timeText(data, index), QString()); // no begin time
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC);
    QTEST(Plot::timeText(data, index), "text");
}

void TestPlotGeometry::coordinateDigits_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("perPixel");
    QTest::addColumn<QString>("text");
    QTest::newRow("several points per pixel") << 1234.567 << 10.8 << "1235";
    QTest::newRow("several pixels per point") << 12.3456 << 0.17 << "12.3";
    QTest::newRow("small values") << 0.0123456 << 0.00012 << "0.0123";
    QTest::newRow("very small values") << 1.23456e-9 << 1e-11 << "1.23e-09";
    QTest::newRow("large values") << -1.23456e9 << 1e6 << "-1.235e+09";
    QTest::newRow("no change") << 5.0 << 0.0 << "5";
    QTest::newRow("zero in a tiny range") << 0.0 << 1e-20 << "0";
}

void TestPlotGeometry::coordinateDigits()
{
    QFETCH(double, value);
    QFETCH(double, perPixel);
    QTEST(Plot::coordinateText(value, perPixel), "text");
}

ZRT_UNIT_TEST_MAIN(TestPlotGeometry)

#include "tst_plotgeometry.moc"
