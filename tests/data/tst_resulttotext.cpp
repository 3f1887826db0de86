#include "data/resulttotext.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QLocale>
#include <QTemporaryDir>
#include <QVector>
#include <QtEndian>
#include <cmath>
#include <csignal>
#include <limits>
#include <memory>
#include <sys/resource.h>

using namespace Tools;

namespace {

const QByteArray header = "source J0323+3944\npoints: 3\ntype: float\nfirst_point: 58000\n"
                          "disp: 26\nmodule 1\ndays: 2\n";
const char before[] = "the old text";

QByteArray floats(const std::vector<float> &values)
{
    QByteArray bytes(int(values.size() * sizeof(float)), '\0');
    for (std::size_t i = 0; i < values.size(); ++i)
        qToLittleEndian(values[i], bytes.data() + i * sizeof(float));
    return bytes;
}

} // namespace

class TestResultToText : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void conversion_data();
    void conversion();
    void everyFloatComesBack();
    void refusals_data();
    void refusals();
    void missingFiles();
    void itsOwnFile();
    void recordingAsText();
    void moduleAndRayNumbers();
    void recordingWithoutSamples();
    void sizesAreForetold();
    void progressAndCancelling();
    void fullDiskKeepsTheOldText();

private:
    QString path(const QString &name) const { return folder->filePath(name); }
    QByteArray contents(const QString &name) const;
    bool write(const QString &name, const QByteArray &bytes) const;

    std::unique_ptr<QTemporaryDir> folder;
};

QByteArray TestResultToText::contents(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

bool TestResultToText::write(const QString &name, const QByteArray &bytes) const
{
    QFile file(path(name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

void TestResultToText::initTestCase()
{
    QLocale::setDefault(QLocale("de_DE"));
}

void TestResultToText::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(write("out", before));
}

void TestResultToText::conversion_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");
    // A line end inside of a value: 0x0a0d0a0d.
    const QByteArray lineEnds = "\r\n\r\n";
    QTest::newRow("two blocks") << header + floats({1, -2.5f, 0, 1e-5f, 123456, 1e6f})
                                << header + "1\n-2.5\n0\n1e-05\n123456\n1e+06\n";
    QTest::newRow("digits that the float needs")
        << header + floats({0.1f, 1 / 3.0f, 16777216, 1e5f, 3.4028235e38f, 1.1754944e-38f})
        << header + "0.1\n0.33333334\n16777216\n100000\n3.4028235e+38\n1.1754944e-38\n";
    QTest::newRow("not numbers") << QByteArray("points: 3\ndays: 1\n") +
                                        floats({float(qQNaN()), float(qInf()), -float(qInf())})
                                 << QByteArray("points: 3\ndays: 1\nnan\ninf\n-inf\n");
    QTest::newRow("line ends among the values")
        << QByteArray("points: 1\ndays: 1\n") + lineEnds
        << QByteArray("points: 1\ndays: 1\n6.7907934e-33\n");
    QTest::newRow("no blocks") << QByteArray("points: 3\ndays: 0\n") + floats({1})
                               << QByteArray("points: 3\ndays: 0\n");
    QTest::newRow("empty count of blocks")
        << QByteArray("points: 3\ndays: \n") + floats({1}) << QByteArray("points: 3\ndays: \n");
    QTest::newRow("surplus after the last block")
        << QByteArray("points: 1\ndays: 1\n") + floats({1, 2})
        << QByteArray("points: 1\ndays: 1\n1\n");
    QTest::newRow("values that look like a header")
        << QByteArray("points: 2\ndays: 1\n") + "days: 7\n"
        << QByteArray("points: 2\ndays: 1\n") + "1.9757953e+31\n8.817191e-33\n";
    QTest::newRow("last of several points lines")
        << QByteArray("points: 9\npoints:1\ndays: 1\n") + floats({4})
        << QByteArray("points: 9\npoints:1\ndays: 1\n4\n");
}

void TestResultToText::conversion()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(write("in", bytes));
    QCOMPARE(resultToText(path("in"), path("out")), QString());
    QTEST(contents("out"), "text");
    QCOMPARE(contents("in"), bytes);
}

// More than one block of the writer and of the reader.
void TestResultToText::everyFloatComesBack()
{
    std::vector<float> values;
    for (quint32 bits = 0; bits < 0x7f800000u; bits += 12347)
        values.push_back(qFromLittleEndian<float>(&bits));
    const QByteArray start = "points: " + QByteArray::number(int(values.size())) + "\ndays: 1\n";
    QVERIFY(write("in", start + floats(values)));
    QCOMPARE(resultToText(path("in"), path("out")), QString());
    const QList<QByteArray> lines = contents("out").split('\n');
    QCOMPARE(lines.size(), int(values.size()) + 3);
    for (std::size_t i = 0; i < values.size(); ++i)
        QCOMPARE(float(lines[int(i) + 2].toDouble()), values[i]);
}

void TestResultToText::refusals_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message"); // "%1" stands for the path
    const QString noPoints = "ERROR!\nНеверный формат файла,\nнет points в паспорте\n%1";
    const QString noDays = "Error! No days in %1";
    const auto row = [](const char *name, const QByteArray &bytes, const QString &message) {
        QTest::newRow(name) << bytes << message;
    };
    row("empty", "", noPoints);
    row("no points", "type: float\ndays: 1\n" + floats({1}), noPoints);
    row("points 0", "points: 0\ndays: 1\n", noPoints);
    row("points below 0", "points: -1\ndays: 1\n" + floats({1}), noPoints);
    row("points above an integer", "points: 4294967297\ndays: 1\n" + floats({1}), noPoints);
    row("points after the header", "days: 1\npoints: 1\n" + floats({1}), noPoints);
    row("zeros without a line end", QByteArray(3 << 20, '\0'), noPoints);
    row("no days", "points: 1\n" + floats({1}), noDays);
    row("days without blank", "points: 1\ndays:1\n" + floats({1}), noDays);
    row("days in letters", "points: 1\ndays: one\n" + floats({1}), noDays);
    row("days cut off", "points: 1\ndays: 1", noDays);
    row("other type", "points: 1\ntype: double\ndays: 1\n" + QByteArray(8, '\0'),
        "Error! The type of the values is not float in %1");
    row("second block short by a byte", header + floats({1, 2, 3, 4, 5, 6}).chopped(1),
        "Error! Block 2 of 2 in %1 is short: it needs 12 bytes, the file has 11");
    row("second block missing", header + floats({1, 2, 3}),
        "Error! Block 2 of 2 in %1 is short: it needs 12 bytes, the file has 0");
    row("more values than memory", "points: 2147483647\ndays: 1\n" + floats({1, 2}),
        "Error! Block 1 of 1 in %1 is short: it needs 8589934588 bytes, the file has 8");
    row("more blocks than any file", "points: 2147483647\ndays: 99999999999999999999\n",
        "Error! Block 1 of 9223372036854775807 in %1 is short: it needs 8589934588 bytes, the "
        "file has 0");
}

