#include "support/messageboxcatcher.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QTimer>

namespace TestSupport {

MessageBoxCatcher::MessageBoxCatcher()
{
    qApp->installEventFilter(this);
}

bool MessageBoxCatcher::eventFilter(QObject *watched, QEvent *event)
{
    auto *const box = qobject_cast<QMessageBox *>(watched);
    if (box && event->type() == QEvent::Show) {
        caught.push_back({box->windowTitle(), box->text()});
        // Later, for a box that closes inside its own show event never leaves exec().
        QTimer::singleShot(0, box, &QDialog::reject);
    }
    return false;
}

} // namespace TestSupport
