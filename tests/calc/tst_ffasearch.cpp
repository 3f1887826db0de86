#include "calc/ffacandidates.h"
#include "calc/ffafold.h"
#include "calc/pulsarcalculate.h"
#include "calc/samples.h"
#include "ffa/downsample.h"
#include "ffa/syntheticsignal.h"

using TestSupport::Series;

namespace {

constexpr double step = 0.0124928; // s, of the recordings that are made here

// A recording whose sum over the bands is the series.
ObservationData recordingOf(const Series &series)
{
    return TestSupport::makeRecording({int(series.size()), 1, 33, 1}, [&](int p, int, int, int) {
        return float(series[std::size_t(p)] / 32);
    });
}

Series pulses(int count, double period, double ducy, double amplitude)
{
    const auto train = Ffa::syntheticPulseSignal(count, period / step, 0.3, ducy, amplitude, 0);
    return {train.begin(), train.end()};
}

void add(Series &series, const Series &other, double factor = 1)
{
    for (std::size_t i = 0; i < series.size(); ++i)
        series[i] += factor * other[i];
}

PulsarParameters searchOf(const ObservationData &data)
{
    PulsarParameters parameters;
    parameters.noise = "without";
    parameters.ffa =
        Tools::presetFfa(PulsarCalculate(data, parameters).ffaPoints(), data.tresolution);
    return parameters;
}

} // namespace

class TestFfaSearch : public QObject {
    Q_OBJECT

private slots:
    void everyBandIsSummed();
    void runningMedian_data();
    void runningMedian();
    void slowChangesGoPulsesStay();
    void injectedPulses_data();
    void injectedPulses();
    void noiseStaysAtItsMaximum();
    void familiesAreNamed();
    void refusedSeries_data();
    void refusedSeries();
};

void TestFfaSearch::everyBandIsSummed()
{
    ObservationData data = recordingOf(TestSupport::noise(2000));
    TestSupport::spreadBands(data, 10, 3.4);
    PulsarParameters parameters;
    parameters.firstPoint = 100;
    parameters.dispersion = 10;
    PulsarCalculate calculate(data, parameters);
    // Band 0 is 31 x 3.4 = 105.4 samples late, and the sum ends before the last point.
    QCOMPARE(calculate.ffaPoints(), 2000 - 100 - 105 - 1);
    Series sum(std::size_t(calculate.ffaPoints()));
    QVERIFY(calculate.sumChannels(sum.data(), int(sum.size()), 10, true));
    QCOMPARE(calculate.bandsSummed(), 32);
}

void TestFfaSearch::runningMedian_data()
{
    QTest::addColumn<int>("window");
    for (const int window : {1, 3, 31, 199, 401})
        QTest::addRow("%d", window) << window;
}

void TestFfaSearch::runningMedian()
{
    QFETCH(int, window);
    Series values = TestSupport::noise(200);
    for (double &value : values)
        value = std::round(value); // many are equal
    Series expected;
    for (int i = 0; i < 200; ++i) {
        Series inside(values.begin() + std::max(0, i - window / 2),
                      values.begin() + std::min(200, i + window / 2 + 1));
        std::sort(inside.begin(), inside.end());
        expected.push_back(inside[(inside.size() - 1) / 2]);
    }
    QCOMPARE(Tools::runningMedian(values, window), expected);
}

void TestFfaSearch::slowChangesGoPulsesStay()
{
    const int count = 40007; // no whole number of blocks
    const Series train = pulses(count, 0.9, 0.05, 100);
    Series series = train;
    Series ramp(train.size());
    for (int i = 0; i < count; ++i) {
        series[std::size_t(i)] += 500 + 1e-3 * i + 20 * std::sin(i / 8000.0);
        ramp[std::size_t(i)] = 500 + i;
    }
    QVERIFY(Tools::deredden(series, 2000, 101));
    QVERIFY(Tools::deredden(ramp, 2000, 101));
    // Inside, a pulse train's own median is what is lost of it; at the ends half a window sees
    // one side only.
    const double height = *std::max_element(train.begin(), train.end());
    double largest = 0;
    for (int i = 1100; i < count - 1100; ++i) {
        QVERIFY2(std::abs(ramp[std::size_t(i)]) < 1e-6, "between the blocks it goes straight");
        largest = std::max(largest, std::abs(series[std::size_t(i)] - train[std::size_t(i)]));
    }
    QVERIFY2(largest < 0.1 * height, qPrintable(QString::number(largest / height)));
}

void TestFfaSearch::injectedPulses_data()
{
    QTest::addColumn<double>("period"); // s
    QTest::addColumn<double>("ducy");
    QTest::newRow("shortest") << 0.53 << 0.06;
    QTest::newRow("second octave") << 1.337 << 0.05;
    QTest::newRow("long") << 7.77 << 0.04;
    QTest::newRow("longest") << 18.0 << 0.06;
}

