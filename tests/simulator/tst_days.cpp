#include "analyses/days/daylist.h"
#include "coords/barycentre.h"
#include "coords/coordinates.h"
#include "coords/skyclock.h"
#include "simulator/arrivals.h"
#include "simulator/daysoptions.h"
#include "simulator/recording.h"
#include "simulator/simulatecommand.h"
#include "simulator/simulationoptions.h"
#include "simulator/writedays.h"
#include "support/fulldisk.h"
#include "support/testmain.h"

#include <QCryptographicHash>
#include <QDir>
#include <QSet>
#include <cmath>

using namespace Simulator;

namespace {

const QString alfa = "05:30:00";
const QString delta = "28:36:00";
const Tools::SkyPosition source = {Tools::rightAscensionOf(alfa), Tools::declinationOf(delta)};
const QString pulsar = "--sky-pulsar alfa=" + alfa + ",delta=" + delta + ",";

// What the command line makes of the options; `error` gets what is wrong with them.
DaysSimulation days(const QString &options, QString *error = nullptr)
{
    QCommandLineParser parser;
    parser.addOption({"demo", ""});
    addOptions(parser);
    addDaysOptions(parser);
    parser.process(("zrt-simulate --days 4 " + options).split(' ', Qt::SkipEmptyParts));
    DaysSimulation simulation;
    const QString refused = readDaysOptions(parser, simulation);
    if (error)
        *error = refused.isEmpty() ? refusal(simulation) : refused;
    return simulation;
}

// The first file of each day.
QVector<DayFile> firstFiles(const DaysSimulation &simulation)
{
    QVector<DayFile> first;
    for (const DayFile &file : dayFiles(simulation)) {
        if (file.earlierPoints == 0)
            first << file;
    }
    return first;
}

} // namespace

class TestDays : public QObject {
    Q_OBJECT

private slots:
    void yearOfPassages_data();
    void yearOfPassages();
    void sameBytesEverywhere();
    void turnOfTheHour();
    void arrivalsAtTheBarycentre_data();
    void arrivalsAtTheBarycentre();
    void driftThroughTheBeams();
    void scintillation();
    void refusals();
    void stoppedAndFull();

private:
    QByteArray digest(const QString &name) const
    {
        QCryptographicHash hash(QCryptographicHash::Sha1);
        for (const QFileInfo &info : QDir(folder.filePath(name)).entryInfoList(QDir::Files)) {
            QFile file(info.filePath());
            hash.addData(info.fileName().toUtf8());
            hash.addData(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
        }
        return hash.result().toHex();
    }

    QTemporaryDir folder;
};

void TestDays::yearOfPassages_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<int>("passages");
    QTest::newRow("short files") << "" << 365;
    QTest::newRow("hourly files") << "--whole-hours" << 365;
    QTest::newRow("missing days") << "--missing 0.2" << -1;
}

// The days of a directory, found again by its headers.
void TestDays::yearOfPassages()
{
    QFETCH(QString, options);
    QFETCH(int, passages);
    const DaysSimulation year = days("--days 365 " + options + " " + pulsar);
    RecordingSet set;
    QSet<QString> names;
    for (const DayFile &file : dayFiles(year)) {
        RecordingEntry entry;
        entry.path = file.name;
        entry.begin = file.begin;
        entry.completePoints = file.points;
        entry.state = RecordingState::Whole;
        entry.header.modules = 1;
        entry.header.rays = 1;
        entry.header.tresolution = year.recording.msPerPoint / 1000;
        entry.header.fbands = year.recording.fbands;
        entry.header.moduleNumbers = {1};
        set.entries.push_back(entry);
        names << file.name;
    }
    QCOMPARE(names.size(), int(set.entries.size()));

    Days::DayChoice choice;
    choice.start.kind = Days::StartKind::Source;
    choice.start.source = source;
    const Days::DayList list = Days::findDays(set, choice);
    if (passages < 0) // of 365 with probability 0.8: 292 +- 7.6
        QVERIFY(list.days.size() > 254 && list.days.size() < 330);
    else
        QCOMPARE(int(list.days.size()), passages);
    QVERIFY(list.leftOut.size() < 10); // ends behind the turn of an hour
    int inTwoFiles = 0;
    for (const Days::Day &day : list.days) {
        QVERIFY2(day.reason.isEmpty(), qPrintable(day.reason));
        inTwoFiles += day.parts.size() == 2 ? 1 : 0;
        const double toMiddle = choice.points / 2 * list.tresolution * 1000;
        const QDateTime middle = day.begin.addMSecs(std::llround(toMiddle));
        const QDateTime culmination = Tools::nearestCulmination(source, middle);
        QVERIFY(std::abs(middle.msecsTo(culmination)) <= list.tresolution * 1000 + 1);

        const QString date = middle.toString("yyyy.MM.dd");
        if (middle.time().hour() > 0) // else the date's first passage may be another one
            QVERIFY(names.contains(
                Tools::culminationFromCatalog(alfa, delta, date, 2, list.tresolution, 4, 0)
                    .fileName));
    }
    // A stretch of 205 s lies across the turn of an hour on every 18th day.
    QVERIFY(inTwoFiles > 8 && inTwoFiles < 35);
}

