#include "data/passport.h"
#include "data/reader.h"
#include "data/samplereader.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/shortdevice.h"
#include "support/testmain.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <bit>
#include <cstdio>
#include <cstring>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using TestSupport::passportBytes;
using TestSupport::Shape;

Q_DECLARE_METATYPE(ReadOutcome)
Q_DECLARE_METATYPE(Shape)

namespace {

const Shape small = {100, 2, 7, 3};
const Shape severalBlocks = {5000, 1, 513, 1}; // 10 MB: three of them

// Every bit pattern may occur, among them NaNs that arithmetic would change.
QByteArray recording(const Shape &shape)
{
    std::mt19937 bits(1);
    return TestSupport::recordingBytes(
        shape, [&](int, int, int, int) { return std::bit_cast<float>(quint32(bits())); });
}

// The first sample that is not, bit by bit, what reading the values of the file one by one
// gives. Values that are not wholly in it must be zero.
QString firstDifference(const ObservationData &data, const QByteArray &file)
{
    qint64 position = parsePassport(file).size;
    for (int p = 0; p < data.npoints; ++p)
        for (int m = 0; m < data.modules; ++m)
            for (int r = 0; r < data.rays; ++r)
                for (int c = 0; c < data.channels; ++c, position += 4) {
                    float expected = 0;
                    if (position + 4 <= file.size())
                        std::memcpy(&expected, file.constData() + position, 4);
                    if (std::memcmp(&data.samples[m][c][r][p], &expected, 4) != 0)
                        return QString("point %1 channel %2").arg(p).arg(c);
                }
    return {};
}

// What the program writes to standard output while `run` lasts.
QByteArray printed(const std::function<void()> &run)
{
    QTemporaryFile file;
    file.open();
    std::fflush(stdout);
    const int terminal = dup(STDOUT_FILENO);
    dup2(file.handle(), STDOUT_FILENO);
    run();
    std::fflush(stdout);
    dup2(terminal, STDOUT_FILENO);
    close(terminal);
    file.seek(0);
    return file.readAll();
}

// The record that stands for "nothing".
void compareEmpty(const ObservationData &d)
{
    QCOMPARE((QVector{d.npoints, d.point, d.channels, d.rays, d.firstModule}),
             (QVector{0, 0, 0, 0, 1}));
    QCOMPARE((QVector{d.modules, d.module, d.ray, d.spareNumber}), (QVector{-1, -1, -1, -1}));
    QVERIFY(d.samples == nullptr);
}

} // namespace

class TestReader : public QObject {
    Q_OBJECT

private slots:
    void everyValueInItsPlace_data();
    void everyValueInItsPlace();
    void refused_data();
    void refused();
    void batchAndInteractive_data();
    void batchAndInteractive();
    void secondReadingIsRefused();
    void cancelledOrDeletedFromAnEvent();

private:
    QString write(const QByteArray &bytes, const QString &name = "a.pnt")
    {
        return TestSupport::writeFile(folder, name, bytes);
    }

    QTemporaryDir folder;
};

void TestReader::everyValueInItsPlace_data()
{
    QTest::addColumn<Shape>("shape"); // points, modules, channels, rays
    QTest::addColumn<int>("missing"); // bytes
    const auto row = [](const char *name, const Shape &shape, int missing) {
        QTest::newRow(name) << shape << missing;
    };
    row("one value a point", {1000, 1, 1, 1}, 0);
    row("three values a point", {4099, 1, 3, 1}, 0);
    row("less than a line of points", {15, 2, 7, 3}, 0);
    row("one line of points", {16, 2, 7, 3}, 0);
    row("a line and a point", {17, 2, 7, 3}, 0);
    row("two values over several blocks", {1100003, 1, 2, 1}, 0);
    row("a line of points beyond a block", {35, 1, 70001, 1}, 0);
    row("a point beyond a block", {3, 1, 1100001, 1}, 0);
    const Shape shape = {700, 6, 33, 8}; // 6336 bytes a point
    row("two blocks", shape, 0);
    row("one byte short", shape, 1);
    row("17 points and a value short", shape, 17 * 6336 + 4);
    row("only a value there", shape, 700 * 6336 - 4);
    row("nothing there", shape, 700 * 6336);
    row("large points, short", {18, 1, 70001, 1}, 3 * 280004 + 8);
}

