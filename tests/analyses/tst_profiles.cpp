#include "analyses/profiles/arrivals.h"
#include "analyses/profiles/profileparameters.h"
#include "analyses/profiles/profilescan.h"
#include "coords/barycentre.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QDir>
#include <cmath>
#include <random>

using namespace Profiles;

namespace {

constexpr double period = 0.5;      // s at the telescope
constexpr double step = 12.4928e-3; // s
constexpr int points = 4096;
constexpr int bins = 32;
constexpr double dispersion = 30;

// A stretch whose phase runs evenly.
DayPhase evenPhase(double frequency, int parts, int length = points)
{
    DayPhase phase;
    phase.frequency = frequency;
    for (int part = 0; part <= parts; ++part)
        phase.turns.push_back(frequency * length * step * part / parts);
    return phase;
}

struct DaySource {
    unsigned seed = 1;
    double height = 0;   // of a pulse in one band, sigma
    double width = 0.05; // full width at half maximum, turns
    double period = ::period;
    double dispersion = ::dispersion;
    double phase = 0.3; // of the middle of the pulse at the begin
};

// Noise of level 100 and sigma 2 with Gaussian pulses, delayed in each band by its own delay.
ObservationData recordingOf(const DaySource &source)
{
    std::mt19937 random(source.seed);
    std::normal_distribution<double> normal;
    ObservationData data = TestSupport::makeRecording({points + 200, 1, 33, 1},
                                                      [](int, int, int, int) { return 0.0F; });
    const auto block = SampleBlock::allocate(1, 33, 1, data.npoints);
    ProfileDay day;
    day.frequencies.assign(data.fbands.begin(), data.fbands.begin() + 32);
    for (int band = 0; band < 32; ++band) {
        const double delay = source.dispersion * delayPerDispersion(day, band);
        for (int i = 0; i < data.npoints; ++i) {
            const double turn = ((i + 0.5) * step - delay) / source.period - source.phase;
            const double off = (turn - std::round(turn)) / source.width;
            block->ray(0, band, 0)[i] = float(
                100 + 2 * (normal(random) + source.height * std::exp(-4 * M_LN2 * off * off)));
        }
    }
    data.samples = Samples(block);
    return data;
}

ProfileDay dayOf(const DaySource &source, int length = points)
{
    ProfileDay day = foldDay(recordingOf(source), 0, length, {dispersion, "without", false, bins},
                             evenPhase(1 / period, 8, length));
    day.begin = day.utc = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    day.direction = {1, 0.5};
    return day;
}

// A day as its product, without the work on samples.
ProfileDay quickDay(std::mt19937 &random, double snr, double phase, double sigma = 0.3)
{
    std::normal_distribution<double> normal;
    ProfileDay day;
    day.begin = day.utc = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC);
    day.direction = {1, 0.5};
    day.seconds = points * step;
    day.dispersion = dispersion;
    day.bins = bins;
    day.frequencies = {109, 111};
    day.used = {true, true};
    day.phase = evenPhase(1 / period, 2);
    day.noise = {sigma, 0};
    const Tools::Harmonics pulse = Tools::gaussianTemplate(0.08, bins, 0);
    double norm = 0;
    for (int k = 1; k < bins / 2; ++k)
        norm += 2 * std::norm(pulse[std::size_t(k)]) / day.noise.harmonicVariance(k, bins);
    Tools::Harmonics turned(pulse.size());
    Tools::addTurned(pulse, phase, snr / std::sqrt(norm), turned);
    const std::vector<double> profile = Tools::profileOf(turned);
    for (int row = 0; row < 4; ++row) {
        for (const double value : profile)
            day.values.push_back(float(value + 2 * sigma * normal(random)));
    }
    return day;
}

} // namespace

