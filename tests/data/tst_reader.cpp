#include "data/reader.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryFile>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

using TestSupport::MessageBoxCatcher;
using TestSupport::passportBytes;
using TestSupport::recordingBytes;
using TestSupport::Shape;

namespace {

// Each value tells its place.
float sample(int point, int module, int channel, int ray)
{
    return float(point) + 0.5f * float(module) + 0.01f * float(channel) + 0.1f * float(ray);
}

// What the program writes to standard output while this lives.
class StandardOutput {
public:
    StandardOutput()
    {
        std::fflush(stdout);
        terminal = dup(STDOUT_FILENO);
        file.open();
        dup2(file.handle(), STDOUT_FILENO);
    }

    ~StandardOutput() { restore(); }

    QByteArray text()
    {
        restore();
        file.seek(0);
        return file.readAll();
    }

private:
    void restore()
    {
        if (terminal < 0)
            return;
        std::fflush(stdout);
        dup2(terminal, STDOUT_FILENO);
        close(terminal);
        terminal = -1;
    }

    QTemporaryFile file;
    int terminal = -1;
};

// The record that stands for "nothing".
void compareEmpty(const ObservationData &data)
{
    QCOMPARE((QVector{data.npoints, data.point, data.channels, data.rays, data.dispersion}),
             (QVector{0, 0, 0, 0, 0}));
    QCOMPARE((QVector{data.modules, data.module, data.ray, data.spareNumber, data.firstModule}),
             (QVector{-1, -1, -1, -1, 1}));
    QVERIFY(data.samples == nullptr);
}

const Shape smallShape = {100, 2, 7, 3};
const Shape severalBlocks = {5000, 1, 513, 1}; // 10 MB: three blocks

} // namespace

class TestReader : public QObject {
    Q_OBJECT

private slots:
    void wholeRecording();
    void headerOnly();
    void realRecordingHasItsMeanChannel();
    void unusableFiles_data();
    void unusableFiles();
    void specialFiles_data();
    void specialFiles();
    void fileWithoutPermission();
    void tooLargeForTheMemory_data();
    void tooLargeForTheMemory();
    void noModules();
    void shortFileInteractive();
    void shortFileInBatch_data();
    void shortFileInBatch();
    void slowReadingInteractive();
    void slowReadingInBatch();
    void fileThatShrinks();
    void eventsAreProcessed();
    void cancelledFromAnEvent();
    void secondReadingIsRefused();
    void readerDeletedWhileReading();

private:
    QString write(const QByteArray &bytes, const QString &name = "a.pnt")
    {
        QString path = folder.filePath(name);
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
        return path;
    }

    QTemporaryDir folder;
};

void TestReader::wholeRecording()
{
    const QString path = write(recordingBytes(smallShape, sample));
    Reader reader;
    ObservationData copy;
    {
        const ObservationData data = Reader::readDataFile(&reader, path);
        copy = data;
    }
    QVERIFY(reader.outcome() == ReadOutcome::Complete);
    QCOMPARE(reader.reason(), QString());
    QCOMPARE((QVector{copy.npoints, copy.modules, copy.channels, copy.rays}),
             (QVector{100, 2, 7, 3}));
    QCOMPARE(copy.filePath, path);
    QCOMPARE(copy.sampleFactor, 0.89);
    QCOMPARE(copy.sampleMarker, -1.0);
    for (int m = 0; m < 2; ++m)
        for (int c = 0; c < 7; ++c)
            for (int r = 0; r < 3; ++r)
                for (int p = 0; p < 100; ++p)
                    QCOMPARE(copy.samples[m][c][r][p], sample(p, m, c, r));
}

void TestReader::headerOnly()
{
    const QString path = write(recordingBytes({40000, 1, 33, 8}, sample).left(1000));
    Reader reader;
    const ObservationData data = Reader::readDataFile(&reader, path, true);
    QVERIFY(reader.outcome() == ReadOutcome::Complete);
    QCOMPARE(data.npoints, 40000);
    QCOMPARE(int(data.fbands.size()), 32);
    QVERIFY(data.samples == nullptr);
}

