#include "calc/channelsum.h"
#include "data/reader.h"
#include "data/recordingtime.h"
#include "results/filterbank.h"
#include "support/batchfolder.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QRegularExpression>
#include <cmath>

// What the program says of recordings that are damaged or odd, and how recordings become
// filterbanks and series of other programs and come back.

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

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

} // namespace

class TestRecordings : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void samplesThatAreNoNumbers_data();
    void samplesThatAreNoNumbers();
    void sumsOfAnyLength();
    void exactTimes();
    void hugeCounts();
    void filterbankRoundTrip();
    void importedFilterbanks();
    void exportedSeries();
    void filterbanksOfBothWays_data();
    void filterbanksOfBothWays();

private:
    QStringList madeOf(const QString &name) const
    {
        return QDir(folder.path()).entryList({name + ".*"});
    }
};

void TestRecordings::initTestCase()
{
    const QByteArray whole = recording([](int, int) { return false; });
    writeFile(path("a.pnt"), whole);
    writeFile(path("odd.pnt"),
              QByteArray(whole).replace("time_begin 12:00:00 UTC", "time_begin 9:05:07.25 UTC"));
    writeFile(path("holed.pnt"),
              recording([](int p, int c) { return p >= 5000 && p < 5003 && c == 4; }));
    writeFile(path("none.pnt"), recording([](int, int) { return true; }));
    writeFile(path("large.pnt"),
              TestSupport::recordingBytes(
                  {700, 1, 33, 1}, [](int p, int, int, int) { return p == 600 ? 3e38f : 1.0f; }));
}

void TestRecordings::samplesThatAreNoNumbers_data()
{
    QTest::addColumn<int>("gaps"); // in the table
    QTest::newRow("sum --first-point 1000") << 0;
    QTest::newRow("fourier --first-point 1000") << 0;
    QTest::newRow("dmscan --first-point 1000 --harmonic 300") << 0;
    QTest::newRow("fold --first-point 1000 --channel 5 --period 0.7") << 0;
    QTest::newRow("native --first-point 1000 --channel 5") << 3;
    QTest::newRow("ffa --period-min 1 --period-max 1.05") << 0;
    QTest::newRow("export --kind dat") << -1; // makes no table
}

// Each command says which samples they are, with the true point numbers; its numbers are finite.
// Where nothing can be computed nothing is written, and the exit code says so.
void TestRecordings::samplesThatAreNoNumbers()
{
    QFETCH(int, gaps);
    const QString command = QTest::currentDataTag();
    const Ended end = run(command + " --ray 1 holed.pnt");
    QCOMPARE(end.code, 0);
    QVERIFY2(
        end.errors.contains("3 samples are no finite numbers: channel 5 at points 5000 to 5002."),
        qPrintable(end.errors));
    if (gaps >= 0) {
        const QByteArray table =
            contentOf(path("holed.pnt." + command.section(' ', 0, 0) + ".txt"));
        QVERIFY(table.contains("report: ") &&
                table.contains("no finite numbers: channel 5 at points"));
        QCOMPARE(table.count("\nnan\n"), gaps);
    }
    const Ended none = run(command + " --ray 1 none.pnt");
    QCOMPARE(none.code, 65);
    QVERIFY2(none.errors.contains("no finite number"), qPrintable(none.errors));
    QVERIFY(madeOf("none.pnt").isEmpty());
    if (!command.contains(QRegularExpression("^(sum|fourier|dmscan|ffa)")))
        return;
    const Ended without = run(command + " --ray 1 --channels-off 5 holed.pnt");
    QCOMPARE(without.code, 0);
    QVERIFY2(!without.errors.contains("finite"), qPrintable(without.errors));
    QVERIFY(contentOf(path("holed.pnt." + command.section(' ', 0, 0) + ".txt"))
                .contains("channels_off: 5\n"));
    QCOMPARE(run(command + " --ray 1 --channels-off 5,34 holed.pnt --tag bad").code, 65);
}