// Threads, and the order in which they come, change nothing.
void TestDays::sameBytesEverywhere()
{
    const DaysSimulation some =
        days("--points 3000 --rays 2 --bands 4 --drift 2 --drift-time 20 --missing 0.2 --days 6 "
             "--gain-scatter 0.2 --noise-scatter 0.2 --disturbed share=0.5 --storms share=0.5 "
             "--hum frequency=7.3 " +
             pulsar + "strength=3,scintillation=0.5,dm=20");
    const DaysWritten written = writeDays(some, folder.filePath("one"), {}, 1);
    QVERIFY(written.failure.text().isEmpty());
    QCOMPARE(written.files, written.allFiles);
    QVERIFY(!writeDays(some, folder.filePath("three"), {}, 3).failure);
    QCOMPARE(digest("one"), digest("three"));
    // The sum of the files as they came out when this test was written. It changes only with what
    // the simulator means to write; a compiler or a processor must not change it.
    QCOMPARE(digest("one"), QByteArray("771cb5ddcc480ae315fb77d3f2820c5de7250c8e"));
}

// A file begun in the middle of a day goes on with the day's noise and drift.
void TestDays::turnOfTheHour()
{
    const DaysSimulation some = days("--points 3000 --drift 2 --drift-time 20");
    const DayFile whole = firstFiles(some).first();
    DayFile rest = whole;
    rest.earlierPoints = 1234;
    rest.points = whole.points - rest.earlierPoints;
    const ObservationData all = makeRecording(simulationOf(some, whole));
    const ObservationData part = makeRecording(simulationOf(some, rest));
    for (int point = 0; point < rest.points; ++point)
        QCOMPARE(part.samples[0][7][0][point], all.samples[0][7][0][point + 1234]);
}

void TestDays::arrivalsAtTheBarycentre_data()
{
    QTest::addColumn<QDateTime>("begin");
    QTest::addColumn<double>("period");
    QTest::newRow("short") << QDateTime(QDate(2015, 4, 1), QTime(14, 18, 5), Qt::UTC) << 0.7145;
    QTest::newRow("in the next year, fast")
        << QDateTime(QDate(2016, 3, 3), QTime(23, 59, 1), Qt::UTC) << 0.0333;
}

// Barycentric times, each from the exact view at the arrival, are whole periods apart.
void TestDays::arrivalsAtTheBarycentre()
{
    QFETCH(QDateTime, begin);
    QFETCH(double, period);
    const QDate first(2015, 4, 1);
    const std::vector<double> times = arrivals(source, period, 0.25, first, begin, -3, 700);
    QVERIFY(times.front() < -3 + 1.01 * period && times.back() > 700 - 1.01 * period);
    QVERIFY(std::abs(double(times.size()) - 703 / period) < 2 + 1e-4 * 703 / period);
    for (const double time : times) {
        const double whole = std::round(time * 1000) / 1000;
        const QDateTime moment = begin.addMSecs(std::llround(time * 1000));
        const Tools::BarycentricView view =
            Tools::barycentricView(Tools::ownSite(), moment, source);
        const double seconds =
            double(QDateTime(first, QTime(0, 0), Qt::UTC).msecsTo(moment)) / 1000 + view.delay +
            (time - whole) * (1 + view.velocity);
        const double turns = seconds / period - 0.25;
        QVERIFY2(std::abs(turns - std::round(turns)) * period < 2e-6,
                 qPrintable(QString::number((turns - std::round(turns)) * period)));
    }
}

