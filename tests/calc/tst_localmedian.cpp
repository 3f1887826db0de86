#include "calc/localmedian.h"
#include "calc/spectrumlines.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

using Tools::NoiseLaw;

namespace {

// Sorts every window by itself; one that would begin before the values or end behind them is
// shifted.
std::vector<double> straightMedian(const std::vector<double> &values, int window)
{
    const int count = int(values.size());
    std::vector<double> medians;
    for (int i = 0; i < count; ++i) {
        const int begin = std::clamp(i - window / 2, 0, count - window);
        std::vector<double> inside(values.begin() + begin, values.begin() + begin + window);
        std::sort(inside.begin(), inside.end());
        medians.push_back(inside[std::size_t(window / 2)]);
    }
    return medians;
}

std::vector<double> powers(int count, unsigned seed)
{
    std::mt19937 random(seed);
    std::exponential_distribution<double> law;
    std::vector<double> values(static_cast<std::size_t>(count));
    for (double &value : values)
        value = law(random);
    return values;
}

double mean(const std::vector<double> &values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
}

} // namespace

class TestLocalMedian : public QObject {
    Q_OBJECT

private slots:
    void equalsSorting();
    void oddWindowsOnly();
    void expectedMedians();
    void levelHasNoBias();
    void linesOfASpectrum();
};

void TestLocalMedian::equalsSorting()
{
    std::vector<double> values = powers(700, 1);
    for (std::size_t i = 0; i < values.size(); i += 3)
        values[i] = std::round(values[i]); // many are equal
    values[100] = std::numeric_limits<double>::infinity();
    for (const int window : {1, 3, 129, 257, 699})
        QCOMPARE(Tools::localMedian(values, window), straightMedian(values, window));
}

void TestLocalMedian::oddWindowsOnly()
{
    QCOMPARE(Tools::localMedian({5, 1, 3, 9}, 101), std::vector<double>(4, 3.0));
    QCOMPARE(Tools::localMedian({5, 1, 3}, 101), std::vector<double>(3, 3.0));
    QCOMPARE(Tools::localMedian({5, 1, 3}, 0), (std::vector<double>{5, 1, 3}));
    QVERIFY(Tools::localMedian({}, 3).empty());
    // What is no number lies above all.
    const std::vector<double> holed = {1, NAN, 2, NAN, 3, 4, 5};
    QCOMPARE(Tools::localMedian(holed, 3)[2], double(INFINITY));
    QCOMPARE(Tools::localMedian(holed, 5)[2], 3.0);
    QCOMPARE(Tools::localMedian(holed, 3)[5], 4.0);
}

void TestLocalMedian::expectedMedians()
{
    QCOMPARE(Tools::expectedMedian(NoiseLaw::Exponential, 1), 1.0);
    QCOMPARE(Tools::expectedMedian(NoiseLaw::Exponential, 3), 1 / 2.0 + 1 / 3.0);
    QVERIFY(std::abs(Tools::expectedMedian(NoiseLaw::Exponential, 100001) - std::log(2)) < 1e-5);
    // Mean of a Rayleigh law; mean of the middle one of three, by partial fractions of its density
    // 6 F (1 - F) f; median of the law.
    const double root = std::sqrt(M_PI / 2);
    const auto near = [](double found, double expected) {
        return std::abs(found - expected) < 2e-5;
    };
    QVERIFY(near(Tools::expectedMedian(NoiseLaw::Rayleigh, 1), root));
    QVERIFY(near(Tools::expectedMedian(NoiseLaw::Rayleigh, 3),
                 root * (3 / std::sqrt(2) - 2 / std::sqrt(3))));
    QVERIFY(near(Tools::expectedMedian(NoiseLaw::Rayleigh, 100001), std::sqrt(2 * std::log(2))));
}

void TestLocalMedian::levelHasNoBias()
{
    // 100000 values of a window of 129 hold some 800 independent medians, each good to 8.8 % in
    // power: 0.3 %. Without the correction the level would be 0.6 % too high.
    const std::vector<double> power = powers(100000, 5);
    std::vector<double> amplitude = power;
    for (double &value : amplitude)
        value = std::sqrt(2 * value);
    for (const int window : {9, 129}) {
        const double level = mean(Tools::localNoise(power, window, NoiseLaw::Exponential));
        QVERIFY2(std::abs(level - 1) < 0.01, qPrintable(QString::number(level)));
        const double scale = mean(Tools::localNoise(amplitude, window, NoiseLaw::Rayleigh));
        QVERIFY2(std::abs(scale - 1) < 0.005, qPrintable(QString::number(scale)));
    }
}

void TestLocalMedian::linesOfASpectrum()
{
    // Rayleigh noise that doubles half way, a mean, and two lines, one spread over its neighbours.
    std::vector<double> spectrum = powers(8192, 9);
    for (std::size_t i = 0; i < spectrum.size(); ++i)
        spectrum[i] = std::sqrt(2 * spectrum[i]) * (i < 4096 ? 1 : 2);
    const int above = int(std::count_if(spectrum.begin() + 1, spectrum.end(),
                                        [](double value) { return value > 4; }));
    spectrum[0] = 1e6;
    spectrum[1000] = 10;
    spectrum[6000] = 16;
    spectrum[6001] = 14;
    const std::vector<double> levels = Tools::amplitudeNoise(spectrum, 257);
    QCOMPARE(levels[0], levels[1]);
    const std::vector<Tools::SpectrumLine> lines = Tools::strongestLines(spectrum, levels, 3);
    QCOMPARE(lines.size(), std::size_t(3));
    QCOMPARE(lines[0].number, 1000);
    QCOMPARE(lines[0].amplitude, 10.0);
    QVERIFY(std::abs(lines[0].snr - 10) < 2);
    QCOMPARE(lines[1].number, 6000);
    QVERIFY(lines[2].snr < 5);
    // 4095 exp(-8) + 4096 exp(-2) = 556, to its own root.
    const double expected = Tools::expectedAbove(levels, 4);
    QVERIFY2(std::abs(expected - 556) < 60 && std::abs(above - expected) < 4 * std::sqrt(556),
             qPrintable(QString("%1 %2").arg(expected).arg(above)));
}

ZRT_UNIT_TEST_MAIN(TestLocalMedian)
#include "tst_localmedian.moc"
