#include "calc/actions.h"
#include "calc/banddelays.h"
#include "calc/pulsar/computedon.h"

#include <random>

using namespace TestSupport;
using Simulator::Simulation;

class TestPulsarReports : public QObject {
    Q_OBJECT

private slots:
    void linesAndNoise();
    void harmonicOfThePeriod();
    void constantRecordings();
    void lastStart();
    void startsAtTheEnd();
    void foldTellsItsNoise();
    void computedOnWhat();
};

// The noise is told from the lines around each, whatever stands out of them; line 0 is none.
void TestPulsarReports::linesAndNoise()
{
    Simulation simulation = oneRay();
    PulsarParameters parameters = parametersFor(26.2, 300);
    parameters.period = 16384 * 0.0124928 / 300;
    parameters.sigmaMultiple = 3;
    simulation.pulseTrains.push_back({1, 1, parameters.period, 0.05, 26.2, 2, 0});
    const ObservationData data = Simulator::makeRecording(simulation);
    const QStringList remarks = notesOf(resultOf("sumChannelsAndFourier", data, parameters));
    // The amplitudes of 32 bands of noise 1 have the scale sqrt(32) sqrt(2 / 16384) = 0.0625.
    const QString &noise = remarks[0];
    QVERIFY2(std::abs(numberAfter(noise, "Noise level =") - 0.0625) < 0.002, qPrintable(noise));
    QVERIFY2(noise.contains("noise of this level would put none there"), qPrintable(noise));
    QVERIFY2(noise.contains("Of those listed, 300, 600, 900, 1200, 1500"), qPrintable(noise));
    // The harmonics of the pulsar fall on lines; the highest come first, without the mean.
    QVERIFY2(remarks[1].contains(QRegularExpression("levels\\)\n(300|600|900): ")),
             qPrintable(remarks[1]));
    QCOMPARE(remarks[1].count('\n'), 15);
    QVERIFY2(remarks[2].contains("has the harmonic number 300.00; line 300 has "),
             qPrintable(remarks[2]));
}

void TestPulsarReports::harmonicOfThePeriod()
{
    PulsarParameters parameters = parametersFor(0, 229);
    parameters.noise = "without";
    parameters.period = 16384 * 0.0124928 / 229.3;
    const auto isAnother = [&](int harmonic) {
        parameters.harmonicNum = harmonic;
        return notesOf(resultOf("sumAllDispersions", sines(229, 1), parameters))
            .join('\n')
            .contains("is none of the period of");
    };
    for (const int own : {229, 230, 458, 459, 1146, 1147})
        QVERIFY2(!isAnother(own), qPrintable(QString::number(own)));
    for (const int other : {1, 228, 231, 460, 1148})
        QVERIFY2(isAnother(other), qPrintable(QString::number(other)));
    parameters.withNull = true; // lines half as far apart
    QVERIFY(!isAnother(459) && isAnother(229));
    parameters.period = 0; // none typed
    QVERIFY(!isAnother(229));
}

// What the rounding of a baseline leaves of a level is no harmonic.
void TestPulsarReports::constantRecordings()
{
    const ObservationData data = TestSupport::makeRecording(
        {40000}, [](int, int, int channel, int) { return 445400.3F + float(channel); });
    PulsarParameters parameters = parametersFor(26.2, 300);
    parameters.firstPoint = 100;
    parameters.normalise = true;
    for (const char *const noise : {"polinom5", "median", "backSum"}) {
        parameters.noise = noise;
        const PulsarResult spectrum = resultOf("sumChannelsAndFourier", data, parameters);
        QCOMPARE(spectrum.curves[0], std::vector<float>(8192, 0.0F));
        QVERIFY2(spectrum.description().contains("6 sigma:\n\n\nFirst"),
                 qPrintable(spectrum.description()));
        QVERIFY(notesOf(spectrum)[0].contains("holds no noise"));
        const PulsarResult scan = resultOf("sumAllDispersions", data, parameters);
        QVERIFY2(scan.description().contains("fewer than two bands hold more than a level"),
                 qPrintable(scan.description()));
        QVERIFY(resultOf("sumPeriod", data, parameters).description().contains("\nS/N = -"));
    }
}

// The range that a refusal names is the one that runs.
void TestPulsarReports::lastStart()
{
    const ObservationData data = sines(100, 1); // 20000 points: 20000 - 16384 - 1
    PulsarParameters parameters = parametersFor(0, 100);
    for (const int start : {3615, 3616}) {
        parameters.firstPoint = start;
        PulsarCalculate calculate(data, parameters);
        QCOMPARE(calculate.run("sumChannelsDemoNoise"), start == 3615);
        QVERIFY2(start == 3615 || calculate.failure().contains("Allowed: 0 to 3615; up to 3615"),
                 qPrintable(calculate.failure()));
    }
    parameters.dispersion = 1.7; // delays the lowest band by 1.58 points
    const double delay =
        Tools::dispersionDelay(data.fbands[0], data.fbands[31], 1.7, data.tresolution);
    const int last = 20000 - 16384 - int(std::lround(delay));
    for (const int start : {last, last + 1}) {
        parameters.firstPoint = start;
        const QString remarks =
            notesOf(resultOf("sumChannelsDemoNoise", data, parameters)).join('\n');
        QCOMPARE(remarks.contains("31 of the 32 bands whole"), start > last);
        QVERIFY2(start == last || remarks.contains(QString("up to %1 every band").arg(last)),
                 qPrintable(remarks));
    }
}

