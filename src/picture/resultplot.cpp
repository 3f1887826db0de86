#include "picture/resultplot.h"

#include "base/numbertext.h"
#include "calc/pulsar/axislines.h"
#include "data/recordingtime.h"
#include "picture/axistexts.h"
#include "picture/percentiles.h"
#include "picture/plotgeometry.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <numeric>
#include <tuple>

namespace Plot {

using namespace Results;

namespace {

std::vector<float> floatsOf(const Column &column)
{
    if (const auto *floats = std::get_if<std::vector<float>>(&column.values))
        return *floats;
    const auto *doubles = std::get_if<std::vector<double>>(&column.values);
    return doubles ? std::vector<float>(doubles->begin(), doubles->end()) : std::vector<float>();
}

// All lines of a table, as they stand in a file.
std::vector<HeaderLine> allLines(const ResultTable &table)
{
    std::vector<HeaderLine> lines = table.request;
    lines.insert(lines.end(), table.result.begin(), table.result.end());
    return lines;
}

// Numbers of a column; empty where it has none.
std::vector<double> numbersOf(const ResultTable &table, const QString &name)
{
    const Column *const column = columnNamed(table.columns, name);
    const auto *const numbers =
        column ? std::get_if<std::vector<double>>(&column->values) : nullptr;
    return numbers ? *numbers : std::vector<double>();
}

bool holdsCandidates(const ResultTable &table)
{
    return columnNamed(table.columns, "snr") && columnNamed(table.columns, "period") &&
           columnNamed(table.columns, "remark");
}

// Rows of a table have texts among them, curves only numbers.
bool holdsCurves(const ResultTable &table)
{
    return table.rows() > 0 &&
           std::none_of(table.columns.begin(), table.columns.end(), [](const Column &column) {
               return std::holds_alternative<QStringList>(column.values);
           });
}

void setRange(PlotData &plot)
{
    const Range range = verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.yPrecision = labelDecimals(range.max - range.min);
}

QStringList sourceOf(const std::vector<HeaderLine> &lines)
{
    QStringList source = {valueOf(lines, "command") + " of " + valueOf(lines, "file")};
    for (const char *const key : {"module", "ray"})
        if (const QString number = valueOf(lines, key); !number.isEmpty())
            source << QString(key) + " " + number;
    return source;
}

// Far beyond every period that is searched, s: what is outside is of a damaged table and has no
// place on the axis.
bool isPeriod(double value)
{
    return value > 1e-9 && value < 1e9;
}

// Periods that the picture of candidates reaches over: those that were searched, or those that
// there are. None where there are neither.
std::pair<double, double> periodRange(const std::vector<double> &periods,
                                      const std::vector<HeaderLine> &lines)
{
    const auto searched = [&](const QString &key) {
        const double period = valueOf(lines, key).section(' ', 0, 0).toDouble();
        return isPeriod(period) ? period : 0;
    };
    double low = searched("period_min");
    double high = std::max(low, searched("period_max"));
    for (const double period : periods) {
        if (!isPeriod(period))
            continue;
        low = low > 0 ? std::min(low, period) : period;
        high = std::max(high, period);
    }
    constexpr double narrowest = 1.1;
    if (low > 0 && high < narrowest * low) {
        low /= narrowest;
        high *= narrowest;
    }
    return {low, high};
}

PlotData candidatePlot(const ResultTable &table, const std::vector<HeaderLine> &lines)
{
    constexpr int positions = 2000; // equal steps of the logarithm of the period
    const std::vector<double> snr = numbersOf(table, "snr");
    const std::vector<double> periods = numbersOf(table, "period");
    const auto [low, high] = periodRange(periods, lines);
    if (!(low > 0) || snr.size() != periods.size()) {
        PlotData empty;
        empty.messageMode = true;
        empty.message = "no candidates";
        return empty;
    }
    std::vector<double> grid;
    for (int i = 0; i < positions; ++i)
        grid.push_back(low * std::pow(high / low, double(i) / (positions - 1)));
    std::vector<std::vector<float>> curves(2, std::vector<float>(std::size_t(positions), 0.0F));
    const auto *const remarks = std::get_if<QStringList>(&columnNamed(table.columns, "remark")->values);
    for (std::size_t row = 0; row < periods.size(); ++row) {
        if (!isPeriod(periods[row]))
            continue;
        const bool hasRemark = remarks && remarks->at(int(row)) != "-";
        const double place = std::log(periods[row] / low) / std::log(high / low) * (positions - 1);
        float &value = curves[hasRemark ? 1 : 0][std::size_t(std::lround(place))];
        value = std::max(value, float(snr[row]));
    }
    PlotData plot = periodPlot(std::move(grid), std::move(curves),
                               {"candidates, S/N", "harmonics, hum and others with a remark"});
    plot.source = sourceOf(lines);
    return plot;
}

// The columns but for that of the axis.
PlotData curveTablePlot(const ResultTable &table, const std::vector<HeaderLine> &lines)
{
    std::vector<std::vector<float>> curves;
    QStringList names;
    for (const Column &column : table.columns) {
        const bool isAxis = column.name == valueOf(lines, "x").section(' ', 0, 0);
        std::vector<float> values = isAxis ? std::vector<float>() : floatsOf(column);
        if (values.empty())
            continue;
        curves.push_back(std::move(values));
        names << column.name;
    }
    std::vector<int> markers;
    for (const QString &marker : valueOf(lines, "steps_at").split(' ', Qt::SkipEmptyParts))
        markers.push_back(marker.toInt());
    ObservationData recording;
    recording.tresolution = valueOf(lines, "tresolution").section(' ', 0, 0).toDouble();
    recording.beginTime = QDateTime::fromString(valueOf(lines, "begin"), Qt::ISODateWithMs);
    PlotData plot = curvePlot(Tools::axisOf(lines), std::move(curves), names, markers, recording);
    // A sum beside its base line is left as it is.
    const bool isPlainSum =
        valueOf(lines, "action") == "sumChannelsDemoNoise" && valueOf(lines, "deduct") != "yes";
    if (valueOf(lines, "normalise") == "yes" && !isPlainSum)
        plot.yUnit = "sigma";
    plot.source = sourceOf(lines);
    return plot;
}

} // namespace

bool canBeDrawn(const ResultTable &table)
{
    return holdsCandidates(table) || holdsCurves(table);
}

PlotData plotOf(const ResultTable &table)
{
    const std::vector<HeaderLine> lines = allLines(table);
    return holdsCandidates(table) ? candidatePlot(table, lines) : curveTablePlot(table, lines);
}

PlotData curvePlot(const PulsarAxis &axis, std::vector<std::vector<float>> curves,
                   const QStringList &names, const std::vector<int> &markers,
                   const ObservationData &recording, int firstColour)
{
    PlotData plot;
    plot.graphs = std::move(curves);
    plot.numPoints = plot.graphs.empty() ? 0 : int(plot.graphs.front().size());
    for (int i = 0; i < int(plot.graphs.size()); ++i)
        plot.colours << plotColour(firstColour + i).code;
    plot.names = names.toVector();
    std::copy_if(markers.begin(), markers.end(), std::back_inserter(plot.markers),
                 [&](int marker) { return marker < plot.numPoints; });
    const AxisTexts texts = axisTexts(axis, plot.numPoints, recording);
    plot.textX1 = texts.row1;
    plot.textX2 = texts.row2;
    plot.rowNames = rowNames(axis);
    plot.yName = axis.kind == PulsarAxis::Kind::Points  ? "signal"
                 : axis.kind == PulsarAxis::Kind::Phase ? "mean signal"
                                                        : "amplitude";
    plot.x = plotAxis(axis, recording.tresolution);
    if (axis.kind == PulsarAxis::Kind::Points) {
        plot.xOffset = int(axis.first);
        plot.firstPoint = axis.first;
        plot.pointStep = axis.step;
        plot.msPerPoint = recording.tresolution * axis.step * 1000;
        plot.beginTime = RecordingClock(recording).utc(axis.first);
    }
    setRange(plot);
    return plot;
}

std::vector<int> bandsFromHighest(const BandFold &fold)
{
    std::vector<int> order(fold.frequencies.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&fold](int a, int b) {
        return fold.frequencies[std::size_t(a)] > fold.frequencies[std::size_t(b)];
    });
    return order;
}

