#include "calc/ffacandidates.h"
#include "calc/ffafold.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/samples.h"
#include "ffa/downsample.h"
#include "ffa/normalise.h"
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

PulsarParameters parametersOf(const ObservationData &data)
{
    PulsarParameters parameters;
    parameters.noise = "without";
    parameters.ffa =
        Tools::presetFfa(PulsarCalculate(data, parameters).ffaPoints(), data.tresolution);
    return parameters;
}

constexpr double fastStep = 0.00025; // s

// What "createFFA" gives for a series without a baseline.
FfaResult searchOf(const Series &series, double interval, const FfaParameters &ffa)
{
    Series normal = Ffa::normalizeSeries(series);
    const std::vector<float> samples(normal.begin(), normal.end());
    Periodogram periodogram(samples.data(), samples.size(), interval, ffa.period_min,
                            ffa.period_max, ffa.bins_min, ffa.bins_max, ffa.ducy_max, ffa.wtsp);
    std::vector<MainsLine> mains = Tools::findMains(Tools::powerSpectrum(normal, interval));
    return {std::move(normal), interval, std::move(periodogram), std::move(mains),
            Tools::wholeFactorSteps(ffa, int(series.size()), interval)};
}

FfaResult searchOf(const Series &series, double interval)
{
    return searchOf(series, interval, Tools::presetFfa(int(series.size()), interval));
}

