#include "forms/smallaxis.h"

#include "picture/ticks.h"

#include <QPainter>
#include <algorithm>

void paintSmallAxis(QPainter &painter, const QRect &frame, const Plot::Range &x,
                    const QString &name, int room)
{
    constexpr int tickDistance = 60; // pixels
    const int nameWidth = painter.fontMetrics().horizontalAdvance(name);
    painter.drawText(QRect(frame.left(), frame.bottom() + 1, frame.width(), room - 2),
                     Qt::AlignRight | Qt::AlignVCenter, name);
    const Plot::Ticks ticks =
        Plot::roundTicks(x.min, x.max, x.extent() / std::max(1, frame.width() / tickDistance));
    for (const double tick : ticks.values) {
        const QString text = Plot::tickText(tick, ticks.step);
        const int width = painter.fontMetrics().horizontalAdvance(text);
        const int place = frame.left() + int((tick - x.min) / x.extent() * frame.width());
        painter.drawLine(place, frame.bottom(), place, frame.bottom() + 3);
        if (place + width / 2 < frame.right() - nameWidth - 6)
            painter.drawText(place - width / 2, frame.bottom() + room - 4, text);
    }
}
