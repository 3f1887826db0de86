#include "calc/actions.h"
#include "calc/channelsum.h"
#include "calc/fourier.h"
#include "calc/pulsar/computedon.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "data/reader.h"
#include "simulator/recording.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <cmath>
#include <map>

using namespace TestSupport;
using Simulator::Simulation;

Q_DECLARE_METATYPE(PulsarParameters)

namespace {

// A pulse at this phase must be found there, as high as the matched filter has it.
void checkFold(double period, double phase, const char *noise)
{
    Simulation simulation = oneRay();
    const double width = 0.05 * period;
    const double strength = 0.5;
    simulation.pulseTrains.push_back({1, 1, period, width, 0, strength, phase});
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.channel = 32;
    parameters.period = period;
    parameters.noise = noise;
    const PulsarResult result =
        resultOf("sumPeriod", Simulator::makeRecording(simulation), parameters);
    const QString &report = result.description;

    // A sample is the mean over one step around its time: phase 0 of the fold is half a step
    // before the first sample's time.
    const double step = simulation.msPerPoint / 1000;
    const double expectedPhase = std::fmod(phase + step / 2 / period, 1.0);
    const double found = numberAfter(report, "Phase of peak =");
    const double distance = std::abs(std::remainder(found - expectedPhase, 1.0));
    QVERIFY2(distance < 0.02, qPrintable(report));

    // Matched boxcar on a Gaussian of that width: 0.94 of the matched filter's
    // A sqrt(N width / period) (pi / (4 ln 2))^(1/4) / sqrt(2)^(1/2) per sample noise 1.
    const double samplesPerPeriod = period / step;
    const double sigmaOfPulse = width / 2.3548 / step; // samples
    const double energy = strength * strength * std::sqrt(M_PI) * sigmaOfPulse;
    const double matched = std::sqrt(energy * simulation.npoints / samplesPerPeriod);
    const double snr = numberAfter(report, "S/N =");
    QVERIFY2(snr > 0.75 * matched && snr < 1.15 * matched,
             qPrintable(QString("%1, matched filter %2").arg(snr).arg(matched)));
    QCOMPARE(result.points, int(std::round(samplesPerPeriod)));
}

// Scans for a train of pulses at one of its harmonics.
void checkScan(double dispersion, double strength, int harmonic)
{
    // The period is a whole part of the transform, so that its harmonics fall on bins.
    const int fundamental = 256;
    Simulation simulation = oneRay();
    const double period = 16384 * 0.0124928 / fundamental;
    simulation.pulseTrains.push_back({1, 1, period, 0.025, dispersion, strength, 0.2});
    PulsarParameters parameters = parametersFor(dispersion * 1.1, harmonic * fundamental);
    const PulsarResult result =
        resultOf("sumAllDispersions", Simulator::makeRecording(simulation), parameters);
    const QString report = result.description;
    const double found = numberAfter(report, "DM =");
    const double error = numberAfter(report, "+-");
    // Three standard deviations: the seeds are fixed, so this neither flickers nor is it tuned.
    QVERIFY2(std::abs(found - dispersion) < 3 * error, qPrintable(report));
    QVERIFY2(error < 0.1 * dispersion, qPrintable(report));
    QCOMPARE(result.points, 201);
}

// Each trial of a scan must be the spectrum of that dispersion.
void checkTrials(const char *noise, int averageCount, bool withNull, int firstPoint)
{
    Simulation simulation = oneRay();
    simulation.pulseTrains.push_back({1, 1, 0.8, 0.05, 26.2, 2, 0});
    const ObservationData data = Simulator::makeRecording(simulation);
    PulsarParameters parameters = parametersFor(26.2, 300);
    parameters.noise = noise;
    parameters.averageCount = averageCount;
    parameters.withNull = withNull;
    parameters.firstPoint = firstPoint;
    const std::vector<float> scan = resultOf("sumAllDispersions", data, parameters).curves[0];

    const int length = Tools::averagedLength(16384, averageCount, withNull);
    auto spectrum = std::vector<double>(std::size_t(length / 2));
    PulsarCalculate separate(data, parameters);
    for (int trial = 0; trial <= 200; trial += 20) {
        QVERIFY(separate.getFourierOfSum(spectrum.data(), 16384, 52.4 * trial / 200, averageCount,
                                         withNull));
        // Both errors are those of double arithmetic; the curve itself is a float.
        const float expected = float(spectrum[300]);
        QVERIFY2(std::abs(scan[std::size_t(trial)] - expected) <= 1e-6f * expected,
                 qPrintable(QString::number(trial)));
    }
}

// Amplitudes that were computed from the same files with separate numeric code.
void compareSpectrum(const ObservationData &data, double dispersion,
                     const std::map<std::size_t, float> &amplitudes)
{
    PulsarParameters parameters = parametersFor(dispersion, 1);
    parameters.noise = "without";
    const PulsarResult result = resultOf("sumChannelsAndFourier", data, parameters);
    // The expected values have three or four digits.
    for (const auto &[bin, amplitude] : amplitudes)
        QVERIFY2(std::abs(result.curves[0][bin] / amplitude - 1) < 2e-3f,
                 qPrintable(QString::number(bin)));
}

void spectrumAndPeriod1807(const ObservationData &data)
{
    compareSpectrum(data, 0, {{49, 43880}, {98, 36040}, {246, 38550}, {393, 19670}});
    PulsarParameters parameters = parametersFor(0, 1);
    std::pair<double, double> best; // S/N and period
    for (int k = -20; k <= 20; ++k) {
        parameters.period = 0.16372 + k * 5e-6;
        const QString report = resultOf("sumPeriod", data, parameters).description;
        best = std::max(best, {numberAfter(report, "S/N ="), parameters.period});
    }
    QVERIFY(best.first > 100);
    QVERIFY2(std::abs(best.second - 0.16372) <= 0.00002,
             qPrintable(QString::number(best.second, 'f', 6)));
}

void spectrumAndScan329(const ObservationData &data)
{
    compareSpectrum(data, 26.76, {{16, 250.4f}, {32, 251.9f}, {80, 230.4f}, {960, 61.3f}});
    PulsarParameters parameters = parametersFor(26.76, 960);
    parameters.noise = "without";
    const QString report = resultOf("sumAllDispersions", data, parameters).description;
    const double maximum = numberAfter(report, "Maximum:\ndisp =");
    QVERIFY2(maximum >= 22 && maximum <= 24, qPrintable(report));
    const QRegularExpression cubic("disp = ([0-9.]+) value = \\S+ \\(maximum\\)");
    const double extremum = cubic.match(report).captured(1).toDouble();
    QVERIFY2(extremum >= 24 && extremum <= 26, qPrintable(report));
}

void burstInThreeRays(const ObservationData &data)
{
    const double maxima[] = {4436.7, 4510.4, 4420.7};
    const int points[] = {1614, 1614, 1615};
    for (int ray = 0; ray < 3; ++ray) {
        const std::vector<double> sum = Tools::sumChannels(data, 474.8, 0, ray);
        const auto top = std::max_element(sum.begin(), sum.end());
        QCOMPARE(int(top - sum.begin()), points[ray]);
        QVERIFY(std::abs(*top - maxima[ray]) < 0.06);
    }
}

} // namespace

