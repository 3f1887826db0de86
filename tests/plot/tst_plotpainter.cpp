#include "plot/plotpainter.h"

#include "plot/columnruns.h"
#include "plot/straightplot.h"
#include "support/testmain.h"

#include <QApplication>
#include <limits>
#include <random>

Q_DECLARE_METATYPE(PlotData)

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

QImage emptyPicture(const QSize &size)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::magenta); // whatever is not painted shows
    return picture;
}

QImage painted(const PlotData &data, const QSize &size, const QRect &selection = {})
{
    QImage picture = emptyPicture(size);
    Plot::paintPlot(data, selection, picture);
    return picture;
}

std::vector<float> noise(int count, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<float> samples(size_t(count), 0.0F);
    for (float &sample : samples)
        sample = float(random() % 20001) / 100 - 100;
    return samples;
}

// Replaces about one sample in `spacing` by the given value.
std::vector<float> strewn(std::vector<float> samples, unsigned spacing, float value)
{
    std::mt19937 random(spacing);
    for (float &sample : samples)
        if (random() % spacing == 0)
            sample = value;
    return samples;
}

// First place where the pictures differ, for the failure's message.
QString difference(const QImage &left, const QImage &right)
{
    if (left == right)
        return {};
    int pixels = 0;
    QString first;
    for (int y = 0; y < left.height(); ++y)
        for (int x = 0; x < left.width(); ++x)
            if (left.pixel(x, y) != right.pixel(x, y) && pixels++ == 0)
                first = QString("(%1, %2)").arg(x).arg(y);
    return QString("%1 pixels, first %2").arg(pixels).arg(first);
}

PlotData dataOf(std::vector<std::vector<float>> graphs, int numPoints, double yMin, double yMax)
{
    PlotData data;
    data.graphs = std::move(graphs);
    data.numPoints = numPoints;
    data.yMin = yMin;
    data.yMax = yMax;
    return data;
}

} // namespace

class TestPlotPainter : public QObject {
    Q_OBJECT

private slots:
    void sameAsStraight_data();
    void sameAsStraight();
    void everyStepBetweenColumns();
    void layers();
    void zeroLines();
    void labelOnTranslucentBox();
    void messageAlone();
};

void TestPlotPainter::sameAsStraight_data()
{
    QTest::addColumn<PlotData>("data");
    QTest::addColumn<QSize>("size");

    const QSize usual(640, 400);
    for (const int count : {2, 100, 300, 549, 550, 551, 552, 800, 1099, 1101, 3001, 16384, 70001})
        QTest::addRow("noise of %d points", count)
            << dataOf({noise(count, unsigned(count))}, count, -100, 100) << usual;
    for (const QSize &size : {QSize(101, 101), QSize(101, 50), QSize(91, 400), QSize(80, 400),
                              QSize(640, 101), QSize(640, 100), QSize(333, 777)})
        QTest::addRow("%d x %d", size.width(), size.height())
            << dataOf({noise(5000, 3)}, 5000, -100, 100) << size;

    const std::vector<float> samples = noise(5000, 1);
    QTest::newRow("curve longer than the plot shows")
        << dataOf({samples}, 3000, -100, 100) << usual;
    QTest::newRow("curve shorter than the plot shows")
        << dataOf({samples}, 7000, -100, 100) << usual;
    QTest::newRow("curve that ends within a column")
        << dataOf({noise(4, 1)}, 9000, -100, 100) << usual;
    QTest::newRow("curve of one point") << dataOf({{5.0F}}, 9000, -100, 100) << usual;
    QTest::newRow("numPoints from the curves") << dataOf({samples}, 0, -100, 100) << usual;
    QTest::newRow("beyond the picture") << dataOf({samples}, 5000, -20, 20) << usual;
    QTest::newRow("few points beyond the picture")
        << dataOf({noise(700, 1)}, 700, -20, 20) << usual;
    QTest::newRow("far beyond the picture") << dataOf({samples}, 5000, 1e-9, 2e-9) << usual;
    QTest::newRow("just beyond the lower edge") << dataOf({samples}, 5000, -61, 100) << usual;
    QTest::newRow("just beyond the upper edge") << dataOf({samples}, 5000, -100, 86) << usual;
    QTest::newRow("reversed range") << dataOf({samples}, 5000, 100, -100) << usual;
    QTest::newRow("constant") << dataOf({std::vector<float>(5000, 7)}, 5000, 7, 7) << usual;
    QTest::newRow("single NaN samples")
        << dataOf({strewn(samples, 50, notANumber)}, 5000, -100, 100) << usual;
    QTest::newRow("many NaN samples")
        << dataOf({strewn(samples, 2, notANumber)}, 5000, -100, 100) << usual;
    QTest::newRow("NaN samples, few points")
        << dataOf({strewn(noise(700, 2), 4, notANumber)}, 700, -100, 100) << usual;
    QTest::newRow("all NaN") << dataOf({std::vector<float>(5000, notANumber)}, 5000, -100, 100)
                             << usual;
    QTest::newRow("infinite samples")
        << dataOf({strewn(strewn(samples, 40, infinity), 41, -infinity)}, 5000, -100, 100) << usual;
    QTest::newRow("NaN beside infinity")
        << dataOf({strewn(strewn(samples, 9, notANumber), 8, infinity)}, 5000, -100, 100) << usual;
    QTest::newRow("spikes") << dataOf({strewn(samples, 300, 1e30F)}, 5000, -100, 100) << usual;
    QTest::newRow("infinite range")
        << dataOf({samples}, 5000, -double(infinity), double(infinity)) << usual;

    PlotData sets = dataOf({noise(2000, 5), noise(900, 6), noise(2000, 11)}, 2000, -100, 100);
    sets.multiGraphs = {noise(2000, 7), noise(2000, 8), noise(1, 9), noise(500, 10)};
    sets.visible = {true, false};
    sets.colours = {"red", "no such colour", "#80FF0000"};
    sets.markers = {-1, 0, 999, 2000, 2000000000};
    QTest::newRow("both sets, hidden and translucent curves") << sets << usual;
}

