#include "analyses/days/interference.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QFile>
#include <QTemporaryDir>

using namespace Days;

class TestInterference : public QObject {
    Q_OBJECT

private slots:
    void lines_data();
    void lines();
    void file();
    void takesOut();
    void ends();
};

void TestInterference::lines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("read"); // as the entry writes itself; empty: refused
    QTest::newRow("frequency") << "33.3 Hz"
                               << "33.3 Hz";
    QTest::newRow("period, a comma") << "0,02s"
                                     << "0.02 s";
    QTest::newRow("all of it") << " 33.3 Hz +- .1 x8 # a lamp "
                               << "33.3 Hz +- 0.1 x 8 # a lamp";
    QTest::newRow("no unit") << "33.3"
                             << "";
    QTest::newRow("other unit") << "33.3 kHz"
                                << "";
    QTest::newRow("zero") << "0 Hz"
                          << "";
    QTest::newRow("negative") << "-3 Hz"
                              << "";
    QTest::newRow("wider than it is high") << "3 Hz +- 3"
                                           << "";
    QTest::newRow("no harmonic") << "3 Hz x 0"
                                 << "";
    QTest::newRow("too many harmonics") << "3 Hz x 1001"
                                        << "";
    QTest::newRow("no number") << "nan Hz"
                               << "";
}

void TestInterference::lines()
{
    QFETCH(QString, line);
    QFETCH(QString, read);
    const InterferenceList list = parseInterference("# first\n\n" + line.toUtf8() + "\n");
    QCOMPARE(list.problem.isEmpty(), !read.isEmpty());
    QCOMPARE(list.entries.empty() ? QString() : list.entries.front().text(), read);
    if (read.isEmpty())
        QVERIFY2(list.problem.startsWith("line 3: "), qPrintable(list.problem));
}

void TestInterference::file()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("made/list.txt");
    QVERIFY(readInterference(path).entries.empty() && readInterference(path).problem.isEmpty());
    const std::vector<Interference> entries = {{1.0 / 3, false, 0.01, 4, "fan"},
                                               {0.02, true, 0, 1, ""}};
    QVERIFY(!writeInterference(path, entries));
    QVERIFY(readInterference(path).entries == entries);
    TestSupport::writeFile(folder, "bad.txt", "3 Hz\nthree\n");
    const InterferenceList bad = readInterference(folder.filePath("bad.txt"));
    QVERIFY2(bad.problem.contains("bad.txt, line 2"), qPrintable(bad.problem));
    QVERIFY(bad.entries.empty());
    QVERIFY(bool(writeInterference(folder.filePath("bad.txt/list.txt"), entries)));
}

void TestInterference::takesOut()
{
    const std::vector<Interference> all = {{10, false, 0.5, 3, ""}, {0.25, true, 0, 1, ""}};
    const auto leftAfter = [&all](double frequency, double tolerance) {
        std::vector<Interference> entries = all;
        const auto taken = takeOutInterference(entries, frequency, tolerance);
        return taken.size() + entries.size() == all.size() ? entries : std::vector<Interference>();
    };
    for (const double inside : {9.5, 10.5, 19.0, 31.5})
        QVERIFY(leftAfter(inside, 1e-9) == std::vector<Interference>{all[1]});
    QVERIFY(leftAfter(4, 1e-9) == std::vector<Interference>{all[0]});
    for (const double outside : {9.4, 10.6, 18.9, 31.6, 40.0, 8.0})
        QVERIFY(leftAfter(outside, 1e-9) == all);
    QVERIFY(leftAfter(9.4, 0.2) == std::vector<Interference>{all[1]});
}

void TestInterference::ends()
{
    const Interference line = {10, false, 0.5, 3, ""};
    QCOMPARE(line.from(3), 28.5);
    QCOMPARE(line.to(3), 31.5);
    const Interference period = {0.25, true, 0.05, 2, ""};
    QCOMPARE(period.from(2), 2 / 0.3);
    QCOMPARE(period.to(2), 2 / 0.2);
}

ZRT_UNIT_TEST_MAIN(TestInterference)
#include "tst_interference.moc"