void TestResultToText::refusals()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    QVERIFY(write("in", bytes));
    QCOMPARE(resultToText(path("in"), path("out")), message.arg(path("in")));
    QCOMPARE(resultTextBytes(path("in")), qint64(0));
    QCOMPARE(contents("out"), QByteArray(before));
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 2);
}

void TestResultToText::missingFiles()
{
    QVERIFY(write("in", header + floats({1, 2, 3, 4, 5, 6})));
    QCOMPARE(resultToText("", path("out")), QString("ERROR!\nНет файла для чтения!"));
    QCOMPARE(resultToText(path("no"), ""), QString("ERROR!\nНе могу открыть файл для чтения\n"));
    QCOMPARE(resultToText(path("in"), ""), QString("ERROR!\nНет файла для записи!"));
    QCOMPARE(resultToText(path("in"), path("no/out")),
             QString("ERROR!\nНе могу открыть файл для записи\n"));
}

void TestResultToText::itsOwnFile()
{
    const QByteArray bytes = header + floats({1, 2, 3, 4, 5, 6});
    QVERIFY(write("in", bytes));
    QVERIFY(QFile::link(path("in"), path("link")));
    for (const QString &name : {QString("in"), QString("link")}) {
        const QString error = resultToText(path("in"), path(name));
        QVERIFY(error.startsWith("Error! The text would take the place of the file"));
    }
    QCOMPARE(contents("in"), bytes);
}

