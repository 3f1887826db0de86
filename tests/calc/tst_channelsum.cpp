#include "calc/channelsum.h"
#include "calc/samplerecordings.h"
#include "support/testmain.h"

#include <bit>
#include <cmath>
#include <functional>
#include <limits>

using TestSupport::makeRecording;
using TestSupport::roughSample;

using Change = std::function<void(ObservationData &)>;
Q_DECLARE_METATYPE(Change)

namespace {

// The sums by one wrap loop per sample.
std::vector<double> straightSum(const ObservationData &data, double dispersion, int module, int ray)
{
    const int reference = data.channels - 2;
    const float *const unshifted = data.samples[module][reference][ray];
    std::vector<double> sums(unshifted, unshifted + data.npoints);
    for (int c = reference - 1; c >= 0; --c) {
        const double f = data.fbands[std::size_t(c)];
        const double fRef = data.fbands[std::size_t(reference)];
        const double x = ((1 / f) / f - (1 / fRef) / fRef) * 0x1.034ccccccccccp+12 * dispersion /
                         data.tresolution;
        int n = int(x);
        if (std::abs(x - n) > 0.5)
            ++n;
        for (int i = 0; i < data.npoints; ++i) {
            int j = i + n;
            while (j >= data.npoints)
                j -= data.npoints;
            while (j < 0)
                j += data.npoints;
            sums[std::size_t(i)] += double(data.samples[module][c][ray][j]);
        }
    }
    return sums;
}

} // namespace

class TestChannelSum : public QObject {
    Q_OBJECT

private slots:
    void delays();
    void shiftRounding_data();
    void shiftRounding();
    void equalsStraightSum_data();
    void equalsStraightSum();
    void dispersedPulseAddsUpInOneSample();
    void oneBandIsReturnedUnshifted();
    void refusals_data();
    void refusals();
    void acceptsLimits();
};

// 1/109^2 - 1/111.5^2 = 84.1679993e-6 - 80.4359626e-6 = 3.7320367e-6; times 4148.8 that is
// 0.015483473 s per unit of dispersion.
void TestChannelSum::delays()
{
    const double seconds = Tools::dispersionDelay(109, 111.5, 100, 1);
    QVERIFY2(std::abs(seconds - 1.5483473) < 1e-6, qPrintable(QString::number(seconds, 'g', 12)));
    QCOMPARE(Tools::dispersionDelay(109, 111.5, 100, 0.5), 2 * seconds);
    QCOMPARE(Tools::dispersionDelay(111.5, 109, 100, 1), -seconds);
    // Worked out in the order of the formula; any other grouping ends in other bits.
    const double bits = 0x1.f93523f748d68p+4;
    QVERIFY(Tools::dispersionDelay(110.787, 111.5, 91.54, 0.0124928) == bits);
    QCOMPARE(std::bit_cast<quint64>(Tools::dispersionConstant), quint64(0x40B034CCCCCCCCCC));
}

void TestChannelSum::shiftRounding_data()
{
    QTest::addColumn<double>("delay"); // samples
    QTest::addColumn<int>("wholeRecording");
    QTest::addColumn<int>("stretch");
    QTest::newRow("none") << 0.0 << 0 << 0;
    QTest::newRow("below half") << 0.49 << 0 << 0;
    QTest::newRow("half") << 0.5 << 0 << 1;
    QTest::newRow("half of an even number") << 2.5 << 2 << 3;
    QTest::newRow("above half") << 2.51 << 3 << 3;
    QTest::newRow("negative below half") << -2.3 << -2 << -2;
    QTest::newRow("negative half") << -2.5 << -2 << -3;
    QTest::newRow("negative above half moves towards plus") << -2.7 << -1 << -3;
    QTest::newRow("negative fraction turns positive") << -0.7 << 1 << -1;
    QTest::newRow("largest") << 2147483647.0 << 2147483647 << 2147483647;
    QTest::newRow("largest after rounding") << 2147483646.75 << 2147483647 << 2147483647;
    QTest::newRow("smallest") << -2147483647.0 << -2147483647 << -2147483647;
}

void TestChannelSum::shiftRounding()
{
    QFETCH(double, delay);
    QFETCH(int, wholeRecording);
    QFETCH(int, stretch);
    QVERIFY(Tools::isShift(delay));
    QCOMPARE(Tools::wholeRecordingShift(delay), wholeRecording);
    QCOMPARE(Tools::stretchShift(delay), stretch);
}

void TestChannelSum::equalsStraightSum_data()
{
    QTest::addColumn<int>("npoints");
    QTest::addColumn<int>("bands");
    QTest::addColumn<double>("dispersion");
    // 34.5 samples of delay between the outer of 32 bands per 100 units of dispersion.
    QTest::newRow("one point") << 1 << 32 << 100.0;
    QTest::newRow("no dispersion") << 100 << 32 << 0.0;
    QTest::newRow("fewer points than a step") << 63 << 9 << 30.0;
    QTest::newRow("wraps more than once") << 7 << 32 << 100.0;
    QTest::newRow("wraps a million times") << 5 << 32 << 1.7e7;
    QTest::newRow("negative, wraps more than once") << 7 << 32 << -100.0;
    QTest::newRow("one block exactly") << 4096 << 33 << 60.0;
    QTest::newRow("one point beyond a block") << 4097 << 33 << 60.0;
    QTest::newRow("several blocks, wraps inside") << 10000 << 32 << 20000.0;
    QTest::newRow("several blocks, negative") << 10000 << 32 << -20000.0;
    for (int bands = 1; bands <= 18; ++bands)
        QTest::addRow("%d bands", bands) << 200 << bands << 77.0;
}

