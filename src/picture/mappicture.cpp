#include "picture/mappicture.h"

#include "picture/colourbar.h"
#include "picture/plotgeometry.h"
#include "picture/plotpainter.h"
#include "picture/rowmaxima.h"
#include "picture/ticks.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr int titleHeight = 18; // pixels
constexpr int axisHeight = 40;
constexpr int panelTitleHeight = 15;
constexpr int panelGap = 8;
constexpr int barWidth = 8;
constexpr int labelHeight = 15;
constexpr int digits = 5; // of values of an axis
constexpr int letterHeight = 12;
constexpr int tickDistance = 60; // along X, at least
constexpr float leastHigh = 8;   // sigma
constexpr float mostHigh = 16;

// Panels beside each other, in as many lines as give them the shape of a landscape and leave little
// room empty.
int panelsAcross(int panels, const QSize &size)
{
    constexpr double wantedShape = 1.4; // width over height
    int best = 1;
    double bestDistance = INFINITY;
    for (int across = 1; across <= panels; ++across) {
        const int lines = (panels + across - 1) / across;
        const double shape = double(size.width()) / across / (double(size.height()) / lines);
        const double empty = 1 - double(panels) / (across * lines);
        const double distance = std::abs(std::log(shape / wantedShape)) + empty;
        if (distance < bestDistance) {
            best = across;
            bestDistance = distance;
        }
    }
    return best;
}

double xOf(const MapPicture &picture, const QRect &area, double column)
{
    return area.left() + (column - picture.columns.min) / picture.columns.extent() * area.width();
}

// The upper edge of a row.
double topOf(const MapPicture &picture, const QRect &area, int row)
{
    const double share = double(row - picture.firstRow + 1) / picture.rowCount;
    return area.top() + area.height() * (1 - share);
}

int pixelsPerUnit(const QPainter &painter)
{
    constexpr double most = 4;
    return int(std::clamp(std::round(painter.deviceTransform().m11()), 1.0, most));
}

QImage imageOf(const MapPicture &picture, const Sky::SkyMap &map, const QSize &pixels)
{
    std::vector<PictureRow> rows;
    for (int row = picture.firstRow + picture.rowCount - 1; row >= picture.firstRow; --row)
        rows.push_back({map.sigma.data() + qint64(row) * map.columns, map.columns, 1});
    const int lines = std::min(int(rows.size()), pixels.height());
    const std::vector<float> values = rowMaxima(rows, picture.columns, pixels.width(), lines);
    QImage image(pixels.width(), lines, QImage::Format_RGB32);
    for (int line = 0; line < lines && !image.isNull(); ++line) {
        const float *const from = values.data() + qint64(line) * pixels.width();
        auto *const to = reinterpret_cast<QRgb *>(image.scanLine(line));
        for (int i = 0; i < pixels.width(); ++i)
            to[i] = colourOfValue(from[i], 0, picture.high);
    }
    return image;
}

// Right ascensions to whole seconds, which the margin has room for.
QString shortName(const QString &name)
{
    constexpr int wholeSeconds = 8; // letters of "hh:mm:ss"
    return name.size() > wholeSeconds && name[2] == ':' ? name.left(wholeSeconds) : name;
}

void paintRowNames(QPainter &painter, const MapPicture &picture, const QRect &area)
{
    const double height = double(area.height()) / picture.rowCount;
    const int every = std::max(1, int(std::ceil(labelHeight / height)));
    for (int row = picture.firstRow; row < picture.firstRow + picture.rowCount; row += every) {
        const int y = int(topOf(picture, area, row) + height / 2);
        painter.drawText(QRect(0, y - labelHeight / 2, area.left() - 4, labelHeight),
                         Qt::AlignRight | Qt::AlignVCenter,
                         shortName(picture.map().rows[std::size_t(row)].name));
    }
}

// Texts along an axis, from the left to the right, none into the one before it. Each is centred
// below its tick as far as the panel has room, for the next panel has texts too.
class TextRow {
public:
    TextRow(QPainter &target, const QRect &panel, int heightOfRow)
        : painter(target), area(panel), top(heightOfRow), end(panel.left())
    {}

    void add(int x, const QString &text)
    {
        constexpr int gap = 6;
        const int width = painter.fontMetrics().horizontalAdvance(text);
        const int left =
            std::clamp(x - width / 2, area.left(), std::max(area.left(), area.right() - width));
        if (left < end)
            return;
        painter.drawText(QRect(left, top, width + 1, labelHeight), Qt::AlignLeft, text);
        end = left + width + gap;
    }

private:
    QPainter &painter;
    QRect area;
    int top;
    int end;
};

struct AxisTick {
    double column = 0;
    double value = 0;
    QString text;
};

