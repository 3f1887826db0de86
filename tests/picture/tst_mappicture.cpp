#include "picture/colourmap.h"
#include "picture/mappicture.h"
#include "support/testmain.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <limits>

namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

std::shared_ptr<Sky::SkyMap> mapOf(int rows, int columns, float value)
{
    auto map = std::make_shared<Sky::SkyMap>();
    map->columns = columns;
    map->sigma.assign(std::size_t(rows) * std::size_t(columns), value);
    map->step = 0.01;
    map->axisName = "frequency, Hz";
    for (int row = 0; row < rows; ++row)
        map->rows.push_back({QString("row %1").arg(row), double(row), 5});
    return map;
}

Plot::MapPicture pictureOf(int panels, const std::shared_ptr<const Sky::SkyMap> &map)
{
    QStringList titles;
    for (int panel = 0; panel < panels; ++panel)
        titles << QString("ray %1").arg(panel + 1);
    return Plot::mapPicture(
        std::vector<std::shared_ptr<const Sky::SkyMap>>(std::size_t(panels), map), titles, "maps");
}

QImage painted(const Plot::MapPicture &picture, const QSize &size)
{
    const Plot::PictureBytes bytes = Plot::drawingBytes("png", Plot::mapDrawing(picture, size, 1));
    return QImage::fromData(bytes.bytes, "PNG");
}

} // namespace

class TestMapPicture : public QObject {
    Q_OBJECT

private slots:
    void placesAndPixels_data();
    void placesAndPixels();
    void highestStandsInItsPlace();
    void fileHasThePixelsOfTheScreen();
    void oddMaps_data();
    void oddMaps();
};

void TestMapPicture::placesAndPixels_data()
{
    QTest::addColumn<int>("panels");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("firstRow"); // in sight
    QTest::addColumn<int>("rowCount");
    QTest::newRow("one map") << 1 << 35 << 0 << 35;
    QTest::newRow("some of its rows") << 1 << 35 << 10 << 4;
    QTest::newRow("eight side by side") << 8 << 5 << 0 << 5;
    QTest::newRow("three side by side") << 3 << 1 << 0 << 1;
}

// The middle of every cell's pixels is that cell, and higher rows stand higher.
void TestMapPicture::placesAndPixels()
{
    QFETCH(int, panels);
    QFETCH(int, rows);
    QFETCH(int, firstRow);
    QFETCH(int, rowCount);
    Plot::MapPicture picture = pictureOf(panels, mapOf(rows, 100, 1));
    picture.columns = {20, 60};
    picture.firstRow = firstRow;
    picture.rowCount = rowCount;
    const QSize size(900, 500);
    for (int panel = 0; panel < panels; ++panel) {
        double lastTop = INFINITY;
        for (int row = firstRow; row < firstRow + rowCount; ++row) {
            const QRectF pixels = Plot::mapPixels(picture, size, {panel, row, 30}, 31);
            QVERIFY(pixels.height() > 0 && pixels.top() < lastTop);
            lastTop = pixels.top();
            const auto place = Plot::mapPlaceAt(picture, size, pixels.center());
            QVERIFY(place.has_value());
            QCOMPARE(place->panel, panel);
            QCOMPARE(place->row, row);
            QVERIFY(std::abs(place->column - 30.5) < 0.1);
        }
    }
    QVERIFY(Plot::mapPixels(picture, size, {0, firstRow + rowCount, 30}, 31).isEmpty());
    QVERIFY(!Plot::mapPlaceAt(picture, size, {2, 2}));
}

void TestMapPicture::highestStandsInItsPlace()
{
    const auto map = mapOf(4, 2000, 0);
    map->sigma[2 * 2000 + 1500] = 9; // one of several columns that share a pixel
    map->sigma[0] = none;
    const Plot::MapPicture picture = pictureOf(1, map);
    const QSize size(640, 300);
    const QImage image = painted(picture, size);
    QCOMPARE(image.size(), size);
    const auto colourIn = [&](int row, double column) {
        const QRectF pixels = Plot::mapPixels(picture, size, {0, row, column}, column + 1);
        return image.pixel(int(pixels.left()), int(pixels.center().y()));
    };
    QCOMPARE(colourIn(2, 1500), QRgb(Plot::colourMap().back()));
    QCOMPARE(colourIn(2, 1000), QRgb(Plot::colourMap().front()));
    QCOMPARE(colourIn(1, 1500), QRgb(Plot::colourMap().front()));
}

// A picture on the screen and one in a file are painted by one function, whatever the painter's
// own font is.
void TestMapPicture::fileHasThePixelsOfTheScreen()
{
    const auto map = mapOf(7, 300, 1);
    for (std::size_t i = 0; i < map->sigma.size(); i += 17)
        map->sigma[i] = float(i % 9);
    const Plot::MapPicture picture = pictureOf(3, map);
    const QSize size(700, 400);
    QImage screen(size, QImage::Format_RGB32);
    {
        QPainter painter(&screen);
        painter.setFont(QFont("Serif", 30));
        Plot::paintMap(painter, picture, size);
    }
    QCOMPARE(painted(picture, size).convertToFormat(QImage::Format_RGB32), screen);
}

void TestMapPicture::oddMaps_data()
{
    QTest::addColumn<int>("panels");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<float>("value");
    QTest::addColumn<QSize>("size");
    QTest::newRow("one start, one DM") << 1 << 1 << 1 << 3.0f << QSize(640, 300);
    QTest::newRow("all bins marked") << 1 << 5 << 100 << none << QSize(640, 300);
    QTest::newRow("no row") << 1 << 0 << 0 << 0.0f << QSize(640, 300);
    QTest::newRow("more rows than pixels") << 1 << 900 << 10 << 20.0f << QSize(640, 300);
    QTest::newRow("no room") << 8 << 5 << 100 << 1.0f << QSize(60, 40);
    QTest::newRow("no map") << 0 << 0 << 0 << 0.0f << QSize(640, 300);
}

void TestMapPicture::oddMaps()
{
    QFETCH(int, panels);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(float, value);
    QFETCH(QSize, size);
    const Plot::MapPicture picture = pictureOf(panels, mapOf(rows, columns, value));
    const QImage image = painted(picture, size);
    QCOMPARE(image.size(), size);
    if (panels == 1 && rows > 0) {
        const QPoint middle(300, 130);
        const QRgb expected = std::isnan(value) ? QRgb(Plot::noValueColour)
                                                : QRgb(Plot::colourOfValue(value, 0, picture.high));
        QCOMPARE(image.pixel(middle), expected);
    }
}

int main(int argc, char **argv)
{
    return TestSupport::runTest<QGuiApplication, TestMapPicture>(argc, argv);
}

#include "tst_mappicture.moc"
