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
#include <numeric>
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
    double tsamp = 0.01;
    double periodMin = 0.64;
    double periodMax = 2;
    int binsMin = 64;
    int binsMax = 70;
    double ducyMax = 0.2;

    Periodogram run(const Ffa::Progress &progress = {}) const
    {
        return Periodogram(data.data(), data.size(), tsamp, periodMin, periodMax, binsMin, binsMax,
                           ducyMax, 1.3, progress);
    }

    // Periods and bins, without a search.
    std::pair<std::vector<double>, std::vector<quint32>> trials() const
    {
        const auto length =
            Ffa::periodogramLength(data.size(), tsamp, periodMin, periodMax, binsMin, binsMax);
        std::pair<std::vector<double>, std::vector<quint32>> all(length, length);
        Ffa::trialPeriods(data.size(), tsamp, periodMin, periodMax, binsMin, binsMax,
                          all.first.data(), all.second.data());
        return all;
    }
};

} // namespace

class TestPeriodogram : public QObject {
    Q_OBJECT

private slots:
    void widths();
    void validation();
    void length();
    void vectorLengthsAgree();
    void varianceOfDownsampledNoise();
    void wholeFactors();
    void searchEqualsStraight();
    void pulsesAreFound();
    void noiseStaysLow();
    void tooLargeForTheMachine();
    void normalisesInPlace();
    void cancellation();
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

void TestPeriodogram::validation()
{
    const Floats data(1000);
    const std::pair<Search, const char *> searches[] = {
        {{data, 0.015625, 1, 2, 64, 64}, ""}, // the shortest period exactly
        {{{}, notNumber, notNumber, 0, 0, 0}, "size must be > 0"},
        {{data, notNumber, 0, 2, 64, 80}, "tsamp must be > 0"},
        {{data, 0.01, 0, -1, 1, 0}, "period_min must be > 0"},
        {{data, 0.01, 2, 2, 1, 0}, "period_max must be > period_min"},
        {{data, 0.01, 2, notNumber, 64, 80}, "period_max must be > period_min"},
        {{data, 0.01, 1, 2, 1, 0}, "bins_min must be > 1"},
        {{data, 0.01, 1, 2, 80, 64}, "bins_max must be >= bins_min"},
        {{data, 0.02, 1, 2, 64, 80}, "Must have: period_min >= tsamp * bins_min (0.02*64=1.28)"},
    };
    for (const auto &[search, message] : searches) {
        const Periodogram result = search.run();
        QCOMPARE(result.error, QString(message));
        QCOMPARE(result.periods.empty() && result.widths.empty(), !result.error.isEmpty());
    }
    QTest::ignoreMessage(QtDebugMsg, "Periodogram::Periodogram()");
    QCOMPARE(Periodogram().error, QString());
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

// The variance that S/N is computed with, worked by hand, beside that of noise: it is too high for
// whole factors from 3 on, for which snrFactor() tells by how much S/N is low.
void TestPeriodogram::varianceOfDownsampledNoise()
{
    const Floats data = noise(1 << 20);
    // With the factor 10.000005 104857 intervals drift by x = 0.5243 of a sample.
    const std::vector<std::pair<double, double>> cases = {{1, 1},
                                                          {2, 2},
                                                          {3, 5},
                                                          {10, 82},
                                                          {10.000005, 81.659},
                                                          {10 - 1e-12, 9.6667},
                                                          {10.01, 9.6767},
                                                          {10 + 1 / 3.0, 10},
                                                          {1.5, 1.1667},
                                                          {6.2832, 5.9499}};
    for (const auto &[factor, told] : cases) {
        Floats out = data;
        if (factor > 1) {
            out.resize(std::size_t(double(data.size()) / factor));
            Ffa::downsample(data.data(), data.size(), factor, out.data());
        }
        const double count = double(out.size());
        const double found = std::inner_product(out.begin(), out.end(), out.begin(), 0.0) / count;
        const double expected = Ffa::trueVariance(data.size(), factor);
        const auto row = QByteArray::number(factor, 'g', 15) + " " + QByteArray::number(found);
        // Four standard deviations of the noise's variance, and what a finite sum of cosines lacks.
        QVERIFY2(std::abs(found / expected - 1) < 4 * std::sqrt(2 / count) + 0.003, row);
        QVERIFY2(std::abs(Ffa::downsampledVariance(data.size(), factor) / told - 1) < 1e-4, row);
        const double low = told > 1.1 * expected ? std::sqrt(told / expected) : 1;
        QVERIFY2(std::abs(Ffa::snrFactor(data.size(), factor) - low) < 1e-3, row);
    }
}

void TestPeriodogram::wholeFactors()
{
    using Case = std::tuple<double, int, int, std::vector<double>, double>;
    const Case cases[] = {
        {0.1, 40, 80, {10}, 0.0999}, // the first factor
        {0.1001, 40, 80, {}, 0.1001},
        {0.09999999, 40, 80, {}, 0.09999999},
        {0.1, 64, 127, {25, 50, 100}, 0.0999}, // later ones
        {0.1, 64, 128, {}, 0.1},
        // One and two are right, and there is no shorter period.
        {0.01, 40, 79, {4, 8, 16, 32, 64, 128, 256}, 0.01001},
    };
    for (const auto &[shortest, fewest, most, factors, offered] : cases) {
        const Search search{Floats(120000), 0.00025, shortest, 3, fewest, most};
        const auto stepsFrom = [&search](double periodMin) {
            return Ffa::wholeFactorSteps(search.data.size(), search.tsamp, periodMin,
                                         search.periodMax, search.binsMin, search.binsMax);
        };
        const std::vector<double> periods = search.trials().first;
        std::vector<double> found;
        for (const Ffa::WholeFactorStep &step : stepsFrom(shortest)) {
            found.push_back(std::round(step.factor));
            for (quint64 i = step.firstTrial; i < step.firstTrial + step.trials; ++i)
                QVERIFY(periods[i] > (1 - 1e-9) * step.shortest && periods[i] < step.longest);
        }
        QCOMPARE(found, factors);
        const double other = Ffa::periodMinWithoutWholeFactors(
            search.data.size(), search.tsamp, shortest, search.periodMax, fewest, most);
        QCOMPARE(other, offered);
        QVERIFY(stepsFrom(other).empty());
    }
}

void TestPeriodogram::searchEqualsStraight()
{
    const Floats data = noise(6000);
    Floats holed = data;
    holed[1234] = float(notNumber);
    holed[5000] = float(endless);
    const Search searches[] = {
        {data, 0.015625, 1, 3, 64, 80},        // no downsampling in the first step
        {data, 0.0125, 1, 9.7, 64, 128},       // factors that are not whole
        {data, 0.0125, 1, 1.537, 40, 55, 0.3}, // longest period not a whole number of samples
        {data, 0.01, 1, 1000, 32, 64},         // longest period beyond the data
        {data, 0.01, 1, 2, 37, 37},
        {data, 0.01, 0.05, 0.4, 2, 9, 0.5}, // fewer bins than a vector
        {data, 0.01, 1, 2, 20, 30, 1.0},
        {holed, 0.01, 1, 3, 30, 50},
        {noise(70), 0.01, 0.4, 3, 40, 50},  // one row
        {noise(170), 0.01, 0.4, 3, 40, 50}, // two to four rows
    };
    for (const Search &s : searches) {
        const Periodogram got = s.run();
        QCOMPARE(got.error, QString());
        const StraightFfa::Result expected =
            StraightFfa::search(s.data, s.tsamp, {got.widths.begin(), got.widths.end()},
                                s.periodMin, s.periodMax, s.binsMin, s.binsMax);
        QCOMPARE(std::size_t(got.length), expected.periods.size());
        QCOMPARE(got.periods, expected.periods);
        QCOMPARE(got.foldbins, expected.foldbins);
        QVERIFY(sameValues(got.snr, expected.snr));
        QVERIFY(s.trials() == std::pair(got.periods, got.foldbins));
    }
}

void TestPeriodogram::pulsesAreFound()
{
    constexpr double amplitude = 30;
    // Narrow, downsampled by two, of the last bins.
    for (const auto &[period, ducy] : {std::pair(0.71, 0.02), {1.5432, 0.06}, {2.5, 0.1}}) {
        // The generator's two pi is short by 3e-5 of a period per period.
        const double truePeriod = period * (2 * std::acos(-1.0) / 6.283);
        Search search;
        search.data = Ffa::syntheticPulseSignal(65536, period / 0.01, 0.3, ducy, amplitude, 0.0);
        search.periodMax = 2.58;
        search.binsMax = 128;
        const Periodogram result = search.run();
        QCOMPARE(result.error, QString());
        const auto best = std::max_element(result.snr.begin(), result.snr.end());
        const auto trial = std::size_t(best - result.snr.begin()) / std::size_t(result.nwidths);
        // One bin, at most two samples, of drift over the 65536 samples.
        const double found = result.periods.at(trial);
        QVERIFY2(std::abs(found / truePeriod - 1) < 2.1 / 65536, QByteArray::number(found));
        // The amplitude is what a filter of the pulse's own shape finds, the most there is; a
        // boxcar finds 94 % of a smooth pulse, and the steps of width, phase and period cost a
        // little more.
        QVERIFY2(*best > 0.86 * amplitude && *best < amplitude, QByteArray::number(*best));
    }
}

// White noise of unit variance: width 1 finds the largest of b normal values, 2.34 on average
// for 64 of them (tables of normal order statistics, e.g. Harter 1961, Biometrika 48, 151),
// and the largest of all trials is that of some 10^5 normal values.
void TestPeriodogram::noiseStaysLow()
{
    const Periodogram result = Search{noise(65536), 0.01, 0.64, 0.6499, 64, 64}.run();
    QVERIFY(result.length > 900);
    double sum = 0;
    for (std::size_t i = 0; i < result.snr.size(); i += std::size_t(result.nwidths))
        sum += double(result.snr[i]);
    const double mean = sum / result.length;
    QVERIFY2(std::abs(mean - 2.34) < 0.1, QByteArray::number(mean));
    const float largest = *std::max_element(result.snr.begin(), result.snr.end());
    QVERIFY2(largest > 4 && largest < 6, QByteArray::number(largest));
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
    const Search normal{Ffa::normalizeSeries(noise(5000))};
    Floats data = normal.data;
    for (float &value : data)
        value = value * 8 + 128;
    const Periodogram result(data.data(), data.size(), 0.01, 0.64, 2.0, 12345, 64, 70, 0.2, 1.3,
                             false);
    // Values near 128 are kept to 2^-17 or so: 1e-6 of the deviation of 8.
    for (std::size_t i = 0; i < data.size(); ++i)
        QVERIFY(std::abs(data[i] - normal.data[i]) < 1e-5f);
    QCOMPARE(result.snr, Search{data}.run().snr);
}

void TestPeriodogram::cancellation()
{
    const Search search{noise(5000)};
    std::vector<int> percents;
    const auto stoppedAt = [&](std::size_t call) {
        percents.clear();
        return search.run([&](int percent) {
            percents.push_back(percent);
            return percents.size() < call;
        });
    };
    QCOMPARE(stoppedAt(std::size_t(-1)).error, QString());
    QVERIFY(std::is_sorted(percents.begin(), percents.end()));
    QCOMPARE(percents.back(), 100);
    for (const std::size_t call : {std::size_t(1), percents.size() / 2, percents.size()}) {
        const Periodogram stopped = stoppedAt(call);
        QCOMPARE(percents.size(), call);
        QCOMPARE(stopped.error, QString("The search was cancelled"));
        QVERIFY(stopped.length == 0 && stopped.periods.empty() && stopped.snr.empty());
    }
}

ZRT_UNIT_TEST_MAIN(TestPeriodogram)
#include "tst_periodogram.moc"
