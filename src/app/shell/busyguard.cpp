#include "app/shell/busyguard.h"

#include "app/shell/settings.h"

#include <QApplication>
#include <QKeyEvent>

namespace {

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

BusyGuard::BusyGuard()
    : window(Settings::instance()->ui().centralwidget->window()),
      menubar(Settings::instance()->ui().menubar)
{
    menubar->setEnabled(false);
    QApplication::setOverrideCursor(Qt::BusyCursor);
    qApp->installEventFilter(this);
}

BusyGuard::~BusyGuard()
{
    qApp->removeEventFilter(this);
    QApplication::restoreOverrideCursor();
    if (menubar)
        menubar->setEnabled(true);
    if (closeWanted && window)
        QMetaObject::invokeMethod(window.data(), &QWidget::close, Qt::QueuedConnection);
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
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        emit cancelRequested();
    return isInput(event->type());
}
