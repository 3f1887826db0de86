#include "data/reader.h"
#include "data/recordingtime.h"
#include "results/filterbank.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QProcess>
#include <cmath>
#include <limits>

// What the program says of recordings that are damaged or odd, and of filterbanks that are.

namespace {

struct Ended {
    int code = -1;
    QString errors;
};

constexpr TestSupport::Shape shape = {20000, 1, 33, 2};

float noise(int point, int channel)
{
    return float((quint32(point * 33 + channel) * 2654435761u) >> 22) / 512;
}

QByteArray recording(const std::function<bool(int point, int channel)> &isHole)
{
    return TestSupport::recordingBytes(shape, [&](int p, int, int c, int r) {
        return r == 0 && isHole(p, c) ? NAN : noise(p, c);
    });
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

using FilterbankChange = std::function<void(Results::FilterbankHeader &)>;
Q_DECLARE_METATYPE(FilterbankChange)

class TestRecordings : public QObject {
    Q_OBJECT

private slots:
    void samplesThatAreNoNumbers_data();
    void samplesThatAreNoNumbers();
    void nothingFinite_data();
    void nothingFinite();
    void seriesBeyondAnyFloat();
    void sumsOfAnyLength();
    void exactTimes();
    void hugeCounts();
    void filterbanksOfBothWays_data();
    void filterbanksOfBothWays();

private:
    Ended run(const QString &arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.setProcessEnvironment(environment);
        process.start(ZRT_BATCH, arguments.split(' '));
        if (!process.waitForFinished(60000))
            return {};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardError())};
    }

    QString write(const QString &name, const QByteArray &bytes) const
    {
        return TestSupport::writeFile(folder, name, bytes);
    }

    QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

void TestRecordings::samplesThatAreNoNumbers_data()
{
    QTest::addColumn<QString>("command");
    const auto row = [](const char *command) { QTest::newRow(command) << command; };
    row("sum --first-point 1000");
    row("fourier --first-point 1000");
    row("dmscan --first-point 1000 --harmonic 300");
    row("fold --first-point 1000 --channel 5 --period 0.7");
    row("native --first-point 1000 --channel 5");
    row("ffa --period-min 1 --period-max 1.05");
    row("export --kind dat");
}

// Each command says which samples they are, with the true point numbers; its numbers are finite.
void TestRecordings::samplesThatAreNoNumbers()
{
    QFETCH(QString, command);
    write("holed.pnt", recording([](int p, int c) { return p >= 5000 && p < 5003 && c == 4; }));
    const Ended end = run(command + " --ray 1 --force holed.pnt");
    QCOMPARE(end.code, 0);
    QVERIFY2(
        end.errors.contains("3 samples are no finite numbers: channel 5 at points 5000 to 5002."),
        qPrintable(end.errors));
    const QString name = command.section(' ', 0, 0);
    if (name == "export")
        return;
    const QByteArray table = contentOf(folder.filePath("holed.pnt." + name + ".txt"));
    QVERIFY(table.contains("report: ") && table.contains("no finite numbers: channel 5 at points"));
    QCOMPARE(table.count("\nnan\n"), name == "native" ? 3 : 0);
}

void TestRecordings::nothingFinite_data()
{
    samplesThatAreNoNumbers_data();
}

// Where nothing can be computed nothing is written, and the exit code says so.
void TestRecordings::nothingFinite()
{
    QFETCH(QString, command);
    write("none.pnt", recording([](int, int) { return true; }));
    const Ended end = run(command + " --ray 1 none.pnt");
    QCOMPARE(end.code, 65);
    QVERIFY2(end.errors.contains("no finite number"), qPrintable(end.errors));
    QVERIFY(QDir(folder.path()).entryList({"none.pnt.*"}).isEmpty());
}

void TestRecordings::seriesBeyondAnyFloat()
{
    write("large.pnt", TestSupport::recordingBytes(
                           shape, [](int p, int, int, int) { return p == 700 ? 3e38f : 1.0f; }));
    const Ended end = run("export --kind dat --ray 1 large.pnt");
    QVERIFY2(end.code == 65 && end.errors.contains("too large"), qPrintable(end.errors));
    QVERIFY(QDir(folder.path()).entryList({"large.pnt.*"}).isEmpty());
}

// Another length than the form's is the same sum.
void TestRecordings::sumsOfAnyLength()
{
    write("a.pnt", recording([](int, int) { return false; }));
    const QString sum = "sum --ray 1 --first-point 100 --noise without ";
    QCOMPARE(run(sum + "--tag whole a.pnt").code, 0);
    QCOMPARE(run(sum + "--tag part --count 700 a.pnt").code, 0);
    const auto values = [&](const char *tag) {
        const QByteArray table = contentOf(folder.filePath(QString("a.pnt.sum.%1.txt").arg(tag)));
        return table.mid(table.indexOf("days: ")).split('\n').mid(1);
    };
    QCOMPARE(values("part").mid(0, 700), values("whole").mid(0, 700));
    QCOMPARE(values("part").size(), 701); // with the end of the last line
    const Ended few = run("sum --ray 1 --first-point 100 --count 3 a.pnt");
    QVERIFY2(few.code == 65 && few.errors.contains("base line"), qPrintable(few.errors));
    const Ended many = run("sum --ray 1 --first-point 100 --count 19900 a.pnt");
    QVERIFY2(many.code == 65 && many.errors.contains("Allowed: 0 to 99"), qPrintable(many.errors));
}

void TestRecordings::exactTimes()
{
    QByteArray bytes = recording([](int, int) { return false; });
    write("odd.pnt", bytes.replace("time_begin 12:00:00 UTC", "time_begin 9:05:07.25 UTC"));
    QCOMPARE(run("sum --ray 1 --utc 9:05:08 odd.pnt").code, 0);
    const QByteArray table = contentOf(folder.filePath("odd.pnt.sum.txt"));
    QVERIFY(table.contains("\nbegin: 2015-04-01T09:05:07.250Z\n"));
    QVERIFY(table.contains("\nfirst_point: 60\n")); // 750 ms / 12.4928 ms = 60.03
    // Their milliseconds go along to other programs and back, whatever digits the user writes.
    QCOMPARE(run("export --ray 1 odd.pnt").code, 0);
    environment.insert("LC_ALL", "ar_EG.UTF-8");
    const Ended imported = run("import odd.pnt.m1_r1.fil");
    environment = QProcessEnvironment::systemEnvironment();
    QCOMPARE(imported.code, 0);
    const ObservationData back =
        Reader::readDataFile(nullptr, folder.filePath("odd.pnt.m1_r1.fil.pnt"), true);
    QCOMPARE(exactBegin(back).toString("hh:mm:ss.zzz"), QString("09:05:07.250"));
}

// Lists of so many rays would fill the memory before the file is refused.
void TestRecordings::hugeCounts()
{
    const QByteArray rays = TestSupport::passportBytes(
        {"npoints 10", "nbands 32", "modulus 1", "rays 2147483647", "tresolution 1"});
    write("rays.pnt", rays + QByteArray(100000, '\0'));
    // One channel, and as many bytes as announced, which take no room on the disk.
    const QString sparse = write("sparse.pnt", "numpar 6\nnpoints 1\nnbands 0\nmodulus 1\n"
                                               "rays 2147483647\ntresolution 1\n");
    QVERIFY(QFile::resize(sparse, QFileInfo(sparse).size() + (qint64(2147483647) << 2)));
#ifdef __SANITIZE_ADDRESS__
    const QString limit; // its shadow memory takes terabytes of addresses
#else
    const QString limit = "ulimit -v 2097152; "; // 2 GiB do for what the program needs
#endif
    for (const char *const file : {"rays.pnt", "sparse.pnt"}) {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start("sh",
                      {"-c", limit + QString("exec %1 ffa --ray all %2").arg(ZRT_BATCH, file)});
        QVERIFY(process.waitForFinished(60000));
        const QString errors = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(process.exitCode() == 65, qPrintable(errors));
        QVERIFY2(errors.contains(file), qPrintable(errors));
    }
}

void TestRecordings::filterbanksOfBothWays_data()
{
    QTest::addColumn<FilterbankChange>("change");
    QTest::addColumn<bool>("isTaken");
    const auto row = [](const char *name, const FilterbankChange &change, bool isTaken) {
        QTest::newRow(name) << change << isTaken;
    };
    using H = Results::FilterbankHeader;
    row(
        "plain", [](H &) {}, true);
    row(
        "65536 channels",
        [](H &h) {
            h.channels = 65536;
            h.bandStep = -0.0009765625;
        },
        true);
    row(
        "65536 channels with long numbers",
        [](H &h) {
            h.channels = 65536;
            h.bandStep = -0.001 / 7;
        },
        false);
    row(
        "65537 channels", [](H &h) { h.channels = 65537; }, false);
    row(
        "step 0", [](H &h) { h.step = 0; }, false);
    row(
        "step without a number", [](H &h) { h.step = NAN; }, false);
    row(
        "shortest step", [](H &h) { h.step = 1e-9; }, true);
    row(
        "step too short", [](H &h) { h.step = 1e-300; }, false);
    row(
        "longest step", [](H &h) { h.step = 1e5; }, true);
    row(
        "step beyond any passport", [](H &h) { h.step = 1e307; }, false);
    row(
        "infinite band", [](H &h) { h.firstBand = INFINITY; }, false);
    row(
        "no distance between the bands", [](H &h) { h.bandStep = 0; }, true);
}

// What is imported can be exported again, and the other way round.
void TestRecordings::filterbanksOfBothWays()
{
    QFETCH(FilterbankChange, change);
    QFETCH(bool, isTaken);
    Results::FilterbankHeader header;
    header.begin = 57113.5;
    header.step = 0.25;
    header.firstBand = 1500;
    header.bandStep = -0.5;
    header.channels = 3;
    header.bits = 8;
    change(header);
    write("in.fil",
          Results::filterbankBytes(header) + QByteArray(2 * std::max(1, header.channels), '\1'));
    const Ended imported = run("import --force in.fil");
    QVERIFY2(imported.code == (isTaken ? 0 : 65), qPrintable(imported.errors));
    if (isTaken) {
        const Ended exported = run("export --ray 1 --force in.fil.pnt");
        QVERIFY2(exported.code == 0, qPrintable(exported.errors));
        return;
    }
    // The passport of a recording with the same numbers.
    QByteArrayList bands;
    for (int i = 0; i < header.channels; ++i)
        bands << QByteArray::number(header.firstBand + i * header.bandStep, 'g', 17);
    const QByteArray passport = TestSupport::passportBytes(
        {"npoints 1", "nbands " + QByteArray::number(header.channels), "fbands " + bands.join(' '),
         "modulus 1", "rays 1", "tresolution " + QByteArray::number(header.step * 1000, 'g', 17)});
    write("in.pnt", passport + QByteArray(4 * (header.channels + 1), '\0'));
    const Ended exported = run("export --ray 1 --force in.pnt");
    QVERIFY2(exported.code == 65, qPrintable(exported.errors));
}

ZRT_UNIT_TEST_MAIN(TestRecordings)
#include "tst_recordings.moc"