// From a device that gives what is asked for, and from one that cuts values and fails at the end.
void TestReader::everyValueInItsPlace()
{
    QFETCH(Shape, shape);
    QFETCH(int, missing);
    const QByteArray file = recording(shape).chopped(missing);
    ObservationData data = recordingHeader(parsePassport(file), "a").data;
    const QByteArray values = file.mid(int(parsePassport(file).size));
    for (const bool poor : {false, true}) {
        TestSupport::ShortDevice device(missing > 0 ? values : values + "more");
        if (poor)
            device.portion = 40093;
        device.failsAtEnd = poor;
        const auto block =
            SampleBlock::allocate(shape.modules, shape.channels, shape.rays, shape.npoints);
        data.samples = Samples(block);
        const SampleReading reading =
            readSamples(device, {shape.npoints, shape.modules, shape.channels, shape.rays}, *block);
        QCOMPARE(reading.end == SampleReadingEnd::Complete, missing == 0);
        QCOMPARE(reading.error, QString(poor && missing > 0 ? "the disk has gone" : ""));
        QCOMPARE(firstDifference(data, file), QString());
    }
}

void TestReader::refused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<ReadOutcome>("outcome");
    QTest::addColumn<int>("npoints");
    QTest::addColumn<QString>("named"); // in the reason, beside the path
    const auto row = [](const char *name, const QString &path) {
        QTest::newRow(name) << path << ReadOutcome::CannotOpen << 0 << "";
    };
    row("missing", folder.filePath("missing.pnt"));
    row("no name", "");
    row("directory", folder.path());
    row("endless device", "/dev/zero");
    row("pipe without a writer", folder.filePath("pipe"));
    mkfifo(QFile::encodeName(folder.filePath("pipe")).constData(), 0600);
    row("no permission", write(recording(small), "forbidden.pnt"));
    QFile::setPermissions(folder.filePath("forbidden.pnt"), {});

    const auto file = [this](const char *name, const QByteArray &bytes, int npoints,
                             const char *named, ReadOutcome outcome = ReadOutcome::BadPassport) {
        QTest::newRow(name) << write(bytes, QString(name) + "%3.pnt") << outcome << npoints
                            << named;
    };
    file("empty file", "", -1, "channels");
    file("no number in line 1", "numpar\nnbands 6\n", -1, "channels");
    file("zeros", QByteArray(20 << 20, '\0'), -1, "channels");
    file("line ends", QByteArray(1 << 20, '\n'), -1, "channels");
    file("not UTF-8", "n 2\n\xD0\xFF 1\n", -1, "channels");
    file("no module key", passportBytes({"npoints 5", "nbands 6"}), -1, "modules");
    file("no modules", passportBytes({"npoints 5", "nbands 6", "modulus "}), 5, "no modules");
    file("no npoints", passportBytes({"nbands 6", "modulus 1"}), 0, "no \"npoints\"");
    for (const QByteArray line :
         {"npoints 0", "npoints -1", "npoints 2147483648", "npoints 10.5", "nbands 2147483647",
          "nbands six", "nbands -1", "nbands -2147483648", "rays 0", "rays -8"})
        file(line, passportBytes({"npoints 100", "nbands 6", "modulus 1", line}), 0,
             "not a usable count");
    for (const QByteArray line : {"tresolution nan", "tresolution inf", "tresolution 1e-300",
                                  "tresolution -5", "tresolution 12,5"})
        file(line, passportBytes({"npoints 100", "nbands 6", "modulus 1", line}), 0,
             "which is no usable step of time (allowed: 1e-06 to 1e+08 ms");
    const ReadOutcome tooLarge = ReadOutcome::TooLarge;
    const char most[] = "npoints 2147483647";
    file("beyond 31 bits", passportBytes({most, "nbands 32", "modulus 1"}), 0, "2.06 TiB",
         tooLarge);
    file("beyond 63 bits", passportBytes({most, "nbands 2147483646", "modulus 1"}), 0,
         "more than 8 EiB", tooLarge);
    file("wraps to zero",
         passportBytes({"npoints 1073741824", "channels 1073741824", "modulus 1 2 3 4"}), 0,
         "more than 8 EiB", tooLarge);
}

void TestReader::refused()
{
    QFETCH(QString, path);
    QFETCH(ReadOutcome, outcome);
    QFETCH(int, npoints);
    QFETCH(QString, named);
    if (path.contains("forbidden") && geteuid() == 0)
        QSKIP("nothing is forbidden to root");
    if (npoints == -1)
        QTest::ignoreMessage(QtDebugMsg, qPrintable("Error! No " + named + " in file!"));
    if (npoints > 0)
        QTest::ignoreMessage(QtDebugMsg, "------------------- data ERROR! modules =0");
    if (outcome == ReadOutcome::TooLarge)
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^ERROR! Reader::readDataFile\\(\\): "));
    Reader reader;
    const ObservationData data = Reader::readDataFile(&reader, path);
    QVERIFY(reader.outcome() == outcome);
    const QString reason = reader.reason();
    QVERIFY2(reason.contains(path) && reason.contains(named), qPrintable(reason));
    QCOMPARE(data.npoints, npoints);
    QVERIFY(data.samples == nullptr);
    if (outcome == ReadOutcome::CannotOpen)
        compareEmpty(data);
}