// The 33rd channel of the published recordings is the mean over the 32 bands: it comes out
// only where every band was put into its place.
void TestReader::realRecordingHasItsMeanChannel()
{
    const QString path = TestSupport::realRecording("frb180417_1297MHz.pnt");
    if (path.isEmpty())
        QSKIP("this machine has no real recordings");
    const ObservationData data = Reader::readDataFile(nullptr, path);
    QCOMPARE((QVector{data.npoints, data.rays, data.channels}), (QVector{5120, 3, 33}));
    for (int r = 0; r < 3; ++r)
        for (int p = 0; p < data.npoints; p += 7) {
            double sum = 0;
            double size = 0;
            for (int c = 0; c < 32; ++c) {
                sum += data.samples[0][c][r][p];
                size += std::abs(data.samples[0][c][r][p]);
            }
            // The file's mean is rounded to float.
            const double difference = std::abs(sum / 32 - data.samples[0][32][r][p]);
            QVERIFY2(difference <= 1e-6 * size, qPrintable(QString("point %1").arg(p)));
        }
}

void TestReader::unusableFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("npoints");
    QTest::addColumn<QByteArray>("debug");
    const QByteArray noChannels = "Error! No channels in file!";
    QTest::newRow("empty file") << QByteArray() << -1 << noChannels;
    QTest::newRow("one byte") << QByteArray("x") << -1 << noChannels;
    QTest::newRow("zeros without a line") << QByteArray(20 << 20, '\0') << -1 << noChannels;
    QTest::newRow("line ends only") << QByteArray(1 << 20, '\n') << -1 << noChannels;
    QTest::newRow("no modules") << passportBytes({"npoints 5", "nbands 6"}) << -1
                                << QByteArray("Error! No modules in file!");
    QTest::newRow("negative points")
        << passportBytes({"npoints -5", "nbands 6", "modulus 1"}) << 0 << QByteArray();
    QTest::newRow("no points") << passportBytes({"npoints 0", "nbands 6", "modulus 1"}) << 0
                               << QByteArray();
    QTest::newRow("negative rays and channels")
        << passportBytes({"npoints 5", "nbands -6", "rays -1", "modulus 1"}) << 0 << QByteArray();
}

void TestReader::unusableFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, debug);
    if (!debug.isEmpty())
        QTest::ignoreMessage(QtDebugMsg, debug.constData());
    const QString path = write(bytes);
    Reader reader;
    const ObservationData data = Reader::readDataFile(&reader, path);
    QVERIFY(reader.outcome() == ReadOutcome::BadPassport);
    QVERIFY2(reader.reason().contains(path), qPrintable(reader.reason()));
    QTEST(data.npoints, "npoints");
    QVERIFY(data.samples == nullptr);
}

void TestReader::specialFiles_data()
{
    QTest::addColumn<QString>("path");
    const QString pipe = folder.filePath("pipe");
    mkfifo(QFile::encodeName(pipe).constData(), 0600);
    QTest::newRow("missing") << folder.filePath("missing.pnt");
    QTest::newRow("no name") << QString();
    QTest::newRow("directory") << folder.path();
    QTest::newRow("pipe without a writer") << pipe;
    QTest::newRow("endless device") << QString("/dev/zero");
}

void TestReader::specialFiles()
{
    QFETCH(QString, path);
    Reader reader;
    compareEmpty(Reader::readDataFile(&reader, path));
    QVERIFY(reader.outcome() == ReadOutcome::CannotOpen);
    QVERIFY2(reader.reason().contains(path), qPrintable(reader.reason()));
}

void TestReader::fileWithoutPermission()
{
    if (geteuid() == 0)
        QSKIP("nothing is forbidden to root");
    const QString path = write(recordingBytes(smallShape, sample), "forbidden.pnt");
    QFile::setPermissions(path, {});
    Reader reader;
    compareEmpty(Reader::readDataFile(&reader, path));
    QVERIFY(reader.outcome() == ReadOutcome::CannotOpen);
}

