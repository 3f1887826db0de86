#include "plot/pulsargrafik.h"

#include "plot/plotgeometry.h"
#include "plot/plotpainter.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

namespace {

// QRect's own corners are pixels inside it: there a rectangle between two equal points has an
// extent of 1, and one drawn leftwards is a pixel off. Here size is the way between the corners.
QRect rectangleBetween(const QPoint &corner1, const QPoint &corner2)
{
    const QPoint first(std::min(corner1.x(), corner2.x()), std::min(corner1.y(), corner2.y()));
    const QPoint way = corner1 + corner2 - 2 * first;
    return {first, QSize(way.x(), way.y())};
}

QPoint oppositeCorner(const QRect &rectangle)
{
    return rectangle.topLeft() + QPoint(rectangle.width(), rectangle.height());
}

} // namespace

PulsarGrafik::PulsarGrafik(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus); // it takes no keys and is no stop between the fields
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

PulsarGrafik::~PulsarGrafik() = default;

void PulsarGrafik::setData(PlotData data)
{
    // The caller may hold the lock already, so may a press whose signal led here.
    const bool locked = busy.tryLock();
    plotData = std::move(data);
    if (locked)
        busy.unlock();
    repaintPlot();
}

void PulsarGrafik::recomputeRange()
{
    const Plot::Range range = Plot::verticalRange(plotData);
    plotData.yMin = range.min;
    plotData.yMax = range.max;
    repaintPlot();
}

void PulsarGrafik::showMessage(const QString &message)
{
    plotData.messageMode = true;
    plotData.message = message;
    repaintPlot();
}

void PulsarGrafik::clear()
{
    showMessage(QString());
}

QPointF PulsarGrafik::dataPerPixel() const
{
    return Plot::dataPerPixel(view());
}

QSize PulsarGrafik::sizeHint() const
{
    return {800, 500};
}

QSize PulsarGrafik::minimumSizeHint() const
{
    return {300, 200};
}

void PulsarGrafik::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !busy.tryLock())
        return;
    pressPoint = Plot::wholePixel(event->localPos());
    dragging = true;
    if (!selected.isNull() &&
        QRect(selected.topLeft(), oppositeCorner(selected)).contains(pressPoint)) {
        const Plot::View shown = view();
        emit blueRectangleClicked(Plot::dataAt(shown, selected.topLeft()),
                                  Plot::dataAt(shown, oppositeCorner(selected)));
    } else {
        selected = rectangleBetween(pressPoint, pressPoint);
        update();
    }
    busy.unlock();
}

void PulsarGrafik::mouseMoveEvent(QMouseEvent *event)
{
    if (picture.isNull())
        return;
    const QPoint pixel = Plot::wholePixel(event->localPos());
    const QPointF coords = Plot::dataAt(view(), pixel);
    emit coordsChanged(coords, Plot::labelsAt(plotData, coords.x()));
    if (dragging && (event->buttons() & Qt::LeftButton)) {
        selected = rectangleBetween(pressPoint, pixel);
        update();
    }
}

void PulsarGrafik::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !dragging)
        return;
    dragging = false;
    const Plot::View shown = view();
    const QPoint pixel = Plot::wholePixel(event->localPos());
    if (pixel == pressPoint)
        emit clicked(Plot::dataAt(shown, pixel));
    if (selected.width() == 0 || selected.height() == 0)
        return;
    const QPointF offset(plotData.xOffset, 0);
    emit blueRectangleReleased(Plot::dataAt(shown, selected.topLeft()) + offset,
                               Plot::dataAt(shown, oppositeCorner(selected)) + offset);
}

void PulsarGrafik::paintEvent(QPaintEvent * /*event*/)
{
    if (!Plot::isPainted(size()))
        return;
    const QSize pixels = size() * devicePixelRatioF();
    if (pictureIsStale || picture.size() != pixels)
        renewPicture();
    QPainter painter(this);
    painter.drawImage(0, 0, picture);
    if (!plotData.messageMode)
        Plot::paintSelection(painter, selected);
}

Plot::View PulsarGrafik::view() const
{
    return Plot::viewOf(plotData, size());
}

void PulsarGrafik::repaintPlot()
{
    pictureIsStale = true;
    update();
}

// Curves are painted in the widget's own pixels; where the screen has finer ones they are
// enlarged, and the texts are painted on top with all the pixels there are.
void PulsarGrafik::renewPicture()
{
    const qreal ratio = devicePixelRatioF();
    pictureIsStale = false;
    if (picture.size() != size() * ratio)
        picture = QImage(size() * ratio, QImage::Format_RGB32);
    if (ratio == 1) {
        Plot::paintPlot(plotData, QRect(), picture);
        return;
    }
    QImage curves(size(), QImage::Format_RGB32);
    Plot::paintCurves(plotData, curves);
    picture.setDevicePixelRatio(ratio);
    QPainter painter(&picture);
    painter.drawImage(rect(), curves);
    Plot::paintLabels(painter, plotData, size());
}
