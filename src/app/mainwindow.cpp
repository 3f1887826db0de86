#include "app/mainwindow.h"

#include "app/shell/directoryof.h"
#include "app/shell/recentbutton.h"
#include "app/shell/settings.h"
#include "app/shell/timedprogressbar.h"
#include "base/timetext.h"
#include "base/version.h"
#include "forms/arrays/arraysdirform.h"
#include "forms/arrays/arraysform.h"
#include "forms/bintotext/bintotext.h"
#include "forms/calculator/calculatorform.h"
#include "forms/days/fourierform.h"
#include "forms/ffa/ffaform.h"
#include "forms/native/nativegrafik.h"
#include "forms/pulsar/pulsarform.h"
#include "forms/test/testform.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLayout>
#include <QMessageBox>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <utility>

namespace {

constexpr int messageMs = 15000; // that a line stays in the status bar

} // namespace

MainWindow *Settings::mainWindow()
{
    if (!window)
        window = new MainWindow;
    return window;
}

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent), ui(new Ui::MainWindow)
{
    ui->setupUi(this);
    clipboard = QApplication::clipboard();
    connectActions();

    progressBar = new TimedProgressBar;
    progressBar->setRange(0, 100);
    ui->statusbar->addWidget(progressBar, 1);
    progressBar->hide();
    recent = new RecentButton;
    connect(recent, &RecentButton::chosen, this, &MainWindow::open);
    ui->statusbar->addPermanentWidget(recent);
    setAcceptDrops(true);
    qApp->installEventFilter(this);

    Settings *const settings = Settings::instance();
    settings->setUi(*ui);
    settings->setMainWindow(this);
    settings->setProgressBar(progressBar);
    settings->restore(this);
}

MainWindow::~MainWindow()
{
    Settings *const settings = Settings::instance();
    settings->save(this);
    settings->setProgressBar(nullptr);
    settings->setMainWindow(nullptr);
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange)
        emit mainWindowSizeChanged();
}

void MainWindow::connectActions()
{
    using Slot = void (MainWindow::*)();
    const std::initializer_list<std::pair<QAction *, Slot>> table = {
        {ui->actionShow_native_data, &MainWindow::openFileShowNative},
        {ui->actionShowNativeWithoutStep, &MainWindow::openFileShowNativeWithoutStep},
        {ui->actionOneFourier, &MainWindow::openFileFourier},
        {ui->actionOneFFA, &MainWindow::openFileFFA},
        {ui->actionTransients, &MainWindow::openFileTransients},
        {ui->actionFourier, &MainWindow::openDirSumFourier},
        {ui->actionFourier_map, &MainWindow::openDirSumFourierMap},
        {ui->actionFFA, &MainWindow::openDirSumFfa},
        {ui->actionFFA_map, &MainWindow::openDirSumFfaMap},
        {ui->actionSearchFourier, &MainWindow::openDirSearchFourier},
        {ui->actionSearchFFA, &MainWindow::openDirSearchFFA},
        {ui->actionProfile_periods, &MainWindow::openDirProfilesPeriods},
        {ui->actionProfile_dispersions, &MainWindow::openDirProfilesDispersions},
        {ui->actionSumChannelsSimple, &MainWindow::openDirSumChannelsSimple},
        {ui->actionSumChannels, &MainWindow::openDirSumChannels},
        {ui->actionTestForm1, &MainWindow::openTestForm1},
        {ui->actionTestForm2, &MainWindow::openTestForm2},
        {ui->actionCalculator, &MainWindow::openCalculator},
        {ui->actionShowArraysFile, &MainWindow::openFileArrays},
        {ui->actionShowArraysDir, &MainWindow::openDirArrays},
        {ui->actionReadBinToText, &MainWindow::readBinToText},
        {ui->actionHelp, &MainWindow::showHelp},
        {ui->actionHelp_calc, &MainWindow::showHelpCalc},
        {ui->actionUpdates, &MainWindow::showUpdates},
        {ui->actionAbout, &MainWindow::showAbout},
    };
    for (const auto &[action, slot] : table) {
        connect(action, &QAction::triggered, this, slot);
        connect(action, &QAction::triggered, this, &MainWindow::rememberForm);
    }
    auto *const repeat = new QAction("Repeat the last command", this);
    repeat->setShortcut(QKeySequence::Open);
    connect(repeat, &QAction::triggered, this, &MainWindow::repeatCommand);
    addAction(repeat);
}