void addHum(Series &series, double interval, double frequency, double amplitude, double drift)
{
    const double length = double(series.size()) * interval;
    for (std::size_t i = 0; i < series.size(); ++i) {
        const double t = double(i) * interval;
        const double turns = (frequency - drift / 2) * t + drift * t * t / (2 * length);
        series[i] += amplitude * (std::cos(2 * M_PI * turns) + std::cos(4 * M_PI * turns + 1) / 2);
    }
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
    void noiseStaysAtItsMaximum_data();
    void noiseStaysAtItsMaximum();
    void presetsAvoidWholeFactors();
    void pulsesAtAWholeFactorCountInFull();
    void familiesAreNamed();
    void humIsMarked_data();
    void humIsMarked();
    void pulsarsNearHumAreNot_data();
    void pulsarsNearHumAreNot();
    void refinedCandidatesFoldThere();
    void errorsOfPeriodsAreTrue_data();
    void errorsOfPeriodsAreTrue();
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
    PulsarParameters parameters = parametersOf(data);
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

void TestFfaSearch::noiseStaysAtItsMaximum_data()
{
    QTest::addColumn<double>("shortest"); // s, at 0.25 ms
    QTest::addColumn<double>("longest");
    QTest::addColumn<int>("fewest");
    QTest::addColumn<int>("most");
    QTest::newRow("no whole factor") << 0.1001 << 1.0 << 40 << 80;
    QTest::newRow("the first is whole") << 0.1 << 1.0 << 40 << 80;
    QTest::newRow("all are whole") << 0.03 << 1.0 << 40 << 79;
    QTest::newRow("one, and whole") << 0.1 << 0.1999 << 40 << 79;
    QTest::newRow("one and a half") << 0.015 << 0.0299 << 40 << 79;
    QTest::newRow("rounded below whole ones") << 0.03 * (1 - 1e-13) << 1.0 << 40 << 79;
}

void TestFfaSearch::noiseStaysAtItsMaximum()
{
    FfaParameters ffa;
    QFETCH(double, shortest);
    QFETCH(double, longest);
    QFETCH(int, fewest);
    QFETCH(int, most);
    ffa.period_min = shortest;
    ffa.period_max = longest;
    ffa.bins_min = fewest;
    ffa.bins_max = most;
    constexpr int count = 40000;
    constexpr unsigned seeds = 16;
    double sum = 0;
    const FfaEstimate estimate = Tools::estimateFfa(ffa, count, fastStep);
    for (unsigned seed = 0; seed < seeds; ++seed) {
        const FfaResult result = searchOf(TestSupport::noise(count, seed, 1), fastStep, ffa);
        const std::vector<float> &snr = result.periodogram.snr;
        sum += double(*std::max_element(snr.begin(), snr.end()));
        QCOMPARE(snr.size(), std::size_t(estimate.trials) * std::size_t(estimate.widths));
        QVERIFY(Tools::findCandidates(result, estimate.noiseThreshold + 1.2, 1).empty());
    }
    // The highest of one search scatters by 0.3 at most.
    QVERIFY2(std::abs(sum / seeds - estimate.noiseMaximum) < 0.25,
             qPrintable(QString("%1, not %2").arg(sum / seeds).arg(estimate.noiseMaximum)));
}

void TestFfaSearch::presetsAvoidWholeFactors()
{
    for (const double interval : {0.0001, 0.00025, 0.0005, 0.001, 0.002, 0.004, 0.005, 0.01}) {
        for (const double length : {5.0, 60.0, 600.0}) {
            const int points = int(length / interval);
            const FfaParameters ffa = Tools::presetFfa(points, interval);
            QVERIFY(Tools::findFfaProblems(ffa, points, interval).empty());
            QVERIFY(Tools::wholeFactorSteps(ffa, points, interval).empty());
            QVERIFY(ffa.period_min <= std::max(0.1, 40 * interval) * (1 + 1e-3));
        }
    }
}

// The same pulses at and beside a factor of ten.
void TestFfaSearch::pulsesAtAWholeFactorCountInFull()
{
    constexpr int count = 120000;
    Series series = TestSupport::noise(count, 4, 1);
    add(series, pulses(count, 0.15 * step / fastStep, 0.05, 17));
    FfaParameters ffa;
    ffa.period_max = 3;
    std::vector<FfaCandidate> strongest;
    for (const double shortest : {0.1, 0.0999}) {
        ffa.period_min = shortest;
        const FfaResult result = searchOf(series, fastStep, ffa);
        const double threshold = Tools::estimateFfa(ffa, count, fastStep).noiseThreshold;
        const auto candidates = Tools::findCandidates(result, threshold, 5);
        QVERIFY(!candidates.empty());
        strongest.push_back(candidates[0]);
        QVERIFY2(std::abs(candidates[0].period / 0.15 - 1) < 2e-4,
                 qPrintable(QString::number(candidates[0].period)));
    }
    QVERIFY(strongest[0].snr < strongest[1].snr / 2.5F);
    QVERIFY(std::abs(strongest[0].strength() / strongest[1].strength() - 1) < 0.06);
    const int remark = Results::shownTitles().indexOf("remark");
    QCOMPARE(Results::shownFields(Tools::tableCandidate(strongest[0]), 1)[remark],
             QString("S/N 2.9 times too low"));
    QCOMPARE(Results::shownFields(Tools::tableCandidate(strongest[1]), 1)[remark], QString());
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
    PulsarCalculate calculate(data, parametersOf(data));
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
    QCOMPARE(remarkAt(9 / 50.04), QString("50.04 Hz mains"));
    // One candidate per peak: none lies within a turn of another.
    for (std::size_t i = 0; i < candidates.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            QVERIFY(std::abs(1 / candidates[i].period - 1 / candidates[k].period) >
                    0.5 / (count * interval));
}

void TestFfaSearch::humIsMarked_data()
{
    QTest::addColumn<double>("interval"); // s
    QTest::addColumn<double>("frequency");
    QTest::addColumn<double>("drift"); // Hz
    QTest::newRow("50.22") << 0.004 << 50.22 << 0.0;
    QTest::newRow("49.8") << 0.001 << 49.8 << 0.0;
    QTest::newRow("60.1") << 0.004 << 60.1 << 0.0;
    QTest::newRow("drifting") << 0.004 << 50.0 << 0.02;
    QTest::newRow("folded back") << step << 50.22 << 0.0;
    QTest::newRow("folded back among pulsars") << 0.01 << 49.8 << 0.0;
}

void TestFfaSearch::humIsMarked()
{
    QFETCH(double, interval);
    QFETCH(double, frequency);
    QFETCH(double, drift);
    Series series = TestSupport::noise(40000, 5, 1);
    addHum(series, interval, frequency, 1.5, drift);
    int marked = 0;
    for (const FfaCandidate &candidate :
         Tools::findCandidates(searchOf(series, interval), 6.5, 30)) {
        const QString remark = Tools::candidateRemark(candidate);
        QVERIFY2(!remark.isEmpty() && candidate.base < 0, qPrintable(remark));
        if (candidate.mains == 0)
            continue; // what does not fold
        ++marked;
        const double cycle = candidate.mains / frequency;
        QVERIFY2(std::abs(cycle - std::round(cycle)) < 2e-4, qPrintable(remark));
    }
    QVERIFY2(marked > 5, qPrintable(QString::number(marked)));
}

void TestFfaSearch::pulsarsNearHumAreNot_data()
{
    QTest::addColumn<double>("cycles"); // of the hum in a period
    QTest::addColumn<double>("amplitude");
    QTest::newRow("without hum") << 25.0 << 0.0;
    QTest::newRow("a whole multiple") << 25.0 << 0.5;
    QTest::newRow("a turn over the series away") << 25.0 + 0.5 / 160 << 0.5;
    QTest::newRow("three away") << 25.0 - 1.5 / 160 << 0.5;
    QTest::newRow("half a cycle") << 25.5 << 0.5;
}

void TestFfaSearch::pulsarsNearHumAreNot()
{
    QFETCH(double, cycles);
    QFETCH(double, amplitude);
    constexpr double interval = 0.004;
    const double period = cycles / 50.22;
    Series series = TestSupport::noise(40000, 6, 1);
    addHum(series, interval, 50.22, amplitude, 0);
    add(series, pulses(40000, period * step / interval, 0.04, 16));
    const FfaResult result = searchOf(series, interval);
    QCOMPARE(result.mains.empty(), amplitude == 0);
    const auto candidates = Tools::findCandidates(result, 6, 30);
    const auto isPulsar = [&](const FfaCandidate &candidate) {
        return std::abs(candidate.period / period - 1) < 5e-4;
    };
    const auto found = std::find_if(candidates.begin(), candidates.end(), isPulsar);
    QVERIFY(found != candidates.end());
    QCOMPARE(Tools::candidateRemark(*found), QString());
}

void TestFfaSearch::refinedCandidatesFoldThere()
{
    constexpr double interval = 0.004;
    constexpr double period = 0.7123456;
    Series series = TestSupport::noise(40000, 8, 1);
    add(series, pulses(40000, period * step / interval, 0.03, 40));
    const FfaResult result = searchOf(series, interval);
    FfaCandidate candidate = Tools::findCandidates(result, 10, 1).at(0);
    const FfaCandidate searched = candidate;
    QVERIFY(!Tools::refineCandidate(result, candidate, [](int) { return false; }));
    QCOMPARE(candidate.period, searched.period);
    QVERIFY(Tools::refineCandidate(result, candidate));
    const double truth = period * 2 * M_PI / 6.283; // the generator's two pi is short
    QVERIFY2(std::abs(candidate.period - truth) < 4 * candidate.periodError,
             qPrintable(QString::number(candidate.period, 'f', 7)));
    QVERIFY(candidate.foldSnr != searched.foldSnr && candidate.foldSnr > 0.95 * searched.foldSnr);
    // The table tells the period to the second digit of its error.
    const QStringList fields = Results::shownFields(Tools::tableCandidate(candidate), 1);
    const int column = Results::shownTitles().indexOf("period, s");
    QCOMPARE(fields[column].size(), fields[column + 1].size());
    QVERIFY(std::abs(fields[column].toDouble() - candidate.period) < candidate.periodError / 10);
    QCOMPARE(Results::shownFields(Tools::tableCandidate(searched), 1)[column + 1], QString("-"));
}

void TestFfaSearch::errorsOfPeriodsAreTrue_data()
{
    QTest::addColumn<double>("ducy");
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<double>("hum");
    QTest::newRow("weak, narrow") << 0.03 << 10.0 << 0.0;
    QTest::newRow("strong, wide") << 0.15 << 40.0 << 0.0;
    QTest::newRow("with hum") << 0.06 << 20.0 << 2.0;
}

void TestFfaSearch::errorsOfPeriodsAreTrue()
{
    QFETCH(double, ducy);
    QFETCH(double, amplitude);
    QFETCH(double, hum);
    constexpr int count = 6000;
    constexpr double interval = 0.004;
    constexpr int searchedBins = 60;
    constexpr unsigned seeds = 60;
    int within1 = 0;
    int within2 = 0;
    for (unsigned seed = 0; seed < seeds; ++seed) {
        // Half a cycle of the hum and of its double from a multiple of either.
        const double period = (std::round((0.2 + 0.013 * seed) * 100.2) + 0.5) / 100.2;
        Series series = TestSupport::noise(count, seed, 1);
        add(series, pulses(count, period * step / interval, ducy, amplitude));
        addHum(series, interval, 50.1, hum, 0);
        series = Ffa::normalizeSeries(series);
        const FfaResult result = {series,
                                  interval,
                                  Periodogram(nullptr, 0, 0, 0, 0, 0, 0, 0, 0),
                                  Tools::findMains(Tools::powerSpectrum(series, interval)),
                                  {}};
        const double truth = period * 2 * M_PI / 6.283; // the generator's two pi is short
        const double trial = truth * truth / (searchedBins * count * interval);
        const FfaRefinement refined =
            Tools::refinePeriod(result, truth + (seed % 3 - 1.0) * trial / 2, searchedBins);
        const double off = std::abs(refined.period - truth) / refined.error;
        within1 += off < 1 ? 1 : 0;
        within2 += off < 2 ? 1 : 0;
    }
    // 68 and 95 % of 60, and what chance scatters.
    QVERIFY2(within1 > 32 && within1 < 53, qPrintable(QString::number(within1)));
    QVERIFY2(within2 > 52, qPrintable(QString::number(within2)));
}

void TestFfaSearch::refusedSeries_data()
{
    QTest::addColumn<Series>("series");
    QTest::addColumn<QString>("text");
    QTest::newRow("constant") << Series(20000, 32.0) << "sum of the bands is constant";
    QTest::newRow("constant, rounded by a base line")
        << Series(20000, 445400.3 * 32) << "is constant";
    QTest::newRow("no sample is a number") << Series(20000, NAN) << "no finite number";
}

void TestFfaSearch::refusedSeries()
{
    QFETCH(Series, series);
    QFETCH(QString, text);
    const ObservationData data = recordingOf(series);
    for (const QString noise : {"polinom5", "median", "backSum", "without"}) {
        PulsarParameters parameters = parametersOf(data);
        parameters.noise = noise;
        for (const bool normalise : {false, true}) {
            parameters.normalise = normalise;
            PulsarCalculate calculate(data, parameters);
            QVERIFY2(!calculate.run("createFFA"), qPrintable(noise));
            QVERIFY2(calculate.failure().contains(text), qPrintable(calculate.failure()));
        }
    }
}

ZRT_UNIT_TEST_MAIN(TestFfaSearch)
#include "tst_ffasearch.moc"
