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
};

void TestPlotPainter::sameAsStraight_data()
{
    QTest::addColumn<PlotData>("data");
    QTest::addColumn<QSize>("size");

    const QSize usual(640, 400);
    for (const int count : {2, 100, 549, 550, 551, 552, 800, 1099, 1101, 3001, 16384, 70001})
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

    PlotData sets = dataOf({noise(2000, 5), noise(900, 6), {}}, 2000, -100, 100);
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
    const QRect selection(100, 120, -30, 40);
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
        Plot::fillRuns(fast, runs, qRgb(0, 0, 255));
        QCOMPARE(difference(fast, straight), QString());
    }
}

ZRT_GUI_TEST_MAIN(TestPlotPainter)

#include "tst_plotpainter.moc"
