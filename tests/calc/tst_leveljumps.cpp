#include "calc/leveljumps.h"
#include "calc/robuststatistics.h"
#include "simulator/recording.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

using Simulator::Simulation;

namespace {

// Noise of one channel with this besides.
std::vector<float> channelWith(const std::function<void(Simulation &)> &change)
{
    Simulation simulation;
    simulation.npoints = 40000;
    simulation.rays = 1;
    simulation.driftTime = 60;
    change(simulation);
    const ObservationData data = Simulator::makeRecording(simulation);
    const float *const samples = data.samples[0][4][0];
    return {samples, samples + data.npoints};
}

} // namespace

class TestLevelJumps : public QObject {
    Q_OBJECT

private slots:
    void findsJumps();
    void findsNothingElse();
    void noNumbersAndShortSeries();
    void sigmaOfNoise();
    void sigmaOfCoarseSamples();
};

void TestLevelJumps::findsJumps()
{
    const std::vector<Simulator::GainStep> rows[] = {
        {{1, 1, 20000, 1.1}},
        {{1, 1, 12345, 0.9}},
        {{1, 1, 9000, 1.1}, {1, 1, 10000, 1.1}, {1, 1, 11000, 0.8}},
        {{1, 1, 512, 1.15}, {1, 1, 39488, 1.15}}}; // as near to the ends as levels reach
    for (const std::vector<Simulator::GainStep> &injected : rows) {
        std::vector<float> series = channelWith([&](auto &s) { s.gainSteps = injected; });
        const int count = int(series.size());
        const std::vector<Tools::LevelJump> jumps = Tools::findLevelJumps(series.data(), count);
        QCOMPARE(jumps.size(), injected.size());
        double level = 100;
        for (std::size_t i = 0; i < jumps.size(); ++i) {
            // Jumps of 10 sigma and more: their place is certain to a sample or two.
            QVERIFY(std::abs(jumps[i].point - injected[i].point) <= 1);
            // Medians of 512 samples err by 0.055 sigma each.
            QVERIFY(std::abs(jumps[i].height - level * (injected[i].factor - 1)) < 0.4);
            level *= injected[i].factor;
        }
        Tools::removeLevelJumps(series.data(), count, jumps);
        QVERIFY(Tools::findLevelJumps(series.data(), count).empty());
        QVERIFY(std::abs(series.back() - 100) < 8);
    }
}

void TestLevelJumps::findsNothingElse()
{
    using Change = void (*)(Simulation &);
    const Change changes[] = {
        [](auto &s) {
            s.gainSteps.push_back({1, 1, 20000, 1.07});
        },
        [](auto &s) { s.drift = 40; },
        [](auto &s) {
            s.impulses.push_back({1, 1, 300, 1000});
        },
        [](auto &s) {
            s.pulses.push_back({1, 1, 200, 1.5, 26, 60});
        },
        [](auto &s) {
            s.pulseTrains.push_back({1, 1, 3.032, 0.6, 26, 60, 0});
        },
        [](auto &s) {
            s.lines.push_back({1, 1, 5, 7, 100, 300});
        },
    };
    for (const Change change : changes) {
        const std::vector<float> series = channelWith(change);
        QVERIFY(Tools::findLevelJumps(series.data(), int(series.size())).empty());
    }
}

void TestLevelJumps::noNumbersAndShortSeries()
{
    std::vector<float> series = channelWith([](auto &) {});
    QVERIFY(Tools::findLevelJumps(series.data(), 1023).empty());
    QVERIFY(Tools::findLevelJumps(series.data(), 0).empty());
    for (std::size_t i = 0; i < series.size(); i += 7)
        series[i] = std::numeric_limits<float>::quiet_NaN();
    series[1000] = std::numeric_limits<float>::infinity();
    // 0 in place of a missing sample lies 100 sigma low, but is no lasting level.
    QVERIFY(Tools::findLevelJumps(series.data(), int(series.size())).empty());
    const std::vector<float> constant(5000, 3.0f);
    QVERIFY(Tools::findLevelJumps(constant.data(), 5000).empty());
}

void TestLevelJumps::sigmaOfNoise()
{
    const std::vector<float> series = channelWith([](auto &s) { s.sigma = 2.5; });
    // 20000 samples give the sigma to about 1 %.
    QVERIFY(std::abs(Tools::robustSigma(series.data(), 20000) - 2.5) < 0.1);
    QCOMPARE(Tools::robustSigma(series.data(), 1), 0.0);
    // Continuous samples keep the value of the definition to the last bit.
    std::vector<float> differences;
    for (std::size_t i = 1; i < 20000; ++i)
        differences.push_back(std::abs(series[i] - series[i - 1]));
    std::sort(differences.begin(), differences.end());
    const float median = differences[differences.size() / 2];
    QVERIFY(Tools::robustSigma(series.data(), 20000) == median * 1.4826 / std::sqrt(2.0));
}

void TestLevelJumps::sigmaOfCoarseSamples()
{
    std::vector<float> samples(40000);
    std::vector<float> scratch;
    const auto check = [&](double sigma, double level, double step) {
        std::mt19937 random(3);
        std::normal_distribution<double> normal(level, sigma);
        double sum = 0;
        double squares = 0;
        for (float &sample : samples) {
            const double steps = std::round(normal(random));
            sum += steps - level;
            squares += (steps - level) * (steps - level);
            sample = float(steps * step);
        }
        // What the rounded samples scatter, by the definition.
        const double count = double(samples.size());
        const double expected = step * std::sqrt(squares / count - sum * sum / count / count);
        // One in a hundred is hit by an impulse.
        for (std::size_t i = 0; i < samples.size(); i += 100)
            samples[i] += float(100 * (1 + sigma) * step);
        const double robust = Tools::robustSigma(samples.data(), 40000);
        const double spread = Tools::robustLevel(samples.data(), 40000, scratch).spread;
        const QString text = QString("%1: %2 and %3").arg(sigma).arg(robust).arg(spread);
        QVERIFY2(std::abs(robust / expected - 1) < 0.04, qPrintable(text));
        QVERIFY2(std::abs(spread / expected - 1) < 0.04, qPrintable(text));
    };
    // Sigma of the noise before it is rounded, and its level, in steps of the rounding.
    for (const double sigma : {0.2, 0.4, 0.5, 0.7, 1.0, 1.5, 2.0, 5.0, 20.0})
        for (const double level : {100.0, 100.5})
            for (const double step : {1.0, 0.1})
                check(sigma, level, step);
}

ZRT_UNIT_TEST_MAIN(TestLevelJumps)
#include "tst_leveljumps.moc"
