#include "analyses/pulses/pulsetables.h"
#include "results/resulttable.h"
#include "simulator/recording.h"
#include "support/batchfolder.h"
#include "support/testmain.h"

#include <cmath>

// pulses and repeats as a user or a batch system calls them.

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

constexpr double step = 0.0124928; // s

// One strip of the sky: a file a sidereal day; ray 2 has a pulse of one source in each, ray 1
// another one on the second day alone.
Simulator::Simulation dayOf(int day)
{
    Simulator::Simulation s;
    s.npoints = 9000;
    s.rays = 3;
    s.seed = quint32(day + 1);
    s.beginTime = s.beginTime.addSecs(qint64(day) * 86164);
    Simulator::SinglePulse pulse;
    pulse.ray = 2;
    pulse.time = (4000 + 50 * day) * step;
    pulse.width = 4 * step;
    pulse.dispersion = 40;
    pulse.strength = 2;
    s.pulses = {pulse};
    if (day == 1) {
        pulse.ray = 1;
        pulse.time = 7000 * step;
        pulse.dispersion = 70;
        s.pulses.push_back(pulse);
    }
    return s;
}

const QString search = "pulses --dm-max 100 --widths 1,2,4,8 ";

Results::ResultTable tableOf(const QByteArray &bytes)
{
    return Results::readTable(bytes).table;
}

double numberAt(const Results::ResultTable &table, const QString &column, std::size_t row)
{
    for (const Results::Column &one : table.columns) {
        if (one.name != column)
            continue;
        if (const auto *numbers = std::get_if<std::vector<double>>(&one.values))
            return numbers->at(row);
        return std::get<QStringList>(one.values).at(int(row)).toDouble();
    }
    return std::nan("");
}

} // namespace

class TestBatchPulses : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void tablesAndGoingOn();
    void anyWayTheSame();
    void sourcesThatRepeat();
    void tellsWhatItCannot_data();
    void tellsWhatItCannot();
};

void TestBatchPulses::initTestCase()
{
    QVERIFY(QDir(folder.path()).mkdir("in"));
    for (int day = 0; day < 3; ++day)
        QVERIFY(!Simulator::writeRecording(dayOf(day), path(QString("in/d%1.pnt").arg(day))));
    writeFile(path("no.txt"), "points: 3\n");
    succeed(search + "--jobs 1 -o out in");
}

void TestBatchPulses::tablesAndGoingOn()
{
    const QMap<QString, QByteArray> files = filesOf(path("out"));
    QCOMPARE(files.size(), 3);
    for (int day = 0; day < 3; ++day) {
        const Results::ResultTable table = tableOf(files[QString("d%1.pnt.pulses.txt").arg(day)]);
        std::size_t row = 0; // of the second day two pulses are about as strong
        while (row + 1 < std::size_t(table.rows()) && numberAt(table, "ray", row) != 2)
            ++row;
        QCOMPARE(numberAt(table, "ray", row), 2.0);
        QVERIFY(std::abs(numberAt(table, "dm", row) - 40) < 4 * numberAt(table, "dm_error", row));
        QVERIFY(std::abs(numberAt(table, "point", row) - 4000 - 50 * day) <
                4 * numberAt(table, "point_error", row));
        const double width = numberAt(table, "width", row);
        QVERIFY(std::abs(width - 4 * step * 1000) < 4 * numberAt(table, "width_error", row));
        QCOMPARE(Results::valueOf(table.request, "searched_rays"), QString("1/1 1/2 1/3"));
        QCOMPARE(Results::valueOf(table.request, "searched_points"), QString("9000"));
    }
    const Ended again = run(search + "-o out in");
    QVERIFY2(again.errors.contains("done with the same parameters"), qPrintable(again.errors));
    QCOMPARE(filesOf(path("out")), files);
}

