#include "app/mainwindow.h"
#include "app/shell/settings.h"
#include "demo/pictures.h"
#include "forms/ffa/ffaform.h"
#include "forms/native/nativegrafik.h"
#include "forms/pulsar/pulsarform.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTextEdit>

namespace {

constexpr int ray = 3;

void type(const QWidget &form, const char *field, const QString &text)
{
    form.findChild<QLineEdit *>(field)->setText(text);
}

bool pictureViewer(MainWindow &window, const QString &recording, const QDir &folder)
{
    auto *const form = new NativeGrafik(recording, 0, &window);
    form->findChild<QSpinBox *>("ray")->setValue(ray);
    // The statistics come last, with every sample read.
    const auto *const statistics = window.findChild<QLabel *>("statistics");
    while (!statistics->text().contains("points 0 to") ||
           Settings::instance()->progressBar()->isVisible())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return savePicture(window, folder.filePath("tutorial-1-look.png"));
}

// First without a dispersion, as one who knows nothing yet.
bool pictureSearch(MainWindow &window, const QString &recording, const QDir &folder,
                   const QString &dispersion, const QString &name)
{
    auto *const form = new FfaForm(recording, &window);
    form->findChild<QSpinBox *>("ray")->setValue(ray);
    type(*form, "dispersion", dispersion);
    form->findChild<QPushButton *>("pushButton")->click();
    waitForWork();
    window.findChild<QPushButton *>("refineButton")->click();
    waitForWork();
    return savePicture(window, folder.filePath(name));
}

bool pictureDispersion(MainWindow &window, const QString &recording, const QDir &folder)
{
    auto *const form = new PulsarForm(recording, &window);
    form->findChild<QSpinBox *>("ray")->setValue(ray);
    type(*form, "period", "1.274");
    type(*form, "dispersion", "20");
    constexpr int tenthHarmonic = 1607; // of the period, in a spectrum of 16384 points
    form->findChild<QSpinBox *>("harmonicNum")->setValue(tenthHarmonic);
    form->findChild<QRadioButton *>("sumAllDispersions")->click();
    auto *const report = window.findChild<QTextEdit *>("texts");
    report->find("DM = "); // scrolls there
    QApplication::processEvents();
    return savePicture(window, folder.filePath("tutorial-3-dispersion.png"));
}

} // namespace

bool pictureTutorial(MainWindow &window, const QString &recording, const QDir &folder,
                     const BoxWatcher &boxes)
{
    return pictureViewer(window, recording, folder) && !boxes.hasSeenBox() &&
           pictureSearch(window, recording, folder, "0", "tutorial-2-search.png") &&
           pictureDispersion(window, recording, folder) && !boxes.hasSeenBox() &&
           pictureSearch(window, recording, folder, "15.8", "tutorial-4-pulsar.png") &&
           !boxes.hasSeenBox();
}
