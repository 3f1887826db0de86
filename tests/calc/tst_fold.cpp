#include "calc/fold.h"
#include "support/testmain.h"

#include <cmath>
#include <random>

using Tools::FoldedProfile;

namespace {

// The samples that one boxcar weighs, by the definition: sample i of 1, all others 0, gives the
// weight of sample i in every bin.
double straightNoise(int count, double period, int bins, int begin, int width)
{
    double variance = 0;
    std::vector<double> samples(std::size_t(count), 0.0);
    for (int i = 0; i < count; ++i) {
        samples[std::size_t(i)] = 1;
        const FoldedProfile profile = Tools::fold(samples.data(), count, period, bins);
        samples[std::size_t(i)] = 0;
        double inside = 0;
        double total = 0;
        for (int b = 0; b < bins; ++b) {
            total += profile.bins[std::size_t(b)];
            if ((b - begin + bins) % bins < width)
                inside += profile.bins[std::size_t(b)];
        }
        variance += std::pow(inside - total * width / bins, 2);
    }
    return std::sqrt(variance);
}

// Noise that boxcarPeaks() takes for a boxcar of one width: its peak tells what it divided by.
double assumedNoise(const FoldedProfile &profile, const Tools::BoxcarPeak &peak, int &begin)
{
    const int bins = int(profile.bins.size());
    begin = (int(std::lround(peak.phase * bins - peak.width / 2.0)) + bins) % bins;
    double inside = 0;
    double total = 0;
    for (int b = 0; b < bins; ++b) {
        total += profile.bins[std::size_t(b)];
        if ((b - begin + bins) % bins < peak.width)
            inside += profile.bins[std::size_t(b)];
    }
    return (inside - total * peak.width / bins) / peak.snr;
}

std::vector<double> noise(int count, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::vector<double> samples(static_cast<std::size_t>(count));
    for (double &sample : samples)
        sample = normal(random);
    return samples;
}

} // namespace

class TestFold : public QObject {
    Q_OBJECT

private slots:
    void sharesSamples();
    void noiseIsThatOfTheWeights_data();
    void noiseIsThatOfTheWeights();
    void noiseFollowsItsLaw();
    void noisePeaks();
};

void TestFold::sharesSamples()
{
    // Period 2.5 samples, 2 bins of 1.25: the samples of two periods cover them with weights
    // (1, 0), (.25, .75), (.5 of the next period, .5), (.75, .25), (0, 1).
    const double samples[] = {1, 2, 3, 4, 5};
    const FoldedProfile profile = Tools::fold(samples, 5, 2.5, 2);
    QCOMPARE(profile.periods, 2.0);
    QCOMPARE(profile.weights[0], 2.5);
    QCOMPARE(profile.weights[1], 2.5);
    QCOMPARE(profile.bins[0], (1 + .25 * 2 + .5 * 3 + .75 * 4) / 2.5);
    QCOMPARE(profile.bins[1], (.75 * 2 + .5 * 3 + .25 * 4 + 5) / 2.5);
}

void TestFold::noiseIsThatOfTheWeights_data()
{
    QTest::addColumn<double>("period");
    QTest::addColumn<int>("bins");
    QTest::addColumn<int>("count");
    QTest::newRow("one sample a bin, edges drift") << 13.17 << 13 << 400;
    QTest::newRow("one sample a bin, edges between samples") << 16.0 << 16 << 320;
    QTest::newRow("edges halve some samples") << 10.0 << 4 << 200;
    QTest::newRow("four samples a bin") << 45.6 << 12 << 500;
    QTest::newRow("fifty samples a bin") << 250.3 << 5 << 1100;
    QTest::newRow("two periods and a half") << 40.1 << 40 << 101;
}

void TestFold::noiseIsThatOfTheWeights()
{
    QFETCH(double, period);
    QFETCH(int, bins);
    QFETCH(int, count);
    const std::vector<double> samples = noise(count, 1);
    const FoldedProfile profile = Tools::fold(samples.data(), count, period, bins);
    for (const Tools::BoxcarPeak &peak : Tools::boxcarPeaks(profile, 1)) {
        int begin = 0;
        const double assumed = assumedNoise(profile, peak, begin);
        const double expected = straightNoise(count, period, bins, begin, peak.width);
        QVERIFY2(std::abs(assumed / expected - 1) < 1e-9,
                 qPrintable(QString("width %1: %2").arg(peak.width).arg(assumed / expected)));
    }
}

// Where bin edges drift through the samples, sigma^2 / N (1 - 1 / (3 L)) for a bin of L samples a
// period and N in all.
void TestFold::noiseFollowsItsLaw()
{
    const int count = 20000;
    const int bins = 10;
    const std::vector<double> samples = noise(count, 2);
    for (const double perBin : {1.0, 1.7, 3.8, 20.0, 50.0}) {
        const double period = perBin * bins + 0.0173;
        const FoldedProfile profile = Tools::fold(samples.data(), count, period, bins);
        const double expected = (1 - 1 / (3 * perBin)) * bins / count;
        for (const double variance : profile.variances)
            QVERIFY2(std::abs(variance / expected - 1) < 0.02,
                     qPrintable(QString("%1: %2").arg(perBin).arg(variance / expected)));
    }
}

void TestFold::noisePeaks()
{
    // Three hundred folds scatter by 0.5 each: 0.03 in the mean.
    for (const int bins : {8, 71, 512}) {
        double sum = 0;
        const int folds = 300;
        for (int k = 0; k < folds; ++k) {
            const int count = 5 * bins;
            const std::vector<double> samples = noise(count, unsigned(k));
            sum += Tools::bestBoxcar(Tools::fold(samples.data(), count, bins + 0.31, bins), 1).snr;
        }
        const double expected = Tools::expectedNoisePeak(bins);
        QVERIFY2(std::abs(sum / folds - expected) < 0.15,
                 qPrintable(QString("%1 bins: %2, %3").arg(bins).arg(sum / folds).arg(expected)));
    }
}

ZRT_UNIT_TEST_MAIN(TestFold)
#include "tst_fold.moc"
