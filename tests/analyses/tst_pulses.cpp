#include "analyses/pulses/repeating.h"
#include "calc/boxcargroups.h"
#include "calc/pulsetrials.h"
#include "data/recordingfile.h"
#include "simulator/recording.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>

using namespace Pulses;
using Simulator::Simulation;
using Simulator::SinglePulse;

Q_DECLARE_METATYPE(std::vector<double>)
using Spoil = std::function<void(ObservationData &, PulseParameters &)>;
Q_DECLARE_METATYPE(Spoil)

namespace {

constexpr double step = 0.0124928; // s

Simulation recordingOf(int points, int rays, quint32 seed = 1)
{
    Simulation s;
    s.npoints = points;
    s.rays = rays;
    s.seed = seed;
    return s;
}

SinglePulse pulseAt(int ray, double point, double fwhm, double dispersion, double strength)
{
    SinglePulse pulse;
    pulse.ray = ray;
    pulse.time = point * step;
    pulse.width = fwhm * step;
    pulse.dispersion = dispersion;
    pulse.strength = strength;
    return pulse;
}

PulseParameters upTo(double dispersion)
{
    PulseParameters parameters;
    parameters.dispersionMax = dispersion;
    parameters.widths = "1,2,3,4,6,9,14,20,30";
    return parameters;
}

bool isWithin(const Measured &measured, double truth, double errors = 4)
{
    return std::abs(measured.value - truth) <= errors * measured.error;
}

// The recording with some samples replaced.
ObservationData changed(const ObservationData &data,
                        const std::function<float(int channel, int point, float sample)> &change)
{
    const auto block = SampleBlock::allocate(1, data.channels, data.rays, data.npoints);
    for (int ray = 0; ray < data.rays; ++ray)
        for (int channel = 0; channel < data.channels; ++channel)
            for (int point = 0; point < data.npoints; ++point)
                block->ray(0, channel, ray)[point] =
                    change(channel, point, data.samples[0][channel][ray][point]);
    ObservationData result = data;
    result.samples = Samples(block);
    return result;
}

} // namespace

class TestPulses : public QObject {
    Q_OBJECT

private slots:
    void pulses_data();
    void pulses();
    void withoutDispersion_data();
    void withoutDispersion();
    void refusals_data();
    void refusals();
    void gapsAreLeftOut();
    void verdicts();
    void interferenceOfOneChannel();
    void raysOfOnePulse();
    void groups();
    void noiseThreshold();
    void noneIsToldTwice();
    void levelsMakeNoPulses();
    void stopped();
    void tablesAndRepeatingSources();
    void burst();
};

void TestPulses::pulses_data()
{
    QTest::addColumn<std::vector<double>>("fbands");
    QTest::addColumn<double>("dispersion");
    QTest::addColumn<double>("fwhm");
    QTest::addColumn<double>("strength");
    const auto bands = Simulator::evenBands;
    QTest::newRow("one point, low dispersion") << bands(120, 0.078125, 32) << 4.0 << 1.0 << 4.0;
    QTest::newRow("wide, high dispersion") << bands(120, 0.078125, 32) << 140.0 << 18.0 << 1.0;
    QTest::newRow("descending bands") << bands(122.5, -0.078125, 32) << 60.0 << 4.0 << 2.0;
    QTest::newRow("two bands") << bands(120, 1.5, 2) << 90.0 << 3.0 << 8.0;
    QTest::newRow("other receiver") << bands(110, 0.3, 17) << 20.0 << 5.0 << 2.0;
}

