#include "picture/plotgeometry.h"

#include "base/timetext.h"

#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

constexpr double rangeFloor = -100000;
constexpr double rangeCeiling = 100000;
constexpr double farAway = 1e9; // pixels, with room to spare below the largest int
constexpr int yLabelSpacing = 50;
constexpr int xLabelSpacing = 150;
// A label whose baseline is further than this outside the widget leaves no pixel inside.
constexpr int labelReach = 20;

int truncated(double pixel)
{
    if (std::isnan(pixel))
        return 0;
    return int(std::clamp(pixel, -farAway, farAway));
}

void widen(Range &range, const Extremes &found)
{
    range.min = std::min(range.min, double(found.low));
    range.max = std::max(range.max, double(found.high));
}

// Widens the range by the finite samples; only blocks with others are looked through one by one.
void widen(Range &range, const std::vector<float> &curve, const BlockExtremes &blocks)
{
    constexpr size_t blockSize = BlockExtremes::blockSize;
    for (size_t begin = 0; begin < curve.size(); begin += blockSize) {
        const size_t end = std::min(curve.size(), begin + blockSize);
        const Extremes block = blocks.between(curve, begin, end);
        if (block.finite()) {
            widen(range, block);
            continue;
        }
        for (size_t i = begin; i < end; ++i)
            if (std::isfinite(curve[i]))
                widen(range, {curve[i], curve[i], false});
    }
}

// The labels and the mouse need a finite range of some extent.
Range shownRange(double min, double max)
{
    constexpr double limit = 1e300; // differences of two such values are still finite
    min = std::isnan(min) ? 0 : std::clamp(min, -limit, limit);
    max = std::isnan(max) ? 0 : std::clamp(max, -limit, limit);
    if (min != max)
        return {min, max};
    const double extent = std::max(1.0, std::abs(min) / 1000);
    return {min - extent, max + extent};
}

int longestCurve(const PlotData &data)
{
    size_t longest = 0;
    for (const auto *set : {&data.graphs, &data.multiGraphs})
        for (const auto &curve : *set)
            longest = std::max(longest, curve.size());
    return int(longest);
}

// X positions across the whole plot.
int positions(const PlotData &data)
{
    return std::max(1, data.numPoints > 0 ? data.numPoints : longestCurve(data));
}

double heightOfValue(const View &view, double value)
{
    const double scaled = view.isLog ? scaledY(view, value) : value;
    return marginBottom +
           (scaled - view.yScale.min) * view.plotHeight() / (view.yScale.max - view.yScale.min);
}

double valueAtHeight(const View &view, double height)
{
    const double extent = view.yScale.max - view.yScale.min;
    const double value = (height - marginBottom) * extent / view.plotHeight() + view.yScale.min;
    if (view.isLog)
        return unscaledY(view, value);
    // At the height of 0 rounding may leave a trace, which would be shown as "-0.000".
    constexpr double trace = 1e-12;
    return std::abs(value) < trace * std::abs(extent) ? 0 : value;
}

Label yLabel(const View &view, double height, int precision)
{
    QString text = QString::number(valueAtHeight(view, height), 'f', std::clamp(precision, 0, 20));
    // Longer texts keep their sign: it says on which side of zero the value lies.
    if (text == "-0" || text == "-0.0" || text == "-0.00")
        text = "0";
    return {QPoint(14, view.height - int(std::lround(height)) + 4), text};
}

int indexAtOffset(const View &view, int offset)
{
    return truncated(std::round(view.first + offset / view.step()));
}

// A row of texts that belong to points, from a list or made on demand.
struct TextRow {
    const QVector<QString> &texts;
    const std::function<QString(int)> &make;
    int count; // points that have a text

    TextRow(const PlotData &data, const QVector<QString> &list,
            const std::function<QString(int)> &maker)
        : texts(list), make(maker), count(list.size())
    {
        if (list.isEmpty() && maker)
            count = data.numPoints > 0 ? data.numPoints : longestCurve(data);
    }
    bool isEmpty() const { return count == 0; }
    QString operator[](int index) const { return texts.isEmpty() ? make(index) : texts[index]; }
};

