#include "forms/profiles/optimiseview.h"

#include "forms/savefolder.h"
#include "picture/profileplot.h"
#include "plot/picturemenu.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

namespace {

const QColor markColour(255, 255, 255);

} // namespace

OptimiseView::OptimiseView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
    auto *const menu = new PictureMenu(this);
    menu->setDrawing([this] { return size(); }, [this](QPainter &painter) { draw(painter); });
    shareSaveFolder(menu);
}

void OptimiseView::setScan(std::shared_ptr<const Profiles::ProfileScan> next, const Place &now)
{
    scan = std::move(next);
    current = now;
    image = {};
    update();
}

void OptimiseView::showMessage(const QString &text)
{
    scan = nullptr;
    message = text;
    image = {};
    update();
}

std::optional<OptimiseView::Place> OptimiseView::placeAt(const QPointF &pixel) const
{
    const QRectF area = Plot::rowPictureArea(size());
    if (!scan || !area.contains(pixel))
        return {};
    const Plot::Range periods = Plot::scanEdges(scan->mapPeriods);
    const Plot::Range dispersions = Plot::scanEdges(scan->mapDispersions);
    return Place{periods.min + periods.extent() * (pixel.x() - area.left()) / area.width(),
                 dispersions.max - dispersions.extent() * (pixel.y() - area.top()) / area.height()};
}

void OptimiseView::draw(QPainter &painter) const
{
    if (!scan) {
        painter.fillRect(rect(), Qt::white);
        painter.setPen(Qt::black);
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, message);
        return;
    }
    const Plot::RowPicture picture = Plot::scanPicture(*scan, size());
    Plot::drawingOf(picture, size(), 1).draw(painter);
}

void OptimiseView::paintEvent(QPaintEvent * /*event*/)
{
    if (image.isNull()) {
        image = QImage(size() * devicePixelRatioF(), QImage::Format_RGB32);
        image.setDevicePixelRatio(devicePixelRatioF());
        QPainter painter(&image);
        painter.setFont(font());
        draw(painter);
    }
    QPainter painter(this);
    painter.drawImage(0, 0, image);
    if (!scan)
        return;
    const QRectF area = Plot::rowPictureArea(size());
    const Plot::Range periods = Plot::scanEdges(scan->mapPeriods);
    const Plot::Range dispersions = Plot::scanEdges(scan->mapDispersions);
    const double x = area.left() + (current.period - periods.min) / periods.extent() * area.width();
    const double y = area.bottom() -
                     (current.dispersion - dispersions.min) / dispersions.extent() * area.height();
    if (!area.contains(x, y))
        return;
    constexpr double arm = 8; // pixels
    painter.setPen(QPen(markColour, 1));
    painter.drawLine(QPointF(x - arm, y), QPointF(x + arm, y));
    painter.drawLine(QPointF(x, y - arm), QPointF(x, y + arm));
}

void OptimiseView::resizeEvent(QResizeEvent * /*event*/)
{
    image = {};
}

void OptimiseView::mousePressEvent(QMouseEvent *event)
{
    const std::optional<Place> place = placeAt(event->localPos());
    if (place && event->button() == Qt::LeftButton)
        emit taken(*place);
}

void OptimiseView::mouseMoveEvent(QMouseEvent *event)
{
    const std::optional<Place> place = placeAt(event->localPos());
    if (!place) {
        QToolTip::hideText();
        return;
    }
    QToolTip::showText(event->globalPos(),
                       QString("period %1 s\nDM %2 pc/cm^3\nA click takes them")
                           .arg(place->period, 0, 'g', 9)
                           .arg(place->dispersion, 0, 'f', 3),
                       this);
}
