#include "ffa/boxcar.h"
#include "ffa/downsample.h"
#include "ffa/elementwise.h"
#include "ffa/ffaplan.h"
#include "ffa/foldtransform.h"
#include "ffa/normalise.h"
#include "ffa/straightffa.h"
#include "ffa/syntheticsignal.h"
#include "support/testmain.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <stdexcept>

namespace {

using Floats = std::vector<float>;

constexpr float nanFloat = std::numeric_limits<float>::quiet_NaN();

Floats noise(std::size_t count)
{
    std::mt19937 generator(5);
    std::normal_distribution<float> normal;
    Floats data(count);
    for (float &value : data)
        value = normal(generator);
    return data;
}

template <typename Call>
QString messageOf(Call call)
{
    try {
        call();
    } catch (const std::invalid_argument &error) {
        return error.what();
    }
    return {};
}

} // namespace

class TestBlocks : public QObject {
    Q_OBJECT

private slots:
    void downsampling_data();
    void downsampling();
    void downsamplingRefusals();
    void varianceFormula_data();
    void varianceFormula();
    void varianceOfNoise();
    void elementwise();
    void largestDifferenceAndNan();
    void transformFollowsStraightLines_data();
    void transformFollowsStraightLines();
    void transformEqualsStraight_data();
    void transformEqualsStraight();
    void prefixSumGoesRound();
    void boxcarOfKnownPulse();
    void boxcarRowsAndStraight();
    void boxcarChecks();
    void normalisation();
    void syntheticPulses();
    void gaussianMoments();
};

void TestBlocks::downsampling_data()
{
    QTest::addColumn<Floats>("data");
    QTest::addColumn<double>("factor");
    QTest::addColumn<Floats>("expected");
    QTest::newRow("whole factor") << Floats{1, 2, 3, 4, 5} << 2.0 << Floats{3, 7};
    // [0, 1.5) and [1.5, 3): 1 + 2/2, 2/2 + 3.
    QTest::newRow("half samples") << Floats{1, 2, 3, 4} << 1.5 << Floats{2, 4};
    QTest::newRow("single sum, last weight beyond the data") << Floats{1, 2, 4} << 3.0 << Floats{7};
    // The only interval ends at 3.0 and takes the last sample with weight 3 - 2 = 1; the
    // second interval of factor 1.25 over 3 samples ends at 2.5.
    QTest::newRow("quarters") << Floats{4, 8, 16} << 1.25 << Floats{6, 14};
}

void TestBlocks::downsampling()
{
    QFETCH(Floats, data);
    QFETCH(double, factor);
    QFETCH(Floats, expected);
    Floats out(expected.size() + 1, -9);
    Ffa::downsample(data.data(), data.size(), factor, out.data());
    QCOMPARE(Ffa::downsampledLength(data.size(), factor), quint64(expected.size()));
    expected.push_back(-9);
    QCOMPARE(out, expected);
}

void TestBlocks::downsamplingRefusals()
{
    const Floats data{1, 2, 3, 4};
    Floats out(4);
    const auto refusal = [&](double factor) {
        return messageOf([&] { Ffa::downsample(data.data(), 4, factor, out.data()); });
    };
    const QString text = "Downsampling factor must verify: 1 < f <= size";
    for (const double factor : {1.0, 0.5, 4.0001, double(nanFloat)})
        QCOMPARE(refusal(factor), text);
    QCOMPARE(refusal(4.0), QString());
}

void TestBlocks::varianceFormula_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<double>("expected");
    QTest::newRow("none") << 1.0 << 1.0;
    QTest::newRow("two") << 2.0 << 2.0;
    QTest::newRow("three, no mean over phases") << 3.0 << 5.0;
    QTest::newRow("many phases") << 2.5 << 2.5 - 1.0 / 3;
    // 1000 samples, N = 499, x = 499 / 512 = 0.974609375.
    QTest::newRow("phases within one sample")
        << 2.0 + 1.0 / 512 << 1 + 2.0 / 3 * 0.974609375 * 0.974609375 - 0.974609375 + 1;
}

