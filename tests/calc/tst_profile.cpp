#include "calc/profileshift.h"
#include "calc/profilesnr.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <random>

using namespace Tools;

namespace {

constexpr int bins = 64;

// Noise whose neighbours share as much as the law says.
std::vector<double> noiseProfile(std::mt19937 &random, const ProfileNoise &noise)
{
    std::normal_distribution<double> normal;
    std::vector<double> own(bins);
    for (double &value : own)
        value = normal(random);
    const double difference = std::sqrt(1 - 2 * noise.shared);
    std::vector<double> profile;
    for (std::size_t i = 0; i < bins; ++i)
        profile.push_back(noise.sigma / 2 *
                          ((1 + difference) * own[i] + (1 - difference) * own[(i + 1) % bins]));
    return profile;
}

// The template at another phase with noise, its own S/N as asked for.
struct Injection {
    ProfileNoise noise = {0.5, 0.2};
    double width = 0.06;
    double snr = 0;
    double phase = 0;

    std::vector<double> profile(std::mt19937 &random) const
    {
        const Harmonics pulse = gaussianTemplate(width, bins, noise.shared);
        double norm = 0;
        for (int k = 1; k < bins / 2; ++k)
            norm += 2 * std::norm(pulse[std::size_t(k)]) / noise.harmonicVariance(k, bins);
        Harmonics sum = harmonicsOf(noiseProfile(random, noise));
        addTurned(pulse, phase, snr / std::sqrt(norm), sum);
        return profileOf(sum);
    }
};

struct Coverage {
    int one = 0;
    int two = 0;
    int all = 0;
    double squares = 0; // of the errors made

    void add(double value, double truth, double error)
    {
        const double off = std::abs(value - truth);
        one += off <= error;
        two += off <= 2 * error;
        ++all;
        squares += off * off;
    }
    // Within three standard deviations of the shares of a Gaussian.
    bool isTrue() const
    {
        return std::abs(one - 0.683 * all) < 3 * std::sqrt(0.217 * all) &&
               std::abs(two - 0.954 * all) < 3 * std::sqrt(0.044 * all) + 1;
    }
    QByteArray text() const
    {
        return QString("%1 and %2 of %3").arg(one).arg(two).arg(all).toUtf8();
    }
};

} // namespace

class TestProfile : public QObject {
    Q_OBJECT

private slots:
    void turnsByBins();
    void turningKeepsTheNoise();
    void noiseHasTheLawsOfItsNames_data();
    void noiseHasTheLawsOfItsNames();
    void measuresOfABox();
    void chiSquaredOfOwnBins();
    void pulseIsFoundWithinItsErrors_data();
    void pulseIsFoundWithinItsErrors();
    void templateOfNoiseIsDamped();
    void likelyValueOfAParabola();
    void narrowPulsesHaveALimit();
};

void TestProfile::turnsByBins()
{
    std::mt19937 random(1);
    const std::vector<double> profile = noiseProfile(random, {1, 0});
    const std::vector<double> turned = turnedProfile(profile, 5.0 / bins);
    for (std::size_t i = 0; i < bins; ++i)
        QVERIFY(std::abs(turned[(i + 5) % bins] - profile[i]) < 1e-12);
    // Half a bin there and back loses nothing but the highest harmonic.
    const std::vector<double> back = turnedProfile(turnedProfile(profile, 0.5 / bins), -0.5 / bins);
    Harmonics expected = harmonicsOf(profile);
    expected.back() = 0;
    const std::vector<double> smooth = profileOf(expected);
    for (std::size_t i = 0; i < bins; ++i)
        QVERIFY(std::abs(back[i] - smooth[i]) < 1e-12);
}

void TestProfile::turningKeepsTheNoise()
{
    // A bin's variance is the mean of those of all harmonics, by Parseval.
    const ProfileNoise noise = {2, 0.3};
    double sum = noise.harmonicVariance(0, bins) + noise.harmonicVariance(bins / 2, bins);
    for (int k = 1; k < bins / 2; ++k)
        sum += 2 * noise.harmonicVariance(k, bins);
    QVERIFY(std::abs(sum / bins / bins - noise.binVariance()) < 1e-12);
}

void TestProfile::noiseHasTheLawsOfItsNames_data()
{
    QTest::addColumn<double>("shared");
    QTest::newRow("apart") << 0.0;
    QTest::newRow("of two samples") << 1 / 6.0;
    QTest::newRow("of one sample") << 1 / 3.0;
}

void TestProfile::noiseHasTheLawsOfItsNames()
{
    QFETCH(double, shared);
    constexpr int count = 2500;
    constexpr double tenth = 1.2816;
    const ProfileNoise noise = {3, shared};
    std::mt19937 random(2);
    int peaks = 0;
    int boxcars = 0;
    int energies = 0;
    double sum = 0;
    for (int i = 0; i < count; ++i) {
        const ProfileSnr snr = profileSnr(noiseProfile(random, noise), noise, 10);
        peaks += snr.peakSigma > tenth;
        boxcars += snr.boxcarSigma > tenth;
        energies += snr.z2Sigma > tenth;
        sum += snr.z2;
    }
    for (const int above : {peaks, boxcars, energies})
        QVERIFY2(std::abs(above - count / 10) < 3 * std::sqrt(0.09 * count),
                 QByteArray::number(above));
    // Chi squared of 20 degrees: one has the standard deviation root of 40.
    QVERIFY(std::abs(sum / count - 20) < 3 * std::sqrt(40.0 / count));
}

