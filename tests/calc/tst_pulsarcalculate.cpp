#include "calc/approximation.h"
#include "calc/pulsarcalculate.h"
#include "calc/samplerecordings.h"
#include "support/testmain.h"

#include <cmath>
#include <functional>
#include <limits>
#include <string>

using TestSupport::makeRecording;
using TestSupport::roughSample;
using TestSupport::spreadBands;

using Change = std::function<void(ObservationData &, PulsarParameters &)>;
using Operation = std::function<bool(Approximation &)>;
Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(Operation)

namespace {

using Series = std::vector<double>;

constexpr double guard = -12345.5;
constexpr int bands = PulsarCalculate::sumBands;

constexpr double dispersion = 50;

PulsarParameters stretchFrom(int firstPoint)
{
    PulsarParameters parameters;
    parameters.firstPoint = firstPoint;
    parameters.noise = "without";
    return parameters;
}

// Sum of the stretch with guard values around; empty when refused or written beyond its ends.
Series sum(PulsarCalculate &calculate, int count, bool forward)
{
    Series out(std::size_t(count) + 2, guard);
    if (!calculate.sumChannels(out.data() + 1, count, dispersion, forward) ||
        out.front() != guard || out.back() != guard)
        return {};
    return Series(out.begin() + 1, out.end() - 1);
}

// The sum by one test per sample. `lag` of whole samples from band to band.
Series straightSum(const ObservationData &data, const PulsarParameters &selected, int count,
                   int lag)
{
    Series out;
    for (int i = 0; i < count; ++i) {
        double value = 0;
        for (int k = bands - 1; k >= 0; --k) {
            const int j = selected.firstPoint + (bands - 1 - k) * lag + i;
            if (j >= data.npoints)
                break;
            if (j >= 0)
                value += data.samples[selected.module - 1][k][selected.ray - 1][j];
        }
        out.push_back(value);
    }
    return out;
}

} // namespace

class TestPulsarCalculate : public QObject {
    Q_OBJECT

private slots:
    void equalsStraightSum_data();
    void equalsStraightSum();
    void halfSampleGoesAwayFromZero();
    void stopsWhereTheRecordingEnds();
    void leavesOutSamplesBeforeTheBeginning();
    void refusals_data();
    void refusals();
    void refusesQuietlyBelowNoDispersion();
    void removesBaseline_data();
    void removesBaseline();
    void normalises();
    void refusesBaseline_data();
    void refusesBaseline();
    void getFourierChecks();
};

void TestPulsarCalculate::equalsStraightSum_data()
{
    QTest::addColumn<int>("firstPoint");
    QTest::addColumn<int>("lag");
    QTest::addColumn<bool>("forward");
    QTest::newRow("no lag") << 0 << 0 << true;
    QTest::newRow("lag") << 5 << 3 << true;
    QTest::newRow("reversed") << 200 << 3 << false;
    QTest::newRow("reversed beyond the beginning") << 20 << 3 << false;
    QTest::newRow("frequencies that rise downwards") << 200 << -2 << true;
    QTest::newRow("frequencies that rise downwards, beyond the beginning") << 7 << -2 << true;
}

void TestPulsarCalculate::equalsStraightSum()
{
    QFETCH(int, firstPoint);
    QFETCH(int, lag);
    QFETCH(bool, forward);
    ObservationData data = makeRecording({500, 2, bands + 8, 3}, roughSample);
    spreadBands(data, dispersion, lag);
    PulsarParameters parameters = stretchFrom(firstPoint);
    parameters.module = 2;
    parameters.ray = 3;
    PulsarCalculate calculate(data, parameters);
    QCOMPARE(sum(calculate, 150, forward),
             straightSum(data, parameters, 150, forward ? lag : -lag));
    QCOMPARE(calculate.bandsSummed(), bands);
}

// Band 30 is 2.5 samples late, all others are empty.
void TestPulsarCalculate::halfSampleGoesAwayFromZero()
{
    ObservationData data =
        makeRecording({20, 1, bands + 1, 1}, [](int point, int, int channel, int) {
            return float(channel == bands - 2 ? point : 0);
        });
    std::fill(data.fbands.begin(), data.fbands.end(), 2.0);
    data.fbands[bands - 2] = 1;
    // 1/1 - 1/4 = 3/4, times the constant and 4/3, over a step of a 2.5th of the constant.
    data.tresolution = 0x1.034ccccccccccp+12 / 2.5;
    PulsarCalculate calculate(data, stretchFrom(10));
    Series out(2);
    QVERIFY(calculate.sumChannels(out.data(), 2, 4.0 / 3, true));
    QCOMPARE(out, Series({13, 14}));
    QVERIFY(calculate.sumChannels(out.data(), 2, 4.0 / 3, false));
    QCOMPARE(out, Series({7, 8}));
}

