#include "calc/channelsum.h"
#include "calc/fold.h"
#include "calc/fourier.h"
#include "calc/pulsarcalculate.h"
#include "data/reader.h"
#include "simulator/recording.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QRegularExpression>
#include <cmath>

using Simulator::Simulation;

namespace {

Simulation oneRay()
{
    Simulation simulation;
    simulation.npoints = 40000;
    simulation.rays = 1;
    return simulation;
}

PulsarParameters parametersFor(double dispersion, int harmonic)
{
    PulsarParameters parameters;
    parameters.dispersion = dispersion;
    parameters.dispersions = {0, dispersion / 2, dispersion, 2 * dispersion};
    parameters.harmonicNum = harmonic;
    parameters.period = 1;
    return parameters;
}

// The number behind a text of the report, or NaN.
double numberAfter(const QString &report, const QString &text)
{
    const QRegularExpression number(QRegularExpression::escape(text) +
                                    "\\s*(-?[0-9.]+(e[-+]\\d+)?)");
    const QRegularExpressionMatch match = number.match(report);
    return match.hasMatch() ? match.captured(1).toDouble() : std::nan("");
}

} // namespace

class TestPulsarActions : public QObject {
    Q_OBJECT

private slots:
    void spectrumReport();
    void listStopsAtFifteen();
    void fourDispersionsReport();
    void unknownAction();
    void foldSharesSamples();
    void foldFindsThePulse_data();
    void foldFindsThePulse();
    void periodLimits_data();
    void periodLimits();
    void selectionTexts_data();
    void selectionTexts();
    void scanFindsTheDispersion_data();
    void scanFindsTheDispersion();
    void scanOfNoiseClaimsNothing();
    void scanEqualsSeparateSpectra_data();
    void scanEqualsSeparateSpectra();
    void multiScans();
    void deletedSteps();
    void cancelEndsAScan();
    void realSpectra_data();
    void realSpectra();
    void realBurst();
    void realFolded611();
    void realJ1807();
};

void TestPulsarActions::spectrumReport()
{
    // A sine of amplitude 1 in each of 32 bands, bin 100, on no other noise.
    const ObservationData data =
        TestSupport::makeRecording({20000, 1, 33, 1}, [](int p, int, int, int) {
            return float(std::sin(2 * M_PI * 100 * p / 16384));
        });
    PulsarParameters parameters = parametersFor(0, 100);
    parameters.noise = "without";
    PulsarCalculate calculate(data, parameters);
    QVERIFY(calculate.run("sumChannelsAndFourier"));
    const PulsarResult &result = calculate.result();
    // Sigma of 8192 values of which one is 32 (the float samples add about 1e-6): 32 / sqrt(8192).
    const QString expected = "Sigma = 0.353553\n6 sigma = 2.12132\n\nHarmonics >= 6 sigma:\n\n"
                             "100: 32\n\nFirst harmonic:\nnum = 100\nvalue = 32\n";
    QCOMPARE(result.description, expected);
    QCOMPARE(result.names,
             (QStringList{"fourier of sum channels", "1 sigma of fourier", "6 sigma of fourier"}));
    QCOMPARE(result.points, 8192);
    QCOMPARE(result.curves[2][8191], float(6 * 32 / std::sqrt(8192.0)));
    // n exp(-0.2146 N^2) = 8192 x 0.000443
    QVERIFY2(result.remarks[0].contains("about 3.6 there"), qPrintable(result.remarks[0]));

    parameters.sigmaMultiple = 5;
    PulsarCalculate five(data, parameters);
    QVERIFY(five.run("sumChannelsAndFourier"));
    QVERIFY2(five.result().remarks[0].contains("about 38 there"),
             qPrintable(five.result().remarks[0]));
}

void TestPulsarActions::listStopsAtFifteen()
{
    const ObservationData data =
        TestSupport::makeRecording({20000, 1, 33, 1}, [](int p, int, int, int) {
            double sum = 0;
            for (int k = 1; k <= 20; ++k)
                sum += std::sin(2 * M_PI * 50 * k * p / 16384);
            return float(sum);
        });
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.noise = "without";
    PulsarCalculate calculate(data, parameters);
    QVERIFY(calculate.run("sumChannelsAndFourier"));
    const QString text = calculate.result().description;
    QVERIFY(text.contains("\n50: 32\n"));
    QVERIFY(text.contains("\n750: 32\n"));
    QVERIFY(!text.contains("\n800: "));
    QVERIFY(calculate.result().remarks[0].startsWith(
        "20 of 8192 values lie above 6 sigma, the first 15"));
}