// Another length than the form's is the same sum.
void TestRecordings::sumsOfAnyLength()
{
    const QString sum = "sum --ray 1 --first-point 100 --noise without a.pnt ";
    succeed(sum + "--tag whole");
    succeed(sum + "--tag part --count 700");
    const auto values = [&](const char *tag) {
        const QByteArray table = contentOf(path(QString("a.pnt.sum.%1.txt").arg(tag)));
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
    succeed("sum --ray 1 --utc 9:05:08 odd.pnt");
    const QByteArray table = contentOf(path("odd.pnt.sum.txt"));
    QVERIFY(table.contains("\nbegin: 2015-04-01T09:05:07.250Z\n"));
    QVERIFY(table.contains("\nfirst_point: 60\n")); // 750 ms / 12.4928 ms = 60.03
    // Their milliseconds go along to other programs and back, whatever digits the user writes.
    const Ended there = runShell("zrt-batch export --ray 1 odd.pnt\nexport LC_ALL=ar_EG.UTF-8\n"
                                 "zrt-batch import odd.pnt.m1_r1.fil");
    QVERIFY2(there.code == 0, qPrintable(there.errors));
    const ObservationData back = Reader::readDataFile(nullptr, path("odd.pnt.m1_r1.fil.pnt"), true);
    QCOMPARE(exactBegin(back).toString("hh:mm:ss.zzz"), QString("09:05:07.250"));
}

// Lists of so many rays would fill the memory before the file is refused.
void TestRecordings::hugeCounts()
{
    const QByteArray rays = TestSupport::passportBytes(
        {"npoints 10", "nbands 32", "modulus 1", "rays 2147483647", "tresolution 1"});
    writeFile(path("rays.pnt"), rays + QByteArray(100000, '\0'));
    // One channel, and as many bytes as announced, which take no room on the disk.
    const QByteArray sparse = TestSupport::passportBytes(
        {"npoints 1", "nbands 0", "modulus 1", "rays 2147483647", "tresolution 1"});
    writeFile(path("sparse.pnt"), sparse);
    QVERIFY(QFile::resize(path("sparse.pnt"), sparse.size() + (qint64(2147483647) << 2)));
#ifdef __SANITIZE_ADDRESS__
    const QString limit; // its shadow memory takes terabytes of addresses
#else
    const QString limit = "ulimit -v 2097152\n"; // 2 GiB do for what the program needs
#endif
    for (const char *const file : {"rays.pnt", "sparse.pnt"}) {
        const Ended end = runShell(limit + "zrt-batch ffa --ray all " + file);
        QVERIFY2(end.code == 65 && end.errors.contains(file), qPrintable(end.errors));
    }
}

void TestRecordings::filterbankRoundTrip()
{
    succeed("export --ray 1 a.pnt");
    succeed("import a.pnt.m1_r1.fil");
    const ObservationData first = Reader::readDataFile(nullptr, path("a.pnt"));
    const ObservationData back = Reader::readDataFile(nullptr, path("a.pnt.m1_r1.fil.pnt"));
    QCOMPARE(back.npoints, first.npoints);
    QCOMPARE(back.beginTime, first.beginTime);
    QCOMPARE(back.tresolution, first.tresolution);
    for (int channel = 0; channel < 32; ++channel) {
        const auto band = std::size_t(channel);
        QVERIFY(qAbs(back.fbands[band] - first.fbands[band]) < 1e-9);
        const float *const samples = first.samples[0][channel][0];
        QVERIFY(std::equal(samples, samples + first.npoints, back.samples[0][channel][0]));
    }
    // The filterbank's own layout: the last value of a sample is the lowest band.
    const QByteArray fil = contentOf(path("a.pnt.m1_r1.fil"));
    float lowest = 0;
    memcpy(&lowest, fil.constData() + fil.size() - 4, sizeof lowest);
    QCOMPARE(lowest, noise(shape.npoints - 1, 0));
}

// The values are 1, 2, 255 and 4, 5, 6 from the lowest band up; the last sample is not whole.
void TestRecordings::importedFilterbanks()
{
    Results::FilterbankHeader header;
    header.begin = 57113.5; // 1 April 2015, noon
    header.step = 0.25;
    header.channels = 3;
    for (const int bits : {8, 16}) {
        const bool isRising = bits == 8;
        header.firstBand = isRising ? 110 : 111;
        header.bandStep = isRising ? 0.5 : -0.5;
        header.bits = bits;
        const QByteArray samples = isRising
                                       ? QByteArray("\x01\x02\xff\x04\x05\x06", 6)
                                       : QByteArray("\xff\0\x02\0\x01\0\x06\0\x05\0\x04\0", 12);
        writeFile(path("in.fil"), Results::filterbankBytes(header) + samples + "x");
        const Ended end = run("import --force in.fil");
        QVERIFY2(end.code == 0 && end.errors.contains("the last sample is not whole"),
                 qPrintable(end.errors));
        const ObservationData data = Reader::readDataFile(nullptr, path("in.fil.pnt"));
        QCOMPARE(data.npoints, 2);
        QCOMPARE(data.tresolution, 0.25);
        QCOMPARE(data.beginTime, QDateTime(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC));
        QCOMPARE(data.fbands, (std::vector<double>{110, 110.5, 111}));
        const float expected[4][2] = {{1, 4}, {2, 5}, {255, 6}, {86, 5}}; // the means last
        for (int channel = 0; channel < 4; ++channel)
            for (int point = 0; point < 2; ++point)
                QCOMPARE(data.samples[0][channel][0][point], expected[channel][point]);
    }
}

void TestRecordings::exportedSeries()
{
    succeed("export --kind dat --ray 2 --dm 26.2 odd.pnt");
    const ObservationData data = Reader::readDataFile(nullptr, path("odd.pnt"));
    const std::vector<double> sums = Tools::sumChannels(data, 26.2, 0, 1);
    std::vector<float> written(sums.size());
    const QByteArray bytes = contentOf(path("odd.pnt.m1_r2_DM26.2.dat"));
    QCOMPARE(bytes.size(), int(sums.size() * sizeof(float)));
    memcpy(written.data(), bytes.constData(), std::size_t(bytes.size()));
    QCOMPARE(written, std::vector<float>(sums.begin(), sums.end()));
    const QString description = QString::fromUtf8(contentOf(path("odd.pnt.m1_r2_DM26.2.inf")));
    // 9:05:07.25 is 0.378556134... of a day.
    for (const char *line : {" Number of bins in the time series      =  20000\n",
                             " Width of each time series bin (sec)    =  0.0124928\n",
                             " Epoch of observation (MJD)             =  57113.378556134",
                             " Central freq of low channel (MHz)      =  120\n"})
        QVERIFY2(description.contains(line), qPrintable(description));

    const Ended large = run("export --kind dat --ray 1 large.pnt");
    QVERIFY2(large.code == 65 && large.errors.contains("too large"), qPrintable(large.errors));
    QVERIFY(madeOf("large.pnt").isEmpty());
}

void TestRecordings::filterbanksOfBothWays_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<double>("step"); // s
    QTest::addColumn<double>("bandStep");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("65536 channels") << 65536 << 0.25 << -0.0009765625 << true;
    QTest::newRow("65536 channels with long numbers") << 65536 << 0.25 << -0.001 / 7 << false;
    QTest::newRow("65537 channels") << 65537 << 0.25 << -0.0009765625 << false;
    QTest::newRow("shortest step") << 3 << 1e-9 << -0.5 << true;
    QTest::newRow("step too short") << 3 << 1e-300 << -0.5 << false;
    QTest::newRow("longest step") << 3 << 1e5 << -0.5 << true;
    QTest::newRow("step beyond any passport") << 3 << 1e307 << -0.5 << false;
    QTest::newRow("no distance between the bands") << 3 << 0.25 << 0.0 << true;
}

