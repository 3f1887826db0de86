#include "forms/sky/mapview.h"

#include "picture/plotgeometry.h"
#include "picture/plotmarks.h"
#include "plot/handon.h"
#include "plot/pulsargrafik.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace {

const QColor harmonicsColour(230, 110, 0);
const QColor rectangleColour(0, 50, 200, 100);
constexpr int cellReach = 6; // pixels from a cell to the mark around it

} // namespace

MapView::MapView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void MapView::setPlot(PulsarGrafik *plotBelow)
{
    plot = plotBelow;
    plot->installEventFilter(this);
    connect(plot, &PulsarGrafik::viewChanged, this, &MapView::followPlot);
    connect(plot, &PulsarGrafik::fundamentalChanged, this, qOverload<>(&QWidget::update));
    connect(plot, &PulsarGrafik::selectionChanged, this, [this] {
        if (hasRectangle && !plot->selectedRange()) {
            hasRectangle = false;
            update();
        }
    });
}

void MapView::setPicture(Plot::MapPicture next)
{
    const bool isSame = !next.isEmpty() && !shown.isEmpty() && next.allRows() == shown.allRows() &&
                        next.map().columns == shown.map().columns;
    if (isSame) {
        next.columns = shown.columns;
        next.firstRow = shown.firstRow;
        next.rowCount = shown.rowCount;
    } else {
        rowsBefore.clear();
        hasRectangle = false;
    }
    shown = std::move(next);
    renew();
}

void MapView::setColumns(const Plot::Range &columns)
{
    if (shown.isEmpty())
        return;
    const Plot::Range all{0, double(shown.map().columns)};
    shown.columns = Plot::within(columns, all, Plot::fewestPoints);
    renew();
}

void MapView::setCell(const Plot::MapPlace &place)
{
    chosen = place;
    update();
}

void MapView::setWantedSize(const QSize &size)
{
    constexpr int most = QWIDGETSIZE_MAX;
    setMinimumSize(size.width(), size.height());
    setMaximumSize(size.width() > 0 ? size.width() : most,
                   size.height() > 0 ? size.height() : most);
    renew();
}

void MapView::renew()
{
    isStale = true;
    update();
}

// The columns of the map are the points of the plot, once it shows a stack.
void MapView::followPlot()
{
    if (shown.isEmpty() || plot->data().messageMode ||
        plot->data().numPoints != shown.map().columns)
        return;
    const PulsarGrafik::VisibleRange range = plot->visibleRange();
    shown.columns = {range.first, range.first + range.points};
    renew();
}

void MapView::showRows(const Rows &rows)
{
    const int all = shown.isEmpty() ? 0 : shown.allRows();
    shown.rowCount = std::clamp(rows.count, std::min(1, all), all);
    shown.firstRow = std::clamp(rows.first, 0, all - shown.rowCount);
    renew();
}

std::optional<Plot::MapPlace> MapView::placeAt(const QPointF &pixel) const
{
    if (shown.isEmpty() || shown.map().columns == 0)
        return {};
    return Plot::mapPlaceAt(shown, size(), pixel);
}

// Where the plot has the column of a pixel; its edges beyond a panel.
double MapView::plotPixel(const QPointF &pixel) const
{
    const std::vector<QRect> areas = Plot::mapAreas(shown, size());
    const int panel = pressed ? pressed->panel : 0;
    const QRect area = areas.empty() ? rect() : areas[std::size_t(panel)];
    double share = (pixel.x() - area.left()) / std::max(1, area.width());
    if (const std::optional<Plot::MapPlace> place = placeAt(pixel); place && !pressed)
        share = (place->column - shown.columns.min) / shown.columns.extent();
    const int inner = plot->width() - Plot::marginLeft - Plot::marginRight;
    return Plot::marginLeft + std::clamp(share, 0.0, 1.0) * inner;
}

void MapView::resizeEvent(QResizeEvent * /*event*/)
{
    renew();
}

