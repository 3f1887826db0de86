#include "picture/arrayplot.h"

#include "calc/seriesstatistics.h"
#include "picture/axistexts.h"
#include "picture/plotgeometry.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>

namespace ArrayPlot {

namespace {

// What is beyond the floats is infinite.
float toFloat(double value)
{
    constexpr double most = std::numeric_limits<float>::max();
    if (std::abs(value) > most)
        return std::copysign(std::numeric_limits<float>::infinity(), float(value > 0 ? 1 : -1));
    return float(value);
}

Plot::Range rangeOf(const std::vector<double> &values, Plot::Range range)
{
    for (const double value : values) {
        if (std::isfinite(value)) {
            range.min = std::min(range.min, value);
            range.max = std::max(range.max, value);
        }
    }
    return range;
}

Plot::Range emptyRange()
{
    return {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
}

void setRange(PlotData &data, const Plot::Range &range)
{
    if (range.min > range.max)
        return;
    data.yMin = range.min;
    data.yMax = range.max;
    data.yPrecision = Plot::labelDecimals(range.max - range.min);
}

void addColours(PlotData &data, const std::vector<Series> &series)
{
    for (const Series &one : series)
        data.colours << plotColour(one.index).code;
}

} // namespace

int longest(const std::vector<Series> &series)
{
    std::size_t length = 0;
    for (const Series &one : series)
        length = std::max(length, one.values.size());
    return int(length);
}

IndexRange pointsBetween(double first, double last, int length)
{
    if (length < 1)
        return {};
    const double end = length - 1;
    const int begin = int(std::ceil(std::clamp(first, 0.0, end)));
    return {begin, std::max(1, int(std::floor(std::clamp(last, 0.0, end))) - begin + 1)};
}

QString numberText(double value)
{
    constexpr int digits = 8;
    return QString::number(value, 'g', digits);
}

std::vector<double> part(const std::vector<double> &values, const IndexRange &indices)
{
    const int length = int(values.size());
    const int begin = std::min(indices.first, length);
    const int end = std::min(indices.first + indices.count, length);
    return {values.begin() + begin, values.begin() + end};
}

PlotData plot(const std::vector<Series> &series, const std::shared_ptr<const Results::ArrayAxis> &x)
{
    PlotData data;
    Plot::Range range = emptyRange();
    for (const Series &one : series) {
        range = rangeOf(one.values, range);
        std::vector<float> &graph = data.graphs.emplace_back(one.values.size());
        std::transform(one.values.begin(), one.values.end(), graph.begin(), toFloat);
    }
    addColours(data, series);
    for (const Series &one : series)
        data.names << one.name;
    setRange(data, range);
    data.numPoints = std::max(1, longest(series));
    data.x.name = x->isIndex() ? "index" : x->name;
    data.rowNames = QStringList{data.x.name, "index"};
    if (x->isIndex())
        return data;
    data.textX1 = [x](int index) {
        const auto i = std::size_t(index);
        return i < x->values.size() ? numberText(x->values[i]) : QString();
    };
    data.textX2 = [](int index) { return QString::number(index); };
    if (x->values.size() > 1 && x->isEven()) {
        data.x.first = x->values[0];
        data.x.step = x->values[1] - x->values[0];
    } else {
        data.x.values = x->values;
    }
    return data;
}

PlotData histogramPlot(const std::vector<Series> &series, const IndexRange &indices, int bins)
{
    PlotData data;
    Plot::Range range = emptyRange();
    for (const Series &one : series)
        range = rangeOf(part(one.values, indices), range);
    qint64 most = 0;
    for (const Series &one : series) {
        const std::vector<qint64> counts =
            Tools::histogram(part(one.values, indices), range.min, range.max, bins);
        data.graphs.emplace_back(counts.begin(), counts.end());
        for (const qint64 count : counts)
            most = std::max(most, count);
    }
    if (most == 0) {
        data.messageMode = true;
        data.message = range.min == range.max ? "All values are " + numberText(range.min) : "";
        return data;
    }
    addColours(data, series); // without names: a legend would hide the little there is
    data.numPoints = bins;
    data.yMin = 0;
    data.yMax = double(most);
    data.yPrecision = 0;
    data.yName = "number of values";
    data.x.name = "value";
    data.rowNames = QStringList{"value"};
    data.x.step = (range.max - range.min) / bins;
    data.x.first = range.min + data.x.step / 2;
    data.textX1 = [axis = data.x](int index) {
        constexpr int digits = 4;
        return QString::number(axis.first + axis.step * index, 'g', digits);
    };
    return data;
}

} // namespace ArrayPlot