void TestChannelSum::equalsStraightSum()
{
    QFETCH(int, npoints);
    QFETCH(int, bands);
    QFETCH(double, dispersion);
    const ObservationData data = makeRecording({npoints, 2, bands + 1, 3}, roughSample);
    QVERIFY(Tools::sumChannels(data, dispersion, 1, 2) == straightSum(data, dispersion, 1, 2));
}

// A pulse in sample 60 of the last band arrives one sample later in each band below, because
// the frequencies are chosen so; the extra last channel must not take part.
void TestChannelSum::dispersedPulseAddsUpInOneSample()
{
    constexpr int bands = 32;
    constexpr int pulse = 60;
    ObservationData data =
        makeRecording({100, 1, bands + 1, 1}, [](int point, int, int channel, int) {
            return channel == bands ? 1000.0F : float(point == pulse + bands - 1 - channel);
        });
    TestSupport::spreadBands(data, 50, 1);

    std::vector<double> expected(100, 0.0);
    expected[pulse] = bands;
    QCOMPARE(Tools::sumChannels(data, 50, 0, 0), expected);
}

void TestChannelSum::oneBandIsReturnedUnshifted()
{
    const ObservationData data = makeRecording(
        {4, 1, 2, 1}, [](int point, int, int channel, int) { return float(point + 10 * channel); });
    QCOMPARE(Tools::sumChannels(data, 1000, 0, 0), std::vector<double>({0, 1, 2, 3}));
}

void TestChannelSum::refusals_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<double>("dispersion");
    QTest::addColumn<int>("module");
    QTest::addColumn<int>("ray");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const Change &change, double dispersion, int module,
                        int ray, const char *line) {
        QTest::newRow(name) << change << dispersion << module << ray
                            << "Tools::sumChannels(): " + QString(line);
    };
    const Change none = [](ObservationData &) {};
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    row(
        "no points", [](auto &d) { d.npoints = 0; }, 1, 0, 0, "bad npoints=0");
    row(
        "short step", [](auto &d) { d.tresolution = 0.0000099; }, 1, 0, 0, "bad step=9.9e-06");
    row(
        "step not a number", [](auto &d) { d.tresolution = nan; }, 1, 0, 0, "bad step=nan");
    row("module below", none, 1, -1, 0, "bad module=-1 data->modules=2");
    row("module above", none, 1, 2, 0, "bad module=2 data->modules=2");
    row("ray below", none, 1, 0, -1, "bad ray=-1 data->rays=3");
    row("ray above", none, 1, 0, 3, "bad ray=3 data->rays=3");
    row(
        "no band", [](auto &d) { d.channels = 1; }, 1, 0, 0, "bad channels=1");
    row(
        "low frequency", [](auto &d) { d.fbands[0] = 0.00009; }, 1, 0, 0, "error freq");
    row(
        "low reference", [](auto &d) { d.fbands[3] = -111; }, 1, 0, 0, "error freq");
    row(
        "frequency not a number", [](auto &d) { d.fbands[1] = nan; }, 1, 0, 0, "error freq");
    row(
        "too few frequencies", [](auto &d) { d.fbands.pop_back(); }, 1, 0, 0, "error freq");
    row(
        "no samples", [](auto &d) { d.samples = Samples(); }, 1, 0, 0, "no samples");
    row(
        "delay beyond an int", [](auto &d) { d.fbands[1] = 0.0001; }, 1, 0, 0,
        "bad delay=3.32095e+13 channel=1");
    row("infinite dispersion", none, infinite, 0, 0, "bad delay=inf channel=2");
    row("dispersion not a number", none, nan, 0, 0, "bad delay=nan channel=2");
}

void TestChannelSum::refusals()
{
    QFETCH(Change, change);
    QFETCH(double, dispersion);
    QFETCH(int, module);
    QFETCH(int, ray);
    QFETCH(QString, line);
    ObservationData data = makeRecording({10, 2, 5, 3}, roughSample);
    change(data);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QVERIFY(Tools::sumChannels(data, dispersion, module, ray).empty());
}

void TestChannelSum::acceptsLimits()
{
    ObservationData data = makeRecording({10, 2, 3, 3}, roughSample);
    data.tresolution = 0.00001;
    QCOMPARE(int(Tools::sumChannels(data, 1, 1, 2).size()), 10);
    data.fbands = {0.0001, 0.0001};
    QCOMPARE(int(Tools::sumChannels(data, 1, 0, 0).size()), 10);
    data.fbands = {120, 121};

    const double largest = 2147483000 / Tools::dispersionDelay(120, 121, 1, data.tresolution);
    const int shift =
        Tools::wholeRecordingShift(Tools::dispersionDelay(120, 121, largest, data.tresolution));
    QVERIFY(shift > 2147482000);
    const float *const lower = data.samples[0][0][0];
    const float *const upper = data.samples[0][1][0];
    const std::vector<double> sums = Tools::sumChannels(data, largest, 0, 0);
    for (int i = 0; i < 10; ++i)
        QCOMPARE(sums[std::size_t(i)], double(upper[i]) + lower[(i + shift % 10) % 10]);
}

ZRT_UNIT_TEST_MAIN(TestChannelSum)
#include "tst_channelsum.moc"
