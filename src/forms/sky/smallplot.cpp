#include "forms/sky/smallplot.h"

#include "forms/smallaxis.h"
#include "picture/plotdata.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace {

constexpr int left = 36; // pixels around the curves
constexpr int right = 8;
constexpr int top = 17;
constexpr int bottom = 17;
const QColor markColour(230, 110, 0);
const QColor pointerColour(0, 128, 0);

Plot::Range rangeOf(const std::vector<SmallPlot::Curve> &curves)
{
    Plot::Range range{0, 1};
    for (const SmallPlot::Curve &curve : curves) {
        for (const double value : curve.values) {
            if (std::isfinite(value)) {
                range.min = std::min(range.min, value);
                range.max = std::max(range.max, value);
            }
        }
    }
    return range;
}

Plot::Range widthOf(const SmallPlot::Content &content)
{
    Plot::Range x{content.x.front(), content.x.back()};
    if (content.isSteps && content.x.size() > 1)
        x.max += content.x[1] - content.x[0];
    if (!(x.max > x.min))
        x = {x.min - 1, x.min + 1};
    return x;
}

} // namespace

SmallPlot::SmallPlot(const QString &emptyTitle, QWidget *parent)
    : QWidget(parent), message(emptyTitle)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMouseTracking(true);
}

void SmallPlot::setContent(Content next)
{
    content = std::move(next);
    message.clear();
    update();
}

void SmallPlot::showMessage(const QString &text)
{
    content = {};
    message = text;
    update();
}

void SmallPlot::setPointer(std::optional<double> x)
{
    pointer = x;
    update();
}

void SmallPlot::mouseMoveEvent(QMouseEvent *event)
{
    if (content.x.empty() || !lastFrame.contains(event->pos())) {
        emit pointed(std::nullopt);
        return;
    }
    const Plot::Range x = widthOf(content);
    emit pointed(x.min + (event->x() - lastFrame.left()) * x.extent() / lastFrame.width());
}

void SmallPlot::leaveEvent(QEvent *event)
{
    emit pointed(std::nullopt);
    QWidget::leaveEvent(event);
}

void SmallPlot::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    QFont small = font();
    small.setPixelSize(11);
    painter.setFont(small);
    painter.setPen(Qt::black);
    const QString title = content.x.empty() ? message : content.title;
    painter.drawText(QRect(4, 0, width() - 8, top), Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(title, Qt::ElideRight, width() - 8));
    if (content.x.empty())
        return;
    const QRect frame = rect().adjusted(left, top + paintNames(painter), -right, -bottom);
    if (frame.width() < 10 || frame.height() < 10)
        return;
    lastFrame = frame;
    painter.setPen(Qt::black);
    paintFrame(painter, frame);
    paintCurves(painter, frame);
}

// Below the title and above the curves, in the colours of their curves.
//
// @return pixels that they take
int SmallPlot::paintNames(QPainter &painter) const
{
    constexpr int gap = 10; // between two names
    const int lineHeight = painter.fontMetrics().height();
    int x = 4;
    int y = 0;
    for (std::size_t i = 0; i < content.curves.size(); ++i) {
        const QString &name = content.curves[i].name;
        const int wide = painter.fontMetrics().horizontalAdvance(name);
        if (name.isEmpty())
            continue;
        if (y == 0 || x + wide > width() - 4) {
            x = 4;
            y += lineHeight;
        }
        painter.setPen(QColor(plotColour(int(i)).code));
        painter.drawText(QRect(x, top + y - lineHeight, wide + 1, lineHeight), Qt::AlignLeft, name);
        x += wide + gap;
    }
    return y;
}

void SmallPlot::paintFrame(QPainter &painter, const QRect &frame) const
{
    const Plot::Range y = rangeOf(content.curves);
    const Plot::Range x = widthOf(content);
    painter.drawRect(frame);
    const auto number = [](double value) { return QString::number(value, 'g', 3); };
    painter.drawText(QRect(0, frame.top() - 1, left - 3, 16), Qt::AlignRight | Qt::AlignTop,
                     number(y.max));
    painter.drawText(QRect(0, frame.bottom() - 8, left - 3, 16), Qt::AlignRight | Qt::AlignVCenter,
                     number(y.min));
    paintSmallAxis(painter, frame, x, content.xName, bottom);
}

void SmallPlot::paintCurves(QPainter &painter, const QRect &frame) const
{
    const Plot::Range y = rangeOf(content.curves);
    const Plot::Range x = widthOf(content);
    const auto place = [&](double at, double value) {
        return QPointF(frame.left() + (at - x.min) / x.extent() * frame.width(),
                       frame.bottom() - (value - y.min) / y.extent() * frame.height());
    };
    if (content.hasMark) {
        painter.setPen(markColour);
        painter.drawLine(place(content.mark, y.min), place(content.mark, y.max));
    }
    if (pointer && *pointer >= x.min && *pointer <= x.max) {
        painter.setPen(pointerColour);
        painter.drawLine(place(*pointer, y.min), place(*pointer, y.max));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (std::size_t i = 0; i < content.curves.size(); ++i) {
        const Curve &curve = content.curves[i];
        const QColor colour(plotColour(int(i)).code);
        painter.setPen(QPen(colour, 1.2));
        QPolygonF line;
        for (std::size_t at = 0; at < std::min(curve.values.size(), content.x.size()); ++at) {
            if (!std::isfinite(curve.values[at]))
                continue;
            line << place(content.x[at], curve.values[at]);
            if (content.isSteps && content.x.size() > 1)
                line << place(content.x[at] + content.x[1] - content.x[0], curve.values[at]);
            else
                painter.drawEllipse(line.back(), 1.5, 1.5);
        }
        painter.drawPolyline(line);
    }
}
