#include "plot/pulsargrafik.h"

#include "picture/curvelines.h"
#include "picture/plotgeometry.h"
#include "picture/plotpainter.h"
#include "plot/plotlegend.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// QRect's own corners are pixels inside it: there a rectangle between two equal points has an
// extent of 1, and one drawn leftwards is a pixel off. Here size is the way between the corners.
QRect rectangleBetween(const QPoint &corner1, const QPoint &corner2)
{
    const QPoint first(std::min(corner1.x(), corner2.x()), std::min(corner1.y(), corner2.y()));
    const QPoint way = corner1 + corner2 - 2 * first;
    return {first, QSize(way.x(), way.y())};
}

QPoint oppositeCorner(const QRect &rectangle)
{
    return rectangle.topLeft() + QPoint(rectangle.width(), rectangle.height());
}

// Whether what was zoomed in the old data is the same part of the new.
bool haveSameAxes(const PlotData &a, const PlotData &b)
{
    return Plot::allOfX(a) == Plot::allOfX(b) && a.x.name == b.x.name && a.x.unit == b.x.unit &&
           a.yName == b.yName && a.yUnit == b.yUnit;
}

constexpr int cyrillicKeyH = 0x0420; // what the key H gives in a Russian keyboard layout
constexpr double zoomPerNotch = 1.25;
constexpr double panPerNotch = 0.1; // of the visible part
constexpr double panPerPage = 0.9;
constexpr double unitsPerNotch = 120;
constexpr int furthestPixel = 30000; // of a rectangle whose data lie out of sight

} // namespace

PulsarGrafik::PulsarGrafik(QWidget *parent) : QWidget(parent), legend(new PlotLegend(this))
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus); // a click brings the keys here, hovering takes none away
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    qRegisterMetaType<VisibleRange>("PulsarGrafik::VisibleRange");
    connect(legend, &PlotLegend::curveToggled, this, &PulsarGrafik::toggleCurve);
}

PulsarGrafik::~PulsarGrafik() = default;

void PulsarGrafik::replaceData(PlotData data)
{
    // The caller may hold the lock already, so may a press whose signal led here.
    const bool locked = busy.tryLock();
    if (plotData.names != data.names)
        toggled.clear();
    plotData = std::move(data);
    blocks = Plot::blocksOf(plotData);
    if (locked)
        busy.unlock();
}

void PulsarGrafik::setData(PlotData data)
{
    const bool keepsZoom = haveSameAxes(plotData, data);
    replaceData(std::move(data));
    if (!keepsZoom) {
        history.clear();
        zoom = {};
        removeMarks();
    }
    applyZoom(zoom);
    renewLegend();
}

void PulsarGrafik::setPart(PlotData data, const Plot::IndexMap &moved, double first, double points)
{
    const Plot::Range before = Plot::allOfX(plotData);
    replaceData(std::move(data));
    history.move(moved, before);
    marks.readOut.reset();
    pointed.setX(moved(pointed.x()));
    const Plot::Range all = Plot::allOfX(plotData);
    for (auto &cursor : marks.cursors) {
        if (!cursor)
            continue;
        // Among more or fewer points a cursor would come to stand beside its place.
        const double index = std::round(moved(cursor->index));
        if (moved.factor == 1 && index >= 0 && index < all.max)
            cursor->index = int(index);
        else
            cursor.reset();
    }
    selectedCorner1.setX(moved(selectedCorner1.x()));
    selectedCorner2.setX(moved(selectedCorner2.x()));
    if (const auto selected = selectedRange(); selected && !Plot::covers(all, selected->x))
        clearSelection();
    applyZoom({Plot::Range{first, first + points}, zoom.y});
    renewLegend();
}

void PulsarGrafik::recomputeRange()
{
    const Plot::Range range = Plot::verticalRange(plotData, blocks);
    plotData.yMin = range.min;
    plotData.yMax = range.max;
    placeLegend();
    // A zoom into values that the curves no longer have would show nothing.
    if (zoom.y && (zoom.y->max < range.min || zoom.y->min > range.max))
        zoom.y.reset();
    applyZoom(zoom);
}

