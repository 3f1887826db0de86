#include "forms/pulsar/bandview.h"

#include "forms/savefolder.h"
#include "picture/colourbar.h"
#include "picture/plotgeometry.h"
#include "picture/plotpainter.h"
#include "picture/resultplot.h"
#include "picture/rowpicture.h"
#include "plot/handon.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

constexpr int marginTop = 18;
constexpr int marginBottom = 6;
constexpr int leastFont = 9; // pixels
constexpr int mostFont = 15; // the left margin holds no more
constexpr int barWidth = 8;  // of the scale of colours

} // namespace

BandView::BandView(PulsarGrafik *plotBelow, QWidget *parent) : QWidget(parent), plot(plotBelow)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    connect(plot, &PulsarGrafik::viewChanged, this, qOverload<>(&QWidget::update));
    auto *const menu = new PictureMenu(this);
    menu->setDrawing(
        [this] { return QSize(width(), height() + plot->height()); },
        [this](QPainter &painter) {
            const Plot::RowPicture picture = Plot::bandPicture(*fold);
            Plot::drawingOf(picture, QSize(width(), height() + plot->height()), 1).draw(painter);
        });
    shareSaveFolder(menu);
    hide();
}

void BandView::showFold(std::shared_ptr<const BandFold> newFold)
{
    fold = std::move(newFold);
    setVisible(fold != nullptr);
    if (!fold)
        return;
    order = Plot::bandsFromHighest(*fold);
    std::tie(low, high) = Plot::bandRange(*fold);
    update();
}

QRect BandView::area() const
{
    return {Plot::marginLeft, marginTop, width() - Plot::marginLeft - Plot::marginRight,
            height() - marginTop - marginBottom};
}

// The bin of the plot's axis at a pixel.
double BandView::binAt(double x) const
{
    const PulsarGrafik::VisibleRange shown = plot->visibleRange();
    return shown.first + (x - area().left()) * shown.points / std::max(1, area().width());
}

QImage BandView::image() const
{
    QImage colours(area().width(), fold->bands(), QImage::Format_RGB32);
    for (int row = 0; row < fold->bands() && !colours.isNull(); ++row) {
        const float *const values =
            fold->values.data() + std::ptrdiff_t(order[std::size_t(row)]) * fold->bins;
        auto *const pixels = reinterpret_cast<QRgb *>(colours.scanLine(row));
        for (int x = 0; x < colours.width(); ++x) {
            const int bin = std::clamp(int(binAt(area().left() + x + 0.5)), 0, fold->bins - 1);
            pixels[x] = Plot::colourOfValue(values[bin], low, high);
        }
    }
    return colours;
}

void BandView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect inner = area();
    if (!fold || inner.width() < 2 || inner.height() < 2)
        return;
    painter.setFont(Plot::fontWithin(font(), leastFont, mostFont));
    const int textHeight = painter.fontMetrics().height();
    painter.drawImage(inner, image());
    painter.setPen(Qt::black);
    painter.drawRect(inner.adjusted(-1, -1, 0, 0));
    const double rowHeight = double(inner.height()) / fold->bands();
    const int every = std::max(1, int(std::ceil(textHeight / rowHeight)));
    for (int row = 0; row < fold->bands(); row += every) {
        const int y = inner.top() + int((row + 0.5) * rowHeight);
        const double frequency = fold->frequencies[std::size_t(order[std::size_t(row)])];
        painter.drawText(QRect(0, y - textHeight / 2, inner.left() - 4, textHeight),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(frequency, 'g', 6));
    }
    Plot::paintColourBar(painter,
                         {width() - Plot::marginRight + 5, inner.top(), barWidth, inner.height()});
    const QRect line(4, 0, width() - 8, marginTop);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, "MHz");
    painter.drawText(
        line, Qt::AlignRight | Qt::AlignVCenter,
        QString("%1 to %2 sigma").arg(double(low), 0, 'f', 2).arg(double(high), 0, 'f', 2));
}

void BandView::mouseMoveEvent(QMouseEvent *event)
{
    Plot::handOn(*event, *plot, 1); // the cursors' keys need the place of the pointer
    const QRect inner = area();
    if (!fold || !inner.contains(event->pos())) {
        QToolTip::hideText();
        return;
    }
    const int row = std::clamp((event->y() - inner.top()) * fold->bands() / inner.height(), 0,
                               fold->bands() - 1);
    const int band = order[std::size_t(row)];
    const int bin = std::clamp(int(binAt(event->localPos().x())), 0, fold->bins - 1);
    const auto value = double(fold->profile(band)[std::size_t(bin)]);
    QToolTip::showText(event->globalPos(),
                       QString("band %1, %2 MHz\nphase %3: %4")
                           .arg(band + 1)
                           .arg(fold->frequencies[std::size_t(band)], 0, 'g', 7)
                           .arg(double(bin) / fold->bins, 0, 'f', 3)
                           .arg(std::isfinite(value) ? QString("%1 sigma").arg(value, 0, 'f', 2)
                                                     : QString("left out, or without noise")),
                       this);
}

void BandView::wheelEvent(QWheelEvent *event)
{
    Plot::handOn(*event, *plot);
}
