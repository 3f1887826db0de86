#include "calc/notch.h"

#include "calc/fourier.h"
#include "calc/samples.h"

#include <numeric>

using namespace TestSupport;

namespace {
constexpr double tsamp = 0.004;

// Mean power under a Hann window over the last 2^15 values, between two frequencies above the
// lowest steps, where the level is. That of noise of sigma 1 is 1.
double meanPower(const Series &series, double low, double high)
{
    const int count = 1 << 15;
    Series powers(series.end() - count, series.end());
    for (int i = 0; i < count; ++i)
        powers[std::size_t(i)] *= 1 - std::cos(2 * M_PI * i / count);
    Tools::amplitudeSpectrum(Series(powers).data(), powers.data(), count, count / 2);
    const int first = std::max(4, int(low * count * tsamp));
    const int last = std::min(int(high * count * tsamp) + 1, count / 2);
    return std::inner_product(powers.begin() + first, powers.begin() + last, powers.begin() + first,
                              0.0) *
           count / 6 / (last - first);
}

} // namespace

class TestNotch : public QObject {
    Q_OBJECT

private slots:
    void lineGoes();
    void restStays();
    void shortAndOverlapping();
    void stops();
    void promisesMemory();
};

// A strong line goes and a sine beside it stays, near 0, in the middle and near half of the rate.
void TestNotch::lineGoes()
{
    const Series clean = noise(49000, 5, 1);
    const struct {
        double low, high, drift;
    } rows[] = {{0.27, 0.47, 0},  {50, 50.2, 0}, {50, 50.4, 0.3},   {99, 101, 0},
                {100, 100.04, 0}, {24, 24.2, 0}, {124.6, 124.8, 0}, {124.7, 125, 0}};
    for (const auto &[low, high, drift] : rows) {
        Series series = clean;
        addSine(series, tsamp, low + 0.55 * (high - low), 30, drift);
        const double side = low > 10 ? low - 0.5 : high + 0.5;
        addSine(series, tsamp, side, 2);
        const double share = Tools::notch(series, tsamp, {{low, high}})[0];
        QVERIFY2(share > 0.98 && share < 1, qPrintable(QString::number(share)));
        QVERIFY(meanPower(series, low + 0.005, high - 0.005) < 0.2);
        // With the sine gone as well, the noise is there as before.
        addSine(series, tsamp, side, -2);
        for (const auto &[from, to] : {std::pair(low - 2, low - 0.1), {high + 0.1, high + 2}}) {
            if (to < 0.15 || from > 124.85)
                continue;
            const double ratio = meanPower(series, from, to) / meanPower(clean, from, to);
            QVERIFY2(std::abs(ratio - 1) < 0.02, qPrintable(QString::number(ratio)));
        }
        QVERIFY(meanPower(series, low - 0.1, high + 0.1) < 1.2);
    }
}

void TestNotch::restStays()
{
    Series series = noise(30000, 6, 1);
    QVERIFY(Tools::notch(series, tsamp, {}).empty());
    QCOMPARE(series, noise(30000, 6, 1));
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
        QVERIFY(std::abs(value - 1000) < 0.3);
}

// A long series goes in pieces, each of many steps: none of them goes on once it may not.
void TestNotch::stops()
{
    Series series = noise(900000, 7, 1);
    int asked = 0;
    Tools::notch(series, tsamp, {{49.9, 50.1}}, [&asked] { return ++asked < 6; });
    QVERIFY(asked >= 6 && asked <= 8);
}

// The memory grows with the length of a piece, beyond that by the series alone.
void TestNotch::promisesMemory()
{
    const std::vector<Tools::NotchBand> bands = {{49.9, 50.1}};
    QCOMPARE(Tools::notchBytes(1000000, tsamp, {}), 0.0);
    const double ofMillion = Tools::notchBytes(1000000, tsamp, bands);
    QVERIFY(ofMillion < 1e8);
    QCOMPARE(Tools::notchBytes(1 << 24, tsamp, bands) - ofMillion,
             double(sizeof(double)) * ((1 << 24) - 1000000));
}

ZRT_UNIT_TEST_MAIN(TestNotch)
#include "tst_notch.moc"