void PulsarGrafik::showMessage(const QString &message)
{
    plotData.messageMode = true;
    plotData.message = message;
    legend->hide();
    repaintPlot();
}

void PulsarGrafik::clear()
{
    showMessage(QString());
}

QPointF PulsarGrafik::dataPerPixel() const
{
    return Plot::dataPerPixel(view());
}

PulsarGrafik::VisibleRange PulsarGrafik::visibleRange() const
{
    const Plot::View shown = view();
    return {shown.first, shown.points, shown.y};
}

void PulsarGrafik::setVisibleX(double first, double points)
{
    changeZoom({Plot::Range{first, first + points}, zoom.y}, Call);
}

void PulsarGrafik::setVisibleY(double min, double max)
{
    changeZoom({zoom.x, Plot::Range{min, max}}, Call);
}

void PulsarGrafik::noteView()
{
    if (!plotData.messageMode)
        history.note(zoom, Call);
}

void PulsarGrafik::showAll()
{
    if (!hasMoreX()) {
        changeZoom({}, NoGesture);
        return;
    }
    history.note(zoom, NoGesture);
    applyZoom({zoom.x, {}});
    emit partWanted(plotData.wholeX.min, plotData.wholeX.extent());
}

void PulsarGrafik::zoomToSelection()
{
    const std::optional<SelectedRange> part = selectedRange();
    if (!part)
        return;
    clearSelection();
    changeZoom({part->x, part->y}, NoGesture);
}

void PulsarGrafik::showPrevious()
{
    // Views that later data have made the same as the present one are no step back.
    while (const std::optional<Plot::Zoom> previous = history.back()) {
        if (hasMoreX() && previous->x && !Plot::covers(Plot::allOfX(plotData), *previous->x)) {
            applyZoom({zoom.x, previous->y});
            emit partWanted(previous->x->min, previous->x->extent());
            return;
        }
        const Plot::Zoom next = Plot::limitedZoom(plotData, *previous);
        if (Plot::areAlike(next, zoom))
            continue;
        applyZoom(next);
        return;
    }
}

std::optional<PulsarGrafik::SelectedRange> PulsarGrafik::selectedRange() const
{
    if (marks.selection.width() == 0 || marks.selection.height() == 0)
        return std::nullopt;
    const auto [left, right] = std::minmax({selectedCorner1.x(), selectedCorner2.x()});
    const auto [low, high] = std::minmax({selectedCorner1.y(), selectedCorner2.y()});
    return SelectedRange{{left, right}, {low, high}};
}

void PulsarGrafik::clearSelection()
{
    const bool had = selectedRange().has_value();
    select({});
    if (had)
        emit selectionChanged();
}

QSize PulsarGrafik::sizeHint() const
{
    return {800, 500};
}

QSize PulsarGrafik::minimumSizeHint() const
{
    return {300, 200};
}

void PulsarGrafik::mousePressEvent(QMouseEvent *event)
{
    const QPoint pixel = Plot::wholePixel(event->localPos());
    if (event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && spaceHeld)) {
        beginPan(pixel);
        return;
    }
    if (event->button() != Qt::LeftButton || !busy.tryLock())
        return;
    pressPoint = pixel;
    dragging = true;
    if (!marks.selection.isNull() &&
        QRect(marks.selection.topLeft(), oppositeCorner(marks.selection)).contains(pressPoint)) {
        const auto [corner1, corner2] = announcedCorners();
        emit blueRectangleClicked(corner1, corner2);
    } else {
        const bool had = selectedRange().has_value();
        select(rectangleBetween(pressPoint, pressPoint));
        if (had)
            emit selectionChanged();
    }
    busy.unlock();
}

