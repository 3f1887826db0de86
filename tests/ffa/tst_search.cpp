#include "ffa/boxcar.h"
#include "ffa/foldsearch.h"
#include "ffa/foldtransform.h"
#include "ffa/periodogram.h"
#include "ffa/straightffa.h"
#include "support/testmain.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace {

using Floats = std::vector<float>;
using Widths = std::vector<std::uint64_t>;

Floats noise(std::size_t count)
{
    std::mt19937 generator(7);
    std::normal_distribution<float> normal;
    Floats data(count);
    for (float &value : data)
        value = normal(generator);
    return data;
}

// Equal bits, or both not a number.
bool sameValue(float a, float b)
{
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

QByteArray firstDifference(const Floats &got, const Floats &expected)
{
    if (got.size() != expected.size())
        return QString("%1 values, not %2").arg(got.size()).arg(expected.size()).toUtf8();
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (!sameValue(got[i], expected[i]))
            return QString("value %1: %2, not %3").arg(i).arg(got[i]).arg(expected[i]).toUtf8();
    }
    return {};
}

} // namespace

class TestSearch : public QObject {
    Q_OBJECT

private slots:
    void foldEqualsPlain_data();
    void foldEqualsPlain();
    void searchEqualsStraight_data();
    void searchEqualsStraight();
};

void TestSearch::foldEqualsPlain_data()
{
    QTest::addColumn<int>("bins");
    QTest::addColumn<Widths>("widths");
    const Widths few{1, 2, 3};
    // Around the vectors' lengths, and where short rows change to the plain road.
    for (const int bins :
         {2, 7, 10, 11, 12, 15, 16, 17, 18, 19, 20, 31, 32, 33, 47, 49, 64, 65, 130})
        QTest::addRow("%d bins", bins) << bins << few;
    QTest::newRow("no width") << 20 << Widths{};
    QTest::newRow("one width") << 20 << Widths{2};
    QTest::newRow("six widths") << 20 << Widths{1, 2, 3, 4, 5, 6};
    QTest::newRow("many widths, not in order")
        << 40 << Widths{5, 1, 39, 2, 17, 3, 4, 6, 9, 13, 19, 28, 7, 8};
    QTest::newRow("widths of the profile and more") << 40 << Widths{1, 39, 40, 41, 120, 205};
    QTest::newRow("width zero") << 40 << Widths{0, 1};
}

// Every number of rows in turn exercises every shape of the recursion; one row more or less
// evaluated fills the last tile differently.
void TestSearch::foldEqualsPlain()
{
    QFETCH(int, bins);
    QFETCH(Widths, widths);
    std::vector<int> rowCounts(40);
    std::iota(rowCounts.begin(), rowCounts.end(), 1);
    rowCounts.insert(rowCounts.end(), {63, 64, 65, 100, 127, 251, 300});
    constexpr int slack = Ffa::FoldSearch::seriesSlack;
    const std::vector<quint64> widths64(widths.begin(), widths.end());
    const Floats data = noise(300 * std::size_t(bins) + 2 * slack);
    for (const Ffa::Lanes lanes : {Ffa::Lanes::Eight, Ffa::Lanes::Sixteen}) {
        Ffa::FoldLimits limits;
        limits.samples = 300 * quint64(bins);
        limits.binsMin = bins;
        limits.binsMax = bins;
        Ffa::FoldSearch search(limits, widths64.data(), widths.size(), lanes);
        for (const int rows : rowCounts) {
            Ffa::PlanFold fold;
            fold.bins = bins;
            fold.rows = quint64(rows);
            const Floats series(data.begin() + slack, data.begin() + slack + rows * bins);
            const Floats profiles = StraightFfa::transform(series, rows, bins);
            for (const int evaluated : {rows, rows - 1, rows / 2}) {
                fold.evaluated = quint64(evaluated);
                Floats expected(std::size_t(evaluated) * widths.size());
                Ffa::boxcarSnr(Ffa::ConstBlock{profiles.data(), fold.evaluated, quint64(bins)},
                               widths64.data(), widths.size(), 3.0f, expected.data());
                Floats got(expected.size() + 1, -9);
                search.run(data.data() + slack, fold, 3.0f, got.data());
                expected.push_back(-9);
                const QByteArray difference = firstDifference(got, expected);
                QVERIFY2(difference.isEmpty(),
                         qPrintable(QString("%1 rows: %2").arg(rows).arg(QString(difference))));
            }
        }
    }
}