class TestProfiles : public QObject {
    Q_OBJECT

private slots:
    void parFiles_data();
    void parFiles();
    void phaseFollowsTheEarth();
    void noiseOfADay();
    void driftIsNoNoise();
    void partsBeginWithTheirSamples();
    void pulseComesBack();
    void noiseIsNeverAligned();
    void templateAlignsWhatEphemerisCannot();
    void stackGrowsWithDays();
    void arrivalTimes();
    void parametersAreChecked_data();
    void parametersAreChecked();
    void radiometerEquation();
};

void TestProfiles::parFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("problem"); // a part of it; empty: none
    const QByteArray whole = "PSR B0329+54\nF0 1.4D0 1 1e-9\nF1 -4.01e-15\nPEPOCH 46473\n"
                             "RAJ 03:32:59.4\nDECJ +54:34:43.3\nDM 26.76\n# a remark\n";
    QTest::newRow("whole") << whole << "";
    QTest::newRow("units TDB") << whole + "UNITS TDB\n"
                               << "";
    QTest::newRow("no F0") << QByteArray("PSR X\nP0 0.7\n") << "no F0";
    QTest::newRow("other units") << whole + "UNITS TCB\n"
                                 << "units are TCB";
    QTest::newRow("orbit") << whole + "BINARY ELL1\nPB 1.5\n"
                           << "binary model ELL1";
    QTest::newRow("no number") << QByteArray("F0 fast\n") << "F0 \"fast\" is no number";
    QTest::newRow("F1 without epoch") << QByteArray("F0 1.4\nF1 -1e-15\n") << "PEPOCH";
    QTest::newRow("no declination") << QByteArray("F0 1\nRAJ 03:32\nDECJ here\n") << "DECJ";
    QTest::newRow("nothing") << QByteArray() << "no F0";
}

void TestProfiles::parFiles()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, problem);
    const ReadEphemeris read = parseEphemeris(text);
    if (!problem.isEmpty()) {
        QVERIFY2(read.problem.contains(problem), qPrintable(read.problem));
        return;
    }
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.ephemeris.frequency, 1.4);
    QCOMPARE(read.ephemeris.derivative, -4.01e-15);
    QCOMPARE(read.ephemeris.epoch, 46473.0);
    QCOMPARE(*read.ephemeris.dispersion, 26.76);
    QVERIFY(std::abs(read.ephemeris.position->alfa - (3 + 32.99 / 60) * M_PI / 12) < 1e-6);
    QCOMPARE(read.ephemeris.ignored, QStringList{"PSR"});
    Ephemeris steep;
    steep.frequency = 2;
    steep.derivative = 0.5;
    steep.second = 6;
    QCOMPARE(steep.turnsAt(2), 2 * 2 + 0.5 * 2 + 6 * 8 / 6.0);
}

void TestProfiles::phaseFollowsTheEarth()
{
    const QDateTime begin({2015, 4, 1}, {12, 0}, Qt::UTC);
    const Tools::SkyPosition direction = {1, 0.5};
    Ephemeris ephemeris;
    ephemeris.frequency = 2;
    ephemeris.epoch = 57000;
    const DayPhase phase = phaseOfDay(ephemeris, begin, 200, direction, 8);
    const Tools::BarycentricView middle =
        Tools::barycentricView(Tools::ownSite(), begin.addSecs(100), direction);
    // The site turns meanwhile: 5e-11 of the velocity of light a second.
    QVERIFY(std::abs(phase.frequency - middle.topocentric(2)) < 1e-9);
    QVERIFY(phase.turns.front() >= 0 && phase.turns.front() < 1);
    QVERIFY(std::abs(phase.at(0.5) - phase.turns[4]) < 1e-12);
    // Without a direction everything is as the telescope sees it.
    const DayPhase still = phaseOfDay(ephemeris, begin, 200, {NAN, NAN}, 8);
    QVERIFY(!still.isTurned);
    QVERIFY(std::abs(still.frequency - 2) < 1e-8);
}