void PulsarGrafik::mouseMoveEvent(QMouseEvent *event)
{
    if (picture.isNull())
        return;
    const QPoint pixel = Plot::wholePixel(event->localPos());
    if (panFrom) {
        const Plot::View shown = view();
        const QPointF way =
            Plot::coordsOf(shown, QPointF(*panFrom)) - Plot::coordsOf(shown, QPointF(pixel));
        panFrom = pixel;
        pan(way.x(), way.y(), Drag);
    } else {
        history.endGesture();
    }
    if (marks.readOut) {
        marks.readOut.reset();
        update();
    }
    pointer = pixel;
    pointed = Plot::dataAt(view(), pixel);
    emit coordsChanged(pointed, Plot::labelsAt(plotData, pointed.x()));
    if (dragging && (event->buttons() & Qt::LeftButton))
        select(rectangleBetween(pressPoint, pixel));
}

void PulsarGrafik::mouseReleaseEvent(QMouseEvent *event)
{
    if (panFrom && !(event->buttons() & (Qt::MiddleButton | Qt::LeftButton))) {
        endPan();
        return;
    }
    if (event->button() != Qt::LeftButton || !dragging)
        return;
    dragging = false;
    const QPoint pixel = Plot::wholePixel(event->localPos());
    if (pixel == pressPoint)
        emit clicked(Plot::dataAt(view(), pixel));
    if (marks.selection.width() == 0 || marks.selection.height() == 0)
        return;
    const QPointF offset(plotData.xOffset, 0);
    const auto [corner1, corner2] = announcedCorners();
    emit blueRectangleReleased(corner1 + offset, corner2 + offset);
    if (pixel != pressPoint)
        emit selectionChanged();
}

void PulsarGrafik::wheelEvent(QWheelEvent *event)
{
    const QPoint turned = event->angleDelta();
    // with Alt, and on some mice by itself, the wheel turns sideways
    const double notches = (turned.y() != 0 ? turned.y() : turned.x()) / unitsPerNotch;
    const Plot::View shown = view();
    if (plotData.messageMode || notches == 0 || shown.plotWidth() <= 0 || shown.plotHeight() <= 0)
        return;
    const QRect area =
        QRect(Plot::marginLeft, Plot::marginTop, shown.plotWidth(), shown.plotHeight());
    const QPoint pixel = Plot::wholePixel(event->position());
    const QPointF anchor =
        Plot::coordsOf(shown, QPointF(std::clamp(pixel.x(), area.left(), area.right() + 1),
                                      std::clamp(pixel.y(), area.top(), area.bottom() + 1)));
    const double factor = std::pow(zoomPerNotch, -notches);
    const bool overX = pixel.y() > area.bottom() + 1;
    const bool overY = pixel.x() < area.left() && !overX;
    if ((event->modifiers() & Qt::ShiftModifier) || turned.y() == 0)
        pan(-notches * panPerNotch * shown.points, 0, WheelPan);
    else if ((event->modifiers() & Qt::ControlModifier) || overY)
        zoomY(anchor.y(), factor, WheelY);
    else
        zoomX(anchor.x(), factor, WheelX);
}

void PulsarGrafik::keyPressEvent(QKeyEvent *event)
{
    if (plotData.messageMode || !handleKey(*event))
        QWidget::keyPressEvent(event);
}

// False for keys that are somebody else's.
bool PulsarGrafik::handleKey(const QKeyEvent &event)
{
    const int key = event.key();
    if (event.matches(QKeySequence::Copy)) {
        copyValue();
        return true;
    }
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!selectedRange())
            return false;
        zoomToSelection();
        return true;
    case Qt::Key_Backspace:
        showPrevious();
        return true;
    case Qt::Key_Home:
        showAll();
        return true;
    case Qt::Key_Space:
        if (!event.isAutoRepeat())
            setSpaceHeld(true);
        return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomX(pointed.x(), 1 / zoomPerNotch, Keys);
        return true;
    case Qt::Key_Minus:
        zoomX(pointed.x(), zoomPerNotch, Keys);
        return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        pan((key == Qt::Key_PageUp ? -panPerPage : panPerPage) * view().points, 0, Keys);
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        stepReadOut(key == Qt::Key_Left ? -1 : 1);
        return true;
    case Qt::Key_1:
    case Qt::Key_2:
        marks.cursors[key == Qt::Key_1 ? 0 : 1] = Plot::nearestSample(plotData, view(), pointed);
        update();
        return true;
    case Qt::Key_H:
    case cyrillicKeyH:
        toggleHarmonics();
        return Plot::isSpectrum(plotData);
    case Qt::Key_Escape:
        return removeMarks();
    default:
        return false;
    }
}

