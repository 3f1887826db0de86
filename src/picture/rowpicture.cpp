#include "picture/rowpicture.h"

#include "picture/colourbar.h"
#include "picture/ticks.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>

namespace Plot {

namespace {

constexpr int left = 150; // pixels, room for a date with a time
constexpr int right = 70;
constexpr int top = 30;
constexpr int bottom = 50;
constexpr int barWidth = 10;
constexpr int labelHeight = 16;
constexpr int labelEvery = 80; // pixels along X, at least

const ColourMap &mapOf(const RowPicture &picture)
{
    return picture.isGrey ? greyMap() : colourMap();
}

QImage imageOf(const RowPicture &picture)
{
    QImage image(picture.columns, picture.rows, QImage::Format_RGB32);
    for (int row = 0; row < picture.rows && !image.isNull(); ++row) {
        const float *const values = picture.values.data() + qint64(row) * picture.columns;
        auto *const pixels = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int i = 0; i < picture.columns; ++i)
            pixels[i] = colourOfValue(values[i], picture.low, picture.high, mapOf(picture));
    }
    return image;
}

void drawRowNames(QPainter &painter, const RowPicture &picture, const QRect &area)
{
    const double rowHeight = double(area.height()) / std::max(1, picture.rows);
    const int every = std::max(1, int(std::ceil(labelHeight / rowHeight)));
    for (int row = 0; row < picture.rows && row < picture.rowNames.size(); row += every) {
        const int y = area.top() + int((row + 0.5) * rowHeight);
        painter.drawText(QRect(0, y - labelHeight / 2, area.left() - 5, labelHeight),
                         Qt::AlignRight | Qt::AlignVCenter, picture.rowNames[row]);
    }
}

void drawAxis(QPainter &painter, const RowPicture &picture, const QRect &area)
{
    const double range = picture.lastX - picture.firstX;
    const double leastStep = range / std::max(1, area.width() / labelEvery);
    for (const double value : roundTicks(picture.firstX, picture.lastX, leastStep).values) {
        const int x = area.left() + int((value - picture.firstX) / range * area.width());
        painter.drawLine(x, area.bottom() + 1, x, area.bottom() + 5);
        painter.drawText(QRect(x - labelEvery / 2, area.bottom() + 6, labelEvery, labelHeight),
                         Qt::AlignHCenter,
                         picture.xText ? picture.xText(value) : QString::number(value, 'g', 6));
    }
    painter.drawText(QRect(area.left(), area.bottom() + 8 + labelHeight, area.width(), labelHeight),
                     Qt::AlignHCenter, picture.xName);
}

void drawScale(QPainter &painter, const RowPicture &picture, const QRect &area)
{
    const QRect bar(area.right() + 8, area.top(), barWidth, area.height());
    paintColourBar(painter, bar, mapOf(picture));
    const QRect beside(bar.right() + 4, bar.top(), right, bar.height());
    painter.drawText(beside, Qt::AlignTop, QString::number(double(picture.high)));
    painter.drawText(beside, Qt::AlignBottom, QString::number(double(picture.low)));
    painter.drawText(beside, Qt::AlignVCenter, picture.scaleName);
}

} // namespace

std::vector<float> columnMaxima(const std::vector<float> &values, int columns)
{
    std::vector<float> maxima(std::size_t(std::max(0, columns)),
                              std::numeric_limits<float>::quiet_NaN());
    const qint64 count = qint64(values.size());
    for (int column = 0; column < columns && count > 0; ++column) {
        const qint64 begin = column * count / columns;
        const qint64 end = std::max(begin + 1, (column + 1) * count / columns);
        float &most = maxima[std::size_t(column)];
        for (qint64 i = begin; i < end; ++i) {
            const float value = values[std::size_t(i)];
            if (!(value <= most) && !std::isnan(value))
                most = value;
        }
    }
    return maxima;
}

QRect rowPictureArea(const QSize &size)
{
    return {left, top, std::max(2, size.width() - left - right),
            std::max(2, size.height() - top - bottom)};
}

int columnsOf(const QSize &size)
{
    return rowPictureArea(size).width();
}

Drawing drawingOf(const RowPicture &picture, const QSize &size, int pngScale)
{
    const auto draw = [&picture, size](QPainter &painter) {
        const QRect area = rowPictureArea(size);
        painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
        painter.drawImage(area, imageOf(picture));
        painter.setPen(Qt::black);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(area.adjusted(-1, -1, 0, 0));
        QFont small = painter.font();
        small.setPixelSize(12);
        painter.setFont(small);
        painter.drawText(QRect(area.left(), 0, area.width(), top), Qt::AlignVCenter, picture.title);
        drawRowNames(painter, picture, area);
        painter.drawText(QRect(0, area.bottom() + 6, area.left() - 6, labelHeight), Qt::AlignRight,
                         picture.rowsName);
        drawAxis(painter, picture, area);
        drawScale(painter, picture, area);
    };
    return {size, picture.title, draw, picture.key, pngScale};
}

} // namespace Plot