void TestBlocks::varianceFormula()
{
    QFETCH(double, factor);
    QFETCH(double, expected);
    QVERIFY(std::abs(Ffa::downsampledVariance(1000, factor) - expected) < 1e-14);
}

void TestBlocks::varianceOfNoise()
{
    const Floats data = noise(200000);
    for (const double factor : {2.0, 2.7, 7.3}) {
        Floats out(Ffa::downsampledLength(data.size(), factor));
        Ffa::downsample(data.data(), data.size(), factor, out.data());
        double squares = 0;
        for (const float value : out)
            squares += double(value) * double(value);
        const double ratio =
            squares / double(out.size()) / Ffa::downsampledVariance(data.size(), factor);
        // Relative deviation of a variance from n values: sqrt(2 / n), 0.9 % for the fewest.
        QVERIFY2(std::abs(ratio - 1) < 0.03, qPrintable(QString::number(ratio)));
    }
}

void TestBlocks::elementwise()
{
    const Floats x{1, 2, 3, 4, 5};
    const Floats y{10, 20, 30, 40, 50};
    Floats out(6, -9);
    Ffa::addArrays(x.data(), y.data(), 5, out.data());
    QCOMPARE(out, (Floats{11, 22, 33, 44, 55, -9}));
    Ffa::addConstant(x.data(), 0.5f, 5, out.data());
    QCOMPARE(out, (Floats{1.5, 2.5, 3.5, 4.5, 5.5, -9}));
    Ffa::rotateArray(x.data(), 5, 7, out.data());
    QCOMPARE(out, (Floats{3, 4, 5, 1, 2, -9}));
    Ffa::rollAdd(x.data(), y.data(), 5, 7, out.data());
    QCOMPARE(out, (Floats{31, 42, 53, 14, 25, -9}));
    Ffa::rollAdd(x.data(), y.data(), 5, 10, out.data());
    QCOMPARE(out, (Floats{11, 22, 33, 44, 55, -9}));
}

void TestBlocks::largestDifferenceAndNan()
{
    const Floats zero(3, 0.0f);
    QCOMPARE(Ffa::largestDifference(Floats{-3, -1, -2}.data(), zero.data(), 3), -1.0f);
    QCOMPARE(Ffa::largestDifference(Floats{1, nanFloat, 2}.data(), zero.data(), 3), 2.0f);
    QVERIFY(std::isnan(Ffa::largestDifference(Floats{nanFloat, 1, 2}.data(), zero.data(), 3)));
    QVERIFY(std::signbit(Ffa::largestDifference(Floats{-0.0f, 0.0f}.data(), zero.data(), 2)));
}

void TestBlocks::transformFollowsStraightLines_data()
{
    QTest::addColumn<int>("rows");
    for (const int rows : {1, 2, 3, 4, 5, 7, 8, 13, 16, 31, 100})
        QTest::addRow("%d rows", rows) << rows;
}

// One pulse per row that drifts to s bins over the rows adds up in row s of the transform:
// the path of a merge is never more than about log2(rows) / 2 bins from the straight line, so
// pulses that wide are caught whole.
void TestBlocks::transformFollowsStraightLines()
{
    QFETCH(int, rows);
    constexpr int bins = 128;
    const int reach = 1 + int(std::log2(rows));
    for (int s = 0; s < rows; s += 1 + rows / 7) {
        Floats series(std::size_t(rows) * bins, 0.0f);
        for (int row = 0; row < rows; ++row) {
            const int drift = rows == 1 ? 0 : int(std::lround(double(s) * row / (rows - 1)));
            for (int i = -reach; i <= reach; ++i)
                series[std::size_t(row) * bins + std::size_t(40 + drift + i + bins) % bins] = 1;
        }
        Floats work(series.size());
        Floats out(series.size());
        const quint64 r = quint64(rows);
        Ffa::foldTransform({series.data(), r, bins}, {work.data(), r, bins}, {out.data(), r, bins});
        const float *const profile = out.data() + s * bins;
        QCOMPARE(profile[40], float(rows));
        QCOMPARE(std::accumulate(profile, profile + bins, 0.0f), float(rows * (2 * reach + 1)));
    }
}

