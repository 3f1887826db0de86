#include "calc/levelsteps.h"
#include "simulator/recording.h"
#include "support/testmain.h"

#include <cmath>
#include <limits>

using Simulator::Simulation;

namespace {

Simulation quietRay()
{
    Simulation simulation;
    simulation.npoints = 40000;
    simulation.rays = 1;
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
    void injected_data();
    void injected();
    void nothingElse_data();
    void nothingElse();
    void noNumbersAndShortSeries();
    void sigmaOfNoise();
};

void TestLevelSteps::injected_data()
{
    QTest::addColumn<QVector<int>>("points");
    QTest::addColumn<QVector<double>>("factors");
    QTest::newRow("up") << QVector<int>{20000} << QVector<double>{1.1};
    QTest::newRow("down") << QVector<int>{12345} << QVector<double>{0.9};
    QTest::newRow("up and back") << QVector<int>{9000, 15001} << QVector<double>{1.2, 1 / 1.2};
    QTest::newRow("a thousand points apart")
        << QVector<int>{9000, 10000, 11000} << QVector<double>{1.1, 1.1, 0.8};
    QTest::newRow("as near to the ends as levels reach")
        << QVector<int>{512, 39488} << QVector<double>{1.15, 1.15};
}

void TestLevelSteps::injected()
{
    QFETCH(QVector<int>, points);
    QFETCH(QVector<double>, factors);
    Simulation simulation = quietRay();
    for (int i = 0; i < points.size(); ++i)
        simulation.gainSteps.push_back({1, 1, points[i], factors[i]});
    std::vector<float> series = channelOf(simulation, 4);
    const int count = int(series.size());
    const std::vector<Tools::LevelStep> steps = Tools::findLevelSteps(series.data(), count);

    QCOMPARE(int(steps.size()), points.size());
    double level = 100;
    for (int i = 0; i < points.size(); ++i) {
        // Steps of 10 sigma and more: their place is certain to a sample or two.
        QVERIFY2(std::abs(steps[std::size_t(i)].point - points[i]) <= 1,
                 qPrintable(QString::number(steps[std::size_t(i)].point)));
        // Medians of 512 samples err by 0.055 sigma each.
        QVERIFY(std::abs(steps[std::size_t(i)].height - level * (factors[i] - 1)) < 0.4);
        level *= factors[i];
    }
    Tools::removeLevelSteps(series.data(), count, steps);
    QVERIFY(Tools::findLevelSteps(series.data(), count).empty());
    QVERIFY(std::abs(series.back() - 100) < 8);
}

void TestLevelSteps::nothingElse_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what :
         {"noise", "drift", "impulses", "dispersed pulse", "pulsar", "line", "small step"})
        QTest::newRow(what) << what;
}

void TestLevelSteps::nothingElse()
{
    QFETCH(QString, what);
    Simulation simulation = quietRay();
    simulation.pulses.clear();
    if (what == "drift") {
        simulation.drift = 40;
        simulation.driftTime = 60;
    } else if (what == "impulses") {
        simulation.impulses.push_back({1, 1, 300, 1000});
    } else if (what == "dispersed pulse") {
        simulation.pulses.push_back({1, 1, 200, 1.5, 26, 60});
    } else if (what == "pulsar") {
        simulation.pulseTrains.push_back({1, 1, 3.032, 0.6, 26, 60, 0});
    } else if (what == "line") {
        simulation.lines.push_back({1, 1, 5, 7, 100, 300});
    } else if (what == "small step") {
        simulation.gainSteps.push_back({1, 1, 20000, 1.07});
    }
    const std::vector<float> series = channelOf(simulation, 4);
    const std::vector<Tools::LevelStep> steps =
        Tools::findLevelSteps(series.data(), int(series.size()));
    QCOMPARE(int(steps.size()), 0);
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
}

ZRT_UNIT_TEST_MAIN(TestLevelSteps)
#include "tst_levelsteps.moc"