// 100 points, the stretch 40 .. 98. Band k is shifted by 31 - k: band 30 fits, band 29 needs
// point 100 for element 58.
void TestPulsarCalculate::stopsWhereTheRecordingEnds()
{
    ObservationData data = makeRecording({100, 1, bands + 1, 1}, roughSample);
    spreadBands(data, dispersion, 1);
    PulsarCalculate calculate(data, stretchFrom(40));
    QTest::ignoreMessage(QtDebugMsg, "Error! j>npoints!!! i=58 j=100 data.npoints=100");
    QTest::ignoreMessage(QtDebugMsg, "STOP! k=29");
    const Series out = sum(calculate, 59, true);
    QCOMPARE(calculate.bandsSummed(), 2);

    Series expected;
    for (int i = 0; i < 59; ++i) {
        double value = 0;
        for (int k = 31; k >= 29 && 40 + 31 - k + i < 100; --k)
            value += data.samples[0][k][0][40 + 31 - k + i];
        expected.push_back(value);
    }
    QCOMPARE(out, expected);

    PulsarParameters withBackSum = stretchFrom(0);
    withBackSum.noise = "backSum";
    ObservationData longer = makeRecording({300, 1, bands + 1, 1}, roughSample);
    longer.fbands = data.fbands;
    PulsarCalculate both(longer, withBackSum);
    QTest::ignoreMessage(QtDebugMsg, "STOP! k=28");
    Series without(298);
    QVERIFY(both.sumWithoutNoise(without.data(), 298, dispersion));
    QCOMPARE(both.bandsSummed(), 3); // of the sum; the back sum stays inside

    QCOMPARE(sum(calculate, 20, true).size(), std::size_t(20));
    QCOMPARE(calculate.bandsSummed(), bands);

    spreadBands(data, dispersion, 60000000);
    QTest::ignoreMessage(QtDebugMsg, "Error! j>npoints!!! i=0 j=60000040 data.npoints=100");
    QTest::ignoreMessage(QtDebugMsg, "STOP! k=30");
    PulsarCalculate farShifted(data, stretchFrom(40));
    QCOMPARE(sum(farShifted, 1, true), Series({double(data.samples[0][31][0][40])}));
}

void TestPulsarCalculate::leavesOutSamplesBeforeTheBeginning()
{
    ObservationData data =
        makeRecording({200, 1, bands + 1, 1}, [](int, int, int, int) { return 1.0F; });
    spreadBands(data, dispersion, 2);
    PulsarCalculate calculate(data, stretchFrom(10));
    const Series out = sum(calculate, 100, false);
    // Point 10 + i exists in the bands that are shifted by at most 10 + i.
    QCOMPARE(out[0], 6.0);
    QCOMPARE(out[1], 6.0);
    QCOMPARE(out[2], 7.0);
    QCOMPARE(out[52], 32.0);
    QCOMPARE(calculate.bandsSummed(), bands);
}