// What is imported can be exported again, and the other way round.
void TestRecordings::filterbanksOfBothWays()
{
    QFETCH(int, channels);
    QFETCH(double, step);
    QFETCH(double, bandStep);
    QFETCH(bool, isTaken);
    Results::FilterbankHeader header;
    header.step = step;
    header.firstBand = 1500;
    header.bandStep = bandStep;
    header.channels = channels;
    header.bits = 8;
    writeFile(path("in.fil"), Results::filterbankBytes(header) + QByteArray(channels, '\1'));
    const Ended imported = run("import --force in.fil");
    QVERIFY2(imported.code == (isTaken ? 0 : 65), qPrintable(imported.errors));
    QString back = "in.fil.pnt";
    if (!isTaken) { // a recording with the same numbers
        back = "in.pnt";
        QByteArrayList bands;
        for (int i = 0; i < channels; ++i)
            bands << QByteArray::number(header.firstBand + i * bandStep, 'g', 17);
        const QByteArray passport = TestSupport::passportBytes(
            {"npoints 1", "nbands " + QByteArray::number(channels), "fbands " + bands.join(' '),
             "modulus 1", "rays 1", "tresolution " + QByteArray::number(step * 1000, 'g', 17)});
        writeFile(path(back), passport + QByteArray(4 * (channels + 1), '\0'));
    }
    const Ended exported = run("export --ray 1 --force " + back);
    QVERIFY2(exported.code == (isTaken ? 0 : 65), qPrintable(exported.errors));
}

ZRT_UNIT_TEST_MAIN(TestRecordings)
#include "tst_recordings.moc"
