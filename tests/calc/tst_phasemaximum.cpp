#include "calc/phasemaximum.h"
#include "calc/significance.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

using Tools::PhaseMaximum;

class TestPhaseMaximum : public QObject {
    Q_OBJECT

private slots:
    void oneValue_data();
    void oneValue();
    void sumsOfNoise_data();
    void sumsOfNoise();
    void farTail();
    void cutOff();
};

void TestPhaseMaximum::oneValue_data()
{
    QTest::addColumn<double>("phases");
    QTest::newRow("fifteen") << 15.0;
    QTest::newRow("fifty-seven") << 57.0;
    QTest::newRow("a thousand") << 1000.0;
}

// The highest of n Gaussian values exceeds x with the probability 1 - Phi(x)^n. Values that are
// exceeded by a half and by a quarter and three quarters tell median and scatter.
void TestPhaseMaximum::oneValue()
{
    QFETCH(double, phases);
    const PhaseMaximum law(phases, 1);
    const auto exact = [phases](double x) {
        return std::log(-std::expm1(phases * Tools::logNormalTail(-x)));
    };
    const auto quantile = [&](double logTail) {
        double low = -5;
        double high = 50;
        for (int i = 0; i < 100; ++i) {
            const double middle = (low + high) / 2;
            (exact(middle) > logTail ? low : high) = middle;
        }
        return low;
    };
    const double median = quantile(std::log(0.5));
    double low = 0;
    double high = 5;
    for (int i = 0; i < 100; ++i) {
        const double middle = (low + high) / 2;
        const double inside = std::exp(exact(median - middle)) - std::exp(exact(median + middle));
        (inside < 0.5 ? low : high) = middle;
    }
    const double scatter = 1.4826 * low;
    for (const double logTail : {-0.05, -0.3, -1.0, -5.0, -10.0, -20.0, -200.0}) {
        const double x = (quantile(logTail) - median) / scatter;
        const double error = std::abs(law.logTail(x) - logTail);
        // The approximation is right to some per cent.
        QVERIFY2(error < 0.06, qPrintable(QString("%1: %2").arg(logTail).arg(law.logTail(x))));
    }
    QVERIFY(std::abs(law.median()) < 0.02);
    QVERIFY(std::abs(law.scatter() - 1) < 0.02);
}

void TestPhaseMaximum::sumsOfNoise_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("a pair") << 2;
    QTest::newRow("thirty") << 30;
}

void TestPhaseMaximum::sumsOfNoise()
{
    QFETCH(int, count);
    constexpr int phases = 40;
    constexpr int draws = 20000;
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> uniform;
    // The highest of n values is the one that a share u^(1/n) lies below.
    std::vector<double> values(std::size_t(count) * draws);
    for (double &value : values)
        value = -Tools::sigmaOfTail(std::log(uniform(random)) / phases);
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    const double median = sorted[sorted.size() / 2];
    for (double &value : sorted)
        value = std::abs(value - median);
    std::sort(sorted.begin(), sorted.end());
    const double scatter = 1.4826 * sorted[sorted.size() / 2];

    const PhaseMaximum law(phases, count);
    std::vector<double> tails;
    for (int draw = 0; draw < draws; ++draw) {
        double sum = 0;
        for (int i = 0; i < count; ++i)
            sum += (values[std::size_t(draw * count + i)] - median) / scatter;
        tails.push_back(law.logTail(sum));
    }
    for (const double share : {0.5, 0.1, 0.01, 0.001}) {
        const auto below = double(std::count_if(tails.begin(), tails.end(),
                                                [share](double t) { return t < std::log(share); }));
        const double expected = share * draws;
        QVERIFY2(std::abs(below - expected) < 4 * std::sqrt(expected) + 0.06 * expected,
                 qPrintable(QString("%1: %2 of %3").arg(share).arg(below).arg(expected)));
    }
}

// A bright pulsar lies far beyond the table: the tail goes on falling, and without a step.
void TestPhaseMaximum::farTail()
{
    const PhaseMaximum law(57, 100);
    double last = law.sigma(0);
    for (double sum = 100; sum < 100000; sum *= 1.1) {
        const double sigma = law.sigma(sum);
        QVERIFY(std::isfinite(sigma) && sigma > last && sigma < 1.3 * last + 10);
        last = sigma;
    }
    QVERIFY(law.sigma(-1e6) < -5);
}

// Nothing cut off: mean and variance are those of the sum. A third cut off: those of min(x, q) of
// the values that equally spaced shares lie below.
void TestPhaseMaximum::cutOff()
{
    const PhaseMaximum law(40, 400);
    const PhaseMaximum::Cut all = law.cut(0);
    QVERIFY(std::abs(400 * all.mean - law.median()) < 0.1 * law.scatter());
    QVERIFY(std::abs(std::sqrt(400 * all.variance) / law.scatter() - 1) < 0.01);
    const PhaseMaximum::Cut third = law.cut(1.0 / 3);
    const PhaseMaximum one(40, 1);
    QVERIFY(std::abs(one.logTail(third.quantile) - std::log(1.0 / 3)) < 0.03);
    constexpr int count = 20000;
    std::vector<double> values;
    for (int i = 0; i < count; ++i)
        values.push_back(-Tools::sigmaOfTail(std::log((i + 0.5) / count) / 40));
    const double median = values[count / 2];
    std::vector<double> deviations;
    for (const double value : values)
        deviations.push_back(std::abs(value - median));
    std::nth_element(deviations.begin(), deviations.begin() + count / 2, deviations.end());
    double sum = 0;
    double squares = 0;
    for (const double value : values) {
        const double x =
            std::min(third.quantile, (value - median) / (1.4826 * deviations[count / 2]));
        sum += x / count;
        squares += x * x / count;
    }
    QVERIFY(std::abs(third.mean - sum) < 0.001);
    QVERIFY(std::abs(third.variance - (squares - sum * sum)) < 0.001);
}

ZRT_UNIT_TEST_MAIN(TestPhaseMaximum)
#include "tst_phasemaximum.moc"
