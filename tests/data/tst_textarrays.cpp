#include "data/textarrays.h"
#include "support/testmain.h"

#include <QLocale>
#include <QTemporaryDir>
#include <csignal>
#include <memory>
#include <sys/resource.h>

using namespace Tools;

class TestTextArrays : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void series_data();
    void series();
    void rows();
    void keys_data();
    void keys();
    void unopenable();
    void fullDisk();

private:
    QString path(const QString &name = "file.txt") const { return folder->filePath(name); }
    QByteArray contents() const;
    bool write(const QByteArray &bytes) const;

    std::unique_ptr<QTemporaryDir> folder;
};

QByteArray TestTextArrays::contents() const
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

bool TestTextArrays::write(const QByteArray &bytes) const
{
    QFile file(path());
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

void TestTextArrays::initTestCase()
{
    QLocale::setDefault(QLocale("de_DE"));
}

void TestTextArrays::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void TestTextArrays::series_data()
{
    QTest::addColumn<std::vector<double>>("values");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("three decimals")
        << std::vector<double>{1, -2.5, 1234567.8906} << QByteArray("1.000\n-2.500\n1234567.891\n");
    QTest::newRow("never an exponent")
        << std::vector<double>{1e-9, 1e21} << QByteArray("0.000\n1000000000000000000000.000\n");
    QTest::newRow("no values") << std::vector<double>{} << QByteArray();
    QTest::newRow("not numbers") << std::vector<double>{qQNaN(), -qInf()}
                                 << QByteArray("nan\n-inf\n");
}

void TestTextArrays::series()
{
    QFETCH(std::vector<double>, values);
    QVERIFY(write("what was there before, and longer than what comes"));
    QVERIFY(writeArrToFile(values, path()));
    QTEST(contents(), "text");
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 1);
}

void TestTextArrays::rows()
{
    QVERIFY(addArrToFile({1.5f, -0.25f}, path()));
    QVERIFY(addArrToFile({}, path()));
    QVERIFY(addArrToFile({1e-7f, 123456.789f}, path())); // float: 123456.7890625
    QCOMPARE(contents(), QByteArray("1.500000 -0.250000 \n\n0.000000 123456.789063 \n"));
}

void TestTextArrays::keys_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("disp");
    QTest::addColumn<int>("points");
    QTest::newRow("header") << QByteArray("points: 2048\ntype: float\ndisp: 26\ndays: 1\n") << 26
                            << 2048;
    QTest::newRow("first one counts")
        << QByteArray("disp:5\ndisp:6\npoints:7\npoints: 8\n") << 5 << 7;
    QTest::newRow("only at the start of a line")
        << QByteArray(" disp: 1\nmy disp: 2\nno points: 3\ndisp: -4") << -4 << 0;
    QTest::newRow("line ends of another system")
        << QByteArray("disp: 9\r\npoints: 11\r\n") << 9 << 11;
    QTest::newRow("after a line longer than one piece")
        << QByteArray(4095, 'x') + "disp: 3\n" + QByteArray(9000, '\0') + "\ndisp: 12\npoints: 1"
        << 12 << 1;
    QTest::newRow("not whole") << QByteArray("disp: 26.2\npoints: many\n") << 0 << 0;
    QTest::newRow("too large") << QByteArray("disp: 3000000000\npoints: 99999999999\n") << 0 << 0;
    QTest::newRow("empty file") << QByteArray() << 0 << 0;
}

void TestTextArrays::keys()
{
    QFETCH(QByteArray, text);
    QVERIFY(write(text));
    QTEST(findDispInFile(path()), "disp");
    QTEST(findPointsInFile(path()), "points");
}

void TestTextArrays::unopenable()
{
    const QString missing = path("missing/file.txt");
    const auto expect = [](const QString &line) {
        QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    };
    expect("ERROR! Tools::writeArrToFile(): Can't open file " + missing + "\n");
    QVERIFY(!writeArrToFile({1}, missing));
    expect("ERROR! Tools:addArrToFile(): Can't open file " + missing + "\n");
    QVERIFY(!addArrToFile({1}, missing));
    expect("Tools::findDispInFile(): Error! Can't open file " + missing);
    QCOMPARE(findDispInFile(missing), 0);
    expect("Error of open file " + missing);
    QCOMPARE(findPointsInFile(missing), 0);
}

// The limit on the size of files stands for the full disk: the system refuses the write.
void TestTextArrays::fullDisk()
{
    const QByteArray before = "1.000000 \n";
    QVERIFY(write(before));
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {100000, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    const QString wholeLine = "ERROR! Tools::writeArrToFile(): Can't write file " + path() + "\n";
    QTest::ignoreMessage(QtDebugMsg, qPrintable(wholeLine));
    const bool isWritten = writeArrToFile(std::vector<double>(100000, 1.5), path());
    const QString rowLine = "ERROR! Tools:addArrToFile(): Can't write file " + path() + "\n";
    QTest::ignoreMessage(QtDebugMsg, qPrintable(rowLine));
    const bool isAdded = addArrToFile(std::vector<float>(100000, 1.5f), path());
    const int restored = setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);

    QCOMPARE(restored, 0);
    QVERIFY(!isWritten && !isAdded);
    QCOMPARE(contents(), before);
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 1);
}

ZRT_UNIT_TEST_MAIN(TestTextArrays)
#include "tst_textarrays.moc"
