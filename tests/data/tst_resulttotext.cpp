#include "data/resulttotext.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QLocale>
#include <QTemporaryDir>
#include <cmath>

using namespace Tools;

class TestResultToText : public QObject {
    Q_OBJECT

private slots:
    void conversion();
    void recordingAsText();
    void progressAndCancelling();
    void blocksBeyondTwoGigabytes();

private:
    QByteArray contents(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "none";
    }
    bool write(const QString &path, const QByteArray &bytes) const
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }

    QTemporaryDir folder;
    const QString in = folder.filePath("in");
    const QString out = folder.filePath("out");
};

void TestResultToText::conversion()
{
    QLocale::setDefault(QLocale("de_DE"));
    const QByteArray two = "points: 9\ntype: float\npoints: 1\ndays: 2\n";
    const struct {
        QByteArray header;
        QByteArray values; // bytes in hexadecimal digits
        QByteArray text;   // after the header
        QString error;     // "%1" stands for the path
    } files[] = {
        {two, "0000803f 000020c0 0000803f", "1\n-2.5\n", ""},
        {two, "abaaaa3e 0000c07f", "0.33333334\nnan\n", ""},
        {"points: 1\ndays: 1\n", "0d0a0d0a", "6.7907934e-33\n", ""}, // line ends
        {"points: 3\ndays: \n", "0000803f", "", ""},
        {QByteArray(3 << 20, '\0'), "", "",
         "ERROR!\nНеверный формат файла,\nнет points в паспорте\n%1"},
        {"points: 1\ndays:1\n", "0000803f", "", "Error! No days in %1"},
        {"points: 1\ntype: double\ndays: 1\n", "0000803f", "",
         "Error! The type of the values is not float in %1"},
        {two, "0000803f 000020", "",
         "Error! Block 2 of 2 in %1 is short: it needs 4 bytes, the file has 3"},
    };
    for (const auto &[header, values, text, error] : files) {
        const QByteArray bytes = header + QByteArray::fromHex(values);
        QVERIFY(write(in, bytes) && write(out, "the old text"));
        const TextEnd end = resultToText(in, out);
        QCOMPARE(end.text, QString(error).replace("%1", in));
        QCOMPARE(end.kind, error.isEmpty() ? TextEnd::Kind::Done : TextEnd::Kind::BadInput);
        QCOMPARE(contents(out), error.isEmpty() ? header + text : QByteArray("the old text"));
        QVERIFY(resultToText(in, in).text.startsWith("Error! The text would take the place of"));
        QCOMPARE(contents(in), bytes);
    }
}

void TestResultToText::recordingAsText()
{
    ObservationData data =
        TestSupport::makeRecording({2, 2, 2, 1}, [](int point, int module, int channel, int) {
            return float(1000 * point + 100 * module + channel) + 0.5f;
        });
    data.moduleNumbers = {4, 6};
    data.ray = 6;
    QCOMPARE(observationToText(data, out).text, QString());
    QCOMPARE(contents(out), QByteArray("i=0\nmodule 4 ray 6: 0.5 1.5\nmodule 6 ray 6: 100.5 101.5\n"
                                       "i=1\nmodule 4 ray 6: 1000.5 1001.5\n"
                                       "module 6 ray 6: 1100.5 1101.5\n"));
}

void TestResultToText::progressAndCancelling()
{
    const QByteArray header = "points: 400000\ndays: 1\n";
    QVERIFY(write(in, header + QByteArray::fromHex("cdcccc3d").repeated(400000)));
    const ObservationData data =
        TestSupport::makeRecording({5000, 1, 3, 2}, [](int, int, int, int) { return 7.0f; });
    for (const bool isRecording : {false, true}) {
        int last = -1;
        const auto work = [&](const TextCancelled &cancelled) {
            const TextProgress progress = [&](int percent) { last = percent; };
            return isRecording ? observationToText(data, out, progress, cancelled)
                               : resultToText(in, out, progress, cancelled);
        };
        QVERIFY(write(out, "the old text"));
        QCOMPARE(work([&] { return last >= 40; }).kind, TextEnd::Kind::Cancelled);
        QVERIFY(last >= 40 && last < 60);
        QCOMPARE(contents(out), QByteArray("the old text"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 2);
        QCOMPARE(work({}).text, QString());
        QCOMPARE(last, 100);
        QVERIFY(isRecording || contents(out) == header + QByteArray("0.1\n").repeated(400000));
        const qint64 foretold = isRecording ? observationTextBytes(data) : resultTextBytes(in);
        QVERIFY(std::abs(double(foretold) / contents(out).size() - 1) < 0.05);
    }
}

// The blocks are a hole in the file, which takes no room, but for the last value.
void TestResultToText::blocksBeyondTwoGigabytes()
{
    constexpr qint64 blockBytes = 4 * 70'000'000;
    const QByteArray header = "points: 70000000\ntype: float\ndays: 8\n";
    const qint64 end = header.size() + 8 * blockBytes;
    QVERIFY(write(in, header));
    if (!QFile::resize(in, end))
        QSKIP("There is no room for a file of 2.2 GB with a hole in it.");
    QCOMPARE(resultProblem(in), QString());
    QCOMPARE(resultTextBytes(in) / 1'000'000, qint64(1120)); // "0" and a line end each
    QVERIFY(QFile::resize(in, end - 1));
    QCOMPARE(resultProblem(in), QString("Error! Block 8 of 8 in %1 is short: it needs 280000000 "
                                        "bytes, the file has 279999999")
                                    .arg(in));
    QFile::remove(in);
}

ZRT_UNIT_TEST_MAIN(TestResultToText)
#include "tst_resulttotext.moc"
