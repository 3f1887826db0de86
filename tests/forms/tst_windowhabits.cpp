#include "app/mainwindow.h"
#include "app/shell/settings.h"
#include "app/shell/timedprogressbar.h"
#include "forms/pulsar/pulsarform.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>

class TestWindowHabits : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void drops();
    void recentFiles();
    void repeatedCommand();
    void lastValues();
    void remainingTime();

private:
    QString file(const QString &name, const QByteArray &bytes);
    QString recording();
    /// Whether the drop was accepted.
    bool dropOnto(QWidget *target, const QString &path);
    /// Drops a path onto a widget and waits until the form of that class and path is there.
    bool dropOpens(QWidget *target, const QString &path, const char *formClass);
    QWidget *shownForm() const
    {
        const QLayout *const layout = window->centralWidget()->layout();
        return layout ? layout->itemAt(0)->widget() : nullptr;
    }
    QList<QAction *> recentItems() const
    {
        auto *const menu = window->findChild<QToolButton *>("recentButton")->menu();
        emit menu->aboutToShow();
        return menu->actions();
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<MainWindow> window;
};

void TestWindowHabits::init()
{
    folder = std::make_unique<QTemporaryDir>();
    window = std::make_unique<MainWindow>();
    window->show();
}

void TestWindowHabits::cleanup()
{
    window.reset();
    folder.reset();
    Settings::store().clear();
}

QString TestWindowHabits::file(const QString &name, const QByteArray &bytes)
{
    QFile out(folder->filePath(name));
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(out.fileName()));
    return out.fileName();
}

QString TestWindowHabits::recording()
{
    return file("x.pnt", TestSupport::recordingBytes({40000, 1, 2, 1},
                                                     [](int, int, int, int) { return 0.0f; }));
}

bool TestWindowHabits::dropOnto(QWidget *target, const QString &path)
{
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(path)});
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
               shownForm()
                   ->findChild<QLabel *>("filePath")
                   ->text()
                   .endsWith(QFileInfo(path).fileName());
    };
    return dropOnto(target, path) && QTest::qWaitFor(isOpen);
}

void TestWindowHabits::drops()
{
    const QString numbers = file("numbers.txt", "1\n2\n");
    const QString other = file("numbers.other", "1\n2\n");
    QVERIFY2(dropOpens(window.get(), recording(), "NativeGrafik"), "no form is open");
    // Fields would take the text of the address.
    QVERIFY(dropOpens(window->findChild<QLineEdit *>(), recording(), "NativeGrafik"));
    const TestSupport::MessageBoxCatcher catcher;
    QVERIFY(dropOnto(window.get(), numbers));
    QTRY_COMPARE(catcher.boxes().size(), 1); // the open form refuses it

    QVERIFY(dropOpens(window.get(), numbers, "ArraysForm"));
    QVERIFY2(dropOpens(window.get(), other, "ArraysForm"), "into the open form");
    QVERIFY(dropOpens(window.get(), folder->path(), "ArraysDirForm"));
    window->findChild<QAction *>("actionCalculator")->trigger();
    QVERIFY2(dropOpens(window.get(), recording(), "NativeGrafik"), "the calculator takes none");
}

void TestWindowHabits::recentFiles()
{
    auto *const button = window->findChild<QToolButton *>("recentButton");
    QVERIFY(!button->isEnabled());
    const QString numbers = file("a&b.txt", "1\n2\n");
    QVERIFY(dropOpens(window.get(), numbers, "ArraysForm"));
    window->findChild<QAction *>("actionCalculator")->trigger();
    QVERIFY(dropOpens(window.get(), recording(), "NativeGrafik"));
    window->findChild<QAction *>("actionCalculator")->trigger();

    window.reset();
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
    QString asked;
    const auto repeat = [&] {
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [&] {
            if (auto *const dialog =
                    qobject_cast<QFileDialog *>(QApplication::activeModalWidget())) {
                asked = dialog->windowTitle();
                dialog->reject();
            }
        });
        closer.start(10);
        window->repeatCommand();
        return asked;
    };
    QCOMPARE(repeat(), QString("Opening file"));
    file("numbers.txt", "1\n2\n");
    QVERIFY(dropOpens(window.get(), folder->path(), "ArraysDirForm"));
    QCOMPARE(repeat(), QString("directory"));
    QVERIFY2(shownForm()->inherits("ArraysDirForm"), "cancelled: nothing changes");
}

void TestWindowHabits::lastValues()
{
    const QWidget *form = new PulsarForm(recording(), window.get());
    const auto press = [&] { form->findChild<QPushButton *>("lastValues")->click(); };
    QVERIFY(!form->findChild<QPushButton *>("lastValues")->isEnabled());
    auto *const period = form->findChild<QLineEdit *>("period");
    period->clear();
    QTest::keyClicks(period, "0.714");
    form->findChild<QSpinBox *>("ray")->setValue(3);
    form->findChild<QRadioButton *>("noiseMedian")->setChecked(true); // not by the user
    form->findChild<QRadioButton *>("isZrtUtc")->setChecked(true);
    QCoreApplication::processEvents();

    form = new PulsarForm(recording(), window.get());
    QCOMPARE(form->findChild<QLineEdit *>("period")->text(), QString("3.032"));
    const TestSupport::MessageBoxCatcher catcher;
    press();
    QCOMPARE(form->findChild<QLineEdit *>("period")->text(), QString("0.714"));
    QCOMPARE(form->findChild<QSpinBox *>("ray")->value(), 3);
    QCOMPARE(form->findChild<QSpinBox *>("module")->value(), 1);
    QVERIFY(!form->findChild<QRadioButton *>("noiseMedian")->isChecked());
    QVERIFY2(catcher.boxes().isEmpty(), "nothing was computed");

    // A choice by hand; the action itself refuses this recording of two channels.
    form->findChild<QRadioButton *>("noiseMedian")->click();
    QCoreApplication::processEvents();
    form->findChild<QRadioButton *>("noiseBack")->setChecked(true);
    press();
    QVERIFY(form->findChild<QRadioButton *>("noiseMedian")->isChecked());
}

void TestWindowHabits::remainingTime()
{
    QCOMPARE(TimedProgressBar::remainingText(1999, 50), QString("50 %")); // too early to tell
    QCOMPARE(TimedProgressBar::remainingText(9000, 1), QString("1 %"));   // too little done
    QCOMPARE(TimedProgressBar::remainingText(10100, 50), QString("50 %, 11 s left"));
    QCOMPARE(TimedProgressBar::remainingText(60000, 20), QString("20 %, 4 min left"));
    QCOMPARE(TimedProgressBar::remainingText(3600000, 10), QString("10 %, 9 h left"));
}

ZRT_GUI_TEST_MAIN(TestWindowHabits)
#include "tst_windowhabits.moc"
