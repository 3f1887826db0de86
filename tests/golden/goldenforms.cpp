#include "app/mainwindow.h"
#include "app/shell/settings.h"
#include "forms/arrays/arraysdirform.h"
#include "forms/arrays/arraysform.h"
#include "forms/calculator/calculatorform.h"
#include "forms/ffa/ffaform.h"
#include "forms/native/nativegrafik.h"
#include "forms/pulsar/pulsarform.h"
#include "forms/test/testform.h"
#include "support/messageboxcatcher.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QTextStream>
#include <QThread>

// Drives the forms of the program by a list of steps, without a display, and saves what they show
// as pictures and as texts. One step a line:
//
//     open FORM [FILE]    a form in the window, in place of the last one
//     click WIDGET        a button
//     set WIDGET VALUE    types a value, chooses an entry, checks a box (on, off)
//     shot NAME           NAME.png and NAME.txt of the window, once it is at rest
//     clipboard           what was copied last

namespace {

constexpr int restMs = 200; // between two looks at the window
constexpr int looks = 4;    // that show the same before it counts as at rest
constexpr int longestMs = 120000;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

bool isWorking(const QWidget &window)
{
    const QProgressBar *const bar = window.findChild<QProgressBar *>();
    return bar && bar->isVisible();
}

// Forms may work on other threads, so the window is looked at until nothing changes.
QImage pictureAtRest(QWidget &window)
{
    QElapsedTimer clock;
    clock.start();
    QImage last;
    for (int same = 0; same < looks && clock.elapsed() < longestMs;) {
        QElapsedTimer rest;
        for (rest.start(); rest.elapsed() < restMs; QThread::msleep(5))
            QApplication::processEvents();
        const QImage now = window.grab().toImage();
        same = now == last && !isWorking(window) ? same + 1 : 0;
        last = now;
    }
    return last;
}

QString textOf(const QWidget &widget)
{
    if (const auto *const table = qobject_cast<const QTableWidget *>(&widget)) {
        QStringList cells;
        for (int row = 0; row < table->rowCount(); ++row)
            for (int column = 0; column < table->columnCount(); ++column)
                cells << (table->item(row, column) ? table->item(row, column)->text() : QString());
        return cells.join(" | ");
    }
    if (const auto *const text = qobject_cast<const QTextEdit *>(&widget))
        return text->toPlainText();
    if (const auto *const button = qobject_cast<const QAbstractButton *>(&widget))
        return button->text() + (button->isChecked() ? " (on)" : "");
    if (const auto *const box = qobject_cast<const QComboBox *>(&widget))
        return box->currentText();
    return widget.property("text").toString();
}

QString describe(const QWidget &window)
{
    QString text;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->objectName().isEmpty() ||
            widget->objectName().startsWith("qt_"))
            continue;
        QString shown = textOf(*widget);
        if (!shown.isEmpty() || !widget->isEnabled())
            text += widget->objectName() + (widget->isEnabled() ? "" : " (disabled)") + ": " +
                    shown.replace('\n', "\n    ") + "\n";
    }
    return text;
}

bool shoot(QWidget &window, const QString &name)
{
    const QImage picture = pictureAtRest(window);
    QFile texts(name + ".txt");
    return picture.save(name + ".png") && texts.open(QIODevice::WriteOnly) &&
           texts.write(describe(window).toUtf8()) >= 0;
}

bool openForm(const QString &name, const QString &file, MainWindow &window)
{
    const QString path = QDir::current().absoluteFilePath(file);
    if (name == "pulsar")
        new PulsarForm(path, &window);
    else if (name == "ffa")
        new FfaForm(path, &window);
    else if (name == "native")
        new NativeGrafik(path, 1, &window);
    else if (name == "nativewithoutsteps")
        new NativeGrafik(path, 0, &window);
    else if (name == "arrays")
        new ArraysForm(path, &window);
    else if (name == "arraysdir")
        new ArraysDirForm(path, &window);
    else if (name == "calculator")
        new CalculatorForm(&window);
    else if (name == "test")
        new TestForm("Test", &window);
    else
        return false;
    return true;
}

bool setValue(QWidget &widget, const QString &value)
{
    if (auto *const whole = qobject_cast<QSpinBox *>(&widget))
        whole->setValue(value.toInt());
    else if (auto *const number = qobject_cast<QDoubleSpinBox *>(&widget))
        number->setValue(value.toDouble());
    else if (auto *const box = qobject_cast<QComboBox *>(&widget))
        box->setCurrentText(value);
    else if (auto *const button = qobject_cast<QAbstractButton *>(&widget))
        button->setChecked(value == "on");
    else if (auto *const group = qobject_cast<QGroupBox *>(&widget))
        group->setChecked(value == "on");
    else if (auto *const line = qobject_cast<QLineEdit *>(&widget)) {
        line->setText(value);
        emit line->textEdited(value);
        emit line->editingFinished();
    } else
        return false;
    return true;
}

bool take(const QString &step, MainWindow &window)
{
    const QString verb = step.section(' ', 0, 0);
    const QString object = step.section(' ', 1, 1);
    const QString rest = step.section(' ', 2);
    if (verb == "open")
        return openForm(object, rest, window);
    if (verb == "shot")
        return shoot(window, object);
    if (verb == "clipboard") {
        out() << "  " << QApplication::clipboard()->text() << "\n";
        return true;
    }
    auto *const widget = window.findChild<QWidget *>(object);
    if (!widget)
        return false;
    if (verb == "set")
        return setValue(*widget, rest);
    auto *const button = qobject_cast<QAbstractButton *>(widget);
    if (verb != "click" || !button)
        return false;
    button->click();
    return true;
}

int takeAll(QFile &steps, MainWindow &window)
{
    int failures = 0;
    while (!steps.atEnd()) {
        const QString step = QString::fromUtf8(steps.readLine()).trimmed();
        if (step.isEmpty() || step.startsWith('#'))
            continue;
        const TestSupport::MessageBoxCatcher catcher;
        out() << step << "\n";
        if (!take(step, window)) {
            ++failures;
            out() << "  cannot be done\n";
        }
        QApplication::processEvents();
        for (const auto &box : catcher.boxes())
            out() << "  box \"" << box.title << "\": " << box.text << "\n";
        out().flush();
    }
    return failures;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QApplication application(argc, argv);
    QApplication::setCursorFlashTime(0);
    // The platform without a screen knows no desktop whose font size it could take.
    QFont font = QApplication::font();
    font.setPointSize(9);
    QApplication::setFont(font);
    out().setCodec("UTF-8");
    if (argc != 2) {
        out() << "Usage: zrt-golden-forms STEPS\n";
        return 64;
    }
    QFile steps(QString::fromLocal8Bit(argv[1]));
    if (!steps.open(QIODevice::ReadOnly)) {
        out() << "No list of steps " << steps.fileName() << "\n";
        return 66;
    }
    QFile styles(":/styles/styles.qss");
    if (styles.open(QIODevice::ReadOnly))
        application.setStyleSheet(QString::fromUtf8(styles.readAll()));
    MainWindow window;
    window.resize(1280, 720);
    window.show();
    return takeAll(steps, window) == 0 ? 0 : 65;
}