// Each start is judged by itself, and the parameters stay as they were typed.
void TestPulsarReports::startsAtTheEnd()
{
    PulsarParameters parameters = parametersFor(26.2, 500);
    parameters.startDelta = 23600;
    PulsarCalculate calculate(Simulator::makeRecording(oneRay()), parameters);
    for (int run = 0; run < 2; ++run) {
        QVERIFY(calculate.run("sumTimeDispersions"));
        QCOMPARE(calculate.result().starts, (std::vector<int>{0, 23600}));
        const QString remarks = notesOf(calculate.result()).join('\n');
        QVERIFY2(remarks.contains("every band (first point 23600)"), qPrintable(remarks));
    }
}

// What noise reaches is told from folds beside, drift included; coarse samples have a noise.
void TestPulsarReports::foldTellsItsNoise()
{
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.period = 0.71452;
    parameters.noise = "without";
    // White noise of sigma 1, and noise of sigma `drift` that forgets itself over 50 samples.
    const auto fold = [&](double drift, double step) {
        std::mt19937 random(4);
        std::normal_distribution<double> normal;
        double level = 0;
        const auto sample = [&](int, int, int c, int) {
            if (c > 0)
                return 0.0F; // the first channel is folded
            level = 0.98 * level + 0.2 * drift * normal(random);
            return float(step * std::round((100 + level + normal(random)) / step));
        };
        return resultOf("sumPeriod", makeRecording({40000}, sample), parameters);
    };
    const auto reached = [](const PulsarResult &result) {
        return numberAfter(notesOf(result)[0], "unsteady pulses add reaches");
    };
    // The mean of eight folds of 57 bins, each 2.6 +- 0.5.
    const PulsarResult white = fold(0, 1e-4);
    QVERIFY2(std::abs(reached(white) - 2.6) < 0.6, qPrintable(notesOf(white)[0]));
    QVERIFY(numberAfter(white.description(), "S/N =") < 4.5);
    QVERIFY2(reached(fold(2, 1e-4)) > 5, "drift raises what noise reaches");
    const PulsarResult coarse = fold(0, 2.5); // sigma 0.4 of a step
    QVERIFY2(numberAfter(coarse.description(), "S/N =") < 4.5, qPrintable(coarse.description()));
    QVERIFY2(std::abs(reached(coarse) - 2.6) < 0.6, qPrintable(notesOf(coarse)[0]));
    QVERIFY2(white.description().contains("\nPeriod = 0.71452\n"), "all digits that were typed");
}

void TestPulsarReports::computedOnWhat()
{
    const std::pair<const char *, QStringList> rows[] = {
        {"sumPeriod",
         {"channel: 5, 120.3125 MHz", "points: 39900 from first point 100 on, step 12.4928 ms",
          "UTC: 2015-04-01 12:00:01.249 to 12:08:19.699",
          "base line: line through means of 128 points, taken off, normalised"}},
        {"sumChannelsDemoNoise",
         {"dispersion: 26.2 pc/cm^3, bands 1 to 32, reference 122.421875 MHz",
          "points: 16384 from first point 100 on, step 12.4928 ms",
          "UTC: 2015-04-01 12:00:01.249 to 12:03:25.918",
          "base line: backSum, not taken off, not normalised"}},
        {"sum4Dispersions",
         {"dispersion: 0, 13.1, 26.2, 52.4 pc/cm^3, bands 1 to 32, reference 122.421875 MHz",
          "points: 16384 from first point 100 on, step 12.4928 ms",
          "UTC: 2015-04-01 12:00:01.249 to 12:03:25.918",
          "base line: backSum, taken off, normalised",
          "averaging: 2 times, 4 points each, with null"}},
        {"sumTimeDispersions",
         {"dispersion: 0 to 52.4 pc/cm^3, bands 1 to 32, reference 122.421875 MHz",
          "points: 16384 from each of the first points 100, 20100 on, step 12.4928 ms",
          "UTC: 2015-04-01 12:00:01.249 to 12:03:25.918",
          "base line: backSum, taken off, normalised",
          "averaging: 2 times, 4 points each, with null"}}};
    ObservationData data = Simulator::makeRecording(oneRay());
    data.moduleNumbers = {3};
    data.ray = 5;
    PulsarParameters parameters = parametersFor(26.2, 300);
    parameters.channel = 5;
    parameters.firstPoint = 100;
    parameters.startDelta = 20000;
    parameters.noise = "backSum";
    parameters.normalise = true;
    parameters.averageCount = 2;
    parameters.withNull = true;
    const QStringList place = {"file: /data/x.pnt",
                               "module: 3 (place 1 in the file), ray: 5 (place 1 in the file)"};
    for (const auto &[action, lines] : rows) {
        const PulsarResult result = resultOf(action, data, parameters);
        QCOMPARE(computedOn("/data/x.pnt", action, data, parameters, result),
                 place + lines + QStringList("steps: not taken out"));
    }
}

ZRT_UNIT_TEST_MAIN(TestPulsarReports)
#include "tst_pulsarreports.moc"