// The path for the command whose slot calls this: the given one or else the user's answer,
// empty when that is to cancel.
QString MainWindow::ask(const std::function<QString(const QString &startPath)> &dialog)
{
    auto *const command = qobject_cast<QAction *>(sender());
    Settings *const settings = Settings::instance();
    QString path = std::exchange(givenPath, {});
    if (path.isEmpty())
        path = dialog(settings->lastOpenPath());
    if (path.isEmpty())
        return {};
    settings->setLastOpenPath(directoryOf(path));
    takenPath = path;
    if (command) {
        lastCommand = command;
        recent->add(path, command);
    }
    return path;
}

QString MainWindow::askForFile()
{
    return ask([this](const QString &startPath) {
        return QFileDialog::getOpenFileName(this, "Opening file", startPath, "");
    });
}

QString MainWindow::askForDirectory(const QString &caption)
{
    return ask([this, caption](const QString &startPath) {
        return QFileDialog::getExistingDirectory(this, caption, startPath,
                                                 QFileDialog::ShowDirsOnly);
    });
}

template <typename Form, typename... Arguments>
void MainWindow::openFile(Arguments... arguments)
{
    if (const QString path = askForFile(); !path.isEmpty())
        new Form(path, arguments..., this);
}

template <typename Form, typename... Arguments>
void MainWindow::openDirectory(const QString &caption, Arguments... arguments)
{
    if (const QString path = askForDirectory(caption); !path.isEmpty())
        new Form(path, arguments..., this);
}

// Opens without asking. Not while a loop of the form is on the stack, or a dialog of it.
void MainWindow::open(QAction *command, const QString &path)
{
    if (!ui->menubar->isEnabled() || QApplication::activeModalWidget())
        return;
    givenPath = path;
    command->trigger();
    givenPath.clear();
}

// The enabled command that shows a file or directory when no form is open.
QAction *MainWindow::viewerOf(const QString &path) const
{
    const QFileInfo info(path);
    if (info.isDir())
        return ui->actionShowArraysDir;
    const QStringList textSuffixes = {"txt", "csv", "json", "dat"};
    if (textSuffixes.contains(info.suffix(), Qt::CaseInsensitive))
        return ui->actionShowArraysFile;
    return ui->actionShow_native_data->isEnabled() ? ui->actionShow_native_data
                                                   : ui->actionOneFourier;
}

void MainWindow::repeatCommand()
{
    QAction *command = lastCommand ? lastCommand.data() : recent->lastCommand();
    if (!command || !command->isEnabled())
        command = viewerOf({});
    command->trigger();
}

QWidget *MainWindow::shownForm() const
{
    const QLayout *const layout = ui->centralwidget->layout();
    return layout && layout->count() > 0 ? layout->itemAt(0)->widget() : nullptr;
}

// Called after the slot of every command.
void MainWindow::rememberForm()
{
    const QString path = std::exchange(takenPath, {});
    if (commandForm && shownForm() == commandForm)
        return;
    commandForm = shownForm();
    formCommand = path.isEmpty() ? nullptr : qobject_cast<QAction *>(sender());
    formTakesDirectory = QFileInfo(path).isDir();
}

void MainWindow::openDropped(const QString &path)
{
    const bool formTakesIt = formCommand && commandForm && commandForm == shownForm() &&
                             formTakesDirectory == QFileInfo(path).isDir();
    open(formTakesIt ? formCommand.data() : viewerOf(path), path);
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    const bool isDrag = event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove ||
                        event->type() == QEvent::Drop;
    const auto *const widget = isDrag ? qobject_cast<QWidget *>(watched) : nullptr;
    if (!widget || widget->window() != this)
        return QMainWindow::eventFilter(watched, event);
    auto *const drop = static_cast<QDropEvent *>(event);
    const QList<QUrl> urls = drop->mimeData()->urls();
    if (urls.isEmpty() || !urls[0].isLocalFile())
        return QMainWindow::eventFilter(watched, event);
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    // Later, for the form that goes may hold the widget under the pointer.
    if (event->type() == QEvent::Drop)
        QTimer::singleShot(0, this, [this, path = urls[0].toLocalFile()] { openDropped(path); });
    return true;
}