void TestPulsarActions::fourDispersionsReport()
{
    const ObservationData data =
        TestSupport::makeRecording({20000, 1, 33, 1}, [](int p, int, int, int) {
            return float(std::sin(2 * M_PI * 100 * p / 16384));
        });
    PulsarParameters parameters = parametersFor(0, 100);
    parameters.noise = "without";
    PulsarCalculate calculate(data, parameters);
    QVERIFY(calculate.run("sum4Dispersions"));
    QCOMPARE(
        calculate.result().description,
        QString("Sum of channels and fourier\nFixed number of points = 16384\n\nFirst harmonic:"
                "\n\nHarmonic number = 100"
                "\ndisp1 = 0.0 value = 32.00000\ndisp2 = 0.0 value = 32.00000"
                "\ndisp3 = 0.0 value = 32.00000\ndisp4 = 0.0 value = 32.00000"));
    const auto &curves = calculate.result().curves;
    QCOMPARE(curves[0][100], 32.15f);
    QCOMPARE(curves[3][100], 32.0f);

    parameters.harmonicNum = 8192;
    PulsarCalculate outside(data, parameters);
    QVERIFY(outside.run("sum4Dispersions"));
    QVERIFY(!outside.result().description.contains("First harmonic"));
    QCOMPARE(outside.result().curves.size(), std::size_t(4));
}

void TestPulsarActions::unknownAction()
{
    PulsarCalculate calculate({}, {});
    QVERIFY(!calculate.run("sumEverything"));
    QVERIFY(calculate.failure().contains("sumEverything"));
}

void TestPulsarActions::foldSharesSamples()
{
    // Period 2.5 samples, 2 bins of 1.25: the samples of two periods cover them with weights
    // (1, 0), (.25, .75), (.5 of the next period, .5), (.75, .25), (0, 1).
    const double samples[] = {1, 2, 3, 4, 5};
    const Tools::FoldedProfile profile = Tools::fold(samples, 5, 2.5, 2);
    QCOMPARE(profile.periods, 2.0);
    QCOMPARE(profile.weights[0], 2.5);
    QCOMPARE(profile.weights[1], 2.5);
    QCOMPARE(profile.bins[0], (1 + .25 * 2 + .5 * 3 + .75 * 4) / 2.5);
    QCOMPARE(profile.bins[1], (.75 * 2 + .5 * 3 + .25 * 4 + 5) / 2.5);
}

void TestPulsarActions::foldFindsThePulse_data()
{
    QTest::addColumn<double>("period");
    QTest::addColumn<double>("phase");
    QTest::addColumn<QString>("noise");
    QTest::newRow("polinom5") << 0.71452 << 0.3 << "polinom5";
    QTest::newRow("median") << 1.2745 << 0.85 << "median";
    QTest::newRow("backSum") << 0.2531 << 0.02 << "backSum";
    QTest::newRow("without") << 3.0321 << 0.5 << "without";
}

void TestPulsarActions::foldFindsThePulse()
{
    QFETCH(double, period);
    QFETCH(double, phase);
    QFETCH(QString, noise);
    Simulation simulation = oneRay();
    const double width = 0.05 * period;
    const double strength = 0.5;
    simulation.pulseTrains.push_back({1, 1, period, width, 0, strength, phase});
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.channel = 32;
    parameters.period = period;
    parameters.noise = noise;
    PulsarCalculate calculate(Simulator::makeRecording(simulation), parameters);
    QVERIFY2(calculate.run("sumPeriod"), qPrintable(calculate.failure()));
    const QString report = calculate.result().description;

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
    QCOMPARE(calculate.result().points, int(std::round(samplesPerPeriod)));
}

void TestPulsarActions::periodLimits_data()
{
    QTest::addColumn<double>("period");
    QTest::addColumn<bool>("accepted");
    // 40000 points of 12.4928 ms: 0.0249856 to 249.856 s.
    QTest::newRow("two samples") << 0.024986 << true;
    QTest::newRow("under two samples") << 0.024985 << false;
    QTest::newRow("half the stretch") << 249.855 << true;
    QTest::newRow("over half the stretch") << 249.857 << false;
    QTest::newRow("zero") << 0.0 << false;
    QTest::newRow("not a number") << std::nan("") << false;
}

