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

namespace {

const Shape small = {100, 2, 7, 3};
const Shape twoBlocks = {2500, 1, 513, 1}; // 5 MB, of which a block is 4

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
bool isEmpty(const ObservationData &d)
{
    return d.npoints == 0 && d.modules == -1 && d.firstModule == 1 && d.samples == nullptr;
}

} // namespace

class TestReader : public QObject {
    Q_OBJECT

private slots:
    void everyValueInItsPlace();
    void filesThatCannotBeOpened();
    void badPassports();
    void batchAndInteractive();
    void events();

private:
    QString write(const QByteArray &bytes, const QString &name = "a.pnt")
    {
        return TestSupport::writeFile(folder, name, bytes);
    }
    void compareRefused(const QString &path, ReadOutcome outcome, const QString &named = {});

    QTemporaryDir folder;
};

// From a device that gives what is asked for, and from one that cuts values and fails at the end.
void TestReader::everyValueInItsPlace()
{
    const std::pair<Shape, int> cases[] = {
        // The bytes that are missing; a point of the small recording has 168.
        {{1000, 1, 1, 1}, 0},
        {{15, 2, 7, 3}, 0}, // a line has 16 points
        {{16, 2, 7, 3}, 0},
        {{17, 2, 7, 3}, 0},
        {{350003, 1, 3, 1}, 0}, // two blocks
        {{18, 1, 3, 23334}, 0}, // a line of points beyond a block
        {{18, 1, 3, 23334}, 280008 + 8},
        {{180, 6, 33, 8}, 1}, // short in the second block
        {small, 17 * 168 + 4},
        {small, 100 * 168 - 4}, // only a value there
        {small, 100 * 168},
    };
    for (const auto &[shape, missing] : cases) {
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
            const SampleReading reading = readSamples(
                device, {shape.npoints, shape.modules, shape.channels, shape.rays}, *block);
            QCOMPARE(reading.end == SampleReadingEnd::Complete, missing == 0);
            QCOMPARE(reading.error, QString(poor && missing > 0 ? "the disk has gone" : ""));
            QCOMPARE(firstDifference(data, file), QString());
        }
    }
}

// What the reason names beside the path.
void TestReader::compareRefused(const QString &path, ReadOutcome outcome, const QString &named)
{
    Reader reader;
    const ObservationData data = Reader::readDataFile(&reader, path);
    const QString reason = reader.reason();
    QVERIFY2(reader.outcome() == outcome, qPrintable(path + ": " + reason));
    QVERIFY2(reason.contains(path) && reason.contains(named), qPrintable(reason));
    QVERIFY(outcome == ReadOutcome::CannotOpen ? isEmpty(data) : data.samples == nullptr);
}

void TestReader::filesThatCannotBeOpened()
{
    QVERIFY(mkfifo(QFile::encodeName(folder.filePath("pipe")).constData(), 0600) == 0);
    for (const QString &path : {QString(), folder.path(), folder.filePath("missing.pnt"),
                                QString("/dev/zero"), folder.filePath("pipe")})
        compareRefused(path, ReadOutcome::CannotOpen);
    const QString forbidden = write(recording(small), "forbidden.pnt");
    QFile::setPermissions(forbidden, {});
    if (geteuid() == 0)
        QSKIP("nothing is forbidden to root");
    compareRefused(forbidden, ReadOutcome::CannotOpen);
}

void TestReader::badPassports()
{
    const auto bad = [this](const QByteArray &bytes, const QString &named, const char *line) {
        if (line)
            QTest::ignoreMessage(QtDebugMsg, line);
        compareRefused(write(bytes, "%3.pnt"), ReadOutcome::BadPassport, named);
    };
    for (const QByteArray &bytes : {QByteArray(), QByteArray("numpar\nnbands 6\n"),
                                    QByteArray(2 << 20, '\0'), QByteArray("n 2\n\xD0\xFF 1\n")})
        bad(bytes, "channels", "Error! No channels in file!");
    bad(passportBytes({"npoints 5", "nbands 6"}), "modules", "Error! No modules in file!");
    bad(passportBytes({"npoints 5", "nbands 6", "modulus "}), "no modules",
        "------------------- data ERROR! modules =0");
    bad(passportBytes({"nbands 6", "modulus 1"}), "no \"npoints\"", nullptr);
    for (const QByteArray line :
         {"npoints 0", "npoints -1", "npoints 2147483648", "npoints 10.5", "nbands 2147483647",
          "nbands six", "nbands -2147483648", "rays 0", "rays -8"})
        bad(passportBytes({"npoints 100", "nbands 6", "modulus 1", line}), "not a usable count",
            nullptr);
    for (const QByteArray line : {"tresolution nan", "tresolution inf", "tresolution 1e-300",
                                  "tresolution -5", "tresolution 12,5"})
        bad(passportBytes({"npoints 100", "nbands 6", "modulus 1", line}),
            line.mid(12) + "\", which is no usable step of time (allowed: 1e-06", nullptr);

    const auto large = [this](const QList<QByteArray> &lines, const QString &named) {
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^ERROR! Reader::readDataFile\\(\\): "));
        compareRefused(write(passportBytes(lines)), ReadOutcome::TooLarge, named);
    };
    large({"npoints 2147483647", "nbands 32", "modulus 1"}, "2.06 TiB");
    large({"npoints 2147483647", "nbands 2147483646", "modulus 1"}, "more than 8 EiB");
    // The product wraps to zero.
    large({"npoints 1073741824", "channels 1073741824", "modulus 1 2 3 4"}, "more than 8 EiB");
}

