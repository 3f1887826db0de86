#include "calc/localmedian.h"
#include "calc/whitening.h"
#include "support/noisespectrum.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

class TestWhitening : public QObject {
    Q_OBJECT

private slots:
    void noiseIsExponential();
    void equalsItsLaw();
    void strongLinesKeepTheirRatio();
    void withoutNoise();
};

// The share above x of 800000 values of noise, half of them independent, is to be exp(-x) within
// four of its own deviations and 4 %.
void TestWhitening::noiseIsExponential()
{
    for (const int window : {129, 513}) {
        std::mt19937_64 random(5);
        const Tools::Whitening whitening(window);
        std::vector<float> all;
        for (int spectrum = 0; spectrum < 100; ++spectrum) {
            const std::vector<float> powers = whitening.powers(noiseSpectrum(8192, random));
            all.insert(all.end(), powers.begin(), powers.end());
        }
        const double count = double(all.size());
        const double mean = std::accumulate(all.begin(), all.end(), 0.0) / count;
        QVERIFY2(std::abs(mean - 1) < 0.006, qPrintable(QString::number(mean)));
        std::ranges::nth_element(all, all.begin() + std::ptrdiff_t(all.size() / 2));
        const double median = double(all[all.size() / 2]);
        QVERIFY2(std::abs(median - Tools::medianWhitenedPower(1, window)) < 5e-4,
                 qPrintable(QString::number(median)));
        for (const double limit : {1.0, 3.0, 5.0, 7.0, 9.2}) {
            const double expected = count * std::exp(-limit);
            const double above = double(
                std::ranges::count_if(all, [limit](float power) { return double(power) > limit; }));
            QVERIFY2(std::abs(above - expected) < 4 * std::sqrt(2 * expected) + 0.04 * expected,
                     qPrintable(QString("%1: %2 of %3").arg(limit).arg(above).arg(expected)));
        }
    }
}

void TestWhitening::equalsItsLaw()
{
    const Tools::Whitening whitening(257);
    for (const double ratio : {0.0, 0.01, 1.0, 7.77, 40.0}) {
        double law = 0;
        for (int j = 128; j <= 256; ++j)
            law += std::log(1 + ratio / j);
        QVERIFY(std::abs(whitening.power(ratio) - law) < 1e-6);
    }
}

void TestWhitening::strongLinesKeepTheirRatio()
{
    const Tools::Whitening whitening(129);
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
