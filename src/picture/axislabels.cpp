#include "picture/axislabels.h"

#include "picture/ticks.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Plot {

namespace {

constexpr int yLabelLeft = 14;             // pixels
constexpr int marginRoom = marginLeft - 3; // of texts left of the plot
constexpr int smallestGap = 8;             // between two texts of a row
constexpr double closestTicks = 90;        // pixels
constexpr double yTickSpacing = 40;        // pixels
constexpr double closestGridLines = 20;    // pixels
constexpr std::array<int, 3> usualRows = {10, 30, 45};

using Texts = std::vector<QString>;

template <typename Make>
Texts textsOf(const std::vector<double> &values, Make make)
{
    Texts texts;
    std::transform(values.begin(), values.end(), std::back_inserter(texts), make);
    return texts;
}

int widest(const Texts &texts, const TextWidth &widthOf)
{
    int width = 0;
    for (const QString &text : texts)
        width = std::max(width, widthOf(text));
    return width;
}

// Puts texts at the baselines: at the usual place, or where one of them would run into the plot
// all of them so far to the left that they end before it.
std::vector<Label> beside(const std::vector<int> &baselines, const Texts &texts,
                          const TextWidth &widthOf)
{
    std::vector<Label> labels;
    const bool fits = yLabelLeft + widest(texts, widthOf) <= marginRoom;
    for (std::size_t i = 0; i < texts.size(); ++i)
        labels.push_back(
            {QPoint(fits ? yLabelLeft : marginRoom - widthOf(texts[i]), baselines[i]), texts[i]});
    return labels;
}

// In the shortest notation that has room.
YAxisLabels fitted(const std::vector<int> &baselines, const std::vector<double> &values,
                   const Texts &fixed, double step, const TextWidth &widthOf)
{
    const auto hasRoom = [&](const Texts &texts) {
        return widest(texts, widthOf) <= marginRoom - 2;
    };
    if (hasRoom(fixed))
        return {beside(baselines, fixed, widthOf), {}};
    const Texts rounded = textsOf(values, [&](double value) { return tickText(value, step); });
    const bool isMixed = std::any_of(rounded.begin(), rounded.end(),
                                     [](const QString &text) { return text.contains('e'); });
    if (!isMixed && hasRoom(rounded))
        return {beside(baselines, rounded, widthOf), {}};
    const Texts exponents =
        textsOf(values, [&](double value) { return exponentText(value, step); });
    if (hasRoom(exponents))
        return {beside(baselines, exponents, widthOf), {}};
    const double base = *std::min_element(values.begin(), values.end());
    Texts differences =
        textsOf(values, [&](double value) { return "+" + tickText(value - base, step); });
    if (!hasRoom(differences))
        differences =
            textsOf(values, [&](double value) { return "+" + exponentText(value - base, step); });
    return {beside(baselines, differences, widthOf), tickText(base, step) + " +"};
}

YAxisLabels roundYLabels(const View &view, const TextWidth &widthOf)
{
    const auto [low, high] = std::minmax(view.y.min, view.y.max);
    const double perPixel = (high - low) / std::max(1, view.plotHeight());
    const Ticks ticks = roundTicks(low, high, perPixel * yTickSpacing);
    if (ticks.values.empty())
        return {};
    std::vector<int> baselines;
    for (const double value : ticks.values)
        baselines.push_back(yPixel(view, value) + 4);
    const Texts fixed =
        textsOf(ticks.values, [&](double value) { return tickText(value, ticks.step); });
    return fitted(baselines, ticks.values, fixed, ticks.step, widthOf);
}

// 1, 2 and 5 times the powers of ten, or these alone where they stand too close.
YAxisLabels logYLabels(const View &view, const TextWidth &widthOf)
{
    const double decadePixels =
        view.plotHeight() / std::max(1e-9, view.yScale.max - view.yScale.min);
    constexpr double roomForParts = 90; // pixels of a decade
    constexpr double fewDecades = 0.7;
    if (view.yScale.max - view.yScale.min < fewDecades)
        return roundYLabels(view, widthOf);
    std::vector<int> baselines;
    Texts texts;
    for (int decade = int(std::floor(view.yScale.min)); decade <= view.yScale.max; ++decade)
        for (const double factor : {1.0, 2.0, 5.0}) {
            const double value = factor * std::pow(10.0, decade);
            const bool isShown = factor == 1 || decadePixels > roomForParts;
            if (!isShown || value < view.y.min || value > view.y.max)
                continue;
            baselines.push_back(yPixel(view, value) + 4);
            texts.push_back(std::abs(decade) > 4 ? exponentText(value, value)
                                                 : tickText(value, value));
        }
    return {beside(baselines, texts, widthOf), {}};
}

// The axis whose values the lowest row has.
PlotAxis lowestRow(const PlotData &data)
{
    if (data.pointStep > 0)
        return {"point", {}, data.firstPoint, data.pointStep, {}};
    return data.x;
}

bool isWhole(const PlotAxis &axis)
{
    return axis.unit.isEmpty() && (axis.name.isEmpty() || axis.name == "point" ||
                                   axis.name == "index" || axis.name == "channel");
}

struct AxisTick {
    double index = 0; // with fraction
    QString text;
};

QString withUnit(const QString &number, const QString &unit)
{
    return unit.isEmpty() ? number : number + " " + unit;
}

std::vector<AxisTick> evenTicks(const View &view, const PlotAxis &axis, double spacing,
                                double *tickStep)
{
    const Range shown = {view.first, std::min(view.x().max, double(view.allPoints - 1))};
    const auto [low, high] = std::minmax({axisValue(axis, shown.min), axisValue(axis, shown.max)});
    const double perPixel = std::abs(axis.step) * dataPerPixel(view).x();
    const Ticks ticks =
        roundTicks(low, high, std::max(perPixel * spacing, isWhole(axis) ? 1.0 : 0.0));
    *tickStep = ticks.step;
    std::vector<AxisTick> places;
    for (const double value : ticks.values)
        places.push_back(
            {axisIndex(axis, value), withUnit(tickText(value, ticks.step), axis.unit)});
    if (axis.step < 0)
        std::reverse(places.begin(), places.end());
    return places;
}

// Where neighbouring points are unequally far apart, each tick is as round as its place allows.
std::vector<AxisTick> unevenTicks(const View &view, const PlotAxis &axis, double spacing)
{
    std::vector<AxisTick> places;
    for (double offset = 0; offset < view.plotWidth(); offset += spacing) {
        const auto valueAt = [&](double x) {
            return axisValue(axis, coordsOf(view, {marginLeft + x, 0}).x());
        };
        const double reach = spacing / 4;
        const double step = roundStepAbove(std::abs(valueAt(offset + reach) - valueAt(offset)));
        if (step == 0)
            continue;
        const double value = std::round(valueAt(offset) / step) * step;
        const double index = axisIndex(axis, value);
        if (index >= view.first && (places.empty() || index > places.back().index))
            places.push_back({index, withUnit(tickText(value, step), axis.unit)});
    }
    return places;
}

bool touches(const Label &left, const Label &right, const TextWidth &widthOf)
{
    return left.position.y() == right.position.y() &&
           left.position.x() + widthOf(left.text) + smallestGap > right.position.x();
}

// Texts move left where they would run over the edge, and those that then touch the one before
// them are left out.
std::vector<Label> apart(const std::vector<Label> &row, const View &view, const TextWidth &widthOf,
                         bool *isWhole)
{
    std::vector<Label> shown;
    *isWhole = true;
    for (Label label : row) {
        if (label.text.isEmpty())
            continue;
        const int last = view.width - 2 - widthOf(label.text);
        label.position.setX(std::max(0, std::min(label.position.x(), last)));
        if (shown.empty() || !touches(shown.back(), label, widthOf))
            shown.push_back(label);
        else
            *isWhole = *isWhole && label.position.x() == last;
    }
    return shown;
}

XAxisLabels usualXLabels(const View &view, const PlotData &data, const TextWidth &widthOf)
{
    constexpr int gridSpacing = 50;
    XAxisLabels all;
    for (const LabelPlace &place : labelPlaces(view, data.labelEvery1))
        all.ticks.push_back(place.offset);
    for (int offset = 0; offset < view.plotWidth(); offset += gridSpacing)
        all.grid.push_back(offset);
    for (const auto &row : {xLabels1(view, data), xLabels2(view, data), xLabels3(view, data)}) {
        bool isWhole = true;
        const std::vector<Label> shown = apart(row, view, widthOf, &isWhole);
        all.labels.insert(all.labels.end(), shown.begin(), shown.end());
    }
    return all;
}

// Vertical lines between the ticks, as many as there is room for.
void addGrid(XAxisLabels &all, const View &view, const std::vector<AxisTick> &ticks, double step)
{
    all.grid = all.ticks;
    if (ticks.size() < 2 || !(step > 0))
        return;
    const double indices = ticks[1].index - ticks[0].index;
    const int first = int(std::round(step / std::pow(10.0, std::floor(std::log10(step) + 1e-9))));
    const int parts = first == 2 ? 4 : 5;
    if (indices / parts * view.step() < closestGridLines)
        return;
    all.grid.clear();
    for (int i = -parts; i <= int(ticks.size()) * parts; ++i) {
        const double x = (ticks[0].index + indices * i / parts - view.first) * view.step();
        if (x >= 0 && x <= view.plotWidth())
            all.grid.push_back(int(x));
    }
}

} // namespace

