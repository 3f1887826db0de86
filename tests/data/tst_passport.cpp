#include "data/passport.h"
#include "data/recordingtime.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QBuffer>

using TestSupport::passportBytes;
using Lines = QList<QByteArray>;

namespace {

void row(const char *name, const Lines &lines, const QVariantMap &expected)
{
    QTest::newRow(name) << Lines{"npoints 100 ", "nbands 6 ", "modulus 3  4 6 "} + lines
                        << expected;
}

void addBeginTimes()
{
    const auto time = [](const char *name, const Lines &lines, const char *begin) {
        row(name, Lines{"date_begin begun on 01.04.2015"} + lines, {{"begin", begin}});
    };
    const QByteArray noon = "time_begin 12:00:00 UTC";
    time("UTC", {noon}, "2015-04-01T12:00:00Z");
    time("clock of UTC+3 after midnight", {"time_begin 1:30:00"}, "2015-03-31T22:30:00Z");
    time("hour of one digit", {"time_begin 9:05:07 UTC"}, "2015-04-01T09:05:07Z");
    time("seconds and more digits", {"time_begin 9:05:071 UTC"}, "");
    time("beyond any calendar", {noon, "point 2147483647", "tresolution 1e8"}, "");
    time("stairs", {noon, "stairs_names x", "point 5", "tresolution 1000"}, "");
    time("time a word", {"time_begin noon UTC"}, "");
    time("no such hour", {"time_begin 25:00:00 UTC"}, "");
    time("no such day", {noon, "date_begin 31.02.2015"}, "");

    const auto exact = [](const char *name, const Lines &lines, const char *begin,
                          const char *exactly) {
        row(name, Lines{"date_begin 01.04.2015"} + lines, {{"begin", begin}, {"exact", exactly}});
    };
    exact("more digits than milliseconds", {"time_begin 23:59:59.9996 UTC"}, "2015-04-01T23:59:59Z",
          "2015-04-01T23:59:59.999Z");
    exact("fraction of the clock of UTC+3", {"time_begin 1:30:00,5"}, "2015-03-31T22:30:00Z",
          "2015-03-31T22:30:00.500Z");
    exact("both fractions", {"time_begin 9:05:07.75 UTC", "point 1000", "tresolution 12.5"},
          "2015-04-01T09:05:19Z", "2015-04-01T09:05:20.250Z");
    exact("before the parent", {noon, "point -1000", "tresolution 12.5"}, "2015-04-01T11:59:48Z",
          "2015-04-01T11:59:47.500Z");
    // In binary 86 x 12.5 ms are a trace less than 1075 ms.
    exact("whole milliseconds", {noon, "point 86", "tresolution 12.5"}, "2015-04-01T12:00:01Z",
          "2015-04-01T12:00:01.075Z");
}

} // namespace

class TestPassport : public QObject {
    Q_OBJECT

private slots:
    void lineSplitting();
    void meaning_data();
    void meaning();
    void readingStopsAtTheFirstSample();
    void tellsOfAWrongCount();
};

void TestPassport::lineSplitting()
{
    const struct {
        QByteArray bytes;
        QString a; // value of the key "a"; empty when there is none
        qint64 size;
        bool complete;
    } passports[] = {
        {"numpar 2\na 1\nxxxx", "1", 13, true},
        {"n 2\r\na 1\r\nxx", "1", 10, true},
        {"n 2\na\t \t1 2\nxx", "1 2", 12, true},
        {"n 4\na 1\na 2\nA 3\n", "2", 16, true},
        {"n 2\na \xD0\n", QChar(0xDCD0), 8, true}, // no UTF-8
        {"n 3\n\xD0 b\na 1\n", "1", 12, true},
        {"n 2 \na 1\n", "", 5, true}, // a count hidden by a blank at the end
        {"n -3\na 1\n", "", 5, true},
        {"n 99999999999999999999\na 1\n", "", 23, true},
        {"n 9000000000\na 1\n", "1", 17, false},
        {"n 2\na 1", "1", 7, false},
        {"", "", 0, false},
        {QByteArray(100, '\0'), "", 100, false},
    };
    for (const auto &[bytes, a, size, complete] : passports) {
        const Passport passport = parsePassport(bytes);
        QCOMPARE(passport.entries.value("a"), a);
        QCOMPARE(passport.size, size);
        QCOMPARE(passport.complete, complete);
    }
}

