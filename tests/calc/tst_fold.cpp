#include "calc/fold.h"
#include "calc/samples.h"

using namespace TestSupport;
using Tools::FoldedProfile;

namespace {

// What `width` bins from `begin` on hold beyond their share of all.
double excess(const FoldedProfile &profile, int begin, int width)
{
    const int bins = int(profile.bins.size());
    double inside = 0;
    double total = 0;
    for (int b = 0; b < bins; ++b) {
        total += profile.bins[std::size_t(b)];
        if ((b - begin + bins) % bins < width)
            inside += profile.bins[std::size_t(b)];
    }
    return inside - total * width / bins;
}

// The noise of one boxcar by the definition: sample i of 1, all others 0, gives the weight of
// sample i in every bin.
double straightNoise(int count, double period, int bins, int begin, int width)
{
    double variance = 0;
    Series samples(std::size_t(count), 0.0);
    for (double &sample : samples) {
        sample = 1;
        variance +=
            std::pow(excess(Tools::fold(samples.data(), count, period, bins), begin, width), 2);
        sample = 0;
    }
    return std::sqrt(variance);
}

} // namespace

class TestFold : public QObject {
    Q_OBJECT

private slots:
    void sharesSamples();
    void noiseIsThatOfTheWeights();
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

void TestFold::noiseIsThatOfTheWeights()
{
    const struct {
        double period;
        int bins, count;
    } rows[] = {{13.17, 13, 400}, // one sample a bin, edges drift
                {16, 16, 320},    // one sample a bin, edges between samples
                {10, 4, 200},     // edges halve some samples
                {45.6, 12, 500},  {250.3, 5, 1100}, {40.1, 40, 101}}; // two periods and a half
    for (const auto &[period, bins, count] : rows) {
        const Series samples = noise(count, 1, 1);
        const FoldedProfile profile = Tools::fold(samples.data(), count, period, bins);
        for (const Tools::BoxcarPeak &peak : Tools::boxcarPeaks(profile, 1)) {
            const int begin =
                (int(std::lround(peak.phase * bins - peak.width / 2.0)) + bins) % bins;
            // A peak tells what it was divided by.
            const double assumed = excess(profile, begin, peak.width) / peak.snr;
            const double expected = straightNoise(count, period, bins, begin, peak.width);
            const QString text = QString("%1, width %2: %3").arg(period).arg(peak.width);
            QVERIFY2(std::abs(assumed / expected - 1) < 1e-9,
                     qPrintable(text.arg(assumed / expected)));
        }
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
            const Series samples = noise(count, unsigned(k), 1);
            sum += Tools::bestBoxcar(Tools::fold(samples.data(), count, bins + 0.31, bins), 1).snr;
        }
        const double expected = Tools::expectedNoisePeak(bins);
        QVERIFY2(std::abs(sum / folds - expected) < 0.15,
                 qPrintable(QString("%1 bins: %2, %3").arg(bins).arg(sum / folds).arg(expected)));
    }
}

ZRT_UNIT_TEST_MAIN(TestFold)
#include "tst_fold.moc"
