#include "picture/plotexport.h"

#include "picture/plotpainter.h"
#include "picture/straightplot.h"
#include "support/fulldisk.h"
#include "support/testmain.h"

#include <QGuiApplication>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <cmath>

using TestSupport::noise;

namespace {

const QSize size(690, 400); // leaves the curves 600 x 300

bool isBlue(QRgb pixel)
{
    return qBlue(pixel) > 150 && qRed(pixel) < 140 && qGreen(pixel) < 140;
}

// Rows between which each column of the plot is blue, in pixels of the screen; without extent
// below 0 where it is not.
std::vector<Plot::Range> blueRows(const QImage &picture, int scale)
{
    std::vector<Plot::Range> columns(size_t(size.width()), Plot::Range{1e9, -1e9});
    for (int row = 2 * scale; row < picture.height() - 2 * scale; ++row) {
        const auto *pixels = reinterpret_cast<const QRgb *>(picture.constScanLine(row));
        for (int x = 2 * scale; x < picture.width() - 2 * scale; ++x)
            if (isBlue(pixels[x])) {
                Plot::Range &rows = columns[size_t(x / scale)];
                rows.min = std::min(rows.min, double(row) / scale);
                rows.max = double(row) / scale;
            }
    }
    return columns;
}

// How many columns of one picture have something where the other has nothing, in the same column
// or near it: thin lines are rounded to pixels, which moves the ends of steep ones.
int columnsBeyond(const std::vector<Plot::Range> &one, const std::vector<Plot::Range> &other)
{
    constexpr size_t beside = 2;
    constexpr double rounding = 4; // pixels
    int count = 0;
    for (size_t x = 62; x < 658; ++x) { // not at the edges
        Plot::Range near{1e9, -1e9};
        for (size_t i = x - beside; i <= x + beside; ++i)
            near = {std::min(near.min, other[i].min), std::max(near.max, other[i].max)};
        count += one[x].max > 0 &&
                 (one[x].min < near.min - rounding || one[x].max > near.max + rounding);
    }
    return count;
}

} // namespace

class TestPlotExport : public QObject {
    Q_OBJECT

private slots:
    void sameCurves();
    void table();
    void refusedFiles();

private:
    void sameCurves(int points, bool isZoomed);

    QTemporaryDir folder;
};

// Far fewer points than columns of the plot, nearly as many and a hundred in each; all in sight and
// part of them.
void TestPlotExport::sameCurves()
{
    for (const int points : {60, 400, 70001})
        sameCurves(points, false);
    for (const int points : {400, 70001})
        sameCurves(points, true);
}

void TestPlotExport::sameCurves(int points, bool isZoomed)
{
    PlotData data = TestSupport::dataOf({noise(points), noise(points)}, points, -100, 100);
    std::fill_n(data.graphs[0].begin() + points / 3, points / 10, NAN);
    data.graphs[0][size_t(points) / 2] = INFINITY;
    data.visible = {true, false};
    data.markers = {0}; // then no grid hides the curve
    Plot::Zoom zoom;
    if (isZoomed)
        zoom = {Plot::Range{points * 0.211, points * 0.701}, Plot::Range{-60, 70}};
    const Plot::CurveBlocks blocks = Plot::blocksOf(data);
    QImage painted(size, QImage::Format_RGB32);
    Plot::paintPlot(data, zoom, blocks, painted);

    for (const char *name : {"plot.svg", "plot.png", "plot.pdf"})
        QCOMPARE(Plot::savePicture(folder.filePath(name), {data, blocks, size, zoom, {}}),
                 QString());
    QImage drawn(size, QImage::Format_RGB32);
    QSvgRenderer svg(folder.filePath("plot.svg"));
    QVERIFY(svg.isValid());
    QPainter painter(&drawn);
    svg.render(&painter);
    painter.end();
    const QImage png(folder.filePath("plot.png"));
    QCOMPARE(png.size(), size * 3);
    const auto expected = blueRows(painted, 1);
    QVERIFY(std::count_if(expected.begin(), expected.end(),
                          [](const Plot::Range &rows) { return rows.max > 0; }) > 400);
    for (const auto &columns : {blueRows(drawn, 1), blueRows(png, 3)}) {
        QCOMPARE(columnsBeyond(columns, expected), 0);
        QCOMPARE(columnsBeyond(expected, columns), 0);
    }
    QFile pdf(folder.filePath("plot.pdf"));
    QVERIFY(pdf.open(QIODevice::ReadOnly));
    QVERIFY(pdf.readAll().contains("/MediaBox [0 0 518")); // 690 pixels of 1/96 inch, in points
}