void TestPulses::pulses()
{
    QFETCH(std::vector<double>, fbands);
    QFETCH(double, dispersion);
    QFETCH(double, fwhm);
    QFETCH(double, strength);
    Simulation s = recordingOf(20000, 1);
    s.fbands = fbands;
    s.pulses = {pulseAt(1, 7000.3, fwhm, dispersion, strength)};
    const PulseResult result = search(Simulator::makeRecording(s), upTo(160));
    QVERIFY(!result.pulses.empty());
    const Pulse &pulse = result.pulses.front();
    QVERIFY2(
        isWithin(pulse.dispersion, dispersion),
        qPrintable(QString("%1 +- %2").arg(pulse.dispersion.value).arg(pulse.dispersion.error)));
    QVERIFY(isWithin(pulse.point, 7000.3));
    QVERIFY(isWithin(pulse.fwhm, fwhm));
    QVERIFY(pulse.verdict.isCandidate());
    // 4148.8 s DM / f^2 before the last band, f in MHz.
    const double early = 4148.8 * dispersion / std::pow(fbands.back(), 2) / step;
    QVERIFY(std::abs(pulse.infinitePoint - (7000.3 - early)) * step < 4 * pulse.infiniteError);
    const QDateTime begin(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC);
    QVERIFY(std::abs(double(begin.msecsTo(pulse.utc)) - pulse.point.value * step * 1000) < 2);
    QVERIFY(std::abs(pulse.infiniteMjd - 57113.5 - pulse.infinitePoint * step / 86400) < 1e-7);
    // All else is noise: at most what the threshold lets pass.
    QVERIFY(result.candidates() <= 5);
}

void TestPulses::withoutDispersion_data()
{
    QTest::addColumn<std::vector<double>>("fbands");
    QTest::newRow("one band") << std::vector<double>{120};
    QTest::newRow("equal frequencies") << std::vector<double>(4, 120.0);
}

void TestPulses::withoutDispersion()
{
    QFETCH(std::vector<double>, fbands);
    Simulation s = recordingOf(20000, 1);
    s.fbands = fbands;
    s.pulses = {pulseAt(1, 7000, 6, 0, 8)};
    const PulseResult result = search(Simulator::makeRecording(s), upTo(160));
    QVERIFY(!result.plan.isDispersionKnown);
    QCOMPARE(result.plan.dispersions.size(), std::size_t(1));
    QVERIFY(result.plan.remarks.join(' ').contains("cannot be measured"));
    QVERIFY(!result.pulses.empty());
    QVERIFY(isWithin(result.pulses.front().point, 7000));
    QVERIFY(std::isnan(result.pulses.front().dispersion.error));
    QVERIFY(result.pulses.front().verdict.isCandidate());
}

void TestPulses::refusals_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<Spoil>("spoil");
    const auto row = [](const char *name, const char *field, const Spoil &spoil) {
        QTest::newRow(name) << field << spoil;
    };
    row("all channels off", "leaveOutChannels", [](auto &, auto &p) { p.channelsOff = "1,2,3,4"; });
    row("no such channel", "leaveOutChannels", [](auto &, auto &p) { p.channelsOff = "5"; });
    row("no such ray", "rays", [](auto &, auto &p) { p.rays = "3"; });
    row("no list", "rays", [](auto &, auto &p) { p.rays = "1;2"; });
    row("no widths", "widths", [](auto &, auto &p) { p.widths = ""; });
    row("widths beyond the stretch", "widths", [](auto &, auto &p) { p.widths = "500"; });
    row("dispersions the wrong way round", "dispersionMax",
        [](auto &, auto &p) { p.dispersionMin = 400; });
    row("a delay beyond the stretch", "dispersionMin", [](auto &, auto &p) {
        p.dispersionMin = 30000;
        p.dispersionMax = 40000;
    });
    row("too many dispersions", "dispersionStep", [](auto &, auto &p) { p.dispersionStep = 1e-6; });
    row("no number", "threshold", [](auto &, auto &p) { p.threshold = std::nan(""); });
    row("beyond the end", "firstPoint", [](auto &, auto &p) { p.firstPoint = 980; });
    row("a frequency missing", "", [](auto &data, auto &) { data.fbands.pop_back(); });
    row("no step", "", [](auto &data, auto &) { data.tresolution = 0; });
    row("no samples", "", [](auto &data, auto &) { data.npoints = 0; });
}

void TestPulses::refusals()
{
    QFETCH(QString, field);
    QFETCH(Spoil, spoil);
    Simulation s = recordingOf(1000, 2);
    s.fbands = Simulator::evenBands(120, 0.6, 4);
    ObservationData data = Simulator::makeRecording(s);
    PulseParameters parameters = upTo(160);
    QVERIFY(planPulses(data, parameters).problems.empty());
    spoil(data, parameters);
    const PulsePlan plan = planPulses(data, parameters);
    QVERIFY(!plan.problems.empty());
    QCOMPARE(plan.problems.front().field, field);
    QVERIFY(search(data, parameters).pulses.empty());
}

