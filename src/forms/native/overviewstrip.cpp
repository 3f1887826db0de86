#include "forms/native/overviewstrip.h"

#include "picture/plotgeometry.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace {

constexpr double zoomPerNotch = 1.25;
constexpr double unitsPerNotch = 120;
constexpr double panStep = 0.1; // of the part in sight
constexpr int edge = 4;         // pixels above and below the curve

} // namespace

OverviewStrip::OverviewStrip(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void OverviewStrip::setExtremes(std::vector<float> low, std::vector<float> high)
{
    lows = std::move(low);
    highs = std::move(high);
    update();
}

void OverviewStrip::setPart(double first, double points)
{
    visibleFirst = first;
    visiblePoints = points;
    update();
}

QRect OverviewStrip::area() const
{
    return {Plot::marginLeft, 1, std::max(1, width() - Plot::marginLeft - Plot::marginRight),
            height() - 2};
}

double OverviewStrip::pointAt(double x) const
{
    return (x - area().left()) / area().width() * npoints;
}

void OverviewStrip::want(double first, double points)
{
    points = std::clamp(points, std::min(Plot::fewestPoints, double(npoints)), double(npoints));
    emit rangeWanted(std::clamp(first, 0.0, npoints - points), points);
}

void OverviewStrip::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    const QRect inner = area();
    painter.fillRect(rect(), Qt::white);
    painter.setPen(QColor(200, 200, 200));
    painter.drawRect(inner.adjusted(-1, 0, 0, -1));

    const int columns = int(std::min(lows.size(), highs.size()));
    float least = 0;
    float greatest = 0;
    bool isFirst = true;
    for (int i = 0; i < columns; ++i) {
        if (!std::isfinite(lows[std::size_t(i)]) || !std::isfinite(highs[std::size_t(i)]))
            continue;
        least = isFirst ? lows[std::size_t(i)] : std::min(least, lows[std::size_t(i)]);
        greatest = isFirst ? highs[std::size_t(i)] : std::max(greatest, highs[std::size_t(i)]);
        isFirst = false;
    }
    const double extent = greatest > least ? double(greatest) - least : 1;
    const auto row = [&](float value) {
        return inner.bottom() - edge -
               (double(value) - least) / extent * (inner.height() - 2 * edge);
    };
    painter.setPen(QColor("#0000FF"));
    for (int x = 0; x < inner.width() && columns > 0; ++x) {
        const int begin = int(qint64(x) * columns / inner.width());
        const int end = std::max(begin + 1, int(qint64(x + 1) * columns / inner.width()));
        const float low = *std::min_element(lows.begin() + begin, lows.begin() + end);
        const float high = *std::max_element(highs.begin() + begin, highs.begin() + end);
        if (std::isfinite(low) && std::isfinite(high))
            painter.drawLine(QPointF(inner.left() + x, row(low)),
                             QPointF(inner.left() + x, row(high)));
    }

    const double perPoint = double(inner.width()) / npoints;
    const double left = inner.left() + visibleFirst * perPoint;
    const QRectF box(left, inner.top(), std::max(3.0, visiblePoints * perPoint),
                     inner.height() - 1);
    painter.setPen(hasFocus() ? QColor(0, 50, 200) : QColor(90, 90, 90));
    painter.setBrush(QColor(0, 50, 200, 30));
    painter.drawRect(box);
}

void OverviewStrip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const double point = pointAt(event->localPos().x());
    const bool isInside = point >= visibleFirst && point <= visibleFirst + visiblePoints;
    grabbedAt = isInside ? point - visibleFirst : visiblePoints / 2;
    if (!isInside)
        want(point - grabbedAt, visiblePoints);
}

void OverviewStrip::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        want(pointAt(event->localPos().x()) - grabbedAt, visiblePoints);
}

void OverviewStrip::mouseDoubleClickEvent(QMouseEvent * /*event*/)
{
    want(0, npoints);
}

void OverviewStrip::wheelEvent(QWheelEvent *event)
{
    const double factor = std::pow(zoomPerNotch, -event->angleDelta().y() / unitsPerNotch);
    const double anchor =
        std::clamp(pointAt(event->position().x()), visibleFirst, visibleFirst + visiblePoints);
    const double points = std::min(double(npoints), visiblePoints * factor);
    want(anchor - (anchor - visibleFirst) * points / visiblePoints, points);
    event->accept();
}

void OverviewStrip::keyPressEvent(QKeyEvent *event)
{
    const double middle = visibleFirst + visiblePoints / 2;
    switch (event->key()) {
    case Qt::Key_Left:
        return want(visibleFirst - panStep * visiblePoints, visiblePoints);
    case Qt::Key_Right:
        return want(visibleFirst + panStep * visiblePoints, visiblePoints);
    case Qt::Key_PageUp:
        return want(visibleFirst - visiblePoints, visiblePoints);
    case Qt::Key_PageDown:
        return want(visibleFirst + visiblePoints, visiblePoints);
    case Qt::Key_Up:
        return want(middle - visiblePoints / zoomPerNotch / 2, visiblePoints / zoomPerNotch);
    case Qt::Key_Down:
        return want(middle - visiblePoints * zoomPerNotch / 2, visiblePoints * zoomPerNotch);
    case Qt::Key_Home:
        return want(0, npoints);
    default:
        QWidget::keyPressEvent(event);
    }
}