void TestPlotPainter::sameAsStraight()
{
    QFETCH(PlotData, data);
    QFETCH(QSize, size);
    const QRect selection(100, 120, 30, 40);
    QImage straight = emptyPicture(size);
    TestSupport::paintStraight(data, selection, straight);
    QCOMPARE(difference(painted(data, size, selection), straight), QString());
}

// Every height a segment into the next column can have, upwards and downwards. It ends the
// curve, so that nothing covers its last pixel.
void TestPlotPainter::everyStepBetweenColumns()
{
    const QSize size(20 + 90, 1200 + 100); // one unit of the values is one pixel
    QImage straight(size, QImage::Format_RGB32);
    QImage fast = straight;
    for (int rows = -1200; rows <= 1200; ++rows) {
        const float from = rows < 0 ? 1200.0F : 0.0F;
        const std::vector<float> curve = {from, from, from + float(rows)};
        const Plot::View view = Plot::viewOf(dataOf({curve}, 21, 0, 1200), size);
        straight.fill(Qt::white);
        QPainter painter(&straight);
        painter.setPen(Qt::blue);
        TestSupport::drawStraight(painter, view, curve);
        painter.end();
        fast.fill(Qt::white);
        const Plot::ColumnRuns runs = Plot::columnRuns(view, curve);
        QVERIFY(runs.lines.isEmpty());
        Plot::fillRuns(fast, runs, qRgb(0, 0, 255), {0, size.height() - 1});
        QCOMPARE(difference(fast, straight), QString());
    }
}

