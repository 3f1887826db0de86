#include "ffa/ffaplan.h"
#include "ffa/periodogram.h"
#include "ffa/syntheticsignal.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace {

using Floats = std::vector<float>;

Floats noise(std::size_t count)
{
    std::mt19937 generator(11);
    std::normal_distribution<float> normal;
    Floats data(count);
    for (float &value : data)
        value = normal(generator);
    return data;
}

Periodogram searchOf(const Floats &data, const Ffa::Progress &progress = {})
{
    return Periodogram(data.data(), data.size(), 0.01, 0.64, 2.0, 64, 70, 0.2, 1.5, progress);
}

// S/N, for amplitude 1, of boxcars on the continuous von Mises pulse of half width ducy: the
// best over the widths of their normalised correlation.
double boxcarEfficiency(double ducy, int bins, const std::vector<quint64> &widths)
{
    constexpr int points = 20000;
    const double pi = std::acos(-1.0);
    const double kappa = std::log(2.0) / (1 - std::cos(pi * ducy));
    const auto pulse = [&](int i) { return std::exp(kappa * (std::cos(2 * pi * i / points) - 1)); };
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < points; ++i) {
        sum += pulse(i) / points;
        squares += pulse(i) * pulse(i) / points;
    }
    double best = 0;
    for (const quint64 width : widths) {
        const double part = double(width) / bins;
        double inside = 0;
        for (int i = -int(part * points / 2); i < int(part * points / 2); ++i)
            inside += pulse(i) / points;
        best = std::max(best, (inside - part * sum) / std::sqrt(part * (1 - part) * squares));
    }
    return best;
}

} // namespace

class TestPeriodogram : public QObject {
    Q_OBJECT

private slots:
    void emptyObjectSaysSo();
    void pulsesAreFound_data();
    void pulsesAreFound();
    void noiseStaysLow();
    void blocksBeginWithWholePeriods();
    void refusals();
    void tooLargeForTheMachine();
    void normalisesInPlace();
    void progressAndCancellation();
    void copiesAreIndependent();
    void callersArrays();
};

void TestPeriodogram::emptyObjectSaysSo()
{
    QTest::ignoreMessage(QtDebugMsg, "Periodogram::Periodogram()");
    const Periodogram empty;
    QCOMPARE(empty.length, 0);
    QCOMPARE(empty.nwidths, 0);
    QVERIFY(empty.snr.empty() && empty.error.isEmpty());
}

void TestPeriodogram::pulsesAreFound_data()
{
    QTest::addColumn<double>("period"); // s
    QTest::addColumn<double>("ducy");
    QTest::addColumn<double>("shortest"); // s; 0.64 is the search without downsampling
    QTest::newRow("first bins") << 0.6433 << 0.05 << 0.64;
    QTest::newRow("between trials") << 0.7771 << 0.03 << 0.64;
    QTest::newRow("narrow") << 0.71 << 0.02 << 0.64;
    QTest::newRow("wide") << 0.9 << 0.15 << 0.64;
    QTest::newRow("downsampled by two") << 1.5432 << 0.06 << 1.28;
    QTest::newRow("last bins") << 2.5 << 0.1 << 1.28;
}

