#include "app/busyguard.h"

#include "app/settings.h"

#include <QApplication>
#include <QKeyEvent>

BusyGuard::BusyGuard()
    : window(Settings::instance()->ui().centralwidget->window()),
      menubar(Settings::instance()->ui().menubar)
{
    menubar->setEnabled(false);
    qApp->installEventFilter(this);
}

BusyGuard::~BusyGuard()
{
    qApp->removeEventFilter(this);
    if (menubar)
        menubar->setEnabled(true);
    if (closeWanted && window)
        QMetaObject::invokeMethod(window, "close", Qt::QueuedConnection);
}

bool BusyGuard::eventFilter(QObject *watched, QEvent *event)
{
    // A message box of the running loop keeps its own Esc and close button.
    if (QApplication::activeModalWidget())
        return false;
    if (event->type() == QEvent::Close && watched == window) {
        closeWanted = true;
        event->ignore();
        emit cancelRequested();
        return true;
    }
    if (event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        emit cancelRequested();
        return true;
    }
    return false;
}
