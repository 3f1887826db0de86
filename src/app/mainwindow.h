#pragma once

#include <QMainWindow>
#include <memory>

class QClipboard;
class QProgressBar;
namespace Ui {
class MainWindow;
}

/// The program's window: menus, an empty central widget for the form that a command opens,
/// and a status bar with the progress bar. Each `open...` slot asks for a file or a
/// directory and constructs a form with that path and this window as parent; the form shows
/// itself. Window size and paths are restored on construction and saved on destruction.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

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

protected:
    void changeEvent(QEvent *event) override;

private:
    QString askForFile();
    template <typename Form>
    void openFile();
    template <typename Form>
    void openDirectory(const QString &caption);
    void connectActions();
    void showDocument(const QString &fileName);
    void sayNotBuilt(const QString &command);

    const std::unique_ptr<Ui::MainWindow> ui;
    QProgressBar *progressBar = nullptr;
    QClipboard *clipboard = nullptr;
};
