#pragma once

#include "picture/plotgeometry.h"
#include "picture/plotmarks.h"
#include "picture/plotpainter.h"

#include <QImage>
#include <QPainter>
#include <cmath>
#include <random>

namespace TestSupport {

/// Curves in a given range.
inline PlotData dataOf(const std::vector<std::vector<float>> &graphs, int numPoints = 5000,
                       double yMin = -100, double yMax = 100)
{
    PlotData data;
    data.graphs = graphs;
    data.numPoints = numPoints;
    data.yMin = yMin;
    data.yMax = yMax;
    return data;
}

/// Samples between -100 and 100; about one sample in `spacing` is one of the odd values.
inline std::vector<float> noise(int count, const std::vector<float> &odd = {0},
                                unsigned spacing = 50)
{
    std::mt19937 random(unsigned(count) + spacing);
    std::vector<float> samples(size_t(count), 0.0F);
    for (float &sample : samples)
        sample = random() % spacing == 0 ? odd[random() % odd.size()]
                                         : float(random() % 20001) / 100 - 100;
    return samples;
}

/// Draws a curve the plain way, one QPainter line per segment.
inline void drawStraight(QPainter &painter, const Plot::View &view, const std::vector<float> &curve)
{
    const auto pixel = [&](size_t i) {
        return QPoint(Plot::xPixel(view, int(i)), Plot::yPixel(view, curve[i]));
    };
    for (size_t i = 1; i < curve.size() && i < size_t(view.allPoints); ++i)
        if (!std::isnan(curve[i - 1]) && !std::isnan(curve[i]))
            painter.drawLine(pixel(i - 1), pixel(i));
    if (!view.isZoomed || view.step() < 8)
        return;
    for (size_t i = 0; i < curve.size() && i < size_t(view.allPoints); ++i)
        if (!std::isnan(curve[i]) && view.clip().contains(pixel(i)))
            painter.fillRect(QRect(pixel(i) - QPoint(1, 1), QSize(3, 3)), painter.pen().color());
}

/// What Plot::paintPlot() paints of data without markers, with every curve drawn the plain way.
inline void paintStraight(const PlotData &data, const Plot::Zoom &zoom, const QRect &selection,
                          QImage &picture)
{
    PlotData bare; // ground and frame alone
    bare.messageMode = true;
    Plot::paintCurves(bare, {}, {}, {}, picture);

    const Plot::View view = Plot::viewOf(data, picture.size(), zoom);
    const Plot::XAxisLabels labels = Plot::xAxisOf(data, view, picture);
    QPainter painter(&picture);
    painter.setPen(QColor(238, 238, 238));
    for (const int x : Plot::gridColumns(data, labels))
        if (view.plotHeight() > 0)
            painter.drawLine(x, Plot::marginTop, x, view.height - Plot::marginBottom);
    if (view.isZoomed)
        painter.setClipRect(view.clip());
    for (const auto *set : {&data.multiGraphs, &data.graphs}) {
        for (int curve = 0; curve < int(set->size()); ++curve)
            if (Plot::isVisible(data, curve)) {
                painter.setPen(QColor(Plot::colourOf(data, curve)));
                drawStraight(painter, view, (*set)[size_t(curve)]);
            }
        painter.setPen(QColor(set == &data.graphs ? "black" : "lightGray"));
        const int zero = Plot::yPixel(view, 0);
        const int last = Plot::xPixel(view, view.allPoints - 1);
        if (view.y.min <= 0 && view.allPoints > 1 && (set == &data.graphs || !set->empty()))
            painter.drawLine(Plot::xPixel(view, 0), zero, last, zero);
    }
    painter.setClipping(false);
    Plot::paintLabels(painter, data, view, labels);
    Plot::paintSelection(painter, selection);
}

} // namespace TestSupport