void TestProfile::measuresOfABox()
{
    // Four bins of 10 over a level of 2, noise 1 without shared samples.
    std::vector<double> profile(bins, 2.0);
    std::fill_n(profile.begin() + 20, 4, 10.0);
    const ProfileSnr snr = profileSnr(profile, {1, 0}, 10);
    QCOMPARE(snr.boxcar.width, 4);
    QCOMPARE(snr.boxcar.phase, 22.0 / bins);
    QVERIFY(std::abs(snr.boxcar.snr - 8 * std::sqrt(4 * (1 - 4.0 / bins))) < 1e-9);
    QVERIFY(std::abs(snr.area - 32) < 1e-9);
    QVERIFY(std::abs(snr.equivalentWidth - 4.0 / bins) < 1e-12);
    QVERIFY(std::abs(snr.equivalentSnr - 16) < 1e-9);
}

void TestProfile::chiSquaredOfOwnBins()
{
    // Means 2 and 6 of two bins of two samples: between them 16 (1 degree), within 2 + 2 (2).
    const double samples[] = {1, 3, 5, 7};
    const double phases[] = {0.1, 5.2, -0.4, 0.9};
    const ChiSquared two = chiSquaredOf(samples, phases, 4, 2);
    QCOMPARE(two.degrees, 1);
    QCOMPARE(two.reduced, 8.0);
    QCOMPARE(chiSquaredOf(samples, phases, 4, 1).degrees, 0);

    std::mt19937 random(4);
    std::normal_distribution<double> normal;
    std::vector<double> noise(2000);
    std::vector<double> turns(2000);
    int high = 0;
    for (int i = 0; i < 500; ++i) {
        for (std::size_t n = 0; n < noise.size(); ++n) {
            noise[n] = normal(random);
            turns[n] = double(n) * 0.0137;
        }
        high += chiSquaredOf(noise.data(), turns.data(), 2000, 32).sigma > 1.2816;
    }
    QVERIFY2(std::abs(high - 50) < 21, QByteArray::number(high));
}

void TestProfile::pulseIsFoundWithinItsErrors_data()
{
    QTest::addColumn<double>("snr");
    QTest::addColumn<double>("width");
    QTest::newRow("S/N 8") << 8.0 << 0.08;
    QTest::newRow("S/N 12, narrow") << 12.0 << 0.03;
    QTest::newRow("S/N 30") << 30.0 << 0.06;
    QTest::newRow("S/N 30, broad") << 30.0 << 0.2;
}

void TestProfile::pulseIsFoundWithinItsErrors()
{
    QFETCH(double, snr);
    QFETCH(double, width);
    std::mt19937 random(5);
    Coverage shift;
    Coverage phase;
    Coverage breadth;
    double bound = 0;
    for (int i = 0; i < 500; ++i) {
        const Injection injection = {{0.5, 0.2}, width, snr, 0.013 * (i % 70) - 0.4};
        const Harmonics seen = harmonicsOf(injection.profile(random));
        const TemplateMatch match = matchTemplate(
            seen, injection.noise, gaussianTemplate(width, bins, injection.noise.shared));
        const double off = match.phase - injection.phase;
        shift.add(off - std::round(off), 0, match.phaseError);
        bound = match.phaseError * match.snr / snr;
        const GaussianPulse pulse = fitGaussian(seen, injection.noise);
        const double away = pulse.phase - injection.phase;
        phase.add(away - std::round(away), 0, pulse.phaseError);
        breadth.add(pulse.width, width, pulse.widthError);
    }
    QVERIFY2(shift.isTrue(), shift.text());
    QVERIFY2(phase.isTrue(), phase.text());
    QVERIFY2(breadth.isTrue(), breadth.text());
    const double ratio = std::sqrt(shift.squares / shift.all) / bound;
    QVERIFY2(ratio > 0.85 && ratio < 1.15, QByteArray::number(ratio));
}

// A template made of noise alone matches nothing better than noise does.
void TestProfile::templateOfNoiseIsDamped()
{
    std::mt19937 random(6);
    Coverage shift;
    for (int i = 0; i < 500; ++i) {
        Injection injection = {{0.5, 0.2}, 0.06, 15, 0};
        const Harmonics seen = harmonicsOf(injection.profile(random));
        injection.snr = 25;
        const Harmonics made = harmonicsOf(injection.profile(random));
        const TemplateMatch match = matchTemplate(seen, injection.noise, made, 0.5);
        shift.add(match.phase, 0, match.phaseError);
    }
    QVERIFY2(shift.isTrue(), shift.text());
}

void TestProfile::likelyValueOfAParabola()
{
    // S/N^2 = 1000^2 - ((x - 4.3) / 2.5)^2: the standard deviation is 2.5.
    std::vector<double> values;
    std::vector<double> snr;
    for (int x = -10; x <= 20; ++x) {
        values.push_back(x);
        snr.push_back(std::sqrt(1e6 - std::pow((x - 4.3) / 2.5, 2)));
    }
    const LikelyValue found = likelyValue(values, snr);
    QVERIFY(found.isInside);
    QVERIFY(std::abs(found.best - 4.3) < 1e-6);
    QVERIFY(std::abs(found.error - 2.5) < 1e-4);
    // Cut off before one side has fallen.
    values.resize(16);
    snr.resize(16);
    QVERIFY(!likelyValue(values, snr).isInside);
}

void TestProfile::narrowPulsesHaveALimit()
{
    std::mt19937 random(7);
    int below = 0;
    for (int i = 0; i < 100; ++i) {
        const Injection injection = {{0.5, 0.2}, 0.1 / bins, 15, 0};
        const GaussianPulse pulse =
            fitGaussian(harmonicsOf(injection.profile(random)), injection.noise);
        below += !pulse.isResolved && pulse.widthLimit > injection.width &&
                 pulse.widthLimit < 2.0 / bins;
    }
    QVERIFY2(below > 90, QByteArray::number(below));
}

ZRT_UNIT_TEST_MAIN(TestProfile)

#include "tst_profile.moc"