using Check = void (*)(const ObservationData &);
Q_DECLARE_METATYPE(Check)

class TestPulsarActions : public QObject {
    Q_OBJECT

private slots:
    void reports();
    void refusals_data();
    void refusals();
    void foldFindsThePulse();
    void scanFindsTheDispersion();
    void scanNearItsEnds();
    void scanOfNoiseClaimsNothing();
    void scanEqualsSeparateSpectra();
    void multiScans();
    void deletedSteps();
    void cancelEndsAScan();
    void realRecordings_data();
    void realRecordings();
};

void TestPulsarActions::reports()
{
    PulsarParameters parameters = parametersFor(0, 100);
    parameters.noise = "without";
    const PulsarResult one = resultOf("sumChannelsAndFourier", sines(100, 1), parameters);
    // Sigma of 8192 values of which one is 32 (the float samples add about 1e-6): 32 / sqrt(8192).
    const QString expected = "Sigma = 0.353553\n6 sigma = 2.12132\n\nHarmonics >= 6 sigma:\n\n"
                             "100: 32\n\nFirst harmonic:\nnum = 100\nvalue = 32\n";
    QCOMPARE(one.description, expected);
    QCOMPARE(one.points, 8192);
    QCOMPARE(one.curves[2][8191], float(6 * 32 / std::sqrt(8192.0)));

    const PulsarResult twenty = resultOf("sumChannelsAndFourier", sines(50, 20), parameters);
    QVERIFY(twenty.description.contains("\n750: 32\n"));
    QVERIFY(!twenty.description.contains("\n800: "));
    QVERIFY(twenty.remarks[0].contains("\n20 of 8192 values lie above 6 sigma, the first 15"));

    const PulsarResult four = resultOf("sum4Dispersions", sines(100, 1), parameters);
    QVERIFY(four.description.startsWith("Sum of channels and fourier\nFixed number of points = "
                                        "16384\n\nFirst harmonic:\n\nHarmonic number = 100"));
    QVERIFY(four.description.endsWith("\ndisp4 = 0.0 value = 32.00000"));
    QCOMPARE(four.curves[0][100], 32.15f); // drawn above the fourth
    QCOMPARE(four.curves[3][100], 32.0f);
}

