#include "ffa/ffaplan.h"
#include "support/testmain.h"

#include <limits>
#include <stdexcept>

namespace {

constexpr double endless = std::numeric_limits<double>::infinity();
constexpr double notNumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

class TestPlan : public QObject {
    Q_OBJECT

private slots:
    void widths_data();
    void widths();
    void refusesEndlessWidths();
    void validation_data();
    void validation();
    void length_data();
    void length();
    void stepsEndWithTheSeries();
    void lastPeriodStaysInRange();
};

void TestPlan::widths_data()
{
    QTest::addColumn<int>("binsMin");
    QTest::addColumn<double>("ducyMax");
    QTest::addColumn<double>("wtsp");
    QTest::addColumn<std::vector<qint32>>("expected");
    using List = std::vector<qint32>;
    QTest::newRow("never less than one") << 10 << 0.05 << 1.5 << List{1};
    QTest::newRow("growth") << 100 << 0.2 << 1.5 << List{1, 2, 3, 4, 6, 9, 13, 19};
    QTest::newRow("bound is included") << 10 << 0.4 << 2.0 << List{1, 2, 4};
    QTest::newRow("no growth") << 10 << 0.4 << 0.3 << List{1, 2, 3, 4};
    QTest::newRow("negative growth") << 10 << 0.4 << -endless << List{1, 2, 3, 4};
    QTest::newRow("endless growth") << 10 << 0.4 << endless << List{1};
    QTest::newRow("growth not a number") << 10 << 0.2 << notNumber << List{1, 2};
    QTest::newRow("duty cycle not a number") << 10 << notNumber << 1.5 << List{1};
    QTest::newRow("negative bins") << -10 << 0.4 << 1.5 << List{1};
    QTest::newRow("up to the largest int")
        << 2147483647 << 7.0 << 46340.0 << List{1, 46340, 2147395600};
}

void TestPlan::widths()
{
    QFETCH(int, binsMin);
    QFETCH(double, ducyMax);
    QFETCH(double, wtsp);
    QFETCH(std::vector<qint32>, expected);
    QCOMPARE(Ffa::trialWidths(binsMin, ducyMax, wtsp), expected);
}

void TestPlan::refusesEndlessWidths()
{
    QTest::ignoreMessage(QtDebugMsg, "Ffa::trialWidths(): too many widths, ducy_max=inf wtsp=1");
    QVERIFY(Ffa::trialWidths(64, endless, 1.0).empty());
}

void TestPlan::validation_data()
{
    QTest::addColumn<quint64>("size");
    QTest::addColumn<double>("tsamp");
    QTest::addColumn<double>("periodMin");
    QTest::addColumn<double>("periodMax");
    QTest::addColumn<int>("binsMin");
    QTest::addColumn<int>("binsMax");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, quint64 size, double tsamp, double periodMin,
                        double periodMax, int binsMin, int binsMax, const char *message) {
        QTest::newRow(name) << size << tsamp << periodMin << periodMax << binsMin << binsMax
                            << message;
    };
    row("good", 1000, 0.01, 1, 2, 64, 80, "");
    row("shortest period exactly", 1000, 0.015625, 1, 2, 64, 64, "");
    row("endless range", 1000, 0.01, 1, endless, 64, 80, "");
    row("no samples", 0, notNumber, notNumber, notNumber, 0, 0, "size must be > 0");
    row("no interval", 1000, 0, 1, 2, 64, 80, "tsamp must be > 0");
    row("interval not a number", 1000, notNumber, 1, 2, 64, 80, "tsamp must be > 0");
    row("no period", 1000, 0.01, 0, -1, 1, 0, "period_min must be > 0");
    row("period not a number", 1000, 0.01, notNumber, 2, 64, 80, "period_min must be > 0");
    row("empty range", 1000, 0.01, 2, 2, 1, 0, "period_max must be > period_min");
    row("range not a number", 1000, 0.01, 2, notNumber, 64, 80, "period_max must be > period_min");
    row("infinite period", 1000, 0.01, endless, endless, 64, 80, "period_max must be > period_min");
    row("one bin, earlier than no range", 1000, 0.01, 1, 2, 1, 0, "bins_min must be > 1");
    row("bins reversed", 1000, 0.01, 1, 2, 80, 64, "bins_max must be >= bins_min");
    row("shortest period too short", 1000, 0.02, 1, 2, 64, 80,
        "Must have: period_min >= tsamp * bins_min (0.02*64=1.28)");
    row("infinite interval", 1000, endless, 1, 2, 64, 80,
        "Must have: period_min >= tsamp * bins_min (inf*64=inf)");
}

