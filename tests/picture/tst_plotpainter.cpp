#include "picture/plotpainter.h"

#include "picture/straightplot.h"
#include "support/testmain.h"

#include <QGuiApplication>
#include <cmath>

Q_DECLARE_METATYPE(PlotData)

using TestSupport::dataOf;
using TestSupport::noise;

namespace {

const QSize usualSize(690, 400); // leaves the curves 600 x 300
const QRect selection(500, 300, 50, 50);

QImage painted(const PlotData &data, const QSize &size = usualSize, const Plot::Zoom &zoom = {},
               const Plot::CurveBlocks &blocks = {})
{
    QImage picture(size, QImage::Format_RGB32);
    Plot::paintPlot(data, zoom, blocks, picture);
    QPainter painter(&picture);
    if (!data.messageMode)
        Plot::paintSelection(painter, selection);
    return picture;
}

} // namespace

class TestPlotPainter : public QObject {
    Q_OBJECT

private slots:
    void sameAsStraight_data();
    void sameAsStraight();
    void layers();
    void nothingFinite();
};

void TestPlotPainter::sameAsStraight_data()
{
    QTest::addColumn<PlotData>("data");
    QTest::addColumn<QSize>("size");
    for (const int count : {2, 300, 599, 600, 601, 800, 1201, 3001, 70001})
        QTest::addRow("%d points", count) << dataOf({noise(count)}, count) << usualSize;
    for (const QSize &size : {QSize(101, 50), QSize(91, 400), QSize(640, 101), QSize(333, 777)})
        QTest::addRow("%d x %d", size.width(), size.height()) << dataOf({noise(5000)}) << size;
    // up and down by every height, with a level piece in between that hides no pixel of it
    std::vector<float> steps;
    for (int height = 0; height <= 1200; ++height)
        steps.insert(steps.end(), {0, 0, float(height), float(height)});
    const auto add = [](const char *name, const PlotData &data, const QSize &size = usualSize) {
        QTest::newRow(name) << data << size;
    };
    add("every step between columns", dataOf({steps}, 4804, 0, 1200), QSize(4893, 1300));
    add("curve longer than the plot shows", dataOf({noise(5000)}, 3000));
    add("curve that ends within a column", dataOf({noise(4)}, 9000));
    add("all above zero", dataOf({noise(5000)}, 0, 1e-9, 2e-9));
    add("beyond the edges", dataOf({noise(5000)}, 5000, -61, 86));
    add("reversed range", dataOf({noise(5000)}, 5000, 100, -100));
    add("NaN samples", dataOf({noise(5000, {NAN, -NAN})}));
    add("infinite samples", dataOf({noise(5000, {INFINITY, -INFINITY})}));
    add("NaN beside infinity", dataOf({noise(5000, {INFINITY, NAN}, 4)}));
    std::vector<float> gaps = noise(70001, {NAN}, 3000);
    std::fill(gaps.begin() + 9000, gaps.begin() + 31000, -NAN);
    add("blocks with and without NaN, and all NaN", dataOf({gaps}, 0));
    add("spikes", dataOf({noise(5000, {1e30F})}));
    PlotData sets = dataOf({noise(2000), noise(900), noise(1999)}, 2000);
    sets.multiGraphs = {noise(1998), noise(1997), noise(1), noise(500)};
    sets.visible = {true, false};
    sets.colours = {"red", "no such colour", "#80FF0000"};
    add("both sets, hidden and translucent curves", sets);
}

void TestPlotPainter::sameAsStraight()
{
    QFETCH(PlotData, data);
    QFETCH(QSize, size);
    // all of it, and parts at fractions of a point with points in every column and with few
    const double all = Plot::allOfX(data).max;
    const Plot::Zoom parts[] = {{},
                                {Plot::Range{all * 0.2137, all * 0.8853}, {}},
                                {Plot::Range{0, all * 0.13}, Plot::Range{-20, 30.5}}};
    for (const Plot::Zoom &zoom : parts) {
        QImage straight(size, QImage::Format_RGB32);
        TestSupport::paintStraight(data, zoom, selection, straight);
        QCOMPARE(painted(data, size, zoom), straight);
        QCOMPARE(painted(data, size, zoom, Plot::blocksOf(data)), straight);
    }
}

// One pixel of each thing and of what lies over it; 150 pixels a point and 3 a unit.
void TestPlotPainter::layers()
{
    PlotData data = dataOf({{50, 50, 50, 50}, {25, 25}, {-7, -7, -7}}, 4, 0, 100);
    data.labelsX3 = {"i"};
    const QImage picture = painted(data);
    const auto colourAt = [&](int x, int y) { return picture.pixelColor(x, y).name(); };
    QCOMPARE(colourAt(689, 200), QString("#000000")); // frame
    QCOMPARE(colourAt(509, 180), QString("#0000ff")); // first curve
    QCOMPARE(colourAt(61, 255), QString("#009900"));  // second curve
    QCOMPARE(colourAt(110, 180), QString("#0000ff")); // a curve has no gap at the grid
    QCOMPARE(colourAt(110, 100), QString("#eeeeee")); // grid
    QCOMPARE(colourAt(60, 351), QString("#ffc8c8"));  // box of a label over the third curve
    QVERIFY(std::abs(picture.pixelColor(520, 345).red() - 155) <= 1); // blending rounds
    data.markers = {1, 2};
    data.markerStyles = {{}, {"2", {3, 2}}};
    data.graphs[0] = {50, 100, 0, 100}; // red lines run through the columns of the markers
    data.colours = {"red"};
    const QImage marked = painted(data);
    QStringList column;
    for (const int y : {24, 40, 329, 336, 337})
        column << marked.pixelColor(210, y).name();
    QCOMPARE(column.join(' '), QString("#008000 #008000 #008000 #008000 #ffffff"));
    QCOMPARE(marked.pixelColor(210, 31), QColor("red")); // the peak it points at
    QString dashes;
    for (int y = 30; y < 40; ++y)
        dashes += marked.pixelColor(360, y) == QColor("green") ? '-' : ' ';
    QCOMPARE(dashes, QString("---  ---  "));
    QCOMPARE(marked.pixelColor(110, 100), QColor("white")); // no grid

    data.messageMode = true;
    const QImage blank = painted(data);
    QCOMPARE(blank.pixelColor(509, 310), QColor("white")); // neither curve nor selection
    data.message = "Message";
    QVERIFY(painted(data).copy(30, 44, 100, 22) != blank.copy(30, 44, 100, 22));
}

// A text stands in the place of curves that cannot be drawn, and goes as soon as one can be.
void TestPlotPainter::nothingFinite()
{
    const QRect text(70, 40, 120, 25);
    const auto isBlank = [&](const PlotData &data) {
        PlotData empty = data;
        empty.graphs.clear();
        return painted(data).copy(text) == painted(empty).copy(text);
    };
    PlotData data = dataOf({{NAN, INFINITY, -INFINITY}, {}}, 3, -1, 1);
    QVERIFY(!isBlank(data));
    data.graphs.push_back({NAN, 0});
    QVERIFY(isBlank(data));
    data.visible = {true, true, false};
    QVERIFY(!isBlank(data));
    data.visible = {false, true, false};
    QVERIFY(isBlank(data));
}

int main(int argc, char **argv)
{
    return TestSupport::runTest<QGuiApplication, TestPlotPainter>(argc, argv);
}

#include "tst_plotpainter.moc"
