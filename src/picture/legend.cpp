#include "picture/legend.h"

#include "picture/curvelines.h"
#include "picture/plotmarks.h"
#include "picture/plotpainter.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <limits>

namespace Plot {

namespace {

constexpr int rowHeight = 15;  // pixels
constexpr int lineLength = 18; // of the piece beside a name
constexpr int space = 6;

std::vector<int> namedCurves(const PlotData &data)
{
    std::vector<int> curves;
    for (int curve = 0; curve < data.names.size(); ++curve)
        if (isVisible(data, curve) && !data.names[curve].isEmpty())
            curves.push_back(curve);
    return curves;
}

QSize sizeOf(const PlotData &data, const std::vector<int> &curves, const QFontMetrics &metrics)
{
    int width = 0;
    for (const int curve : curves)
        width = std::max(width, metrics.horizontalAdvance(data.names[curve]));
    return {width + lineLength + 3 * space, int(curves.size()) * rowHeight + space};
}

} // namespace

QSize legendSize(const PlotData &data)
{
    const std::vector<int> curves = namedCurves(data);
    return curves.empty() ? QSize() : sizeOf(data, curves, QFontMetrics(labelFont()));
}

QRect legendArea(const View &view)
{
    constexpr int gap = 6;
    return QRect(marginLeft, marginTop, view.plotWidth(), view.plotHeight())
        .adjusted(gap, gap, -gap, -gap);
}

QPoint emptiestCorner(const PlotData &data, const CurveBlocks &blocks, const View &view,
                      const QRect &area, const QSize &size)
{
    const auto &curves = markedCurves(data);
    const auto &curveBlocks = data.graphs.empty() ? blocks.multiGraphs : blocks.graphs;
    const auto hiddenBelow = [&](const QRect &rectangle) {
        double hidden = 0;
        for (size_t curve = 0; curve < curves.size(); ++curve)
            if (isVisible(data, int(curve)))
                hidden +=
                    pixelsWithin(rectangle, view, curves[curve],
                                 curve < curveBlocks.size() ? curveBlocks[curve] : BlockExtremes());
        return hidden;
    };
    const int right = area.right() + 1 - size.width();
    const int low = area.bottom() + 1 - size.height();
    QPoint best(right, area.top());
    double fewest = std::numeric_limits<double>::infinity();
    for (const QPoint &corner :
         {best, area.topLeft(), QPoint(right, low), QPoint(area.left(), low)}) {
        const double hidden = hiddenBelow(QRect(corner, size));
        if (hidden < fewest) {
            fewest = hidden;
            best = corner;
        }
    }
    return best;
}

void paintLegend(QPainter &painter, const PlotData &data, const QPoint &corner)
{
    const std::vector<int> curves = namedCurves(data);
    if (curves.empty())
        return;
    painter.setPen(QColor(190, 190, 190));
    painter.setBrush(QColor(255, 255, 255, 225));
    painter.drawRect(QRect(corner, sizeOf(data, curves, painter.fontMetrics())));
    painter.setBrush(Qt::NoBrush);
    int baseline = corner.y() + rowHeight;
    for (const int curve : curves) {
        const int x = corner.x() + space;
        painter.setPen(QPen(QColor(colourOf(data, curve)), 2));
        painter.drawLine(x, baseline - 4, x + lineLength, baseline - 4);
        painter.setPen(QColor("black"));
        painter.drawText(QPoint(x + lineLength + space, baseline), data.names[curve]);
        baseline += rowHeight;
    }
}

} // namespace Plot
