#include "fields/wheelfilter.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>

namespace Fields {

WheelFilter::WheelFilter(QObject *parent) : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool WheelFilter::eventFilter(QObject *watched, QEvent *event)
{
    const bool isWheel = event->type() == QEvent::Wheel;
    if (!isWheel && event->type() != QEvent::Polish)
        return false;
    if (!qobject_cast<QAbstractSpinBox *>(watched) && !qobject_cast<QComboBox *>(watched))
        return false;
    auto *const field = static_cast<QWidget *>(watched);
    if (!isWheel) {
        if (field->focusPolicy() == Qt::WheelFocus) // which would give it the focus first
            field->setFocusPolicy(Qt::StrongFocus);
        return false;
    }
    if (field->hasFocus())
        return false;
    event->ignore(); // so that it goes on to the panel
    return true;
}

} // namespace Fields