void TestPeriodogram::pulsesAreFound()
{
    QFETCH(double, period);
    QFETCH(double, ducy);
    QFETCH(double, shortest);
    constexpr double tsamp = 0.01;
    constexpr double amplitude = 30;
    // The generator's two pi is short by 3e-5 of a period per period.
    const double truePeriod = period * (2 * std::acos(-1.0) / 6.283);
    const Floats data = Ffa::syntheticPulseSignal(65536, period / tsamp, 0.3, ducy, amplitude, 0.0);
    const Periodogram result(data.data(), data.size(), tsamp, shortest, 2 * shortest, 64, 128, 0.25,
                             1.2);
    QCOMPARE(result.error, QString());

    const auto best = std::max_element(result.snr.begin(), result.snr.end());
    const auto trial = std::size_t(best - result.snr.begin()) / std::size_t(result.nwidths);
    const double found = result.periods[trial];
    const double next = trial + 1 < result.periods.size() ? result.periods[trial + 1] : found;
    const double before = trial > 0 ? result.periods[trial - 1] : found;
    const double spacing = std::max(std::abs(next - found), std::abs(found - before));
    QVERIFY2(std::abs(found - truePeriod) <= spacing,
             qPrintable(QString("%1, not %2").arg(found, 0, 'f', 6).arg(truePeriod, 0, 'f', 6)));

    // Trial widths, phases and periods are discrete and a sample is a mean over its bin, which
    // costs a few per cent, most for the narrowest pulses.
    const double expected =
        amplitude * boxcarEfficiency(ducy, int(result.foldbins[trial]), result.widths);
    QVERIFY2(double(*best) < 1.01 * expected && double(*best) > 0.93 * expected,
             qPrintable(QString("%1, not %2").arg(double(*best)).arg(expected)));
}

// White noise of unit variance: width 1 finds the largest of b normal values, 2.34 on average
// for 64 of them (tables of normal order statistics, e.g. Harter 1961, Biometrika 48, 151),
// and the largest of all trials is that of some 10^6 normal values.
void TestPeriodogram::noiseStaysLow()
{
    const Floats data = noise(65536);
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 0.7, 64, 70, 0.2, 1.5);
    double sum = 0;
    int count = 0;
    for (int k = 0; k < result.length; ++k) {
        if (result.foldbins[std::size_t(k)] != 64)
            continue;
        sum += double(result.snr[std::size_t(k) * std::size_t(result.nwidths)]);
        ++count;
    }
    QVERIFY(count > 900);
    const double mean = sum / count;
    QVERIFY2(std::abs(mean - 2.34) < 0.1, qPrintable(QString::number(mean)));
    const float largest = *std::max_element(result.snr.begin(), result.snr.end());
    QVERIFY2(largest > 4 && largest < 6, qPrintable(QString::number(double(largest))));
}

void TestPeriodogram::blocksBeginWithWholePeriods()
{
    const Periodogram result = searchOf(noise(5000));
    QVERIFY(result.length > 0);
    int blocks = 0;
    for (std::size_t k = 0; k < result.periods.size(); ++k) {
        const bool first = k == 0 || result.foldbins[k] != result.foldbins[k - 1];
        const bool inFirstStep = result.periods[k] < 0.7099;
        if (first && inFirstStep && blocks < 7) {
            QVERIFY(std::abs(result.periods[k] - 0.01 * result.foldbins[k]) < 1e-15);
            ++blocks;
        } else if (!first) {
            QVERIFY(result.periods[k] > result.periods[k - 1]);
        }
    }
    QCOMPARE(blocks, 7);
}

void TestPeriodogram::refusals()
{
    const Floats data(100, 1.0f);
    const Periodogram refused(data.data(), 100, 0.01, 0.1, 0.5, 64, 70, 0.2, 1.5);
    QCOMPARE(refused.error, QString("Must have: period_min >= tsamp * bins_min (0.01*64=0.64)"));
    QCOMPARE(refused.length, 0);
    QCOMPARE(refused.nwidths, 0);
    QVERIFY(refused.periods.empty() && refused.snr.empty());

    QTest::ignoreMessage(QtDebugMsg, "Ffa::trialWidths(): too many widths, ducy_max=1e+09 wtsp=1");
    const Periodogram endless(data.data(), 100, 0.01, 0.1, 0.5, 10, 12, 1e9, 1.0);
    QVERIFY(!endless.error.isEmpty());
    QCOMPARE(endless.nwidths, 0);
}

void TestPeriodogram::tooLargeForTheMachine()
{
    // 3 million widths times some 2000 trials are 24 TB of results.
    const Floats data(100000, 1.0f);
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 0.7, 64, 70, 50000, 1.0);
    QVERIFY2(result.error.contains("MiB") && result.error.contains("widths"),
             qPrintable(result.error));
    QCOMPARE(result.length, 0);
    QVERIFY(result.snr.empty() && result.widths.empty());
}

