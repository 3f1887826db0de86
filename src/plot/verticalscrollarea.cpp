#include "plot/verticalscrollarea.h"

#include <QEvent>
#include <QScrollBar>

VerticalScrollArea::VerticalScrollArea(QWidget *parent) : QScrollArea(parent)
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
}

QSize VerticalScrollArea::sizeHint() const
{
    return {minimumSizeHint().width(), widget() ? widget()->sizeHint().height() : 0};
}

QSize VerticalScrollArea::minimumSizeHint() const
{
    const int content = widget() ? widget()->minimumSizeHint().width() : 0;
    const int width = content + verticalScrollBar()->sizeHint().width() + 2 * frameWidth();
    return {width, QScrollArea::minimumSizeHint().height()};
}

// Only now do all the widgets inside have the style they are shown in.
void VerticalScrollArea::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    updateGeometry();
}

// The base class already watches the widget it holds.
bool VerticalScrollArea::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}