void TestPulsarActions::periodLimits()
{
    QFETCH(double, period);
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.period = period;
    PulsarCalculate calculate(Simulator::makeRecording(oneRay()), parameters);
    QTEST(calculate.run("sumPeriod"), "accepted");
    QCOMPARE(calculate.failure().contains("Allowed: 0.0249856 to 249.856 s"),
             !calculate.failure().isEmpty());
}

void TestPulsarActions::selectionTexts_data()
{
    QTest::addColumn<int>("module");
    QTest::addColumn<int>("channel");
    QTest::addColumn<int>("ray");
    QTest::addColumn<QString>("text");
    QTest::newRow("module") << 2 << 1 << 1 << "Error of module, must be: module <2";
    QTest::newRow("channel") << 1 << 34 << 1 << "Error of channel, must be: channels <34";
    QTest::newRow("ray") << 1 << 33 << 2 << "Error ray, must be: rays <2";
}

void TestPulsarActions::selectionTexts()
{
    QFETCH(int, module);
    QFETCH(int, channel);
    QFETCH(int, ray);
    PulsarParameters parameters = parametersFor(0, 1);
    parameters.module = module;
    parameters.channel = channel;
    parameters.ray = ray;
    const ObservationData data =
        TestSupport::makeRecording({2000, 1, 33, 1}, [](int, int, int, int) { return 0.0f; });
    PulsarCalculate calculate(data, parameters);
    QVERIFY(!calculate.run("sumPeriod"));
    QTEST(calculate.failure(), "text");
}

void TestPulsarActions::scanFindsTheDispersion_data()
{
    QTest::addColumn<double>("dispersion");
    QTest::addColumn<double>("strength");
    QTest::addColumn<int>("harmonic"); // of the pulse train
    QTest::newRow("strong, low DM") << 12.0 << 3.0 << 6;
    QTest::newRow("strong, high DM") << 60.0 << 3.0 << 4;
    QTest::newRow("weak") << 26.2 << 0.8 << 6;
    QTest::newRow("high harmonic") << 26.2 << 2.0 << 12;
}

void TestPulsarActions::scanFindsTheDispersion()
{
    QFETCH(double, dispersion);
    QFETCH(double, strength);
    QFETCH(int, harmonic);
    // The period is a whole part of the transform, so that its harmonics fall on bins.
    const int fundamental = 256;
    Simulation simulation = oneRay();
    const double period = 16384 * 0.0124928 / fundamental;
    simulation.pulseTrains.push_back({1, 1, period, 0.025, dispersion, strength, 0.2});
    PulsarParameters parameters = parametersFor(dispersion * 1.1, harmonic * fundamental);
    PulsarCalculate calculate(Simulator::makeRecording(simulation), parameters);
    QVERIFY2(calculate.run("sumAllDispersions"), qPrintable(calculate.failure()));
    const QString report = calculate.result().description;
    const double found = numberAfter(report, "DM =");
    const double error = numberAfter(report, "+-");
    // Three standard deviations: the seeds are fixed, so this neither flickers nor is it tuned.
    QVERIFY2(std::abs(found - dispersion) < 3 * error, qPrintable(report));
    QVERIFY2(error < 0.1 * dispersion, qPrintable(report));
    QCOMPARE(calculate.result().points, 201);
    QVERIFY(report.contains("Polinom extremums"));
    QCOMPARE(calculate.result().names[1], QString("approximation by polinom 3"));
}

void TestPulsarActions::scanOfNoiseClaimsNothing()
{
    for (const int harmonic : {1, 30, 1000, 3000, 8000}) {
        PulsarCalculate calculate(Simulator::makeRecording(oneRay()),
                                  parametersFor(26.2, harmonic));
        QVERIFY(calculate.run("sumAllDispersions"));
        const QString report = calculate.result().description;
        QVERIFY2(report.contains("does not tell the dispersion"), qPrintable(report));
    }
}

void TestPulsarActions::scanEqualsSeparateSpectra_data()
{
    QTest::addColumn<QString>("noise");
    QTest::addColumn<int>("averageCount");
    QTest::addColumn<bool>("withNull");
    QTest::addColumn<int>("firstPoint");
    QTest::newRow("polinom5") << "polinom5" << 0 << false << 0;
    QTest::newRow("median, padded") << "median" << 1 << true << 100;
    QTest::newRow("backSum at the begin") << "backSum" << 0 << false << 5;
    QTest::newRow("without, at the end") << "without" << 2 << false << 40000 - 16384 - 20;
}

