#include "calc/mainshum.h"
#include "calc/samples.h"
#include "ffa/syntheticsignal.h"

using TestSupport::Series;

namespace {

Series unitNoise(int count, unsigned seed)
{
    return TestSupport::noise(count, seed, 1);
}

// A sine whose frequency rises evenly by `drift`, with `frequency` in the middle.
void addSine(Series &series, double tsamp, double frequency, double amplitude, double drift = 0,
             double phase = 1)
{
    const double length = double(series.size()) * tsamp;
    for (std::size_t i = 0; i < series.size(); ++i) {
        const double t = double(i) * tsamp;
        const double turns = (frequency - drift / 2) * t + drift * t * t / (2 * length);
        series[i] += amplitude * std::cos(phase + 2 * M_PI * turns);
    }
}

std::vector<MainsLine> linesOf(const Series &series, double tsamp)
{
    return Tools::findMains(Tools::powerSpectrum(series, tsamp));
}

double variance(const Series &series)
{
    double squares = 0;
    for (const double value : series)
        squares += value * value;
    return squares / double(series.size());
}

} // namespace

class TestMainsHum : public QObject {
    Q_OBJECT

private slots:
    void powersAreTheVariance();
    void linesAreMeasured_data();
    void linesAreMeasured();
    void errorsAreTrue_data();
    void errorsAreTrue();
    void nothingElseIsHum_data();
    void nothingElseIsHum();
    void bandsAreRemoved_data();
    void bandsAreRemoved();
};

void TestMainsHum::powersAreTheVariance()
{
    Series series = unitNoise(50000, 1);
    addSine(series, 0.004, 33.3, 1);
    const PowerSpectrum spectrum = Tools::powerSpectrum(series, 0.004);
    double sum = 0;
    for (const double power : spectrum.powers)
        sum += power;
    QVERIFY2(std::abs(sum - 1.5) < 0.02, qPrintable(QString::number(sum)));
    QCOMPARE(spectrum.averaged, 3); // stretches of 16384
    QVERIFY(Tools::powerSpectrum(Series(63), 0.004).powers.empty());
}

void TestMainsHum::linesAreMeasured_data()
{
    QTest::addColumn<double>("tsamp");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<double>("drift");
    QTest::addColumn<QList<double>>("nominal");
    const auto row = [](const char *name, double tsamp, double frequency, double drift,
                        const QList<double> &nominal) {
        QTest::newRow(name) << tsamp << frequency << drift << nominal;
    };
    row("50.22", 0.004, 50.22, 0, {50, 100});
    row("49.8", 0.001, 49.8, 0, {50, 100});
    row("60.1", 0.004, 60.1, 0, {60, 120});
    row("drifting", 0.004, 50.03, 0.02, {50, 100});
    row("folded back", 0.0124928, 50.22, 0, {50, 100});
    row("folded back to the double of the other mains", 0.0124928, 60.1, 0, {60, 120});
    row("the double folded among pulsars", 0.01002, 50.02, 0, {50, 100});
    row("too far off", 0.004, 50.7, 0, {});
}

void TestMainsHum::linesAreMeasured()
{
    QFETCH(double, tsamp);
    QFETCH(double, frequency);
    QFETCH(double, drift);
    QFETCH(QList<double>, nominal);
    Series series = unitNoise(50000, 2);
    addSine(series, tsamp, frequency, 0.6, drift);
    addSine(series, tsamp, 2 * frequency, 0.3, 2 * drift);
    const std::vector<MainsLine> lines = linesOf(series, tsamp);
    QCOMPARE(int(lines.size()), nominal.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const MainsLine &line = lines[i];
        const double expected = frequency * double(i + 1);
        QCOMPARE(line.nominal, nominal[int(i)]);
        QVERIFY2(std::abs(line.frequency - expected) < 5 * line.error && line.error < 0.002,
                 qPrintable(QString("%1 +- %2").arg(line.frequency).arg(line.error)));
        const double reach = drift * double(i + 1) / 2;
        QVERIFY(line.from < expected - reach && line.to > expected + reach);
        QVERIFY(line.to - line.from < 2 * reach + 12 / (16384 * tsamp)); // steps of the spectrum
        QVERIFY(std::abs(line.variance / (i == 0 ? 0.18 : 0.045) - 1) < 0.1);
    }
}