void TestReader::tooLargeForTheMemory_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("needed");
    const auto row = [](const char *name, const QList<QByteArray> &lines, const char *needed) {
        QTest::newRow(name) << passportBytes(lines) << needed;
    };
    row("terabytes", {"npoints 2147483647", "nbands 32", "modulus 1"}, "2.06 TiB");
    row("product beyond 63 bits", {"npoints 2147483647", "nbands 2147483646", "modulus 1"},
        "more than 8 EiB");
    row("product that wraps to zero",
        {"npoints 1073741824", "channels 1073741824", "modulus 1 2 3 4"}, "more than 8 EiB");
    row("many channels of one point", {"npoints 1", "nbands 2147483646", "modulus 1"}, "1.56 TiB");
}

void TestReader::tooLargeForTheMemory()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, needed);
    const QString path = write(bytes, "large%3.pnt");
    Reader reader;
    QTest::ignoreMessage(QtDebugMsg,
                         QRegularExpression("^ERROR! Reader::readDataFile\\(\\): .*large"));
    const ObservationData data = Reader::readDataFile(&reader, path);
    QVERIFY(reader.outcome() == ReadOutcome::TooLarge);
    QCOMPARE(data.npoints, 0);
    QVERIFY(data.samples == nullptr);
    for (const QString &part : {path, needed, QString("%1 bytes").arg(bytes.size())})
        QVERIFY2(reader.reason().contains(part), qPrintable(reader.reason()));
}

void TestReader::noModules()
{
    const QString path = write(passportBytes({"npoints 50000", "nbands 6", "modulus "}));
    QTest::ignoreMessage(QtDebugMsg, "------------------- data ERROR! modules =0");
    Reader reader;
    const ObservationData data = Reader::readDataFile(&reader, path);
    QVERIFY(reader.outcome() == ReadOutcome::BadPassport);
    QVERIFY(data.samples == nullptr);
    QCOMPARE(data.modules, 0);
}

void TestReader::shortFileInteractive()
{
    QByteArray bytes = recordingBytes(smallShape, sample);
    bytes.chop(4);
    const QString path = write(bytes);
    QWidget window;
    MessageBoxCatcher catcher;
    Reader reader;
    const ObservationData data = Reader::readDataFile(&reader, path);
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(catcher.boxes()[0].title, QString("Data is heavily damaged"));
    QCOMPARE(catcher.boxes()[0].text,
             QString("File size is incorrect, data is broken, showing what I can."));
    QVERIFY(catcher.boxes()[0].icon == QMessageBox::Information);
    QVERIFY(catcher.boxes()[0].buttons == QMessageBox::Ok);
    QVERIFY(reader.outcome() == ReadOutcome::Short);
    QVERIFY2(reader.reason().contains("4 bytes"), qPrintable(reader.reason()));
    QCOMPARE(data.npoints, 100);
    QCOMPARE(data.samples[1][5][2][99], sample(99, 1, 5, 2));
    QCOMPARE(data.samples[1][6][2][98], sample(98, 1, 6, 2));
    QCOMPARE(data.samples[1][6][2][99], 0.0f);
}

void TestReader::shortFileInBatch_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray whole = recordingBytes(smallShape, sample);
    QTest::newRow("one byte short") << whole.chopped(1);
    QTest::newRow("passport only") << whole.left(whole.indexOf("UTC\n") + 4);
    QTest::newRow("passport without its last line end") << whole.left(whole.indexOf("UTC\n") + 3);
    QTest::newRow("more lines announced than there are")
        << QByteArray("n 100\nnpoints 10\nnbands 6\nmodulus 1\n");
}

void TestReader::shortFileInBatch()
{
    QFETCH(QByteArray, bytes);
    const QString path = write(bytes, QString::fromUtf8("запись.pnt"));
    Reader reader;
    StandardOutput output;
    const ObservationData data = Reader::readDataFile(&reader, path);
    QCOMPARE(output.text(), "File " + path.toLocal8Bit() + " has wrong size. Ignoring it.\n");
    QVERIFY(reader.outcome() == ReadOutcome::Short);
    compareEmpty(data);
}