std::vector<Label> pointLabels(const View &view, const TextRow &texts, int every, int height)
{
    std::vector<Label> labels;
    if (texts.isEmpty())
        return labels;
    for (const auto &[offset, index] : labelPlaces(view, every)) {
        if (index < texts.count)
            labels.push_back({QPoint(marginLeft + offset, view.height - height), texts[index]});
    }
    return labels;
}

} // namespace

bool isPainted(const QSize &size)
{
    return size.width() - 1 > 99 || size.height() - 1 > 99;
}

Range verticalRange(const PlotData &data)
{
    return verticalRange(data, {});
}

Range verticalRange(const PlotData &data, const CurveBlocks &blocks)
{
    const bool isMulti = !data.multiGraphs.empty();
    const auto &curves = isMulti ? data.multiGraphs : data.graphs;
    const auto &blocksOfCurves = isMulti ? blocks.multiGraphs : blocks.graphs;
    if (curves.empty())
        return {0, 0};
    Range range{rangeCeiling, rangeFloor};
    for (size_t i = 0; i < curves.size(); ++i)
        widen(range, curves[i], i < blocksOfCurves.size() ? blocksOfCurves[i] : BlockExtremes());
    const bool isUntouched = range.min == rangeCeiling && range.max == rangeFloor;
    return isUntouched ? Range{0, 0} : range;
}

bool lacksFinite(const std::vector<float> &curve)
{
    return !curve.empty() && std::none_of(curve.begin(), curve.end(),
                                          [](float value) { return std::isfinite(value); });
}

bool showsNothingFinite(const PlotData &data)
{
    bool isAnyEmpty = false;
    for (const auto *set : {&data.graphs, &data.multiGraphs})
        for (size_t i = 0; i < set->size(); ++i) {
            if (!isVisible(data, int(i)) || (*set)[i].empty())
                continue;
            if (!lacksFinite((*set)[i]))
                return false;
            isAnyEmpty = true;
        }
    return isAnyEmpty;
}

View viewOf(const PlotData &data, const QSize &size)
{
    return viewOf(data, size, Zoom());
}

View viewOf(const PlotData &data, const QSize &size, const Zoom &zoom)
{
    View view;
    view.width = size.width();
    view.height = size.height();
    view.allPoints = positions(data);
    view.points = view.allPoints;
    view.y = zoom.y ? *zoom.y : allOfY(data);
    view.isLog = data.isLogarithmic;
    view.yScale = {scaledY(view, view.y.min), scaledY(view, view.y.max)};
    view.isZoomed = !zoom.isNone() || view.isLog;
    if (zoom.x) {
        view.first = zoom.x->min;
        view.points = zoom.x->extent();
    }
    const auto &first = data.graphs.empty() ? data.multiGraphs : data.graphs;
    if (!first.empty())
        view.lastIndex = std::max(0, int(first.front().size()) - 1);
    return view;
}

Range allOfX(const PlotData &data)
{
    return {0, double(positions(data))};
}

Range allOfY(const PlotData &data)
{
    if (!data.isLogarithmic)
        return shownRange(data.yMin, data.yMax);
    constexpr double widest = 1e5;
    const double high = data.yMax > 0 ? std::min(data.yMax, 1e300) : 1;
    const double least = data.yLeast > 0 && data.yLeast < high ? data.yLeast : high / widest;
    return {least, high};
}

Zoom limitedZoom(const PlotData &data, const Zoom &wanted)
{
    const Range allX = allOfX(data);
    const Range allY = allOfY(data);
    Zoom zoom;
    if (wanted.x)
        zoom.x = within(*wanted.x, allX, fewestPoints);
    if (wanted.y)
        zoom.y = within(*wanted.y, allY, smallestExtent(allY));
    if (zoom.x == allX)
        zoom.x.reset();
    if (zoom.y == allY)
        zoom.y.reset();
    return zoom;
}

IndexRange pointsInSight(const View &view, int count)
{
    const double last = std::min(double(count), double(view.allPoints));
    const double begin = std::clamp(std::floor(view.first) - 1, 0.0, last);
    const double end = std::clamp(std::ceil(view.first + view.points) + 2, begin, last);
    return {int(begin), int(end)};
}

