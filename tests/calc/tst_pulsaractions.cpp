#include "calc/actions.h"
#include "calc/banddelays.h"
#include "calc/channelsum.h"
#include "calc/fourier.h"
#include "calc/leveljumps.h"
#include "calc/pulsar/bandfold.h"
#include "data/reader.h"

#include <map>

using namespace TestSupport;
using Simulator::Simulation;
using P = PulsarParameters;

namespace {

ObservationData pulsar()
{
    Simulation simulation = oneRay();
    simulation.pulseTrains.push_back({1, 1, 0.8, 0.05, 26.2, 2, 0});
    return Simulator::makeRecording(simulation);
}

// Amplitudes that were computed from the same files with separate numeric code.
void compareSpectrum(const ObservationData &data, double dispersion,
                     const std::map<std::size_t, float> &amplitudes)
{
    const PulsarParameters parameters = with(parametersFor(dispersion, 1), &P::noise, "without");
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
        const QString report = resultOf("sumPeriod", data, parameters).description();
        best = std::max(best, {numberAfter(report, "S/N ="), parameters.period});
    }
    QVERIFY(best.first > 100);
    QVERIFY2(std::abs(best.second - 0.16372) <= 0.00002,
             qPrintable(QString::number(best.second, 'f', 6)));
}

void spectrumAndScan329(const ObservationData &data)
{
    compareSpectrum(data, 26.76, {{16, 250.4f}, {32, 251.9f}, {80, 230.4f}, {960, 61.3f}});
    const PulsarParameters parameters = with(parametersFor(26.76, 960), &P::noise, "without");
    const QString report = resultOf("sumAllDispersions", data, parameters).description();
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

class TestPulsarActions : public QObject {
    Q_OBJECT

private slots:
    void reports();
    void refusals();
    void foldFindsThePulse();
    void foldOfAllBands();
    void scanFindsTheDispersion();
    void scanOfNoiseClaimsNothing();
    void scanEqualsSeparateSpectra();
    void cutsOutWhatIsListed();
    void foldWithoutHum();
    void cancelEndsAScan();
    void realRecordings();
};

void TestPulsarActions::reports()
{
    const PulsarParameters parameters = with(parametersFor(0, 100), &P::noise, "without");
    const PulsarResult one = resultOf("sumChannelsAndFourier", sines(100, 1), parameters);
    // Sigma of 8192 values of which one is 32 (the float samples add about 1e-6): 32 / sqrt(8192).
    const QString expected = "Sigma = 0.353553\n6 sigma = 2.12132\n\nHarmonics >= 6 sigma:\n\n"
                             "100: 32\n\nFirst harmonic:\nnum = 100\nvalue = 32\n";
    QCOMPARE(one.description(), expected);
    QCOMPARE(one.points, 8192);
    QCOMPARE(one.curves[2][8191], float(6 * 32 / std::sqrt(8192.0)));

    const PulsarResult twenty = resultOf("sumChannelsAndFourier", sines(50, 20), parameters);
    QVERIFY(twenty.description().contains("\n750: 32\n"));
    QVERIFY(!twenty.description().contains("\n800: "));
    QVERIFY(notesOf(twenty)[0].contains("\n20 of 8192 values lie above 6 sigma, the first 15"));
}

void TestPulsarActions::refusals()
{
    const PulsarParameters good = parametersFor(0, 1);
    // 40000 points of 12.4928 ms; a period has two samples and half the stretch holds it.
    const char *const limits = "Allowed: 0.0249856 to 249.856 s";
    const struct {
        PulsarParameters parameters;
        QString text;
    } rows[] = {{with(good, &P::module, 2), "Error of module, must be: module <2"},
                {with(good, &P::channel, 34), "Error of channel, must be: channels <34"},
                {with(good, &P::ray, 2), "Error ray, must be: rays <2"},
                {with(good, &P::period, 0.024986), ""},
                {with(good, &P::period, 0.024985), limits},
                {with(good, &P::period, 249.855), ""},
                {with(good, &P::period, 249.857), limits},
                {with(good, &P::period, std::nan("")), limits}};
    const ObservationData data = Simulator::makeRecording(oneRay());
    for (const auto &[parameters, text] : rows) {
        PulsarCalculate calculate(data, parameters);
        QCOMPARE(calculate.run("sumPeriod"), text.isEmpty());
        QVERIFY2(calculate.failure().contains(text), qPrintable(calculate.failure()));
    }
}

// A pulse is found at its phase, as high as the matched filter has it.
void TestPulsarActions::foldFindsThePulse()
{
    for (const auto &[period, phase, noise] : {std::tuple(0.71452, 0.3, "polinom5"),
                                               {0.2531, 0.02, "backSum"},
                                               {3.0321, 0.5, "without"}}) {
        Simulation simulation = oneRay();
        const double width = 0.05 * period;
        const double strength = 0.5;
        simulation.pulseTrains.push_back({1, 1, period, width, 0, strength, phase});
        PulsarParameters parameters = with(parametersFor(0, 1), &P::period, period);
        parameters.channel = 32;
        parameters.noise = noise;
        const PulsarResult result =
            resultOf("sumPeriod", Simulator::makeRecording(simulation), parameters);

        // A sample is the mean over one step around its time: phase 0 of the fold is half a step
        // before the first sample's time.
        const double step = simulation.msPerPoint / 1000;
        const double distance = std::remainder(
            numberAfter(result.description(), "Phase of peak =") - phase - step / 2 / period, 1.0);
        QVERIFY2(std::abs(distance) < 0.02, qPrintable(result.description()));

        // Matched boxcar on a Gaussian of that width: 0.94 of the matched filter's
        // A sqrt(N width / period) (pi / (4 ln 2))^(1/4) / sqrt(2)^(1/2) per sample noise 1.
        const double samplesPerPeriod = period / step;
        const double sigmaOfPulse = width / 2.3548 / step; // samples
        const double energy = strength * strength * std::sqrt(M_PI) * sigmaOfPulse;
        const double matched = std::sqrt(energy * simulation.npoints / samplesPerPeriod);
        const double snr = numberAfter(result.description(), "S/N =");
        QVERIFY2(snr > 0.75 * matched && snr < 1.15 * matched,
                 qPrintable(QString("%1, matched filter %2").arg(snr).arg(matched)));
        QCOMPARE(result.points, int(std::round(samplesPerPeriod)));
    }
}

// Dispersions at the ends of scans and inside come out within their errors, and without a bias.
// The sum gathers what the bands share, and each band has the pulse at the phase of the sum where
// the dispersion is right, by its delay later where it is not.
void TestPulsarActions::foldOfAllBands()
{
    Simulation simulation = oneRay();
    const double step = simulation.msPerPoint / 1000;
    const double period = 1.274;
    simulation.pulseTrains.push_back({1, 1, period, 0.06, 26.2, 0.7, 0.3});
    const ObservationData data = Simulator::makeRecording(simulation);
    PulsarParameters parameters = with(parametersFor(26.2, 1), &P::period, period);
    parameters.channelsOff = "5";
    const PulsarResult sum = resultOf("sumPeriodOfBands", data, parameters);
    const PulsarResult one = resultOf("sumPeriod", data, with(parameters, &P::channel, 32));
    const double gain =
        numberAfter(sum.description(), "S/N =") / numberAfter(one.description(), "S/N =");
    QVERIFY2(std::abs(gain / std::sqrt(31.0) - 1) < 0.15, qPrintable(QString::number(gain)));
    QCOMPARE(sum.points, int(std::round(period / step)));

    for (const double dispersion : {26.2, 0.0}) {
        const PulsarResult result =
            resultOf("sumPeriodOfBands", data, with(parameters, &P::dispersion, dispersion));
        const BandFold &bands = *result.bands;
        QCOMPARE(bands.bands(), 32);
        QCOMPARE(bands.bins, result.points);
        QCOMPARE(bands.frequencies[31], data.fbands[31]);
        QVERIFY(std::isnan(bands.profile(4)[0]));
        const Tools::BandDelays delays(data, 32, 26.2, Tools::ShiftRounding::Nearest);
        for (const int band : {0, 1, 16, 30}) {
            const std::vector<float> row = bands.profile(band);
            const auto top = double(std::max_element(row.begin(), row.end()) - row.begin());
            const double late = dispersion == 0 ? delays.delay(band) : 0; // samples
            const double expected = 0.3 * period / step + late;
            QVERIFY2(std::abs(std::remainder(top - expected, period / step)) < 5,
                     qPrintable(QString("%1: %2").arg(band).arg(top)));
        }
    }
    PulsarCalculate calculate(data, with(parameters, &P::dispersion, 1e5));
    QVERIFY(!calculate.validate("sumPeriodOfBands"));
    QCOMPARE(calculate.failedParameter(), QString("dispersion"));
}

void TestPulsarActions::scanFindsTheDispersion()
{
    // Without a dispersion that was typed the scan reaches 52.4.
    for (const auto &[dispersion, typed] :
         {std::pair(0.0, 0.0), {3.0, 0.0}, {20.0, 0.0}, {60.0, 66.0}}) {
        double sum = 0;
        int withinTwo = 0;
        const int seeds = 7;
        for (int seed = 1; seed <= seeds; ++seed) {
            Simulation simulation = oneRay();
            simulation.npoints = 17000;
            simulation.seed = quint32(seed);
            simulation.pulseTrains.push_back(
                {1, 1, 16384 * 0.0124928 / 500.4, 0.02, dispersion, 0.25, 0.08 * seed});
            const PulsarResult result =
                resultOf("sumAllDispersions", Simulator::makeRecording(simulation),
                         parametersFor(typed, 1001));
            QCOMPARE(result.points, 201);
            const double error = numberAfter(result.description(), "+-");
            const double off = numberAfter(result.description(), "DM =") - dispersion;
            QVERIFY2(error < 2, qPrintable(result.description()));
            sum += off / error;
            withinTwo += std::abs(off) < 2 * error;
        }
        // The mean of seven errors has the error 0.38.
        QVERIFY2(std::abs(sum / seeds) < 1.2, qPrintable(QString::number(sum / seeds)));
        QVERIFY2(withinTwo >= seeds - 1, qPrintable(QString::number(withinTwo)));
    }
}

void TestPulsarActions::scanOfNoiseClaimsNothing()
{
    for (const int harmonic : {1, 30, 1000, 3000, 8000}) {
        const QString report = resultOf("sumTimeDispersions", Simulator::makeRecording(oneRay()),
                                        with(parametersFor(26.2, harmonic), &P::startDelta, 10000))
                                   .description();
        QCOMPARE(report.count("Maximum:"), 3);
        QCOMPARE(report.count("does not tell the dispersion"), 1);
        QVERIFY2(!report.contains("DM ="), qPrintable(report));
    }
}

// Each trial of a scan is the spectrum of that dispersion.
void TestPulsarActions::scanEqualsSeparateSpectra()
{
    const struct {
        const char *noise;
        int averageCount;
        bool withNull;
        int firstPoint;
    } rows[] = {{"polinom5", 0, false, 0},
                {"median", 1, true, 100},
                {"backSum", 0, false, 5},
                {"without", 2, false, 40000 - 16384 - 20}}; // at the end
    const ObservationData data = pulsar();
    for (const auto &[noise, averageCount, withNull, firstPoint] : rows) {
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
            QVERIFY(separate.getFourierOfSum(spectrum.data(), 16384, 52.4 * trial / 200,
                                             averageCount, withNull));
            // Both errors are those of double arithmetic; the curve itself is a float.
            const float expected = float(spectrum[300]);
            QVERIFY2(std::abs(scan[std::size_t(trial)] - expected) <= 1e-6f * expected,
                     qPrintable(QString("%1: %2").arg(noise).arg(trial)));
        }
    }
}

