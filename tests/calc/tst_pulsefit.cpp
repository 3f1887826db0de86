#include "calc/pulsefit.h"
#include "calc/runninglevel.h"
#include "calc/samples.h"

#include <cmath>
#include <random>

// Pulses are made here as they are meant: a Gaussian, averaged over each step in a hundred parts.

namespace {

constexpr int points = 600;
constexpr double spacing = 1.0 / 8; // samples of delay from a band to the next at dispersion 1

struct Bands {
    std::vector<std::vector<float>> rows;

    Tools::PulseBands view() const
    {
        Tools::PulseBands bands;
        bands.count = points;
        for (std::size_t band = 0; band < rows.size(); ++band) {
            bands.samples.push_back(rows[band].data());
            bands.delays.push_back(spacing * double(rows.size() - 1 - band));
        }
        return bands;
    }
};

Bands bandsWith(const Tools::PulseShape &pulse, int bands, double noise, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, noise > 0 ? noise : 1);
    Bands made;
    for (int band = 0; band < bands; ++band) {
        std::vector<float> row;
        const double centre = pulse.point + spacing * (bands - 1 - band) * pulse.dispersion;
        for (int i = 0; i < points; ++i) {
            double mean = 0;
            for (int part = 0; part < 100; ++part) {
                const double x = (i - 0.495 + 0.01 * part - centre) / pulse.fwhm;
                mean += x * x < 30 ? std::exp2(-4 * x * x) / 100 : 0;
            }
            row.push_back(float(pulse.height * mean + (noise > 0 ? normal(random) : 0)));
        }
        made.rows.push_back(row);
    }
    return made;
}

} // namespace

class TestPulseFit : public QObject {
    Q_OBJECT

private slots:
    void withoutNoise_data();
    void withoutNoise();
    void errorsAreTrue();
    void wrongDelay();
    void runningLevel();
};

void TestPulseFit::withoutNoise_data()
{
    QTest::addColumn<double>("fwhm");
    QTest::newRow("one sample") << 1.0;
    QTest::newRow("some samples") << 7.3;
    QTest::newRow("many samples") << 60.0;
}

void TestPulseFit::withoutNoise()
{
    QFETCH(double, fwhm);
    const Tools::PulseShape truth = {30, 250.3, 12.5, fwhm};
    const Bands bands = bandsWith(truth, 8, 0, 1);
    const Tools::PulseShape begin = {25, 250, 12.5 + 0.2 * fwhm, 1.3 * fwhm};
    const Tools::PulseFit fit = Tools::fitPulse(bands.view(), begin, true);
    QVERIFY(fit.isFitted);
    // What the search tells beforehand pulls by a small part of an error.
    QVERIFY(std::abs(fit.shape.point - truth.point) < 0.1 * fit.error.point);
    QVERIFY(std::abs(fit.shape.dispersion - truth.dispersion) < 0.1 * fit.error.dispersion);
    QVERIFY(std::abs(fit.shape.fwhm - truth.fwhm) < 0.1 * fit.error.fwhm);
    QVERIFY(std::abs(fit.shape.height / truth.height - 1) < 0.01);
    const Tools::PulseFit fixed = Tools::fitPulse(bands.view(), truth, false);
    QCOMPARE(fixed.shape.dispersion, truth.dispersion);
    QCOMPARE(fixed.error.dispersion, 0.0);
}

void TestPulseFit::errorsAreTrue()
{
    TestSupport::Coverage dispersion, point, fwhm;
    for (unsigned seed = 1; seed <= 250; ++seed) {
        const Tools::PulseShape truth = {2.2, 250 + 0.01 * seed, 20, 4}; // S/N 12
        const Bands bands = bandsWith(truth, 16, 1, seed);
        const Tools::PulseFit fit = Tools::fitPulse(bands.view(), {2, 251, 19, 5}, true);
        dispersion.add((fit.shape.dispersion - truth.dispersion) / fit.error.dispersion);
        point.add((fit.shape.point - truth.point) / fit.error.point);
        fwhm.add((fit.shape.fwhm - truth.fwhm) / fit.error.fwhm);
    }
    for (const TestSupport::Coverage *one : {&dispersion, &point, &fwhm})
        QVERIFY2(one->isTrue(), qPrintable(one->text()));
}

// The pulses of evenly delayed bands, added up by hand at a wrong dispersion.
void TestPulseFit::wrongDelay()
{
    QCOMPARE(Tools::snrAtWrongDelay(0), 1.0);
    for (const double widths : {0.5, 2.0, 6.0}) {
        double sum = 0;
        constexpr int bands = 2001;
        for (int band = 0; band < bands; ++band) {
            const double x = widths * (band - 1000) / 2000;
            sum += std::exp2(-4 * x * x) / bands;
        }
        QVERIFY(std::abs(Tools::snrAtWrongDelay(widths) / sum - 1) < 0.003);
    }
}

void TestPulseFit::runningLevel()
{
    std::vector<float> series(20000);
    const TestSupport::Series noise = TestSupport::noise(20000, 4, 1);
    const auto levelOf = [](std::size_t i) {
        return 3 * std::sin(double(i) / 3000) + (i < 9984 ? 0 : 5);
    };
    for (std::size_t i = 0; i < series.size(); ++i)
        series[i] = float(noise[i] + levelOf(i));
    series[4000] += 1e5F;
    Tools::subtractRunningLevel(series.data(), 20000, 1024);
    double worst = 0;
    double besideStep = 0;
    // At either end the last whole window tells the level.
    for (std::size_t begin = 512; begin + 576 < series.size(); begin += 64) {
        double sum = 0;
        for (std::size_t i = begin; i < begin + 64; ++i)
            sum += double(series[i]) - noise[i] - (i == 4000 ? 1e5 : 0);
        // Beside the step the median is the highest or lowest mean of its own side.
        const int fromStep = std::abs(int(begin) + 32 - 9984);
        const double off = std::abs(sum / 64);
        if (fromStep > 512)
            worst = std::max(worst, off);
        else if (fromStep > 64)
            besideStep = std::max(besideStep, off);
    }
    // The median of 32 means of 32 samples scatters by 0.04; the sine bends by 0.02 in a window.
    QVERIFY2(worst < 0.25, qPrintable(QString::number(worst)));
    QVERIFY2(besideStep < 1, qPrintable(QString::number(besideStep)));
    for (int count : {0, 1, 5, 40}) {
        std::vector<float> few(std::size_t(count) + 1, 7.0F);
        Tools::subtractRunningLevel(few.data(), count, 1024);
        QCOMPARE(few.back(), 7.0F);
        QVERIFY(std::all_of(few.begin(), few.end() - 1, [](float value) { return value == 0; }));
    }
}

ZRT_UNIT_TEST_MAIN(TestPulseFit)
#include "tst_pulsefit.moc"
