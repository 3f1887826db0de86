#include "app/mainwindow.h"
#include "app/shell/applicationstyles.h"
#include "app/shell/settings.h"
#include "base/wholefile.h"
#include "demo/pictures.h"
#include "forms/ffa/ffaform.h"
#include "forms/pulsar/pulsarform.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTextStream>

// Pictures of the workbench for a machine without a display: opens the pulsar form on a
// recording, runs each action that is built, and saves the window after each; then searches the
// recording in the FFA form; then goes through the tutorial, and stacks days where there are some.

namespace {

constexpr QSize windowSize(1280, 720);

QTextStream &errors()
{
    static QTextStream stream(stderr);
    return stream;
}

// False when a form refused something or a picture cannot be written.
bool pictureEachAction(MainWindow &window, PulsarForm &form, const QDir &folder,
                       const BoxWatcher &boxes)
{
    // A harmonic high enough to tell the dispersion of the demonstration's pulsar.
    form.findChild<QSpinBox *>("harmonicNum")->setValue(1080);
    const QGroupBox *const actions = form.findChild<QGroupBox *>("groupBox_action");
    for (QRadioButton *action : actions->findChildren<QRadioButton *>()) {
        if (!action->isEnabled())
            continue;
        const bool averages = action->objectName() == "sumChannelsAndAverage" ||
                              action->objectName() == "sumMultiDispersions";
        form.findChild<QSpinBox *>("averageCount")->setValue(averages ? 2 : 0);
        action->click();
        if (boxes.hasSeenBox() ||
            !savePicture(window, folder.filePath("pulsar-" + action->objectName() + ".png")))
            return false;
    }
    return true;
}

// The pulsar of the demonstration recording. The search runs beside the window.
bool pictureSearch(MainWindow &window, const FfaForm &form, const QDir &folder,
                   const BoxWatcher &boxes)
{
    form.findChild<QSpinBox *>("ray")->setValue(7);
    form.findChild<QLineEdit *>("dispersion")->setText("26.2");
    form.findChild<QPushButton *>("pushButton")->click();
    waitForWork();
    return !boxes.hasSeenBox() && savePicture(window, folder.filePath("ffa-search.png"));
}

} // namespace

bool BoxWatcher::eventFilter(QObject *watched, QEvent *event)
{
    auto *const box = qobject_cast<QMessageBox *>(watched);
    if (box && event->type() == QEvent::Show) {
        seen = true;
        errors() << (box->text() + " " + box->informativeText()).simplified() << "\n";
        QMetaObject::invokeMethod(box, &QDialog::reject, Qt::QueuedConnection);
    }
    return false;
}

void waitForWork()
{
    while (Settings::instance()->progressBar()->isVisible())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

bool savePicture(QWidget &window, const QString &path)
{
    QApplication::processEvents();
    QBuffer picture;
    picture.open(QIODevice::WriteOnly);
    window.grab().save(&picture, "PNG");
    const WriteFailure failure = writeWhole(path, picture.data());
    if (failure)
        errors() << failure.text() << "\n";
    else
        QTextStream(stdout) << path << "\n";
    return !failure;
}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The pictures neither read nor change the user's own settings.
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QApplication application(argc, argv);
    // The platform without a screen knows no desktop whose font size it could take.
    QFont font = QApplication::font();
    font.setPointSize(9);
    QApplication::setFont(font);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3 && arguments.size() != 4) {
        errors()
            << "Usage: zrt-demo RECORDING FOLDER [DAYS]\n"
               "Saves pictures of the forms on the recording, and on a directory of days, into "
               "the folder.\n";
        return 64;
    }
    if (!QFile::exists(arguments[1])) {
        errors() << "No recording " << arguments[1] << ".\n";
        return 66;
    }
    const QDir folder(arguments[2]);
    if (!folder.mkpath(".")) {
        errors() << "Cannot make the folder " << arguments[2] << ".\n";
        return 73;
    }

    applyApplicationStyles();
    BoxWatcher boxes;
    application.installEventFilter(&boxes);
    MainWindow window;
    window.setWindowTitle("ZRT-Analytics-2");
    window.resize(windowSize);
    window.show();
    auto *const form = new PulsarForm(arguments[1], &window);
    bool isWhole = !boxes.hasSeenBox() && pictureEachAction(window, *form, folder, boxes);
    if (isWhole) {
        auto *const search = new FfaForm(arguments[1], &window);
        isWhole = !boxes.hasSeenBox() && pictureSearch(window, *search, folder, boxes);
    }
    isWhole = isWhole && pictureTutorial(window, arguments[1], folder, boxes);
    if (arguments.size() == 4)
        isWhole = isWhole && pictureDays(window, arguments[3], folder, boxes);
    if (boxes.hasSeenBox())
        return 65;
    return isWhole ? 0 : 74;
}