void TestPlan::validation()
{
    QFETCH(quint64, size);
    QFETCH(double, tsamp);
    QFETCH(double, periodMin);
    QFETCH(double, periodMax);
    QFETCH(int, binsMin);
    QFETCH(int, binsMax);
    QFETCH(QString, message);
    QCOMPARE(Ffa::validateParameters(size, tsamp, periodMin, periodMax, binsMin, binsMax), message);

    QString thrown;
    try {
        Ffa::requireParameters(size, tsamp, periodMin, periodMax, binsMin, binsMax);
    } catch (const std::invalid_argument &error) {
        thrown = error.what();
    }
    QCOMPARE(thrown, message.section(" (", 0, 0));
    if (!message.isEmpty())
        QCOMPARE(Ffa::periodogramLength(size, tsamp, periodMin, periodMax, binsMin, binsMax),
                 quint64(0));
}

// Hand-worked: with tsamp 1 and period_min equal to bins_min the first step is not
// downsampled, and period_max below (bins_max + 1) bins leaves that step alone.
void TestPlan::length_data()
{
    QTest::addColumn<quint64>("size");
    QTest::addColumn<double>("periodMax");
    QTest::addColumn<int>("binsMin");
    QTest::addColumn<int>("binsMax");
    QTest::addColumn<quint64>("expected");
    // 10 bins, 10 rows: ceil(10 x 9 x (1 - 10/11)) = ceil(8.18..) = 9.
    QTest::newRow("one fold") << quint64(109) << 10.9999 << 10 << 10 << quint64(9);
    // Longest period 10.5: ceil(90 x (1 - 10/10.5)) = ceil(4.29) = 5.
    QTest::newRow("period between two bins") << quint64(100) << 10.5 << 10 << 10 << quint64(5);
    // The longest period is that of 11 bins: they add ceil(11 x 8 x 0) = 0 rows.
    QTest::newRow("longest period is whole") << quint64(100) << 11.0 << 10 << 11 << quint64(9);
    QTest::newRow("one row only") << quint64(19) << 10.9999 << 10 << 10 << quint64(0);
    // Two rows: ceil(10 x 1 x 0.0909) = 1.
    QTest::newRow("two rows") << quint64(20) << 10.9999 << 10 << 10 << quint64(1);
    QTest::newRow("series below the bins") << quint64(9) << 10.9999 << 10 << 10 << quint64(0);
    // Factors 1, 3, 9 leave 40, 13, 4 samples. Rows of 2 to 5 bins: 20, 13, 10, 8, then
    // 6, 4, 3, 2, then 2 of 2 bins; kept 13 + 9 + 8 + 6, then 4 + 3 + 2 + 1, then 1.
    QTest::newRow("endless range") << quint64(40) << endless << 2 << 5 << quint64(47);
}

void TestPlan::length()
{
    QFETCH(quint64, size);
    QFETCH(double, periodMax);
    QFETCH(int, binsMin);
    QFETCH(int, binsMax);
    QFETCH(quint64, expected);
    QCOMPARE(Ffa::periodogramLength(size, 1.0, binsMin, periodMax, binsMin, binsMax), expected);
}

// A longest period beyond the data asks for factors with nothing left to fold.
void TestPlan::stepsEndWithTheSeries()
{
    const quint64 whole = Ffa::periodogramLength(1000, 0.01, 1, 10, 64, 128);
    QVERIFY(whole > 0);
    QCOMPARE(Ffa::periodogramLength(1000, 0.01, 1, 1e6, 64, 128),
             Ffa::periodogramLength(1000, 0.01, 1, 1e300, 64, 128));
    const Ffa::SearchPlan plan(1000, 0.01, 1, 1e300, 64, 128);
    qint64 steps = 0;
    while (const auto step = plan.step(steps)) {
        QVERIFY(step->factor <= 1000);
        ++steps;
    }
    QVERIFY(steps > 0 && steps < 10);
    // The smallest growth there is: 2^31 / (2^31 - 1) per step, and data for none of them.
    QCOMPARE(Ffa::periodogramLength(1000000, 1e-12, 1, 1e300, 2147483647, 2147483647), quint64(0));
}

void TestPlan::lastPeriodStaysInRange()
{
    const Ffa::SearchPlan plan(100000, 0.0125, 1.0, 7.3, 64, 80);
    double longest = 0;
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        for (int bins = 64; bins <= step->binsLast; ++bins) {
            const Ffa::PlanFold fold = step->fold(bins);
            const double last = double(fold.evaluated) - 1;
            if (fold.evaluated > 0)
                longest = std::max(longest, step->tau * bins * bins /
                                                (bins - last / (double(fold.rows) - 1)));
        }
    }
    QVERIFY2(longest <= 7.3 * (1 + 1e-12), qPrintable(QString::number(longest, 'g', 17)));
    QVERIFY2(longest > 7.29, qPrintable(QString::number(longest, 'g', 17)));
}

ZRT_UNIT_TEST_MAIN(TestPlan)
#include "tst_plan.moc"
