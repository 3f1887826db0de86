#include "app/mainwindow.h"

#include "app/helpdocument.h"
#include "app/shell/applicationstyles.h"
#include "app/shell/directoryof.h"
#include "app/shell/recentbutton.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "app/shell/timedprogressbar.h"
#include "base/timetext.h"
#include "base/version.h"
#include "fields/wheelfilter.h"
#include "forms/arrays/arraysdirform.h"
#include "forms/arrays/arraysform.h"
#include "forms/bintotext/bintotext.h"
#include "forms/calculator/calculatorform.h"
#include "forms/days/fourierform.h"
#include "forms/ffa/ffaform.h"
#include "forms/multi/nativemultiform.h"
#include "forms/multi/searchnativeform.h"
#include "forms/native/nativegrafik.h"
#include "forms/profiles/profileform.h"
#include "forms/pulsar/pulsarform.h"
#include "forms/test/testform.h"
#include "forms/transient/transientform.h"

#include <QApplication>
#include <QClipboard>
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
    new Fields::WheelFilter(this);

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
    auto *const quit = new QAction("Quit", this);
    quit->setShortcut(QKeySequence("Ctrl+Q"));
    connect(quit, &QAction::triggered, this, &MainWindow::close);
    addAction(quit);
    auto *const chapter = new QAction("Help on the form", this);
    chapter->setShortcut(QKeySequence::HelpContents);
    connect(chapter, &QAction::triggered, this, &MainWindow::showChapter);
    addAction(chapter);
}

// The path for the command whose slot calls this: the given one or else the user's answer,
// empty when that is to cancel.
QString MainWindow::ask(const std::function<QString(const QString &startPath)> &dialog)
{
    auto *const command = qobject_cast<QAction *>(sender());
    Settings *const settings = Settings::instance();
    QString path = std::exchange(givenPath, {});
    if (path.isEmpty())
        path = dialog(startFolder(settings->lastOpenPath()));
    if (path.isEmpty())
        return {};
    settings->setLastOpenPath(directoryOf(path));
    takenPath = path;
    formBefore = shownForm();
    if (command)
        lastCommand = command;
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

void MainWindow::openDays(int ffa, int map, int search)
{
    if (const QString path = askForDirectory("Pulsar directory"); !path.isEmpty()) {
        const auto *const form = new FourierForm(path, ffa, map, search, this);
        connect(this, &MainWindow::mainWindowSizeChanged, form, &FourierForm::fitToWindow);
    }
}

// Opens without asking. Not while a loop of the form is on the stack, or a dialog of it.
void MainWindow::open(QAction *command, const QString &path)
{
    if (!ui->menubar->isEnabled() || QApplication::activeModalWidget()) {
        sayNotOpened({path});
        return;
    }
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

// Called after the slot of every command. A path is one to remember once a form shows it.
void MainWindow::rememberForm()
{
    const QString path = std::exchange(takenPath, {});
    QWidget *const form = shownForm();
    auto *const command = qobject_cast<QAction *>(sender());
    if (form == nullptr || path.isEmpty() || form == formBefore)
        return;
    commandForm = form;
    formCommand = command;
    formTakesDirectory = QFileInfo(path).isDir();
    recent->add(path, command);
}

void MainWindow::openDropped(const QStringList &paths)
{
    const bool formTakesIt = formCommand && commandForm && commandForm == shownForm() &&
                             formTakesDirectory == QFileInfo(paths[0]).isDir();
    open(formTakesIt ? formCommand.data() : viewerOf(paths[0]), paths[0]);
    sayNotOpened(paths.mid(1));
}

void MainWindow::openPaths(const QStringList &paths)
{
    open(viewerOf(paths[0]), paths[0]);
    sayNotOpened(paths.mid(1));
}

void MainWindow::sayNotOpened(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    QStringList names;
    for (const QString &path : paths)
        names << QFileInfo(path).fileName();
    const bool isBusy = !ui->menubar->isEnabled() || QApplication::activeModalWidget();
    const QString why =
        isBusy ? "the window is at work, which Esc stops" : "the window shows one file at a time";
    StatusLine::show(QString("Not opened: %1 (%2).").arg(names.join(", "), why));
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    // The desktop has changed between dark and light.
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange &&
        !qApp->styleSheet().isEmpty())
        QTimer::singleShot(0, this, [] { applyApplicationStyles(); });
    const bool isDrag = event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove ||
                        event->type() == QEvent::Drop;
    const auto *const widget = isDrag ? qobject_cast<QWidget *>(watched) : nullptr;
    if (!widget || widget->window() != this)
        return QMainWindow::eventFilter(watched, event);
    auto *const drop = static_cast<QDropEvent *>(event);
    QStringList paths;
    for (const QUrl &url : drop->mimeData()->urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    if (paths.isEmpty())
        return QMainWindow::eventFilter(watched, event);
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    // Later, for the form that goes may hold the widget under the pointer.
    if (event->type() == QEvent::Drop)
        QTimer::singleShot(0, this, [this, paths] { openDropped(paths); });
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
    openDays(0, 0, 0);
}

void MainWindow::openDirSumChannelsSimple()
{
    openDirectory<SearchNativeForm>("Pulsar directory", QString("native"));
}

void MainWindow::openDirSumChannels()
{
    openDirectory<NativeMultiForm>("Pulsar directory");
}

// The options of the form before go on through the settings.
void MainWindow::openDirProfilesPeriods()
{
    if (const QString path = askForDirectory("Pulsar directory"); !path.isEmpty())
        Settings::instance()->setCurrentProfileForm(new ProfileForm(path, "periods", this));
}

void MainWindow::openDirProfilesDispersions()
{
    openDirectory<ProfileForm>("Pulsar directory", QString("dispersions"));
}

void MainWindow::openDirSumFourierMap()
{
    openDays(0, 1, 0);
}

void MainWindow::openDirSumFfa()
{
    openDays(1, 0, 0);
}

void MainWindow::openDirSumFfaMap()
{
    openDays(1, 1, 0);
}

void MainWindow::openDirSearchFourier()
{
    openDays(0, 0, 1);
}

void MainWindow::openDirSearchFFA()
{
    openDays(1, 0, 1);
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
    if (const QString path = askForFile(); !path.isEmpty() && convertBinaryToText(path, this))
        recent->add(path, ui->actionReadBinToText);
}

void MainWindow::openFileTransients()
{
    openFile<TransientForm>();
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

// The manual at the chapter of the form in the window.
void MainWindow::showChapter()
{
    const QWidget *const form = shownForm();
    const QVariant key = form ? form->property("helpKey") : "";
    const HelpChapter help =
        helpOn(key.isValid() ? key.toString() : QString(form->metaObject()->className()));
    showDocument(help.document, help.chapter);
}

// The launcher starts the program in the folder that holds the documents.
void MainWindow::showDocument(const QString &fileName, const QString &chapter)
{
    const QFileInfo document("./" + fileName);
    const QString path = document.absoluteFilePath();
    if (!document.exists())
        StatusLine::show("No help document " + path);
    else if (!openDocument(path, pageOfChapter(path, chapter)))
        StatusLine::show("No viewer for " + path);
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