void TestPulsarActions::scanEqualsSeparateSpectra()
{
    QFETCH(QString, noise);
    QFETCH(int, averageCount);
    QFETCH(bool, withNull);
    QFETCH(int, firstPoint);
    Simulation simulation = oneRay();
    simulation.pulseTrains.push_back({1, 1, 0.8, 0.05, 26.2, 2, 0});
    const ObservationData data = Simulator::makeRecording(simulation);
    PulsarParameters parameters = parametersFor(26.2, 300);
    parameters.noise = noise;
    parameters.averageCount = averageCount;
    parameters.withNull = withNull;
    parameters.firstPoint = firstPoint;
    PulsarCalculate scan(data, parameters);
    QVERIFY2(scan.run("sumAllDispersions"), qPrintable(scan.failure()));

    const int length = Tools::averagedLength(16384, averageCount, withNull);
    auto spectrum = std::vector<double>(std::size_t(length / 2));
    PulsarCalculate separate(data, parameters);
    for (int trial = 0; trial <= 200; trial += 20) {
        QVERIFY(separate.getFourierOfSum(spectrum.data(), 16384, 52.4 * trial / 200, averageCount,
                                         withNull));
        // Both errors are those of double arithmetic; the curve itself is a float.
        const float expected = float(spectrum[300]);
        QVERIFY2(std::abs(scan.result().curves[0][std::size_t(trial)] - expected) <=
                     1e-6f * expected,
                 qPrintable(QString::number(trial)));
    }
}

