#include "calc/approximation.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/samples.h"

using namespace TestSupport;

namespace {

constexpr int bands = PulsarCalculate::sumBands;
constexpr double dispersion = 50;

PulsarParameters stretchFrom(int firstPoint, const char *noise = "without")
{
    PulsarParameters parameters;
    parameters.firstPoint = firstPoint;
    parameters.noise = noise;
    return parameters;
}

Series sum(PulsarCalculate &calculate, int count, bool forward)
{
    return guarded(
        count, [&](double *out) { return calculate.sumChannels(out, count, dispersion, forward); });
}

// The sum of module 2, ray 3 by one test per sample. `lag` samples from band to band.
Series straightSum(const ObservationData &data, int firstPoint, int count, double lag)
{
    Series out(std::size_t(count), 0.0);
    bool ended = false;
    for (int k = bands - 1; k >= 0 && !ended; --k)
        for (int i = 0; i < count; ++i) {
            const qint64 j = firstPoint + std::llround((bands - 1 - k) * lag) + i;
            ended = j >= data.npoints;
            if (j >= 0 && !ended)
                out[std::size_t(i)] += double(data.samples[1][k][2][j]);
        }
    return out;
}

} // namespace

class TestPulsarCalculate : public QObject {
    Q_OBJECT

private slots:
    void equalsStraightSum();
    void removesBaseline();
    void refusals_data();
    void refusals() { checkRefusal(); }
};

void TestPulsarCalculate::equalsStraightSum()
{
    const struct {
        int firstPoint, count;
        double lag;
        bool forward;
        QString end; // where the recording ends
        int complete = bands;
    } rows[] = {{5, 150, 3, true, ""},
                {200, 150, 3, false, ""},
                {20, 150, 3, false, ""},  // from before the beginning
                {0, 9, 6e7, false, ""},   // whole stretch before the beginning
                {7, 150, -0.6, true, ""}, // parts of samples, frequencies that rise downwards
                // Band 29 needs the point behind the last.
                {300, 199, 1, true, "i=198 j=500 data.npoints=500", 2},
                {40, 1, 6e7, true, "i=0 j=60000040 data.npoints=500", 1}};
    ObservationData data = makeRecording({500, 2, bands + 8, 3}, roughSample);
    for (const auto &[firstPoint, count, lag, forward, end, complete] : rows) {
        spreadBands(data, dispersion, lag);
        PulsarParameters parameters = stretchFrom(firstPoint);
        parameters.module = 2;
        parameters.ray = 3;
        PulsarCalculate calculate(data, parameters);
        if (!end.isEmpty()) {
            QTest::ignoreMessage(QtDebugMsg, qPrintable("Error! j>npoints!!! " + end));
            const QString stop = QString("STOP! k=%1").arg(bands - 1 - complete);
            QTest::ignoreMessage(QtDebugMsg, qPrintable(stop));
        }
        QCOMPARE(sum(calculate, count, forward),
                 straightSum(data, firstPoint, count, forward ? lag : -lag));
        QCOMPARE(calculate.bandsSummed(), complete);
    }
}

