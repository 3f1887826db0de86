#include "batch/stackpictures.h"

#include "picture/percentiles.h"
#include "picture/resultplot.h"
#include "picture/rowpicture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Batch {

namespace {

// A few bright points do not darken all others.
float highestColour(std::vector<float> values)
{
    constexpr float least = 12;
    constexpr double share = 0.999;
    const std::vector<float> high = Plot::percentiles(std::move(values), {share});
    return high.empty() ? least : std::max(least, std::round(high[0]));
}

PlotData spectrumPlot(const Days::FourierStack &stack)
{
    PlotData plot;
    plot.graphs = {stack.sigma};
    std::fill_n(plot.graphs[0].begin(),
                std::min<std::size_t>(plot.graphs[0].size(), Days::lowestBin),
                std::numeric_limits<float>::quiet_NaN());
    plot.names << QString("%1 days").arg(stack.days);
    plot.numPoints = int(stack.sigma.size());
    plot.x = {"frequency", "Hz", 0, stack.binWidth, {}};
    plot.textX1 = [&stack](int index) { return QString::number(stack.frequency(index), 'g', 5); };
    const Plot::Range range = Plot::verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    return plot;
}

} // namespace

Plot::PictureBytes curvePicture(const Days::FourierStack &stack, const OutputOptions &output,
                                const StackPictureText &text)
{
    PlotData plot = stack.ffa ? Plot::periodPlot(stack.ffa->periods, {stack.sigma},
                                                 {QString("%1 days").arg(stack.days)})
                              : spectrumPlot(stack);
    plot.yName = "significance";
    plot.yUnit = "sigma";
    plot.source = QStringList{text.name, QString("stack of %1 days").arg(stack.days)};
    return pictureOf(plot, output, text.key);
}

Plot::PictureBytes daysPicture(const std::vector<Days::FourierDay> &days,
                               const std::vector<bool> &chosen, const Days::FourierStack &stack,
                               const OutputOptions &output, const StackPictureText &text)
{
    Plot::RowPicture picture;
    picture.columns = Plot::columnsOf(output.pictureSize);
    for (std::size_t i = 0; i < days.size(); ++i) {
        const Days::FourierDay &day = days[i];
        if (!day.isWhole())
            continue;
        const std::vector<float> row =
            Plot::columnMaxima(stack.ffa ? day.periodogram.best : day.powers, picture.columns);
        picture.values.insert(picture.values.end(), row.begin(), row.end());
        picture.rowNames << Days::dayName(day.begin) + (chosen[i] ? "" : " off");
        ++picture.rows;
    }
    picture.lastX = stack.frequency(double(stack.powers.size()));
    picture.xName = "frequency at the telescope, Hz";
    picture.scaleName = "power";
    if (stack.ffa) {
        picture.lastX = stack.ffa->count();
        picture.xName = "period at the telescope, s";
        picture.scaleName = "S/N";
        picture.xText = [&stack](double trial) {
            return QString::number(stack.ffa->periodAt(trial), 'g', 5);
        };
    }
    picture.high = highestColour(picture.values);
    picture.title = QString("%1, %2 days").arg(text.name).arg(picture.rows);
    picture.key = text.key;
    return Plot::drawingBytes(output.picture,
                              Plot::drawingOf(picture, output.pictureSize, output.pictureScale));
}

} // namespace Batch
