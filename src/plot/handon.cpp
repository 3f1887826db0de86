#include "plot/handon.h"

#include "picture/plotgeometry.h"
#include "plot/pulsargrafik.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>

namespace Plot {

void handOn(const QMouseEvent &event, PulsarGrafik &plot, double height)
{
    if (plot.isPanned())
        height = 0;
    const int top = marginTop + 1;
    const int bottom = plot.height() - marginBottom - 1;
    const QPointF place(event.localPos().x(), top + height * (bottom - top));
    QMouseEvent handed(event.type(), place, plot.mapToGlobal(place.toPoint()), event.button(),
                       event.buttons(), event.modifiers());
    QApplication::sendEvent(&plot, &handed);
}

void handOn(QWheelEvent &event, PulsarGrafik &plot)
{
    const QPointF place(event.position().x(), plot.height() / 2.0);
    QWheelEvent handed(place, plot.mapToGlobal(place.toPoint()), event.pixelDelta(),
                       event.angleDelta(), event.buttons(), event.modifiers(), event.phase(),
                       event.inverted());
    QApplication::sendEvent(&plot, &handed);
    event.accept();
}

} // namespace Plot