void TestResultToText::recordingAsText()
{
    const ObservationData data =
        TestSupport::makeRecording({2, 2, 3, 2}, [](int point, int module, int channel, int ray) {
            return float(1000 * point + 100 * module + 10 * ray + channel) + 0.5f;
        });
    QCOMPARE(observationToText(data, path("out")), QString());
    QCOMPARE(contents("out"), QByteArray("i=0\n"
                                         "module 1 ray 1: 0.5 1.5 2.5\n"
                                         "module 1 ray 2: 10.5 11.5 12.5\n"
                                         "module 2 ray 1: 100.5 101.5 102.5\n"
                                         "module 2 ray 2: 110.5 111.5 112.5\n"
                                         "i=1\n"
                                         "module 1 ray 1: 1000.5 1001.5 1002.5\n"
                                         "module 1 ray 2: 1010.5 1011.5 1012.5\n"
                                         "module 2 ray 1: 1100.5 1101.5 1102.5\n"
                                         "module 2 ray 2: 1110.5 1111.5 1112.5\n"));
}

void TestResultToText::moduleAndRayNumbers()
{
    ObservationData data =
        TestSupport::makeRecording({1, 1, 1, 1}, [](int, int, int, int) { return 7.0f; });
    data.firstModule = 4;
    data.ray = 6;
    QCOMPARE(observationToText(data, path("out")), QString());
    QCOMPARE(contents("out"), QByteArray("i=0\nmodule 4 ray 6: 7\n"));
}

void TestResultToText::recordingWithoutSamples()
{
    QCOMPARE(observationToText({}, path("out")), QString("Error! The recording has no samples."));
    QCOMPARE(observationTextBytes({}), qint64(0));
    const ObservationData data =
        TestSupport::makeRecording({1, 1, 1, 1}, [](int, int, int, int) { return 7.0f; });
    const QString line = "can't open file " + path("no/out") + " for writing";
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QVERIFY(observationToText(data, path("no/out")).startsWith("Error! Cannot write "));
    QCOMPARE(contents("out"), QByteArray(before));
}

void TestResultToText::sizesAreForetold()
{
    const auto isNear = [](qint64 size, qint64 real) {
        return std::abs(double(size) / double(real) - 1) < 0.05;
    };
    std::vector<float> values(30000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::sin(float(i));
    QVERIFY(write("in", "points: 10000\ndays: 3\n" + floats(values)));
    QCOMPARE(resultToText(path("in"), path("out")), QString());
    QVERIFY(isNear(resultTextBytes(path("in")), contents("out").size()));

    const ObservationData data =
        TestSupport::makeRecording({5000, 1, 3, 2}, [](int point, int, int channel, int ray) {
            return std::sin(float(point + channel * ray));
        });
    QCOMPARE(observationToText(data, path("out")), QString());
    QVERIFY(isNear(observationTextBytes(data), contents("out").size()));
}

void TestResultToText::progressAndCancelling()
{
    const int count = 400000;
    QVERIFY(write("in", "points: " + QByteArray::number(count) + "\ndays: 1\n" +
                            QByteArray(count * 4, '\0')));
    const ObservationData data =
        TestSupport::makeRecording({5000, 1, 3, 2}, [](int, int, int, int) { return 7.0f; });
    using Work = std::function<QString(const TextProgress &, const TextCancelled &)>;
    const Work conversion = [&](const TextProgress &progress, const TextCancelled &cancelled) {
        return resultToText(path("in"), path("out"), progress, cancelled);
    };
    const Work writer = [&](const TextProgress &progress, const TextCancelled &cancelled) {
        return observationToText(data, path("out"), progress, cancelled);
    };
    for (const Work &work : {conversion, writer}) {
        QVERIFY(write("out", before));
        int last = -1;
        const auto risesTo = [&](int percent) {
            QVERIFY(percent > last && percent <= 100);
            last = percent;
        };
        QCOMPARE(work(risesTo, [&] { return last >= 40; }), QString("Cancelled."));
        QVERIFY(last >= 40 && last < 60);
        QCOMPARE(contents("out"), QByteArray(before));
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 2);
        last = -1;
        QCOMPARE(work(risesTo, {}), QString());
        QCOMPARE(last, 100);
        QVERIFY(contents("out") != before);
    }
}

// The limit on the size of files stands for the full disk: the system refuses the write.
void TestResultToText::fullDiskKeepsTheOldText()
{
    const ObservationData data =
        TestSupport::makeRecording({50000, 1, 3, 2}, [](int, int, int, int) { return 7.0f; });
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {100000, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    const QString error = observationToText(data, path("out"));
    const int restored = setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);

    QCOMPARE(restored, 0);
    QVERIFY2(error.startsWith("Error! Cannot write "), qPrintable(error));
    QCOMPARE(contents("out"), QByteArray(before));
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 1);
}

ZRT_UNIT_TEST_MAIN(TestResultToText)
#include "tst_resulttotext.moc"
