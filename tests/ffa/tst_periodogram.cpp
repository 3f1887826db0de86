#include "ffa/downsample.h"
#include "ffa/ffaplan.h"
#include "ffa/foldsearch.h"
#include "ffa/normalise.h"
#include "ffa/periodogram.h"
#include "ffa/straightffa.h"
#include "ffa/syntheticsignal.h"
#include "support/testmain.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double endless = std::numeric_limits<double>::infinity();
constexpr double notNumber = std::numeric_limits<double>::quiet_NaN();

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

// Equal bits, or both not a number.
bool sameValues(const Floats &a, const Floats &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) {
        return std::bit_cast<quint32>(x) == std::bit_cast<quint32>(y) ||
               (std::isnan(x) && std::isnan(y));
    });
}

struct Search {
    Floats data;
    double tsamp;
    double periodMin;
    double periodMax;
    int binsMin;
    int binsMax;
    double ducyMax;
};

} // namespace

Q_DECLARE_METATYPE(Search)
Q_DECLARE_METATYPE(std::vector<double>)

class TestPeriodogram : public QObject {
    Q_OBJECT

private slots:
    void widths();
    void validation_data();
    void validation();
    void length();
    void vectorLengthsAgree();
    void varianceOfDownsampledNoise_data();
    void varianceOfDownsampledNoise();
    void wholeFactors_data();
    void wholeFactors();
    void searchEqualsStraight_data();
    void searchEqualsStraight();
    void pulsesAreFound_data();
    void pulsesAreFound();
    void noiseStaysLow();
    void tooLargeForTheMachine();
    void normalisesInPlace();
    void cancellation();
    void copiesAreIndependent();
};

void TestPeriodogram::widths()
{
    using List = std::vector<qint32>;
    QCOMPARE(Ffa::trialWidths(100, 0.2, 1.5), (List{1, 2, 3, 4, 6, 9, 13, 19}));
    QCOMPARE(Ffa::trialWidths(10, 0.4, 0.3), (List{1, 2, 3, 4}));
    QCOMPARE(Ffa::trialWidths(10, 0.2, notNumber), (List{1, 2}));
    QCOMPARE(Ffa::trialWidths(1 << 30, 7.0, 46340.0), (List{1, 46340, 2147395600}));
    QTest::ignoreMessage(QtDebugMsg, "Ffa::trialWidths(): too many widths, ducy_max=inf wtsp=1");
    QCOMPARE(Ffa::trialWidths(64, endless, 1.0), List{});
}

void TestPeriodogram::validation_data()
{
    QTest::addColumn<Search>("s");
    QTest::addColumn<QString>("message");
    const Floats data(1000);
    const auto row = [](const char *name, const Search &search, const char *message) {
        QTest::newRow(name) << search << message;
    };
    row("shortest period exactly", {data, 0.015625, 1, 2, 64, 64, 0.2}, "");
    row("no samples", {{}, notNumber, notNumber, 0, 0, 0, 0.2}, "size must be > 0");
    row("interval not a number", {data, notNumber, 0, 2, 64, 80, 0.2}, "tsamp must be > 0");
    row("no period", {data, 0.01, 0, -1, 1, 0, 0.2}, "period_min must be > 0");
    row("empty range", {data, 0.01, 2, 2, 1, 0, 0.2}, "period_max must be > period_min");
    row("no range", {data, 0.01, 2, notNumber, 64, 80, 0.2}, "period_max must be > period_min");
    row("one bin", {data, 0.01, 1, 2, 1, 0, 0.2}, "bins_min must be > 1");
    row("bins reversed", {data, 0.01, 1, 2, 80, 64, 0.2}, "bins_max must be >= bins_min");
    row("shortest period too short", {data, 0.02, 1, 2, 64, 80, 0.2},
        "Must have: period_min >= tsamp * bins_min (0.02*64=1.28)");
}

void TestPeriodogram::validation()
{
    QFETCH(Search, s);
    QFETCH(QString, message);
    const Periodogram result(s.data.data(), s.data.size(), s.tsamp, s.periodMin, s.periodMax,
                             s.binsMin, s.binsMax, s.ducyMax, 1.5);
    QCOMPARE(result.error, message);
    QCOMPARE(result.periods.empty() && result.widths.empty(), !message.isEmpty());
}

