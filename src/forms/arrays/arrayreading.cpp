#include "forms/arrays/arrayreading.h"

#include "app/shell/progresstask.h"
#include "calc/seriesstatistics.h"
#include "picture/plotdata.h"
#include "results/arrayfile.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>

namespace ArrayReading {

NumberFile readShowingProgress(const QString &path)
{
    ProgressTask task;
    return Results::readArrays(
        path, std::numeric_limits<qint64>::max(), [&](int percent) { task.advance(percent); },
        [&] { return task.isCancelled(); });
}

QImage smallPicture(const std::vector<double> &values, const QSize &size)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::white);
    const SeriesStatistics all = Tools::seriesStatistics(values);
    if (all.count == 0)
        return picture;
    const double extent = all.max > all.min ? all.max - all.min : 1;
    const int lastRow = size.height() - 1;
    const auto rowOf = [&](double value) {
        return lastRow - int((value - all.min) / extent * lastRow);
    };
    QPainter painter(&picture);
    painter.setPen(QColor(plotColour(0).code));
    const auto count = qint64(values.size());
    QPoint last(-1, 0);
    for (int x = 0; x < size.width(); ++x) {
        const qint64 begin = x * count / size.width();
        const qint64 end = std::max(begin + 1, (x + 1) * count / size.width());
        const auto [low, high] = std::minmax_element(values.begin() + begin, values.begin() + end);
        if (!std::isfinite(*low) || !std::isfinite(*high)) {
            last.setX(-1);
            continue;
        }
        painter.drawLine(x, rowOf(*low), x, rowOf(*high));
        const QPoint here(x, rowOf(*low));
        if (last.x() >= 0)
            painter.drawLine(last, here);
        last = here;
    }
    return picture;
}

QPixmap colourSquare(int curve)
{
    const int side = QFontMetrics(QApplication::font()).ascent();
    QPixmap square(side, side);
    square.fill(QColor(plotColour(curve).code));
    return square;
}

} // namespace ArrayReading