void TestPulsarCalculate::refusals_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, int count, const char *line, const Change &change) {
        QTest::newRow(name) << change << count << QString(line);
    };
    const char *const stretch =
        "ERROR! PulsarCalculate::sumChannels : firstPoint + count) >= data.npoints";
    const Change none = [](ObservationData &, PulsarParameters &) {};
    row("no count", 0, stretch, none);
    row("negative count", -1, stretch, none);
    row("ends with the recording", 90, stretch, none);
    row("ends beyond the largest int", 2147483647, stretch, none);
    row("no recording", 10, stretch, [](auto &data, auto &) { data = ObservationData(); });
    row("first point before the beginning", 10,
        "ERROR! PulsarCalculate::sumChannels: bad firstPoint=-1",
        [](auto &, auto &parameters) { parameters.firstPoint = -1; });
    row("module 0", 10, "ERROR! PulsarCalculate::sumChannels: bad module=0 data.modules=1",
        [](auto &, auto &parameters) { parameters.module = 0; });
    row("module above", 10, "ERROR! PulsarCalculate::sumChannels: bad module=2 data.modules=1",
        [](auto &, auto &parameters) { parameters.module = 2; });
    row("ray 0", 10, "ERROR! PulsarCalculate::sumChannels: bad ray=0 data.rays=1",
        [](auto &, auto &parameters) { parameters.ray = 0; });
    row("ray above", 10, "ERROR! PulsarCalculate::sumChannels: bad ray=2 data.rays=1",
        [](auto &, auto &parameters) { parameters.ray = 2; });
    row("31 bands", 10, "ERROR! PulsarCalculate::sumChannels: bad data.channels=32",
        [](auto &data, auto &) { data.channels = 32; });
    row("31 frequencies", 10, "ERROR! PulsarCalculate::sumChannels: bad fbands",
        [](auto &data, auto &) { data.fbands.pop_back(); });
    row("frequency 0", 10, "ERROR! PulsarCalculate::sumChannels: bad fbands",
        [](auto &data, auto &) { data.fbands[3] = 0; });
    row("no samples", 10, "ERROR! PulsarCalculate::sumChannels: no samples",
        [](auto &data, auto &) { data.samples = Samples(); });
    row("delay beyond an int", 10, "ERROR! PulsarCalculate::sumChannels: bad delay=inf k=30",
        [](auto &data, auto &) { data.tresolution = 0; });
}

void TestPulsarCalculate::refusals()
{
    QFETCH(Change, change);
    QFETCH(int, count);
    QFETCH(QString, line);
    ObservationData data = makeRecording({100, 1, bands + 1, 1}, roughSample);
    PulsarParameters parameters = stretchFrom(10);
    change(data, parameters);
    PulsarCalculate calculate(data, parameters);
    Series out(100, guard);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QVERIFY(!calculate.sumChannels(out.data(), count, dispersion, true));
    QCOMPARE(calculate.bandsSummed(), 0);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QTest::ignoreMessage(QtDebugMsg, "ERROR: sumChannels return false!");
    QVERIFY(!calculate.sumWithoutNoise(out.data(), count, dispersion));
    QCOMPARE(out, Series(100, guard));
}

void TestPulsarCalculate::refusesQuietlyBelowNoDispersion()
{
    PulsarCalculate calculate(makeRecording({100, 1, bands + 1, 1}, roughSample), stretchFrom(10));
    Series out(10, guard);
    QTest::ignoreMessage(QtDebugMsg, "Error: bad dataOut0!");
    QVERIFY(!calculate.sumChannels(nullptr, 10, -1, true));
    QTest::ignoreMessage(QtDebugMsg, "Error: bad dataOut0!");
    QVERIFY(!calculate.sumWithoutNoise(nullptr, 10, 1));

    const auto unexpected = [](QtMsgType, const QMessageLogContext &, const QString &text) {
        QFAIL(qPrintable("wrote: " + text));
    };
    const QtMessageHandler usual = qInstallMessageHandler(unexpected);
    const bool negative = calculate.sumChannels(out.data(), 10, -1e-9, true);
    const bool notANumber =
        calculate.sumChannels(out.data(), 10, std::numeric_limits<double>::quiet_NaN(), true);
    qInstallMessageHandler(usual);
    QVERIFY(!negative && !notANumber);
    QCOMPARE(out, Series(10, guard));
}

void TestPulsarCalculate::removesBaseline_data()
{
    QTest::addColumn<QString>("noise");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<bool>("ofBackSum");
    QTest::newRow("polynomial of degree 5")
        << "polinom5" << Operation([](auto &over) { return over.polynomial(5, false); }) << false;
    QTest::newRow("median line of 256")
        << "median" << Operation([](auto &over) { return over.medianLine(256); }) << false;
    QTest::newRow("line through means of the back sum")
        << "backSum" << Operation([](auto &over) { return over.linearLine(128); }) << true;
}