void TestBlocks::transformEqualsStraight_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("bins");
    for (const int rows : {2, 3, 6, 11, 64, 129})
        for (const int bins : {2, 3, 17, 40})
            QTest::addRow("%d x %d", rows, bins) << rows << bins;
}

void TestBlocks::transformEqualsStraight()
{
    QFETCH(int, rows);
    QFETCH(int, bins);
    const Floats series = noise(std::size_t(rows) * std::size_t(bins));
    Floats work(series.size());
    Floats out(series.size());
    const quint64 r = quint64(rows);
    const quint64 c = quint64(bins);
    Ffa::foldTransform({series.data(), r, c}, {work.data(), r, c}, {out.data(), r, c});
    QCOMPARE(out, StraightFfa::transform(series, rows, bins));
}

void TestBlocks::prefixSumGoesRound()
{
    Floats out(9, -9);
    Ffa::circularPrefixSum(Floats{1, 2, 4}.data(), 3, 8, out.data());
    QCOMPARE(out, (Floats{1, 3, 7, 8, 10, 14, 15, 17, -9}));
    out.assign(9, -9);
    Ffa::circularPrefixSum(Floats{1, 2, 4}.data(), 3, 2, out.data());
    QCOMPARE(out, (Floats{1, 3, -9, -9, -9, -9, -9, -9, -9}));
    // Double accumulation: in float the small terms would be lost.
    const Floats far{16777216.0f, 1, 1, -16777216.0f};
    out.assign(4, 0);
    Ffa::circularPrefixSum(far.data(), 4, 4, out.data());
    QCOMPARE(out[3], 2.0f);
}

// A boxcar pulse that crosses the profile's end, in noise of known level: the filter of its
// width gives height x sqrt(w (b - w) / b) / sigma, whatever the baseline.
void TestBlocks::boxcarOfKnownPulse()
{
    constexpr int bins = 50;
    for (const float baseline : {0.0f, -3.0f}) {
        Floats profile(bins, baseline);
        for (const std::size_t i : {48, 49, 0, 1})
            profile[i] += 5;
        const std::vector<quint64> widths{1, 2, 4, 8};
        Floats snr(5, -9);
        Ffa::boxcarSnr(profile.data(), bins, widths.data(), widths.size(), 2.0f, snr.data());
        const double expected = 5 * std::sqrt(4.0 * 46 / 50) / 2;
        QVERIFY(std::abs(double(snr[2]) - expected) < 1e-5 * expected);
        QVERIFY(snr[0] < snr[1] && snr[1] < snr[2] && snr[3] < snr[2]);
        QCOMPARE(snr[4], -9.0f);
    }
}

void TestBlocks::boxcarRowsAndStraight()
{
    const Floats profiles = noise(3 * 20);
    const std::vector<quint64> widths{1, 3, 19, 20, 45};
    Floats snr(3 * widths.size());
    Ffa::boxcarSnr(Ffa::ConstBlock{profiles.data(), 3, 20}, widths.data(), widths.size(), 1.5f,
                   snr.data());
    for (std::size_t row = 0; row < 3; ++row) {
        const Floats profile(profiles.begin() + long(row) * 20,
                             profiles.begin() + long(row + 1) * 20);
        const Floats expected = StraightFfa::boxcar(profile, {widths.begin(), widths.end()}, 1.5f);
        const float *const got = snr.data() + row * widths.size();
        for (std::size_t j = 0; j < 3; ++j)
            QVERIFY(got[j] == expected[j]);
        QVERIFY2(std::isnan(got[3]) && std::isnan(got[4]), "widths of the profile and more");
    }
}

void TestBlocks::boxcarChecks()
{
    const std::vector<quint64> good{1, 9};
    const std::vector<quint64> zero{0, 1};
    const std::vector<quint64> wide{1, 10};
    const QString text = "trial widths must be all > 0 and < columns";
    QCOMPARE(messageOf([&] { Ffa::checkTrialWidths(good.data(), 2, 10); }), QString());
    QCOMPARE(messageOf([&] { Ffa::checkTrialWidths(zero.data(), 2, 10); }), text);
    QCOMPARE(messageOf([&] { Ffa::checkTrialWidths(wide.data(), 2, 10); }), text);
    QCOMPARE(messageOf([] { Ffa::checkStdNoise(0.5f); }), QString());
    QCOMPARE(messageOf([] { Ffa::checkStdNoise(0.0f); }), QString("stdnoise must be > 0"));
    QCOMPARE(messageOf([] { Ffa::checkStdNoise(nanFloat); }), QString("stdnoise must be > 0"));
}

