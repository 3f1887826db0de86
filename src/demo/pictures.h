#pragma once

#include <QDir>
#include <QObject>

class MainWindow;
class QWidget;

/// Closes every message box, which nobody could see or answer here, and tells its text instead.
class BoxWatcher : public QObject {
public:
    bool hasSeenBox() const { return seen; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool seen = false;
};

/// Waits until what runs beside the window is done.
void waitForWork();

/// Saves what the window shows.
///
/// @return false, after a line on the standard error, when it cannot be written
bool savePicture(QWidget &window, const QString &path);

/// The steps of the tutorial, from a look at the recording to the period and the dispersion of
/// the weak pulsar in ray 3 of the demonstration recording.
///
/// @return false when a form refused something or a picture cannot be written
bool pictureTutorial(MainWindow &window, const QString &recording, const QDir &folder,
                     const BoxWatcher &boxes);

/// The stack of a directory of days that `zrt-simulate --demo --days` has made, with the line of its
/// pulsar.
///
/// @return as of pictureTutorial()
bool pictureDays(MainWindow &window, const QString &days, const QDir &folder,
                 const BoxWatcher &boxes);
