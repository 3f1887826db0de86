#include "data/textarrays.h"
#include "support/fulldisk.h"
#include "support/testmain.h"

#include <QLocale>
#include <QTemporaryDir>

using namespace Tools;

class TestTextArrays : public QObject {
    Q_OBJECT

private slots:
    void numbers();
    void keys();
    void missingFiles();
    void fullDisk();

private:
    QByteArray contents() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "none";
    }

    QTemporaryDir folder;
    const QString path = folder.filePath("file.txt");
};

void TestTextArrays::numbers()
{
    QLocale::setDefault(QLocale("de_DE"));
    QVERIFY(writeArrToFile({-2.5, 1234567.8906, 1e21, qQNaN()}, path));
    QCOMPARE(contents(), QByteArray("-2.500\n1234567.891\n1000000000000000000000.000\nnan\n"));
    QVERIFY(writeArrToFile({1}, path) && addArrToFile({1.5f, -0.25f}, path));
    QVERIFY(addArrToFile({1e-7f, 123456.789f}, path)); // float: 123456.7890625
    QCOMPARE(contents(), QByteArray("1.000\n1.500000 -0.250000 \n0.000000 123456.789063 \n"));
}

void TestTextArrays::keys()
{
    using Keys = std::pair<int, int>;
    const auto found = [&](const QByteArray &text) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.flush())
            return Keys();
        return Keys(findDispInFile(path), findPointsInFile(path));
    };
    QCOMPARE(found("disp:5\r\ndisp:6\npoints:7\npoints: 8\n"), Keys(5, 7));
    QCOMPARE(found(" disp: 1\nmy disp: 2\nno points: 3\ndisp: -4"), Keys(-4, 0));
    QCOMPARE(found("disp: 26.2\npoints: 99999999999\n"), Keys(0, 0));
    // A piece of a long line is no line.
    QCOMPARE(found(QByteArray(4095, 'x') + "disp: 3\n" + QByteArray(9000, '\0') + "\ndisp: 12"),
             Keys(12, 0));
}

void TestTextArrays::missingFiles()
{
    const QString none = folder.filePath("none/none");
    for (const char *line :
         {"Tools::findDispInFile(): Error! Can't open file %1", "Error of open file %1",
          "ERROR! Tools::writeArrToFile(): Can't open file %1\n",
          "ERROR! Tools:addArrToFile(): Can't open file %1\n"})
        QTest::ignoreMessage(QtDebugMsg, qPrintable(QString(line).arg(none)));
    QCOMPARE(findDispInFile(none) + findPointsInFile(none), 0);
    QVERIFY(!writeArrToFile({1}, none) && !addArrToFile({1}, none));
}

void TestTextArrays::fullDisk()
{
    QVERIFY(writeArrToFile({1}, path));
    auto disk = std::make_unique<TestSupport::FullDisk>(100000);
    const QString line = "ERROR! %1(): Can't write file " + path + "\n";
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line.arg("Tools::writeArrToFile")));
    const bool isWritten = writeArrToFile(std::vector<double>(100000, 1.5), path);
    QTest::ignoreMessage(QtDebugMsg, qPrintable(line.arg("Tools:addArrToFile")));
    const bool isAdded = addArrToFile(std::vector<float>(100000, 1.5f), path);
    disk.reset();
    QVERIFY(!isWritten && !isAdded);
    QCOMPARE(contents(), QByteArray("1.000\n"));
}

ZRT_UNIT_TEST_MAIN(TestTextArrays)
#include "tst_textarrays.moc"