void TestDays::driftThroughTheBeams()
{
    // Ray 1 looks to 28.6035, ray 2 to 29.2023 degrees. The passage of 0.8 degrees at this
    // declination takes 0.8 / 15 h / cos(28.6 degrees).
    const DaysSimulation some = days("--rays 4 --bands 1 --no-noise --level 0 --points 30000 " +
                                     pulsar + "period=1,width=0.2,strength=10");
    const DayFile file = firstFiles(some).first();
    const ObservationData data = makeRecording(simulationOf(some, file));
    const double crossing =
        double(file.begin.msecsTo(Tools::nearestCulmination(source, passage(some, 0)))) / 1000;
    const auto highest = [&](int ray, double time) {
        const int middle = int(time / data.tresolution);
        const float *const samples = data.samples[0][0][ray - 1];
        return double(*std::max_element(samples + middle - 45, samples + middle + 45));
    };
    const double of2015 = Tools::declinationOfDate(source, file.begin.date()) * 180 / M_PI;
    const auto gain = [](double offset, double width) {
        return std::exp(-4 * std::log(2.0) * offset * offset / (width * width));
    };
    const double inRay1 = 10 * gain(of2015 - 28.6035, 0.6);
    const double halfWidth = 0.8 / 15 * 3600 / 2 / std::cos(of2015 * M_PI / 180) * 0.99727;
    QVERIFY(std::abs(highest(1, crossing) / inRay1 - 1) < 0.01);
    QVERIFY(std::abs(highest(2, crossing) / 10 / gain(of2015 - 29.2023, 0.6) - 1) < 0.01);
    QVERIFY(std::abs(highest(1, crossing - halfWidth) / inRay1 - 0.5) < 0.01);
    QVERIFY(std::abs(highest(1, crossing + halfWidth) / inRay1 - 0.5) < 0.01);
    QCOMPARE(highest(4, crossing), 0.0); // three rays away: 1e-12
}

// Mean and standard deviation of the strength over 1000 days, to five standard errors.
void TestDays::scintillation()
{
    const DaysSimulation some = days("--days 1000 --points 100 --bands 1 --gain-scatter 0.5 " +
                                     pulsar + "period=1,strength=1,scintillation=0.5");
    double sum = 0;
    double squares = 0;
    const QVector<DayFile> files = firstFiles(some);
    for (DayFile file : files) {
        file.begin = passage(some, file.day).addSecs(-2);
        file.begin = file.begin.addMSecs(-file.begin.time().msec());
        const Simulation s = simulationOf(some, file);
        const double height = s.pulseSeries.at(0).strengths.at(0);
        sum += height;
        squares += height * height;
    }
    const double mean = sum / files.size();
    QVERIFY(std::abs(mean - 1) < 5 * 0.5 / std::sqrt(1000));
    const double deviation = std::sqrt(squares / files.size() - mean * mean);
    QVERIFY2(std::abs(deviation - 0.5) < 0.1, qPrintable(QString::number(deviation)));
}

void TestDays::refusals()
{
    const struct {
        QString options;
        QString message;
    } cases[] = {
        {"--days 0", "1 to 36600 days, not 0"},
        {"--site 3", "N3 has no module 1, ray 1"},
        {"--first-module 6 --modules 2", "N2 has no module 7"},
        {"--points 4000000", "may last 43200 s"},
        {"--missing 1.5", "share from 0 to 1, not 1.5"},
        {"--gain-scatter nan", "between 0 and 0.9, not nan"},
        {"--beam ra=0", "beam in right ascension must lie between"},
        {"--strip alfa=05:30:00,delta=89:59:00", "never crosses the beams"},
        {"--sky-pulsar alfa=25:00:00", "alfa=\"25:00:00\" is not a right ascension like"},
        {"--sky-pulsar period=0.001", "Sky pulsar: the period must be at least two steps"},
        {"--sky-pulsar scintillation=2", "scintillation must lie between 0.01 and 1.415"},
        {"--hum frequency=41", "frequency must lie between"},
        {"--begin 1950-01-01T00:00:00", "between 1960 and 2100"},
    };
    for (const auto &[options, message] : cases) {
        QString error;
        days(options, &error);
        QVERIFY2(error.contains(message), qPrintable(options + ": " + error));
    }
}

void TestDays::stoppedAndFull()
{
    const QString path = folder.filePath("days");
    const auto entries = [&path] { return QDir(path).entryList(QDir::Files).size(); };
    const auto command = [&path](const QString &options) {
        return simulate(("zrt-simulate " + options + " " + path).split(' '), {});
    };
    QCOMPARE(command("--slide 3").code, 64);
    QVERIFY(command("--days 3660 --points 3400000 --rays 8").problem.contains("no room"));
    QVERIFY(!QFileInfo::exists(path));

    const DaysSimulation some = days("--days 9");
    const DaysWritten stopped = writeDays(some, path, [](int percent) { return percent < 50; });
    QCOMPARE(stopped.failure.kind, WriteFailure::Kind::Stopped);
    QVERIFY(stopped.files > 0 && stopped.files < stopped.allFiles);
    QCOMPARE(entries(), stopped.files);

    QVERIFY(QDir(path).removeRecursively());
    const TestSupport::FullDisk disk(1000000);
    const DaysWritten full = writeDays(some, path);
    QCOMPARE(full.failure.kind, WriteFailure::Kind::CannotWrite);
    QCOMPARE(full.files, 0);
    QVERIFY(entries() == 0);
}

ZRT_UNIT_TEST_MAIN(TestDays)
#include "tst_days.moc"