// As round as the room of each allows, for neighbouring columns are not evenly apart.
std::vector<AxisTick> unevenTicks(const Sky::SkyMap &map, const Range &columns, int count)
{
    std::vector<AxisTick> all;
    const double spacing = columns.extent() / count;
    for (int i = 0; i < count; ++i) {
        const double place = columns.min + spacing * i;
        const double near = map.axisAt(place);
        const double step = roundStepAbove(std::abs(map.axisAt(place + spacing / 4) - near));
        if (step == 0)
            continue;
        const double value = std::ceil(near / step) * step;
        const auto at = std::lower_bound(map.axis.begin(), map.axis.end(), value);
        const auto column = double(at - map.axis.begin());
        if (column <= columns.max && (all.empty() || column > all.back().column))
            all.push_back({column, value, tickText(value, step)});
    }
    return all;
}

std::vector<AxisTick> ticksOf(const Sky::SkyMap &map, const Range &columns, int count)
{
    if (!map.axis.empty())
        return unevenTicks(map, columns, count);
    std::vector<AxisTick> all;
    const double low = map.axisAt(columns.min);
    const double high = map.axisAt(columns.max);
    const Ticks ticks = roundTicks(low, high, (high - low) / count);
    for (const double value : ticks.values)
        all.push_back({(value - map.first) / map.step, value, tickText(value, ticks.step)});
    return all;
}

// The values of the axis, and below them their reciprocals: frequencies and periods.
void paintAxis(QPainter &painter, const MapPicture &picture, const QRect &area, bool hasNames)
{
    const Sky::SkyMap &map = picture.map();
    const int tickCount = std::max(1, area.width() / tickDistance);
    const int top = area.bottom() + 6;
    TextRow values(painter, area, top);
    TextRow reciprocals(painter, area, top + labelHeight);
    for (const AxisTick &tick : ticksOf(map, picture.columns, tickCount)) {
        const int x = int(xOf(picture, area, tick.column));
        painter.drawLine(x, area.bottom() + 1, x, area.bottom() + 5);
        values.add(x, tick.text);
        if (tick.value > 0)
            reciprocals.add(x, QString::number(1 / tick.value, 'g', digits));
    }
    if (!hasNames)
        return;
    const QString unit = map.axisName.section(", ", 1);
    const QRect names(0, top, area.left() - tickDistance / 4, labelHeight);
    painter.drawText(names, Qt::AlignRight, unit);
    painter.drawText(names.translated(0, labelHeight), Qt::AlignRight, unit == "Hz" ? "s" : "Hz");
}

void paintScale(QPainter &painter, const MapPicture &picture, const QRect &bar)
{
    paintColourBar(painter, bar);
    painter.drawRect(bar.adjusted(-1, -1, 0, 0));
    const QRect beside(bar.right() + 3, bar.top(), marginRight, bar.height());
    painter.drawText(beside, Qt::AlignTop, QString::number(double(picture.high)));
    painter.drawText(beside, Qt::AlignBottom, "0");
}

void paintPanel(QPainter &painter, const MapPicture &picture, std::size_t panel, const QRect &area)
{
    const Sky::SkyMap &map = *picture.panels[panel].map;
    if (area.width() < 2 || area.height() < 2)
        return;
    painter.drawImage(area, imageOf(picture, map, area.size() * pixelsPerUnit(painter)));
    painter.drawRect(area.adjusted(-1, -1, 0, 0));
    const QString &title = picture.panels[panel].title;
    if (picture.panels.size() > 1)
        painter.drawText(
            QRect(area.left(), area.top() - panelTitleHeight, area.width(), panelTitleHeight),
            Qt::AlignLeft | Qt::AlignVCenter,
            painter.fontMetrics().elidedText(title, Qt::ElideRight, area.width()));
}

QString panelTitle(const Sky::SkyPlan &plan, const Sky::SkyMap &map)
{
    const Sky::SkyRay &ray = plan.rays[std::size_t(map.choice.ray)];
    return QString("module %1 ray %2").arg(ray.module).arg(ray.ray);
}

QString titleOf(const Sky::SkyPlan &plan, const Sky::SkyMap &map)
{
    const Sky::MapChoice &choice = map.choice;
    if (choice.axis == Sky::MapAxis::Dispersions)
        return choice.start < 0 && plan.starts > 1
                   ? QString("DM, pc/cm^3, best of %1 stretches").arg(plan.starts)
                   : QString("DM, pc/cm^3, stretch %1").arg(std::max(0, choice.start) + 1);
    const bool isKnown = !map.rows.empty() && std::isfinite(map.rows.front().value);
    return QString(isKnown ? "right ascension, %1" : "start of the stretch, %1")
        .arg(choice.dispersion < 0 && plan.dispersions.size() > 1
                 ? QString("best of %1 DM").arg(plan.dispersions.size())
                 : QString("DM %1 pc/cm^3")
                       .arg(plan.dispersions[std::size_t(std::max(0, choice.dispersion))]));
}

} // namespace

MapPicture mapPicture(const std::vector<std::shared_ptr<const Sky::SkyMap>> &maps,
                      const QStringList &titles, const QString &title)
{
    MapPicture picture;
    picture.title = title;
    float highest = 0;
    for (std::size_t i = 0; i < maps.size(); ++i) {
        picture.panels.push_back({maps[i], titles.value(int(i))});
        for (const float value : maps[i]->sigma)
            highest = value > highest ? value : highest;
    }
    if (picture.isEmpty())
        return picture;
    picture.high = std::clamp(std::ceil(highest), leastHigh, mostHigh);
    picture.columns = {0, double(std::max(1, picture.map().columns))};
    picture.rowCount = picture.allRows();
    return picture;
}

