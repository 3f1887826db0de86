#include "batch/picture.h"

#include "batch/axis.h"
#include "forms/pulsar/pulsartexts.h"
#include "picture/plotgeometry.h"
#include "picture/plotpainter.h"

#include <QBuffer>
#include <QDateTime>
#include <QImage>
#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

namespace Batch {

using namespace Results;

namespace {

// Fonts are one for the whole process.
std::mutex paintingMutex;

std::vector<float> floatsOf(const Column &column)
{
    if (const auto *floats = std::get_if<std::vector<float>>(&column.values))
        return *floats;
    const auto *doubles = std::get_if<std::vector<double>>(&column.values);
    return doubles ? std::vector<float>(doubles->begin(), doubles->end()) : std::vector<float>();
}

// A PDF tells when it was made. Blanks in that place keep its offsets, and make the same plot the
// same bytes.
QByteArray withoutDate(QByteArray bytes)
{
    const int begin = bytes.indexOf("/CreationDate (");
    const int end = begin < 0 ? -1 : bytes.indexOf(')', begin);
    for (int i = begin; end >= 0 && i <= end; ++i)
        bytes[i] = ' ';
    return bytes;
}

// All lines of a table, as they stand in a file.
std::vector<HeaderLine> allLines(const ResultTable &table)
{
    std::vector<HeaderLine> lines = table.request;
    lines.insert(lines.end(), table.result.begin(), table.result.end());
    return lines;
}

const Column *columnNamed(const ResultTable &table, const QString &name)
{
    const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                     [&](const Column &other) { return other.name == name; });
    return column == table.columns.end() ? nullptr : &*column;
}

// Numbers of a column; empty where it has none.
std::vector<double> numbersOf(const ResultTable &table, const QString &name)
{
    const Column *const column = columnNamed(table, name);
    const auto *const numbers =
        column ? std::get_if<std::vector<double>>(&column->values) : nullptr;
    return numbers ? *numbers : std::vector<double>();
}

bool holdsCandidates(const ResultTable &table)
{
    return columnNamed(table, "snr") && columnNamed(table, "period") &&
           columnNamed(table, "remark");
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
    const Plot::Range range = Plot::verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.yPrecision = FormTexts::labelDecimals(range.max - range.min);
}

QStringList sourceOf(const std::vector<HeaderLine> &lines)
{
    QStringList source = {valueOf(lines, "command") + " of " + valueOf(lines, "file")};
    for (const char *const key : {"module", "ray"})
        if (const QString number = valueOf(lines, key); !number.isEmpty())
            source << QString(key) + " " + number;
    return source;
}

// Periods that the picture of candidates reaches over: those that were searched, or those that
// there are. None where there are neither.
std::pair<double, double> periodRange(const std::vector<double> &periods,
                                      const std::vector<HeaderLine> &lines)
{
    const auto searched = [&](const QString &key) {
        return valueOf(lines, key).section(' ', 0, 0).toDouble();
    };
    double low = searched("period_min");
    double high = searched("period_max");
    for (const double period : periods) {
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
    const auto *const remarks = std::get_if<QStringList>(&columnNamed(table, "remark")->values);
    for (std::size_t row = 0; row < periods.size(); ++row) {
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

PlotData curvePlot(const ResultTable &table, const std::vector<HeaderLine> &lines)
{
    const PulsarAxis axis = axisOf(lines);
    PlotData plot;
    for (const Column &column : table.columns) {
        const bool isAxis = column.name == valueOf(lines, "x").section(' ', 0, 0);
        const std::vector<float> values = isAxis ? std::vector<float>() : floatsOf(column);
        if (values.empty())
            continue;
        plot.colours << plotColour(int(plot.graphs.size())).code;
        plot.names << column.name;
        plot.graphs.push_back(values);
    }
    plot.numPoints = table.rows();

    ObservationData data;
    data.tresolution = valueOf(lines, "tresolution").section(' ', 0, 0).toDouble();
    data.beginTime = QDateTime::fromString(valueOf(lines, "begin"), Qt::ISODateWithMs);
    const FormTexts::AxisTexts texts = FormTexts::axisTexts(axis, plot.numPoints, data);
    plot.textX1 = texts.row1;
    plot.textX2 = texts.row2;
    plot.x = FormTexts::plotAxis(axis, data.tresolution);
    plot.source = sourceOf(lines);
    for (const QString &marker : valueOf(lines, "steps_at").split(' ', Qt::SkipEmptyParts))
        plot.markers.push_back(marker.toInt());
    setRange(plot);
    return plot;
}

// A key stands among the texts of a picture.
Plot::PictureBytes pngOf(const PlotData &plot, const QSize &size, const QString &key)
{
    Plot::PictureBytes picture;
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull()) {
        picture.problem = "there is not enough memory for the picture";
        return picture;
    }
    Plot::paintPlot(plot, {}, {}, image);
    if (!key.isEmpty())
        image.setText("Comment", key);
    QBuffer buffer(&picture.bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        picture.problem = "the picture cannot be made";
    return picture;
}

} // namespace

bool canBeDrawn(const ResultTable &table)
{
    return holdsCandidates(table) || holdsCurves(table);
}

PlotData plotOf(const ResultTable &table)
{
    const std::vector<HeaderLine> lines = allLines(table);
    return holdsCandidates(table) ? candidatePlot(table, lines) : curvePlot(table, lines);
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
    plot.textX1 = [values](int i) {
        return QString::number((*values)[std::size_t(i)], 'g', 6) + " s";
    };
    plot.textX2 = [values](int i) {
        return QString::number(1 / (*values)[std::size_t(i)], 'g', 6) + " Hz";
    };
    setRange(plot);
    return plot;
}

Plot::PictureBytes pictureBytes(const PlotData &plot, const QString &kind, const QSize &size,
                                const QString &key)
{
    const std::lock_guard lock(paintingMutex);
    if (kind == "png")
        return pngOf(plot, size, key);
    const Plot::CurveBlocks blocks;
    Plot::PictureBytes picture = Plot::pictureBytes(kind, {plot, blocks, size, {}, {}, key});
    picture.bytes = withoutDate(picture.bytes);
    return picture;
}

} // namespace Batch
