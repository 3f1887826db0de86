#include "app/shell/pathlabel.h"
#include "app/shell/settings.h"
#include "app/shell/timedprogressbar.h"
#include "forms/pulsar/pulsarform.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSpinBox>
#include <QStatusBar>
#include <QTimer>
#include <QToolButton>

class TestWindowHabits : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void cleanup();
    void drops();
    void shortenedPaths();
    void recentFiles();
    void repeatedCommand();
    void lastValues();
    void remainingTime();

private:
    QString recording() const
    {
        return file(
            TestSupport::recordingBytes({40000, 1, 2, 1}, [](int, int, int, int) { return 0.0f; }));
    }
    /// Whether the drop was accepted.
    static bool dropOnto(QWidget *target, const QStringList &paths);
    /// Drops a path onto a widget and waits until the form of that class and path is there.
    bool dropOpens(QWidget *target, const QString &path, const char *formClass);
    QWidget *shownForm() const
    {
        const QLayout *const layout = window->centralWidget()->layout();
        return layout ? layout->itemAt(0)->widget() : nullptr;
    }
    QList<QAction *> recentItems() const
    {
        auto *const menu = find<QToolButton>("recentButton")->menu();
        emit menu->aboutToShow();
        return menu->actions();
    }
};

void TestWindowHabits::cleanup()
{
    FormTest::cleanup();
    Settings::store().clear();
}

bool TestWindowHabits::dropOnto(QWidget *target, const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    QMimeData mime;
    mime.setUrls(urls);
    QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    QDropEvent drop(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

bool TestWindowHabits::dropOpens(QWidget *target, const QString &path, const char *formClass)
{
    const QPointer<QWidget> before = shownForm();
    const auto isOpen = [&] {
        return !before && shownForm() && shownForm()->inherits(formClass) &&
               find<QLabel>("filePath")->text().endsWith(QFileInfo(path).fileName());
    };
    return dropOnto(target, {path}) && QTest::qWaitFor(isOpen);
}

void TestWindowHabits::drops()
{
    const QString numbers = file("1\n2\n", "numbers.txt");
    const QString other = file("1\n2\n", "numbers.other");
    QVERIFY2(dropOpens(window.get(), recording(), "NativeGrafik"), "no form is open");
    // Fields would take the text of the address.
    QVERIFY(dropOpens(window->findChild<QLineEdit *>(), recording(), "NativeGrafik"));
    const TestSupport::MessageBoxCatcher catcher;
    QVERIFY(dropOnto(window.get(), {numbers}));
    QTRY_COMPARE(catcher.boxes().size(), 1); // the open form refuses it
    QCOMPARE(recentItems().size(), 1);       // and it is none to open again
    QCOMPARE(window->windowTitle(), QString("ZRT-Analytics-2"));

    QVERIFY(dropOpens(window.get(), numbers, "ArraysForm"));
    QVERIFY2(dropOpens(window.get(), other, "ArraysForm"), "into the open form");
    QVERIFY(dropOpens(window.get(), folder->path(), "ArraysDirForm"));
    find<QAction>("actionCalculator")->trigger();
    QVERIFY2(dropOpens(window.get(), recording(), "NativeGrafik"), "the calculator takes none");
    QCOMPARE(window->windowTitle(), QString("x.pnt - ZRT-Analytics-2"));

    window->openPaths({numbers, other, recording()});
    QVERIFY(shownForm()->inherits("ArraysForm"));
    QCOMPARE(find<QStatusBar>("statusbar")->currentMessage(),
             QString("Not opened: numbers.other, x.pnt (the window shows one file at a time)."));
}

void TestWindowHabits::shortenedPaths()
{
    const QString path = "/data/ab/cd/ef/gh/x.pnt";
    PathLabel label;
    label.showFile(path);
    QCOMPARE(label.text(), QString("File: / data/ ab/ cd/ ef/ gh/ x.pnt"));
    QCOMPARE(label.toolTip(), path);
    const QFontMetrics font = label.fontMetrics();
    const int whole = font.horizontalAdvance(label.text());
    QCOMPARE(PathLabel::shortened(label.text(), font, whole), label.text());
    for (int width = whole - 1; width > font.horizontalAdvance("x…t"); width -= 7) {
        const QString text = PathLabel::shortened(label.text(), font, width);
        QVERIFY2(font.horizontalAdvance(text) <= width, qPrintable(text));
        QVERIFY2(text.contains("…") || text == "x.pnt", qPrintable(text));
        if (width > font.horizontalAdvance("/… / x.pnt"))
            QVERIFY2(text.endsWith("x.pnt"), "the name gives way last");
    }
}

void TestWindowHabits::recentFiles()
{
    QVERIFY(!find<QToolButton>("recentButton")->isEnabled());
    const QString numbers = file("1\n2\n", "a&b.txt");
    QVERIFY(dropOpens(window.get(), numbers, "ArraysForm"));
    find<QAction>("actionCalculator")->trigger();
    QVERIFY(dropOpens(window.get(), recording(), "NativeGrafik"));

    window = std::make_unique<MainWindow>(); // the next run
    QCOMPARE(recentItems().size(), 2);
    QCOMPARE(recentItems()[0]->text(), QString("&1 x.pnt   Native data - Show native"));
    QCOMPARE(recentItems()[1]->text(), QString("&2 a&&b.txt   Other - Show arrays - file"));
    recentItems()[1]->trigger();
    QVERIFY(shownForm()->inherits("ArraysForm"));
    QCOMPARE(Settings::instance()->lastOpenPath(), folder->path());
    QVERIFY2(recentItems()[0]->text().startsWith("&1 a&&b.txt"), "now it is the latest");
    QFile::remove(numbers);
    QVERIFY(!recentItems()[0]->isEnabled());
    QVERIFY(recentItems()[0]->text().endsWith(" - missing"));
}

void TestWindowHabits::repeatedCommand()
{
    const auto repeat = [this] {
        QString asked;
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [&asked] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            asked = dialog->windowTitle();
            dialog->reject();
        });
        closer.start(10);
        window->repeatCommand();
        return asked;
    };
    QCOMPARE(repeat(), QString("Opening file"));
    file("1\n2\n", "numbers.txt");
    QVERIFY(dropOpens(window.get(), folder->path(), "ArraysDirForm"));
    QCOMPARE(repeat(), QString("directory"));
    QVERIFY2(shownForm()->inherits("ArraysDirForm"), "cancelled: nothing changes");
}