void TestPulsarActions::refusals_data()
{
    QTest::addColumn<PulsarParameters>("parameters");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, auto member, auto value, const char *text) {
        PulsarParameters parameters = parametersFor(0, 1);
        parameters.*member = value;
        QTest::newRow(name) << parameters << text;
    };
    row("module", &PulsarParameters::module, 2, "Error of module, must be: module <2");
    row("channel", &PulsarParameters::channel, 34, "Error of channel, must be: channels <34");
    row("ray", &PulsarParameters::ray, 2, "Error ray, must be: rays <2");
    // 40000 points of 12.4928 ms: 0.0249856 to 249.856 s.
    const char *const limits = "Allowed: 0.0249856 to 249.856 s";
    row("two samples", &PulsarParameters::period, 0.024986, "");
    row("under two samples", &PulsarParameters::period, 0.024985, limits);
    row("half the stretch", &PulsarParameters::period, 249.855, "");
    row("over half the stretch", &PulsarParameters::period, 249.857, limits);
    row("not a number", &PulsarParameters::period, std::nan(""), limits);
}

void TestPulsarActions::refusals()
{
    QFETCH(PulsarParameters, parameters);
    QFETCH(QString, text);
    PulsarCalculate calculate(Simulator::makeRecording(oneRay()), parameters);
    QCOMPARE(calculate.run("sumPeriod"), text.isEmpty());
    QVERIFY2(calculate.failure().contains(text), qPrintable(calculate.failure()));
    QVERIFY(!calculate.run("sumEverything"));
    QVERIFY(calculate.failure().contains("sumEverything"));
}

void TestPulsarActions::foldFindsThePulse()
{
    checkFold(0.71452, 0.3, "polinom5");
    checkFold(0.2531, 0.02, "backSum");
    checkFold(3.0321, 0.5, "without");
}

void TestPulsarActions::scanFindsTheDispersion()
{
    checkScan(60, 3, 4);
    checkScan(26.2, 0.8, 6); // weak
    checkScan(26.2, 2, 12);
}

// Dispersions at both ends of a scan come out within their errors, and without a bias.
void TestPulsarActions::scanNearItsEnds()
{
    for (const double dispersion : {0.0, 3.0, 20.0}) {
        double sum = 0;
        int withinTwo = 0;
        const int seeds = 7;
        for (int seed = 1; seed <= seeds; ++seed) {
            Simulation simulation = oneRay();
            simulation.npoints = 17000;
            simulation.seed = quint32(seed);
            simulation.pulseTrains.push_back(
                {1, 1, 16384 * 0.0124928 / 500.4, 0.02, dispersion, 0.25, 0.08 * seed});
            const PulsarResult result = resultOf(
                "sumAllDispersions", Simulator::makeRecording(simulation), parametersFor(0, 1001));
            const double errors = (numberAfter(result.description, "DM =") - dispersion) /
                                  numberAfter(result.description, "+-");
            sum += errors;
            withinTwo += std::abs(errors) < 2;
        }
        // The mean of seven errors has the error 0.38.
        QVERIFY2(std::abs(sum / seeds) < 1.2, qPrintable(QString::number(sum / seeds)));
        QVERIFY2(withinTwo >= seeds - 1, qPrintable(QString::number(withinTwo)));
    }
}

void TestPulsarActions::scanOfNoiseClaimsNothing()
{
    for (const int harmonic : {1, 30, 1000, 3000, 8000}) {
        const QString report = resultOf("sumAllDispersions", Simulator::makeRecording(oneRay()),
                                        parametersFor(26.2, harmonic))
                                   .description;
        QVERIFY2(report.contains("does not tell the dispersion"), qPrintable(report));
    }
}

