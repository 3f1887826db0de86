#include "data/passport.h"
#include "simulator/recording.h"
#include "simulator/simulationoptions.h"
#include "support/testmain.h"

#include <QCryptographicHash>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <numeric>

using namespace Simulator;

namespace {

// A bit of everything, longer than one block of the writer.
const QString mixture = "--points 30011 --modules 2 --rays 3 --bands 4 --first-band 110 "
                        "--band-spacing 0.4 --drift 2 --drift-time 20 "
                        "--pulsar module=2,period=1.3,dm=50 --pulse ray=3,time=100,width=3 "
                        "--impulses ray=2,count=20 --gain-step point=12345,factor=1.5";

// Sources alone, sigma 2. The bands are a factor of two apart: their lag is
// 4148.8 DM (1/60^2 - 1/120^2) s = 4148.8 DM / 4800 s, 25.93 s for a DM of 30.
const QString silence = "--no-noise --points 4000 --rays 2 --step 10 --level 0 --sigma 2 --bands 2 "
                        "--first-band 60 --band-spacing 60 ";

// What the command line makes of the options; `error` gets what is wrong with them.
Simulation simulation(const QString &options, QString *error = nullptr)
{
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(("zrt-simulate " + options).split(' ', Qt::SkipEmptyParts));
    Simulation s;
    const QString refused = readOptions(parser, s);
    if (error)
        *error = refused;
    return s;
}

} // namespace

class TestSimulator : public QObject {
    Q_OBJECT

private slots:
    void noiseIsNormal();
    void sameBytesEverywhere();
    void fileEqualsMemory();
    void pulseArrival();
    void transients();
    void refusals();
    void stoppedRunsLeaveNothing();
    void signalsLeaveNothing();

private:
    QByteArray written(const Simulation &s)
    {
        QFile file(folder.filePath("a.pnt"));
        return !writeRecording(s, file.fileName()) && file.open(QIODevice::ReadOnly)
                   ? file.readAll()
                   : QByteArray();
    }

    QTemporaryDir folder;
};

// Every limit is five standard errors of the mean over n independent samples.
void TestSimulator::noiseIsNormal()
{
    const ObservationData data = makeRecording(simulation("--rays 1 --level 30 --sigma 4"));
    const auto normal = [&](int point, int band) {
        return (data.samples[0][band % 32][0][point % 40000] - 30) / 4.0;
    };
    const auto isMean = [&](const auto &value, double mean, double deviation) {
        double sum = 0;
        for (int p = 0; p < 40000; ++p)
            for (int band = 0; band < 32; ++band)
                sum += value(p, band);
        const double n = 32 * 40000;
        return std::abs(sum / n - mean) < 5 * deviation / std::sqrt(n);
    };
    QVERIFY(isMean(normal, 0, 1));
    QVERIFY(isMean([&](int p, int band) { return std::pow(normal(p, band), 2); }, 1, std::sqrt(2)));
    QVERIFY(
        isMean([&](int p, int band) { return std::pow(normal(p, band), 4); }, 3, std::sqrt(96)));
    QVERIFY(isMean([&](int p, int b) { return normal(p, b) * normal(p + 1, b); }, 0, 1));
    QVERIFY(isMean([&](int p, int b) { return normal(p, b) * normal(p, b + 1); }, 0, 1));
}

void TestSimulator::sameBytesEverywhere()
{
    const QByteArray bytes = written(simulation(mixture));
    QVERIFY(bytes == written(simulation(mixture)));
    QVERIFY(bytes != written(simulation(mixture + " --seed 2")));
    // The sum of the file as it came out when this test was written. It changes only with what the
    // simulator means to write; a compiler or a processor must not change it.
    QCOMPARE(QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex(),
             QByteArray("c4be6a8b0331d0b4e3804d53dfea9960dfc36f29"));
}

