#include "calc/levelsteps.h"
#include "calc/robuststatistics.h"
#include "simulator/recording.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using Simulator::Simulation;

Q_DECLARE_METATYPE(Simulation)

namespace {

Simulation quietRay()
{
    Simulation simulation;
    simulation.npoints = 40000;
    simulation.rays = 1;
    simulation.driftTime = 60;
    return simulation;
}

std::vector<float> channelOf(const Simulation &simulation, int channel)
{
    const ObservationData data = Simulator::makeRecording(simulation);
    const float *const samples = data.samples[0][channel][0];
    return {samples, samples + data.npoints};
}

} // namespace

class TestLevelSteps : public QObject {
    Q_OBJECT

private slots:
    void findsStepsOnly_data();
    void findsStepsOnly();
    void noNumbersAndShortSeries();
    void sigmaOfNoise();
    void sigmaOfCoarseSamples_data();
    void sigmaOfCoarseSamples();
};

void TestLevelSteps::findsStepsOnly_data()
{
    QTest::addColumn<Simulation>("simulation");
    QTest::addColumn<bool>("found");
    const auto row = [](const char *name, auto member, const auto &value, bool found = false) {
        Simulation simulation = quietRay();
        simulation.*member = {value};
        QTest::newRow(name) << simulation << found;
    };
    using Steps = std::vector<Simulator::GainStep>;
    constexpr auto steps = &Simulation::gainSteps;
    row("up", steps, Steps{{1, 1, 20000, 1.1}}, true);
    row("down", steps, Steps{{1, 1, 12345, 0.9}}, true);
    row("a thousand points apart", steps,
        Steps{{1, 1, 9000, 1.1}, {1, 1, 10000, 1.1}, {1, 1, 11000, 0.8}}, true);
    row("as near to the ends as levels reach", steps, Steps{{1, 1, 512, 1.15}, {1, 1, 39488, 1.15}},
        true);
    row("small step", steps, Steps{{1, 1, 20000, 1.07}});
    row("noise", steps, Steps{});
    row("drift", &Simulation::drift, 40.0);
    row("impulses", &Simulation::impulses, Simulator::Impulses{1, 1, 300, 1000});
    row("dispersed pulse", &Simulation::pulses, Simulator::SinglePulse{1, 1, 200, 1.5, 26, 60});
    row("pulsar", &Simulation::pulseTrains, Simulator::PulseTrain{1, 1, 3.032, 0.6, 26, 60, 0});
    row("line", &Simulation::lines, Simulator::NarrowBandLine{1, 1, 5, 7, 100, 300});
}

void TestLevelSteps::findsStepsOnly()
{
    QFETCH(Simulation, simulation);
    QFETCH(bool, found);
    std::vector<float> series = channelOf(simulation, 4);
    const int count = int(series.size());
    const std::vector<Tools::LevelStep> steps = Tools::findLevelSteps(series.data(), count);
    QCOMPARE(steps.size(), found ? simulation.gainSteps.size() : 0);
    double level = 100;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Simulator::GainStep &injected = simulation.gainSteps[i];
        // Steps of 10 sigma and more: their place is certain to a sample or two.
        QVERIFY(std::abs(steps[i].point - injected.point) <= 1);
        // Medians of 512 samples err by 0.055 sigma each.
        QVERIFY(std::abs(steps[i].height - level * (injected.factor - 1)) < 0.4);
        level *= injected.factor;
    }
    Tools::removeLevelSteps(series.data(), count, steps);
    QVERIFY(Tools::findLevelSteps(series.data(), count).empty());
    QVERIFY(!found || std::abs(series.back() - 100) < 8);
}

void TestLevelSteps::noNumbersAndShortSeries()
{
    std::vector<float> series = channelOf(quietRay(), 0);
    QVERIFY(Tools::findLevelSteps(series.data(), 1023).empty());
    QVERIFY(Tools::findLevelSteps(series.data(), 0).empty());
    for (std::size_t i = 0; i < series.size(); i += 7)
        series[i] = std::numeric_limits<float>::quiet_NaN();
    series[1000] = std::numeric_limits<float>::infinity();
    // 0 in place of a missing sample lies 100 sigma low, but is no lasting level.
    QVERIFY(Tools::findLevelSteps(series.data(), int(series.size())).empty());
    const std::vector<float> constant(5000, 3.0f);
    QVERIFY(Tools::findLevelSteps(constant.data(), 5000).empty());
}

void TestLevelSteps::sigmaOfNoise()
{
    Simulation simulation = quietRay();
    simulation.sigma = 2.5;
    simulation.gainSteps.push_back({1, 1, 20000, 3});
    const std::vector<float> series = channelOf(simulation, 0);
    // The gain step scales the noise as well; half the samples have 2.5 and half 7.5, so ask
    // the first half only. 20000 samples give the sigma to about 1 %.
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

void TestLevelSteps::sigmaOfCoarseSamples_data()
{
    QTest::addColumn<double>("sigma"); // of the noise before it is rounded, in steps
    QTest::addColumn<double>("level"); // steps
    QTest::addColumn<double>("step");
    for (const double sigma : {0.2, 0.4, 0.5, 0.7, 1.0, 1.5, 2.0, 5.0, 20.0})
        for (const double level : {100.0, 100.5})
            for (const double step : {1.0, 0.1})
                QTest::addRow("sigma %g, level %g, step %g", sigma, level, step)
                    << sigma << level << step;
}

void TestLevelSteps::sigmaOfCoarseSamples()
{
    QFETCH(double, sigma);
    QFETCH(double, level);
    QFETCH(double, step);
    std::mt19937 random(3);
    std::normal_distribution<double> normal(level, sigma);
    std::vector<float> samples(40000);
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
    std::vector<float> scratch;
    const double robust = Tools::robustSigma(samples.data(), int(samples.size()));
    const double spread = Tools::robustLevel(samples.data(), int(samples.size()), scratch).spread;
    QVERIFY2(std::abs(robust / expected - 1) < 0.04, qPrintable(QString::number(robust)));
    QVERIFY2(std::abs(spread / expected - 1) < 0.04, qPrintable(QString::number(spread)));
}

ZRT_UNIT_TEST_MAIN(TestLevelSteps)
#include "tst_levelsteps.moc"
