#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class QProgressBar;
class QWidget;

/// Work on the window's thread that lets events through, so that the window stays alive. While it
/// stands on the stack the progress bar is shown, the menus are disabled, the timers of the window
/// and of all that it owns wait, and clicks and keys reach nothing but message boxes: any of them
/// could delete the form whose work is on the stack. Esc, or closing the window, asks the work to
/// stop; the window then closes as soon as the task goes.
class ProgressTask : public QObject {
    Q_OBJECT

public:
    ProgressTask();
    ~ProgressTask() override;

    /// Whether one is on the stack. A slot that would begin another returns at once.
    static bool isRunning();

    /// Whether the user has asked to stop.
    bool isCancelled() const { return wasCancelled; }

    /// Lets events through, though not more than once in 30 ms.
    ///
    /// @return false once the user has asked to stop
    bool goesOn();

public slots:
    /// Shows a percentage without letting events through.
    void show(int percent);

    /// Shows a percentage and lets events through.
    ///
    /// @return false once the user has asked to stop
    bool advance(int percent);

signals:
    void cancelRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void cancel();
    bool isOfWindow(const QObject *object) const;

    QPointer<QWidget> window;
    QPointer<QWidget> menubar;
    QPointer<QProgressBar> bar;
    QElapsedTimer sinceEvents;
    bool wasCancelled = false;
    bool closeWanted = false;
};
