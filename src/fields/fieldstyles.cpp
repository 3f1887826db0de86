#include "fields/fieldstyles.h"

#include <QLabel>
#include <QToolTip>
#include <QWidget>

namespace FieldStyles {

void setStyle(QWidget *field, const QString &style)
{
    QPalette palette;
    if (!style.isEmpty()) {
        palette.setColor(QPalette::Text, Qt::black);
        palette.setColor(QPalette::WindowText, Qt::black); // of a label
    }
    field->setPalette(palette);
    field->setStyleSheet(style);
}

QString nameOf(const QWidget *field)
{
    for (const QLabel *label : field->window()->findChildren<QLabel *>()) {
        if (label->buddy() == field)
            return label->text().remove('&');
    }
    return field->objectName();
}

void refuse(QWidget *field, const QString &message)
{
    setStyle(field, failing);
    field->setFocus();
    QToolTip::showText(field->mapToGlobal(field->rect().bottomLeft()), message, field);
}

} // namespace FieldStyles