void TestPulsarActions::scanEqualsSeparateSpectra()
{
    checkTrials("polinom5", 0, false, 0);
    checkTrials("median", 1, true, 100);
    checkTrials("backSum", 0, false, 5);
    checkTrials("without", 2, false, 40000 - 16384 - 20); // at the end
}

void TestPulsarActions::multiScans()
{
    Simulation simulation = oneRay();
    simulation.pulseTrains.push_back({1, 1, 0.8, 0.05, 26.2, 2, 0});
    const ObservationData data = Simulator::makeRecording(simulation);
    PulsarParameters parameters = parametersFor(26.2, 500);
    parameters.averageCount = 2;
    const PulsarResult averages = resultOf("sumMultiDispersions", data, parameters);
    QCOMPARE(averages.curves.size(), std::size_t(3));
    QVERIFY(averages.description.contains("\nChange: averages (see colors)\n\n"));
    QCOMPARE(averages.multi[2].name, QString("averaging number 2"));
    QCOMPARE(averages.multi[1].curves[0], averages.curves[1]);

    parameters.averageCount = 0;
    parameters.startDelta = 5000;
    const PulsarResult starts = resultOf("sumTimeDispersions", data, parameters);
    // 0, 5000 .. 20000; 25000 leaves no 16384 points.
    QCOMPARE(starts.curves.size(), std::size_t(5));
    QVERIFY(starts.description.contains("\nChange: first point (see colors)"));
}

void TestPulsarActions::deletedSteps()
{
    Simulation simulation = oneRay();
    simulation.gainSteps.push_back({1, 1, 6000, 1.2});
    const ObservationData data = Simulator::makeRecording(simulation);
    const float before = data.samples[0][3][0][10000];
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.firstPoint = 1000;
    parameters.noise = "without";
    parameters.deleteStep = true;
    const PulsarResult result = resultOf("sumChannelsDemoNoise", data, parameters);
    QVERIFY2(result.description.contains("Deleted steps = 32"), qPrintable(result.description));
    QCOMPARE(computedOn("x", "sumChannelsDemoNoise", data, parameters, result).back(),
             QString("steps taken out: 32"));
    QVERIFY(!result.markers.empty());
    for (const int marker : result.markers)
        QVERIFY(std::abs(marker - 5000) <= 1);
    // 32 bands of level 100 and sigma 1; 20 more each would be 640.
    QVERIFY(std::abs(result.curves[0][12000] - 3200) < 60);
    QCOMPARE(data.samples[0][3][0][10000], before);
}

void TestPulsarActions::cancelEndsAScan()
{
    PulsarCalculate calculate(Simulator::makeRecording(oneRay()), parametersFor(26.2, 1000));
    int calls = 0;
    connect(&calculate, &PulsarCalculate::progress, [&] {
        if (++calls == 10)
            calculate.cancel();
    });
    QVERIFY(!calculate.run("sumAllDispersions"));
    QCOMPARE(calls, 10);
    QVERIFY(calculate.wasCancelled());
    QVERIFY(calculate.failure().isEmpty());
}

void TestPulsarActions::realRecordings_data()
{
    QTest::addColumn<Check>("check");
    QTest::newRow("b0329_54_1427MHz.pnt") << Check([](auto &data) {
        compareSpectrum(data, 0, {{0, 137.80f}, {229, 2.687f}, {688, 3.006f}, {1834, 2.127f}});
    });
    QTest::newRow("b1508_55_1422MHz.pnt") << Check([](auto &data) {
        compareSpectrum(data, 0, {{89, 1.442f}, {177, 2.390f}, {443, 2.414f}, {709, 1.260f}});
    });
    QTest::newRow("j1807_0847_820MHz.pnt") << Check(spectrumAndPeriod1807);
    QTest::newRow("b0329_54_611MHz_folded.pnt") << Check(spectrumAndScan329);
    QTest::newRow("frb180417_1297MHz.pnt") << Check(burstInThreeRays);
}

void TestPulsarActions::realRecordings()
{
    QFETCH(Check, check);
    const QString path = TestSupport::realRecording(QTest::currentDataTag());
    if (path.isEmpty())
        QSKIP("there is no such recording in ../shared/data");
    check(Reader::readDataFile(nullptr, path));
}

ZRT_UNIT_TEST_MAIN(TestPulsarActions)
#include "tst_pulsaractions.moc"