void MapView::paintEvent(QPaintEvent * /*event*/)
{
    if (isStale) {
        const qreal ratio = devicePixelRatioF();
        image = QImage(size() * ratio, QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        QPainter onImage(&image);
        Plot::paintMap(onImage, shown, size());
        isStale = false;
    }
    QPainter painter(this);
    painter.drawImage(0, 0, image);
    paintOverlays(painter);
}

void MapView::paintOverlays(QPainter &painter) const
{
    if (shown.isEmpty())
        return;
    paintHarmonics(painter);
    paintMarkers(painter);
    painter.setBrush(Qt::NoBrush);
    const Plot::MapPlace from{chosen.panel, chosen.row, std::floor(chosen.column)};
    const QRectF cell = Plot::mapPixels(shown, size(), from, from.column + 1);
    if (!cell.isEmpty()) {
        const QRectF around = cell.adjusted(-cellReach, -2, cellReach, 2);
        painter.setPen(QPen(Qt::black, 3));
        painter.drawRect(around);
        painter.setPen(QPen(Qt::white, 1));
        painter.drawRect(around);
    }
    if (!hasRectangle || !pressed)
        return;
    const int low = std::min(pressed->row, released.row);
    const int high = std::max(pressed->row, released.row);
    const double left = std::min(pressed->column, released.column);
    const double right = std::max(pressed->column, released.column);
    const QRectF bottom = Plot::mapPixels(shown, size(), {pressed->panel, low, left}, right);
    const QRectF top = Plot::mapPixels(shown, size(), {pressed->panel, high, left}, right);
    painter.setPen(Qt::black);
    painter.setBrush(rectangleColour);
    painter.drawRect(bottom.united(top));
}

void MapView::paintHarmonics(QPainter &painter) const
{
    if (!plot || !plot->fundamental() || shown.map().step == 0 || !shown.map().axis.empty())
        return;
    constexpr int most = 16;
    constexpr int opacity = 120;
    for (const QRect &area : Plot::mapAreas(shown, size())) {
        for (int harmonic = 1; harmonic <= most; ++harmonic) {
            const double frequency = *plot->fundamental() * harmonic;
            const double column = (frequency - shown.map().first) / shown.map().step;
            const double share = (column - shown.columns.min) / shown.columns.extent();
            if (share < 0 || share > 1)
                continue;
            QColor colour = harmonicsColour;
            colour.setAlpha(harmonic == 1 ? 255 : opacity);
            painter.setPen(colour);
            const double x = area.left() + share * area.width();
            painter.drawLine(QLineF(x, area.top(), x, area.bottom()));
        }
    }
}

// Those of the plot below, without their names.
void MapView::paintMarkers(QPainter &painter) const
{
    if (!plot || plot->data().numPoints != shown.map().columns)
        return;
    painter.setPen(harmonicsColour);
    for (const QRect &area : Plot::mapAreas(shown, size())) {
        for (const int marker : plot->data().markers) {
            const double share = (marker + 0.5 - shown.columns.min) / shown.columns.extent();
            if (share < 0 || share > 1)
                continue;
            const double x = area.left() + share * area.width();
            painter.drawLine(QLineF(x, area.top(), x, area.bottom()));
        }
    }
}

void MapView::mousePressEvent(QMouseEvent *event)
{
    pressed = placeAt(event->localPos());
    pressPoint = event->pos();
    hasRectangle = false;
    if (plot && pressed) {
        plot->setFocus(Qt::MouseFocusReason); // its keys work after a click here too
        released = *pressed;
        QMouseEvent moved(event->type(), {plotPixel(event->localPos()), 0}, event->button(),
                          event->buttons(), event->modifiers());
        Plot::handOn(moved, *plot, 0);
    }
    update();
}

void MapView::mouseMoveEvent(QMouseEvent *event)
{
    const std::optional<Plot::MapPlace> place = placeAt(event->localPos());
    const bool isDrag = event->buttons() != Qt::NoButton;
    if (plot && (place || (isDrag && pressed))) {
        QMouseEvent moved(event->type(), {plotPixel(event->localPos()), 0}, event->button(),
                          event->buttons(), event->modifiers());
        Plot::handOn(moved, *plot, 1); // the cursors' keys need the place of the pointer
    }
    if (place && !isDrag)
        emit pointed(*place);
    if (!isDrag || !pressed || !place || place->panel != pressed->panel || !plot ||
        plot->isPanned())
        return;
    released = *place;
    hasRectangle = event->pos() != pressPoint;
    update();
}

void MapView::mouseReleaseEvent(QMouseEvent *event)
{
    const bool isClick = event->button() == Qt::LeftButton && event->pos() == pressPoint;
    if (plot && pressed) {
        QMouseEvent moved(event->type(), {plotPixel(event->localPos()), 0}, event->button(),
                          event->buttons(), event->modifiers());
        Plot::handOn(moved, *plot, isClick ? 0 : 1);
    }
    if (isClick && pressed)
        emit clicked(*pressed);
    if (!hasRectangle)
        pressed.reset();
}

void MapView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (const std::optional<Plot::MapPlace> place = placeAt(event->localPos()))
        emit doubleClicked(*place);
}

