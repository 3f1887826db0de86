#include "calc/banddelays.h"
#include "calc/samples.h"

using namespace TestSupport;
using Tools::BandDelays;
using Tools::ShiftRounding;

namespace {

constexpr double dispersion = 50;

// Four bands; each is `lag` samples later than the next one.
BandDelays spread(double lag, ShiftRounding rounding = ShiftRounding::Nearest)
{
    ObservationData data = makeRecording({100}, roughSample);
    spreadBands(data, dispersion, lag);
    data.fbands.erase(data.fbands.begin(), data.fbands.end() - 4);
    return {data, 4, dispersion, rounding};
}

} // namespace

class TestBandDelays : public QObject {
    Q_OBJECT

private slots:
    void shiftsOfBothRoundings();
    void wrapsRoundTheEnd();
    void partsWithinTheRecording();
    void delaysWithoutShift();
};

// Whole shifts of bands 0 to 2 that are 3, 2 and 1 lags late; the last band is the reference.
void TestBandDelays::shiftsOfBothRoundings()
{
    const struct {
        double lag;
        ShiftRounding rounding;
        std::array<int, 4> shifts;
        double later, earlier;
    } rows[] = {{3, ShiftRounding::Nearest, {9, 6, 3, 0}, 9, 0},
                {0.9, ShiftRounding::Nearest, {3, 2, 1, 0}, 3, 0},
                {-0.9, ShiftRounding::Nearest, {-3, -2, -1, 0}, 0, 3},
                {0.9, ShiftRounding::WholeRecording, {3, 2, 1, 0}, 3, 0},
                // A negative rest is corrected toward plus.
                {-0.9, ShiftRounding::WholeRecording, {-1, 0, 1, 0}, 1, 1}};
    for (const auto &[lag, rounding, shifts, later, earlier] : rows) {
        const BandDelays delays = spread(lag, rounding);
        const BandDelays opposite = delays.reversed();
        for (int band = 0; band < 4; ++band) {
            QCOMPARE(delays.shift(band), shifts[std::size_t(band)]);
            QCOMPARE(opposite.shift(band), -shifts[std::size_t(band)]);
            QCOMPARE(opposite.delay(band), delays.delay(band));
        }
        QCOMPARE((QVector{delays.longestLater(), delays.longestEarlier()}),
                 (QVector{later, earlier}));
        QCOMPARE((QVector{opposite.longestLater(), opposite.longestEarlier()}),
                 (QVector{earlier, later}));
    }
}

void TestBandDelays::wrapsRoundTheEnd()
{
    const BandDelays delays = spread(3); // 9, 6, 3, 0
    for (const auto &[npoints, place] : {std::pair(100, 9), {9, 0}, {4, 1}, {1, 0}}) {
        QCOMPARE(delays.wrapped(0, npoints), place);
        QCOMPARE(delays.reversed().wrapped(0, npoints), (npoints - place) % npoints);
    }
}

// Band 0 is read 9 points later, or earlier, in a recording of 100.
void TestBandDelays::partsWithinTheRecording()
{
    const BandDelays later = spread(3);
    const struct {
        BandDelays delays;
        int firstPoint, count;
        qint64 first;
        int begin, end;
        bool isCut;
    } rows[] = {{later, 0, 91, 9, 0, 91, false},
                {later, 0, 92, 9, 0, 91, true},
                {later, 95, 4, 104, 0, 0, true},
                {later.reversed(), 9, 20, 0, 0, 20, false},
                {later.reversed(), 8, 20, -1, 1, 20, false},
                {later.reversed(), 0, 5, -9, 5, 5, false}};
    for (const auto &[delays, firstPoint, count, first, begin, end, isCut] : rows) {
        const BandDelays::Part part = delays.part(0, firstPoint, count, 100);
        QCOMPARE(part.first, first);
        QCOMPARE((QVector{part.begin, part.end, int(part.isCut)}),
                 (QVector{begin, end, int(isCut)}));
    }
}

void TestBandDelays::delaysWithoutShift()
{
    QCOMPARE(spread(3).highestWithoutShift(), -1);
    const BandDelays far = spread(1e9); // 3e9, 2e9 and 1e9 samples; 2^31 - 1 is 2.147e9
    QCOMPARE(far.highestWithoutShift(), 0);
    QVERIFY(!far.isShift(0) && far.isShift(1));
    QCOMPARE(spread(2.5e9).highestWithoutShift(), 2);
}

ZRT_UNIT_TEST_MAIN(TestBandDelays)
#include "tst_banddelays.moc"