void TestPulsarCalculate::removesBaseline()
{
    constexpr int count = 2047;
    using Line = bool (*)(Approximation &);
    const std::pair<const char *, Line> rows[] = {
        {"polinom5", [](Approximation &over) { return over.polynomial(5, false); }},
        {"median", [](Approximation &over) { return over.medianLine(256); }},
        {"backSum", [](Approximation &over) { return over.linearLine(128); }}};
    ObservationData data = makeRecording({3000, 1, bands + 1, 1}, roughSample);
    spreadBands(data, dispersion, 3);
    const auto found = [](PulsarCalculate &by) {
        return guarded(count,
                       [&](double *out) { return by.sumWithoutNoise(out, count, dispersion); });
    };
    for (const auto &[noise, line] : rows) {
        PulsarParameters parameters = stretchFrom(900, noise);
        PulsarCalculate calculate(data, parameters);
        // Each of three sums stops at band 13, shifted by 54 points where 53 are left; the back
        // sum, which has all bands, stays inside.
        for (int i = 0; i < 6; ++i)
            QTest::ignoreMessage(QtDebugMsg, QRegularExpression("j>npoints|STOP! k=13"));
        Series expected = sum(calculate, count, true);
        const Series source =
            parameters.noise == "backSum" ? sum(calculate, count, false) : expected;
        Series baseline(count);
        Approximation over(source.data(), baseline.data(), count);
        QVERIFY(line(over));
        QVERIFY(Tools::deduct(expected.data(), baseline.data(), expected.data(), count));
        QCOMPARE(found(calculate), expected);
        QCOMPARE(calculate.bandsSummed(), 18);

        parameters.normalise = true;
        PulsarCalculate normalising(data, parameters);
        QVERIFY(Tools::normalise(expected.data(), count));
        QCOMPARE(found(normalising), expected);
    }
}

void TestPulsarCalculate::refusals_data()
{
    QTest::addColumn<Operation>("operation");
    double *const out = untouched.data();
    const auto row = [out](const QString &text, const ObservationData &data, int count = 10,
                           const PulsarParameters &parameters = stretchFrom(10)) {
        refusalRow("ERROR! PulsarCalculate::sumChannels" + text, [=] {
            PulsarCalculate calculate(data, parameters);
            return calculate.sumChannels(out, count, dispersion, true) ||
                   calculate.bandsSummed() != 0;
        });
    };
    const ObservationData good = makeRecording({100}, roughSample);
    const auto changed = [good](auto member, auto value) {
        ObservationData data = good;
        data.*member = value;
        return data;
    };
    const auto selected = [](int module, int ray) {
        PulsarParameters parameters = stretchFrom(10);
        parameters.module = module;
        parameters.ray = ray;
        return parameters;
    };
    for (const int count : {0, 90, 2147483647})
        row(" : firstPoint + count) >= data.npoints", good, count);
    row(": bad firstPoint=-1", good, 10, stretchFrom(-1));
    row(": bad module=0 data.modules=1", good, 10, selected(0, 1));
    row(": bad module=2 data.modules=1", good, 10, selected(2, 1));
    row(": bad ray=0 data.rays=1", good, 10, selected(1, 0));
    row(": bad ray=2 data.rays=1", good, 10, selected(1, 2));
    row(": bad data.channels=32", changed(&ObservationData::channels, 32));
    row(": bad fbands", changed(&ObservationData::fbands, Series(31, 111.0)));
    row(": no samples", changed(&ObservationData::samples, Samples()));
    row(": bad delay=inf k=30", changed(&ObservationData::tresolution, 0));

    const auto withoutNoise = [](const char *noise, double *to, int count, double of) {
        PulsarCalculate calculate(makeRecording({400}, roughSample), stretchFrom(10, noise));
        return calculate.sumWithoutNoise(to, count, of);
    };
    refusalRow("ERROR: sumChannels return false!", withoutNoise, "median", out, 300, std::nan(""));
    refusalRow("Error: count <= len!", withoutNoise, "median", out, 256, 0);
    refusalRow("Error: bad dataOut0!", withoutNoise, "median", nullptr, 300, 0);

    const auto fourier = [](const QString &text, const double *in, double *to, int count,
                            int half) {
        refusalRow("ERROR! PulsarCalculate::getFourier: " + text, PulsarCalculate::getFourier, in,
                   to, count, half);
    };
    fourier("Can't draw fourier - too small points!", out, out, 64, 32);
    fourier("countIn must be degree of 2! countIn=65 correct: countIn0=64", out, out, 65, 32);
    fourier("countOut must equal countIn/2!", out, out, 128, 128);
    fourier("bad dataIn!", nullptr, out, 128, 64);
    fourier("bad dataOut!", out, nullptr, 128, 64);
}

ZRT_UNIT_TEST_MAIN(TestPulsarCalculate)
#include "tst_pulsarcalculate.moc"
