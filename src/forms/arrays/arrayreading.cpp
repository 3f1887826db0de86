#include "forms/arrays/arrayreading.h"

#include "app/busyguard.h"
#include "app/settings.h"
#include "calc/seriesstatistics.h"
#include "forms/arrays/jsontable.h"
#include "picture/plotdata.h"

#include <QCoreApplication>
#include <QPainter>
#include <QProgressBar>
#include <algorithm>
#include <cmath>
#include <limits>

namespace ArrayReading {

NumberFile read(const QString &path, qint64 limit, const std::function<void(int)> &progress,
                const std::function<bool()> &cancelled)
{
    return isJson(path) ? readJsonTable(path, limit)
                        : Tools::readNumberFile(path, limit, progress, cancelled);
}

NumberFile readShowingProgress(const QString &path)
{
    QProgressBar *const progressBar = Settings::instance()->progressBar();
    BusyGuard guard;
    bool isCancelled = false;
    QObject::connect(&guard, &BusyGuard::cancelRequested, &guard, [&] { isCancelled = true; });
    progressBar->setValue(0);
    progressBar->show();
    NumberFile file = read(
        path, std::numeric_limits<qint64>::max(),
        [&](int percent) {
            progressBar->setValue(percent);
            QCoreApplication::processEvents();
        },
        [&] { return isCancelled; });
    progressBar->hide();
    return file;
}

namespace {

// Whether a column, which is not the last one, rises by more than that from row to row.
bool rises(const NumberTable &table, int column, double least)
{
    if (column + 1 >= table.columns() || table.rows() < 2 || !std::isfinite(table.at(0, column)))
        return false;
    for (qint64 row = 1; row < table.rows(); ++row) {
        if (!(table.at(row, column) - table.at(row - 1, column) > least))
            return false;
    }
    return true;
}

} // namespace

int xColumn(const NumberFile &file)
{
    if (!rises(file.table, 0, 0))
        return -1;
    // Neighbouring periods of a search may have equal texts.
    constexpr double orStays = -std::numeric_limits<double>::min();
    return file.columnNames.value(0) == "index" && rises(file.table, 1, orStays) ? 1 : 0;
}

std::vector<int> curveColumns(const NumberFile &file, int xColumn)
{
    std::vector<int> columns;
    for (int column = xColumn + 1; column < file.table.columns(); ++column) {
        if (!file.isText(column))
            columns.push_back(column);
    }
    return columns;
}

ArrayPlot::XAxis axisOf(const NumberFile &file, int column)
{
    if (column < 0)
        return {};
    return {columnName(file, column), file.table.column(column)};
}

ArrayPlot::XAxis axisOfRows(const NumberFile &file)
{
    if (file.rowAxis.step == 0)
        return {};
    ArrayPlot::XAxis x = {file.rowAxis.name, std::vector<double>(file.table.columns())};
    for (std::size_t i = 0; i < x.values.size(); ++i)
        x.values[i] = file.rowAxis.first + file.rowAxis.step * double(i);
    return x;
}

QString columnName(const NumberFile &file, int column)
{
    return file.columnNames.value(column, "column " + QString::number(column + 1));
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