YAxisLabels yAxisLabels(const View &view, int precision, const TextWidth &widthOf)
{
    if (view.plotHeight() <= 0)
        return {};
    if (view.isLog)
        return logYLabels(view, widthOf);
    if (view.isZoomed)
        return roundYLabels(view, widthOf);
    std::vector<int> baselines;
    std::vector<double> values;
    Texts fixed;
    for (const Label &label : yLabels(view, precision)) {
        baselines.push_back(label.position.y());
        values.push_back(coordsOf(view, QPointF(0, label.position.y() - 4)).y());
        fixed.push_back(label.text);
    }
    if (values.empty())
        return {};
    // A tenth of the step between labels, for these values are not round.
    const double step = dataPerPixel(view).y() * yTickSpacing / 10;
    return fitted(baselines, values, fixed, step, widthOf);
}

XAxisLabels xAxisLabels(const View &view, const PlotData &data, const TextWidth &widthOf,
                        int rowHeight)
{
    if (view.plotWidth() <= 0)
        return {};
    if (!view.isZoomed)
        return usualXLabels(view, data, widthOf);
    const PlotAxis axis = lowestRow(data);
    const std::array<int, 3> heights = rowHeights(view, data, rowHeight);
    constexpr double sparser = 1.5;
    constexpr double sparsest = 1000; // pixels
    XAxisLabels all;
    for (double spacing = closestTicks;; spacing *= sparser) {
        double step = 0;
        const std::vector<AxisTick> ticks = axis.values.empty()
                                                ? evenTicks(view, axis, spacing, &step)
                                                : unevenTicks(view, axis, spacing);
        all = {};
        std::array<std::vector<Label>, 3> rows;
        for (const AxisTick &tick : ticks) {
            const int x = int(placeOf(view, {tick.index, 0}).x());
            all.ticks.push_back(x - marginLeft);
            rows[0].push_back({QPoint(x, view.height - heights[0]), tick.text});
            for (const int row : {1, 2})
                rows[std::size_t(row)].push_back(
                    {QPoint(x, view.height - heights[std::size_t(row)]),
                     rowText(data, row, int(std::lround(tick.index)))});
        }
        cutToSeconds(rows[1], true);
        bool fits = true;
        for (const std::vector<Label> &row : rows) {
            bool isWhole = true;
            const std::vector<Label> shown = apart(row, view, widthOf, &isWhole);
            fits = fits && isWhole;
            all.labels.insert(all.labels.end(), shown.begin(), shown.end());
        }
        addGrid(all, view, ticks, step);
        if (fits || spacing > sparsest)
            return all;
    }
}

