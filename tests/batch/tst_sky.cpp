#include "analyses/sky/skyparameters.h"
#include "results/resulttable.h"
#include "support/batchfolder.h"
#include "support/dayfiles.h"
#include "support/testmain.h"

#include <cmath>

// map and search as a user or a batch system calls them.

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

constexpr int days = 6;
constexpr int pointsOfFile = 2300;

QByteArray dayBytes(int day)
{
    return TestSupport::stripBytes(day, pointsOfFile, 0.05, 0.12);
}

const QString place = "--count 1024 --point 0 --window 129 --dms 0,40 --interference none ";

} // namespace

class TestSky : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void failures_data();
    void failures();
    void partsAndAllAtOnce();
    void mapOfKeptStacks_data();
    void mapOfKeptStacks();
    void folds();
    void copiedCommand();
};

void TestSky::initTestCase()
{
    QVERIFY(folder.isValid());
    qputenv("XDG_CONFIG_HOME", path("config").toUtf8());
    QDir().mkpath(path("strip"));
    QDir().mkpath(path("wrong"));
    for (int day = 0; day < days; ++day)
        writeFile(path(QString("strip/%1_N2_00.pnt").arg(day)), dayBytes(day));
    writeFile(path("wrong/text.pnt"), "this is no recording\n");
}

void TestSky::failures_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("words");
    QTest::newRow("no such folder") << "search nowhere" << 66 << "no folder";
    QTest::newRow("no usable recording") << "map wrong" << 65 << "None of 1 recordings";
    QTest::newRow("no such ray") << "search --rays 7 --count 1024 strip" << 65
                                 << "does not hold module 1, ray 7";
    QTest::newRow("no dispersion") << "search --dms a strip" << 64 << "--dms: \"a\" is no list";
    QTest::newRow("too short for the stretch")
        << "search --point 0 --count 4096 strip" << 65 << "None of 6";
    QTest::newRow("a ray that is not added up")
        << "map --count 1024 --rays 1 --map-ray 2 --point 0 strip" << 64 << "--map-ray";
    QTest::newRow("a map without a name")
        << "map --count 1024 --noise without --point 0 strip" << 64 << "--name";
    QTest::newRow("options of the other product")
        << "search --ffa --window 129 strip" << 64 << "excludes";
    QTest::newRow("options of folds") << "map --period-min 1 strip" << 64 << "requires";
    QTest::newRow("few trials") << "search --ffa --count 1024 --point 0 --period-min 0.6 "
                                   "--period-max 0.62 strip"
                                << 64 << "--period-max: These periods are";
    QTest::newRow("part of nothing") << "search --part 3/2 strip" << 64 << "a part is like 2/12";
}

void TestSky::failures()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, words);
    const Ended end = run(arguments);
    QVERIFY2(end.code == code, qPrintable(QString::number(end.code) + end.errors));
    QVERIFY2(end.errors.contains(words), qPrintable(end.errors));
}

void TestSky::partsAndAllAtOnce()
{
    succeed("search " + place + "--kept one --output a strip");
    for (const QString part : {"3/3", "1/3", "2/3"})
        succeed("search " + place + "--kept parts --quiet --part " + part + " --output b strip");
    QVERIFY(!QFileInfo::exists(path("b")));
    const Ended end = run("search " + place + "--kept parts --output b strip");
    QCOMPARE(end.code, 0);
    QVERIFY2(end.errors.contains("0.0 MB of recordings were read; 6 days were kept"),
             qPrintable(end.errors));
    QVERIFY(!filesOf(path("a")).isEmpty());
    QVERIFY(filesOf(path("a")) == filesOf(path("b")));
    const Results::ReadTable table =
        Results::readTable(contentOf(path("a/sky.search.candidates.txt")));
    QVERIFY2(table.problem.isEmpty(), qPrintable(table.problem));
    const auto &found =
        std::get<std::vector<double>>(table.table.columns[1].values); // at the telescope
    QVERIFY(std::abs(found[0] - TestSupport::stripFrequency) < 0.01);
    const Ended again = run("search " + place + "--kept one --output a strip");
    QCOMPARE(again.code, 0);
    QVERIFY(!again.errors.contains("recordings were read"));
}

void TestSky::mapOfKeptStacks_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("file");
    QTest::newRow("over starts") << "--map-ray 2 --name crab"
                                 << "map_crab_np1024_sp1024_b3_polinom";
    QTest::newRow("over dispersions") << "--map-ray 2 --over dms"
                                      << "map_sky_np1024_sp1024_b2_polinom";
    QTest::newRow("named by the user") << "--noise without --name mine"
                                       << "mine";
}

void TestSky::mapOfKeptStacks()
{
    QFETCH(QString, arguments);
    QFETCH(QString, file);
    const bool isKept = !arguments.contains("--noise");
    const Ended end =
        run("map " + place + arguments + " --kept one --plot png --output maps strip");
    QVERIFY2(end.code == 0, qPrintable(end.errors));
    QCOMPARE(end.errors.contains("0.0 MB of recordings were read"), isKept);
    const Results::ReadTable map = Results::readTable(contentOf(path("maps/" + file + ".txt")));
    QVERIFY2(map.problem.isEmpty(), qPrintable(map.problem));
    QCOMPARE(map.table.rows(), 1024);
    QVERIFY(contentOf(path("maps/" + file + ".png")).startsWith("\x89PNG"));
}

void TestSky::folds()
{
    const QString stacks =
        "--ffa --count 1024 --point 0 --dms 0,40 --interference none --kept one ";
    succeed("search " + stacks + "--output folds strip");
    const Results::ReadTable search =
        Results::readTable(contentOf(path("folds/sky.search-ffa.candidates.txt")));
    QVERIFY2(search.problem.isEmpty(), qPrintable(search.problem));
    QVERIFY(search.table.rows() > 0);
    const auto &periods = std::get<std::vector<double>>(search.table.columns[2].values);
    QVERIFY2(std::abs(periods[0] - TestSupport::stripPeriod) < 0.01,
             qPrintable(QString::number(periods[0])));
    const Ended end = run("map " + stacks + "--map-ray 2 --plot png --output folds strip");
    QVERIFY2(end.errors.contains("0.0 MB of recordings were read"), qPrintable(end.errors));
    const QStringList files = QDir(path("folds")).entryList({"map_sky-ffa_np1024_*.txt"});
    QCOMPARE(files.size(), 1);
    const Results::ReadTable map = Results::readTable(contentOf(path("folds/" + files[0])));
    QVERIFY2(map.problem.isEmpty(), qPrintable(map.problem));
    QCOMPARE(map.table.columns[0].name, QString("period"));
    QVERIFY(map.table.rows() > 400);
    QCOMPARE(QDir(path("folds")).entryList({"map_*.png"}).size(), 1);
}

void TestSky::copiedCommand()
{
    Sky::SkyParameters parameters;
    parameters.points = 1024;
    parameters.firstPoint = 0;
    parameters.window = 129;
    parameters.dispersions = "0,40";
    const QString command =
        Sky::skyCommand(*Sky::findSkyAnalysis({false, false, true}), parameters, {"strip"});
    const Ended end = runShell(command + " --interference none --kept one --output c");
    QVERIFY2(end.code == 0, qPrintable(command + end.errors));
    QVERIFY(filesOf(path("a")) == filesOf(path("c")));
}

ZRT_UNIT_TEST_MAIN(TestSky)
#include "tst_sky.moc"