void TestProfiles::noiseOfADay()
{
    const ProfileDay day = dayOf({});
    QVERIFY2(day.isWhole(), qPrintable(day.problem));
    QCOMPARE(day.usedBands(), 32);
    // A sample of the mean of 32 bands has 1 / root of 32, a bin of 128 samples root of 128 less.
    const double expected = 1 / std::sqrt(32.0 * points / bins);
    QVERIFY2(std::abs(day.noise.sigma / expected - 1) < 0.08,
             QByteArray::number(day.noise.sigma / expected));
    const double samplesOfBin = period / step / bins;
    QVERIFY(std::abs(day.noise.shared * 3 * samplesOfBin - 1) < 0.05);
    QVERIFY(std::abs(day.unit - 2) < 0.02);
    QVERIFY(std::abs(day.chiSquared.reduced - 1) < 4 * std::sqrt(2.0 / 31));
}

void TestProfiles::driftIsNoNoise()
{
    DaySource source;
    source.height = 0.3;
    source.width = 0.3;
    source.period = period * (1 + 2e-3); // 0.2 turns over the stretch
    const double ratio = dayOf(source).noise.sigma * std::sqrt(32.0 * points / bins);
    QVERIFY2(std::abs(ratio - 1) < 0.1, QByteArray::number(ratio));
}

// Eighths of this stretch begin within samples.
void TestProfiles::partsBeginWithTheirSamples()
{
    DaySource source;
    source.height = 5;
    const ProfileStack stack = stackDays({dayOf(source, points - 4)}, {});
    const double off = stack.pulse.phase - source.phase;
    QVERIFY2(std::abs(off) < 5 * stack.pulse.phaseError && std::abs(off) < 1e-3,
             QByteArray::number(off));
}

// Folded at a period and a dispersion that are a little off, the pulse gives its own ones.
void TestProfiles::pulseComesBack()
{
    int periods = 0;
    int dispersions = 0;
    int widths = 0;
    constexpr int count = 12;
    for (unsigned seed = 1; seed <= count; ++seed) {
        DaySource source;
        source.seed = seed;
        source.height = 0.2;
        source.period = period * (1 + 4e-4);
        source.dispersion = dispersion + 1;
        const std::vector<ProfileDay> products = {dayOf(source)};
        StackChoice choice;
        choice.moreDispersion = 0.5;
        const ProfileStack stack = stackDays(products, choice);
        QVERIFY(stack.snr.boxcar.snr > 5);
        ScanRequest request;
        request.period = period;
        request.dispersion = dispersion;
        request.mapSteps = 1;
        const ProfileScan scan = scanDays(products, choice, stack, request);
        QVERIFY(scan.periods.isInside && scan.dispersions.isInside);
        // The cubic's maximum lies near by, wherever the noise bends its ends.
        QVERIFY(std::any_of(
            scan.periods.extremes.begin(), scan.periods.extremes.end(), [&](double extreme) {
                return std::abs(extreme - scan.periods.best) < 2 * scan.periods.error;
            }));
        periods += std::abs(scan.periods.best - source.period) < 2 * scan.periods.error;
        dispersions +=
            std::abs(scan.dispersions.best - source.dispersion) < 2 * scan.dispersions.error;
        choice.moreFrequency = 1 / scan.periods.best - 1 / period;
        choice.moreDispersion = scan.dispersions.best - dispersion;
        const Tools::GaussianPulse pulse = stackDays(products, choice).pulse;
        widths += std::abs(pulse.width - source.width) < 2 * pulse.widthError;
    }
    QVERIFY2(periods >= 9, QByteArray::number(periods));
    QVERIFY2(dispersions >= 9, QByteArray::number(dispersions));
    QVERIFY2(widths >= 9, QByteArray::number(widths));
}