void TestPeriodogram::normalisesInPlace()
{
    Floats data = noise(5000);
    const Periodogram expected = searchOf(data);
    const double sigmas = double(*std::max_element(expected.snr.begin(), expected.snr.end()));
    for (float &value : data)
        value = value * 8 + 100;
    const Floats before = data;
    Floats kept = before;
    const Periodogram raw(kept.data(), kept.size(), 0.01, 0.64, 2.0, 12345, 64, 70, 0.2, 1.5, true);
    QVERIFY(kept == before);
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 2.0, 12345, 64, 70, 0.2, 1.5,
                             false);
    const double mean = std::accumulate(data.begin(), data.end(), 0.0) / 5000;
    QVERIFY(std::abs(mean) < 1e-6);
    QCOMPARE(result.length, expected.length);
    const double found = double(*std::max_element(result.snr.begin(), result.snr.end()));
    // The sample's own deviation is within 5 % of 1.
    QVERIFY(std::abs(found / sigmas - 1) < 0.05);
    QVERIFY(*std::max_element(raw.snr.begin(), raw.snr.end()) > 4 * float(sigmas));
}

void TestPeriodogram::progressAndCancellation()
{
    const Floats data = noise(5000);
    std::vector<int> percents;
    const Periodogram whole = searchOf(data, [&](int percent) {
        percents.push_back(percent);
        return true;
    });
    QCOMPARE(whole.error, QString());
    QVERIFY(std::is_sorted(percents.begin(), percents.end()));
    QVERIFY(percents.front() > 0 && percents.front() < 50);
    QCOMPARE(percents.back(), 100);

    const std::size_t folds = percents.size();
    for (const std::size_t stopAt : {std::size_t(1), folds / 2, folds}) {
        std::size_t calls = 0;
        const Periodogram stopped = searchOf(data, [&](int) { return ++calls < stopAt; });
        QCOMPARE(calls, stopAt);
        QCOMPARE(stopped.error, QString("The search was cancelled"));
        QCOMPARE(stopped.length, 0);
        QVERIFY(stopped.periods.empty() && stopped.snr.empty());
    }
}

void TestPeriodogram::copiesAreIndependent()
{
    Periodogram result = searchOf(noise(5000));
    const float first = result.snr[0];
    const Periodogram copy = result;
    result.snr[0] = -1;
    QCOMPARE(copy.snr[0], first);
    QTest::ignoreMessage(QtDebugMsg, "Periodogram::Periodogram()");
    Periodogram assigned;
    assigned = copy;
    result = Periodogram(assigned);
    QCOMPARE(result.snr, copy.snr);
    QCOMPARE(result.length, copy.length);
}

// The search writes as many values as the plan counts, and not one more.
void TestPeriodogram::callersArrays()
{
    const Floats data = noise(5000);
    const std::vector<quint64> widths{1, 5};
    const quint64 length = Ffa::periodogramLength(5000, 0.01, 0.7, 3.33, 64, 90);
    std::vector<double> periods(length + 1, -9);
    std::vector<quint32> foldbins(length + 1, 9);
    Floats snr(2 * length + 1, -999);
    QVERIFY(Ffa::runPeriodogram(data.data(), 5000, 0.01, widths.data(), 2, 0.7, 3.33, 64, 90,
                                periods.data(), foldbins.data(), snr.data()));
    QVERIFY(std::count(periods.begin(), periods.end(), -9.0) == 1 && periods.back() == -9);
    QVERIFY(std::count(foldbins.begin(), foldbins.end(), 9u) == 1 && foldbins.back() == 9);
    QVERIFY(std::count(snr.begin(), snr.end(), -999.0f) == 1 && snr.back() == -999);
}

ZRT_UNIT_TEST_MAIN(TestPeriodogram)
#include "tst_periodogram.moc"
