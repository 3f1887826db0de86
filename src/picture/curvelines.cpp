#include "picture/curvelines.h"

#include <QLineF>
#include <algorithm>
#include <cmath>
#include <optional>

namespace Plot {

namespace {

constexpr double farAway = 1e9; // pixels
// Lines that cross themselves often take painters a time that grows with the square of their
// length: one line of 17000 points half a minute.
constexpr int mostPoints = 16;

// Cuts a segment to a rectangle; false when none of it lies inside.
bool cutTo(const QRectF &area, QLineF &segment)
{
    double begin = 0;
    double end = 1;
    const double dx = segment.dx();
    const double dy = segment.dy();
    // way along the segment's direction, and how far the edge is in it
    const std::pair<double, double> edges[] = {{-dx, segment.x1() - area.left()},
                                               {dx, area.right() - segment.x1()},
                                               {-dy, segment.y1() - area.top()},
                                               {dy, area.bottom() - segment.y1()}};
    for (const auto &[way, distance] : edges) {
        if (way == 0 && distance < 0)
            return false;
        if (way < 0)
            begin = std::max(begin, distance / way);
        else if (way > 0)
            end = std::min(end, distance / way);
    }
    if (begin > end)
        return false;
    const QPointF start = segment.p1();
    if (end < 1)
        segment.setP2(start + QPointF(dx, dy) * end);
    if (begin > 0)
        segment.setP1(start + QPointF(dx, dy) * begin);
    return true;
}

// Joins points to lines that stay within a rectangle.
class Lines {
public:
    explicit Lines(const QRectF &area) : clip(area) {}

    void add(const QPointF &place)
    {
        const QPointF point(place.x(), std::clamp(place.y(), -farAway, farAway));
        if (previous) {
            QLineF segment(*previous, point);
            if (cutTo(clip, segment))
                append(segment);
        }
        previous = point;
    }
    void interrupt() { previous.reset(); }

    std::vector<QPolygonF> lines;

private:
    void append(const QLineF &segment)
    {
        const bool goesOn = !lines.empty() && lines.back().last() == segment.p1();
        if (!goesOn || lines.back().size() >= mostPoints)
            lines.push_back(QPolygonF({segment.p1()}));
        lines.back().append(segment.p2());
    }

    const QRectF clip;
    std::optional<QPointF> previous;
};

void join(std::optional<Range> &range, double low, double high)
{
    range = range ? Range{std::min(range->min, low), std::max(range->max, high)} : Range{low, high};
}

// Extremes of the samples that are numbers; of the rest whole blocks are passed over.
std::optional<Range> numbersWithin(const std::vector<float> &curve, const BlockExtremes &blocks,
                                   int begin, int end)
{
    constexpr int blockSize = int(BlockExtremes::blockSize);
    std::optional<Range> range;
    for (int i = begin; i < end;) {
        const auto block = size_t(i / blockSize);
        if (i % blockSize == 0 && end - i >= blockSize && block < blocks.count()) {
            const Extremes found = blocks[block];
            if (!found.hasNan)
                join(range, found.low, found.high);
            if (!found.hasNan || blocks.isAllNan(block)) {
                i += blockSize;
                continue;
            }
        }
        const double sample = curve[size_t(i)];
        if (!std::isnan(sample))
            join(range, sample, sample);
        ++i;
    }
    return range;
}

// Extremes of a stretch of at least one sample; nothing where it is all NaN.
std::optional<Range> rangeWithin(const std::vector<float> &curve, const BlockExtremes &blocks,
                                 int begin, int end)
{
    const Extremes found = blocks.between(curve, size_t(begin), size_t(end));
    if (found.hasNan)
        return numbersWithin(curve, blocks, begin, end);
    return Range{found.low, found.high};
}

} // namespace

std::vector<QPolygonF> curveLines(const View &view, const std::vector<float> &curve,
                                  const BlockExtremes &blocks, int perPixel)
{
    constexpr int mostKept = 4;
    if (view.plotWidth() <= 0 || view.plotHeight() <= 0)
        return {};
    Lines lines((QRectF(view.clip())));
    const auto addSample = [&](int i, double x) {
        if (std::isnan(curve[size_t(i)]))
            lines.interrupt();
        else
            lines.add({x, placeOf(view, {0, curve[size_t(i)]}).y()});
    };
    const IndexRange points = pointsInSight(view, int(curve.size()));
    const double pointsPerColumn = view.points / (double(view.plotWidth()) * perPixel);
    int column = 0;
    for (int begin = points.begin; begin < points.end; ++column) {
        const double exactEnd = points.begin + (column + 1) * pointsPerColumn;
        const int end = std::clamp(int(std::ceil(exactEnd)), begin + 1, points.end);
        if (end - begin <= mostKept) {
            for (int i = begin; i < end; ++i)
                addSample(i, placeOf(view, {double(i), 0}).x());
        } else if (const auto range = rangeWithin(curve, blocks, begin, end)) {
            const double x = placeOf(view, {(begin + end - 1) / 2.0, 0}).x();
            addSample(begin, x);
            lines.add({x, placeOf(view, {0, range->min}).y()});
            lines.add({x, placeOf(view, {0, range->max}).y()});
            addSample(end - 1, x);
        } else {
            lines.interrupt();
        }
        begin = end;
    }
    return std::move(lines.lines);
}

double pixelsWithin(const QRect &area, const View &view, const std::vector<float> &curve,
                    const BlockExtremes &blocks)
{
    const IndexRange inSight = pointsInSight(view, int(curve.size()));
    double pixels = 0;
    for (int column = area.left(); column <= area.right(); ++column) {
        // also the first point of the next column, so that steep lines count
        const double first = coordsOf(view, QPointF(column, 0)).x();
        const int begin = int(std::clamp<double>(std::floor(first), inSight.begin, inSight.end));
        const int end =
            int(std::clamp<double>(std::floor(first + 1 / view.step()) + 2, begin, inSight.end));
        const auto range = end > begin ? rangeWithin(curve, blocks, begin, end) : std::nullopt;
        if (!range)
            continue;
        const auto [top, bottom] =
            std::minmax({yPixel(view, range->min), yPixel(view, range->max)});
        pixels += std::max(0, std::min(bottom, area.bottom()) - std::max(top, area.top()) + 1);
    }
    return pixels;
}

} // namespace Plot
