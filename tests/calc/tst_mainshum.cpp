#include "calc/mainshum.h"
#include "calc/samples.h"

using namespace TestSupport;

namespace {

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
    void errorsAreTrue();
    void nothingElseIsHum();
    void bandsAreRemoved();
};

void TestMainsHum::powersAreTheVariance()
{
    Series series = noise(50000, 1, 1);
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
    Series series = noise(50000, 2, 1);
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

void TestMainsHum::errorsAreTrue()
{
    // Weak, strong, strong and drifting.
    for (const auto &[amplitude, drift] : {std::pair(0.3, 0.0), {3.0, 0.0}, {3.0, 0.1}}) {
        Coverage coverage;
        for (unsigned seed = 0; seed < 150; ++seed) {
            Series series = noise(8192, seed, 1);
            const double frequency = 49.6 + 0.8 * seed / 150;
            addSine(series, 0.004, frequency, amplitude, drift, seed);
            const std::vector<MainsLine> lines = linesOf(series, 0.004);
            QCOMPARE(lines.size(), std::size_t(1));
            coverage.add((lines[0].frequency - frequency) / lines[0].error);
        }
        QVERIFY2(coverage.isTrue(), qPrintable(coverage.text()));
    }
}

void TestMainsHum::nothingElseIsHum()
{
    const struct {
        double tsamp, period, ducy; // of strong pulses; 0: none
    } rows[] = {{0.001, 0, 0},
                {0.001, 36 / 50.1, 0.02}, // a harmonic at 50.1 Hz
                {0.0005, 0.1, 0.02},      // the fifth at 50 Hz
                {0.01, 2.5, 0.3}};        // turning at the folded 100 Hz
    for (const auto &[tsamp, period, ducy] : rows) {
        Series train(60000);
        if (period > 0)
            train = pulses(60000, tsamp, period, ducy, 300);
        for (unsigned seed = 0; seed < 20; ++seed) {
            Series series = noise(60000, seed, 1);
            for (std::size_t i = 0; i < series.size(); ++i)
                series[i] += train[i];
            QVERIFY2(linesOf(series, tsamp).empty(), qPrintable(QString::number(period)));
        }
    }
}

void TestMainsHum::bandsAreRemoved()
{
    // In the middle, at half of the rate and near it, and low.
    for (const auto &[tsamp, frequency] :
         {std::pair(0.004, 50.2), {0.01, 50.0}, {0.01, 49.97}, {0.0498, 4.9}}) {
        const double shown = Tools::foldedFrequency(frequency, 1 / tsamp);
        const auto left = [shown, interval = tsamp](Series series) {
            const double before = variance(series);
            const double high = std::min(shown + 0.05, 0.5 / interval);
            Tools::removeBand(series, interval, shown - 0.05, high);
            return variance(series) / before;
        };
        Series hum(40000);
        addSine(hum, tsamp, frequency, 1, 0.04, 0.4);
        QVERIFY2(left(hum) < 1e-3, qPrintable(QString::number(left(hum))));
        Series other(40000);
        addSine(other, tsamp, shown - 3.4, 1);
        QVERIFY2(left(other) > 0.98, qPrintable(QString::number(left(other))));
        const double ofNoise = left(noise(40000, 3, 1));
        QVERIFY2(ofNoise > 0.8, qPrintable(QString::number(ofNoise)));
    }
}

ZRT_UNIT_TEST_MAIN(TestMainsHum)
#include "tst_mainshum.moc"
