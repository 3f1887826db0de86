#include "calc/seriesstatistics.h"

#include "support/testmain.h"

#include <cmath>
#include <limits>

class TestSeriesStatistics : public QObject {
    Q_OBJECT

private slots:
    void statistics();
    void histogram();
};

void TestSeriesStatistics::statistics()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const SeriesStatistics found = Tools::seriesStatistics({9, nan, 2, 4, infinity, 5, 4, 4, 5, 7});
    QCOMPARE(found.count, qint64(8));
    QCOMPARE(found.missing, qint64(2));
    QCOMPARE(found.mean, 5.0);
    QCOMPARE(found.median, 4.5);
    QCOMPARE(found.sigma, std::sqrt(32.0 / 7)); // deviations 4 -3 -1 0 -1 -1 0 2
    QCOMPARE(found.min, 2.0);
    QCOMPARE(found.max, 9.0);
    QCOMPARE(Tools::seriesStatistics({3, 1, 2}).median, 2.0);
    QCOMPARE(Tools::seriesStatistics({3}).sigma, 0.0);
    QVERIFY(std::isnan(Tools::seriesStatistics({nan}).mean));
}

void TestSeriesStatistics::histogram()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QCOMPARE(Tools::histogram({0, 0.5, 1, 3.9, 4, 5, -1, nan}, 0, 4, 4),
             (std::vector<qint64>{2, 1, 0, 2}));
    const double least = std::numeric_limits<double>::denorm_min();
    QVERIFY(Tools::histogram({0, least}, 0, least, 10).empty());
    QVERIFY(Tools::histogram({1, 1}, 1, 1, 10).empty());
}

ZRT_UNIT_TEST_MAIN(TestSeriesStatistics)
#include "tst_seriesstatistics.moc"
