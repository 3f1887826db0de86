#include "app/shell/clicklable.h"
#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDir>
#include <QProcess>

class TestShell : public QObject {
    Q_OBJECT

private slots:
    void directory();
    void folderOfDialogs();
    void linkColours();
    void storedValues();
    void progressDots();
    void taskHoldsTheWindow();
    void boxHidesNoField();
};

void TestShell::directory()
{
    for (const auto &[path, directory] : {std::pair("/data/run1/x.pnt", QString("/data/run1")),
                                          {"C:\\data\\x.pnt", "C:\\data"},
                                          {"/data\\x/y", "/data\\x"},
                                          {"/x", ""},
                                          {"x.pnt", QDir::homePath()},
                                          {"/", QDir::homePath()}})
        QCOMPARE(directoryOf(path), directory);
}

void TestShell::folderOfDialogs()
{
    const QTemporaryDir there;
    QCOMPARE(startFolder(there.path()), there.path());
    QCOMPARE(startFolder(there.filePath("gone")), QDir::homePath());
    QCOMPARE(startFolder(""), QDir::homePath());
}

void TestShell::linkColours()
{
    ClickLable label("link");
    for (const auto &[style, hovered] : {std::pair("color: black", "color: blue"),
                                         {"color: red", "color: darkMagenta"},
                                         {"color: green", "color: green"}}) {
        label.setStyleSheet(style);
        QEnterEvent enter(QPointF(1, 1), QPointF(1, 1), QPointF(1, 1));
        QApplication::sendEvent(&label, &enter);
        QCOMPARE(label.styleSheet(), QString(hovered));
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(&label, &leave);
        QCOMPARE(label.styleSheet(), QString(style));
    }
    QSignalSpy clicked(&label, &ClickLable::clicked);
    QTest::mousePress(&label, Qt::LeftButton);
    QCOMPARE(clicked.size(), 1);
}

void TestShell::storedValues()
{
    Settings *const settings = Settings::instance();
    QWidget window;
    window.setGeometry(20, 30, 640, 480);
    settings->setLastOpenPath("/data/run1");
    settings->setLastOpenPath("");
    settings->save(&window);
    QSettings store(QSettings::NativeFormat, QSettings::UserScope, "zrt", "ZRT-Analytics-2_visual");
    QCOMPARE(store.value("lastOpenPath").toString(), QString("/data/run1"));
    QVERIFY2(!store.contains("lastSavePath"), "an empty path is not written");
    QVERIFY(store.contains("graphHeight"));

    store.setValue("lastOpenPath", "/elsewhere");
    store.setValue("graphWidth", "900");
    store.sync();
    // The second time after it was closed at full size, which it has again; the size that it goes
    // back to is still the one before.
    for (const bool isAgain : {false, true}) {
        QWidget restored;
        settings->restore(&restored);
        QCOMPARE(restored.isMaximized(), isAgain);
        QCOMPARE(restored.size(), QSize(640, 480));
        QCOMPARE(settings->lastOpenPath(), QString("/elsewhere"));
        QCOMPARE(settings->graphWidth, QString("900"));
        restored.resize(100, 100);
        restored.setWindowState(isAgain ? Qt::WindowNoState : Qt::WindowMaximized);
        settings->save(&restored);
    }
}

void TestShell::progressDots()
{
    // A second run of this program prints the dots, so that they can be caught.
    if (qEnvironmentVariableIsSet("ZRT_PRINT_DOTS")) {
        for (const int value : {5, 5, 6, 100, 100})
            Settings::instance()->setProgress(value);
        return;
    }
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("ZRT_PRINT_DOTS", "1");
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {"-silent", "progressDots"});
    QVERIFY(child.waitForFinished());
    QVERIFY2(child.readAllStandardOutput().contains("...\n"), "one dot for each new value");
}

void TestShell::taskHoldsTheWindow()
{
    QMainWindow window;
    Ui::MainWindow ui;
    ui.setupUi(&window);
    Settings::instance()->setUi(ui);
    window.show();
    QTimer timer(&window);
    QSignalSpy fired(&timer, &QTimer::timeout);
    timer.start(0);
    {
        ProgressTask task;
        QSignalSpy cancelled(&task, &ProgressTask::cancelRequested);
        QVERIFY(!ui.menubar->isEnabled());
        QVERIFY(task.advance(40));
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(cancelled.size(), 1);
        QVERIFY(!task.advance(50) && !task.goesOn());
        QVERIFY(ProgressTask::isRunning() && fired.isEmpty());
        window.close();
        QCOMPARE(cancelled.size(), 2);
        QVERIFY2(window.isVisible(), "the loop's form must not go while the loop runs");
    }
    QVERIFY(!ProgressTask::isRunning() && ui.menubar->isEnabled());
    QTRY_VERIFY2(!fired.isEmpty(), "the timer goes on afterwards");
    QTRY_VERIFY(!window.isVisible());
    QTest::keyClick(&window, Qt::Key_Escape);
    Settings::instance()->setUi({});
}

// Wherever the field is, as long as the screen has the room.
void TestShell::boxHidesNoField()
{
    const QRect screen(0, 0, 1280, 720);
    const QSize box(400, 200);
    for (const QRect &kept : {QRect(10, 200, 100, 30), QRect(500, 300, 300, 30),
                              QRect(0, 340, 1280, 30), QRect(600, 0, 60, 720)}) {
        const QRect place = placeBeside(kept, box, screen, screen);
        QVERIFY(!place.intersects(kept) && screen.contains(place));
        QCOMPARE(place.size(), box);
    }
    QCOMPARE(placeBeside({10, 200, 100, 30}, box, screen, screen).center(), screen.center());
    QVERIFY(screen.contains(placeBeside(screen, box, screen, screen)));
}

ZRT_GUI_TEST_MAIN(TestShell)
#include "tst_shell.moc"
