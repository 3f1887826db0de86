#include "app/shell/jobprogress.h"

#include "app/shell/settings.h"
#include "jobs/worker.h"

#include <QProgressBar>
#include <QShortcut>

JobProgress::JobProgress(Jobs::Worker &worker, QWidget *form, bool atOnce)
    : bar(Settings::instance()->progressBar()),
      escape(new QShortcut(QKeySequence(Qt::Key_Escape), form))
{
    escape->setEnabled(false); // plots and fields have a use for the key
    connect(escape, &QShortcut::activated, &worker, &Jobs::Worker::stop);
    connect(&worker, &Jobs::Worker::started, this, [this, atOnce] { begin(atOnce); });
    connect(&worker, &Jobs::Worker::ended, this, &JobProgress::end);
    connect(&worker, &Jobs::Worker::progress, this, [this](int percent) {
        if (!bar)
            return;
        bar->setValue(percent);
        bar->show();
    });
}

JobProgress::~JobProgress()
{
    if (isBusy)
        end();
}

void JobProgress::begin(bool withBar)
{
    isBusy = true;
    if (escape)
        escape->setEnabled(true);
    if (!bar)
        return;
    bar->setValue(0);
    if (withBar)
        bar->show();
}

void JobProgress::end()
{
    isBusy = false;
    if (escape)
        escape->setEnabled(false);
    if (!bar)
        return;
    bar->hide();
    bar->setValue(0);
}
