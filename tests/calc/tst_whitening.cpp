#include "calc/whitening.h"
#include "support/noisespectrum.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>

class TestWhitening : public QObject {
    Q_OBJECT

private slots:
    void noiseIsExponential_data();
    void noiseIsExponential();
    void equalsItsLaw();
    void strongLinesKeepTheirRatio();
    void withoutNoise();
};

void TestWhitening::noiseIsExponential_data()
{
    QTest::addColumn<int>("window");
    QTest::addColumn<bool>("isPadded");
    QTest::newRow("independent") << 65 << false;
    QTest::newRow("padded") << 65 << true;
    QTest::newRow("padded, wide window") << 513 << true;
}

// Mean, variance and median of an exponential law, and the share above x is exp(-x) within four of
// its own deviations and 2 %.
void TestWhitening::noiseIsExponential()
{
    QFETCH(int, window);
    QFETCH(bool, isPadded);
    std::mt19937_64 random(5);
    const Tools::Whitening whitening(window,
                                     isPadded ? Tools::Padding::Doubled : Tools::Padding::None);
    std::vector<float> all;
    for (int spectrum = 0; spectrum < 100; ++spectrum) {
        std::vector<double> amplitudes = noiseSpectrum(8192, random);
        if (!isPadded) { // every other line is that of the series alone
            for (std::size_t i = 0; i < amplitudes.size() / 2; ++i)
                amplitudes[i] = amplitudes[2 * i];
            amplitudes.resize(amplitudes.size() / 2);
        }
        const std::vector<float> powers = whitening.powers(amplitudes);
        all.insert(all.end(), powers.begin(), powers.end());
    }
    const double count = double(all.size());
    double sum = 0;
    double squares = 0;
    for (const double power : all) {
        sum += power;
        squares += (power - 1) * (power - 1);
    }
    QVERIFY2(std::abs(sum / count - 1) < 0.006, qPrintable(QString::number(sum / count)));
    QVERIFY2(std::abs(squares / count - 1) < 0.012, qPrintable(QString::number(squares / count)));
    std::ranges::nth_element(all, all.begin() + std::ptrdiff_t(all.size() / 2));
    const double median = double(all[all.size() / 2]);
    QVERIFY2(std::abs(median - M_LN2) < 5e-4, qPrintable(QString::number(median)));
    for (const double limit : {1.0, 3.0, 5.0, 7.0, 9.2}) {
        const double expected = count * std::exp(-limit);
        const double above = double(
            std::ranges::count_if(all, [limit](float power) { return double(power) > limit; }));
        QVERIFY2(std::abs(above - expected) < 4 * std::sqrt(2 * expected) + 0.02 * expected,
                 qPrintable(QString("%1: %2 of %3").arg(limit).arg(above).arg(expected)));
    }
}

void TestWhitening::equalsItsLaw()
{
    const Tools::Whitening whitening(257);
    const auto law = [](double ratio, int first) {
        double sum = 0;
        for (int j = first; j <= 256; ++j)
            sum += std::log(1 + ratio / j);
        return sum;
    };
    for (const double ratio : {0.0, 0.01, 0.995})
        QVERIFY(std::abs(whitening.power(ratio) - law(ratio, 129)) < 1e-6);
    QVERIFY(std::abs(whitening.power(1) - (law(1, 128) + law(1, 129)) / 2) < 1e-6);
    for (const double ratio : {1.005, 7.77, 40.0})
        QVERIFY(std::abs(whitening.power(ratio) - law(ratio, 128)) < 1e-6);
}

void TestWhitening::strongLinesKeepTheirRatio()
{
    const Tools::Whitening whitening(129, Tools::Padding::Doubled);
    QVERIFY(std::abs(whitening.power(2e6) / whitening.power(1e6) - 2) < 1e-4);
    double last = -1;
    for (double ratio = 0; ratio < 100; ratio += 0.01) {
        QVERIFY(whitening.power(ratio) > last);
        last = whitening.power(ratio);
    }
}

void TestWhitening::withoutNoise()
{
    std::vector<double> amplitudes(300, 0.0);
    amplitudes[7] = 5;
    const Tools::Whitening whitening(129);
    QCOMPARE(whitening.powers(amplitudes), std::vector<float>(300, 0.0F));
    amplitudes.assign(300, 1.0);
    amplitudes[7] = std::numeric_limits<double>::quiet_NaN();
    QCOMPARE(whitening.powers(amplitudes)[7], 0.0F);
    QVERIFY(whitening.powers({}).empty());
}

ZRT_UNIT_TEST_MAIN(TestWhitening)
#include "tst_whitening.moc"