// A listed line goes and the one beside its band stays; what is no list of frequencies is refused.
void TestPulsarActions::cutsOutWhatIsListed()
{
    const ObservationData data = sines(2000, 2); // of step 12.4928 ms: 9.771 and 19.543 Hz
    PulsarParameters parameters = with(parametersFor(0, 1), &P::noise, "without");
    const auto amplitudes = [&](const QString &list) {
        const PulsarResult result =
            resultOf("sumChannelsAndFourier", data, with(parameters, &P::cut, list));
        return std::pair(result.curves[0][2000], result.curves[0][4000]);
    };
    const auto [low, high] = amplitudes("9.77");
    QVERIFY2(low < 0.01F * 32 && std::abs(high - 32) < 0.1F,
             qPrintable(QString("%1 %2").arg(low).arg(high)));
    const auto [both, none] = amplitudes(" 9.7-9.8,19.54,9.8-9.9");
    QVERIFY(both < 0.01F * 32 && none < 0.01F * 32);
    // The upper line is where 60.503 Hz of mains shows.
    const auto [kept, hum] = amplitudes("hum");
    QVERIFY(std::abs(kept - 32) < 0.1F && hum < 0.01F * 32);
    // The sampling shows up to 40.02 Hz.
    for (const char *const list : {"0.05", "39.99", "0.001,40.02"})
        QVERIFY2(PulsarCalculate(data, with(parameters, &P::cut, list))
                     .validate("sumChannelsAndFourier"),
                 list);
    for (const char *const list :
         {"50", "40.1", "0", "9.9-9.7", "0-0.05", "ten", "9.7-9.8-9.9", "nan"}) {
        PulsarCalculate calculate(data, with(parameters, &P::cut, list));
        for (const char *const action :
             {"sumChannelsAndFourier", "sum4Dispersions", "sumPeriod", "sumPeriodOfBands"}) {
            QVERIFY2(!calculate.validate(action), list);
            QCOMPARE(calculate.failedParameter(), QString("cutLines"));
        }
    }
}

