#include "coords/raytables.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <cmath>

using namespace Tools;

class TestRayTables : public QObject {
    Q_OBJECT

private slots:
    void nominalBeams();
    void damagedTables();
    void ownTable();
};

// N1 goes on as N2, and N0 and N4 lie between each other.
void TestRayTables::nominalBeams()
{
    const RayTables tables = readRayTables("/missing/ray-declinations.txt");
    const auto sine = [&](const QString &site, int beam) {
        const double declination = deltaFromRay(tables, beam / 8 + 1, beam % 8 + 1, site);
        return std::sin(std::asin(0.8173688208920868) - declination * std::acos(-1) / 180);
    };
    for (const QString site : {"N0", "N1", "N2", "N4"}) {
        const double spacing = site == "N1" || site == "N2" ? 0.0094 : 0.0188;
        for (int beam = 0; beam < 47; ++beam) // declinations have four decimals
            QVERIFY(std::abs(sine(site, beam) - sine(site, beam + 1) - spacing) < 2e-6);
    }
    QVERIFY(std::abs(sine("N1", 47) - sine("N2", 0) - 0.0094) < 2e-6);
    QCOMPARE(sine("N4", 0), sine("N1", 1));
    QCOMPARE(deltaFromRay(tables, 7, 1, "N4"), -1000.0);
    QCOMPARE(deltaFromRay(tables, 1, 1, "1"), -1000.0);
}

void TestRayTables::damagedTables()
{
    const std::pair<QByteArray, QString> tables[] = {
        {"# a\n\nN3 1 1 5", "line 3 names the site \"N3\""},
        {"N1 7 1 5", "line 1 names the module \"7\""},
        {"N1 1 0 5", "line 1 names the ray \"0\""},
        {"N1 1 1 5,5", "line 1 gives the declination \"5,5\""},
        {"N1 1 1 90.01", "line 1 gives the declination"},
        {"N1 1 1 5\nN1 1", "line 2 is not of the form"},
        {"N1 1 1 5\nN2 1 1 5\nN1 1 1 6", "line 3 gives module 1, ray 1 of N1 a second"},
        {QByteArray("\0\xff\x80 \n", 5), "line 1 is not of the form"},
        {"# N1 1 1 5\n", "it gives no beam at all"},
        {QByteArray((1 << 20) + 1, '\n'), "it is longer than 1048576"},
    };
    const QTemporaryDir folder;
    for (const auto &[text, problem] : tables) {
        const QString path = TestSupport::writeFile(folder, "rays.txt", text);
        const RayTables read = readRayTables(path);
        const QString expected = path + "\" are not used: " + problem;
        QVERIFY2(read.problem.contains(expected), qPrintable(read.problem));
        QVERIFY(deltaFromRay(read, 1, 1, "N1") < 0); // the nominal value, not the 5 of the file
    }
}

void TestRayTables::ownTable()
{
    QTemporaryDir configuration;
    qputenv("XDG_CONFIG_HOME", configuration.path().toLocal8Bit());
    QVERIFY(QDir(configuration.path()).mkdir("zrt"));
    TestSupport::writeFile(configuration, "zrt/ray-declinations.txt",
                           "# mine\r\n\r\n N4 1 2\t-3.25 # cold\r\nN1 6 8 90\r\n");
    QCOMPARE(deltaFromRay(1, 2, "N4"), -3.25);
    QCOMPARE(deltaFromRay(6, 8, "N1"), 90.0);
    QCOMPARE(deltaFromRay(1, 2, "N1"), noDeclination);
}

ZRT_UNIT_TEST_MAIN(TestRayTables)
#include "tst_raytables.moc"