void TestSearch::searchEqualsStraight_data()
{
    QTest::addColumn<Floats>("data");
    QTest::addColumn<double>("tsamp");
    QTest::addColumn<double>("periodMin");
    QTest::addColumn<double>("periodMax");
    QTest::addColumn<int>("binsMin");
    QTest::addColumn<int>("binsMax");
    QTest::addColumn<double>("ducyMax");
    QTest::addColumn<double>("wtsp");
    const auto row = [](const char *name, const Floats &data, double tsamp, double periodMin,
                        double periodMax, int binsMin, int binsMax, double ducyMax, double wtsp) {
        QTest::newRow(name) << data << tsamp << periodMin << periodMax << binsMin << binsMax
                            << ducyMax << wtsp;
    };
    const Floats data = noise(6000);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    Floats holed = data;
    holed[1234] = nan;
    Floats spiked = data;
    spiked[0] = infinite;
    spiked[5000] = -infinite;
    Floats wide = data;
    for (std::size_t i = 0; i < wide.size(); ++i)
        wide[i] = std::ldexp(wide[i], int(i % 61) - 30);

    row("no downsampling in the first step", data, 0.015625, 1, 3, 64, 80, 0.2, 1.5);
    row("factors that are not whole", data, 0.0125, 1, 9.7, 64, 128, 0.2, 1.5);
    row("longest period not a whole number of samples", data, 0.0125, 1, 1.537, 40, 55, 0.3, 1.5);
    row("longest period beyond the data", data, 0.01, 1, 1000, 32, 64, 0.2, 1.5);
    row("a single number of bins", data, 0.01, 1, 2, 37, 37, 0.2, 1.5);
    row("fewer bins than a vector", data, 0.01, 0.05, 0.4, 2, 9, 0.5, 1.5);
    row("bins around the vectors", data, 0.01, 0.1, 0.4, 8, 20, 0.5, 1.1);
    row("every width", data, 0.01, 1, 2, 24, 30, 0.9, 1.0);
    row("duty cycle of one", data, 0.01, 1, 2, 20, 30, 1.0, 1.3);
    row("duty cycle above one", data, 0.01, 1, 2, 20, 30, 3.1, 1.7);
    row("constant", Floats(4000, 1.5f), 0.01, 1, 3, 30, 50, 0.2, 1.5);
    row("zeros of both signs", Floats(4000, -0.0f), 0.01, 1, 3, 30, 50, 0.2, 1.5);
    row("a sample not a number", holed, 0.01, 1, 3, 30, 50, 0.2, 1.5);
    row("infinite samples", spiked, 0.01, 1, 3, 30, 50, 0.2, 1.5);
    row("samples of very different size", wide, 0.01, 1, 3, 30, 50, 0.2, 1.5);
    row("too short for two rows", noise(70), 0.01, 0.4, 3, 40, 50, 0.2, 1.5);
    row("two to four rows", noise(170), 0.01, 0.4, 3, 40, 50, 0.2, 1.5);
}

void TestSearch::searchEqualsStraight()
{
    QFETCH(Floats, data);
    QFETCH(double, tsamp);
    QFETCH(double, periodMin);
    QFETCH(double, periodMax);
    QFETCH(int, binsMin);
    QFETCH(int, binsMax);
    QFETCH(double, ducyMax);
    QFETCH(double, wtsp);
    const Floats before = data;
    const Periodogram got(data.data(), data.size(), tsamp, periodMin, periodMax, binsMin, binsMax,
                          ducyMax, wtsp);
    QCOMPARE(got.error, QString());
    QVERIFY(firstDifference(data, before).isEmpty());
    const Widths widths(got.widths.begin(), got.widths.end());
    const StraightFfa::Result expected =
        StraightFfa::search(data, tsamp, widths, periodMin, periodMax, binsMin, binsMax);
    QCOMPARE(quint64(got.length), quint64(expected.periods.size()));
    QCOMPARE(quint64(got.nwidths), quint64(widths.size()));
    QCOMPARE(got.periods, expected.periods);
    QVERIFY(std::equal(got.foldbins.begin(), got.foldbins.end(), expected.foldbins.begin(),
                       expected.foldbins.end()));
    const QByteArray difference = firstDifference(got.snr, expected.snr);
    QVERIFY2(difference.isEmpty(), difference);
}

ZRT_UNIT_TEST_MAIN(TestSearch)
#include "tst_search.moc"
