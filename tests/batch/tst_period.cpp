#include "support/batchfolder.h"
#include "support/testmain.h"

// period as a user or a batch system calls it.

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

const QByteArray times = "59607.3866952756\n59607.3930600505\n59607.4015472327\n59607.4185223751\n"
                         "59607.4286862792\n59607.4470411329\n59607.4591301745\n59607.4689014586\n";

} // namespace

class TestPeriod : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void findsAndGoesOn();
    void typedTimesAreThoseOfAFile();
    void tellsWhatItCannot_data();
    void tellsWhatItCannot();
};

void TestPeriod::initTestCase()
{
    writeFile(path("times.txt"), times);
    writeFile(path("two.txt"), times.left(34));
    writeFile(path("words.txt"), "some words\n");
}

void TestPeriod::findsAndGoesOn()
{
    const QString call = "period --format csv --plot png -o out times.txt";
    const Ended end = run(call);
    QVERIFY2(end.code == 0, qPrintable(end.errors));
    QVERIFY(end.out.contains("times.txt: Period 4.263244 +- 0.000036 s"));
    QVERIFY(end.errors.contains("The direction is not known"));
    const QMap<QString, QByteArray> files = filesOf(path("out"));
    QCOMPARE(files.size(), 5);
    QVERIFY(files["times.txt.period.csv"].contains("\n4.26324"));
    QCOMPARE(files["times.txt.period.residuals.csv"].count("\n59607."), times.count('\n'));
    for (const char *const name : {"rank", "residuals"})
        QVERIFY(files[QString("times.txt.period.%1.png").arg(name)].startsWith("\x89PNG"));
    QVERIFY(run(call).errors.contains("is done with the same parameters"));
    // A changed file is another request.
    writeFile(path("times.txt"), times + "59607.47\n");
    const Ended again = run(call);
    QVERIFY2(again.out.contains("No period") && again.code == 0, qPrintable(again.out));
    QVERIFY(filesOf(path("out"))["times.txt.period.csv"] != files["times.txt.period.csv"]);
}

void TestPeriod::typedTimesAreThoseOfAFile()
{
    writeFile(path("same.txt"), times);
    succeed("period -o same same.txt");
    succeed("period -o same --times " + QString(times).replace('\n', ';'));
    const auto rows = [this](const QString &name) {
        const QByteArray bytes = contentOf(path(name));
        return bytes.mid(bytes.indexOf("rows: "));
    };
    QVERIFY(rows("same/same.txt.period.txt").size() > 1000);
    QCOMPARE(rows("same/typed-times.period.txt"), rows("same/same.txt.period.txt"));
}

void TestPeriod::tellsWhatItCannot_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << "" << 64 << "Give files with arrival times";
    QTest::newRow("both") << "--times 1,2,3 two.txt" << 64 << "Give files with arrival times";
    QTest::newRow("bad range") << "--period-min 9 --period-max 3 two.txt" << 64
                               << "--period-max: The longest period";
    QTest::newRow("half a direction") << "--ra 12:00:00 two.txt" << 64 << "--dec";
    QTest::newRow("unit") << "--unit hours two.txt" << 64 << "--unit";
    QTest::newRow("two times") << "two.txt" << 65 << "two.txt: 2 times on 1 day cannot tell";
    QTest::newRow("words") << "words.txt" << 65 << "line 1 is no time";
    QTest::newRow("no file") << "missing.txt" << 66 << "missing.txt";
}

void TestPeriod::tellsWhatItCannot()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, text);
    const Ended end = run("period " + arguments);
    QVERIFY2(end.code == code && end.errors.contains(text), qPrintable(end.errors));
}

ZRT_UNIT_TEST_MAIN(TestPeriod)

#include "tst_period.moc"