// A line ten times as strong as the noise hides the pulses from the fold; without it the S/N is
// what it was, in the sum and in every band.
void TestPulsarActions::foldWithoutHum()
{
    Simulation simulation = oneRay();
    simulation.npoints = 6000;
    const double period = 1.3;
    simulation.pulseTrains.push_back({1, 1, period, 0.03, 0, 0.8, 0.3});
    const ObservationData clean = Simulator::makeRecording(simulation);
    const double sigma = Tools::robustSigma(clean.samples[0][0][0], clean.npoints);
    const ObservationData disturbed =
        TestSupport::makeRecording({clean.npoints}, [&](int p, int, int band, int) {
            return clean.samples[0][band][0][p] + float(10 * sigma * std::sin(1.7 * p)); // 21.66 Hz
        });
    const PulsarParameters parameters =
        with(with(parametersFor(0, 1), &P::period, period), &P::channel, 32);
    const auto folded = [&](const char *action, const ObservationData &data, const QString &cut) {
        return resultOf(action, data, with(parameters, &P::cut, cut));
    };
    const auto snrOf = [](const PulsarResult &result) {
        return numberAfter(result.description(), "S/N =");
    };
    const auto peakOf = [](const PulsarResult &result) {
        const std::vector<float> row = result.bands->profile(7);
        return *std::max_element(row.begin(), row.end());
    };
    for (const char *const action : {"sumPeriod", "sumPeriodOfBands"}) {
        const PulsarResult expected = folded(action, clean, "");
        const PulsarResult cut = folded(action, disturbed, "21.66");
        QVERIFY2(snrOf(folded(action, disturbed, "")) < snrOf(expected) / 2, action);
        QVERIFY2(std::abs(snrOf(cut) / snrOf(expected) - 1) < 0.05, action);
        QVERIFY2(std::abs(snrOf(folded(action, clean, "20-39")) / snrOf(expected) - 1) < 0.2,
                 action);
        if (expected.bands)
            QVERIFY(std::abs(peakOf(cut) / peakOf(expected) - 1) < 0.1F);
    }
}

void TestPulsarActions::cancelEndsAScan()
{
    PulsarCalculate calculate(pulsar(), parametersFor(26.2, 1000));
    int calls = 0;
    connect(&calculate, &PulsarCalculate::progress, [&] {
        if (++calls == 10)
            calculate.cancel();
    });
    QVERIFY(!calculate.run("sumAllDispersions"));
    QCOMPARE(calls, 10);
    QVERIFY(calculate.wasCancelled() && calculate.failure().isEmpty());
}

void TestPulsarActions::realRecordings()
{
    const struct {
        const char *name;
        void (*check)(const ObservationData &);
    } rows[] = {{"j1807_0847_820MHz.pnt", spectrumAndPeriod1807},
                {"b0329_54_611MHz_folded.pnt", spectrumAndScan329},
                {"frb180417_1297MHz.pnt", burstInThreeRays}};
    for (const auto &[name, check] : rows) {
        const QString path = realRecording(name);
        if (path.isEmpty())
            QSKIP("there is no such recording in ../shared/data");
        check(Reader::readDataFile(nullptr, path));
    }
}

ZRT_UNIT_TEST_MAIN(TestPulsarActions)
#include "tst_pulsaractions.moc"
