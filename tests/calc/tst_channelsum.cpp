#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/samples.h"
#include "straightcalc.h"

#include <bit>

using namespace TestSupport;

class TestChannelSum : public QObject {
    Q_OBJECT

private slots:
    void delays();
    void shiftRounding();
    void equalsStraightSum();
    void dispersedPulseAddsUpInOneSample();
    void acceptsLimits();
    void refusals_data();
    void refusals() { checkRefusal(); }
};

// 1/109^2 - 1/111.5^2 = 84.1679993e-6 - 80.4359626e-6 = 3.7320367e-6; times 4148.8 that is
// 0.015483473 s per unit of dispersion.
void TestChannelSum::delays()
{
    const double seconds = Tools::dispersionDelay(109, 111.5, 100, 1);
    QVERIFY2(std::abs(seconds - 1.5483473) < 1e-6, qPrintable(QString::number(seconds, 'g', 12)));
    QCOMPARE(Tools::dispersionDelay(111.5, 109, 100, 0.5), -2 * seconds);
    // Worked out in the order of the formula; any other grouping ends in other bits.
    const double bits = 0x1.f93523f748d68p+4;
    QVERIFY(Tools::dispersionDelay(110.787, 111.5, 91.54, 0.0124928) == bits);
    QCOMPARE(std::bit_cast<quint64>(Tools::dispersionConstant), quint64(0x40B034CCCCCCCCCC));
}

void TestChannelSum::shiftRounding()
{
    const struct {
        double delay; // samples
        int wholeRecording, stretch;
    } rows[] = {{0.49, 0, 0},
                {0.5, 0, 1},
                {2.5, 2, 3},
                {2.51, 3, 3},
                {-2.3, -2, -2},
                {-2.5, -2, -3},
                {-2.7, -1, -3}, // moves towards plus
                {-0.7, 1, -1},  // turns positive
                {2147483646.75, 2147483647, 2147483647},
                {-2147483647.0, -2147483647, -2147483647}};
    for (const auto &[delay, wholeRecording, stretch] : rows) {
        QCOMPARE(int(Tools::roundedDelay(delay, Tools::ShiftRounding::WholeRecording)),
                 wholeRecording);
        QCOMPARE(int(Tools::roundedDelay(delay, Tools::ShiftRounding::Nearest)), stretch);
    }
}

void TestChannelSum::equalsStraightSum()
{
    const auto check = [](int npoints, int bands, double dispersion) {
        const ObservationData data = makeRecording({npoints, 2, bands + 1, 3}, roughSample);
        QVERIFY2(Tools::sumChannels(data, dispersion, 1, 2) == straightSum(data, dispersion, 1, 2),
                 qPrintable(QString("%1 points, %2 bands").arg(npoints).arg(bands)));
    };
    // 34.5 samples of delay between the outer of 32 bands per 100 units of dispersion.
    check(1, 32, 100);
    check(63, 9, 30);      // fewer points than a step
    check(5, 32, 1.7e7);   // wraps a million times
    check(7, 32, -100);    // wraps more than once
    check(4096, 33, 60);   // one block exactly
    check(4097, 33, 60);   // one point beyond a block
    check(10000, 32, 2e4); // several blocks, wraps inside
    check(10000, 32, -2e4);
    for (int bands = 1; bands <= 18; ++bands)
        check(200, bands, 77);
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
    spreadBands(data, 50, 1);
    Series expected(100, 0.0);
    expected[pulse] = bands;
    QCOMPARE(Tools::sumChannels(data, 50, 0, 0), expected);
}

void TestChannelSum::acceptsLimits()
{
    ObservationData data = makeRecording({10, 2, 3, 3}, roughSample);
    data.tresolution = 0.00001;
    QCOMPARE(Tools::sumChannels(data, 1, 1, 2).size(), std::size_t(10));
    data.fbands = {0.0001, 0.0001};
    QCOMPARE(Tools::sumChannels(data, 1, 0, 0).size(), std::size_t(10));
}

void TestChannelSum::refusals_data()
{
    QTest::addColumn<Operation>("operation");
    const auto row = [](const QString &text, auto member, auto value, double dispersion = 1,
                        int module = 0, int ray = 0) {
        ObservationData data = makeRecording({10, 2, 5, 3}, roughSample);
        data.*member = value;
        refusalRow("Tools::sumChannels(): " + text,
                   [=] { return !Tools::sumChannels(data, dispersion, module, ray).empty(); });
    };
    using Bands = std::vector<double>;
    row("bad npoints=0", &ObservationData::npoints, 0);
    row("bad step=9.9e-06", &ObservationData::tresolution, 9.9e-6);
    row("bad step=nan", &ObservationData::tresolution, std::nan(""));
    row("bad module=-1 data->modules=2", &ObservationData::npoints, 10, 1, -1);
    row("bad module=2 data->modules=2", &ObservationData::npoints, 10, 1, 2);
    row("bad ray=-1 data->rays=3", &ObservationData::npoints, 10, 1, 0, -1);
    row("bad ray=3 data->rays=3", &ObservationData::npoints, 10, 1, 0, 3);
    row("bad channels=1", &ObservationData::channels, 1);
    row("error freq", &ObservationData::fbands, Bands{120, 121, 122, 0.00009});
    row("error freq", &ObservationData::fbands, Bands{120, 121, 122});
    row("no samples", &ObservationData::samples, Samples());
    row("bad delay=inf channel=2", &ObservationData::npoints, 10, HUGE_VAL);
    row("bad delay=nan channel=2", &ObservationData::npoints, 10, std::nan(""));
}

ZRT_UNIT_TEST_MAIN(TestChannelSum)
#include "tst_channelsum.moc"