void TestPulsarCalculate::removesBaseline()
{
    QFETCH(QString, noise);
    QFETCH(Operation, operation);
    QFETCH(bool, ofBackSum);
    ObservationData data = makeRecording({3000, 1, bands + 1, 1}, roughSample);
    spreadBands(data, dispersion, 3);
    PulsarParameters parameters = stretchFrom(200);
    parameters.noise = noise;
    PulsarCalculate calculate(data, parameters);

    const int count = 2048;
    const Series forward = sum(calculate, count, true);
    const Series source = ofBackSum ? sum(calculate, count, false) : forward;
    Series expected(count);
    Approximation over(source.data(), expected.data(), count);
    QVERIFY(operation(over));
    for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] = forward[i] - expected[i];

    Series out(count + 2, guard);
    QVERIFY(calculate.sumWithoutNoise(out.data() + 1, count, dispersion));
    QCOMPARE(out.front(), guard);
    QCOMPARE(out.back(), guard);
    QCOMPARE(Series(out.begin() + 1, out.end() - 1), expected);
}

// Without a baseline the normalised sum has a sigma of 1 and the shape of the sum.
void TestPulsarCalculate::normalises()
{
    PulsarParameters parameters = stretchFrom(0);
    const ObservationData data = makeRecording({1000, 1, bands + 1, 1}, roughSample);
    Series plain(999);
    QVERIFY(PulsarCalculate(data, parameters).sumWithoutNoise(plain.data(), 999, 0));
    parameters.normalise = true;
    Series normalised(999);
    QVERIFY(PulsarCalculate(data, parameters).sumWithoutNoise(normalised.data(), 999, 0));
    const double sigma = plain[0] / normalised[0];
    QVERIFY(std::abs(Tools::sigma(normalised.data(), 999) - 1) < 1e-12);
    for (std::size_t i = 0; i < plain.size(); ++i)
        QVERIFY(std::abs(plain[i] / normalised[i] - sigma) < 1e-12 * sigma);
}

void TestPulsarCalculate::refusesBaseline_data()
{
    QTest::addColumn<QString>("noise");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("line");
    QTest::newRow("polynomial through five points") << "polinom5" << 5 << "Error: countIn <= k!";
    QTest::newRow("median line of one block") << "median" << 256 << "Error: count <= len!";
    QTest::newRow("back sum of one block") << "backSum" << 128 << "Error: count <= len!";
}

void TestPulsarCalculate::refusesBaseline()
{
    QFETCH(QString, noise);
    QFETCH(int, count);
    QFETCH(QString, line);
    PulsarParameters parameters = stretchFrom(10);
    parameters.noise = noise;
    PulsarCalculate calculate(makeRecording({400, 1, bands + 1, 1}, roughSample), parameters);
    Series out(300, guard);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QVERIFY(!calculate.sumWithoutNoise(out.data(), count, 0));
    QCOMPARE(out, Series(300, guard));
    QVERIFY(calculate.sumWithoutNoise(out.data(), count + 1, 0));
}

void TestPulsarCalculate::getFourierChecks()
{
    const Series in(2048, 1.0);
    Series out(1024, guard);
    const auto refused = [&](int countIn, int countOut, const char *line) {
        QTest::ignoreMessage(QtDebugMsg,
                             ("ERROR! PulsarCalculate::getFourier: " + std::string(line)).c_str());
        return !PulsarCalculate::getFourier(in.data(), out.data(), countIn, countOut);
    };
    QVERIFY(refused(64, 32, "Can't draw fourier - too small points!"));
    QVERIFY(refused(-128, -64, "Can't draw fourier - too small points!"));
    QVERIFY(refused(65, 32, "countIn must be degree of 2! countIn=65 correct: countIn0=64"));
    QVERIFY(refused(1000, 500, "countIn must be degree of 2! countIn=1000 correct: countIn0=512"));
    QVERIFY(refused(128, 128, "countOut must equal countIn/2!"));
    QTest::ignoreMessage(QtDebugMsg, "ERROR! PulsarCalculate::getFourier: bad dataIn!");
    QVERIFY(!PulsarCalculate::getFourier(nullptr, out.data(), 128, 64));
    QTest::ignoreMessage(QtDebugMsg, "ERROR! PulsarCalculate::getFourier: bad dataOut!");
    QVERIFY(!PulsarCalculate::getFourier(in.data(), nullptr, 128, 64));
    QCOMPARE(out, Series(1024, guard));

    QVERIFY(PulsarCalculate::getFourier(in.data(), out.data(), 128, 64));
    QCOMPARE(out[0], 2.0);
    QVERIFY(out[63] < 1e-15);
    QCOMPARE(out[64], guard);
}

ZRT_UNIT_TEST_MAIN(TestPulsarCalculate)
#include "tst_pulsarcalculate.moc"
