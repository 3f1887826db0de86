#include "app/commandline.h"
#include "app/helpdocument.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

class TestCommandLine : public QObject {
    Q_OBJECT

private slots:
    void arguments();
    void withoutDisplay_data();
    void withoutDisplay();
    void helpOnForms();
    void viewers();
};

void TestCommandLine::arguments()
{
    const CommandLine none = readCommandLine({"zrt"});
    QVERIFY(none.answer.isEmpty() && none.error.isEmpty() && none.paths.isEmpty());
    const CommandLine files = readCommandLine({"zrt", "/data/../data/x.pnt", "y.pnt"});
    QCOMPARE(files.paths, QStringList({"/data/x.pnt", QDir::currentPath() + "/y.pnt"}));
    QVERIFY(readCommandLine({"zrt", "-h"}).answer.startsWith("Usage:"));
    const QString version = readCommandLine({"zrt", "--version"}).answer;
    for (const char *told : {"2.0.0, 2025.11.22", "/zrt/ZRT-Analytics-2_visual.conf", "Caches: "})
        QVERIFY2(version.contains(told), qPrintable(version));
    QVERIFY(readCommandLine({"zrt", "--wrong"}).error.contains("wrong"));
    const CommandLine ours =
        readCommandLine({"zrt", "-style", "fusion", "--platform=xcb", "-reverse", "/a.pnt"});
    QCOMPARE(ours.error, QString());
    QCOMPARE(ours.paths, QStringList("/a.pnt"));
    QCOMPARE(readCommandLine({"zrt", "--", "-style"}).paths,
             QStringList(QDir::currentPath() + "/-style"));
}

// What prints and ends does so where there is no display.
void TestCommandLine::withoutDisplay_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("help") << "--help" << 0;
    QTest::newRow("version") << "--version" << 0;
    QTest::newRow("wrong option") << "--wrong" << 64;
}

void TestCommandLine::withoutDisplay()
{
    QFETCH(QString, option);
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(display);
    program.setProcessEnvironment(environment);
    program.start(ZRT_ANALYTICS, {option});
    QVERIFY(program.waitForFinished());
    QTEST(program.exitCode(), "exitCode");
    const QString printed =
        QString::fromUtf8(program.readAllStandardOutput() + program.readAllStandardError());
    QVERIFY2(printed.contains("zrt-analytics-2", Qt::CaseInsensitive), qPrintable(printed));
}

void TestCommandLine::helpOnForms()
{
    QTemporaryDir folder;
    TestSupport::writeFile(folder, "README_zrt2_visual.chapters",
                           "1 zrt\n9 the-pulsar-form\n10 the-ffa-form\n");
    const QString document = folder.filePath("README_zrt2_visual.pdf");
    QCOMPARE(pageOfChapter(document, helpOn("FfaForm").chapter), 10);
    QCOMPARE(pageOfChapter(document, helpOn("").chapter), 1);
    QCOMPARE(pageOfChapter(document, "gone"), 1);
    QCOMPARE(pageOfChapter(folder.filePath("other.pdf"), "the-ffa-form"), 1);
    QCOMPARE(helpOn("FourierForm sky").chapter, QString("maps-and-searches-over-many-days"));
    QCOMPARE(helpOn("CalculatorForm").document, QString("README_zrt2_visual_calc.pdf"));
}

void TestCommandLine::viewers()
{
    QCOMPARE(viewerCommand("org.gnome.Evince.desktop", "/a b.pdf", 7),
             QStringList({"evince", "--page-index=7", "/a b.pdf"}));
    QCOMPARE(viewerCommand("firefox-esr.desktop", "/a b.pdf", 7),
             QStringList({"firefox", "file:///a b.pdf#page=7"}));
    QCOMPARE(viewerCommand("unknown.desktop", "/a.pdf", 7), QStringList());
}

ZRT_GUI_TEST_MAIN(TestCommandLine)
#include "tst_commandline.moc"
