#include "batch/picture.h"

#include "batch/axis.h"
#include "forms/pulsar/pulsartexts.h"
#include "plot/plotgeometry.h"
#include "plot/plotpainter.h"

#include <QBuffer>
#include <QDateTime>
#include <QImage>
#include <algorithm>
#include <mutex>

namespace Batch {

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

// All lines of a table, as they stand in a file.
std::vector<HeaderLine> allLines(const ResultTable &table)
{
    std::vector<HeaderLine> lines = table.request;
    lines.insert(lines.end(), table.result.begin(), table.result.end());
    return lines;
}

} // namespace

PlotData plotOf(const ResultTable &table)
{
    const std::vector<HeaderLine> lines = allLines(table);
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
    const FormTexts::AxisLabels labels = FormTexts::axisLabels(axis, plot.numPoints, data);
    plot.labelsX1 = labels.row1;
    plot.labelsX2 = labels.row2;
    for (const QString &marker : valueOf(lines, "steps_at").split(' ', Qt::SkipEmptyParts))
        plot.markers.push_back(marker.toInt());
    const Plot::Range range = Plot::verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.yPrecision = FormTexts::labelDecimals(range.max - range.min);
    return plot;
}

QByteArray pictureBytes(const PlotData &plot, const QString &kind, const QSize &size)
{
    const std::lock_guard lock(paintingMutex);
    QImage image(size, QImage::Format_RGB32);
    Plot::paintPlot(plot, {}, {}, image);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, kind.toLatin1().constData());
    return bytes;
}

} // namespace Batch