// Worked by hand: with tsamp 1 and period_min equal to bins_min the first step is not
// downsampled, and period_max below (bins_max + 1) bins leaves that step alone.
void TestPeriodogram::length()
{
    // 10 bins, 10 rows: ceil(10 x 9 x (1 - 10/11)) = ceil(8.18..) = 9.
    QCOMPARE(Ffa::periodogramLength(109, 1, 10, 10.9999, 10, 10), quint64(9));
    // Longest period 10.5: ceil(90 x (1 - 10/10.5)) = ceil(4.29) = 5.
    QCOMPARE(Ffa::periodogramLength(100, 1, 10, 10.5, 10, 10), quint64(5));
    QCOMPARE(Ffa::periodogramLength(19, 1, 10, 10.9999, 10, 10), quint64(0));
    // Factors 1, 3, 9 leave 40, 13, 4 samples. Rows of 2 to 5 bins: 20, 13, 10, 8, then
    // 6, 4, 3, 2, then 2 of 2 bins; kept 13 + 9 + 8 + 6, then 4 + 3 + 2 + 1, then 1.
    QCOMPARE(Ffa::periodogramLength(40, 1, 2, endless, 2, 5), quint64(47));
    // The smallest growth there is: 2^31 / (2^31 - 1) per step, and data for none of them.
    QCOMPARE(Ffa::periodogramLength(1000000, 1e-12, 1, 1e300, 2147483647, 2147483647), quint64(0));
}

// A search takes one of the vector lengths, whichever suits the processor.
void TestPeriodogram::vectorLengthsAgree()
{
    const std::vector<quint64> widths{5, 1, 19, 2, 20, 3, 41};
    const Floats data = noise(7000);
    for (const int bins : {2, 11, 15, 16, 17, 20, 31, 33, 49, 64}) {
        const Ffa::FoldLimits limits{100 * quint64(bins), bins, bins};
        Ffa::FoldSearch eight(limits, widths.data(), widths.size(), Ffa::Lanes::Eight);
        Ffa::FoldSearch sixteen(limits, widths.data(), widths.size(), Ffa::Lanes::Sixteen);
        for (quint64 rows = 1; rows <= 100; ++rows) {
            Floats first(rows * widths.size() + 1, -9);
            Floats second = first;
            eight.run(data.data() + 100, {bins, rows, rows}, 3.0f, first.data());
            sixteen.run(data.data() + 100, {bins, rows, rows}, 3.0f, second.data());
            QVERIFY2(sameValues(first, second), qPrintable(QString::number(rows)));
            QCOMPARE(first.back(), -9.0f);
        }
    }
}

void TestPeriodogram::varianceOfDownsampledNoise_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<bool>("isTold"); // by the variance that S/N is computed with
    QTest::newRow("none") << 1.0 << true;
    QTest::newRow("two") << 2.0 << true;
    QTest::newRow("three") << 3.0 << false;
    QTest::newRow("ten") << 10.0 << false;
    QTest::newRow("just above ten") << 10.00005 << false;
    QTest::newRow("above ten, all phases") << 10.01 << true;
    QTest::newRow("rounded below ten") << 9.999999999999 << false;
    QTest::newRow("halves") << 1.5 << false;
    QTest::newRow("thirds") << 10 + 1 / 3.0 << true;
    QTest::newRow("any") << 6.2832 << true;
}

// The mean of the squared weights, summed sample by sample.
void TestPeriodogram::varianceOfDownsampledNoise()
{
    QFETCH(double, factor);
    QFETCH(bool, isTold);
    constexpr int size = 100000;
    double sum = 0;
    const int count = int(size / factor);
    for (int i = 0; i < count; ++i) {
        const double begin = i * factor;
        const double end = begin + factor;
        for (int j = int(begin); j < end; ++j) {
            const double weight = std::min(j + 1.0, end) - std::max(double(j), begin);
            sum += weight * weight;
        }
    }
    const double expected = sum / count;
    const double found = Ffa::trueVariance(size, factor);
    QVERIFY2(std::abs(found / expected - 1) < 0.004, qPrintable(QString::number(found)));
    const double told = Ffa::downsampledVariance(size, factor);
    QCOMPARE(std::abs(told / expected - 1) < 0.01, isTold);
    const double low = Ffa::snrFactor(size, factor);
    QVERIFY(low == 1 ? told < 1.1 * expected : std::abs(low * low * expected / told - 1) < 0.004);
}

void TestPeriodogram::wholeFactors_data()
{
    QTest::addColumn<double>("shortest"); // s, at 0.25 ms
    QTest::addColumn<int>("fewest");
    QTest::addColumn<int>("most");
    QTest::addColumn<std::vector<double>>("factors");
    QTest::addColumn<double>("offered");
    using List = std::vector<double>;
    QTest::newRow("the first") << 0.1 << 40 << 80 << List{10} << 0.0999;
    QTest::newRow("above it") << 0.1001 << 40 << 80 << List{} << 0.1001;
    QTest::newRow("later ones") << 0.1 << 64 << 127 << List{25, 50, 100} << 0.0999;
    QTest::newRow("one bin more") << 0.1 << 64 << 128 << List{} << 0.1;
    QTest::newRow("one and two are right, no shorter period")
        << 0.01 << 40 << 79 << List{4, 8, 16, 32, 64, 128, 256} << 0.01001;
    QTest::newRow("below a whole one") << 0.09999999 << 40 << 80 << List{} << 0.09999999;
}

