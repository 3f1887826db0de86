#include "calc/ffacandidates.h"
#include "calc/ffafold.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/samples.h"
#include "ffa/downsample.h"
#include "ffa/normalise.h"

using namespace TestSupport;

namespace {

constexpr double step = 0.0124928;   // s, of the recordings that are made here
constexpr double fastStep = 0.00025; // s
constexpr double interval = 0.004;   // s, of series without a recording
constexpr int points = 40000;

// A recording whose sum over the bands is the series.
ObservationData recordingOf(const Series &series)
{
    return makeRecording({int(series.size()), 1, 33, 1},
                         [&](int p, int, int, int) { return float(series[std::size_t(p)] / 32); });
}

void add(Series &series, const Series &other)
{
    for (std::size_t i = 0; i < series.size(); ++i)
        series[i] += other[i];
}

PulsarParameters parametersOf(const ObservationData &data)
{
    PulsarParameters parameters;
    parameters.noise = "without";
    parameters.ffa =
        Tools::presetFfa(PulsarCalculate(data, parameters).ffaPoints(), data.tresolution);
    return parameters;
}

// What "createFFA" gives for a series without a baseline.
FfaResult searchOf(const Series &series, double tsamp, const FfaParameters &ffa)
{
    Series normal = Ffa::normalizeSeries(series);
    const std::vector<float> samples(normal.begin(), normal.end());
    Periodogram periodogram(samples.data(), samples.size(), tsamp, ffa.period_min, ffa.period_max,
                            ffa.bins_min, ffa.bins_max, ffa.ducy_max, ffa.wtsp);
    std::vector<MainsLine> mains = Tools::findMains(Tools::powerSpectrum(normal, tsamp));
    return {std::move(normal), tsamp, std::move(periodogram), std::move(mains),
            Tools::wholeFactorSteps(ffa, int(series.size()), tsamp)};
}

FfaResult searchOf(const Series &series, double tsamp)
{
    return searchOf(series, tsamp, Tools::presetFfa(int(series.size()), tsamp));
}

// With half as much of the double frequency.
void addHum(Series &series, double tsamp, double frequency, double amplitude, double drift)
{
    addSine(series, tsamp, frequency, amplitude, drift, 0);
    addSine(series, tsamp, 2 * frequency, amplitude / 2, 2 * drift, 1);
}

} // namespace

class TestFfaSearch : public QObject {
    Q_OBJECT

private slots:
    void everyBandIsSummed();
    void runningMedian();
    void slowChangesGoPulsesStay();
    void injectedPulses();
    void noiseStaysAtItsMaximum();
    void presetsAvoidWholeFactors();
    void pulsesAtAWholeFactorCountInFull();
    void familiesAreNamed();
    void humIsMarked();
    void pulsarsNearHumAreNot();
    void refinedCandidatesFoldThere();
    void errorsOfPeriodsAreTrue();
    void refusedSeries();
};

