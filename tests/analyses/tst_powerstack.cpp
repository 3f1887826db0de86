#include "analyses/days/powerstack.h"
#include "calc/significance.h"
#include "calc/whitening.h"
#include "support/noisespectrum.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>

using Days::DayPowers;
using Days::StackLine;

namespace {

constexpr int bins = 4096;

// Whitened powers of days of noise, in which a sine may stand whose mean excess power is given.
std::vector<std::vector<float>> simulatedDays(int days, unsigned seed, double bin = 0,
                                              double excess = 0)
{
    std::mt19937_64 random(seed);
    std::normal_distribution<double> law;
    std::uniform_real_distribution<double> phases(0, 2 * M_PI);
    const Tools::Whitening whitening(257, Tools::Padding::Doubled);
    std::vector<std::vector<float>> all;
    for (int day = 0; day < days; ++day) {
        // A sine of amplitude a has the power a^2 N / 4 in units of white noise of deviation 1.
        const double amplitude = std::sqrt(4 * excess / bins);
        const double phase = phases(random);
        std::vector<double> series(2 * std::size_t(bins));
        for (int i = 0; i < bins; ++i)
            series[std::size_t(i)] =
                law(random) + amplitude * std::sin(M_PI * bin * i / bins + phase);
        std::vector<double> amplitudes(static_cast<std::size_t>(bins));
        Tools::amplitudeSpectrum(series.data(), amplitudes.data(), 2 * bins, bins);
        all.push_back(whitening.powers(amplitudes));
    }
    return all;
}

std::vector<DayPowers> withRatio(const std::vector<std::vector<float>> &days, double ratio)
{
    std::vector<DayPowers> result;
    for (const std::vector<float> &day : days)
        result.push_back({day.data(), ratio, 1});
    return result;
}

std::vector<StackLine> linesOf(const std::vector<std::vector<float>> &days, int harmonics)
{
    const std::vector<DayPowers> powers = withRatio(days, 1);
    const std::vector<double> level = Days::levelOfStack(
        Days::stackDays(powers, bins), Tools::medianPower(double(days.size())), 513);
    return Days::findLines(Days::stackDaysFinely(powers, bins), level,
                           {double(days.size()), 64, harmonics, 0});
}

} // namespace

class TestPowerStack : public QObject {
    Q_OBJECT

private slots:
    void equalsTheStraightSum();
    void promisedRateInNoise();
    void weakLineOfManyDays();
    void harmonicsAddUp();
};

void TestPowerStack::equalsTheStraightSum()
{
    const std::vector<std::vector<float>> days = simulatedDays(3, 1);
    // At rest, approaching, receding, and faster than anything.
    for (const double ratio : {1.0, 1 + 1.03e-4, 1 - 1.03e-4, 1.01, 0.6}) {
        std::vector<DayPowers> powers = withRatio(days, ratio);
        powers[1].ratio = 1;
        powers[2].weight = 0.25;
        const auto straight = [&powers](double position) {
            double sum = 0;
            for (const DayPowers &day : powers) {
                const int bin = std::min(bins - 1, int(std::floor(position * day.ratio + 0.5)));
                sum += day.weight * double(day.powers[bin]);
            }
            return sum;
        };
        const std::vector<double> stack = Days::stackDays(powers, bins);
        for (int bin = 0; bin < bins; ++bin)
            QCOMPARE(stack[std::size_t(bin)], straight(bin));
        const std::vector<double> fine = Days::stackDaysFinely(powers, bins);
        int others = 0;
        for (std::size_t i = 0; i < fine.size(); ++i)
            others += fine[i] != straight(double(i) / Days::finePerBin);
        QVERIFY2(others < 3, qPrintable(QString::number(others))); // half way between two bins
    }
}

// A best line above 0 sigma comes in half of all searches of noise, above 1 sigma in 16 %; in
// single days with harmonics, where fewer trials are independent, more seldom.
void TestPowerStack::promisedRateInNoise()
{
    struct Row {
        int days;
        int stacks;
        int harmonics;
    };
    for (const Row &row : {Row{1, 200, 1}, Row{1, 200, 16}, Row{10, 60, 16}}) {
        int above0 = 0;
        int above1 = 0;
        for (int i = 0; i < row.stacks; ++i) {
            const auto lines = linesOf(simulatedDays(row.days, unsigned(i)), row.harmonics);
            above0 += !lines.empty() && lines[0].sigma > 0;
            above1 += !lines.empty() && lines[0].sigma > 1;
        }
        const double share0 = double(above0) / row.stacks;
        const double share1 = double(above1) / row.stacks;
        const QByteArray found = QString("%1 %2").arg(share0).arg(share1).toUtf8();
        QVERIFY2(share0 > 0.26 && share0 < 0.68, found);
        QVERIFY2(share1 > 0.04 && share1 < 0.28, found);
    }
}

void TestPowerStack::weakLineOfManyDays()
{
    constexpr int days = 100;
    double sum = 0;
    constexpr int stacks = 12;
    for (unsigned i = 0; i < stacks; ++i) {
        const std::vector<std::vector<float>> powers = simulatedDays(days, i, 1000, 1.5);
        const std::vector<double> stack = Days::stackDays(withRatio(powers, 1), bins);
        const std::vector<double> level = Days::levelOfStack(stack, Tools::medianPower(days), 513);
        sum += Tools::sigmaOfPower(days, stack[1000] / level[1000]);
    }
    // One stack scatters by 1.6.
    QVERIFY2(std::abs(sum / stacks - 10.7) < 1.4, qPrintable(QString::number(sum / stacks)));
}

void TestPowerStack::harmonicsAddUp()
{
    std::vector<std::vector<float>> days(20, std::vector<float>(bins, 1.0F));
    for (std::vector<float> &day : days) {
        for (int harmonic = 1; harmonic <= 8; ++harmonic)
            day[std::size_t(std::lround(harmonic * 200.25))] = 3;
    }
    const std::vector<StackLine> lines = linesOf(days, 16);
    QVERIFY(!lines.empty());
    QCOMPARE(lines[0].bin, 200.25);
    QCOMPARE(lines[0].harmonics, 8);
}

ZRT_UNIT_TEST_MAIN(TestPowerStack)
#include "tst_powerstack.moc"
