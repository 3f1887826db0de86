#include "forms/native/nativeplot.h"

#include "data/truenumbers.h"
#include "forms/native/nativetexts.h"
#include "picture/axistexts.h"

#include <cmath>

namespace {

void setAxis(PlotData &plot, const NativeCurves &drawn, const ObservationData &header)
{
    const double first = drawn.first;
    const double step = drawn.step;
    if (step == 1)
        plot.xOffset = int(first);
    plot.firstPoint = first;
    plot.pointStep = step;
    plot.rowNames = QStringList{"point", "UTC", "sidereal"};
    plot.msPerPoint = header.tresolution * step * 1000;
    plot.x = {"time", "s", first * header.tresolution, step * header.tresolution, {}};
    plot.textX1 = [first, step](int index) {
        return QString::number(qint64(std::floor(first + index * step)));
    };
    // A copy without samples: the plot may outlive the file by a moment.
    const auto record = std::make_shared<const ObservationData>(header);
    if (header.beginTime.isValid())
        plot.textX2 = [record, first, step](int index) {
            return NativeTexts::utcText(*record, std::floor(first + index * step));
        };
    if (!NativeTexts::siderealText(header, 0).isEmpty())
        plot.textX3 = [record, first, step](int index) {
            return NativeTexts::siderealText(*record, std::floor(first + index * step));
        };
}

QStringList sourceLines(const NativeChoice &choice, const NativePicture &picture,
                        const RecordingFile &file)
{
    const ObservationData &header = file.header();
    QStringList lines = {"file " + file.path(),
                         QString("module %1").arg(moduleNumber(header, picture.request.module)),
                         QString("ray %1").arg(rayNumber(header, picture.request.ray))};
    const auto bands = std::size_t(header.channels - 1);
    if (choice.show == NativeShow::Sum || choice.show == NativeShow::Waterfall) {
        lines << QString("dispersion %1 pc/cm^3").arg(choice.dispersion);
        if (bands >= 1 && bands <= header.fbands.size())
            lines
                << QString("reference frequency %1 MHz").arg(header.fbands[bands - 1], 0, 'g', 10);
    }
    if (!picture.window.samples)
        lines << "least and greatest values of equal parts, not every sample";
    return lines;
}

} // namespace

PlotData nativePlot(NativeCurves &drawn, const NativeChoice &choice, const NativePicture &picture,
                    const RecordingFile &file)
{
    PlotData plot;
    plot.graphs = std::move(drawn.curves);
    drawn.curves.clear();
    plot.names = drawn.names.toVector();
    plot.markers = drawn.markers;
    plot.numPoints = drawn.count;
    plot.yMin = drawn.min;
    plot.yMax = drawn.max;
    plot.yPrecision = Plot::labelDecimals(drawn.max - drawn.min);
    plot.yName = choice.show == NativeShow::Stack ? "channel" : "signal";
    setAxis(plot, drawn, file.header());
    plot.wholeX = {-drawn.first / drawn.step, (file.completePoints() - drawn.first) / drawn.step};
    plot.source = sourceLines(choice, picture, file);
    return plot;
}
