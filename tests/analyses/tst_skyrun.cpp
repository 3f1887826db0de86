#include "analyses/days/fourierdays.h"
#include "analyses/sky/skymap.h"
#include "analyses/sky/skyrun.h"
#include "support/dayfiles.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <random>

// What is read of which recording, and that nothing changes the sums: neither the order of the work
// nor where it was stopped.

using namespace Sky;

namespace {

constexpr int days = 6;
constexpr int pointsOfFile = 2300;
constexpr int rayCount = 3;

// A file a sidereal day. In the one with a dead ray, that ray holds nothing but what is no number.
QByteArray dayBytes(int day, bool hasDeadRay = false)
{
    std::mt19937 random(unsigned(day + 1));
    std::normal_distribution<float> law(100, 1);
    const QByteArray bytes =
        TestSupport::recordingBytes({pointsOfFile, 1, 33, rayCount}, [&](int, int, int, int ray) {
            const float value = law(random);
            return hasDeadRay && ray == 1 ? std::nanf("") : value;
        });
    return TestSupport::siderealDaysLater(bytes, day);
}

SkyParameters parametersOf()
{
    SkyParameters parameters;
    parameters.points = 1024;
    parameters.firstPoint = 10;
    parameters.starts = 3;
    parameters.window = 129;
    parameters.dispersions = "0,30";
    return parameters;
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestSkyRun : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void lists_data();
    void lists();
    void refusals_data();
    void refusals();
    void stretchesOfAPassage_data();
    void stretchesOfAPassage();
    void recordingsOfOtherSteps();
    void manyDays();
    void cellIsTheSumOfItsDays();
    void sameBytesInAnyOrder_data();
    void sameBytesInAnyOrder();
    void damagedStacks_data();
    void damagedStacks();
    void whatCannotBeAdded();
    void maps_data();
    void maps();

private:
    SkyPlan planOf(const SkyParameters &parameters) const
    {
        return planSky(Days::recordingsOfFolders({folder.path()}), parameters, Product::Fourier);
    }

    // Adds up into a new folder, stopped after so many questions the first time; the kept bytes.
    QByteArray added(const QString &name, int parts, int stopAfter, int threads) const
    {
        const RecordingSet set = Days::recordingsOfFolders({folder.path()});
        const SkyPlan plan = planSky(set, parametersOf(), Product::Fourier);
        RunChoice choice;
        choice.folder = stacks.filePath(name);
        choice.threads = threads;
        std::atomic<int> asked = 0;
        Jobs::Control control;
        control.isStopped = [&] { return stopAfter > 0 && ++asked > stopAfter; };
        if (stopAfter > 0 && !runSky(set, plan, choice, control).wasStopped)
            return "was not stopped";
        choice.parts = parts;
        for (choice.part = parts; choice.part > 1; --choice.part)
            runSky(set, plan, choice);
        runSky(set, plan, choice);
        choice.parts = choice.part = 1;
        const SkyRun whole = runSky(set, plan, choice);
        if (parts > 1 && stopAfter == 0 && whole.bytesRead > 0)
            return "was read twice";
        return bytesOf(QDir(choice.folder).filePath(stackFileName(plan, 1, 1)));
    }

    QTemporaryDir folder;
    QTemporaryDir stacks;
    QByteArray expected; // the stack of all days, in one go
};

void TestSkyRun::initTestCase()
{
    QVERIFY(folder.isValid() && stacks.isValid());
    for (int day = 0; day < days; ++day)
        TestSupport::writeFile(folder, QString("%1_N2_00.pnt").arg(day), dayBytes(day, day == 4));
    expected = added("whole", 1, 0, 1);
    QVERIFY(expected.startsWith("stack: "));
}

void TestSkyRun::lists_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("numbers");     // how many; -1: none
    QTest::addColumn<int>("dispersions"); // the same
    QTest::newRow("one") << "3" << 1 << 1;
    QTest::newRow("several, one twice") << "3,1,3" << 2 << 2;
    QTest::newRow("range of numbers") << "1,3-5" << 4 << -1;
    QTest::newRow("range turned round") << "5-3" << -1 << -1;
    QTest::newRow("steps that end by rounding") << "0:0.3:0.1" << -1 << 4;
    QTest::newRow("steps that do not reach the end") << "0:1:0.4" << -1 << 3;
    QTest::newRow("no step") << "0:1:0" << -1 << -1;
    QTest::newRow("too many steps") << "0:1000:0.5" << -1 << -1;
    QTest::newRow("below 0") << "-1" << -1 << -1;
    QTest::newRow("nothing") << "" << -1 << -1;
    QTest::newRow("all") << "all" << 0 << -1;
}

