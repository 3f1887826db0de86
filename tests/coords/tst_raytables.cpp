#include "coords/raytables.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <cmath>

using namespace Tools;

class TestRayTables : public QObject {
    Q_OBJECT

private slots:
    void nominalBeams_data();
    void nominalBeams();
    void nominalBeamsOfOneSite();
    void beamsOfNoTable_data();
    void beamsOfNoTable();
    void ownTable();
    void damagedTables_data();
    void damagedTables();
    void unusableFiles_data();
    void unusableFiles();
    void fileInTheConfiguration();
};

namespace {

QString written(const QTemporaryDir &folder, const QByteArray &text)
{
    const QString path = folder.filePath("ray-declinations.txt");
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? path : QString();
}

} // namespace

void TestRayTables::nominalBeams_data()
{
    QTest::addColumn<QString>("plosh");
    QTest::addColumn<double>("spacing"); // of sin z between neighbouring beams
    QTest::newRow("N0") << "N0" << 0.0188;
    QTest::newRow("N1") << "N1" << 0.0094;
    QTest::newRow("N2") << "N2" << 0.0094;
    QTest::newRow("N4") << "N4" << 0.0188;
}

void TestRayTables::nominalBeams()
{
    QFETCH(QString, plosh);
    QFETCH(double, spacing);
    const RayTables tables = readRayTables("/missing/ray-declinations.txt");
    QCOMPARE(tables.problem, QString());
    const double degree = 3.14159265358979323846 / 180;
    const double latitude = std::asin(0.8173688208920868);
    double last = 0;
    for (int beam = 0; beam < 48; ++beam) {
        const double declination = deltaFromRay(tables, beam / 8 + 1, beam % 8 + 1, plosh);
        const double sine = std::sin(latitude - declination * degree);
        QVERIFY(declination > -10 && declination < 55);
        if (beam > 0) // declinations have four decimals
            QVERIFY(std::abs(last - sine - spacing) < 2e-6);
        last = sine;
    }
}

// N1 goes on as N2, and N0 and N4 lie between each other.
void TestRayTables::nominalBeamsOfOneSite()
{
    const RayTables tables = readRayTables("/missing/ray-declinations.txt");
    QVERIFY(deltaFromRay(tables, 6, 8, "N1") < deltaFromRay(tables, 1, 1, "N2"));
    QCOMPARE(deltaFromRay(tables, 1, 1, "N0"), deltaFromRay(tables, 1, 1, "N1"));
    QCOMPARE(deltaFromRay(tables, 1, 1, "N4"), deltaFromRay(tables, 1, 2, "N1"));
    QCOMPARE(deltaFromRay(tables, 6, 8, "N4"), deltaFromRay(tables, 6, 8, "N2"));
}

void TestRayTables::beamsOfNoTable_data()
{
    QTest::addColumn<int>("module");
    QTest::addColumn<int>("ray");
    QTest::addColumn<QString>("plosh");
    QTest::newRow("module 0") << 0 << 1 << "N1";
    QTest::newRow("module 7") << 7 << 1 << "N4";
    QTest::newRow("ray 9") << 1 << 9 << "N2";
    QTest::newRow("site N3") << 1 << 1 << "N3";
    QTest::newRow("last character alone") << 1 << 1 << "1";
    QTest::newRow("no site") << 1 << 1 << "";
}

void TestRayTables::beamsOfNoTable()
{
    QFETCH(int, module);
    QFETCH(int, ray);
    QFETCH(QString, plosh);
    QCOMPARE(deltaFromRay(readRayTables("/missing"), module, ray, plosh), -1000.0);
}

void TestRayTables::ownTable()
{
    QTemporaryDir folder;
    const QString path = written(folder, "# mine\r\n\r\n N4 1 2\t-3.25 # cold\r\nN1 6 8 90\r\n");
    const RayTables tables = readRayTables(path);
    QCOMPARE(tables.problem, QString());
    QCOMPARE(deltaFromRay(tables, 1, 2, "N4"), -3.25);
    QCOMPARE(deltaFromRay(tables, 6, 8, "N1"), 90.0);
    QCOMPARE(deltaFromRay(tables, 1, 2, "N1"), noDeclination);
}

void TestRayTables::damagedTables_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char *name, const QByteArray &text, const char *problem) {
        QTest::newRow(name) << text << QString(problem);
    };
    row("unknown site", "# a\n\nN3 1 1 5", "line 3 names the site \"N3\"");
    row("module 7", "N1 7 1 5", "line 1 names the module \"7\"");
    row("module in letters", "N1 one 1 5", "line 1 names the module \"one\"");
    row("ray 0", "N1 1 0 5", "line 1 names the ray \"0\"");
    row("decimal comma", "N1 1 1 5,5", "line 1 gives the declination \"5,5\"");
    row("beyond the pole", "N1 1 1 90.01", "line 1 gives the declination");
    row("not a number", "N1 1 1 nan", "line 1 gives the declination");
    row("cut off", "N1 1 1 5\nN1 1", "line 2 is not of the form");
    row("one number too many", "N1 1 1 5 5", "line 1 is not of the form");
    row("beam twice", "N1 1 1 5\nN2 1 1 5\nN1 1 1 6",
        "line 3 gives module 1, ray 1 of N1 a second");
    row("beam of N4 twice", "N4 1 1 5\nN4 1 1 6", "line 2 gives module 1, ray 1 of N4 a second");
    row("binary", QByteArray("\0\xff\x80 \n", 5), "line 1 is not of the form");
    row("empty", "", "it gives no beam at all");
    row("only comments", "# N1 1 1 5\n", "it gives no beam at all");
}

void TestRayTables::damagedTables()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, problem);
    const RayTables tables = parseRayTables(text);
    QVERIFY2(tables.problem.startsWith(problem), qPrintable(tables.problem));
    QVERIFY(tables.byKey.isEmpty() && tables.n4.empty());
}

void TestRayTables::unusableFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("problem");
    QTest::newRow("damaged") << QByteArray("N1 1 1 5\nN1 1 2 x")
                             << ": line 2 gives the declination";
    QTest::newRow("longer than any table")
        << QByteArray((1 << 20) + 1, '\n') << ": it is longer than 1048576 bytes";
}

void TestRayTables::unusableFiles()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, problem);
    QTemporaryDir folder;
    const QString path = written(folder, text);
    const RayTables tables = readRayTables(path);
    QVERIFY2(tables.problem.contains(problem), qPrintable(tables.problem));
    QVERIFY(tables.problem.contains(path));
    QVERIFY(deltaFromRay(tables, 1, 1, "N1") < 0); // the nominal value, not the 5 of the file
}

void TestRayTables::fileInTheConfiguration()
{
    QTemporaryDir configuration;
    qputenv("XDG_CONFIG_HOME", configuration.path().toLocal8Bit());
    QCOMPARE(rayTablesPath(), configuration.filePath("zrt/ray-declinations.txt"));
    QVERIFY(QDir(configuration.path()).mkdir("zrt"));
    QVERIFY(QFile::rename(written(configuration, "N2 3 4 12.5"), rayTablesPath()));
    QCOMPARE(deltaFromRay(3, 4, "N2"), 12.5);
    QCOMPARE(deltaFromRay(1, 1, "N1"), noDeclination);
}

ZRT_UNIT_TEST_MAIN(TestRayTables)
#include "tst_raytables.moc"