void TestFfaSearch::injectedPulses()
{
    QFETCH(double, period);
    QFETCH(double, ducy);
    constexpr int count = 40000;
    constexpr double amplitude = 60;
    Series series = pulses(count, period, ducy, amplitude);
    add(series, TestSupport::noise(count), 1 / 3.0); // unit noise
    const ObservationData data = recordingOf(series);
    PulsarParameters parameters = searchOf(data);
    PulsarCalculate calculate(data, parameters);
    QVERIFY2(calculate.run("createFFA"), qPrintable(calculate.failure()));
    const FfaResult &result = *calculate.result().ffa;
    QCOMPARE(calculate.result().curves.at(0), result.periodogram.snr);
    const auto candidates = Tools::findCandidates(result, 7, 10);
    QVERIFY(!candidates.empty());
    const FfaCandidate &best = candidates[0];

    // The generator's two pi is short by 3e-5. Neighbouring trials are one bin of drift apart,
    // which a pulse of several bins hardly notices.
    const double truth = period * 2 * M_PI / 6.283;
    const double trial = truth * truth / (best.bins * count * step);
    QVERIFY2(std::abs(best.period - truth) < trial * std::max(1.0, 0.75 * best.width),
             qPrintable(QString::number(best.period, 'f', 6)));
    // A matched filter would find the amplitude, a boxcar 94 % of it; the steps of width and
    // phase cost up to 6 %, and noise adds one sigma either way. Downsampled values are taken
    // for independent ones.
    const double theory = 0.943 * amplitude / std::sqrt(1 + amplitude * amplitude / count);
    const double f = best.period / (best.bins * step);
    const double v = Ffa::downsampledVariance(count, f);
    const double ratio =
        best.snr / theory / std::sqrt(((best.width - 1) * f + v) / (best.width * v));
    QVERIFY2(ratio > 0.92 && ratio < 1.03, qPrintable(QString::number(ratio)));

    const FfaRefinement refined = Tools::refinePeriod(result, truth + 2 * trial, best.bins);
    QVERIFY2(std::abs(refined.period - truth) < 4 * refined.error,
             qPrintable(QString("%1 +- %2").arg(refined.period).arg(refined.error)));
    const FfaFold fold = Tools::foldSeries(result, refined.period, best.bins);
    QVERIFY(std::abs(fold.snr[std::size_t(fold.best)] / theory - 1) < 0.1);
    QCOMPARE(fold.picture.size(), std::size_t(fold.parts) * fold.profile.size());
}

void TestFfaSearch::noiseStaysAtItsMaximum()
{
    const ObservationData data = recordingOf(TestSupport::noise(40000));
    const PulsarParameters parameters = searchOf(data);
    PulsarCalculate calculate(data, parameters);
    QVERIFY(calculate.run("createFFA"));
    const std::vector<float> &snr = calculate.result().ffa->periodogram.snr;
    const FfaEstimate estimate =
        Tools::estimateFfa(parameters.ffa, calculate.ffaPoints(), data.tresolution);
    // The maximum of one draw scatters by 0.25 around its mean.
    const double highest = *std::max_element(snr.begin(), snr.end());
    QVERIFY2(std::abs(highest - estimate.noiseMaximum) < 0.75,
             qPrintable(QString("%1, not %2").arg(highest).arg(estimate.noiseMaximum)));
    QCOMPARE(snr.size(), std::size_t(estimate.trials) * std::size_t(estimate.widths));
}

void TestFfaSearch::familiesAreNamed()
{
    constexpr int count = 40000;
    constexpr double interval = 0.004;
    Series series = TestSupport::noise(count);
    add(series, pulses(count, 0.7 * step / interval, 0.04, 200)); // 0.7 s at this interval
    for (int i = 0; i < count; ++i)
        series[std::size_t(i)] += 0.9 * std::sin(2 * M_PI * 50.04 * i * interval);
    ObservationData data = recordingOf(series);
    data.tresolution = interval;
    PulsarCalculate calculate(data, searchOf(data));
    QVERIFY(calculate.run("createFFA"));
    const auto candidates = Tools::findCandidates(*calculate.result().ffa, 7, 60);
    const auto remarkAt = [&](double period) {
        for (const FfaCandidate &candidate : candidates) {
            if (std::abs(candidate.period / period - 1) < 1e-3)
                return Tools::candidateRemark(candidate);
        }
        return QString("no candidate");
    };
    QVERIFY(std::abs(candidates.at(0).period - 0.7) < 2e-4);
    QCOMPARE(remarkAt(0.7), QString());
    QCOMPARE(remarkAt(1.4), QString("2 x no. 1"));
    QCOMPARE(remarkAt(0.35), QString("1/2 x no. 1"));
    QCOMPARE(remarkAt(1.05), QString("3/2 x no. 1"));
    QCOMPARE(remarkAt(9 / 50.04), QString("50 Hz mains"));
    // One candidate per peak: none lies within a turn of another.
    for (std::size_t i = 0; i < candidates.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            QVERIFY(std::abs(1 / candidates[i].period - 1 / candidates[k].period) >
                    0.5 / (count * interval));
}

void TestFfaSearch::refusedSeries_data()
{
    QTest::addColumn<Series>("series");
    QTest::addColumn<QString>("text");
    QTest::newRow("constant") << Series(20000, 32.0) << "Error of calculating sigma";
    QTest::newRow("no sample is a number") << Series(20000, NAN) << "no finite number";
}

void TestFfaSearch::refusedSeries()
{
    QFETCH(Series, series);
    QFETCH(QString, text);
    const ObservationData data = recordingOf(series);
    PulsarCalculate calculate(data, searchOf(data));
    QVERIFY(!calculate.run("createFFA"));
    QVERIFY2(calculate.failure().contains(text), qPrintable(calculate.failure()));
}

ZRT_UNIT_TEST_MAIN(TestFfaSearch)
#include "tst_ffasearch.moc"
