#include "calc/notch.h"

#include "calc/fourier.h"
#include "calc/samples.h"

#include <numeric>

using namespace TestSupport;

namespace {

constexpr double tsamp = 0.004;

// Powers under a Hann window over the last 2^15 values, in units of those of noise of sigma 1.
Series powersOf(const Series &series)
{
    const int count = 1 << 15;
    Series windowed(series.end() - count, series.end());
    for (int i = 0; i < count; ++i)
        windowed[std::size_t(i)] *= 1 - std::cos(2 * M_PI * i / count);
    Series powers(count / 2);
    Tools::amplitudeSpectrum(windowed.data(), powers.data(), count, count / 2);
    for (double &power : powers)
        power *= power * count / 6;
    return powers;
}

// Mean of the powers between two frequencies above the lowest steps, where the level is.
double meanPower(const Series &powers, double low, double high)
{
    const double steps = 2 * double(powers.size()) * tsamp;
    const auto first = std::ptrdiff_t(std::max(4.0, low * steps));
    const auto last = std::min(std::ptrdiff_t(high * steps) + 1, std::ptrdiff_t(powers.size()));
    return std::accumulate(powers.begin() + first, powers.begin() + last, 0.0) /
           double(last - first);
}

} // namespace

class TestNotch : public QObject {
    Q_OBJECT

private slots:
    void lineGoes_data();
    void lineGoes();
    void restStays();
    void shortAndOverlapping();
};

void TestNotch::lineGoes_data()
{
    QTest::addColumn<double>("low");
    QTest::addColumn<double>("high");
    QTest::addColumn<double>("drift");
    QTest::newRow("near 0") << 0.27 << 0.47 << 0.0;
    QTest::newRow("middle") << 50.0 << 50.2 << 0.0;
    QTest::newRow("drifting") << 50.0 << 50.4 << 0.3;
    QTest::newRow("wide") << 99.0 << 101.0 << 0.0;
    QTest::newRow("narrow") << 100.0 << 100.04 << 0.0;
    QTest::newRow("near half of the rate") << 124.6 << 124.8 << 0.0;
    QTest::newRow("up to half of the rate") << 124.7 << 125.0 << 0.0;
}

void TestNotch::lineGoes()
{
    QFETCH(double, low);
    QFETCH(double, high);
    QFETCH(double, drift);
    const Series clean = noise(49000, 5, 1);
    Series series = clean;
    const double frequency = low + 0.55 * (high - low);
    addSine(series, tsamp, frequency, 30, drift);
    const double side = low > 10 ? low - 0.5 : high + 0.5;
    addSine(series, tsamp, side, 2);
    const double share = Tools::notch(series, tsamp, {{low, high}})[0];
    QVERIFY2(share > 0.98 && share < 1, qPrintable(QString::number(share)));
    const Series powers = powersOf(series);
    const double within = meanPower(powers, low + 0.005, high - 0.005);
    QVERIFY2(within < 0.2, qPrintable(QString::number(within)));

    // The sine beside keeps its amplitude, and nothing else is there than before.
    addSine(series, tsamp, side, -2);
    const Series rest = powersOf(series);
    const Series before = powersOf(clean);
    for (const auto &[from, to] : {std::pair(low - 2, low - 0.1), {high + 0.1, high + 2}}) {
        if (to < 0.1 || from > 124.9)
            continue;
        const double ratio = meanPower(rest, from, to) / meanPower(before, from, to);
        QVERIFY2(std::abs(ratio - 1) < 0.02, qPrintable(QString::number(ratio)));
    }
    const double changed = meanPower(rest, low - 0.1, high + 0.1);
    QVERIFY2(changed < 1.2, qPrintable(QString::number(changed)));
}

void TestNotch::restStays()
{
    const Series clean = noise(30000, 6, 1);
    Series series = clean;
    QVERIFY(Tools::notch(series, tsamp, {}).empty());
    QCOMPARE(series, clean);
    Series constant(1000, 4.5e5);
    QCOMPARE(Tools::notch(constant, tsamp, {{33, 34}}), Series{0});
    QCOMPARE(constant, Series(1000, 4.5e5));
}

// A line goes from a series too short to show its width, and a band given twice counts once.
void TestNotch::shortAndOverlapping()
{
    Series series(1024, 1000);
    addSine(series, tsamp, 100.03, 30);
    const Series shares = Tools::notch(series, tsamp, {{99.9, 100.1}, {100, 100.2}});
    QVERIFY(std::abs(shares[0] + shares[1] - 1) < 1e-3);
    for (const double value : series)
        QVERIFY2(std::abs(value - 1000) < 0.3, qPrintable(QString::number(value)));
}

ZRT_UNIT_TEST_MAIN(TestNotch)
#include "tst_notch.moc"
