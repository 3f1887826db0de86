#include "fields/fieldstyles.h"

#include <QLabel>
#include <QStyle>
#include <QToolTip>
#include <QVariant>
#include <QWidget>

namespace FieldStyles {

void setStyle(QWidget *field, const QString &style)
{
    field->setProperty("isLight", QVariant(!style.isEmpty()));
    field->setStyleSheet(style);
}

void setProblem(QWidget *label, bool isProblem)
{
    label->setProperty("isProblem", isProblem);
    label->style()->unpolish(label); // looks at the property again
    label->style()->polish(label);
}

QString nameOf(const QWidget *field)
{
    for (const QLabel *label : field->window()->findChildren<QLabel *>()) {
        if (label->buddy() == field)
            return label->text().remove('&');
    }
    return field->accessibleName().isEmpty() ? field->objectName() : field->accessibleName();
}

void markRefused(QWidget *field, const QString &message)
{
    setStyle(field, failing);
    QToolTip::showText(field->mapToGlobal(field->rect().bottomLeft()), message, field);
}

void refuse(QWidget *field, const QString &message)
{
    field->setFocus(); // before the message, which a change of the focus hides
    markRefused(field, message);
}

} // namespace FieldStyles
