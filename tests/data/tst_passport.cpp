#include "data/passport.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QBuffer>

using TestSupport::passportBytes;
using Lines = QList<QByteArray>;

namespace {

const Lines soundLines = {"npoints 100", "nbands 6", "modulus 1 2", "rays 8"};

RecordingHeader headerOf(const Lines &lines)
{
    return recordingHeader(parsePassport(passportBytes(lines)), "/data/a.pnt");
}

} // namespace

class TestPassport : public QObject {
    Q_OBJECT

private slots:
    void lineSplitting_data();
    void lineSplitting();
    void counts_data();
    void counts();
    void refused_data();
    void refused();
    void beginTime_data();
    void beginTime();
    void texts_data();
    void texts();
    void step_data();
    void step();
    void readingStopsAtTheFirstSample_data();
    void readingStopsAtTheFirstSample();
    void readingGivesUpOnEndlessText();
};

void TestPassport::lineSplitting_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("a"); // value of the key "a"
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("complete");
    QTest::newRow("plain") << QByteArray("numpar 2\na 1\nxxxx") << "1" << 13 << true;
    QTest::newRow("count alone on the line") << QByteArray("2\na 1\nxxxx") << "1" << 6 << true;
    QTest::newRow("carriage returns go") << QByteArray("n 2\r\na 1\r\nxx") << "1" << 10 << true;
    QTest::newRow("tabs are blanks") << QByteArray("n 2\na\t \t1 2\nxx") << "1 2" << 12 << true;
    QTest::newRow("keys keep their case") << QByteArray("n 3\nA 1\na 2\n") << "2" << 12 << true;
    QTest::newRow("last of a repeated key") << QByteArray("n 3\na 1\na 2\n") << "2" << 12 << true;
    QTest::newRow("key without value") << QByteArray("n 2\na\nxx") << "" << 6 << true;
    QTest::newRow("empty lines count") << QByteArray("n 3\n\na 1\nxx") << "1" << 9 << true;
    QTest::newRow("broken character after the blank")
        << QByteArray("n 2\na \xD0\n") << QString(QChar::ReplacementCharacter) << 8 << true;
    QTest::newRow("broken character in another key")
        << QByteArray("n 3\n\xD0 b\na 1\n") << "1" << 12 << true;
    QTest::newRow("count hidden by a blank at the end")
        << QByteArray("n 2 \na 1\n") << "no such key" << 5 << true;
    QTest::newRow("no count") << QByteArray("numpar\na 1\n") << "no such key" << 7 << true;
    QTest::newRow("negative count") << QByteArray("n -3\na 1\n") << "no such key" << 5 << true;
    QTest::newRow("count beyond 64 bits")
        << QByteArray("n 99999999999999999999\na 1\n") << "no such key" << 23 << true;
    QTest::newRow("count beyond the file")
        << QByteArray("n 9000000000\na 1\n") << "1" << 17 << false;
    QTest::newRow("last line without end") << QByteArray("n 2\na 1") << "1" << 7 << false;
    QTest::newRow("first line without end") << QByteArray("n 2") << "no such key" << 3 << false;
    QTest::newRow("nothing") << QByteArray() << "no such key" << 0 << false;
    QTest::newRow("zero bytes") << QByteArray(100, '\0') << "no such key" << 100 << false;
}

void TestPassport::lineSplitting()
{
    QFETCH(QByteArray, bytes);
    const Passport passport = parsePassport(bytes);
    QTEST(passport.entries.value("a", "no such key"), "a");
    QTEST(int(passport.size), "size");
    QTEST(passport.complete, "complete");
}

void TestPassport::counts_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QVector<int>>("expected"); // channels, modules, firstModule, module, rays, ray
    const QByteArray n = "npoints 100";
    QTest::newRow("bands and one more")
        << Lines{n, "nbands 6", "modulus 1", "rays 8"} << QVector{7, 1, 1, -1, 8, -1};
    QTest::newRow("nbands before fbands and channels")
        << Lines{n, "channels 20", "fbands 1 2 3", "nbands 6", "modulus 1"}
        << QVector{7, 1, 1, -1, 8, -1};
    QTest::newRow("fbands before channels, empty items skipped")
        << Lines{n, "channels 20", "fbands 1  2 3 ", "modulus 1"} << QVector{4, 1, 1, -1, 8, -1};
    QTest::newRow("channels as they are")
        << Lines{n, "channels 20", "modulus 1"} << QVector{20, 1, 1, -1, 8, -1};
    QTest::newRow("512 frequencies")
        << Lines{n, "fbands" + QByteArray(" 111.5").repeated(512), "modulus 1"}
        << QVector{513, 1, 1, -1, 8, -1};
    QTest::newRow("modulus before modules")
        << Lines{n, "nbands 6", "modules 5", "modulus 3  4 6 "} << QVector{7, 3, 3, -1, 8, -1};
    QTest::newRow("modules alone")
        << Lines{n, "nbands 6", "modules 5 6"} << QVector{7, 2, 5, -1, 8, -1};
    QTest::newRow("module overrides the list")
        << Lines{n, "nbands 6", "modulus 1 2 3", "module 2"} << QVector{7, 1, 2, 2, 8, -1};
    QTest::newRow("module alone") << Lines{n, "nbands 6", "module 4"} << QVector{7, 1, 4, 4, 8, -1};
    QTest::newRow("no modules in the list")
        << Lines{n, "nbands 6", "modulus "} << QVector{7, 0, 1, -1, 8, -1};
    QTest::newRow("one ray of eight")
        << Lines{n, "nbands 6", "modulus 1", "rays 8", "ray 3"} << QVector{7, 1, 1, -1, 1, 3};
    QTest::newRow("blanks after the numbers")
        << Lines{"npoints 100 ", "nbands 6 ", "module 4 ", "ray 3 "} << QVector{7, 1, 4, 4, 1, 3};
}