void TestReader::batchAndInteractive()
{
    const QStringList broken = {"File %1 has wrong size. Ignoring it.\n", "Data is heavily damaged",
                                "File size is incorrect, data is broken, showing what I can."};
    const QStringList slow = {"File %1 is dead. More than 60mins to read. Aborting\n",
                              "Very slow reading",
                              "You just can't live like that.\nThis warning won't show again."};
    const QByteArray whole = recording(small);
    const int header = int(parsePassport(whole).size);
    const struct {
        QByteArray bytes;
        int kept;         // bytes, once the first block was read
        qint64 ms;        // that the first block takes
        QStringList said; // in batch; title and text of the box
    } cases[] = {
        {whole.chopped(1), whole.size() - 1, 0, broken},
        {whole.left(header - 1), header - 1, 0, broken},
        {"n 100\nnpoints 10\nnbands 6\nmodulus 1\n", 40, 0, broken}, // fewer lines than announced
        {recording(twoBlocks), 9 << 19, 0, broken},                  // cut while it is read
        {whole, whole.size(), 3600999, {}},
        {whole, whole.size(), 3601000, slow},
    };
    const QString name = QString::fromUtf8("запись.pnt");
    const QString path = folder.filePath(name);
    for (const auto &[bytes, kept, ms, said] : cases) {
        Reader reader;
        qint64 time = 0;
        reader.setClock([&] { return time; });
        connect(&reader, &Reader::progress, this, [&, ms = ms, kept = kept](int percent) {
            time = ms;
            if (percent > 0)
                QFile::resize(path, kept);
        });
        ObservationData data;
        const auto read = [&, &bytes = bytes] {
            time = 0;
            data = Reader::readDataFile(&reader, write(bytes, name));
        };
        QCOMPARE(QString::fromLocal8Bit(printed(read)), said.value(0).replace("%1", path));
        QVERIFY(said.isEmpty() || isEmpty(data));

        QWidget window;
        TestSupport::MessageBoxCatcher catcher;
        read();
        QCOMPARE(catcher.boxes().size(), said.isEmpty() ? 0 : 1);
        for (const auto &box : catcher.boxes())
            QCOMPARE((QStringList{box.title, box.text}), said.mid(1));
        QCOMPARE(data.missingPoints > 0, said == broken);
        const qint64 values = (kept - parsePassport(bytes).size) / 4;
        QCOMPARE(completePoints(data), int(values / (data.modules * data.rays * data.channels)));
        if (said == broken)
            QVERIFY(reader.reason().contains(completePoints(data) > 0 ? "The data end at point "
                                                                      : "None of the "));
        QCOMPARE(firstDifference(data, bytes.left(kept)), QString());
    }
}

// A second reading from one is refused; it may cancel the reading or delete the reader.
void TestReader::events()
{
    const QString path = write(recording(twoBlocks));
    auto reader = std::make_unique<Reader>();
    QVector<int> percents;
    connect(reader.get(), &Reader::progress, this, [&](int percent) { percents << percent; });
    QTimer::singleShot(0, reader.get(), &Reader::cancel);
    QCOMPARE(Reader::readDataFile(reader.get(), path).npoints, 0);
    QVERIFY(reader->outcome() == ReadOutcome::Cancelled && percents.isEmpty());

    // An old cancellation does not end the next reading.
    Reader second;
    ObservationData header;
    const auto readSecond = [&] { header = Reader::readDataFile(&second, path, true); };
    QTimer::singleShot(0, this, readSecond);
    QVERIFY(Reader::readDataFile(reader.get(), path).samples);
    QCOMPARE(percents, (QVector{0, 40, 80}));
    QVERIFY(second.outcome() == ReadOutcome::Busy && header.npoints == 0);
    readSecond();
    QVERIFY(header.npoints == 2500 && header.samples == nullptr);

    QTimer::singleShot(0, this, [&] { reader.reset(); });
    QVERIFY(Reader::readDataFile(reader.get(), path).samples == nullptr);
}

ZRT_GUI_TEST_MAIN(TestReader)
#include "tst_reader.moc"
