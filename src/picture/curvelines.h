#pragma once

#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"

#include <QPolygonF>
#include <vector>

namespace Plot {

/// A curve as polylines in the view's pixels, without rounding, for pictures that are sharp at any
/// size. Nothing lies outside view.clip(); NaN samples interrupt a line, infinite ones lead it out
/// of the picture. Long lines come in pieces that meet. Where more than a few points share
/// `perPixel`-th of a pixel, only the first, the last and the extremes of them are kept.
std::vector<QPolygonF> curveLines(const View &view, const std::vector<float> &curve,
                                  const BlockExtremes &blocks, int perPixel);

/// How many of the curve's pixels lie in a rectangle, about: each column counts the rows between
/// the extremes of its points.
double pixelsWithin(const QRect &area, const View &view, const std::vector<float> &curve,
                    const BlockExtremes &blocks);

} // namespace Plot