void TestSkyRun::lists()
{
    QFETCH(QString, text);
    QFETCH(int, numbers);
    QFETCH(int, dispersions);
    const auto whole = numbersOf(text);
    QCOMPARE(whole ? int(whole->size()) : -1, numbers);
    const auto steps = dispersionsOf(text);
    QCOMPARE(steps ? int(steps->size()) : -1, dispersions);
}

void TestSkyRun::refusals_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<int>("points");
    QTest::addColumn<QString>("rays");
    QTest::addColumn<QString>("dispersions");
    QTest::addColumn<double>("falseAlarms");
    QTest::newRow("points") << "points" << 1000 << "all"
                            << "0" << 1.0;
    QTest::newRow("rays") << "rays" << 1024 << "1;2"
                          << "0" << 1.0;
    QTest::newRow("dispersions") << "dispersions" << 1024 << "all"
                                 << "a" << 1.0;
    QTest::newRow("a delay beyond any recording") << "dispersions" << 1024 << "all"
                                                  << "1e13" << 1.0;
    QTest::newRow("false alarms") << "falseAlarms" << 1024 << "all"
                                  << "0" << 0.0;
}

void TestSkyRun::refusals()
{
    QFETCH(QString, field);
    SkyParameters parameters = parametersOf();
    QFETCH(int, points);
    QFETCH(QString, rays);
    QFETCH(QString, dispersions);
    QFETCH(double, falseAlarms);
    parameters.points = points;
    parameters.rays = rays;
    parameters.dispersions = dispersions;
    parameters.falseAlarms = falseAlarms;
    const SkyPlan plan = planOf(parameters);
    QVERIFY(!plan.problems.empty());
    QCOMPARE(plan.problems.front().field, field);
}

void TestSkyRun::stretchesOfAPassage_data()
{
    QTest::addColumn<int>("firstPoint"); // below 0: the sidereal time of the first recording
    QTest::addColumn<int>("starts");
    QTest::addColumn<int>("held"); // stretches of each passage
    QTest::newRow("from a point") << 10 << 3 << 3;
    QTest::newRow("as many as fit") << 10 << 0 << 3;
    QTest::newRow("more than there are") << 10 << 5 << 3;
    QTest::newRow("from the last one that fits") << 1240 << 2 << 1;
    QTest::newRow("by sidereal time, ten seconds behind the begin") << -1 << 2 << 1;
}

void TestSkyRun::stretchesOfAPassage()
{
    QFETCH(int, firstPoint);
    QFETCH(int, starts);
    QFETCH(int, held);
    SkyParameters parameters = parametersOf();
    parameters.firstPoint = firstPoint;
    parameters.starts = starts;
    const SkyPlan plan = planOf(parameters);
    QCOMPARE(int(plan.passages.size()), days);
    for (const Passage &passage : plan.passages) {
        QCOMPARE(int(passage.parts.size()), 1);
        QCOMPARE(int(std::count_if(passage.firstPoints.begin(), passage.firstPoints.end(),
                                   [](int point) { return point >= 0; })),
                 held);
        QCOMPARE(passage.firstPoints[0], 0);
        if (held > 1)
            QCOMPARE(passage.firstPoints[1], parameters.points / 2);
        // Every point that is read is in a stretch, or within the delays behind the last one.
        QCOMPARE(passage.points(),
                 (held - 1) * parameters.points / 2 + parameters.points + plan.reach);
    }
}

// As many files have another step, and they alone hold the later stretches.
void TestSkyRun::recordingsOfOtherSteps()
{
    RecordingSet set = Days::recordingsOfFolders({folder.path()});
    for (int i = 0; i < days; ++i) {
        set.entries.push_back(set.entries[std::size_t(i)]);
        RecordingEntry &entry = set.entries.back();
        entry.begin = entry.begin.addSecs(40000);
        entry.completePoints = entry.header.npoints = 3 * pointsOfFile;
        entry.header.tresolution *= 2;
    }
    SkyParameters parameters = parametersOf();
    parameters.starts = 8;
    const SkyPlan plan = planSky(set, parameters, Product::Fourier);
    QCOMPARE(int(plan.passages.size()), days);
    for (const Passage &passage : plan.passages)
        QVERIFY(passage.parts.front().recording < days);
}

