#include "plot/plotselection.h"

#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr int furthestPixel = 30000; // of a rectangle whose data lie out of sight

// QRect's own corners are pixels inside it: there a rectangle between two equal points has an
// extent of 1, and one drawn leftwards is a pixel off. Here size is the way between the corners.
QRect rectangleBetween(const QPoint &corner1, const QPoint &corner2)
{
    const QPoint first(std::min(corner1.x(), corner2.x()), std::min(corner1.y(), corner2.y()));
    const QPoint way = corner1 + corner2 - 2 * first;
    return {first, QSize(way.x(), way.y())};
}

// The data at the pixel of the plot's area that is nearest to a pixel.
QPointF dataNear(const View &view, const QPoint &pixel)
{
    const int right = marginLeft + std::max(0, view.plotWidth());
    const int bottom = marginTop + std::max(0, view.plotHeight());
    return dataAt(
        view, {std::clamp(pixel.x(), marginLeft, right), std::clamp(pixel.y(), marginTop, bottom)});
}

QPoint pixelOf(const View &view, const QPointF &coords)
{
    const QPointF place = placeOf(view, coords);
    return {int(std::round(std::clamp<double>(place.x(), -furthestPixel, furthestPixel))),
            int(std::round(std::clamp<double>(place.y(), -furthestPixel, furthestPixel)))};
}

} // namespace

std::optional<SelectedRange> Selection::range() const
{
    if (place.width() == 0 || place.height() == 0)
        return std::nullopt;
    const auto [left, right] = std::minmax({corner1.x(), corner2.x()});
    const auto [low, high] = std::minmax({corner1.y(), corner2.y()});
    return SelectedRange{{left, right}, {low, high}};
}

bool Selection::contains(const QPoint &pixel) const
{
    return !place.isNull() && QRect(place.topLeft(), oppositeCorner()).contains(pixel);
}

std::pair<QPointF, QPointF> Selection::corners(const View &view) const
{
    if (view.isZoomed)
        return {corner1, corner2};
    return {dataAt(view, place.topLeft()), dataAt(view, oppositeCorner())};
}

void Selection::span(const View &view, const QPoint &pixel1, const QPoint &pixel2)
{
    place = rectangleBetween(pixel1, pixel2);
    anchor(view);
}

void Selection::remove()
{
    place = {};
}

void Selection::anchor(const View &view)
{
    corner1 = dataNear(view, place.topLeft());
    corner2 = dataNear(view, oppositeCorner());
}

void Selection::follow(const View &view)
{
    if (range())
        place = rectangleBetween(pixelOf(view, corner1), pixelOf(view, corner2));
}

void Selection::move(const IndexMap &map)
{
    corner1.setX(map(corner1.x()));
    corner2.setX(map(corner2.x()));
}

QPoint Selection::oppositeCorner() const
{
    return place.topLeft() + QPoint(place.width(), place.height());
}

} // namespace Plot