void TestMainsHum::errorsAreTrue_data()
{
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<double>("drift");
    QTest::newRow("weak") << 0.3 << 0.0;
    QTest::newRow("strong") << 3.0 << 0.0;
    QTest::newRow("strong, drifting") << 3.0 << 0.1;
}

void TestMainsHum::errorsAreTrue()
{
    QFETCH(double, amplitude);
    QFETCH(double, drift);
    constexpr int seeds = 150;
    int within1 = 0;
    int within2 = 0;
    for (unsigned seed = 0; seed < seeds; ++seed) {
        Series series = unitNoise(8192, seed);
        const double frequency = 49.6 + 0.8 * seed / seeds;
        addSine(series, 0.004, frequency, amplitude, drift, seed);
        const std::vector<MainsLine> lines = linesOf(series, 0.004);
        QCOMPARE(lines.size(), std::size_t(1));
        const double off = std::abs(lines[0].frequency - frequency) / lines[0].error;
        within1 += off < 1 ? 1 : 0;
        within2 += off < 2 ? 1 : 0;
    }
    // 68 and 95 % of 150, and three times what chance scatters.
    QVERIFY2(within1 > 85 && within1 < 119, qPrintable(QString::number(within1)));
    QVERIFY2(within2 > 134, qPrintable(QString::number(within2)));
}

void TestMainsHum::nothingElseIsHum_data()
{
    QTest::addColumn<double>("tsamp");
    QTest::addColumn<double>("period"); // s, of strong pulses; 0: none
    QTest::newRow("noise") << 0.001 << 0.0;
    QTest::newRow("a harmonic at 50.1 Hz") << 0.001 << 36 / 50.1;
    QTest::newRow("the fifth at 50 Hz") << 0.0005 << 0.1;
    QTest::newRow("turning at the folded 100 Hz") << 0.01 << 2.5;
}

void TestMainsHum::nothingElseIsHum()
{
    QFETCH(double, tsamp);
    QFETCH(double, period);
    for (unsigned seed = 0; seed < 20; ++seed) {
        Series series = unitNoise(60000, seed);
        if (period > 0) {
            const double turns = 6.283 / (2 * M_PI); // the generator's two pi is short
            const auto pulses = Ffa::syntheticPulseSignal(60000, turns * period / tsamp, 0.3,
                                                          tsamp > 0.001 ? 0.3 : 0.02, 300, 0);
            for (std::size_t i = 0; i < series.size(); ++i)
                series[i] += double(pulses[i]);
        }
        QCOMPARE(linesOf(series, tsamp).size(), std::size_t(0));
    }
}

void TestMainsHum::bandsAreRemoved_data()
{
    QTest::addColumn<double>("tsamp");
    QTest::addColumn<double>("frequency");
    QTest::newRow("middle") << 0.004 << 50.2;
    QTest::newRow("at half of the rate") << 0.01 << 50.0;
    QTest::newRow("near half of the rate") << 0.01 << 49.97;
    QTest::newRow("low") << 0.0498 << 4.9;
}

void TestMainsHum::bandsAreRemoved()
{
    QFETCH(double, tsamp);
    QFETCH(double, frequency);
    const double shown = Tools::foldedFrequency(frequency, 1 / tsamp);
    const double high = std::min(shown + 0.05, 0.5 / tsamp);
    const auto left = [&](Series series) {
        const double before = variance(series);
        Tools::removeBand(series, tsamp, shown - 0.05, high);
        return variance(series) / before;
    };
    Series hum(40000);
    addSine(hum, tsamp, frequency, 1, 0.04, 0.4);
    QVERIFY2(left(hum) < 1e-3, qPrintable(QString::number(left(hum))));
    Series other(40000);
    addSine(other, tsamp, shown - 3.4, 1);
    QVERIFY2(left(other) > 0.98, qPrintable(QString::number(left(other))));
    QVERIFY2(left(unitNoise(40000, 3)) > 0.8,
             qPrintable(QString::number(left(unitNoise(40000, 3)))));
}

ZRT_UNIT_TEST_MAIN(TestMainsHum)
#include "tst_mainshum.moc"