void TestReader::batchAndInteractive_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("kept");      // bytes, once the first block was read
    QTest::addColumn<qint64>("ms");        // that the first block takes
    QTest::addColumn<QStringList>("said"); // in batch; title and text of the box
    const auto row = [](const char *name, const QByteArray &bytes, qint64 kept, qint64 ms,
                        const QStringList &said) {
        QTest::newRow(name) << bytes << kept << ms << said;
    };
    const QStringList broken = {"File %1 has wrong size. Ignoring it.\n", "Data is heavily damaged",
                                "File size is incorrect, data is broken, showing what I can."};
    const QByteArray whole = recording(small);
    const int header = int(parsePassport(whole).size);
    for (const auto &[name, size] : {std::pair("one byte short", whole.size() - 1),
                                     {"one float short", whole.size() - 4},
                                     {"passport only", header},
                                     {"passport without its last line end", header - 1}})
        row(name, whole.left(size), size, 0, broken);
    row("more lines announced", "n 100\nnpoints 10\nnbands 6\nmodulus 1\n", 40, 0, broken);
    row("shrinks while it is read", recording(severalBlocks), 5 << 20, 0, broken);
    row("an hour", recording(severalBlocks), 1 << 30, 3600999, {});
    row("more than an hour", recording(severalBlocks), 1 << 30, 3601000,
        {"File %1 is dead. More than 60mins to read. Aborting\n", "Very slow reading",
         "You just can't live like that.\nThis warning won't show again."});
}

void TestReader::batchAndInteractive()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qint64, kept);
    QFETCH(qint64, ms);
    QFETCH(QStringList, said);
    const QString name = QString::fromUtf8("запись.pnt");
    const QString path = folder.filePath(name);
    Reader reader;
    qint64 time = 0;
    reader.setClock([&] { return time; });
    connect(&reader, &Reader::progress, this, [&](int percent) {
        time = ms;
        if (percent > 0 && kept < bytes.size())
            QFile::resize(path, kept);
    });
    ObservationData data;
    const auto read = [&] {
        time = 0;
        data = Reader::readDataFile(&reader, write(bytes, name));
    };
    QCOMPARE(QString::fromLocal8Bit(printed(read)), said.value(0).replace("%1", path));
    if (!said.isEmpty())
        compareEmpty(data);

    QWidget window;
    TestSupport::MessageBoxCatcher catcher;
    read();
    QCOMPARE(catcher.boxes().size(), said.isEmpty() ? 0 : 1);
    for (const auto &box : catcher.boxes())
        QCOMPARE((QStringList{box.title, box.text}), said.mid(1));
    const bool isShort = reader.outcome() == ReadOutcome::Short;
    QCOMPARE(data.missingPoints > 0, isShort);
    if (isShort) {
        const Passport passport = parsePassport(bytes);
        const qint64 values = (std::min<qint64>(kept, bytes.size()) - passport.size) / 4;
        QCOMPARE(completePoints(data), int(values / (data.modules * data.rays * data.channels)));
        QVERIFY(reader.reason().contains(completePoints(data) > 0 ? "The data end at point "
                                                                  : "None of the "));
    }
    QCOMPARE(firstDifference(data, bytes.left(int(kept))), QString());
}

void TestReader::secondReadingIsRefused()
{
    const QString path = write(recording(small));
    Reader reader;
    Reader second;
    ObservationData header;
    const auto readSecond = [&] { header = Reader::readDataFile(&second, path, true); };
    QTimer::singleShot(0, this, readSecond);
    QCOMPARE(firstDifference(Reader::readDataFile(&reader, path), recording(small)), QString());
    QVERIFY(second.outcome() == ReadOutcome::Busy && header.npoints == 0);
    readSecond();
    QVERIFY(header.npoints == 100 && header.samples == nullptr);
}

void TestReader::cancelledOrDeletedFromAnEvent()
{
    const QString path = write(recording(severalBlocks));
    auto reader = std::make_unique<Reader>();
    QVector<int> percents;
    connect(reader.get(), &Reader::progress, this, [&](int percent) { percents << percent; });
    QTimer::singleShot(0, reader.get(), &Reader::cancel);
    QCOMPARE(Reader::readDataFile(reader.get(), path).npoints, 0);
    QVERIFY(reader->outcome() == ReadOutcome::Cancelled && percents.isEmpty());

    // An old cancellation does not end the next reading.
    QVERIFY(Reader::readDataFile(reader.get(), path).samples);
    QCOMPARE(percents, (QVector{0, 20, 40, 60, 80}));

    QTimer::singleShot(0, this, [&] { reader.reset(); });
    QVERIFY(Reader::readDataFile(reader.get(), path).samples == nullptr);
}

ZRT_GUI_TEST_MAIN(TestReader)
#include "tst_reader.moc"
