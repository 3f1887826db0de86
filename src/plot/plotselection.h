#pragma once

#include "picture/plotgeometry.h"

#include <QRect>
#include <optional>
#include <utility>

namespace Plot {

/// What a selected rectangle holds, its edges in order.
struct SelectedRange {
    Range x; ///< point indices, with fraction
    Range y; ///< values
};

/// The rectangle that the user drags over a plot. While all data are shown it is a place on the
/// widget, and the data it stands for follow it; in a zoomed plot it is a piece of the data, and
/// its place follows.
class Selection {
public:
    /// In pixels of the widget: its left upper corner, and as its size the way to the right lower
    /// one. Null when nothing was ever selected or the selection was removed.
    const QRect &rectangle() const { return place; }

    /// Nothing while the rectangle has no width or no height.
    std::optional<SelectedRange> range() const;

    /// Whether a pixel lies on the rectangle, its edges included.
    bool contains(const QPoint &pixel) const;

    /// The two corners as index and value: in a plot that shows all, what dataAt() reads there.
    std::pair<QPointF, QPointF> corners(const View &view) const;

    /// Replaces the rectangle by the one between two pixels.
    void span(const View &view, const QPoint &corner1, const QPoint &corner2);
    void remove();

    /// Lets the rectangle stand for the data that it covers in the view.
    void anchor(const View &view);
    /// Moves the rectangle to where its data stand in the view.
    void follow(const View &view);
    /// Lets the rectangle stand for the same in other data; follow() then moves it.
    void move(const IndexMap &map);

private:
    QPoint oppositeCorner() const;

    QRect place;
    QPointF corner1; // index and value that the left upper corner stands for
    QPointF corner2;
};

} // namespace Plot
