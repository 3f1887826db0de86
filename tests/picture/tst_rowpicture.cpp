#include "picture/colourmap.h"
#include "picture/percentiles.h"
#include "picture/rowpicture.h"
#include "support/testmain.h"

#include <QGuiApplication>
#include <QImage>
#include <cmath>
#include <limits>

class TestRowPicture : public QObject {
    Q_OBJECT

private slots:
    void narrowLinesStayInSight();
    void fewerValuesThanColumns();
    void colours();
    void stormsDoNotSetTheScale();
};

void TestRowPicture::narrowLinesStayInSight()
{
    std::vector<float> values(1000, 1);
    values[0] = values[999] = values[337] = 7;
    values[500] = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> maxima = Plot::columnMaxima(values, 7);
    QCOMPARE(maxima, (std::vector<float>{7, 1, 7, 1, 1, 1, 7}));
    const std::vector<float> none(10, std::numeric_limits<float>::quiet_NaN());
    QVERIFY(std::isnan(Plot::columnMaxima(none, 3)[1]));
    QVERIFY(std::isnan(Plot::columnMaxima({}, 3)[2]));
}

void TestRowPicture::fewerValuesThanColumns()
{
    QCOMPARE(Plot::columnMaxima({1, 2, 3}, 6), (std::vector<float>{1, 1, 2, 2, 3, 3}));
}

// The highest value is where it belongs, in the lightest colour.
void TestRowPicture::colours()
{
    Plot::RowPicture picture;
    picture.rows = 2;
    picture.columns = 4;
    picture.values = {0, 0, 0, 0, 0, 0, 0, 5};
    picture.lastX = 40;
    picture.high = 5;
    picture.key = "some key";
    const Plot::PictureBytes bytes =
        Plot::drawingBytes("png", Plot::drawingOf(picture, {640, 480}, 1));
    QCOMPARE(bytes.problem, QString());
    const QImage image = QImage::fromData(bytes.bytes, "PNG");
    QCOMPARE(image.size(), QSize(640, 480));
    QCOMPARE(image.text("Comment"), QString("some key"));
    const auto &map = Plot::colourMap();
    QCOMPARE(image.pixel(540, 400), QRgb(map.back()));
    QCOMPARE(image.pixel(540, 100), QRgb(map.front()));
    QCOMPARE(image.pixel(200, 400), QRgb(map.front()));
}

void TestRowPicture::stormsDoNotSetTheScale()
{
    std::vector<float> values;
    for (int row = 0; row < 9; ++row) {
        for (int i = 0; i < 101; ++i)
            values.push_back(row < 3 ? 1000.F : float(i + row)); // three storms in nine days
    }
    values[5 * 101] = std::numeric_limits<float>::infinity();
    const std::vector<float> ends = Plot::percentilesOfRows(values, 101, {0.01, 0.99});
    QCOMPARE(ends, (std::vector<float>{8, 106}));
    QVERIFY(Plot::percentilesOfRows({}, 7, {0.5}).empty());
}

int main(int argc, char **argv)
{
    return TestSupport::runTest<QGuiApplication, TestRowPicture>(argc, argv);
}

#include "tst_rowpicture.moc"