void TestPulses::gapsAreLeftOut()
{
    Simulation s = recordingOf(20000, 1);
    s.pulses = {pulseAt(1, 7000, 4, 50, 2)};
    const ObservationData whole = Simulator::makeRecording(s);
    const auto gappy = changed(whole, [](int channel, int point, float sample) {
        if (channel == 3)
            return 7.0F;
        if (channel == 9 && point > 6000 && point < 9000)
            return std::numeric_limits<float>::quiet_NaN();
        return point >= 12000 && point < 13000 ? 0.0F : sample;
    });
    const PulseResult result = search(gappy, upTo(160));
    QVERIFY(!result.pulses.empty());
    QVERIFY(isWithin(result.pulses.front().dispersion, 50));
    QVERIFY(result.candidates() <= 5);
    const QString remarks = result.rays.front().remarks.join(' ');
    QVERIFY2(remarks.contains("channel 4: no signal") && remarks.contains("31 channels"),
             qPrintable(remarks));

    const PulseResult none = search(changed(whole, [](int, int, float) { return 1.0F; }), upTo(9));
    QVERIFY(none.pulses.empty());
    QVERIFY(none.rays.front().remarks.join(' ').contains("no channel holds a signal"));
}

void TestPulses::verdicts()
{
    Simulation s = recordingOf(12000, 9);
    for (int ray = 1; ray <= 9; ++ray)
        s.pulses.push_back(pulseAt(ray, 2500, 3, 60, 2)); // in all rays at once
    s.pulses.push_back(pulseAt(2, 5500, 2, 0, 2));        // at dispersion 0
    const ObservationData recording = Simulator::makeRecording(s);
    const auto spoiled = changed(recording, [](int channel, int point, float sample) {
        return channel == 20 && point >= 9000 && point < 9004 ? sample + 60 : sample;
    });
    PulseParameters parameters = upTo(160);
    parameters.mask = false;
    const PulseResult result = search(spoiled, parameters);
    const auto kindAt = [&](double point) {
        for (const Pulse &pulse : result.pulses) {
            if (std::abs(pulse.point.value - point) < 130 && pulse.snr > 10)
                return pulse.verdict.kind;
        }
        return VerdictKind::Candidate;
    };
    QCOMPARE(kindAt(2500), VerdictKind::ManyRays);
    QCOMPARE(kindAt(5500), VerdictKind::NotDispersed);
    QCOMPARE(kindAt(9000 - 60), VerdictKind::OneChannel);
    for (const Pulse &pulse : result.pulses)
        QCOMPARE(pulse.verdict.reason.isEmpty(), pulse.verdict.isCandidate());
}

// A transmitter in one channel is masked; a bright pulse, which all channels have, is not.
void TestPulses::interferenceOfOneChannel()
{
    Simulation s = recordingOf(40960, 1);
    s.pulses = {pulseAt(1, 30000, 8, 50, 20)};
    const auto spoiled =
        changed(Simulator::makeRecording(s), [](int channel, int point, float sample) {
            const bool isOn = channel == 11 && point >= 10240 && point < 12288;
            return isOn ? sample + 6 * float(std::sin(0.7 * point)) : sample;
        });
    const PulseResult result = search(spoiled, upTo(160));
    const ChannelMask &mask = result.rays.front().mask;
    QCOMPARE(mask.blocks.size(), std::size_t(2));
    QCOMPARE(maskLines(mask).size(), 1);
    QVERIFY(maskLines(mask).front().startsWith("channel 12 at points 10240 to 12287: "));
    QVERIFY(!result.pulses.empty());
    QVERIFY(isWithin(result.pulses.front().point, 30000));
}