void TestPeriodogram::wholeFactors()
{
    QFETCH(double, shortest);
    QFETCH(int, fewest);
    QFETCH(int, most);
    QFETCH(std::vector<double>, factors);
    QFETCH(double, offered);
    constexpr quint64 size = 120000;
    constexpr double tsamp = 0.00025;
    constexpr double longest = 3;
    const auto steps = Ffa::wholeFactorSteps(size, tsamp, shortest, longest, fewest, most);
    std::vector<double> found;
    const quint64 length = Ffa::periodogramLength(size, tsamp, shortest, longest, fewest, most);
    std::vector<double> periods(length);
    std::vector<quint32> bins(length);
    Ffa::trialPeriods(size, tsamp, shortest, longest, fewest, most, periods.data(), bins.data());
    for (const Ffa::WholeFactorStep &step : steps) {
        found.push_back(std::round(step.factor));
        for (quint64 i = step.firstTrial; i < step.firstTrial + step.trials; ++i) {
            QVERIFY(periods[i] > (1 - 1e-9) * step.shortest && periods[i] < step.longest);
            // A trial of b bins spans b downsampled samples or a little more.
            const double factor = periods[i] / bins[i] / tsamp;
            QVERIFY(factor > (1 - 1e-9) * step.factor && factor < step.factor * (1 + 1.0 / fewest));
        }
    }
    QCOMPARE(found, factors);
    const double other =
        Ffa::periodMinWithoutWholeFactors(size, tsamp, shortest, longest, fewest, most);
    QCOMPARE(other, offered);
    QVERIFY(Ffa::wholeFactorSteps(size, tsamp, other, longest, fewest, most).empty());
}

void TestPeriodogram::searchEqualsStraight_data()
{
    QTest::addColumn<Search>("s");
    const auto row = [](const char *name, const Search &search) { QTest::newRow(name) << search; };
    const Floats data = noise(6000);
    Floats holed = data;
    holed[1234] = float(notNumber);
    holed[5000] = float(endless);
    row("no downsampling in the first step", {data, 0.015625, 1, 3, 64, 80, 0.2});
    row("factors that are not whole", {data, 0.0125, 1, 9.7, 64, 128, 0.2});
    row("longest period not a whole number of samples", {data, 0.0125, 1, 1.537, 40, 55, 0.3});
    row("longest period beyond the data", {data, 0.01, 1, 1000, 32, 64, 0.2});
    row("a single, odd number of bins", {data, 0.01, 1, 2, 37, 37, 0.2});
    row("fewer bins than a vector", {data, 0.01, 0.05, 0.4, 2, 9, 0.5});
    row("widths near the bins", {data, 0.01, 1, 2, 24, 30, 0.96});
    row("duty cycle of one", {data, 0.01, 1, 2, 20, 30, 1.0});
    row("samples not a number and infinite", {holed, 0.01, 1, 3, 30, 50, 0.2});
    row("one row", {noise(70), 0.01, 0.4, 3, 40, 50, 0.2});
    row("two to four rows", {noise(170), 0.01, 0.4, 3, 40, 50, 0.2});
}

void TestPeriodogram::searchEqualsStraight()
{
    QFETCH(Search, s);
    const Periodogram got(s.data.data(), s.data.size(), s.tsamp, s.periodMin, s.periodMax,
                          s.binsMin, s.binsMax, s.ducyMax, 1.3);
    QCOMPARE(got.error, QString());
    const StraightFfa::Result expected =
        StraightFfa::search(s.data, s.tsamp, {got.widths.begin(), got.widths.end()}, s.periodMin,
                            s.periodMax, s.binsMin, s.binsMax);
    QCOMPARE(std::size_t(got.length), expected.periods.size());
    QCOMPARE(got.periods, expected.periods);
    QCOMPARE(got.foldbins, expected.foldbins);
    QVERIFY(sameValues(got.snr, expected.snr));
    std::vector<double> periods(got.periods.size());
    std::vector<quint32> foldbins(periods.size());
    Ffa::trialPeriods(s.data.size(), s.tsamp, s.periodMin, s.periodMax, s.binsMin, s.binsMax,
                      periods.data(), foldbins.data());
    QVERIFY(periods == got.periods && foldbins == got.foldbins);
}

void TestPeriodogram::pulsesAreFound_data()
{
    QTest::addColumn<double>("period"); // s
    QTest::addColumn<double>("ducy");
    QTest::newRow("narrow") << 0.71 << 0.02;
    QTest::newRow("downsampled by two") << 1.5432 << 0.06;
    QTest::newRow("last bins") << 2.5 << 0.1;
}

