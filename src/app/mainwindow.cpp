#include "app/mainwindow.h"

#include "app/directoryof.h"
#include "app/settings.h"
#include "forms/arrays/arraysdirform.h"
#include "forms/arrays/arraysform.h"
#include "forms/bintotext/bintotext.h"
#include "forms/calculator/calculatorform.h"
#include "forms/ffa/ffaform.h"
#include "forms/pulsar/pulsarform.h"
#include "forms/test/testform.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressBar>
#include <QUrl>

namespace {

constexpr char versionName[] = "2.0.0";
constexpr char versionDate[] = "2025.11.22";
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

    progressBar = new QProgressBar;
    progressBar->setRange(0, 100);
    ui->statusbar->addWidget(progressBar, 1);
    progressBar->hide();

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
    for (const auto &[action, slot] : table)
        connect(action, &QAction::triggered, this, slot);
}

// Empty when the user cancels.
QString MainWindow::askForFile()
{
    Settings *const settings = Settings::instance();
    const QString path =
        QFileDialog::getOpenFileName(this, "Opening file", settings->lastOpenPath(), "");
    if (!path.isEmpty())
        settings->setLastOpenPath(directoryOf(path));
    return path;
}

template <typename Form>
void MainWindow::openFile()
{
    if (const QString path = askForFile(); !path.isEmpty())
        new Form(path, this);
}

template <typename Form>
void MainWindow::openDirectory(const QString &caption)
{
    Settings *const settings = Settings::instance();
    const QString path = QFileDialog::getExistingDirectory(this, caption, settings->lastOpenPath(),
                                                           QFileDialog::ShowDirsOnly);
    if (path.isEmpty())
        return;
    settings->setLastOpenPath(directoryOf(path));
    new Form(path, this);
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

void MainWindow::openFileShowNative()
{
    sayNotBuilt("Show native");
}

void MainWindow::openFileShowNativeWithoutStep()
{
    sayNotBuilt("Show native - without step");
}

void MainWindow::openFileTransients()
{
    sayNotBuilt("Transients");
}

void MainWindow::openDirSumFourier()
{
    sayNotBuilt("Sum of signals: Fourier");
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
        QString("Version: %1 %2").arg(versionName, versionDate),
        "Compiled at " + executable.lastModified().toString("dd.MM.yyyy hh:mm"),
    };
    QMessageBox::about(this, "About", lines.join("\n"));
}

void MainWindow::exitMenu()
{
    close();
}