void TestWindowHabits::lastValues()
{
    new PulsarForm(recording(), window.get());
    QVERIFY(!find<QPushButton>("lastValues")->isEnabled());
    type("period", "0.714");
    find<QSpinBox>("ray")->setValue(3);
    find<QAbstractButton>("noiseMedian")->setChecked(true); // not by the user
    find<QAbstractButton>("isZrtUtc")->setChecked(true);
    QCoreApplication::processEvents();

    new PulsarForm(recording(), window.get());
    QCOMPARE(find<QLineEdit>("period")->text(), QString("3.032"));
    const TestSupport::MessageBoxCatcher catcher;
    click("lastValues");
    QCOMPARE(find<QLineEdit>("period")->text(), QString("0.714"));
    QCOMPARE(find<QSpinBox>("ray")->value(), 3);
    QCOMPARE(find<QSpinBox>("module")->value(), 1);
    QVERIFY(!find<QAbstractButton>("noiseMedian")->isChecked());
    QVERIFY2(catcher.boxes().isEmpty(), "nothing was computed");

    // A choice by hand; the action itself refuses this recording of two channels.
    click("noiseMedian");
    QCoreApplication::processEvents();
    find<QAbstractButton>("noiseBack")->setChecked(true);
    click("lastValues");
    QVERIFY(find<QAbstractButton>("noiseMedian")->isChecked());
}

void TestWindowHabits::remainingTime()
{
    for (const auto &[elapsedMs, percent, left] : {std::tuple(1999, 50, ""), // too early to tell
                                                   {9000, 1, ""},            // too little done
                                                   {10100, 50, ", 11 s left"},
                                                   {60000, 20, ", 4 min left"},
                                                   {3600000, 10, ", 9 h left"}})
        QCOMPARE(TimedProgressBar::remainingText(elapsedMs, percent),
                 QString("%1 %").arg(percent) + left);
}

ZRT_GUI_TEST_MAIN(TestWindowHabits)
#include "tst_windowhabits.moc"