void TestSimulator::fileEqualsMemory()
{
    const Simulation s = simulation(mixture + " --begin 1987-04-10T19:21:00");
    const ObservationData data = makeRecording(s);
    const QByteArray bytes = written(s);
    const Passport passport = parsePassport(bytes);
    const ObservationData file = recordingHeader(passport, "a.pnt").data;
    QCOMPARE((QVector{file.npoints, file.modules, file.channels, file.rays}),
             (QVector{30011, 2, 5, 3}));
    QVERIFY(file.fbands == data.fbands && file.tresolution == data.tresolution);
    QCOMPARE(file.beginTime, QDateTime(QDate(1987, 4, 10), QTime(19, 21), Qt::UTC));
    // Greenwich 8h34m57.09s (Meeus, example 12.b), and the telescope 2h30m31.2s further east.
    QCOMPARE(file.starTime, QString("11:5:28"));
    QVERIFY(data.beginTime == file.beginTime && data.starTime == file.starTime);
    QCOMPARE(bytes.size() - passport.size, qint64(30011) * 2 * 3 * 5 * 4);
    const char *value = bytes.constData() + passport.size;
    for (int p = 0; p < 30011; ++p)
        for (int m = 0; m < 2; ++m)
            for (int r = 0; r < 3; ++r) {
                double sum = 0;
                for (int c = 0; c < 5; ++c, value += 4) {
                    QVERIFY(qFromLittleEndian<float>(value) == data.samples[m][c][r][p]);
                    sum += c < 4 ? data.samples[m][c][r][p] : 0;
                }
                QCOMPARE(data.samples[m][4][r][p], float(sum / 4));
            }
}

void TestSimulator::pulseArrival()
{
    const struct {
        QString options;
        QVector<int> first; // points of the peaks in the first band
        QVector<int> last;
    } cases[] = {
        {"--pulse ray=2,time=10", {1000}, {1000}},
        {"--pulse ray=2,time=1,dm=30", {2693}, {100}},
        {"--first-band 120 --band-spacing -60 --pulse ray=2,time=30,dm=30", {407}, {3000}},
        // Last band at 1, 6, ... s; first band at 25.93 s + 1, 6, ... and, of the pulses that
        // left before the begin, at 1.93, 6.93, ...
        {"--pulsar ray=2,period=5,phase=0.2,dm=30",
         {193, 693, 1193, 1693, 2193, 2693, 3193, 3693},
         {100, 600, 1100, 1600, 2100, 2600, 3100, 3600}},
        {"--line ray=2,band=2,begin=5,end=7", {}, {500}},
    };
    for (const auto &[options, first, last] : cases) {
        const ObservationData data = makeRecording(simulation(silence + options));
        const auto peaks = [&data = data](int band) {
            const float *samples = data.samples[0][band][1];
            QVector<int> points;
            for (int p = 1; p < data.npoints - 1; ++p)
                if (samples[p] > 1 && samples[p] > samples[p - 1] && samples[p] >= samples[p + 1])
                    points << p;
            return points;
        };
        QVERIFY2(peaks(0) == first && peaks(1) == last, qPrintable(options));
    }
}

// Samples of 10 ms, two bands of 60 and 120 MHz, sigma 2.
void TestSimulator::transients()
{
    const auto row = [](const ObservationData &data, int band, int ray) {
        const float *samples = data.samples[0][band][ray - 1];
        return std::vector<double>(samples, samples + data.npoints);
    };
    const auto sum = [](const std::vector<double> &samples) {
        return std::accumulate(samples.begin(), samples.end(), 0.0);
    };
    const auto peak = [](const std::vector<double> &samples) {
        return std::max_element(samples.begin(), samples.end()) - samples.begin();
    };
    // A tail keeps the area; from 100 ms to 200 ms behind the pulse it falls by e in the last band,
    // in the first one it is 16 times as long.
    const QString pulse = silence + "--pulse ray=1,time=10,width=0.02,strength=50";
    const ObservationData sharp = makeRecording(simulation(pulse));
    const ObservationData tail = makeRecording(simulation(pulse + ",scattering=0.1"));
    for (const int band : {0, 1})
        QVERIFY(std::abs(sum(row(tail, band, 1)) / sum(row(sharp, band, 1)) - 1) < 1e-4);
    const std::vector<double> last = row(tail, 1, 1);
    const std::vector<double> first = row(tail, 0, 1);
    QVERIFY(std::abs(last[1020] / last[1010] - std::exp(-1.0)) < 1e-4);
    QVERIFY(std::abs(first[1170] / first[1010] - std::exp(-1.0)) < 1e-4);
    // The next ray of a beam two rays wide has half of it; a transmitter at -20 MHz/s needs 3 s.
    const ObservationData beam = makeRecording(simulation(pulse + ",beam=2,sweep=-20"));
    QVERIFY(std::abs(sum(row(beam, 1, 2)) / sum(row(beam, 1, 1)) - 0.5) < 1e-4);
    QCOMPARE(peak(row(beam, 0, 1)) - peak(row(beam, 1, 1)), std::ptrdiff_t(300));
    // Of 400 turns of 0.1 s about a quarter have a pulse, none of them between the turns.
    const std::vector<double> train =
        row(makeRecording(simulation(
                silence + "--rrat period=0.1,share=0.25,width=0.01,scatter=0.2,time=0.05")),
            1, 1);
    int pulses = 0;
    for (int i = 0; i < 400; ++i) {
        pulses += train[std::size_t(10 * i + 5)] > 1;
        QVERIFY(train[std::size_t(10 * i)] < 1e-6);
    }
    QVERIFY2(pulses > 65 && pulses < 135, qPrintable(QString::number(pulses)));
    // Lightning and radar are the same in all bands and rays.
    for (const char *const option : {"--lightning count=5", "--radar period=7"}) {
        const ObservationData data = makeRecording(simulation(silence + QString(option)));
        QVERIFY(sum(row(data, 0, 1)) > 1);
        QCOMPARE(row(data, 0, 1), row(data, 1, 2));
    }
}