void TestBlocks::normalisation()
{
    // Mean 4, sum of squares 10, sigma sqrt(10 / 4).
    const std::vector<double> values{2, 3, 4, 5, 6};
    const double sigma = std::sqrt(2.5);
    std::vector<double> doubles = values;
    Ffa::normalizeSeries(doubles.data(), 5);
    Floats floats(values.begin(), values.end());
    Ffa::normalizeSeries(floats.data(), 5);
    for (std::size_t i = 0; i < 5; ++i) {
        QVERIFY(std::abs(doubles[i] - (values[i] - 4) / sigma) < 1e-15);
        QCOMPARE(floats[i], float(doubles[i]));
    }
    QVERIFY(std::abs(Ffa::sampleDeviation(values.data(), 5) - sigma) < 1e-15);
    QVERIFY(std::isnan(Ffa::sampleDeviation(values.data(), 1)));
    QCOMPARE(Ffa::normalizeSeries(values), doubles);

    double untouched = 7;
    Ffa::normalizeSeries(&untouched, 0);
    Ffa::normalizeSeries(&untouched, -1);
    QCOMPARE(untouched, 7.0);
    QVERIFY(Ffa::normalizeSeries(Floats()).empty());
}

void TestBlocks::syntheticPulses()
{
    const Floats signal = Ffa::syntheticPulseSignal(10000, 100.0, 0.25, 0.1, 20.0, 0.0);
    double squares = 0;
    for (const float value : signal)
        squares += double(value) * double(value);
    QVERIFY(std::abs(squares - 400) < 1e-3);
    // Maximum at phase 0.25, half of it half a width of 10 samples away. The short two pi
    // moves the maxima by 3e-5 periods per period.
    QVERIFY(std::max_element(signal.begin(), signal.begin() + 100) == signal.begin() + 25);
    QVERIFY(std::abs(signal[30] / signal[25] - 0.5f) < 0.001f);
    QVERIFY(signal[75] < 1e-6f * signal[25]);

    const Floats noisy = Ffa::syntheticPulseSignal(10000, 100.0, 0.25, 0.1, 20.0, 3.0);
    std::vector<double> rest(noisy.size());
    for (std::size_t i = 0; i < rest.size(); ++i)
        rest[i] = double(noisy[i]) - double(signal[i]);
    // The noise differs at every call; 8 standard errors of a deviation are 6 % of it.
    QVERIFY(std::abs(Ffa::sampleDeviation(rest.data(), 10000) / 3 - 1) < 0.06);

    QTest::ignoreMessage(QtDebugMsg, "Ffa::syntheticPulseSignal(): bad count=-1");
    QVERIFY(Ffa::syntheticPulseSignal(-1, 100, 0, 0.1, 1, 0).empty());
    const qint64 huge = std::numeric_limits<qint64>::max();
    QTest::ignoreMessage(QtDebugMsg,
                         qPrintable(QString("Ffa::gaussianSeries(): bad count=%1").arg(huge)));
    QVERIFY(Ffa::gaussianSeries(huge, 0, 1).empty());
}

void TestBlocks::gaussianMoments()
{
    const std::vector<double> series = Ffa::gaussianSeries(40000, 5.0, 2.0);
    QCOMPARE(series.size(), std::size_t(40000));
    const double mean = std::accumulate(series.begin(), series.end(), 0.0) / 40000;
    // 10 standard errors.
    QVERIFY(std::abs(mean - 5) < 0.1);
    QVERIFY(std::abs(Ffa::sampleDeviation(series.data(), 40000) - 2) < 0.1);
    QVERIFY(series != Ffa::gaussianSeries(40000, 5.0, 2.0));
}

ZRT_UNIT_TEST_MAIN(TestBlocks)
#include "tst_blocks.moc"