std::array<int, 3> rowHeights(const View &view, const PlotData &data, int rowHeight)
{
    constexpr int usualSpacing = 15;
    std::array<int, 3> heights = usualRows;
    if (view.isZoomed && rowHeight > usualSpacing)
        for (int row = 0; row < 3; ++row)
            heights[std::size_t(row)] = usualRows[0] - 2 + row * rowHeight;
    else if (data.labelsX1.isEmpty() && !data.textX1)
        heights[0] = usualSpacing; // numbers of points stand a little higher
    return heights;
}

std::vector<Label> axisNames(const View &view, const PlotData &data, const TextWidth &widthOf,
                             int rowHeight)
{
    constexpr int yNameBaseline = 13;
    std::vector<Label> names;
    const std::array<int, 3> heights = rowHeights(view, data, rowHeight);
    for (int row = 0; row < 3; ++row) {
        const QString name = data.rowNames.value(row);
        const bool hasTexts = row == 0 || !rowText(data, row, int(view.first) + 1).isEmpty();
        if (!name.isEmpty() && hasTexts)
            names.push_back({QPoint(std::max(2, marginRoom - 1 - widthOf(name)),
                                    view.height - heights[std::size_t(row)]),
                             name});
    }
    if (!data.yName.isEmpty())
        names.push_back({QPoint(4, yNameBaseline),
                         data.yUnit.isEmpty() ? data.yName : data.yName + ", " + data.yUnit});
    return names;
}

} // namespace Plot
