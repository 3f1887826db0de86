#pragma once

#include "base/progressdots.h"
#include "ui_mainwindow.h"

#include <QObject>
#include <QSettings>
#include <QString>

class MainWindow;
class ProfileForm;
class QProgressBar;

/// The one object of the process through which forms reach the main window, its widgets
/// and its progress bar, and the values that are remembered between runs. Made on first
/// use, never destroyed.
class Settings : public QObject {
    Q_OBJECT

public:
    static Settings *instance();

    /// The main window; one without parent is made when none exists yet. Defined in
    /// mainwindow.cpp, the only place that knows the class: this header and the forms that
    /// include it do without.
    MainWindow *mainWindow();
    void setMainWindow(MainWindow *newWindow) { window = newWindow; }

    /// The main window's generated widget table, by value.
    Ui::MainWindow ui() const { return widgets; }
    void setUi(const Ui::MainWindow &table) { widgets = table; }

    /// Null while there is no main window.
    QProgressBar *progressBar() const { return bar; }
    void setProgressBar(QProgressBar *newBar) { bar = newBar; }

    QString lastOpenFile() const { return openFile; }
    QString lastOpenPath() const { return openPath; }
    QString lastSavePath() const { return savePath; }
    /// The three remembered paths ignore an empty text.
    void setLastOpenFile(const QString &path);
    void setLastOpenPath(const QString &path);
    void setLastSavePath(const QString &path);

    /// Plot size preferences, kept as texts.
    QString graphWidth;
    QString graphHeight;

    /// The last form of "Average profiles - periods", null when it has gone: it clears this itself
    /// and leaves its options below for the next one.
    ProfileForm *currentProfileForm() const { return profileForm; }
    void setCurrentProfileForm(ProfileForm *form) { profileForm = form; }
    bool profileAligns = true;
    bool profileNormalises = true;
    bool profileWeights = true;

    /// Where values live between runs.
    static QSettings store();

    /// Reads the remembered values; the window's geometry is applied to `geometryOwner`,
    /// which is then maximized if it was.
    void restore(QWidget *geometryOwner);
    /// Writes them back; the geometry only if the window is not maximized, so that the last
    /// normal size survives.
    void save(const QWidget *geometryOwner) const;

public slots:
    /// Shows a percentage: in the progress bar, which 100 hides, or, without a window, as
    /// one "." on the standard output for each new value and a line end after 100.
    void setProgress(int value);

private:
    Settings() = default;

    MainWindow *window = nullptr;
    Ui::MainWindow widgets = {};
    QProgressBar *bar = nullptr;
    ProfileForm *profileForm = nullptr;
    ProgressDots dots;
    QString openFile;
    QString openPath;
    QString savePath;
};