void TestPlotExport::table()
{
    PlotData data = TestSupport::dataOf({{1, 0.1F, NAN}, {5, 6, 7, 8}, {9}}, 4);
    data.multiGraphs = {{-1e-30F}};
    data.names = {"sum, 32 bands", "hidden"};
    data.visible = {true, false};
    data.firstPoint = 58000;
    data.pointStep = 0.25;
    data.x = {"time", "s", 10, 0.0124928, {}};
    data.yName = "signal";
    data.yUnit = "sigma";
    data.source = QStringList{"file: a.pnt", "ray: 7"};
    const auto written = [&data] {
        QByteArray text;
        const auto take = [&text](const QByteArray &more) {
            text += more;
            return true;
        };
        return Plot::writeSamples(take, data, {1, 4}, [](int) { return true; }) ? text : "";
    };
    QCOMPARE(written(), QByteArray("# file: a.pnt\n"
                                   "# ray: 7\n"
                                   "# points 58000.25 to 58000.75 of the recording\n"
                                   "# values: signal (sigma)\n"
                                   "point,time (s),\"sum, 32 bands\",curve 3,"
                                   "\"sum, 32 bands, below\"\n"
                                   "58000.25,10.0124928,0.1,,\n"
                                   "58000.5,10.0249856,nan,,\n"
                                   "58000.75,10.0374784,,,\n"));
    data.pointStep = 0; // a spectrum
    QVERIFY(written().contains("# points 1 to 3 of 4\n") && written().contains("\n1,10.0124928,"));
    const Plot::IndexRange whole = Plot::wholePoints(data, {0.4, 2.9});
    QCOMPARE(whole.begin * 10 + whole.end, 13);
}

void TestPlotExport::refusedFiles()
{
    const PlotData data = TestSupport::dataOf({noise(20000)});
    const Plot::CurveBlocks blocks;
    const QString nowhere = folder.filePath("missing/plot.svg");
    QVERIFY(Plot::savePicture(nowhere, {data, blocks, size, {}, {}}).contains(nowhere));
    QVERIFY(Plot::savePicture(folder.filePath("a.bmp"), {data, blocks, size, {}, {}})
                .contains(".png, .svg or .pdf"));
    for (const char *name : {"a.png", "a.svg", "a.pdf", "a.csv"}) {
        const QString full = folder.filePath(name);
        const TestSupport::FullDisk disk(500);
        const QString failure =
            full.endsWith(".csv")
                ? Plot::saveSamples(full, data, {0, 20000}, [](int) { return true; })
                : Plot::savePicture(full, {data, blocks, size, {}, {}});
        QVERIFY2(failure.startsWith(full + " cannot be written: File too large."),
                 qPrintable(failure));
        QVERIFY(!QFile::exists(full));
    }
    const QString path = folder.filePath("stopped.csv");
    QCOMPARE(Plot::saveSamples(path, data, {0, 20000}, [](int) { return false; }), QString());
    QVERIFY(!QFile::exists(path));
}

int main(int argc, char **argv)
{
    return TestSupport::runTest<QGuiApplication, TestPlotExport>(argc, argv);
}

#include "tst_plotexport.moc"
