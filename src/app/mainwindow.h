#pragma once

#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <memory>

class QAction;
class QClipboard;
class QProgressBar;
class RecentButton;
namespace Ui {
class MainWindow;
}

/// The program's window: menus, an empty central widget for the form that a command opens,
/// and a status bar with the progress bar. Each `open...` slot asks for a file or a
/// directory and constructs a form with that path and this window as parent; the form shows
/// itself. Window size and paths are restored on construction and saved on destruction.
///
/// The button "Recent" of the status bar offers what was opened last with the command that did;
/// Ctrl+O repeats the last command, Ctrl+Q closes the window, F1 opens the manual at the chapter
/// of the form. A file or directory that is dropped onto the window opens in the form that is
/// open, where that takes one, and in the form that shows it otherwise.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    /// Opens the first of some files or directories in the form that shows it, and names the
    /// others as not opened.
    void openPaths(const QStringList &paths);

signals:
    /// The window was maximized, minimized or restored.
    void mainWindowSizeChanged();

public slots:
    void openFileShowNative();
    void openFileShowNativeWithoutStep();
    void openFileFourier();
    void openFileFFA();
    void openFileTransients();

    void openDirSumFourier();
    void openDirSumFourierMap();
    void openDirSumFfa();
    void openDirSumFfaMap();
    void openDirSearchFourier();
    void openDirSearchFFA();

    void openDirProfilesPeriods();
    void openDirProfilesDispersions();
    void openDirSumChannelsSimple();
    void openDirSumChannels();
    void openTestForm1();
    void openTestForm2();

    void openCalculator();
    void openFileArrays();
    void openDirArrays();
    void readBinToText();

    void showHelp();
    void showHelpCalc();
    void showUpdates();
    void showAbout();
    /// Connected to nothing: the help menu offers no exit command.
    void exitMenu();

    /// Asks for a file or directory as the last command did.
    void repeatCommand();

protected:
    /// Sees what is dropped onto any widget of the window.
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QString ask(const std::function<QString(const QString &startPath)> &dialog);
    QString askForFile();
    QString askForDirectory(const QString &caption);
    template <typename Form, typename... Arguments>
    void openFile(Arguments... arguments);
    template <typename Form, typename... Arguments>
    void openDirectory(const QString &caption, Arguments... arguments);
    /// Opens the form over days with the flags of a command.
    void openDays(int ffa, int map, int search);
    void connectActions();
    QAction *viewerOf(const QString &path) const;
    void open(QAction *command, const QString &path);
    void openDropped(const QStringList &paths);
    void sayNotOpened(const QStringList &paths);
    QWidget *shownForm() const;
    void rememberForm();
    void showChapter();
    void showDocument(const QString &fileName, const QString &chapter = {});

    const std::unique_ptr<Ui::MainWindow> ui;
    QProgressBar *progressBar = nullptr;
    QClipboard *clipboard = nullptr;

    RecentButton *recent = nullptr;
    QString givenPath;             // taken by the next command in place of asking
    QPointer<QAction> lastCommand; // that was given a path
    // The form in the window, if a command with a path opened it.
    QPointer<QWidget> commandForm;
    QPointer<QAction> formCommand;
    bool formTakesDirectory = false;
    // The command whose slot runs has taken this path; the form was there before it.
    QString takenPath;
    QPointer<QWidget> formBefore;
};