void TestPassport::meaning_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QVariantMap>("expected"); // values of the record, times in UTC
    const auto bare = [](const char *name, const Lines &lines, const QVariantMap &expected) {
        QTest::newRow(name) << Lines{"npoints 100"} + lines << expected;
    };
    bare("bands and one more, 8 rays", {"nbands 6", "modulus 1"}, {{"channels", 7}, {"rays", 8}});
    bare("fbands before channels, empty items skipped",
         {"channels 20", "fbands 1  2 3 ", "modulus 1"}, {{"channels", 4}, {"bands", 3}});
    bare("modules alone", {"nbands 6", "modules 5 6"}, {{"modules", 2}, {"firstModule", 5}});
    bare("module alone", {"nbands 6", "module 4"}, {{"modules", 1}, {"firstModule", 4}});

    row("fbands too short", {"fbands 1 2"}, {{"channels", 7}, {"bands", 2}});
    row("fbands too long", {"fbands 1 2 3 4 5 6 7 8"}, {{"channels", 7}, {"bands", 8}});
    row("module overrides the list", {"module 2"}, {{"modules", 1}, {"firstModule", 2}});
    row("empty list of modules", {"modulus "}, {{"modules", 0}, {"firstModule", 1}});
    row("modulus before modules", {"modules 5"}, {{"modules", 3}, {"firstModule", 3}});
    row("one ray of eight", {"rays 8", "ray 3 "}, {{"rays", 1}});

    row("step in milliseconds", {"tresolution 12.5"}, {{"step", 0.0125}});
    row("step zero", {"tresolution 0"}, {{"step", 0.0}});
    row("step shortest", {"tresolution 1e-6"}, {{"step", 1e-9}});
    row("no step", {"tresolution "}, {{"step", 0.0}});

    row("derived recording", {"native_datetime 010415 12:00", "file_path /old/b.pnt"},
        {{"name", "010415 12:00"}, {"path", "/old/b.pnt"}});
    row("empty display name still takes the path", {"native_datetime", "file_path /old/b.pnt"},
        {{"name", "a.pnt"}, {"path", "/old/b.pnt"}});
    row("star time loses its fraction", {"star_time 2:1:02.75"}, {{"starTime", "2:1:02"}});
    addBeginTimes();
}

void TestPassport::meaning()
{
    QFETCH(Lines, lines);
    QFETCH(QVariantMap, expected);
    const RecordingHeader header =
        recordingHeader(parsePassport(passportBytes(lines)), "/data/a.pnt");
    const ObservationData &d = header.data;
    QCOMPARE(header.problem, QString());
    QCOMPARE(d.npoints, 100);
    const QVariantMap values = {
        {"channels", d.channels},
        {"bands", int(d.fbands.size())},
        {"modules", d.modules},
        {"firstModule", d.firstModule},
        {"rays", d.rays},
        {"step", d.tresolution},
        {"name", d.nativeName},
        {"path", d.filePath},
        {"starTime", d.starTime},
        {"begin", d.beginTime.toString(Qt::ISODate)},
        {"exact", exactBegin(d).toString(Qt::ISODateWithMs)},
    };
    for (const QString &key : expected.keys())
        QCOMPARE(values[key], expected[key]);
}

// A count one too small makes the last line a part of the samples, one too large the first samples
// a part of the passport.
void TestPassport::tellsOfAWrongCount()
{
    const QByteArray lines = "npoints 9\nmodulus 1\nnbands 2\n";
    const struct {
        QByteArray bytes;
        bool isTold;
    } rows[] = {
        {"numpar 4\n" + lines + "tresolution 12.5\nxxxxxxxx", true},
        {"numpar 4\n" + lines + "tresolution 12.5\r\nxxxxxxxx", true},
        {"numpar 3\nnpoints 9\nmodulus 1\nfbands 110.5 111.5\nxxxxxxxx", true}, // no channels
        {"numpar 5\n" + lines + "tresolution 12.5\nABCD 12345678901", false},
        {"numpar 6\n" + lines + "tresolution 12.5\n" + QByteArray("\x02\x9a\xc8\x42\n", 5), true},
        {"numpar 3\nnpoints 9\n" + QByteArray("\x00\x00\xc8\x42\n", 5), true}, // no channels
        {"numpar 6\n" + lines + "tresolution 12.5\nsource \xd0\xba\t\x0c\n", false},
        {"numpar 4\n" + lines + QByteArray(40, 'A') + "\n", false}, // 12.1 as samples
        {"numpar 4\n" + lines + QByteArray("\x00\x00\x48\x41", 4).repeated(8), false},
    };
    for (const auto &[bytes, isTold] : rows) {
        QByteArray copy = bytes;
        QBuffer device(&copy);
        device.open(QIODevice::ReadOnly);
        const Passport passport = readPassport(device);
        QCOMPARE(device.pos(), passport.size);
        const RecordingHeader header = recordingHeader(passport, "x.pnt");
        QVERIFY2(header.problem.contains("correct the number in line 1") == isTold,
                 qPrintable(header.problem));
        QVERIFY(!isTold || header.data.npoints < 1);
    }
}

// Within one page and over several. A passport of 10^9 announced lines must not be followed to
// the end of a large file.
void TestPassport::readingStopsAtTheFirstSample()
{
    for (const int bands : {6, 3000}) {
        QBuffer device;
        device.setData(passportBytes({"fbands" + QByteArray(" 111.5").repeated(bands)}) +
                       "samples" + QByteArray(100000, '\n'));
        device.open(QIODevice::ReadOnly);
        QVERIFY(readPassport(device).complete);
        QCOMPARE(device.read(7), QByteArray("samples"));
    }
    QBuffer endless;
    endless.setData("n 1000000000\n" + QByteArray(int(2 * passportSizeLimit), 'x'));
    endless.open(QIODevice::ReadOnly);
    const Passport passport = readPassport(endless);
    QVERIFY(!passport.complete && passport.size <= passportSizeLimit);
}

ZRT_UNIT_TEST_MAIN(TestPassport)
#include "tst_passport.moc"