void TestReader::slowReadingInteractive()
{
    const QString path = write(recordingBytes(severalBlocks, sample));
    QWidget window;
    MessageBoxCatcher catcher;
    Reader reader;
    qint64 time = 0;
    reader.setClock([&] { return time += 1000000; });
    const ObservationData data = Reader::readDataFile(&reader, path);
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(catcher.boxes()[0].title, QString("Very slow reading"));
    QCOMPARE(catcher.boxes()[0].text,
             QString("You just can't live like that.\nThis warning won't show again."));
    QVERIFY(reader.outcome() == ReadOutcome::Complete);
    QCOMPARE(data.samples[0][512][0][4999], sample(4999, 0, 512, 0));
}

void TestReader::slowReadingInBatch()
{
    const QString path = write(recordingBytes(severalBlocks, sample));
    Reader reader;
    qint64 time = 0;
    reader.setClock([&] { return time += 1000000; });
    StandardOutput output;
    const ObservationData data = Reader::readDataFile(&reader, path);
    QCOMPARE(output.text(),
             "File " + path.toLocal8Bit() + " is dead. More than 60mins to read. Aborting\n");
    QVERIFY(reader.outcome() == ReadOutcome::TooSlow);
    compareEmpty(data);
}

void TestReader::fileThatShrinks()
{
    const QString path = write(recordingBytes(severalBlocks, sample));
    QWidget window;
    MessageBoxCatcher catcher;
    Reader reader;
    connect(&reader, &Reader::progress, this, [&](int percent) {
        if (percent == 20)
            QFile::resize(path, 5 << 20);
    });
    const ObservationData data = Reader::readDataFile(&reader, path);
    QVERIFY(reader.outcome() == ReadOutcome::Short);
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(data.samples[0][0][0][1000], sample(1000, 0, 0, 0));
    QCOMPARE(data.samples[0][0][0][4999], 0.0f);
}

void TestReader::eventsAreProcessed()
{
    const QString path = write(recordingBytes(severalBlocks, sample));
    Reader reader;
    qint64 time = 0;
    reader.setClock([&] { return time += 5; });
    QTimer timer;
    int ticks = 0;
    connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });
    timer.start(0);
    Reader::readDataFile(&reader, path);
    QVERIFY2(ticks >= 3, qPrintable(QString::number(ticks))); // once a block
}

void TestReader::cancelledFromAnEvent()
{
    const QString path = write(recordingBytes(severalBlocks, sample));
    Reader reader;
    int reports = 0;
    connect(&reader, &Reader::progress, this, [&] { ++reports; });
    QTimer::singleShot(0, &reader, &Reader::cancel);
    const ObservationData data = Reader::readDataFile(&reader, path);
    QVERIFY(reader.outcome() == ReadOutcome::Cancelled);
    QCOMPARE(data.npoints, 0);
    QVERIFY(data.samples == nullptr);
    QCOMPARE(reports, 0);

    // An old cancellation does not end the next reading.
    reader.cancel();
    QCOMPARE(Reader::readDataFile(&reader, path).npoints, 5000);
}

void TestReader::secondReadingIsRefused()
{
    const QString path = write(recordingBytes(smallShape, sample));
    Reader reader;
    Reader second;
    int secondPoints = -7;
    QTimer::singleShot(0, this,
                       [&] { secondPoints = Reader::readDataFile(&second, path).npoints; });
    const ObservationData data = Reader::readDataFile(&reader, path);
    QCOMPARE(secondPoints, 0);
    QVERIFY(second.outcome() == ReadOutcome::Busy);
    QVERIFY(reader.outcome() == ReadOutcome::Complete);
    QCOMPARE(data.samples[1][6][2][99], sample(99, 1, 6, 2));
    QCOMPARE(Reader::readDataFile(&second, path).npoints, 100);
}

void TestReader::readerDeletedWhileReading()
{
    const QString path = write(recordingBytes(severalBlocks, sample));
    auto reader = std::make_unique<Reader>();
    QTimer::singleShot(0, this, [&] { reader.reset(); });
    const ObservationData data = Reader::readDataFile(reader.get(), path);
    QCOMPARE(data.npoints, 0);
    QVERIFY(data.samples == nullptr);
}

ZRT_GUI_TEST_MAIN(TestReader)
#include "tst_reader.moc"