void PulsarGrafik::stepReadOut(int way)
{
    const auto last = int(Plot::allOfX(plotData).max) - 1;
    const int before = std::clamp(int(pointed.x()), 0, last);
    if (!marks.readOut) // the pointer was nearest to this curve
        if (const auto nearest = Plot::nearestSample(plotData, view(), pointed))
            readOutCurve = nearest->curve;
    const int index = std::clamp(before + way, 0, last);
    const double value = Plot::valueAt(plotData, {readOutCurve, index});
    marks.readOut = index;
    pointed = QPointF(index, std::isnan(value) ? 0 : value);

    const Plot::Range shown = view().x();
    if (index < shown.min)
        pan(index - shown.min - panPerNotch * shown.extent(), 0, Keys);
    else if (index > shown.max)
        pan(index - shown.max + panPerNotch * shown.extent(), 0, Keys);
    update();
    emit coordsChanged(pointed, Plot::labelsAt(plotData, index));
}

void PulsarGrafik::toggleHarmonics()
{
    constexpr double pointerAccuracy = 2; // pixels
    if (marks.fundamental)
        marks.fundamental.reset();
    else if (Plot::isSpectrum(plotData))
        marks.fundamental = Plot::peakFrequency(
            plotData, pointed.x(), std::max(0.5, pointerAccuracy * dataPerPixel().x()));
    update();
}

// False where there were none.
bool PulsarGrafik::removeMarks()
{
    const bool had = marks.cursors[0] || marks.cursors[1] || marks.fundamental || marks.readOut;
    const QRect selection = marks.selection;
    marks = {};
    marks.selection = selection;
    update();
    return had;
}

void PulsarGrafik::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        setSpaceHeld(false);
    else
        QWidget::keyReleaseEvent(event);
}

void PulsarGrafik::focusInEvent(QFocusEvent *event)
{
    const Qt::FocusReason reason = event->reason();
    showsFocus = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
    QWidget::focusInEvent(event);
    update();
}

void PulsarGrafik::focusOutEvent(QFocusEvent *event)
{
    showsFocus = false;
    setSpaceHeld(false);
    QWidget::focusOutEvent(event);
}

void PulsarGrafik::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (zoom.isNone())
        anchorSelection();
    else
        placeSelection();
    placeLegend();
}