// The highest values of as many days as a stack takes still fit; a plan of more is refused.
void TestSkyRun::manyDays()
{
    SkyStack stack("test", {1, 1, 1, 2});
    for (int day = 0; day < mostDays; ++day)
        stack.add(0, 0, 0, 1, {1e6F, -1e6F}, mostValue);
    const std::vector<double> wanted = {mostDays * mostValue, -mostDays * mostValue};
    QVERIFY(stack.cell(0, 0, 0).sums == wanted);
    QVERIFY(stack.cell(0, 0, 0).clipped == wanted);

    RecordingSet set = Days::recordingsOfFolders({folder.path()});
    set.entries.resize(1, set.entries[0]);
    for (int day = 1; day <= mostDays; ++day) {
        set.entries.push_back(set.entries[0]);
        set.entries.back().begin = set.entries[0].begin.addDays(day);
    }
    SkyParameters parameters = parametersOf();
    parameters.starts = 1;
    const SkyPlan plan = planSky(set, parameters, Product::Fourier);
    QCOMPARE(int(plan.problems.size()), 1);
    QVERIFY(plan.problems[0].text.contains(QString("at most %1").arg(mostDays)));
}

void TestSkyRun::cellIsTheSumOfItsDays()
{
    const RecordingSet set = Days::recordingsOfFolders({folder.path()});
    const SkyPlan plan = planSky(set, parametersOf(), Product::Fourier);
    RunChoice choice;
    const SkyRun run = runSky(set, plan, choice);
    QVERIFY(run.problem.isEmpty());
    QCOMPARE(run.bytesRead, plan.bytesRead(set));
    Days::FourierDaysParameters single;
    single.module = 1;
    single.ray = 3;
    single.points = 1024;
    single.firstPoint = 10 + 512;
    single.window = 129;
    single.dispersion = 30;
    const Days::DayPlan dayPlan = Days::planDays(set, single);
    std::vector<double> sums(1024);
    for (const Days::Day &day : dayPlan.list.days) {
        const Days::FourierDay product = Days::readDay(set, dayPlan, day, single, {});
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += double(product.powers[i]);
    }
    const CellStack cell = run.stack.cell(2, 1, 1);
    QCOMPARE(cell.days, days);
    for (std::size_t i = 0; i < sums.size(); ++i)
        QVERIFY(std::abs(cell.sums[i] - sums[i]) <= days * valueUnit / 2 + 1e-6);
}

void TestSkyRun::sameBytesInAnyOrder_data()
{
    QTest::addColumn<int>("parts");
    QTest::addColumn<int>("stopAfter");
    QTest::addColumn<int>("threads");
    QTest::newRow("several threads") << 1 << 0 << 4;
    QTest::newRow("three parts, the last first") << 3 << 0 << 2;
    QTest::newRow("as many parts as days") << days << 0 << 1;
    QTest::newRow("stopped within the first day") << 1 << 25 << 1;
    QTest::newRow("stopped later, many threads") << 1 << 150 << 4;
    QTest::newRow("stopped, then in parts") << 2 << 100 << 1;
}

void TestSkyRun::sameBytesInAnyOrder()
{
    QFETCH(int, parts);
    QFETCH(int, stopAfter);
    QFETCH(int, threads);
    const QByteArray bytes = added(QTest::currentDataTag(), parts, stopAfter, threads);
    QVERIFY2(bytes.size() == expected.size(), bytes.left(100).constData());
    QVERIFY(bytes == expected);
}

void TestSkyRun::damagedStacks_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<int>("cut"); // bytes at the end
    QTest::addColumn<QString>("words");
    QTest::newRow("cut short") << QByteArray() << QByteArray() << 1000 << "cut short";
    QTest::newRow("cut within the header") << QByteArray() << QByteArray() << -1 << "header";
    QTest::newRow("another version")
        << QByteArray("form 3") << QByteArray("form 9") << 0 << "another version";
    QTest::newRow("another shape")
        << QByteArray("shape: 3 ") << QByteArray("shape: 4 ") << 0 << "another request";
    QTest::newRow("a day of other files")
        << QByteArray("12:00:00 ") << QByteArray("12:00:00 0") << 0 << "have changed or are gone";
    QTest::newRow("hum that is no number")
        << QByteArray("\nday: ") << QByteArray("\nhum: 49900 x\nday: ") << 0 << "header";
    QTest::newRow("other numbers")
        << expected.right(4) << QByteArray("\x7f\x01\x02\x03") << 0 << "are damaged";
}