void TestPulses::raysOfOnePulse()
{
    Simulation s = recordingOf(12000, 4);
    s.pulses = {pulseAt(2, 6000, 4, 80, 1.4), pulseAt(3, 6000, 4, 80, 2),
                pulseAt(1, 9000, 4, 80, 1.4)};
    std::vector<std::size_t> delivered;
    const PulseResult result =
        search(Simulator::makeRecording(s), upTo(160), {},
               [&](const std::vector<Pulse> &pulses) { delivered.push_back(pulses.size()); });
    QCOMPARE(delivered.size(), std::size_t(4));
    const Pulse &pulse = result.pulses.front();
    QCOMPARE(pulse.ray, 3);
    QCOMPARE(pulse.rays.size(), std::size_t(2));
    QCOMPARE(pulse.rays[1].ray, 2);
    QCOMPARE(result.pulses[1].rays.size(), std::size_t(1));
}

// Pulses 20 points apart stay single, though a wide boxcar holds several; the parts of one do not.
void TestPulses::groups()
{
    std::vector<Tools::BoxcarEvent> peaks;
    for (int pulse = 0; pulse < 4; ++pulse) {
        for (int trial = 8; trial < 13; ++trial)
            peaks.push_back(
                {trial, 1000 + 20 * pulse + trial - 10, 4, 20 - 3 * float(std::abs(trial - 10))});
    }
    for (int i = 0; i < 30; ++i)
        peaks.push_back({10, 960 + i, 70, 10});
    peaks.push_back({10, 2000, 4, 9});
    peaks.push_back({10, 2003, 6, 8});
    peaks.push_back({30, 2000, 4, 7}); // far in dispersion
    const auto groups = Tools::groupsOfBoxcars(peaks);
    QCOMPARE(groups.size(), std::size_t(6));
    for (std::size_t i = 0; i < 4; ++i)
        QCOMPARE(peaks[std::size_t(groups[i].front())].snr, 20.0F);
    QCOMPARE(groups[4].size(), std::size_t(2));
    QCOMPARE(peaks[std::size_t(groups[5].front())].trial, 30);
}

void TestPulses::noiseThreshold()
{
    // One width, one dispersion, independent points: the share of the normal law, 5.000e-3 above
    // 2.5758 on one side, 2.867e-7 above 5.
    const Tools::PulseTrials one = {1e6, {1}, 1, 0};
    QVERIFY(std::abs(Tools::expectedPulses(one, 5) / 0.2867 - 1) < 0.01);
    const double threshold = Tools::pulseThreshold(one, 0.2867);
    QVERIFY(std::abs(threshold - 5) < 0.01);
    // Noise of five searches beside what is expected of them, at a low threshold.
    PulseParameters parameters = upTo(100);
    parameters.threshold = 4.9;
    double expected = 0;
    int found = 0;
    for (quint32 seed = 1; seed <= 4; ++seed) {
        const PulseResult result =
            search(Simulator::makeRecording(recordingOf(20000, 1, seed)), parameters);
        expected += result.plan.expected;
        found += int(result.pulses.size());
    }
    QVERIFY2(std::abs(found - expected) < 4 * std::sqrt(expected) + 0.25 * expected,
             qPrintable(QString("%1 found, %2 expected").arg(found).arg(expected)));
}

// This noise stands above the threshold at two dispersions and below it between them.
void TestPulses::noneIsToldTwice()
{
    Simulation s = recordingOf(20000, 1, 3);
    s.pulses = {pulseAt(1, 110 / step, 0.01 / step, 0, 4)};
    const PulseResult result = search(Simulator::makeRecording(s), PulseParameters());
    QCOMPARE(result.pulses.size(), std::size_t(2));
    QVERIFY(std::abs(result.pulses[0].point.value - result.pulses[1].point.value) > 100);
}

void TestPulses::levelsMakeNoPulses()
{
    Simulation s = recordingOf(40000, 1, 5);
    s.drift = 3;
    s.gainSteps = {{1, 1, 9000, 1.01}, {1, 1, 21000, 0.985}, {1, 1, 30001, 1.05}};
    const PulseResult result = search(Simulator::makeRecording(s), upTo(160));
    QVERIFY2(result.candidates() <= 5, qPrintable(QString::number(result.candidates())));
}

