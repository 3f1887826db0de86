#include "batch/picture.h"

#include "batch/axis.h"
#include "forms/pulsar/pulsartexts.h"
#include "plot/plotexport.h"
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
    const FormTexts::AxisTexts texts = FormTexts::axisTexts(axis, plot.numPoints, data);
    plot.textX1 = texts.row1;
    plot.textX2 = texts.row2;
    plot.x = FormTexts::plotAxis(axis, data.tresolution);
    plot.source = QStringList{valueOf(lines, "command") + " of " + valueOf(lines, "file")};
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
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (kind == "png") {
        QImage image(size, QImage::Format_RGB32);
        Plot::paintPlot(plot, {}, {}, image);
        image.save(&buffer, "PNG");
        return bytes;
    }
    const Plot::CurveBlocks blocks;
    Plot::writePicture(buffer, kind, {plot, blocks, size, {}, {}});
    return withoutDate(bytes);
}

} // namespace Batch
