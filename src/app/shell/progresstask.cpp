#include "app/shell/progresstask.h"

#include "app/shell/settings.h"

#include <QApplication>
#include <QKeyEvent>
#include <QProgressBar>

namespace {

constexpr int eventsMs = 30; // between two looks at pending events

int runningTasks = 0;

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

} // namespace

ProgressTask::ProgressTask()
    : window(Settings::instance()->ui().centralwidget->window()),
      menubar(Settings::instance()->ui().menubar), bar(Settings::instance()->progressBar())
{
    ++runningTasks;
    menubar->setEnabled(false);
    QApplication::setOverrideCursor(Qt::BusyCursor);
    qApp->installEventFilter(this);
    sinceEvents.start();
    show(0);
    if (bar)
        bar->show();
}

ProgressTask::~ProgressTask()
{
    --runningTasks;
    qApp->removeEventFilter(this);
    QApplication::restoreOverrideCursor();
    if (bar)
        bar->hide();
    if (menubar)
        menubar->setEnabled(true);
    if (closeWanted && window)
        QMetaObject::invokeMethod(window.data(), &QWidget::close, Qt::QueuedConnection);
}

bool ProgressTask::isRunning()
{
    return runningTasks > 0;
}

bool ProgressTask::goesOn()
{
    if (sinceEvents.elapsed() >= eventsMs) {
        QCoreApplication::processEvents();
        sinceEvents.restart();
    }
    return !wasCancelled;
}

void ProgressTask::show(int percent)
{
    if (bar)
        bar->setValue(percent);
}

bool ProgressTask::advance(int percent)
{
    show(percent);
    QCoreApplication::processEvents();
    return !wasCancelled;
}

void ProgressTask::cancel()
{
    wasCancelled = true;
    emit cancelRequested();
}

bool ProgressTask::isOfWindow(const QObject *object) const
{
    while (object && object != window)
        object = object->parent();
    return object != nullptr;
}

bool ProgressTask::eventFilter(QObject *watched, QEvent *event)
{
    // A message box of the running work keeps its own Esc and close button.
    if (QApplication::activeModalWidget())
        return false;
    // A timer whose event is held back sends it again after its interval.
    if (event->type() == QEvent::Timer)
        return isOfWindow(watched);
    if (event->type() == QEvent::Close && watched == window) {
        closeWanted = true;
        event->ignore();
        cancel();
        return true;
    }
    if (event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        cancel();
    return isInput(event->type());
}