int xPixel(const View &view, int index)
{
    return truncated(marginLeft + (index - view.first) * view.step());
}

int yPixel(const View &view, double value)
{
    return truncated(view.height - heightOfValue(view, value));
}

double scaledY(const View &view, double value)
{
    constexpr double tiny = 1e-300;
    return view.isLog ? std::log10(std::max(value, tiny)) : value;
}

double unscaledY(const View &view, double scaled)
{
    return view.isLog ? std::pow(10.0, scaled) : scaled;
}

QPoint wholePixel(const QPointF &position)
{
    return {truncated(std::round(position.x())), truncated(std::round(position.y()))};
}

QPointF dataAt(const View &view, const QPoint &pixel)
{
    double x = view.first;
    if (pixel.x() > view.width - marginRight)
        x = view.isZoomed ? std::min(double(view.lastIndex), view.x().max) : view.lastIndex;
    else if (pixel.x() >= marginLeft && view.plotWidth() > 0)
        x = view.first + double(pixel.x() - marginLeft) * view.points / view.plotWidth();

    double y = 0;
    const double height = double(view.height) - pixel.y();
    if (height >= marginBottom && height <= view.height - marginTop && view.plotHeight() > 0)
        y = valueAtHeight(view, height);
    return {x, y};
}

QPointF placeOf(const View &view, const QPointF &coords)
{
    return {marginLeft + (coords.x() - view.first) * view.step(),
            view.height - heightOfValue(view, coords.y())};
}

QPointF coordsOf(const View &view, const QPointF &place)
{
    return {view.first + (place.x() - marginLeft) / view.step(),
            valueAtHeight(view, view.height - place.y())};
}

QPointF dataPerPixel(const View &view)
{
    const int height = std::max(1, view.plotHeight());
    const double scaled = std::abs(view.yScale.max - view.yScale.min) / height;
    // of a logarithmic axis in its middle
    const double middle = (view.yScale.min + view.yScale.max) / 2;
    return {view.points / std::max(1, view.plotWidth()),
            view.isLog ? unscaledY(view, middle + scaled) - unscaledY(view, middle) : scaled};
}

std::vector<Label> yLabels(const View &view, int precision)
{
    std::vector<Label> labels;
    if (view.plotHeight() <= 0)
        return labels;
    const double top = view.height - marginTop;
    const double zero = view.y.min <= 0 ? heightOfValue(view, 0) : marginBottom;

    double height = zero;
    const double lowest = -labelReach;
    if (height < lowest) // a reversed range: go on from the first label in sight
        height = lowest + yLabelSpacing - std::fmod(lowest - height, yLabelSpacing);
    while (height <= top) {
        labels.push_back(yLabel(view, height, precision));
        height += yLabelSpacing;
    }
    if (view.y.min > 0)
        return labels;

    height = zero - yLabelSpacing;
    const double highest = view.height + labelReach;
    if (height > highest) // a narrow range far below 0: the same from above
        height = highest - yLabelSpacing + std::fmod(height - highest, yLabelSpacing);
    while (height > marginBottom + 10) {
        labels.push_back(yLabel(view, height, precision));
        height -= yLabelSpacing;
    }
    return labels;
}

std::vector<LabelPlace> labelPlaces(const View &view, int every)
{
    std::vector<LabelPlace> places;
    const qint64 spacing = qint64(std::max(1, every)) * xLabelSpacing;
    for (qint64 offset = 0; offset < view.plotWidth(); offset += spacing)
        places.push_back({int(offset), indexAtOffset(view, int(offset))});
    return places;
}

std::vector<Label> xLabels1(const View &view, const PlotData &data)
{
    if (const TextRow row(data, data.labelsX1, data.textX1); !row.isEmpty())
        return pointLabels(view, row, data.labelEvery1, 10);
    std::vector<Label> labels;
    for (const auto &[offset, index] : labelPlaces(view, data.labelEvery1))
        labels.push_back({QPoint(marginLeft + offset, view.height - 15), QString::number(index)});
    return labels;
}