void MainWindow::openFileShowNative()
{
    openFile<NativeGrafik>(0);
}

void MainWindow::openFileShowNativeWithoutStep()
{
    openFile<NativeGrafik>(1);
}

void MainWindow::openFileFourier()
{
    openFile<PulsarForm>();
}

void MainWindow::openFileArrays()
{
    openFile<ArraysForm>();
}

void MainWindow::openDirArrays()
{
    openDirectory<ArraysDirForm>("directory");
}

void MainWindow::openDirSumFourier()
{
    openDirectory<FourierForm>("Pulsar directory", 0, 0, 0);
}

void MainWindow::openFileFFA()
{
    openFile<FfaForm>();
}

void MainWindow::openTestForm1()
{
    new TestForm("TestForm1", this);
}

void MainWindow::openTestForm2()
{
    new TestForm("TestForm2", this);
}

void MainWindow::openCalculator()
{
    new CalculatorForm(this);
}

void MainWindow::readBinToText()
{
    if (const QString path = askForFile(); !path.isEmpty())
        convertBinaryToText(path, this);
}

// The commands below are disabled in the menus until their forms exist.

void MainWindow::openFileTransients()
{
    sayNotBuilt("Transients");
}

void MainWindow::openDirSumFourierMap()
{
    sayNotBuilt("Sum of signals: Fourier - map");
}

void MainWindow::openDirSumFfa()
{
    sayNotBuilt("Sum of signals: FFA");
}

void MainWindow::openDirSumFfaMap()
{
    sayNotBuilt("Sum of signals: FFA - map");
}

void MainWindow::openDirSearchFourier()
{
    sayNotBuilt("Search: Fourier");
}

void MainWindow::openDirSearchFFA()
{
    sayNotBuilt("Search: FFA");
}

void MainWindow::openDirProfilesPeriods()
{
    sayNotBuilt("Average profiles - periods");
}

void MainWindow::openDirProfilesDispersions()
{
    sayNotBuilt("Average profiles - dispersions");
}

void MainWindow::openDirSumChannelsSimple()
{
    sayNotBuilt("Sum channels - simple");
}

void MainWindow::openDirSumChannels()
{
    sayNotBuilt("Sum channels");
}

void MainWindow::sayNotBuilt(const QString &command)
{
    ui->statusbar->showMessage("\"" + command + "\" is not built yet.", messageMs);
}

void MainWindow::showHelp()
{
    showDocument("README_zrt2_visual.pdf");
}

void MainWindow::showHelpCalc()
{
    showDocument("README_zrt2_visual_calc.pdf");
}

void MainWindow::showUpdates()
{
    showDocument("updates_zrt2_visual.pdf");
}

// The launcher starts the program in the folder that holds the documents.
void MainWindow::showDocument(const QString &fileName)
{
    const QFileInfo document("./" + fileName);
    if (!document.exists())
        ui->statusbar->showMessage("No help document " + document.absoluteFilePath(), messageMs);
    else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(document.absoluteFilePath())))
        ui->statusbar->showMessage("No viewer for " + document.absoluteFilePath(), messageMs);
}

void MainWindow::showAbout()
{
    const QFileInfo executable(QCoreApplication::applicationFilePath());
    const QStringList lines = {
        "Author: The developers of ZRT-Analytics-2",
        "Scientific supervisor: not named",
        "Web: https://zrt-analytics-2.example",
        "",
        QString("Version: %1 %2").arg(Version::number, Version::date),
        "Compiled at " + textOfTime(executable.lastModified(), "dd.MM.yyyy hh:mm"),
    };
    QMessageBox::about(this, "About", lines.join("\n"));
}

void MainWindow::exitMenu()
{
    close();
}
