#include "forms/native/waterfallview.h"

#include "picture/axislabels.h"
#include "picture/colourbar.h"
#include "picture/percentiles.h"
#include "picture/plotpainter.h"
#include "plot/handon.h"
#include "plot/pulsargrafik.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr int marginTop = 18;
constexpr int marginBottom = 6;
constexpr int labelDistance = 36; // pixels
constexpr int barWidth = 8;       // pixels, of the colour scale

// MHz, in the room that the left margin has.
QString frequencyText(double frequency)
{
    return QString::number(frequency, 'f', frequency < 1000 ? 2 : 1);
}

} // namespace

WaterfallView::WaterfallView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void WaterfallView::setFrequencies(const std::vector<double> &fbands, int bands)
{
    bandOfRow.resize(std::size_t(std::max(bands, 0)));
    std::iota(bandOfRow.rbegin(), bandOfRow.rend(), 0);
    frequencies = fbands.size() >= bandOfRow.size() ? fbands : std::vector<double>();
    if (!frequencies.empty())
        std::stable_sort(bandOfRow.begin(), bandOfRow.end(), [this](int a, int b) {
            return frequencies[std::size_t(a)] > frequencies[std::size_t(b)];
        });
    update();
}

void WaterfallView::setPicture(Picture next)
{
    picture = std::move(next);
    findScale();
    renewImage();
}

void WaterfallView::setPart(double first, double points)
{
    visibleFirst = first;
    visiblePoints = points;
    update();
}

void WaterfallView::setScale(float low, float high)
{
    wantedLowest = low;
    wantedHighest = high;
    findScale();
    renewImage();
}

void WaterfallView::setPercentiles(bool byPercentiles)
{
    usesPercentiles = byPercentiles;
    findScale();
    renewImage();
}

void WaterfallView::setGrey(bool grey)
{
    isGrey = grey;
    renewImage();
}

void WaterfallView::findScale()
{
    lowest = wantedLowest;
    highest = wantedHighest;
    if (!usesPercentiles)
        return;
    constexpr double lowShare = 0.01;
    constexpr double highShare = 0.995;
    const std::vector<float> limits = Plot::percentiles(picture.values, {lowShare, highShare});
    if (limits.empty())
        return;
    lowest = limits[0];
    highest = limits[1];
}

int WaterfallView::pictureWidth() const
{
    return std::max(1, area().width());
}

QRect WaterfallView::area() const
{
    return {Plot::marginLeft, marginTop, width() - Plot::marginLeft - Plot::marginRight,
            height() - marginTop - marginBottom};
}

// One pixel per value; painting enlarges it.
void WaterfallView::renewImage()
{
    update();
    if (picture.rows != int(bandOfRow.size()) || picture.columns < 1) {
        image = QImage();
        return;
    }
    if (image.size() != QSize(picture.columns, picture.rows))
        image = QImage(picture.columns, picture.rows, QImage::Format_RGB32);
    const Plot::ColourMap &map = colours();
    for (int row = 0; row < picture.rows; ++row) {
        const float *const values =
            picture.values.data() + qint64(bandOfRow[std::size_t(row)]) * picture.columns;
        auto *const pixels = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int i = 0; i < picture.columns; ++i)
            pixels[i] = Plot::colourOfValue(values[i], lowest, highest, map);
    }
}

void WaterfallView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    paintPicture(painter);
}

void WaterfallView::paintPicture(QPainter &painter) const
{
    painter.fillRect(rect(), Qt::white);
    const QRect inner = area();
    if (inner.width() < 2 || inner.height() < 2)
        return;
    if (!image.isNull() && visiblePoints > 0) {
        const double perPoint = inner.width() / visiblePoints;
        const QRectF target(inner.left() + (picture.first - visibleFirst) * perPoint, inner.top(),
                            picture.points * perPoint, inner.height());
        painter.setClipRect(inner);
        painter.drawImage(target, image);
        painter.setClipping(false);
    }
    painter.setPen(Qt::black);
    painter.drawRect(inner.adjusted(-1, -1, 0, 0));
    paintLabels(painter);
}