void TestPassport::counts()
{
    QFETCH(Lines, lines);
    const RecordingHeader header = headerOf(lines);
    const ObservationData &d = header.data;
    QTEST((QVector{d.channels, d.modules, d.firstModule, d.module, d.rays, d.ray}), "expected");
    QCOMPARE(d.npoints, 100);
    QCOMPARE(header.problem, QString());
}

void TestPassport::refused_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<int>("npoints");
    QTest::addColumn<QString>("named"); // what the problem text must point at
    QTest::addColumn<QByteArray>("debug");
    const QByteArray noChannels = "Error! No channels in file!";
    const QByteArray noModules = "Error! No modules in file!";
    QTest::newRow("no channel key")
        << Lines{"npoints 5", "modulus 1"} << -1 << "channels" << noChannels;
    QTest::newRow("no module key")
        << Lines{"npoints 5", "nbands 6"} << -1 << "modulus" << noModules;
    QTest::newRow("neither: channels first") << Lines{} << -1 << "channels" << noChannels;
    const auto row = [](const char *name, const QByteArray &line, const char *named) {
        QTest::newRow(name) << Lines(soundLines + Lines{line}) << 0 << named << QByteArray();
    };
    row("npoints zero", "npoints 0", "npoints");
    row("npoints minus one is not a missing key", "npoints -1", "npoints");
    row("npoints beyond 31 bits", "npoints 2147483648", "npoints");
    row("npoints with a fraction", "npoints 10.5", "npoints");
    row("npoints a word", "npoints many", "many");
    row("nbands largest", "nbands 2147483647", "nbands");
    row("nbands minus one", "nbands -1", "channels");
    row("nbands most negative", "nbands -2147483648", "channels");
    row("nbands a word", "nbands six", "six");
    row("rays zero", "rays 0", "rays");
    row("rays negative", "rays -8", "rays");
    QTest::newRow("npoints missing")
        << Lines{"nbands 6", "modulus 1"} << 0 << "no \"npoints\"" << QByteArray();
}

void TestPassport::refused()
{
    QFETCH(Lines, lines);
    QFETCH(QString, named);
    QFETCH(QByteArray, debug);
    if (!debug.isEmpty())
        QTest::ignoreMessage(QtDebugMsg, debug.constData());
    const RecordingHeader header = headerOf(lines);
    QTEST(header.data.npoints, "npoints");
    QVERIFY2(header.problem.contains(named), qPrintable(header.problem));
}

void TestPassport::beginTime_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("expected"); // UTC; empty: invalid
    const QByteArray date = "date_begin 01.04.2015";
    const auto row = [](const char *name, const Lines &lines, const char *expected) {
        QTest::newRow(name) << lines << expected;
    };
    row("UTC", {date, "time_begin 12:00:00 UTC"}, "2015-04-01T12:00:00Z");
    row("clock of UTC+3", {date, "time_begin 12:00:00"}, "2015-04-01T09:00:00Z");
    row("clock of UTC+3 after midnight", {date, "time_begin 1:30:00"}, "2015-03-31T22:30:00Z");
    row("one digit of hours", {date, "time_begin 9:05:07 UTC"}, "2015-04-01T09:05:07Z");
    row("text before the date", {"date_begin begun on 01.04.2015", "time_begin 0:00:00 UTC"},
        "2015-04-01T00:00:00Z");
    row("fraction cut off", {date, "time_begin 12:00:00.75 UTC"}, "2015-04-01T12:00:00Z");
    row("no hour is lost in a change to summer time",
        {"date_begin 27.03.2011", "time_begin 2:30:00 UTC"}, "2011-03-27T02:30:00Z");
    row("12.5 s are 12", {date, "time_begin 12:00:00 UTC", "point 1000", "tresolution 12.5"},
        "2015-04-01T12:00:12Z");
    row("just below a second is none",
        {date, "time_begin 12:00:00 UTC", "point 999", "tresolution 1"}, "2015-04-01T12:00:00Z");
    row("before the parent's begin",
        {date, "time_begin 12:00:00 UTC", "point -1000", "tresolution 12.5"},
        "2015-04-01T11:59:48Z");
    row("stairs have no time", {date, "time_begin 12:00:00 UTC", "stairs_names x"}, "");
    row("stairs with a point",
        {date, "time_begin 12:00:00 UTC", "stairs_names", "point 5", "tresolution 1000"}, "");
    row("no date", {"time_begin 12:00:00 UTC"}, "");
    row("no time", {date}, "");
    row("no such day", {"date_begin 31.02.2015", "time_begin 12:00:00 UTC"}, "");
    row("time a word", {date, "time_begin noon UTC"}, "");
    row("shift beyond any calendar",
        {date, "time_begin 12:00:00 UTC", "point 2147483647", "tresolution 1e300"}, "");
}

