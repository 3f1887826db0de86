#include "results/resulttable.h"
#include "support/batchfolder.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <cmath>
#include <random>

// profile as a user or a batch system calls it.

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

constexpr int days = 6;
constexpr int pointsOfFile = 2300;
constexpr double period = 0.5; // s at the telescope

// One strip of the sky: a file a sidereal day, ray 2 with pulses that begin anywhere.
QByteArray dayBytes(int day)
{
    std::mt19937 random(unsigned(day + 1));
    std::normal_distribution<float> law(100, 1);
    const QByteArray bytes = TestSupport::recordingBytes(
        {pointsOfFile, 1, 33, 2}, [&](int point, int, int channel, int ray) {
            const double turn = point * 0.0124928 / period - 0.137 * day;
            const double off = (turn - std::round(turn)) / 0.08;
            const double pulse = 0.25 * std::exp(-4 * M_LN2 * off * off);
            return law(random) + float(ray == 1 && channel < 32 ? pulse : 0);
        });
    const QDateTime begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC).addSecs(qint64(day) * 86164);
    const QByteArray date = begin.toString("dd.MM.yyyy").toLatin1();
    const QByteArray time = begin.toString("hh:mm:ss").toLatin1();
    return QByteArray(bytes).replace("01.04.2015", date).replace("12:00:00", time);
}

const QString place = "--module 1 --count 2048 --dm 0 --bins 32 --period 0.5 ";

} // namespace

class TestProfile : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void averagesAndGoesOn();
    void keptDaysGiveTheSame();
    void tellsWhatItCannot_data();
    void tellsWhatItCannot();
};

void TestProfile::initTestCase()
{
    QVERIFY(QDir(folder.path()).mkdir("in"));
    QVERIFY(QDir(folder.path()).mkdir("empty"));
    for (int day = 0; day < days; ++day)
        writeFile(path(QString("in/d%1.pnt").arg(day)), dayBytes(day));
    writeFile(path("orbit.par"), "F0 2\nBINARY DD\n");
    writeFile(path("good.par"), "F0 2\nPEPOCH 57000\nDM 0\nEPHEM DE405\n");
}

void TestProfile::averagesAndGoesOn()
{
    const QString call = "profile " + place + "--ray 2 --align template --plot png -o out in";
    succeed(call);
    const QMap<QString, QByteArray> files = filesOf(path("out"));
    const QByteArray average = files["m1_r2.profile.average.txt"];
    const QByteArray stacked = "in_average: 6 of 6 days\naligned_by_template: 6\n";
    QVERIFY2(average.contains(stacked), average.left(1500));
    QCOMPARE(files["m1_r2.profile.arrivals.tim"].count('\n'), 7);
    for (const char *const name :
         {"average", "growth", "snr", "periods", "dispersions", "days", "both"})
        QVERIFY2(files[QString("m1_r2.profile.%1.png").arg(name)].startsWith("\x89PNG"), name);
    const Results::ReadTable profiles = Results::readTable(files["m1_r2.profile.profiles.txt"]);
    QCOMPARE(profiles.table.columns.size(), std::size_t(1 + days));
    QCOMPARE(profiles.table.rows(), 32);
    QVERIFY(!average.contains("flux_density"));
    QVERIFY(average.contains("best_period: 0.5"));
    // What is done is skipped.
    const Ended again = run(call);
    QVERIFY2(again.errors.contains("is done with the same parameters"), qPrintable(again.errors));
    QCOMPARE(filesOf(path("out")), files);
    // Another average of the kept days, with a flux.
    succeed(call + " --sefd 100 --tag flux --days-off 2015-04-02");
    const QByteArray flux = contentOf(path("out/m1_r2.profile.flux.average.txt"));
    QVERIFY2(flux.contains("flux_density: "), flux.left(2000));
    QVERIFY(flux.contains("in_average: 5 of 6 days"));
}

void TestProfile::keptDaysGiveTheSame()
{
    const QString call = "profile " + place + "--ray 1 --align none --kept kept -o ";
    succeed(call + "first in");
    QCOMPARE(QDir(path("kept")).entryList({"*.profile"}, QDir::Files).size(), days);
    succeed(call + "second in");
    QCOMPARE(filesOf(path("second")), filesOf(path("first")));
    // A damaged product is made anew.
    QFile file(path("kept/" + QDir(path("kept")).entryList({"*.profile"}).front()));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() - 3));
    QVERIFY(file.write("xyz") == 3);
    file.close();
    succeed(call + "third in");
    QCOMPARE(filesOf(path("third")), filesOf(path("first")));
}

void TestProfile::tellsWhatItCannot_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    const QString ray = "--module 1 --ray 2 --count 2048 ";
    QTest::newRow("no period") << ray + "in" << 64 << "--period: Give the period";
    QTest::newRow("longer than the stretch") << ray + "--period 30 in" << 64 << "more points";
    QTest::newRow("too many bins") << ray + "--period 0.5 --bins 64 in" << 64 << "Take 32 bins";
    QTest::newRow("orbit") << ray + "--par orbit.par in" << 64 << "binary model DD";
    QTest::newRow("no such file") << ray + "--par none.par in" << 64 << "none.par";
    QTest::newRow("empty folder") << ray + "--period 0.5 empty" << 66 << "no recording";
    QTest::newRow("no such ray") << "--module 1 --ray 9 --count 2048 --bins 32 --period 0.5 in"
                                 << 65 << "ray 9";
    QTest::newRow("no such day") << ray + "--bins 32 --period 0.5 --days-off 2014-01-01 in" << 64
                                 << "no day 2014-01-01";
    QTest::newRow("ignored keys, ephemeris refused")
        << ray + "--bins 32 --par good.par -o par in" << 0 << "not used: EPHEM";
}

void TestProfile::tellsWhatItCannot()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, text);
    const Ended end = run("profile " + arguments);
    QVERIFY2(end.code == code && end.errors.contains(text), qPrintable(end.errors));
}

ZRT_UNIT_TEST_MAIN(TestProfile)

#include "tst_profile.moc"