void MapView::wheelEvent(QWheelEvent *event)
{
    const std::optional<Plot::MapPlace> place = placeAt(event->position());
    if (!place || !plot) {
        event->ignore();
        return;
    }
    if (event->modifiers() & Qt::ControlModifier) {
        const double factor = event->angleDelta().y() > 0 ? 0.7 : 1 / 0.7;
        const Rows now{shown.firstRow, shown.rowCount};
        const Plot::Range rows =
            Plot::zoomedAt({double(now.first), double(now.first + now.count)},
                           {0, double(shown.allRows())}, place->row + 0.5, factor, 1);
        const int first = int(std::lround(rows.min));
        rowsBefore.push_back(now);
        showRows({first, std::max(1, int(std::lround(rows.max)) - first)});
        event->accept();
        return;
    }
    QWheelEvent moved({plotPixel(event->position()), 0}, event->globalPosition(),
                      event->pixelDelta(), event->angleDelta(), event->buttons(),
                      event->modifiers(), event->phase(), event->inverted());
    Plot::handOn(moved, *plot);
    event->accept();
}

// The plot has the keyboard; keys that concern rows come here first.
bool MapView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == plot && event->type() == QEvent::KeyPress && !shown.isEmpty() &&
        takeKey(static_cast<QKeyEvent *>(event)->key()))
        return true;
    return QWidget::eventFilter(watched, event);
}

// Whether the plot does nothing of its own with the key.
bool MapView::takeKey(int key)
{
    const Rows now{shown.firstRow, shown.rowCount};
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (hasRectangle && pressed) {
            rowsBefore.push_back(now);
            const int low = std::min(pressed->row, released.row);
            showRows({low, std::max(pressed->row, released.row) - low + 1});
        }
        return false;
    case Qt::Key_Backspace:
        if (!rowsBefore.empty()) {
            const Rows before = rowsBefore.back();
            rowsBefore.pop_back();
            showRows(before);
        }
        return false;
    case Qt::Key_Home:
        rowsBefore.clear();
        showRows({0, shown.allRows()});
        return false;
    case Qt::Key_Up:
    case Qt::Key_Down:
        stepRow(key == Qt::Key_Up ? 1 : -1);
        return true;
    default:
        return false;
    }
}

void MapView::stepRow(int way)
{
    Plot::MapPlace next = chosen;
    next.row = std::clamp(next.row + way, 0, shown.allRows() - 1);
    if (next.panel < 0 || next.row == chosen.row)
        return;
    if (next.row < shown.firstRow || next.row >= shown.firstRow + shown.rowCount)
        showRows({shown.firstRow + way, shown.rowCount});
    emit clicked(next);
}
