#include "data/passport.h"
#include "simulator/recording.h"
#include "simulator/simulationoptions.h"
#include "support/fulldisk.h"
#include "support/testmain.h"

#include <QCryptographicHash>
#include <QDir>
#include <QtEndian>
#include <cmath>

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
    void pulseArrival_data();
    void pulseArrival();
    void refusals_data();
    void refusals();
    void stoppedAndFull();

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
    const auto compare = [&](const std::function<double(int, int)> &value, double mean,
                             double deviation) {
        double sum = 0;
        for (int p = 0; p < 40000; ++p)
            for (int band = 0; band < 32; ++band)
                sum += value(p, band);
        const double n = 32 * 40000;
        QVERIFY2(std::abs(sum / n - mean) < 5 * deviation / std::sqrt(n),
                 qPrintable(QString::number(sum / n)));
    };
    compare(normal, 0, 1);
    compare([&](int p, int band) { return std::pow(normal(p, band), 2); }, 1, std::sqrt(2));
    compare([&](int p, int band) { return std::pow(normal(p, band), 4); }, 3, std::sqrt(96));
    compare([&](int p, int band) { return normal(p, band) * normal(p + 1, band); }, 0, 1);
    compare([&](int p, int band) { return normal(p, band) * normal(p, band + 1); }, 0, 1);
}

void TestSimulator::sameBytesEverywhere()
{
    const QByteArray bytes = written(simulation(mixture));
    QVERIFY(bytes == written(simulation(mixture)));
    QVERIFY(bytes != written(simulation(mixture + " --seed 2")));
    // Of the file as it came out when this test was written. It changes only with what the
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

void TestSimulator::pulseArrival_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QVector<int>>("first"); // points of the peaks in the first band
    QTest::addColumn<QVector<int>>("last");
    const auto row = [](const char *name, const QString &options, const QVector<int> &first,
                        const QVector<int> &last) {
        QTest::newRow(name) << options << first << last;
    };
    row("no dispersion", "--pulse ray=2,time=10", {1000}, {1000});
    row("lower band later", "--pulse ray=2,time=1,dm=30", {2693}, {100});
    row("higher band earlier", "--first-band 120 --band-spacing -60 --pulse ray=2,time=30,dm=30",
        {407}, {3000});
    // Last band at 1, 6, ... s; first band at 25.93 s + 1, 6, ... and, of the pulses that left
    // before the begin, at 1.93, 6.93, ...
    row("pulsar", "--pulsar ray=2,period=5,phase=0.2,dm=30",
        {193, 693, 1193, 1693, 2193, 2693, 3193, 3693},
        {100, 600, 1100, 1600, 2100, 2600, 3100, 3600});
    row("narrow-band line", "--line ray=2,band=2,begin=5,end=7", {}, {500});
}

void TestSimulator::pulseArrival()
{
    QFETCH(QString, options);
    const ObservationData data = makeRecording(simulation(silence + options));
    const auto peaks = [&](int band) {
        const float *samples = data.samples[0][band][1];
        QVector<int> points;
        for (int p = 1; p < data.npoints - 1; ++p)
            if (samples[p] > 1 && samples[p] > samples[p - 1] && samples[p] >= samples[p + 1])
                points << p;
        return points;
    };
    QTEST(peaks(0), "first");
    QTEST(peaks(1), "last");
}

void TestSimulator::refusals_data()
{
    QTest::addColumn<QString>("message");
    const auto row = [](const char *options, const char *message) {
        QTest::newRow(options) << message;
    };
    row("--seed 2", "cannot be made"); // where the folder is missing
    row("--points 2000000000 --rays 80", "no room on the disk. It takes"); // 20 TB
    row("--points 0", "points must be at least 1, not 0");
    row("--bands 0", "between 1 and 100000 bands");
    row("--modules 2000000000 --rays 2000000000", "more than one point may hold");
    row("--step nan", "step must be 1e-06 to 1e+08 ms, not nan");
    row("--step 1e-300", "not 1e-300 ms");
    row("--sigma 0", "Sigma must be above 0");
    row("--pulsar ray=9", "ray 9 is not among 1 to 8");
    row("--pulsar period=0.0249", "at least two steps");
    row("--pulse dm=1e12", "more than 1e+06 s away");
    row("--pulsar dispersion=3", "it takes module, ray, period");
    row("--line band=33", "band 33 is not among 1 to 32");
    row("--impulses count=40001", "between 0 and the 40000");
    row("--gain-step point=40000", "not among 0 to 39999");
}

void TestSimulator::refusals()
{
    QFETCH(QString, message);
    QString error;
    const Simulation s = simulation(QTest::currentDataTag(), &error);
    const QString path = folder.filePath(message.startsWith("cannot") ? "missing/b.pnt" : "b.pnt");
    if (error.isEmpty())
        error = refusal(s);
    if (error.isEmpty())
        error = writeRecording(s, path).text();
    QVERIFY2(error.contains(message), qPrintable(error));
    QVERIFY(!QFile::exists(path));
}

void TestSimulator::stoppedAndFull()
{
    const QString path = folder.filePath("c.pnt");
    const Simulation s = simulation("--points 40000 --rays 1");
    const auto stop = [](int percent) { return percent < 50; };
    QCOMPARE(writeRecording(s, path, stop).kind, WriteFailure::Kind::Stopped);
    {
        const TestSupport::FullDisk disk(2000000);
        QCOMPARE(writeRecording(s, path).kind, WriteFailure::Kind::CannotWrite);
    }
    QVERIFY(QDir(folder.path()).entryList({"c*"}, QDir::Files).isEmpty());
}

ZRT_UNIT_TEST_MAIN(TestSimulator)
#include "tst_simulator.moc"