// One pixel of each thing and of what lies over it, in a plot of 600 x 300 pixels.
void TestPlotPainter::layers()
{
    const QSize size(690, 400);
    PlotData data = dataOf({{50, 50, 50, 50}, {25, 25}}, 4, 0, 100); // 150 pixels a point
    const QRgb white = qRgb(255, 255, 255);
    const QRgb black = qRgb(0, 0, 0);
    const QRgb grid = qRgb(238, 238, 238);
    QImage picture = painted(data, size, QRect(500, 300, 50, 50));
    for (const QPoint &frame :
         {QPoint(0, 0), QPoint(689, 399), QPoint(345, 0), QPoint(0, 200), QPoint(689, 200)})
        QCOMPARE(picture.pixel(frame), black);
    QCOMPARE(picture.pixel(1, 1), white);
    QCOMPARE(picture.pixel(61, 180), qRgb(0, 0, 255));  // 50 of 100
    QCOMPARE(picture.pixel(509, 180), qRgb(0, 0, 255)); // up to the last point
    QCOMPARE(picture.pixel(511, 180), white);
    QCOMPARE(picture.pixel(61, 255), qRgb(0, 0x99, 0)); // 25 of 100
    QCOMPARE(picture.pixel(211, 255), white);
    QCOMPARE(picture.pixel(110, 180), grid); // over the curves
    QCOMPARE(picture.pixel(110, 30), grid);
    QCOMPARE(picture.pixel(110, 330), grid);
    QCOMPARE(picture.pixel(110, 29), white);
    QCOMPARE(picture.pixel(110, 331), white);
    for (const int tick : {60, 210, 360, 510}) {
        QCOMPARE(picture.pixel(tick, 5), black);
        QCOMPARE(picture.pixel(tick, 6), white);
        QCOMPARE(picture.pixel(tick, 394), black);
        QCOMPARE(picture.pixel(tick, 393), white);
    }
    QCOMPARE(picture.pixel(500, 300), black); // outline through both corners
    QCOMPARE(picture.pixel(550, 350), black);
    QCOMPARE(picture.pixel(551, 351), white);
    const QColor inside = picture.pixelColor(520, 345); // 100 / 255 of (0, 50, 200)
    QVERIFY(std::abs(inside.red() - 155) <= 1 && std::abs(inside.green() - 175) <= 1 &&
            std::abs(inside.blue() - 233) <= 1);

    data.markers = {1};
    picture = painted(data, size);
    QCOMPARE(picture.pixel(210, 30), qRgb(0, 128, 0));
    QCOMPARE(picture.pixel(210, 330), qRgb(0, 128, 0));
    QCOMPARE(picture.pixel(210, 29), white);
    QCOMPARE(picture.pixel(210, 331), white);
    QCOMPARE(picture.pixel(110, 100), white); // no grid
}

void TestPlotPainter::zeroLines()
{
    const QSize size(690, 400);
    PlotData data = dataOf({}, 4, -100, 200); // one pixel per unit, 150 per point
    data.multiGraphs = {{0, 0, 0, 0}};
    data.graphs = {{}, {0, 0, -100}};
    // black lies on top of both sets
    for (const int x : {61, 300, 509})
        QCOMPARE(painted(data, size).pixel(x, 230), qRgb(0, 0, 0));
    QCOMPARE(painted(data, size).pixel(511, 230), qRgb(255, 255, 255));
    data.yMin = 0;
    QCOMPARE(painted(data, size).pixel(61, 330), qRgb(0, 0, 0));
    data.yMin = 0.001;
    QCOMPARE(painted(data, size).pixel(61, 330), qRgb(0, 0x99, 0)); // graphs over multiGraphs
}

void TestPlotPainter::labelOnTranslucentBox()
{
    const QSize size(690, 400);
    PlotData data = dataOf({}, 4, 1, 2);
    data.markers = {0, 1}; // lines at 60 and 210, from the text row upwards
    data.labelsX3 = {"", "i"};
    QImage ground(size, QImage::Format_RGB32);
    ground.fill(Qt::black);
    QPainter painter(&ground);
    Plot::paintLabels(painter, data, size);
    painter.end();
    // baseline at 355: rows 344 to 355, from column 210 on
    const QRgb box = qRgb(200, 200, 200);
    QCOMPARE(ground.pixel(210, 344), box);
    QCOMPARE(ground.pixel(210, 355), box);
    QCOMPARE(ground.pixel(210, 343), qRgb(0, 0, 0));
    QCOMPARE(ground.pixel(210, 356), qRgb(0, 0, 0));
    QCOMPARE(ground.pixel(209, 350), qRgb(0, 0, 0));
    QCOMPARE(ground.pixel(60, 350), qRgb(0, 0, 0)); // no box for no text
}

void TestPlotPainter::messageAlone()
{
    const QSize size(690, 400);
    PlotData data = dataOf({noise(5000, 1)}, 5000, -100, 100);
    data.messageMode = true;
    const QRect selection(100, 120, 30, 40);
    PlotData empty;
    empty.messageMode = true;
    QCOMPARE(painted(data, size, selection), painted(empty, size));
    const QImage blank = painted(data, size);
    for (int y = 1; y < 399; ++y)
        for (int x = 1; x < 689; ++x)
            QCOMPARE(blank.pixel(x, y), qRgb(255, 255, 255));

    data.message = "Message";
    const QImage picture = painted(data, size);
    QRect changed;
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 690; ++x)
            if (picture.pixel(x, y) != blank.pixel(x, y))
                changed |= QRect(x, y, 1, 1);
    QVERIFY(changed.left() >= 30 && changed.left() <= 33);
    QVERIFY(changed.top() >= 44 && changed.bottom() >= 59 && changed.bottom() <= 65);
}

ZRT_GUI_TEST_MAIN(TestPlotPainter)

#include "tst_plotpainter.moc"