void TestPassport::beginTime()
{
    QFETCH(Lines, lines);
    QFETCH(QString, expected);
    const QDateTime begin = headerOf(soundLines + lines).data.beginTime;
    QCOMPARE(begin.toString(Qt::ISODate), expected);
}

void TestPassport::texts_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QStringList>("expected"); // nativeName, filePath, starTime
    const auto row = [](const char *name, const Lines &lines, const QStringList &expected) {
        QTest::newRow(name) << lines << expected;
    };
    row("plain recording", {"star_time 12:01:02"}, {"a.pnt", "/data/a.pnt", "12:01:02"});
    row("derived recording", {"native_datetime 010415 12:00", "file_path /old/b.pnt"},
        {"010415 12:00", "/old/b.pnt", ""});
    row("empty display name still takes the path", {"native_datetime", "file_path /old/b.pnt"},
        {"a.pnt", "/old/b.pnt", ""});
    row("path alone is not derived", {"file_path /old/b.pnt"}, {"a.pnt", "/data/a.pnt", ""});
    row("star time loses its fraction", {"star_time 2:1:02.75"},
        {"a.pnt", "/data/a.pnt", "2:1:02"});
    row("other star time stays", {"star_time 12h01"}, {"a.pnt", "/data/a.pnt", "12h01"});
}

void TestPassport::texts()
{
    QFETCH(Lines, lines);
    const ObservationData data = headerOf(soundLines + lines).data;
    QTEST((QStringList{data.nativeName, data.filePath, data.starTime}), "expected");
    QCOMPARE(data.fileName, QString("a.pnt"));
}

void TestPassport::step_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<double>("seconds");
    QTest::newRow("milliseconds") << QByteArray("tresolution 12.4928") << 0.0124928;
    QTest::newRow("missing") << QByteArray("x") << 0.0;
    QTest::newRow("zero") << QByteArray("tresolution 0") << 0.0;
    QTest::newRow("negative stays") << QByteArray("tresolution -5") << -0.005;
    QTest::newRow("not a number") << QByteArray("tresolution nan") << 0.0;
    QTest::newRow("infinite") << QByteArray("tresolution inf") << 0.0;
}

void TestPassport::step()
{
    QFETCH(QByteArray, line);
    QTEST(headerOf(soundLines + Lines{line}).data.tresolution, "seconds");
}

void TestPassport::readingStopsAtTheFirstSample_data()
{
    QTest::addColumn<int>("bands");
    QTest::newRow("within one page") << 6;
    QTest::newRow("over several pages") << 3000;
}

void TestPassport::readingStopsAtTheFirstSample()
{
    QFETCH(int, bands);
    const QByteArray header =
        passportBytes({"fbands" + QByteArray(" 111.5").repeated(bands), "modulus 1"});
    QByteArray bytes = header + "samples" + QByteArray(100000, '\n');
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    const Passport passport = readPassport(device);
    QVERIFY(passport.complete);
    QCOMPARE(recordingHeader(passport, "a").data.channels, bands + 1);
    QCOMPARE(device.read(7), QByteArray("samples"));
}

// A passport of 10^9 announced lines over data full of line ends must not be followed to the
// end of a large file.
void TestPassport::readingGivesUpOnEndlessText()
{
    QByteArray bytes = "n 1000000000\n" + QByteArray(int(2 * passportSizeLimit), 'x');
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    const Passport passport = readPassport(device);
    QVERIFY(!passport.complete);
    QVERIFY(passport.size <= passportSizeLimit);
}

ZRT_UNIT_TEST_MAIN(TestPassport)
#include "tst_passport.moc"
