#include "app/shell/applicationstyles.h"

#include "fields/textcolours.h"

#include <QApplication>
#include <QFile>
#include <QPalette>

namespace {

QString textOf(const QString &resource)
{
    QFile file(resource);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

QString applicationStyles(const QPalette &palette)
{
    const QString styles = textOf(":/styles/styles.qss");
    return TextColours::areLight(palette) ? styles + textOf(":/styles/dark.qss") : styles;
}

void applyApplicationStyles()
{
    const QString styles = applicationStyles(QApplication::palette());
    if (qApp->styleSheet() != styles)
        qApp->setStyleSheet(styles);
}
