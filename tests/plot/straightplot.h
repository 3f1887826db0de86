#pragma once

#include "plot/plotgeometry.h"
#include "plot/plotpainter.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace TestSupport {

inline int truncatedPixel(double pixel)
{
    return int(std::clamp(pixel, -1e9, 1e9));
}

/// Draws a curve the plain way, one QPainter line per segment.
inline void drawStraight(QPainter &painter, const Plot::View &view, const std::vector<float> &curve)
{
    const double step = double(view.width - 60 - 30) / view.points;
    const int plotHeight = view.height - 70 - 30;
    const auto row = [&](float value) {
        return truncatedPixel(view.height -
                              (70 + (value - view.y.min) * plotHeight / (view.y.max - view.y.min)));
    };
    const int count = std::min(view.points, int(curve.size()));
    for (int i = 1; i < count; ++i) {
        const float before = curve[size_t(i - 1)];
        const float after = curve[size_t(i)];
        if (!std::isnan(before) && !std::isnan(after))
            painter.drawLine(truncatedPixel(60 + (i - 1) * step), row(before),
                             truncatedPixel(60 + i * step), row(after));
    }
}

/// The line of value 0, segment by segment.
inline void drawStraightZero(QPainter &painter, const Plot::View &view, const QColor &colour)
{
    if (view.y.min > 0)
        return;
    painter.setPen(colour);
    drawStraight(painter, view, std::vector<float>(size_t(view.points), 0.0F));
}

/// What Plot::paintPlot() paints, with every curve drawn the plain way.
inline void paintStraight(const PlotData &data, const QRect &selection, QImage &picture)
{
    PlotData bare; // ground and frame alone
    bare.messageMode = true;
    Plot::paintCurves(bare, picture);

    QPainter painter(&picture);
    const Plot::View view = Plot::viewOf(data, picture.size());
    for (const auto *set : {&data.multiGraphs, &data.graphs}) {
        for (int curve = 0; curve < int(set->size()); ++curve)
            if (Plot::isVisible(data, curve)) {
                painter.setPen(QColor(Plot::colourOf(data, curve)));
                drawStraight(painter, view, (*set)[size_t(curve)]);
            }
        if (set == &data.graphs)
            drawStraightZero(painter, view, QColor("black"));
        else if (!set->empty())
            drawStraightZero(painter, view, QColor("lightGray"));
    }
    painter.setPen(QColor("green"));
    for (const int marker : data.markers)
        painter.drawLine(Plot::xPixel(view, marker), 30, Plot::xPixel(view, marker),
                         view.height - 70);
    Plot::paintLabels(painter, data, picture.size());
    Plot::paintSelection(painter, selection);
}

} // namespace TestSupport
