#include "calc/banddelays.h"
#include "calc/dispersionpeak.h"
#include "calc/samples.h"

#include <complex>

using Tools::BandHarmonics;
using Tools::DispersionPeak;
using Amplitude = std::complex<double>;

Q_DECLARE_METATYPE(BandHarmonics)

namespace {

constexpr int bands = 32;
constexpr int linesBeside = 200;
constexpr double top = 52.4; // of the scan, pc/cm^3

// A harmonic of a period of 16.4 samples in bands of 120 MHz and up, with noise of 1 in the real
// and imaginary part of every band.
class Simulated {
public:
    explicit Simulated(unsigned seed) : random(seed) {}

    BandHarmonics harmonics(double dispersion, double snr)
    {
        BandHarmonics result;
        result.number = 1000;
        result.highest = 8191;
        result.frequency = 1000 / 16384.0;
        const double phase = 2 * M_PI * std::generate_canonical<double, 53>(random);
        for (int b = 0; b < bands; ++b) {
            const double delay =
                Tools::dispersionDelay(120 + b * 0.078125, 120 + 31 * 0.078125, 1, 0.0124928);
            result.delays.push_back(delay);
            const double turn = 2 * M_PI * result.frequency * delay * dispersion;
            result.amplitudes.push_back(snr / std::sqrt(bands) * std::polar(1.0, phase - turn) +
                                        noise());
        }
        for (int i = 0; i < linesBeside * bands; ++i)
            result.beside.push_back(noise());
        return result;
    }

    Amplitude noise()
    {
        const double re = normal(random);
        return {re, normal(random)};
    }

private:
    std::mt19937 random;
    std::normal_distribution<double> normal;
};

// Gives every band another gain, and nothing to some.
void changeGains(BandHarmonics &harmonics)
{
    for (std::size_t i = 0; i < harmonics.beside.size() + bands; ++i) {
        const std::size_t b = i % bands;
        const double gain = b % 7 == 3 || b < 4 ? 0 : 0.3 + 0.1 * double(b);
        (i < bands ? harmonics.amplitudes[i] : harmonics.beside[i - bands]) *= gain;
    }
}

// Adds noise that all bands receive at the same time, as interference does.
void addCommonNoise(BandHarmonics &harmonics, Simulated &source)
{
    for (std::size_t line = 0; line <= linesBeside; ++line) {
        const Amplitude common = 0.5 * source.noise();
        for (std::size_t b = 0; b < bands; ++b)
            (line == 0 ? harmonics.amplitudes[b] : harmonics.beside[(line - 1) * bands + b]) +=
                common;
    }
}

} // namespace

class TestDispersionPeak : public QObject {
    Q_OBJECT

private slots:
    void errorsAreTrue();
    void saysWhyNot_data();
    void saysWhyNot();
};

void TestDispersionPeak::errorsAreTrue()
{
    const struct {
        double dispersion, snr;
        int kind; // 0: white noise, 1: bands of different gain, some empty, 2: common noise
    } rows[] = {{0, 8, 0},    {1, 8, 0},   {26.2, 12, 0}, {top, 8, 0},
                {top, 30, 0}, {20, 12, 1}, {0.3, 20, 2}};
    for (const auto &[dispersion, snr, kind] : rows) {
        Simulated source(17);
        TestSupport::Coverage coverage;
        for (int k = 0; k < 500; ++k) {
            BandHarmonics harmonics = source.harmonics(dispersion, snr);
            if (kind == 1)
                changeGains(harmonics);
            if (kind == 2)
                addCommonNoise(harmonics, source);
            const DispersionPeak peak = Tools::findDispersionPeak(harmonics, 0, top);
            if (peak.unconstrained.isEmpty())
                coverage.add((peak.dispersion - dispersion) / peak.error);
        }
        // A harmonic of 8 noise levels is now and then rivalled by another maximum.
        QVERIFY2(coverage.all >= 0.94 * 500 && coverage.isTrue(), qPrintable(coverage.text()));
    }
}

void TestDispersionPeak::saysWhyNot_data()
{
    QTest::addColumn<BandHarmonics>("harmonics");
    QTest::addColumn<QString>("reason");
    Simulated source(3);
    const BandHarmonics good = source.harmonics(20, 30);
    QTest::newRow("good") << good << "";
    QTest::newRow("noise") << source.harmonics(0, 0) << "times the noise around it";

    BandHarmonics changed = good;
    changed.delays.assign(bands, 1.0);
    QTest::newRow("one frequency") << changed << "no delay against each other";
    changed = good;
    changed.amplitudes.assign(bands, 0.0);
    changed.amplitudes[7] = 1.0;
    QTest::newRow("one band") << changed << "fewer than two bands";
    changed = good;
    changed.beside[77] = NAN;
    QTest::newRow("no numbers") << changed << "no numbers";

    // A thousandth of the frequency: an error a thousand times as large, 400 pc/cm^3.
    changed = good;
    changed.frequency /= 1000;
    changed.number = 1;
    for (Amplitude &amplitude : changed.amplitudes)
        amplitude = 5.0;
    QTest::newRow("too low") << changed << "as strong with a number";
    changed.highest = 10;
    QTest::newRow("too low, and no higher one")
        << changed << "none of this spectrum is high enough";

    // Two pulsars of one period, 19 times the noise each.
    changed = source.harmonics(10, 19);
    const BandHarmonics other = source.harmonics(40, 19);
    for (std::size_t b = 0; b < bands; ++b)
        changed.amplitudes[b] += other.amplitudes[b];
    QTest::newRow("two maxima") << changed << "equally high within the noise";

    changed = good;
    for (std::size_t i = 0; i < changed.beside.size(); ++i)
        changed.beside[i] = changed.beside[i - i % bands];
    changed.amplitudes.assign(bands, 30.0);
    QTest::newRow("one series") << changed << "the same series";
}

void TestDispersionPeak::saysWhyNot()
{
    QFETCH(BandHarmonics, harmonics);
    QFETCH(QString, reason);
    const DispersionPeak peak = Tools::findDispersionPeak(harmonics, 0, top);
    QCOMPARE(peak.unconstrained.isEmpty(), reason.isEmpty());
    QVERIFY2(peak.unconstrained.contains(reason), qPrintable(peak.unconstrained));
}

ZRT_UNIT_TEST_MAIN(TestDispersionPeak)
#include "tst_dispersionpeak.moc"
