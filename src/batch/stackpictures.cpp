#include "batch/stackpictures.h"

#include "picture/percentiles.h"
#include "picture/rowpicture.h"
#include "picture/stackplot.h"

#include <algorithm>
#include <cmath>

namespace Batch {

namespace {

// A few bright points of a day, or days of storms, do not darken all others.
float highestColour(const std::vector<float> &values, int columns)
{
    constexpr float least = 12;
    constexpr double share = 0.999;
    const std::vector<float> high = Plot::percentilesOfRows(values, columns, {share});
    return high.empty() ? least : std::max(least, std::round(high[0]));
}

} // namespace

Plot::PictureBytes curvePicture(const Days::FourierStack &stack, const OutputOptions &output,
                                const StackPictureText &text)
{
    const QStringList source = {text.name, QString("stack of %1 days").arg(stack.days)};
    const PlotData plot = Plot::stackPlot(stack, source);
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
    picture.high = highestColour(picture.values, picture.columns);
    picture.title = QString("%1, %2 days").arg(text.name).arg(picture.rows);
    picture.key = text.key;
    return Plot::drawingBytes(output.picture,
                              Plot::drawingOf(picture, output.pictureSize, output.pictureScale));
}

} // namespace Batch
