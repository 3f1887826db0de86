#include "app/shell/pathlabel.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QPainter>
#include <QStyle>

PathLabel::PathLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    auto *const copy = new QAction("Copy path", this);
    connect(copy, &QAction::triggered, this, [this] { QApplication::clipboard()->setText(whole); });
    addAction(copy);
}

void PathLabel::showFile(const QString &path)
{
    show("File: ", path);
}

void PathLabel::showDirectory(const QString &path)
{
    show("Directory: ", path);
}

void PathLabel::show(const QString &word, const QString &path)
{
    whole = QDir::toNativeSeparators(path);
    setText(word + QString(path).replace("/", "/ "));
    setToolTip(whole);
}

QString PathLabel::shortened(const QString &text, const QFontMetrics &font, int width)
{
    if (font.horizontalAdvance(text) <= width)
        return text;
    const int nameStart = text.lastIndexOf('/') + 1;
    const QString name = text.mid(nameStart);
    const int left = width - font.horizontalAdvance(name);
    const int least = font.horizontalAdvance("/… / ");
    if (nameStart == 0 || left < least)
        return font.elidedText(name.trimmed(), Qt::ElideMiddle, width);
    return font.elidedText(text.left(nameStart), Qt::ElideMiddle, left) + name;
}

QSize PathLabel::sizeHint() const
{
    return minimumSizeHint();
}

// As high as its line; as wide as the form has room.
QSize PathLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 8, fontMetrics().height()};
}

void PathLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect area = contentsRect();
    style()->drawItemText(&painter, area, int(alignment()), palette(), isEnabled(),
                          shortened(text(), fontMetrics(), area.width()), foregroundRole());
}
