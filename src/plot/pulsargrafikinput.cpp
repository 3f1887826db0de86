// What the user does with mouse, wheel and keys.

#include "picture/plotgeometry.h"
#include "plot/pulsargrafik.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// what the keys H, L and W give in a Russian keyboard layout
constexpr int cyrillicKeyH = 0x0420;
constexpr int cyrillicKeyL = 0x0414;
constexpr int cyrillicKeyW = 0x0426;
constexpr double zoomPerNotch = 1.25;
constexpr double panPerNotch = 0.1; // of the visible part
constexpr double panPerPage = 0.9;
constexpr double unitsPerNotch = 120;

} // namespace

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
    if (selected.contains(pressPoint)) {
        const auto [corner1, corner2] = selected.corners(view());
        emit blueRectangleClicked(corner1, corner2);
    } else {
        const bool had = selectedRange().has_value();
        select(pressPoint, pressPoint);
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
        const QPointF from = Plot::coordsOf(shown, QPointF(*panFrom));
        const QPointF to = Plot::coordsOf(shown, QPointF(pixel));
        panFrom = pixel;
        pan(from.x() - to.x(), Plot::scaledY(shown, from.y()) - Plot::scaledY(shown, to.y()), Drag);
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
    if (hoverText)
        showHover(plotData.messageMode ? QStringList() : hoverText(pointed));
    if (dragging && (event->buttons() & Qt::LeftButton))
        select(pressPoint, pixel);
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
    if (!selectedRange())
        return;
    const QPointF offset(plotData.xOffset, 0);
    const auto [corner1, corner2] = selected.corners(view());
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

void PulsarGrafik::keyPressEvent(QKeyEvent *event)
{
    if (plotData.messageMode || !handleKey(*event))
        QWidget::keyPressEvent(event);
}

// False for keys that are somebody else's.
bool PulsarGrafik::handleKey(const QKeyEvent &event)
{
    if (event.matches(QKeySequence::Copy)) {
        copyValue();
        return true;
    }
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    if (event.key() == Qt::Key_Space) {
        if (!event.isAutoRepeat())
            setSpaceHeld(true);
        return true;
    }
    return takeHarmonicNumber(event.key()) || zoomByKey(event.key()) || markByKey(event.key());
}

bool PulsarGrafik::zoomByKey(int key)
{
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
    default:
        return false;
    }
}

bool PulsarGrafik::markByKey(int key)
{
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        stepReadOut(key == Qt::Key_Left ? -1 : 1);
        return true;
    case Qt::Key_1:
    case Qt::Key_2:
        marks.cursors[key == Qt::Key_1 ? 0 : 1] = Plot::nearestSample(plotData, view(), pointed);
        keepLegendClear();
        update();
        return true;
    case Qt::Key_H:
    case cyrillicKeyH:
        toggleHarmonics();
        return Plot::isSpectrum(plotData);
    case Qt::Key_L:
    case cyrillicKeyL:
        setLogarithmic(!wantsLogarithm);
        return Plot::isSpectrum(plotData);
    case Qt::Key_W:
    case cyrillicKeyW:
        if (!Plot::isAmplitudeSpectrum(plotData))
            return false;
        setWhitened(!wantsWhitening);
        return true;
    case Qt::Key_Escape:
        return removeMarks();
    default:
        return false;
    }
}

void PulsarGrafik::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        setSpaceHeld(false);
    else
        QWidget::keyReleaseEvent(event);
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
    if (marks.fundamental) {
        setFundamental({});
        return;
    }
    if (Plot::isSpectrum(plotData)) {
        harmonicFrequency = Plot::peakFrequency(
            plotData, pointed.x(), std::max(0.5, pointerAccuracy * dataPerPixel().x()));
        fitHarmonics(1);
        marks.asksForNumber = true;
    }
}

// Marks the harmonics of which the line that was pointed at is that of this number.
void PulsarGrafik::fitHarmonics(int number)
{
    Plot::fitHarmonics(marks, data(), harmonicFrequency, number);
    keepLegendClear();
    update();
    emit fundamentalChanged();
}

void PulsarGrafik::setFundamental(std::optional<double> frequency)
{
    if (marks.fundamental == frequency)
        return;
    marks.fundamental = frequency;
    marks.fundamentalError = 0;
    marks.fittedLines = 0;
    marks.asksForNumber = false;
    keepLegendClear();
    update();
    emit fundamentalChanged();
}

// The digit after H; any other key ends the question.
bool PulsarGrafik::takeHarmonicNumber(int key)
{
    if (!std::exchange(marks.asksForNumber, false))
        return false;
    update();
    if (key < Qt::Key_1 || key > Qt::Key_9)
        return false;
    fitHarmonics(key - Qt::Key_0);
    return true;
}

void PulsarGrafik::showHover(const QStringList &texts)
{
    if (marks.hover == texts)
        return;
    marks.hover = texts;
    update(0, 0, width(), Plot::marginTop);
}

void PulsarGrafik::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    showHover({});
}

// False where there were none.
bool PulsarGrafik::removeMarks()
{
    const bool had = marks.cursors[0] || marks.cursors[1] || marks.fundamental || marks.readOut;
    setFundamental({});
    marks = {};
    update();
    return had;
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

void PulsarGrafik::select(const QPoint &corner1, const QPoint &corner2)
{
    selected.span(view(), corner1, corner2);
    update();
}