void WaterfallView::paintLabels(QPainter &painter) const
{
    const QRect inner = area();
    constexpr int leastFont = 9; // pixels
    constexpr int mostFont = 15; // the left margin holds no more
    painter.setFont(Plot::fontWithin(font(), leastFont, mostFont));
    const auto rightAligned = [&](int y, const QString &text) {
        painter.drawText(QRect(0, y - 8, inner.left() - 5, 16), Qt::AlignRight | Qt::AlignVCenter,
                         text);
    };
    painter.drawText(QRect(4, 0, inner.width(), marginTop), Qt::AlignLeft | Qt::AlignVCenter,
                     frequencies.empty() ? "channel" : "MHz");
    const int rows = int(bandOfRow.size());
    const double rowHeight = double(inner.height()) / std::max(rows, 1);
    const int every = std::max(1, int(std::ceil(labelDistance / rowHeight)));
    for (int row = 0; row < rows; row += every) {
        const int band = bandOfRow[std::size_t(row)];
        rightAligned(inner.top() + int((row + 0.5) * rowHeight),
                     frequencies.empty() ? QString::number(band + 1)
                                         : frequencyText(frequencies[std::size_t(band)]));
    }

    paintScale(painter);
}

void WaterfallView::paintScale(QPainter &painter) const
{
    const QRect inner = area();
    const QRect bar(width() - Plot::marginRight + 5, inner.top(), barWidth, inner.height());
    Plot::paintColourBar(painter, bar, colours());
    painter.setPen(Qt::black);
    painter.drawRect(bar.adjusted(-1, -1, 0, 0));
    const auto number = [](float value) { return QString::number(double(value), 'g', 3); };
    const QString scale = QString("%1 to %2 sigma").arg(number(lowest), number(highest));
    painter.drawText(QRect(inner.left(), 0, width() - inner.left() - 4, marginTop),
                     Qt::AlignRight | Qt::AlignVCenter, scale);
}

QSize WaterfallView::sizeWithAxis() const
{
    return plot ? size() + QSize(0, Plot::marginBottom - marginBottom) : size();
}

// The rows of texts are those that the plot has below.
void WaterfallView::drawWithAxis(QPainter &painter) const
{
    const QSize whole = sizeWithAxis();
    painter.fillRect(QRect(QPoint(0, 0), whole), Qt::white);
    paintPicture(painter);
    if (!plot)
        return;
    const PulsarGrafik::VisibleRange range = plot->visibleRange();
    Plot::View view = Plot::viewOf(plot->data(), whole,
                                   {Plot::Range{range.first, range.first + range.points}, {}});
    view.isZoomed = true; // round values, whether or not all is shown
    Plot::paintXAxis(painter, plot->data(), view, area().bottom() + 1);
}

void WaterfallView::mousePressEvent(QMouseEvent *event)
{
    if (!plot)
        return;
    plot->setFocus(Qt::MouseFocusReason); // its keys work after a click here too
    Plot::handOn(*event, *plot, 0);
}

void WaterfallView::mouseMoveEvent(QMouseEvent *event)
{
    if (plot)
        Plot::handOn(*event, *plot, 1); // the cursors' keys need the place of the pointer
    if (event->buttons() != Qt::NoButton)
        return;
    const QRect inner = area();
    if (image.isNull() || !inner.contains(event->pos()))
        return;
    const double point =
        visibleFirst + (event->localPos().x() - inner.left()) * visiblePoints / inner.width();
    const int row =
        std::clamp((event->y() - inner.top()) * picture.rows / inner.height(), 0, picture.rows - 1);
    const int column = int((point - picture.first) / picture.points * picture.columns);
    if (column < 0 || column >= picture.columns)
        return;
    const int band = bandOfRow[std::size_t(row)];
    emit pointed(
        point, band,
        picture.values[std::size_t(band) * std::size_t(picture.columns) + std::size_t(column)]);
}

void WaterfallView::mouseReleaseEvent(QMouseEvent *event)
{
    if (plot)
        Plot::handOn(*event, *plot, 1);
}

void WaterfallView::wheelEvent(QWheelEvent *event)
{
    if (plot)
        Plot::handOn(*event, *plot);
}
