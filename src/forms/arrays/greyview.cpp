#include "forms/arrays/greyview.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Space around the picture for its numbers, in heights of the font.
constexpr int leftFonts = 4;
constexpr int bottomFonts = 2;
constexpr int noNumber = -1; // grey of a pixel without a number

// The numbers that a pixel holds, at least one.
struct Cells {
    qint64 begin;
    qint64 end;
};

Cells cellsOf(int pixel, int pixels, qint64 cells)
{
    const qint64 begin = pixel * cells / pixels;
    return {begin, std::max(begin + 1, (pixel + 1) * cells / pixels)};
}

double meanOf(const NumberTable &table, const Cells &across, const Cells &down)
{
    double sum = 0;
    qint64 count = 0;
    for (qint64 row = down.begin; row < down.end; ++row) {
        for (qint64 column = across.begin; column < across.end; ++column) {
            const double value = table.at(row, column);
            if (std::isfinite(value)) {
                sum += value;
                ++count;
            }
        }
    }
    return count > 0 ? sum / double(count) : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

GreyView::GreyView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void GreyView::setTable(const NumberTable *numbers)
{
    table = numbers;
    picture = QImage();
    update();
}

QRect GreyView::area() const
{
    const int unit = fontMetrics().height();
    return rect().adjusted(leftFonts * unit, unit, -unit, -bottomFonts * unit);
}

void GreyView::renewPicture(const QSize &size)
{
    std::vector<double> means;
    means.reserve(std::size_t(size.width()) * std::size_t(size.height()));
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int y = 0; y < size.height(); ++y) {
        const Cells down = cellsOf(y, size.height(), table->rows());
        for (int x = 0; x < size.width(); ++x) {
            const double mean = meanOf(*table, cellsOf(x, size.width(), table->columns()), down);
            means.push_back(mean);
            if (std::isfinite(mean)) {
                low = std::min(low, mean);
                high = std::max(high, mean);
            }
        }
    }
    picture = QImage(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto *const line = reinterpret_cast<QRgb *>(picture.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const double mean = means[std::size_t(y) * std::size_t(size.width()) + std::size_t(x)];
            const double part = high > low ? (mean - low) / (high - low) : 0.5;
            const int grey = std::isfinite(mean) ? int(std::lround(part * 255)) : noNumber;
            line[x] = grey == noNumber ? qRgb(160, 0, 32) : qRgb(grey, grey, grey);
        }
    }
}

void GreyView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect place = area();
    if (!table || table->count() == 0 || place.width() < 1 || place.height() < 1)
        return;
    if (picture.size() != place.size())
        renewPicture(place.size());
    painter.drawImage(place.topLeft(), picture);

    constexpr int labels = 5;
    const int unit = fontMetrics().height();
    for (int i = 0; i < labels; ++i) {
        const int y = place.top() + i * (place.height() - 1) / (labels - 1);
        const int x = place.left() + i * (place.width() - 1) / (labels - 1);
        const auto row = cellsOf(y - place.top(), place.height(), table->rows()).begin;
        const auto column = cellsOf(x - place.left(), place.width(), table->columns()).begin;
        painter.drawText(QRect(0, y - unit / 2, place.left() - unit / 2, unit),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(row));
        const QString text = QString::number(column);
        const int width = fontMetrics().horizontalAdvance(text);
        painter.drawText(std::min(x - width / 2, rect().right() - width),
                         place.bottom() + unit + unit / 4, text);
    }
}

void GreyView::mouseMoveEvent(QMouseEvent *event)
{
    const QRect place = area();
    if (!table || table->count() == 0 || !place.contains(event->pos()))
        return;
    const QPoint pixel = event->pos() - place.topLeft();
    const auto row = cellsOf(pixel.y(), place.height(), table->rows()).begin;
    const auto column = cellsOf(pixel.x(), place.width(), table->columns()).begin;
    emit pointed(row, column, table->at(row, column));
}