void TestPulsarActions::multiScans()
{
    Simulation simulation = oneRay();
    simulation.pulseTrains.push_back({1, 1, 0.8, 0.05, 26.2, 2, 0});
    const ObservationData data = Simulator::makeRecording(simulation);
    PulsarParameters parameters = parametersFor(26.2, 500);
    parameters.averageCount = 2;
    PulsarCalculate averages(data, parameters);
    QVERIFY(averages.run("sumMultiDispersions"));
    QCOMPARE(averages.result().curves.size(), std::size_t(3));
    QVERIFY(averages.result().description.contains("\nChange: averages (see colors)\n\n"));
    QCOMPARE(averages.result().multi[2].name, QString("averaging number 2"));
    QCOMPARE(averages.result().multi[1].curves[0], averages.result().curves[1]);

    parameters.averageCount = 0;
    parameters.startDelta = 5000;
    PulsarCalculate starts(data, parameters);
    QVERIFY(starts.run("sumTimeDispersions"));
    // 0, 5000 .. 20000; 25000 leaves no 16384 points.
    QCOMPARE(starts.result().curves.size(), std::size_t(5));
    QVERIFY(starts.result().description.contains("\nChange: first point (see colors)"));
    parameters.startDelta = 0;
    PulsarCalculate sixteenth(data, parameters);
    QVERIFY(sixteenth.run("sumTimeDispersions"));
    QCOMPARE(sixteenth.result().curves.size(), std::size_t(8));
    QCOMPARE(sixteenth.result().multi[1].name, QString("first point 2500"));
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
    PulsarCalculate calculate(data, parameters);
    QVERIFY(calculate.run("sumChannelsDemoNoise"));
    const PulsarResult &result = calculate.result();
    QVERIFY2(result.description.contains("Deleted steps = 32"), qPrintable(result.description));
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

// Amplitudes that were computed from the same files with separate numeric code.
void TestPulsarActions::realSpectra_data()
{
    using Bins = QVector<int>;
    using Amplitudes = QVector<double>;
    QTest::addColumn<QString>("file");
    QTest::addColumn<double>("dispersion");
    QTest::addColumn<QVector<int>>("bins");
    QTest::addColumn<QVector<double>>("amplitudes");
    QTest::newRow("B0329+54 at 1427 MHz")
        << "b0329_54_1427MHz.pnt" << 0.0 << Bins{0, 229, 459, 688, 917, 1147, 1376, 1605, 1834}
        << Amplitudes{137.80, 2.687, 2.110, 3.006, 2.273, 2.361, 2.287, 2.948, 2.127};
    QTest::newRow("B1508+55") << "b1508_55_1422MHz.pnt" << 0.0
                              << Bins{89, 177, 266, 354, 443, 532, 620, 709}
                              << Amplitudes{1.442, 2.390, 1.797, 1.661, 2.414, 1.600, 2.556, 1.260};
    QTest::newRow("J1807-0847") << "j1807_0847_820MHz.pnt" << 0.0
                                << Bins{49, 98, 148, 197, 246, 295, 344, 393}
                                << Amplitudes{43880, 36040, 31360, 37590,
                                              38550, 35690, 29370, 19670};
    QTest::newRow("B0329+54 at 611 MHz")
        << "b0329_54_611MHz_folded.pnt" << 26.76 << Bins{16, 32, 48, 64, 80, 96, 112, 128, 960}
        << Amplitudes{250.4, 251.9, 238.3, 239.9, 230.4, 232.3, 217.4, 202.1, 61.3};
}

void TestPulsarActions::realSpectra()
{
    QFETCH(QString, file);
    QFETCH(double, dispersion);
    QFETCH(QVector<int>, bins);
    QFETCH(QVector<double>, amplitudes);
    const QString path = TestSupport::realRecording(file);
    if (path.isEmpty())
        QSKIP("the recording is not on this machine");
    PulsarParameters parameters = parametersFor(dispersion, 1);
    parameters.noise = "without";
    PulsarCalculate calculate(Reader::readDataFile(nullptr, path), parameters);
    QVERIFY2(calculate.run("sumChannelsAndFourier"), qPrintable(calculate.failure()));
    for (int i = 0; i < bins.size(); ++i) {
        const double found = double(calculate.result().curves[0][std::size_t(bins[i])]);
        // The expected values have three or four digits.
        QVERIFY(std::abs(found / amplitudes[i] - 1) < 2e-3);
    }
}

void TestPulsarActions::realBurst()
{
    const QString path = TestSupport::realRecording("frb180417_1297MHz.pnt");
    if (path.isEmpty())
        QSKIP("the recording is not on this machine");
    const ObservationData data = Reader::readDataFile(nullptr, path);
    const double maxima[] = {4436.7, 4510.4, 4420.7};
    const int points[] = {1614, 1614, 1615};
    for (int ray = 0; ray < 3; ++ray) {
        const std::vector<double> sum = Tools::sumChannels(data, 474.8, 0, ray);
        const auto top = std::max_element(sum.begin(), sum.end());
        QCOMPARE(int(top - sum.begin()), points[ray]);
        QVERIFY(std::abs(*top - maxima[ray]) < 0.06);
    }
}

void TestPulsarActions::realFolded611()
{
    const QString path = TestSupport::realRecording("b0329_54_611MHz_folded.pnt");
    if (path.isEmpty())
        QSKIP("the recording is not on this machine");
    PulsarParameters parameters = parametersFor(26.76, 960);
    parameters.noise = "without";
    PulsarCalculate calculate(Reader::readDataFile(nullptr, path), parameters);
    QVERIFY(calculate.run("sumAllDispersions"));
    const QString report = calculate.result().description;
    const double maximum = numberAfter(report, "Maximum:\ndisp =");
    QVERIFY2(maximum >= 22 && maximum <= 24, qPrintable(report));
    const QRegularExpression cubic("disp = ([0-9.]+) value = \\S+ \\(maximum\\)");
    const double extremum = cubic.match(report).captured(1).toDouble();
    QVERIFY2(extremum >= 24 && extremum <= 26, qPrintable(report));
}

void TestPulsarActions::realJ1807()
{
    const QString path = TestSupport::realRecording("j1807_0847_820MHz.pnt");
    if (path.isEmpty())
        QSKIP("the recording is not on this machine");
    const ObservationData data = Reader::readDataFile(nullptr, path);
    PulsarParameters parameters = parametersFor(0, 1);
    double bestSnr = 0;
    double bestPeriod = 0;
    for (int k = -20; k <= 20; ++k) {
        parameters.period = 0.16372 + k * 5e-6;
        PulsarCalculate calculate(data, parameters);
        QVERIFY(calculate.run("sumPeriod"));
        const double snr = numberAfter(calculate.result().description, "S/N =");
        if (snr > bestSnr) {
            bestSnr = snr;
            bestPeriod = parameters.period;
        }
    }
    QVERIFY2(std::abs(bestPeriod - 0.16372) <= 0.00002,
             qPrintable(QString::number(bestPeriod, 'f', 6)));
    QVERIFY(bestSnr > 100);
}

ZRT_UNIT_TEST_MAIN(TestPulsarActions)
#include "tst_pulsaractions.moc"
