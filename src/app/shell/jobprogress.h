#pragma once

#include <QObject>
#include <QPointer>

class QProgressBar;
class QShortcut;
class QWidget;
namespace Jobs {
class Worker;
}

/// Shows what a worker does: its progress in the bar of the window, which goes when the job has
/// ended or this object goes. Meanwhile Esc, pressed anywhere in the window, stops the job.
class JobProgress : public QObject {
    Q_OBJECT

public:
    /// @param worker  must live longer
    /// @param form    in the window; for as long as it is shown Esc counts
    /// @param atOnce  false: the bar waits for the first percentage
    JobProgress(Jobs::Worker &worker, QWidget *form, bool atOnce = true);
    ~JobProgress() override;

private:
    void begin(bool withBar);
    void end();

    QPointer<QProgressBar> bar;
    QPointer<QShortcut> escape;
    bool isBusy = false;
};
