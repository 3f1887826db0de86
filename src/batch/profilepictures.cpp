#include "batch/profilepictures.h"

#include "analyses/days/fourierdays.h"
#include "picture/percentiles.h"
#include "picture/resultplot.h"
#include "picture/rowpicture.h"

#include <algorithm>
#include <cmath>

namespace Batch {

namespace {

// Each value as wide as its share of the picture.
void addRow(const float *values, std::size_t count, Plot::RowPicture &picture)
{
    const std::vector<float> row =
        Plot::columnMaxima(std::vector<float>(values, values + count), picture.columns);
    picture.values.insert(picture.values.end(), row.begin(), row.end());
    ++picture.rows;
}

Plot::PictureBytes paint(Plot::RowPicture &picture, const OutputOptions &output)
{
    if (picture.rows == 0) {
        PlotData plot;
        plot.messageMode = true;
        plot.message = "No day is in the average";
        return pictureOf(plot, output, picture.key);
    }
    const std::vector<float> ends = Plot::percentiles(picture.values, {0.02, 0.998});
    picture.low = ends[0];
    picture.high = std::max(ends[1], ends[0] + 1);
    return Plot::drawingBytes(output.picture,
                              Plot::drawingOf(picture, output.pictureSize, output.pictureScale));
}

} // namespace

Plot::PictureBytes profileCurves(const Results::ResultTable &table, const QString &what,
                                 const QString &name, const OutputOptions &output,
                                 const QString &key)
{
    PlotData plot;
    if (table.rows() > 1)
        plot = Plot::plotOf(table);
    else {
        plot.messageMode = true;
        plot.message =
            table.rows() == 1 ? "One day does not make a curve" : "No day is in the average";
    }
    plot.source = QStringList{name, what};
    return pictureOf(plot, output, key);
}

Plot::PictureBytes profileRows(const Profiles::ProfileOutcome &outcome, const QString &name,
                               const OutputOptions &output, const QString &key)
{
    Plot::RowPicture picture;
    picture.columns = Plot::columnsOf(output.pictureSize);
    for (std::size_t i = 0; i < outcome.products.size(); ++i) {
        const std::vector<float> &profile = outcome.stack.days[i].profile;
        if (profile.empty())
            continue;
        picture.rowNames << Days::dayName(outcome.products[i].begin);
        addRow(profile.data(), profile.size(), picture);
    }
    picture.lastX = 1;
    picture.xName = "phase";
    picture.scaleName = "noise";
    picture.title = QString("%1, %2 days").arg(name).arg(picture.rows);
    picture.key = key;
    return paint(picture, output);
}

Plot::PictureBytes periodsAndDispersions(const Profiles::ProfileOutcome &outcome,
                                         const QString &name, const OutputOptions &output,
                                         const QString &key)
{
    const Profiles::ProfileScan &scan = outcome.scan;
    const std::size_t columns = scan.mapPeriods.size();
    Plot::RowPicture picture;
    picture.columns = Plot::columnsOf(output.pictureSize);
    for (std::size_t row = scan.mapDispersions.size(); row-- > 0;) {
        picture.rowNames << QString::number(scan.mapDispersions[row], 'f', 2);
        addRow(&scan.both[row * columns], columns, picture);
    }
    picture.rowsName = "dispersion, pc/cm^3";
    if (columns > 0) {
        picture.firstX = scan.mapPeriods.front();
        picture.lastX = scan.mapPeriods.back();
    }
    picture.xName = "period, s";
    picture.xText = [](double x) { return QString::number(x, 'g', 7); };
    picture.scaleName = "S/N";
    picture.title = name;
    picture.key = key;
    return paint(picture, output);
}

} // namespace Batch