void TestPeriodogram::pulsesAreFound()
{
    QFETCH(double, period);
    QFETCH(double, ducy);
    constexpr double amplitude = 30;
    // The generator's two pi is short by 3e-5 of a period per period.
    const double truePeriod = period * (2 * std::acos(-1.0) / 6.283);
    const Floats data = Ffa::syntheticPulseSignal(65536, period / 0.01, 0.3, ducy, amplitude, 0.0);
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 2.58, 64, 128, 0.25, 1.2);
    QCOMPARE(result.error, QString());
    const auto best = std::max_element(result.snr.begin(), result.snr.end());
    const auto trial = std::size_t(best - result.snr.begin()) / std::size_t(result.nwidths);
    const double found = result.periods.at(trial);
    const double highest = double(*best);
    // One bin, at most two samples, of drift over the 65536 samples.
    QVERIFY2(std::abs(found / truePeriod - 1) < 2.1 / 65536,
             qPrintable(QString("%1, not %2").arg(found, 0, 'f', 6).arg(truePeriod, 0, 'f', 6)));
    // The amplitude is what a filter of the pulse's own shape finds, the most there is; a boxcar
    // finds 94 % of a smooth pulse, and the steps of width, phase and period cost a little more.
    QVERIFY2(highest > 0.86 * amplitude && highest < amplitude,
             qPrintable(QString::number(highest)));
}

// White noise of unit variance: width 1 finds the largest of b normal values, 2.34 on average
// for 64 of them (tables of normal order statistics, e.g. Harter 1961, Biometrika 48, 151),
// and the largest of all trials is that of some 10^5 normal values.
void TestPeriodogram::noiseStaysLow()
{
    const Floats data = noise(65536);
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 0.6499, 64, 64, 0.2, 1.5);
    QVERIFY(result.length > 900);
    double sum = 0;
    for (std::size_t i = 0; i < result.snr.size(); i += std::size_t(result.nwidths))
        sum += double(result.snr[i]);
    const double mean = sum / result.length;
    QVERIFY2(std::abs(mean - 2.34) < 0.1, qPrintable(QString::number(mean)));
    const float largest = *std::max_element(result.snr.begin(), result.snr.end());
    QVERIFY2(largest > 4 && largest < 6, qPrintable(QString::number(double(largest))));
}

void TestPeriodogram::tooLargeForTheMachine()
{
    // 3 million widths times some 2000 trials are 24 TB of results.
    const Floats data(100000, 1.0f);
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 0.7, 64, 70, 50000, 1.0);
    QVERIFY(result.error.contains("MiB") && result.error.contains("widths"));
    QVERIFY(result.length == 0 && result.snr.empty() && result.widths.empty());
}

void TestPeriodogram::normalisesInPlace()
{
    const Floats normal = Ffa::normalizeSeries(noise(5000));
    Floats data = normal;
    for (float &value : data)
        value = value * 8 + 128;
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 2.0, 12345, 64, 70, 0.2, 1.5,
                             false);
    // Values near 128 are kept to 2^-17 or so: 1e-6 of the deviation of 8.
    for (std::size_t i = 0; i < data.size(); ++i)
        QVERIFY(std::abs(data[i] - normal[i]) < 1e-5f);
    QCOMPARE(result.snr, searchOf(data).snr);
}

void TestPeriodogram::cancellation()
{
    const Floats data = noise(5000);
    std::vector<int> percents;
    const Ffa::Progress collect = [&](int percent) {
        percents.push_back(percent);
        return true;
    };
    QCOMPARE(searchOf(data, collect).error, QString());
    QVERIFY(std::is_sorted(percents.begin(), percents.end()));
    QCOMPARE(percents.back(), 100);
    for (const std::size_t stopAt : {std::size_t(1), percents.size() / 2, percents.size()}) {
        std::size_t calls = 0;
        const Periodogram stopped = searchOf(data, [&](int) { return ++calls < stopAt; });
        QCOMPARE(calls, stopAt);
        QCOMPARE(stopped.error, QString("The search was cancelled"));
        QVERIFY(stopped.length == 0 && stopped.periods.empty() && stopped.snr.empty());
    }
}

void TestPeriodogram::copiesAreIndependent()
{
    Periodogram result = searchOf(noise(5000));
    const Periodogram copy = result;
    result.snr[0] = -1;
    QVERIFY(copy.snr[0] > 0);
    QTest::ignoreMessage(QtDebugMsg, "Periodogram::Periodogram()");
    Periodogram assigned;
    QVERIFY(assigned.length == 0 && assigned.snr.empty() && assigned.error.isEmpty());
    assigned = copy;
    QCOMPARE(assigned.snr, copy.snr);
}

ZRT_UNIT_TEST_MAIN(TestPeriodogram)
#include "tst_periodogram.moc"