void PulsarGrafik::paintEvent(QPaintEvent * /*event*/)
{
    if (!Plot::isPainted(size()))
        return;
    const QSize pixels = size() * devicePixelRatioF();
    if (pictureIsStale || picture.size() != pixels)
        renewPicture();
    QPainter painter(this);
    painter.drawImage(0, 0, picture);
    if (!plotData.messageMode)
        Plot::paintMarks(painter, plotData, view(), marks);
    if (showsFocus) {
        painter.setPen(QPen(QColor("#0032C8"), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
    }
}

Plot::View PulsarGrafik::view() const
{
    return Plot::viewOf(plotData, size(), zoom);
}

bool PulsarGrafik::hasMoreX() const
{
    return !plotData.messageMode && plotData.wholeX.extent() > 0 &&
           !Plot::covers(Plot::allOfX(plotData), plotData.wholeX);
}

void PulsarGrafik::changeZoom(const Plot::Zoom &wanted, Gesture gesture)
{
    const Plot::Zoom next = Plot::limitedZoom(plotData, wanted);
    if (plotData.messageMode || next == zoom)
        return;
    history.note(zoom, gesture);
    applyZoom(next);
}

// Also after new data: what is shown and what is marks.selection is made to fit them.
void PulsarGrafik::applyZoom(const Plot::Zoom &next)
{
    const bool wasZoomed = isZoomed();
    zoom = Plot::limitedZoom(plotData, next);
    if (wasZoomed || isZoomed())
        placeSelection();
    else
        anchorSelection();
    if (underMouse() && !marks.readOut) // other data lie under the resting pointer
        pointed = Plot::dataAt(view(), pointer);
    announceView();
    repaintPlot();
}

void PulsarGrafik::zoomX(double anchor, double factor, Gesture gesture)
{
    changeZoom(
        {Plot::zoomedAt(view().x(), Plot::allOfX(plotData), anchor, factor, Plot::fewestPoints),
         zoom.y},
        gesture);
}

void PulsarGrafik::zoomY(double anchor, double factor, Gesture gesture)
{
    const Plot::Range all = Plot::allOfY(plotData);
    changeZoom({zoom.x, Plot::zoomedAt(view().y, all, anchor, factor, Plot::smallestExtent(all))},
               gesture);
}

void PulsarGrafik::pan(double points, double values, Gesture gesture)
{
    const Plot::View shown = view();
    changeZoom({Plot::panned(shown.x(), Plot::allOfX(plotData), points),
                Plot::panned(shown.y, Plot::allOfY(plotData), values)},
               gesture);
}

void PulsarGrafik::beginPan(const QPoint &pixel)
{
    history.endGesture();
    panFrom = pixel;
    setCursor(Qt::ClosedHandCursor);
}

void PulsarGrafik::endPan()
{
    panFrom.reset();
    history.endGesture();
    if (spaceHeld)
        setCursor(Qt::OpenHandCursor);
    else
        unsetCursor();
}

void PulsarGrafik::setSpaceHeld(bool held)
{
    spaceHeld = held;
    if (panFrom)
        return;
    if (held)
        setCursor(Qt::OpenHandCursor);
    else
        unsetCursor();
}

void PulsarGrafik::announceView()
{
    const VisibleRange now = visibleRange();
    if (now == announced)
        return;
    announced = now;
    emit viewChanged(now);
}

void PulsarGrafik::select(const QRect &rectangle)
{
    marks.selection = rectangle;
    anchorSelection();
    update();
}

// Lets the rectangle stand for the data that it covers now.
void PulsarGrafik::anchorSelection()
{
    const Plot::View shown = view();
    const auto covered = [&](const QPoint &pixel) {
        return Plot::dataAt(shown, {std::clamp(pixel.x(), Plot::marginLeft,
                                               Plot::marginLeft + std::max(0, shown.plotWidth())),
                                    std::clamp(pixel.y(), Plot::marginTop,
                                               Plot::marginTop + std::max(0, shown.plotHeight()))});
    };
    selectedCorner1 = covered(marks.selection.topLeft());
    selectedCorner2 = covered(oppositeCorner(marks.selection));
}

// The corners as the signals give them: all shown, what the pointer would read out there.
std::pair<QPointF, QPointF> PulsarGrafik::announcedCorners() const
{
    if (isZoomed())
        return {selectedCorner1, selectedCorner2};
    const Plot::View shown = view();
    return {Plot::dataAt(shown, marks.selection.topLeft()),
            Plot::dataAt(shown, oppositeCorner(marks.selection))};
}

// Moves the rectangle to where its data stand now.
void PulsarGrafik::placeSelection()
{
    if (!selectedRange())
        return;
    const auto pixel = [shown = view()](const QPointF &coords) {
        const QPointF place = Plot::placeOf(shown, coords);
        return QPoint(
            int(std::round(std::clamp<double>(place.x(), -furthestPixel, furthestPixel))),
            int(std::round(std::clamp<double>(place.y(), -furthestPixel, furthestPixel))));
    };
    marks.selection = rectangleBetween(pixel(selectedCorner1), pixel(selectedCorner2));
}

void PulsarGrafik::renewLegend()
{
    auto &visible = plotData.visible;
    QVector<PlotLegend::Curve> curves;
    const int count = plotData.messageMode ? 0 : plotData.names.size();
    for (int curve = 0; curve < count; ++curve) {
        const QString &name = plotData.names[curve];
        if (toggled.contains(name)) {
            visible.resize(std::max(visible.size(), size_t(curve) + 1), true);
            visible[size_t(curve)] = toggled[name];
        }
        const auto &set = plotData.graphs.empty() ? plotData.multiGraphs : plotData.graphs;
        const bool isEmpty = size_t(curve) < set.size() && Plot::lacksFinite(set[size_t(curve)]);
        curves.append({isEmpty && !name.isEmpty() ? name + ": " + Plot::noFiniteValues : name,
                       QColor(Plot::colourOf(plotData, curve)), Plot::isVisible(plotData, curve)});
    }
    legend->setCurves(curves);
    placeLegend();
}

// Into the corner where it hides least of the curves.
void PulsarGrafik::placeLegend()
{
    constexpr int gap = 6;
    const Plot::View shown = view();
    const QRect area =
        QRect(Plot::marginLeft, Plot::marginTop, shown.plotWidth(), shown.plotHeight())
            .adjusted(gap, gap, -gap, -gap);
    if (legend->isHidden() || area.isEmpty())
        return;
    legend->fitInto(area);
    const int right = area.right() + 1 - legend->width();
    const int low = area.bottom() + 1 - legend->height();
    QPoint best(right, area.top());
    double fewest = std::numeric_limits<double>::infinity();
    for (const QPoint &corner :
         {best, area.topLeft(), QPoint(right, low), QPoint(area.left(), low)}) {
        double hidden = 0;
        const auto &curves = Plot::markedCurves(plotData);
        const auto &curveBlocks = plotData.graphs.empty() ? blocks.multiGraphs : blocks.graphs;
        for (size_t curve = 0; curve < curves.size(); ++curve)
            if (Plot::isVisible(plotData, int(curve)))
                hidden += Plot::pixelsWithin(QRect(corner, legend->size()), shown, curves[curve],
                                             curveBlocks[curve]);
        if (hidden < fewest) {
            fewest = hidden;
            best = corner;
        }
    }
    legend->placeIn(area, best);
}

void PulsarGrafik::toggleCurve(int curve, bool visible)
{
    const QString name = plotData.names.value(curve);
    toggled[name] = visible;
    plotData.visible.resize(std::max(plotData.visible.size(), size_t(curve) + 1), true);
    plotData.visible[size_t(curve)] = visible;
    repaintPlot();
    emit curveToggled(name, visible);
}

void PulsarGrafik::repaintPlot()
{
    pictureIsStale = true;
    update();
}

// Curves are painted in the widget's own pixels; where the screen has finer ones they are
// enlarged, and the texts are painted on top with all the pixels there are.
void PulsarGrafik::renewPicture()
{
    const qreal ratio = devicePixelRatioF();
    pictureIsStale = false;
    if (picture.size() != size() * ratio)
        picture = QImage(size() * ratio, QImage::Format_RGB32);
    const Plot::View shown = view();
    if (ratio == 1) {
        Plot::paintCurves(plotData, shown, blocks, picture);
        QPainter painter(&picture);
        Plot::paintLabels(painter, plotData, shown);
        return;
    }
    QImage curves(size(), QImage::Format_RGB32);
    Plot::paintCurves(plotData, shown, blocks, curves);
    picture.setDevicePixelRatio(ratio);
    QPainter painter(&picture);
    painter.drawImage(rect(), curves);
    Plot::paintLabels(painter, plotData, shown);
}