MapPicture mapPicture(const Sky::SkyPlan &plan,
                      const std::vector<std::shared_ptr<const Sky::SkyMap>> &maps)
{
    if (maps.empty())
        return {};
    QStringList titles;
    for (const std::shared_ptr<const Sky::SkyMap> &map : maps)
        titles << panelTitle(plan, *map);
    const QString title = titleOf(plan, *maps.front());
    return mapPicture(maps, titles, maps.size() > 1 ? title : titles.front() + ": " + title);
}

std::vector<QRect> mapAreas(const MapPicture &picture, const QSize &size)
{
    const auto panels = int(picture.panels.size());
    if (panels == 0)
        return {};
    const QRect inner(marginLeft, titleHeight, size.width() - marginLeft - marginRight,
                      size.height() - titleHeight - axisHeight);
    if (panels == 1)
        return {inner};
    const int across = panelsAcross(panels, inner.size());
    const int lines = (panels + across - 1) / across;
    std::vector<QRect> areas;
    for (int panel = 0; panel < panels; ++panel) {
        const int left = inner.left() + (inner.width() + panelGap) * (panel % across) / across;
        const int right =
            inner.left() + (inner.width() + panelGap) * (panel % across + 1) / across - panelGap;
        const int top = inner.top() + inner.height() * (panel / across) / lines;
        const int bottom = inner.top() + inner.height() * (panel / across + 1) / lines;
        areas.emplace_back(left, top + panelTitleHeight, std::max(0, right - left),
                           std::max(0, bottom - top - panelTitleHeight));
    }
    return areas;
}

std::optional<MapPlace> mapPlaceAt(const MapPicture &picture, const QSize &size,
                                   const QPointF &pixel)
{
    const std::vector<QRect> areas = mapAreas(picture, size);
    for (std::size_t panel = 0; panel < areas.size(); ++panel) {
        const QRect &area = areas[panel];
        if (!area.contains(pixel.toPoint()))
            continue;
        const double up = 1 - (pixel.y() - area.top()) / area.height();
        const int row = std::clamp(int(up * picture.rowCount), 0, picture.rowCount - 1);
        const double across = (pixel.x() - area.left()) / area.width();
        return MapPlace{int(panel), picture.firstRow + row,
                        picture.columns.min + across * picture.columns.extent()};
    }
    return {};
}

QRectF mapPixels(const MapPicture &picture, const QSize &size, const MapPlace &from,
                 double toColumn)
{
    const std::vector<QRect> areas = mapAreas(picture, size);
    if (from.panel < 0 || from.panel >= int(areas.size()) || from.row < picture.firstRow ||
        from.row >= picture.firstRow + picture.rowCount)
        return {};
    const QRect &area = areas[std::size_t(from.panel)];
    const double left = xOf(picture, area, from.column);
    const double top = topOf(picture, area, from.row);
    const QRectF wanted(left, top, std::max(1.0, xOf(picture, area, toColumn) - left),
                        double(area.height()) / picture.rowCount);
    return wanted.intersected(QRectF(area));
}

void paintMap(QPainter &painter, const MapPicture &picture, const QSize &size)
{
    painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform, false);
    QFont small = labelFont();
    small.setPixelSize(letterHeight); // the same on the screen and in files, whatever their dpi
    painter.setFont(small);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::NoBrush);
    if (picture.isEmpty() || picture.rowCount == 0 || picture.map().columns == 0)
        return;
    const std::vector<QRect> areas = mapAreas(picture, size);
    for (std::size_t panel = 0; panel < areas.size(); ++panel) {
        const QRect &area = areas[panel];
        paintPanel(painter, picture, panel, area);
        const bool isFirst = area.left() == areas.front().left();
        if (isFirst)
            paintRowNames(painter, picture, area);
        const bool isLast = std::none_of(areas.begin(), areas.end(), [&area](const QRect &other) {
            return other.left() == area.left() && other.top() > area.top();
        });
        if (isLast)
            paintAxis(painter, picture, area, isFirst);
    }
    const QRect line(4, 0, size.width() - 8, titleHeight);
    const QString scale = "sigma";
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, scale);
    const int room = line.width() - painter.fontMetrics().horizontalAdvance(scale) - 2 * barWidth;
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(picture.title, Qt::ElideRight, room));
    paintScale(painter, picture,
               {size.width() - marginRight + 2, titleHeight, barWidth,
                size.height() - titleHeight - axisHeight});
}

Drawing mapDrawing(const MapPicture &picture, const QSize &size, int pngScale)
{
    const auto draw = [&picture, size](QPainter &painter) { paintMap(painter, picture, size); };
    return {size, picture.title, draw, picture.key, pngScale};
}

} // namespace Plot
