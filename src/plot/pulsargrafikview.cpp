// Which part of the data is shown, and the way back to earlier parts.

#include "picture/plotgeometry.h"
#include "plot/pulsargrafik.h"

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
    const std::optional<Plot::SelectedRange> part = selectedRange();
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

// After new data as well: the zoom is limited to them, and the rectangle moves to where what it
// stands for now lies.
void PulsarGrafik::applyZoom(const Plot::Zoom &next)
{
    const bool wasZoomed = isZoomed();
    zoom = Plot::limitedZoom(plotData, next);
    if (wasZoomed || isZoomed())
        selected.follow(view());
    else
        selected.anchor(view());
    if (underMouse() && !marks.readOut) // other data lie under the resting pointer
        pointed = Plot::dataAt(view(), pointer);
    announceView();
    keepLegendClear();
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
    const Plot::View shown = view();
    const auto scaled = [&](const Plot::Range &range) {
        return Plot::Range{Plot::scaledY(shown, range.min), Plot::scaledY(shown, range.max)};
    };
    const Plot::Range all = scaled(Plot::allOfY(plotData));
    const Plot::Range next = Plot::zoomedAt(shown.yScale, all, Plot::scaledY(shown, anchor), factor,
                                            Plot::smallestExtent(all));
    changeZoom(
        {zoom.x, Plot::Range{Plot::unscaledY(shown, next.min), Plot::unscaledY(shown, next.max)}},
        gesture);
}

// values  as they stand along Y, see Plot::scaledY()
void PulsarGrafik::pan(double points, double values, Gesture gesture)
{
    const Plot::View shown = view();
    const Plot::Range allY = Plot::allOfY(plotData);
    const Plot::Range y = Plot::panned(
        shown.yScale, {Plot::scaledY(shown, allY.min), Plot::scaledY(shown, allY.max)}, values);
    changeZoom({Plot::panned(shown.x(), Plot::allOfX(plotData), points),
                Plot::Range{Plot::unscaledY(shown, y.min), Plot::unscaledY(shown, y.max)}},
               gesture);
}

void PulsarGrafik::announceView()
{
    const VisibleRange now = visibleRange();
    if (now == announced)
        return;
    announced = now;
    emit viewChanged(now);
}