void TestPulses::stopped()
{
    Jobs::Control control;
    control.isStopped = [] { return true; };
    const PulseResult result =
        search(Simulator::makeRecording(recordingOf(5000, 2)), upTo(50), control);
    QVERIFY(result.wasStopped);
    QVERIFY(result.pulses.empty());
}

// Two dates a sidereal day apart with a pulse of one source, and one of another; four minutes of
// the first recording's sidereal time are searched, all six of the second.
void TestPulses::tablesAndRepeatingSources()
{
    std::vector<PulseTable> tables;
    for (int date = 0; date < 2; ++date) {
        Simulation s = recordingOf(date == 0 ? 19211 : 28817, 2, quint32(date));
        s.beginTime = s.beginTime.addSecs(date * 86164);
        s.pulses = {pulseAt(1, 10000 + 40 * date, 4, 80, 3)};
        if (date == 0)
            s.pulses.push_back(pulseAt(2, 15000, 4, 20, 3));
        const ObservationData data = Simulator::makeRecording(s);
        PulseParameters parameters = upTo(160);
        parameters.threshold = 10;
        const PulseResult result = search(data, parameters);
        Results::ResultTable table;
        table.request = {{"program", "zrt-batch"}, {"file", QString("date%1.pnt").arg(date)}};
        table.result = searchLines(data, result.plan, result.rays, result.pulses);
        table.columns = pulseColumns(result.pulses, data.tresolution);
        const auto format = date == 0 ? Results::Format::Text : Results::Format::Csv;
        tables.push_back(readPulseTable(table.toBytes(format)));
        QCOMPARE(tables.back().problem, QString());
        QCOMPARE(tables.back().file, table.request.back().value);
        QCOMPARE(tables.back().pulses.size(), result.pulses.size());
        QCOMPARE(tables.back().rays.size(), std::size_t(2));
        QVERIFY(std::abs(tables.back().pulses.front().mjd - result.pulses.front().infiniteMjd) <
                1e-9);
    }
    const std::vector<RepeatingSource> sources = repeatingSources(tables, {});
    QCOMPARE(sources.size(), std::size_t(1));
    const RepeatingSource &source = sources.front();
    QCOMPARE(source.dates, (std::set<QString>{"2015-04-01", "2015-04-02"}));
    QVERIFY(std::abs(source.dispersion - 80) < 4 * source.dispersionError);
    // The source is in the middle of the first 125 s: 4 minutes of 4, 6 of 6 but for the begin.
    const double hours = (240 + 360) / 3600.0;
    QVERIFY2(std::abs(source.hours - hours) < 0.01, qPrintable(QString::number(source.hours)));
    QVERIFY(std::abs(source.rate - 2 / source.hours) < 1e-9);
    QVERIFY(std::abs(source.rateError - std::sqrt(2.0) / source.hours) < 1e-9);
    QCOMPARE(joinedColumns(tables).front().size(), 3);
    RepeatingParameters single;
    single.dates = 1;
    QCOMPARE(repeatingSources(tables, single).size(), std::size_t(2));
    QVERIFY(!readPulseTable("points: 1\n").problem.isEmpty());
}

void TestPulses::burst()
{
    const QString path = TestSupport::realRecording("frb180417_1297MHz.pnt");
    if (path.isEmpty())
        QSKIP("The recording of the burst is not on this machine.");
    RecordingFile file;
    QVERIFY(file.open(path));
    Stretch stretch;
    stretch.count = file.completePoints();
    PulseParameters parameters;
    parameters.dispersionMax = 1000;
    const StretchReading reading = file.read(stretch);
    const PulseResult result = search(*reading.whole(), parameters);
    const Pulse &pulse = result.pulses.front();
    QCOMPARE(pulse.rays.size(), std::size_t(3));
    QCOMPARE(pulse.ray, 2);
    QVERIFY(pulse.verdict.isCandidate());
    QVERIFY2(
        isWithin(pulse.dispersion, 474.8, 3),
        qPrintable(QString("%1 +- %2").arg(pulse.dispersion.value).arg(pulse.dispersion.error)));
    QVERIFY(std::abs(pulse.point.value - 1614.5) < 1.5);
}

ZRT_UNIT_TEST_MAIN(TestPulses)
#include "tst_pulses.moc"