void TestSkyRun::damagedStacks()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(int, cut);
    QFETCH(QString, words);
    const RecordingSet set = Days::recordingsOfFolders({folder.path()});
    const SkyPlan plan = planSky(set, parametersOf(), Product::Fourier);
    RunChoice choice;
    choice.folder = stacks.filePath(QTest::currentDataTag());
    QVERIFY(QDir().mkpath(choice.folder));
    const QString path = QDir(choice.folder).filePath(stackFileName(plan, 1, 1));
    QByteArray bytes = expected;
    if (!from.isEmpty()) {
        const int place = bytes.indexOf(from);
        QVERIFY(place > 0);
        bytes.replace(place, from.size(), to);
    }
    bytes = cut < 0 ? bytes.left(300) : bytes.left(bytes.size() - cut);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    const SkyRun run = runSky(set, plan, choice);
    QVERIFY2(run.remarks.join('\n').contains(words), qPrintable(run.remarks.join('\n')));
    QCOMPARE(run.keptPassages, 0);
    QVERIFY(bytesOf(path) == expected);
}

void TestSkyRun::whatCannotBeAdded()
{
    QTemporaryDir other;
    for (int day = 0; day < 3; ++day)
        TestSupport::writeFile(other, QString("%1_N2_00.pnt").arg(day), dayBytes(day, day == 1));
    const RecordingSet set = Days::recordingsOfFolders({other.path()});
    const SkyPlan plan = planSky(set, parametersOf(), Product::Fourier);
    QVERIFY(QFile::remove(other.filePath("2_N2_00.pnt")));
    const SkyRun run = runSky(set, plan, {});
    QCOMPARE(int(run.badPassages.size()), 1);
    QVERIFY(run.badPassages.front().text.contains("2_N2_00.pnt"));
    QVERIFY2(run.remarks.join('\n').contains("the ray does not count"),
             qPrintable(run.remarks.join('\n')));
    QCOMPARE(run.stack.days(0, 0), 2);
    QCOMPARE(run.stack.days(1, 0), 1);
    QCOMPARE(int(run.stack.added.size()), 2);
}

void TestSkyRun::maps_data()
{
    QTest::addColumn<QString>("over");
    QTest::addColumn<QString>("dispersions");
    QTest::addColumn<int>("starts");
    QTest::addColumn<bool>("isAllLeftOut");
    QTest::addColumn<int>("rows");
    QTest::newRow("starts") << "starts"
                            << "0,30" << 3 << false << 3;
    QTest::newRow("one start, one dispersion") << "starts"
                                               << "0" << 1 << false << 1;
    QTest::newRow("dispersions") << "dms"
                                 << "0,30" << 3 << false << 2;
    QTest::newRow("all bins are interference") << "starts"
                                               << "0" << 1 << true << 1;
}

void TestSkyRun::maps()
{
    QFETCH(bool, isAllLeftOut);
    QFETCH(int, rows);
    const RecordingSet set = Days::recordingsOfFolders({folder.path()});
    SkyParameters parameters = parametersOf();
    QFETCH(QString, over);
    QFETCH(QString, dispersions);
    QFETCH(int, starts);
    parameters.over = over;
    parameters.dispersions = dispersions;
    parameters.starts = starts;
    SkyPlan plan = planSky(set, parameters, Product::Fourier);
    if (isAllLeftOut)
        plan.interference = {{20, false, 19.99, 1, {}}, {30, false, 20, 2, {}}};
    const SkyRun run = runSky(set, plan, {});
    const SkyMap map = mapOf(run.stack, plan, mapChoiceOf(plan).choice);
    QVERIFY2(map.problem.isEmpty(), qPrintable(map.problem));
    QCOMPARE(int(map.rows.size()), rows);
    QCOMPARE(map.columns, 1024);
    QCOMPARE(int(map.sigma.size()), rows * 1024);
    int above = 0;
    for (std::size_t i = 0; i < map.sigma.size(); ++i) {
        QCOMPARE(std::isnan(map.sigma[i]), i % 1024 < std::size_t(Days::lowestBin));
        above += map.sigma[i] > 3;
    }
    // Noise: 0.00135 of the places, of which the harmonics make some depend on each other; the
    // best of the dispersions are shown.
    QVERIFY(above <= (isAllLeftOut ? 0 : 6 * rows));
}

ZRT_UNIT_TEST_MAIN(TestSkyRun)
#include "tst_skyrun.moc"