// Threads, the rays that are searched beside and the form of the file change no number.
void TestBatchPulses::anyWayTheSame()
{
    succeed(search + "--jobs 2 -o parallel in");
    QCOMPARE(filesOf(path("parallel")), filesOf(path("out")));
    succeed(search + "--threshold 8 --rays 2 --format csv -o one in/d0.pnt");
    succeed(search + "--threshold 8 --format json -o all in/d0.pnt");
    const Results::ResultTable one = tableOf(contentOf(path("one/d0.pnt.pulses.csv")));
    const Results::ResultTable all = tableOf(contentOf(path("all/d0.pnt.pulses.json")));
    QCOMPARE(one.rows(), 1);
    QCOMPARE(all.rows(), 1);
    for (const char *const column : {"point", "dm", "dm_error", "width", "snr", "mjd", "mjd_error"})
        QCOMPARE(numberAt(one, column, 0), numberAt(all, column, 0));
}

void TestBatchPulses::sourcesThatRepeat()
{
    succeed(search + "--threshold 8 -o strong in");
    succeed("repeats -o first.txt strong/d0.pnt.pulses.txt strong/d1.pnt.pulses.txt "
            "strong/d2.pnt.pulses.txt");
    const Results::ResultTable list = tableOf(contentOf(path("first.txt")));
    QCOMPARE(list.rows(), 4);
    QCOMPARE(list.columns.front().name, QString("file"));
    const Results::ResultTable sources = tableOf(contentOf(path("first.sources.txt")));
    QCOMPARE(sources.rows(), 1);
    QCOMPARE(numberAt(sources, "dates", 0), 3.0);
    QCOMPARE(numberAt(sources, "pulses", 0), 3.0);
    QCOMPARE(numberAt(sources, "ray", 0), 2.0);
    // Each recording lasts 112 s, all of it within four minutes of the source.
    const double hours = 3 * 9000 * step / 3600;
    QVERIFY(std::abs(numberAt(sources, "hours", 0) - hours) < 1e-6);
    QVERIFY(std::abs(numberAt(sources, "rate", 0) - 3 / hours) < 1e-3);
    QVERIFY(std::abs(numberAt(sources, "rate_error", 0) - std::sqrt(3.0) / hours) < 1e-3);
    // The order of the tables does not matter.
    succeed("repeats -o second.txt strong/d2.pnt.pulses.txt strong/d0.pnt.pulses.txt "
            "strong/d1.pnt.pulses.txt");
    QCOMPARE(contentOf(path("second.txt")), contentOf(path("first.txt")));
    QCOMPARE(contentOf(path("second.sources.txt")), contentOf(path("first.sources.txt")));
    succeed("repeats --dates 4 -o third.csv --format csv strong/d0.pnt.pulses.txt");
    QCOMPARE(tableOf(contentOf(path("third.sources.csv"))).rows(), 0);
}

void TestBatchPulses::tellsWhatItCannot_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("no list") << "pulses --rays a in" << 64 << "--rays: \"a\" is no list";
    QTest::newRow("the wrong way round")
        << "pulses --dm-min 50 --dm-max 20 in" << 64 << "--dm-max: The highest";
    QTest::newRow("no such ray") << "pulses --rays 9 in/d0.pnt" << 65 << "its rays 1 to 3";
    QTest::newRow("no such channel")
        << "pulses --channels-off 40 in/d0.pnt" << 65 << "--channels-off: \"40\"";
    QTest::newRow("no recording") << "pulses no.txt" << 65 << "no.txt";
    QTest::newRow("no file") << "pulses none.pnt" << 66 << "none.pnt";
    QTest::newRow("no table") << "repeats -o x.txt no.txt" << 65 << "no.txt cannot be joined";
    QTest::newRow("another table")
        << "repeats -o x.txt first.sources.txt" << 65 << "no table of pulses";
}

void TestBatchPulses::tellsWhatItCannot()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, text);
    const Ended end = run(arguments);
    QVERIFY2(end.code == code && end.errors.contains(text), qPrintable(end.errors));
}

ZRT_UNIT_TEST_MAIN(TestBatchPulses)

#include "tst_pulses.moc"