void TestProfiles::noiseIsNeverAligned()
{
    std::mt19937 random(1);
    std::vector<ProfileDay> days;
    for (int day = 0; day < 300; ++day)
        days.push_back(quickDay(random, 0, 0));
    StackChoice choice;
    choice.alignment = Alignment::Template;
    choice.beginError = 0.3;
    const ProfileStack none = stackDays(days, choice);
    QCOMPARE(none.inAverage, 0);
    QCOMPARE(none.problem, QString("No day could be aligned."));
    QVERIFY(std::abs(none.incoherentSigma) < 4);
    choice.beginError = 0;
    const ProfileStack byEphemeris = stackDays(days, choice);
    QCOMPARE(byEphemeris.inAverage, 300);
    QCOMPARE(byEphemeris.alignedByTemplate, 0);
    QVERIFY(byEphemeris.snr.boxcarSigma < 4);
}

void TestProfiles::templateAlignsWhatEphemerisCannot()
{
    std::mt19937 random(2);
    std::uniform_real_distribution<double> anyPhase;
    std::vector<ProfileDay> days;
    std::vector<double> phases;
    for (int day = 0; day < 20; ++day) {
        phases.push_back(anyPhase(random));
        days.push_back(quickDay(random, day < 12 ? 12 : 3, phases.back(), 0.2 + 0.01 * day));
    }
    StackChoice choice;
    choice.beginError = 0.3;
    QVERIFY(ephemerisRefusal(days, choice).contains("19.2 bins"));
    const ProfileStack refused = stackDays(days, choice);
    QCOMPARE(refused.inAverage, 0);
    // One day needs no alignment.
    QCOMPARE(stackDays({days[0]}, choice).inAverage, 1);
    choice.alignment = Alignment::Template;
    const ProfileStack stack = stackDays(days, choice);
    QVERIFY(stack.alignedByTemplate >= 11 && stack.inAverage == stack.alignedByTemplate);
    QVERIFY(stack.snr.boxcar.snr > 25);
    // All days come to one phase.
    const double common = stack.days[0].shift - phases[0];
    for (std::size_t day = 1; day < 12; ++day) {
        if (stack.days[day].use != DayUse::ByTemplate)
            continue;
        const double off = stack.days[day].shift - phases[day] - common;
        QVERIFY(std::abs(off - std::round(off)) <
                4 * std::hypot(stack.days[day].shiftError, stack.days[0].shiftError));
    }
}

void TestProfiles::stackGrowsWithDays()
{
    std::mt19937 random(3);
    std::vector<ProfileDay> days;
    for (int day = 0; day < 40; ++day)
        days.push_back(quickDay(random, day % 2 ? 4 : 2, 0.2, day % 2 ? 0.2 : 0.4));
    // The same height over noise of 0.2 and 0.4: weights 4 to 1.
    const ProfileStack stack = stackDays(days, {});
    QCOMPARE(stack.inAverage, 40);
    QVERIFY(std::abs(stack.days[1].weight / stack.days[0].weight - 2) < 1e-9);
    QVERIFY(std::abs(stack.effectiveDays - 36) < 1e-9);
    const double expected = std::sqrt(20 * (16.0 + 4));
    QVERIFY(std::abs(stack.pulse.snr - expected) < 4);
    QCOMPARE(stack.growth.back(), stack.snr.boxcar.snr);
    QVERIFY(std::abs(stack.firstHalf[9] - stack.secondHalf[9]) < 5 * stack.halfNoise.sigma);
    StackChoice choice;
    choice.days.assign(40, true);
    choice.days[3] = false;
    choice.leastSnr = 1000;
    const ProfileStack selected = stackDays(days, choice);
    QCOMPARE(selected.inAverage, 0);
    QCOMPARE(selected.days[3].reason, QString("switched off"));
    QVERIFY(selected.remarks.join(' ').contains("this selects"));
}

