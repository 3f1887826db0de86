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

namespace {

// The first column is X, the others are curves; columns of errors and of other X are left out.
PlotData curvesOf(const Results::ResultTable &table)
{
    PlotData plot;
    for (const Results::Column &column : table.columns) {
        const auto *const values = std::get_if<std::vector<double>>(&column.values);
        if (!values || column.name.startsWith("error") || column.name == "root_of_days")
            continue;
        if (plot.x.values.empty()) {
            plot.x = {column.name, column.unit, 0, 1, *values};
            continue;
        }
        plot.graphs.emplace_back(values->begin(), values->end());
        plot.names << column.name;
    }
    plot.numPoints = table.rows();
    constexpr int digits = 8;
    const std::vector<double> x = plot.x.values;
    plot.textX1 = [x](int index) {
        const auto last = int(x.size()) - 1;
        return QString::number(x[std::size_t(std::clamp(index, 0, last))], 'g', digits);
    };
    plot.rowNames =
        QStringList{plot.x.unit.isEmpty() ? plot.x.name : plot.x.name + ", " + plot.x.unit};
    const Plot::Range range = Plot::verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    return plot;
}

} // namespace

Plot::PictureBytes profileCurves(const Results::ResultTable &table, const QString &what,
                                 const QString &name, const OutputOptions &output,
                                 const QString &key)
{
    PlotData plot;
    if (table.rows() > 1) {
        plot = curvesOf(table);
        plot.yName = what == "average" ? "average profile" : "S/N";
        plot.yUnit = what == "average" ? "noise of a day" : "";
    } else {
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
    picture.rowsName = "DM, pc/cm^3";
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