void TestSimulator::refusals()
{
    const struct {
        QString options;
        QString message;
    } cases[] = {
        {"--points 2000000000 --rays 80", "no room on the disk. It takes"}, // 20 TB
        {"--points 0", "points must be at least 1, not 0"},
        {"--bands 0", "between 1 and 100000 bands"},
        {"--modules 2000000000 --rays 2000000000", "more than one point may hold"},
        {"--step nan", "step must be 1e-06 to 1e+08 ms, not nan"},
        {"--step 1e-300", "not 1e-300 ms"},
        {"--sigma 0", "Sigma must be above 0"},
        {"--rrat period=0", "period must be at least two steps"},
        {"--rrat ray=9", "Transient: ray 9 is not among 1 to 8"},
        {"--pulse scattering=-1", "scattering must lie between 0"},
        {"--lightning count=-1", "must lie between 0 and the 40000 points, but is -1"},
        {"--pulsar ray=9", "ray 9 is not among 1 to 8"},
        {"--pulsar period=0.0249", "at least two steps"},
        {"--pulse dm=1e12", "more than 1e+06 s away"},
        {"--pulsar dispersion=3", "it takes module, ray, period"},
        {"--line band=33", "band 33 is not among 1 to 32"},
        {"--impulses count=40001", "between 0 and the 40000"},
        {"--gain-step point=40000", "not among 0 to 39999"},
    };
    for (const auto &[options, message] : cases) {
        QString error;
        const Simulation s = simulation(options, &error);
        if (error.isEmpty())
            error = refusal(s);
        if (error.isEmpty())
            error = writeRecording(s, folder.filePath("b.pnt")).text();
        QVERIFY2(error.contains(message), qPrintable(options + ": " + error));
        QVERIFY(!QFile::exists(folder.filePath("b.pnt")));
    }
}

void TestSimulator::stoppedRunsLeaveNothing()
{
    const auto stop = [](int percent) { return percent < 50; };
    QCOMPARE(writeRecording(simulation("--rays 1"), folder.filePath("c.pnt"), stop).kind,
             WriteFailure::Kind::Stopped);
    const Simulation large = simulation("--points 2000000000 --rays 80"); // 20 TB
    QVERIFY(writeRecording(large, folder.filePath("c.pnt")).text().contains("no room on the disk"));
    QVERIFY(QDir(folder.path()).entryList({"c*"}, QDir::Files).isEmpty());
}

// The file that is being written may have no name until it is whole; the process holds it open.
void TestSimulator::signalsLeaveNothing()
{
    QTemporaryDir own;
    for (const int signal : {SIGTERM, SIGINT}) {
        QProcess process;
        process.start(ZRT_SIMULATE, {"--points", "4000000", "--rays", "1", own.filePath("d.pnt")});
        QVERIFY(process.waitForStarted());
        const QDir opened(QString("/proc/%1/fd").arg(process.processId()));
        const auto isWriting = [&] {
            const QFileInfoList files = opened.entryInfoList(QDir::Files | QDir::System);
            return std::any_of(files.begin(), files.end(), [&](const QFileInfo &file) {
                return file.symLinkTarget().startsWith(own.path());
            });
        };
        QTRY_VERIFY_WITH_TIMEOUT(isWriting(), 30000);
        QCOMPARE(::kill(pid_t(process.processId()), signal), 0);
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QVERIFY(process.exitCode() != 0);
        QVERIFY(QDir(own.path()).entryList(QDir::Files).isEmpty());
    }
}

ZRT_UNIT_TEST_MAIN(TestSimulator)
#include "tst_simulator.moc"
