#include "forms/arrays/arrayreading.h"

#include "app/busyguard.h"
#include "app/settings.h"
#include "calc/seriesstatistics.h"
#include "plot/plotdata.h"

#include <QCoreApplication>
#include <QPainter>
#include <QProgressBar>
#include <algorithm>
#include <cmath>

namespace ArrayReading {

NumberFile readShowingProgress(const QString &path)
{
    QProgressBar *const progressBar = Settings::instance()->progressBar();
    BusyGuard guard;
    bool isCancelled = false;
    QObject::connect(&guard, &BusyGuard::cancelRequested, &guard, [&] { isCancelled = true; });
    progressBar->setValue(0);
    progressBar->show();
    NumberFile file = Tools::readNumberFile(
        path, std::numeric_limits<qint64>::max(),
        [&](int percent) {
            progressBar->setValue(percent);
            QCoreApplication::processEvents();
        },
        [&] { return isCancelled; });
    progressBar->hide();
    return file;
}

bool firstColumnRises(const NumberTable &table)
{
    if (table.columns() < 2 || table.rows() < 2 || !std::isfinite(table.at(0, 0)))
        return false;
    for (qint64 row = 1; row < table.rows(); ++row) {
        if (!(table.at(row, 0) > table.at(row - 1, 0)))
            return false;
    }
    return true;
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

} // namespace ArrayReading