void TestProfiles::arrivalTimes()
{
    std::mt19937 random(4);
    std::vector<ProfileDay> days;
    for (int day = 0; day < 6; ++day)
        days.push_back(quickDay(random, 30, 0.25));
    StackChoice choice;
    choice.beginError = 0.001;
    const ProfileStack stack = stackDays(days, choice);
    const std::vector<Arrival> arrivals = arrivalsOf(days, stack, choice);
    QCOMPARE(arrivals.size(), std::size_t(6));
    // Pulses at (n + 0.25) x 0.5 s in the band of 111 MHz, of a stretch of 51.17 s from 12h on, and
    // 0.18705 s later where the delay is half of that between 109 and 111 MHz: 25.81205 s is
    // nearest to its middle.
    QCOMPARE(arrivals[2].utcDay, qint64(57113));
    const double seconds = (arrivals[2].utcPart - 0.5) * 86400;
    QVERIFY2(std::abs(seconds - 25.81205) < 4 * arrivals[2].error, QByteArray::number(seconds));
    QVERIFY(arrivals[2].error > 0.001 && arrivals[2].error < 0.01);
    const QList<QByteArray> lines =
        timBytes(arrivals, {"a", "b", "c", "d", "e", "f"}, "ZRT").split('\n');
    QCOMPARE(lines[0], QByteArray("FORMAT 1"));
    QVERIFY2(lines[3].startsWith("c 109.986364 57113.50029") && lines[3].endsWith(" ZRT"),
             lines[3]);
}

void TestProfiles::parametersAreChecked_data()
{
    QTest::addColumn<double>("seconds"); // period
    QTest::addColumn<int>("count");      // bins
    QTest::addColumn<QString>("field");  // that is refused; empty: none
    QTest::addColumn<QString>("text");   // a part of what is told
    QTest::newRow("possible") << 0.8 << 64 << ""
                              << "";
    QTest::newRow("as long as the stretch") << 1024 * step << 64 << ""
                                            << "";
    QTest::newRow("longer than the stretch") << 1025 * step << 64 << "period"
                                             << "1024";
    QTest::newRow("more bins than samples") << 40 * step << 64 << "bins"
                                            << "Take 32 bins";
    QTest::newRow("fewest samples") << 16 * step << 16 << ""
                                    << "";
    QTest::newRow("too few samples for any") << 15.9 * step << 16 << "bins"
                                             << "shorter";
    QTest::newRow("below two samples") << 1.9 * step << 16 << "period"
                                       << "two at least";
    QTest::newRow("bins no power of two") << 0.8 << 48 << "bins"
                                          << "48";
    QTest::newRow("bins too many") << 0.8 << 2048 << "bins"
                                   << "2048";
    QTest::newRow("no period") << 0.0 << 64 << "period"
                               << "Give the period";
}

void TestProfiles::parametersAreChecked()
{
    QFETCH(double, seconds);
    QFETCH(int, count);
    QFETCH(QString, field);
    QFETCH(QString, text);
    QTemporaryDir folder;
    TestSupport::writeFile(folder, "a.pnt",
                           TestSupport::recordingBytes({1500, 1, 33, 1}, [](int i, int, int, int) {
                               return float(i % 7);
                           }));
    ProfileParameters parameters;
    parameters.module = parameters.ray = 1;
    parameters.points = 1024;
    parameters.period = seconds;
    parameters.bins = count;
    const ProfilePlan plan = planProfiles(recordingsOfFolder(folder.path(), false), parameters);
    QCOMPARE(plan.problems.empty(), field.isEmpty());
    if (field.isEmpty()) {
        QVERIFY(std::abs(plan.parameters.beginError - 0.288675) < 1e-6);
        return;
    }
    QCOMPARE(plan.problems.front().field, field);
    QVERIFY2(plan.problems.front().text.contains(text), qPrintable(plan.problems.front().text));
}

void TestProfiles::radiometerEquation()
{
    // S/N 10, 100 Jy, a tenth of the period, 1 MHz, 100 s: 10 x 100 / 1e4 x 1 / 3.
    QVERIFY(std::abs(fluxDensity(10, 100, 0.1, 1e6, 100) - 0.1 / 3) < 1e-12);
}

ZRT_UNIT_TEST_MAIN(TestProfiles)

#include "tst_profiles.moc"
