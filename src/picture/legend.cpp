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
constexpr int widestName = 220;

std::vector<int> namedCurves(const PlotData &data)
{
    std::vector<int> curves;
    for (int curve = 0; curve < data.names.size(); ++curve)
        if (isVisible(data, curve) && !data.names[curve].isEmpty())
            curves.push_back(curve);
    return curves;
}

// Which names the list shows, and how.
struct Layout {
    std::vector<int> curves; // that are listed
    int columns = 1;
    int rows = 0;
    int nameWidth = 0;
    int more = 0; // curves that are not listed

    QSize size() const
    {
        return {columns * (nameWidth + lineLength + 2 * space) + space, rows * rowHeight + space};
    }
};

QString moreText(int curves)
{
    return QString("and %1 more").arg(curves);
}

QString shortName(const PlotData &data, int curve, const QFontMetrics &metrics)
{
    return metrics.elidedText(data.names[curve], Qt::ElideMiddle, widestName);
}

bool fits(const QSize &size, const QRect &area)
{
    return size.width() <= area.width() && size.height() <= area.height() &&
           double(size.width()) * size.height() <= legendShare * area.width() * area.height();
}

Layout layoutOf(const PlotData &data, const QRect &area, const QFontMetrics &metrics)
{
    constexpr int mostColumns = 6;
    Layout layout;
    layout.curves = namedCurves(data);
    const int count = int(layout.curves.size());
    for (const int curve : layout.curves)
        layout.nameWidth =
            std::max(layout.nameWidth, metrics.horizontalAdvance(shortName(data, curve, metrics)));
    constexpr double mostOfHeight = 0.6;
    for (layout.columns = 1; layout.columns <= mostColumns; ++layout.columns) {
        layout.rows = (count + layout.columns - 1) / layout.columns;
        if (fits(layout.size(), area) && layout.size().height() <= mostOfHeight * area.height())
            return layout;
    }
    layout.columns = 1;
    layout.nameWidth = std::max(layout.nameWidth, metrics.horizontalAdvance(moreText(count)));
    for (layout.rows = count; layout.rows > 1 && !fits(layout.size(), area);)
        --layout.rows;
    if (count == 0 || !fits(layout.size(), area))
        return {};
    layout.more = count > layout.rows ? count - layout.rows + 1 : 0;
    layout.curves.resize(std::size_t(count - layout.more));
    return layout;
}

} // namespace

QSize legendSize(const PlotData &data, const QRect &area)
{
    const Layout layout = layoutOf(data, area, QFontMetrics(labelFont()));
    return layout.rows == 0 ? QSize() : layout.size();
}

std::vector<int> columnsToSpare(const PlotData &data, const View &view, const Marks &marks)
{
    std::vector<int> columns;
    for (const int marker : data.markers)
        columns.push_back(xPixel(view, marker));
    for (const auto &cursor : marks.cursors)
        if (cursor)
            columns.push_back(xPixel(view, cursor->index));
    if (marks.fundamental)
        for (const Harmonic &harmonic : harmonicsInSight(data, view, *marks.fundamental))
            columns.push_back(int(harmonic.x));
    return columns;
}

QRect legendArea(const View &view)
{
    constexpr int gap = 6;
    return QRect(marginLeft, marginTop, view.plotWidth(), view.plotHeight())
        .adjusted(gap, gap, -gap, -gap);
}

double hiddenPixels(const PlotData &data, const CurveBlocks &blocks, const View &view,
                    const QRect &rectangle, const std::vector<int> &spared)
{
    const auto &curves = markedCurves(data);
    const auto &curveBlocks = data.graphs.empty() ? blocks.multiGraphs : blocks.graphs;
    double hidden = 1e6 * double(std::count_if(spared.begin(), spared.end(), [&](int column) {
                        return column >= rectangle.left() && column <= rectangle.right();
                    }));
    for (size_t curve = 0; curve < curves.size(); ++curve)
        if (isVisible(data, int(curve)))
            hidden +=
                pixelsWithin(rectangle, view, curves[curve],
                             curve < curveBlocks.size() ? curveBlocks[curve] : BlockExtremes());
    return hidden;
}

QPoint emptiestCorner(const PlotData &data, const CurveBlocks &blocks, const View &view,
                      const QRect &area, const QSize &size, const std::vector<int> &spared)
{
    const int right = area.right() + 1 - size.width();
    const int low = area.bottom() + 1 - size.height();
    QPoint best(right, area.top());
    double fewest = std::numeric_limits<double>::infinity();
    const auto consider = [&](const QPoint &corner) {
        const double hidden = hiddenPixels(data, blocks, view, QRect(corner, size), spared);
        if (hidden < fewest) {
            fewest = hidden;
            best = corner;
        }
    };
    for (const QPoint &corner :
         {best, area.topLeft(), QPoint(right, low), QPoint(area.left(), low)})
        consider(corner);
    constexpr int places = 24;
    if (fewest > 0)
        for (int place = places - 1; place > 0; --place)
            for (const int y : {area.top(), low})
                consider({area.left() + (right - area.left()) * place / places, y});
    return best;
}

std::optional<QPoint> legendPlace(const PlotData &data, const CurveBlocks &blocks,
                                  const QSize &size, const Zoom &zoom, const Marks &marks)
{
    const View view = viewOf(data, size, zoom);
    const QRect area = legendArea(view);
    const QSize list = data.messageMode ? QSize() : legendSize(data, area);
    if (list.isEmpty())
        return std::nullopt;
    return emptiestCorner(data, blocks, view, area, list, columnsToSpare(data, view, marks));
}

void paintLegend(QPainter &painter, const PlotData &data, const QRect &area, const QPoint &corner)
{
    const Layout layout = layoutOf(data, area, painter.fontMetrics());
    if (layout.rows == 0)
        return;
    painter.setPen(QColor(190, 190, 190));
    painter.setBrush(QColor(255, 255, 255, 225));
    painter.drawRect(QRect(corner, layout.size()));
    painter.setBrush(Qt::NoBrush);
    const int columnWidth = layout.nameWidth + lineLength + 2 * space;
    const auto placeOf = [&](int number) {
        return corner + QPoint(space + number / layout.rows * columnWidth,
                               (number % layout.rows + 1) * rowHeight);
    };
    for (int i = 0; i < int(layout.curves.size()); ++i) {
        const int curve = layout.curves[std::size_t(i)];
        const QPoint place = placeOf(i);
        painter.setPen(QPen(QColor(colourOf(data, curve)), 2));
        painter.drawLine(place.x(), place.y() - 4, place.x() + lineLength, place.y() - 4);
        painter.setPen(QColor("black"));
        painter.drawText(place + QPoint(lineLength + space, 0),
                         shortName(data, curve, painter.fontMetrics()));
    }
    if (layout.more > 0)
        painter.drawText(placeOf(int(layout.curves.size())), moreText(layout.more));
}

} // namespace Plot
