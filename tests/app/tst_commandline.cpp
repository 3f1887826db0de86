#include "app/commandline.h"
#include "app/helpdocument.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

class TestCommandLine : public QObject {
    Q_OBJECT

private slots:
    void arguments();
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