void TestFfaSearch::everyBandIsSummed()
{
    ObservationData data = recordingOf(noise(2000));
    spreadBands(data, 10, 3.4);
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

void TestFfaSearch::runningMedian()
{
    Series values = noise(200);
    for (double &value : values)
        value = std::round(value); // many are equal
    for (const int window : {1, 3, 31, 199, 401}) {
        Series expected;
        for (int i = 0; i < 200; ++i) {
            Series inside(values.begin() + std::max(0, i - window / 2),
                          values.begin() + std::min(200, i + window / 2 + 1));
            std::sort(inside.begin(), inside.end());
            expected.push_back(inside[(inside.size() - 1) / 2]);
        }
        QCOMPARE(Tools::runningMedian(values, window), expected);
    }
}

void TestFfaSearch::slowChangesGoPulsesStay()
{
    const int count = 40007; // no whole number of blocks
    const Series train = pulses(count, step, 0.9, 0.05, 100);
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

void TestFfaSearch::injectedPulses()
{
    constexpr double amplitude = 60;
    // The shortest period, one of the second octave and the longest, s.
    for (const auto &[period, ducy] : {std::pair(0.53, 0.06), {1.337, 0.05}, {18.0, 0.06}}) {
        Series series = noise(points, 7, 1);
        add(series, pulses(points, step, period, ducy, amplitude));
        const ObservationData data = recordingOf(series);
        PulsarCalculate calculate(data, parametersOf(data));
        QVERIFY2(calculate.run("createFFA"), qPrintable(calculate.failure()));
        const FfaResult &result = *calculate.result().ffa;
        QCOMPARE(calculate.result().curves.at(0), result.periodogram.snr);
        const FfaCandidate best = Tools::findCandidates(result, 7, 10).at(0);

        // Neighbouring trials are one bin of drift apart, which a pulse of several bins hardly
        // notices.
        const double trial = period * period / (best.bins * points * step);
        QVERIFY2(std::abs(best.period - period) < trial * std::max(1.0, 0.75 * best.width),
                 qPrintable(QString::number(best.period, 'f', 6)));
        // A matched filter would find the amplitude, a boxcar 94 % of it; the steps of width and
        // phase cost up to 6 %, and noise adds one sigma either way. Downsampled values are taken
        // for independent ones.
        const double theory = 0.943 * amplitude / std::sqrt(1 + amplitude * amplitude / points);
        const double f = best.period / (best.bins * step);
        const double v = Ffa::downsampledVariance(points, f);
        const double ratio =
            best.snr / theory / std::sqrt(((best.width - 1) * f + v) / (best.width * v));
        QVERIFY2(ratio > 0.92 && ratio < 1.03, qPrintable(QString::number(ratio)));

        const FfaRefinement refined = Tools::refinePeriod(result, period + 2 * trial, best.bins);
        QVERIFY(std::abs(refined.period - period) < 4 * refined.error);
        const FfaFold fold = Tools::foldSeries(result, refined.period, best.bins);
        QVERIFY(std::abs(fold.snr[std::size_t(fold.best)] / theory - 1) < 0.1);
        QCOMPARE(fold.picture.size(), std::size_t(fold.parts) * fold.profile.size());
    }
}

void TestFfaSearch::noiseStaysAtItsMaximum()
{
    // Steps of downsampling: none whole, the first, all, one and whole, one and a half, and
    // rounded below whole ones.
    const struct {
        double shortest, longest; // s, at 0.25 ms
        int most;
    } rows[] = {{0.1001, 1, 80},   {0.1, 1, 80},        {0.03, 1, 79},
                {0.1, 0.1999, 79}, {0.015, 0.0299, 79}, {0.03 * (1 - 1e-13), 1, 79}};
    constexpr unsigned seeds = 16;
    for (const auto &[shortest, longest, most] : rows) {
        FfaParameters ffa;
        ffa.period_min = shortest;
        ffa.period_max = longest;
        ffa.bins_min = 40;
        ffa.bins_max = most;
        double sum = 0;
        const FfaEstimate estimate = Tools::estimateFfa(ffa, points, fastStep);
        for (unsigned seed = 0; seed < seeds; ++seed) {
            const FfaResult result = searchOf(noise(points, seed, 1), fastStep, ffa);
            const std::vector<float> &snr = result.periodogram.snr;
            sum += double(*std::max_element(snr.begin(), snr.end()));
            QCOMPARE(snr.size(), std::size_t(estimate.trials) * std::size_t(estimate.widths));
            QVERIFY(Tools::findCandidates(result, estimate.noiseThreshold + 1.2, 1).empty());
        }
        // The highest of one search scatters by 0.3 at most.
        const QString text = QString("%1: %2, not %3").arg(shortest).arg(sum / seeds);
        QVERIFY2(std::abs(sum / seeds - estimate.noiseMaximum) < 0.25,
                 qPrintable(text.arg(estimate.noiseMaximum)));
    }
}

void TestFfaSearch::presetsAvoidWholeFactors()
{
    for (const double tsamp : {0.0001, 0.00025, 0.0005, 0.001, 0.002, 0.004, 0.005, 0.01}) {
        for (const double length : {5.0, 60.0, 600.0}) {
            const int count = int(length / tsamp);
            const FfaParameters ffa = Tools::presetFfa(count, tsamp);
            QVERIFY(Tools::findFfaProblems(ffa, count, tsamp).empty());
            QVERIFY(Tools::wholeFactorSteps(ffa, count, tsamp).empty());
            QVERIFY(ffa.period_min <= std::max(0.1, 40 * tsamp) * (1 + 1e-3));
        }
    }
}

// The same pulses at and beside a factor of ten.
void TestFfaSearch::pulsesAtAWholeFactorCountInFull()
{
    constexpr int count = 120000;
    Series series = noise(count, 4, 1);
    add(series, pulses(count, fastStep, 0.15, 0.05, 17));
    FfaParameters ffa;
    ffa.period_max = 3;
    std::vector<FfaCandidate> strongest;
    for (const double shortest : {0.1, 0.0999}) {
        ffa.period_min = shortest;
        const double threshold = Tools::estimateFfa(ffa, count, fastStep).noiseThreshold;
        const auto candidates =
            Tools::findCandidates(searchOf(series, fastStep, ffa), threshold, 5);
        strongest.push_back(candidates.at(0));
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
    Series series = noise(points);
    add(series, pulses(points, interval, 0.7, 0.04, 200));
    addSine(series, interval, 50.04, 0.9);
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
    QCOMPARE(remarkAt(0.7), QString());
    QCOMPARE(remarkAt(1.4), QString("2 x no. 1"));
    QCOMPARE(remarkAt(0.35), QString("1/2 x no. 1"));
    QCOMPARE(remarkAt(1.05), QString("3/2 x no. 1"));
    QCOMPARE(remarkAt(9 / 50.04), QString("50.04 Hz mains"));
    // One candidate per peak: none lies within a turn of another.
    for (std::size_t i = 0; i < candidates.size(); ++i)
        for (std::size_t k = 0; k < i; ++k)
            QVERIFY(std::abs(1 / candidates[i].period - 1 / candidates[k].period) >
                    0.5 / (points * interval));
}

void TestFfaSearch::humIsMarked()
{
    const struct {
        double tsamp, frequency, drift; // s, Hz, Hz
    } rows[] = {{interval, 50.22, 0}, {interval, 50, 0.02}, {step, 50.22, 0}, {0.01, 49.8, 0}};
    for (const auto &[tsamp, frequency, drift] : rows) {
        Series series = noise(points, 5, 1);
        addHum(series, tsamp, frequency, 1.5, drift);
        int marked = 0;
        for (const FfaCandidate &candidate :
             Tools::findCandidates(searchOf(series, tsamp), 6.5, 30)) {
            const QString remark = Tools::candidateRemark(candidate);
            QVERIFY2(!remark.isEmpty() && candidate.base < 0, qPrintable(remark));
            if (candidate.mains == 0)
                continue; // what does not fold
            ++marked;
            const double cycle = candidate.mains / frequency;
            QVERIFY2(std::abs(cycle - std::round(cycle)) < 2e-4, qPrintable(remark));
        }
        QVERIFY2(marked > 5, qPrintable(QString("%1 s: %2").arg(tsamp).arg(marked)));
    }
}

void TestFfaSearch::pulsarsNearHumAreNot()
{
    // Cycles of the hum in a period: a whole number, half a turn and three halves over the series
    // beside it, and half a cycle.
    for (const double cycles : {25.0, 25.0 + 0.5 / 160, 25.0 - 1.5 / 160, 25.5}) {
        const double period = cycles / 50.22;
        Series series = noise(points, 6, 1);
        addHum(series, interval, 50.22, 0.5, 0);
        add(series, pulses(points, interval, period, 0.04, 16));
        const FfaResult result = searchOf(series, interval);
        QVERIFY(!result.mains.empty());
        const auto candidates = Tools::findCandidates(result, 6, 30);
        const auto isPulsar = [&](const FfaCandidate &candidate) {
            return std::abs(candidate.period / period - 1) < 5e-4;
        };
        const auto found = std::find_if(candidates.begin(), candidates.end(), isPulsar);
        QVERIFY2(found != candidates.end(), qPrintable(QString::number(cycles)));
        QCOMPARE(Tools::candidateRemark(*found), QString());
    }
}

void TestFfaSearch::refinedCandidatesFoldThere()
{
    Series series = noise(points, 8, 1);
    add(series, pulses(points, interval, 0.7123456, 0.03, 40));
    const FfaResult result = searchOf(series, interval);
    FfaCandidate candidate = Tools::findCandidates(result, 10, 1).at(0);
    const FfaCandidate searched = candidate;
    QVERIFY(!Tools::refineCandidate(result, candidate, [](int) { return false; }));
    QCOMPARE(candidate.period, searched.period);
    QVERIFY(Tools::refineCandidate(result, candidate));
    QVERIFY2(std::abs(candidate.period - 0.7123456) < 4 * candidate.periodError,
             qPrintable(QString::number(candidate.period, 'f', 7)));
    QVERIFY(candidate.foldSnr != searched.foldSnr && candidate.foldSnr > 0.95 * searched.foldSnr);
    // The table tells the period to the second digit of its error.
    const QStringList fields = Results::shownFields(Tools::tableCandidate(candidate), 1);
    const int column = Results::shownTitles().indexOf("period, s");
    QCOMPARE(fields[column].size(), fields[column + 1].size());
    QVERIFY(std::abs(fields[column].toDouble() - candidate.period) < candidate.periodError / 10);
    QCOMPARE(Results::shownFields(Tools::tableCandidate(searched), 1)[column + 1], QString("-"));
}

void TestFfaSearch::errorsOfPeriodsAreTrue()
{
    constexpr int count = 6000;
    constexpr int bins = 60;
    // Pulses of 1.2 to 15 samples, and of S/N 10 to 40, steady and of a source that crosses the
    // beam: noise, sampling and the height in time decide in turn.
    const struct {
        double ducy, amplitude, hum, beam; // beam: of the series; 0: steady
    } rows[] = {{0.03, 10, 0, 0}, {0.03, 25, 0, 0}, {0.05, 25, 0, 0},  {0.15, 40, 0, 0},
                {0.06, 20, 2, 0}, {0.3, 30, 0, 0},  {0.05, 60, 0, 0.2}};
    for (const auto &[ducy, amplitude, hum, beam] : rows) {
        Coverage coverage;
        for (unsigned seed = 0; seed < 60; ++seed) {
            // Half a cycle of the hum and of its double from a multiple of either.
            const double period = (std::round((0.2 + 0.013 * seed) * 100.2) + 0.5) / 100.2;
            Series series = noise(count, seed, 1);
            Series train = pulses(count, interval, period, ducy, amplitude);
            for (int i = 0; beam > 0 && i < count; ++i) {
                const double x = (double(i) / count - 0.4) / beam;
                train[std::size_t(i)] *= std::exp(-4 * std::numbers::ln2 * x * x);
            }
            add(series, train);
            addHum(series, interval, 50.1, hum, 0);
            series = Ffa::normalizeSeries(series);
            const FfaResult result = {series,
                                      interval,
                                      Periodogram(nullptr, 0, 0, 0, 0, 0, 0, 0, 0),
                                      Tools::findMains(Tools::powerSpectrum(series, interval)),
                                      {}};
            const double trial = period * period / (bins * count * interval);
            const FfaRefinement refined =
                Tools::refinePeriod(result, period + (seed % 3 - 1.0) * trial / 2, bins);
            coverage.add((refined.period - period) / refined.error);
        }
        QVERIFY2(coverage.isTrue(), qPrintable(coverage.text()));
    }
}

void TestFfaSearch::refusedSeries()
{
    // The second level is one that base lines round.
    for (const auto &[level, text] : {std::pair(32.0, "sum of the bands is constant"),
                                      {445400.3 * 32, "is constant"},
                                      {double(NAN), "no finite number"}}) {
        const ObservationData data = recordingOf(Series(20000, level));
        PulsarParameters parameters = parametersOf(data);
        for (const char *const method : {"polinom5", "median", "backSum", "without"}) {
            parameters.noise = method;
            parameters.normalise = !parameters.normalise;
            PulsarCalculate calculate(data, parameters);
            QVERIFY2(!calculate.run("createFFA"), method);
            QVERIFY2(calculate.failure().contains(text), qPrintable(calculate.failure()));
        }
    }
}

ZRT_UNIT_TEST_MAIN(TestFfaSearch)
#include "tst_ffasearch.moc"
