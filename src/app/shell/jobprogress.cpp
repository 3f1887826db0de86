#include "app/shell/jobprogress.h"

#include "app/shell/settings.h"
#include "jobs/worker.h"

#include <QProgressBar>
#include <QShortcut>

JobProgress::JobProgress(Jobs::Worker &worker, QWidget *form)
    : bar(Settings::instance()->progressBar()),
      escape(new QShortcut(QKeySequence(Qt::Key_Escape), form))
{
    escape->setEnabled(false); // plots and fields have a use for the key
    connect(escape, &QShortcut::activated, &worker, &Jobs::Worker::stop);
    connect(&worker, &Jobs::Worker::started, this, [this] { show(true); });
    connect(&worker, &Jobs::Worker::ended, this, [this] { show(false); });
    connect(&worker, &Jobs::Worker::progress, this, [this](int percent) {
        if (bar)
            bar->setValue(percent);
    });
}

JobProgress::~JobProgress()
{
    if (isShown)
        show(false);
}

void JobProgress::show(bool isBusy)
{
    isShown = isBusy;
    if (escape)
        escape->setEnabled(isBusy);
    if (!bar)
        return;
    bar->setValue(0);
    bar->setVisible(isBusy);
}