std::pair<float, float> bandRange(const BandFold &fold)
{
    const std::vector<float> limits = percentiles(fold.values, {0.02, 0.995});
    if (limits.empty())
        return {0.0F, 1.0F};
    // With as many digits as a scale has room for.
    const auto rounded = [](float value) {
        return QString::number(double(value), 'g', 3).toFloat();
    };
    return {rounded(limits[0]), rounded(limits[1])};
}

RowPicture bandPicture(const BandFold &fold)
{
    RowPicture picture;
    picture.rows = fold.bands();
    picture.columns = fold.bins;
    for (const int band : bandsFromHighest(fold)) {
        const std::vector<float> row = fold.profile(band);
        picture.values.insert(picture.values.end(), row.begin(), row.end());
        picture.rowNames << QString("%1 MHz").arg(fold.frequencies[std::size_t(band)], 0, 'g', 7);
    }
    picture.lastX = 1;
    picture.xName = QString("phase of %1 s").arg(exactText(fold.period));
    picture.scaleName = "sigma";
    std::tie(picture.low, picture.high) = bandRange(fold);
    picture.title = "Phase against frequency: means of the samples, in sigmas of a sample";
    return picture;
}

PlotData periodPlot(std::vector<double> periods, std::vector<std::vector<float>> curves,
                    const QVector<QString> &names)
{
    const auto values = std::make_shared<const std::vector<double>>(std::move(periods));
    PlotData plot;
    plot.graphs = std::move(curves);
    plot.names = names;
    plot.numPoints = int(values->size());
    plot.x = {"period", "s", 0, 1, *values};
    plot.yName = "S/N";
    plot.rowNames = QStringList{"period", "frequency"};
    plot.textX1 = [values](int i) {
        return QString::number((*values)[std::size_t(i)], 'g', 6) + " s";
    };
    plot.textX2 = [values](int i) {
        return QString::number(1 / (*values)[std::size_t(i)], 'g', 6) + " Hz";
    };
    setRange(plot);
    return plot;
}

} // namespace Plot
