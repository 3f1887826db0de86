#include "calc/combfit.h"

#include "calc/fourier.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr int seriesLength = 2048;

// Amplitudes of noise of sigma 1 with cosines of one height at the multiples of a frequency, which
// is in lines of the spectrum of the series as it is.
//
// beam: sigma over the length of the series, in the middle of which it stands; 0: steady
std::vector<double> spectrumOf(double frequency, int harmonics, double height, bool isPadded,
                               std::mt19937 &random, double beam = 0)
{
    const auto strength = [beam](int i) {
        return beam > 0 ? std::exp(-0.5 * std::pow((double(i) / seriesLength - 0.5) / beam, 2)) : 1;
    };
    std::normal_distribution<double> noise;
    std::uniform_real_distribution<double> phase(0, twoPi);
    std::vector<double> series(seriesLength * (isPadded ? 2 : 1), 0.0);
    for (int i = 0; i < seriesLength; ++i)
        series[std::size_t(i)] = noise(random);
    for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
        const double begin = phase(random);
        for (int i = 0; i < seriesLength; ++i)
            series[std::size_t(i)] +=
                height * strength(i) *
                std::cos(twoPi * harmonic * frequency * i / seriesLength + begin);
    }
    std::vector<double> amplitudes(series.size() / 2);
    Tools::amplitudeSpectrum(series.data(), amplitudes.data(), int(series.size()),
                             int(amplitudes.size()));
    return amplitudes;
}

} // namespace

class TestCombFit : public QObject {
    Q_OBJECT

private slots:
    void errorsAreTrue_data();
    void errorsAreTrue();
    void fromAHigherHarmonic();
    void nothingThere();
};

void TestCombFit::errorsAreTrue_data()
{
    QTest::addColumn<int>("harmonics");
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("beam");
    QTest::addColumn<bool>("isPadded");
    QTest::newRow("one weak line") << 1 << 0.25 << 0.0 << false;
    QTest::newRow("one strong line, padded") << 1 << 2.0 << 0.0 << true;
    QTest::newRow("weak comb") << 6 << 0.25 << 0.0 << false;
    QTest::newRow("strong comb, padded") << 6 << 0.5 << 0.0 << true;
    QTest::newRow("comb through a beam") << 6 << 2.0 << 0.2 << false;
    QTest::newRow("weak comb through a beam, padded") << 3 << 0.6 << 0.15 << true;
}

void TestCombFit::errorsAreTrue()
{
    QFETCH(int, harmonics);
    QFETCH(double, height);
    QFETCH(double, beam);
    QFETCH(bool, isPadded);
    std::mt19937 random(3);
    std::uniform_real_distribution<double> frequencies(20, 60);
    int within1 = 0;
    int within2 = 0;
    int fits = 0;
    for (int seed = 0; seed < 200; ++seed) {
        const double frequency = frequencies(random);
        const std::vector<double> amplitudes =
            spectrumOf(frequency, harmonics, height, isPadded, random, beam);
        const double place = frequency * (isPadded ? 2 : 1);
        const auto around = amplitudes.begin() + std::ptrdiff_t(std::lround(place));
        const auto peak = std::max_element(around - 1, around + 2) - amplitudes.begin();
        const Tools::CombFit fit = Tools::fitComb(amplitudes, double(peak), 1);
        if (fit.lines == 0)
            continue;
        ++fits;
        within1 += std::abs(fit.fundamental - place) < fit.error ? 1 : 0;
        within2 += std::abs(fit.fundamental - place) < 2 * fit.error ? 1 : 0;
    }
    QVERIFY(fits > 150);
    // Shares of 200 scatter by 0.033 and 0.015.
    QVERIFY2(within1 > 0.58 * fits && within1 < 0.78 * fits, qPrintable(QString::number(within1)));
    QVERIFY2(within2 > 0.91 * fits, qPrintable(QString::number(within2)));
}

// The user points at the fourth line; the fundamental is a quarter of it, not the line itself.
void TestCombFit::fromAHigherHarmonic()
{
    std::mt19937 random(5);
    const std::vector<double> amplitudes = spectrumOf(31.37, 12, 1, false, random);
    const Tools::CombFit fit = Tools::fitComb(amplitudes, 125.0 / 4, 4);
    QCOMPARE(fit.lines, 12);
    QVERIFY(std::abs(fit.fundamental - 31.37) < 3 * fit.error);
    QVERIFY(fit.error < 0.01);
}

void TestCombFit::nothingThere()
{
    std::mt19937 random(7);
    const std::vector<double> noise = spectrumOf(30, 0, 0, false, random);
    QCOMPARE(Tools::fitComb(noise, 200, 1).lines, 0);
    QCOMPARE(Tools::fitComb(noise, 2000, 1).lines, 0); // beyond the spectrum
    QCOMPARE(Tools::fitComb(noise, NAN, 1).lines, 0);
    QCOMPARE(Tools::fitComb(std::vector<double>(1000, 0.0), 200, 1).lines, 0);
    QCOMPARE(Tools::fitComb({1, 2}, 1, 1).lines, 0);
}

ZRT_UNIT_TEST_MAIN(TestCombFit)

#include "tst_combfit.moc"