std::vector<Label> xLabels2(const View &view, const PlotData &data)
{
    std::vector<Label> labels =
        pointLabels(view, {data, data.labelsX2, data.textX2}, data.labelEvery2, 30);
    cutToSeconds(labels, false);
    return labels;
}

void cutToSeconds(std::vector<Label> &labels, bool keepsDifferences)
{
    std::vector<Label> cut = labels;
    for (Label &label : cut)
        if (label.text.size() > 8 && label.text[2] == ':')
            label.text.truncate(8);
    const auto sameText = [](const Label &a, const Label &b) { return a.text == b.text; };
    if (!keepsDifferences || std::adjacent_find(cut.begin(), cut.end(), sameText) == cut.end())
        labels = std::move(cut);
}

QString rowText(const PlotData &data, int row, int index)
{
    const TextRow texts = row == 0   ? TextRow(data, data.labelsX1, data.textX1)
                          : row == 1 ? TextRow(data, data.labelsX2, data.textX2)
                                     : TextRow(data, data.labelsX3, data.textX3);
    return index >= 0 && index < texts.count ? texts[index] : QString();
}

std::vector<Label> xLabels3(const View &view, const PlotData &data)
{
    return pointLabels(view, {data, data.labelsX3, data.textX3}, data.labelEvery3, 45);
}

double axisValue(const PlotAxis &axis, double index)
{
    const std::vector<double> &values = axis.values;
    if (values.empty())
        return axis.first + index * axis.step;
    const double last = double(values.size() - 1);
    const double inside = index > 0 ? std::min(index, last) : 0; // a NaN goes to the beginning
    const auto before = size_t(inside);
    const size_t after = std::min(before + 1, values.size() - 1);
    return values[before] + (inside - double(before)) * (values[after] - values[before]);
}

double axisIndex(const PlotAxis &axis, double value)
{
    const std::vector<double> &values = axis.values;
    if (values.empty())
        return axis.step == 0 ? 0 : (value - axis.first) / axis.step;
    const bool falls = values.back() < values.front();
    const auto after = falls ? std::lower_bound(values.begin(), values.end(), value,
                                                [](double a, double b) { return a > b; })
                             : std::lower_bound(values.begin(), values.end(), value);
    if (after == values.begin() || after == values.end())
        return after == values.begin() ? 0 : double(values.size() - 1);
    const auto before = after - 1;
    return double(before - values.begin()) + (value - *before) / (*after - *before);
}

QVector<QString> labelsAt(const PlotData &data, double x)
{
    const int index = truncated(x);
    QVector<QString> texts;
    const auto add = [&](const TextRow &row, int first) {
        if (!row.isEmpty())
            texts.append(index >= first && index < row.count ? row[index] : QString("-"));
    };
    add({data, data.labelsX1, data.textX1}, 0);
    add({data, data.labelsX2, data.textX2}, 0);
    add({data, data.labelsX3, data.textX3}, 1);
    return texts;
}

QString timeText(const PlotData &data, int index)
{
    if (!data.beginTime.isValid())
        return {};
    const double milliseconds = std::floor(index * data.msPerPoint);
    constexpr double limit = 1e15; // some 30000 years
    if (!(std::abs(milliseconds) < limit))
        return {};
    return textOfTime(data.beginTime.addMSecs(qint64(milliseconds)), "hh:mm:ss");
}

QString coordinateText(double value, double perPixel)
{
    const int decimals = perPixel > 0 ? int(std::ceil(-std::log10(perPixel))) : 0;
    if (decimals <= 6 && std::abs(value) < 1e7)
        return QString::number(value, 'f', std::max(0, decimals));
    const int wholeDigits = value == 0 ? 1 : int(std::floor(std::log10(std::abs(value)))) + 1;
    return QString::number(value, 'g', std::clamp(wholeDigits + decimals, 1, 12));
}

QString colourOf(const PlotData &data, int curve)
{
    if (curve < data.colours.size())
        return data.colours[curve];
    return plotColour(curve).code;
}

bool isVisible(const PlotData &data, int curve)
{
    return size_t(curve) >= data.visible.size() || data.visible[size_t(curve)];
}

} // namespace Plot
