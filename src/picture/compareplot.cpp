#include "picture/compareplot.h"

#include "analyses/compare/comparetables.h"
#include "picture/percentiles.h"
#include "picture/plotgeometry.h"

#include <cmath>
#include <tuple>

namespace Plot {

PlotData meanDayPlot(const Compare::ComparePlan &plan, const Compare::Comparison &comparison)
{
    PlotData plot;
    plot.graphs = {comparison.own.median};
    plot.names << QString("mean of %1 days").arg(comparison.days);
    plot.numPoints = plan.points();
    const double hoursPerPoint = plan.hoursPerPoint();
    plot.x = {"sidereal time", "h", plan.siderealTime, hoursPerPoint, {}};
    plot.textX1 = [plan](int index) { return Compare::siderealText(plan.siderealTimeAt(index)); };
    plot.rowNames << "sidereal";
    const Range range = verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.yName = "mean day";
    plot.yUnit = "sigma";
    return plot;
}

std::pair<float, float> greyRange(const std::vector<float> &shown, int columns)
{
    const std::vector<float> ends = percentilesOfRows(shown, columns, {0.01, 0.995});
    constexpr float darker = 1.5; // so that what differs stands out of noise
    return ends.empty() ? std::pair(0.F, 1.F)
                        : std::pair(ends[0], ends[0] + darker * (ends[1] - ends[0]));
}

RowPicture comparedDaysPicture(const Compare::CompareProducts &products,
                               const std::vector<bool> &counts, const QSize &size)
{
    const Compare::ComparePlan &plan = products.plan;
    RowPicture picture;
    picture.columns = columnsOf(size);
    for (std::size_t i = 0; i < products.days().size(); ++i) {
        const Compare::CompareDay &day = products.days()[i];
        if (!counts[i] || !day.isWhole())
            continue;
        const std::vector<float> row = columnMaxima(day.values, picture.columns);
        picture.values.insert(picture.values.end(), row.begin(), row.end());
        picture.rowNames << Days::dayName(plan.days.list.days[i].begin);
        ++picture.rows;
    }
    std::tie(picture.low, picture.high) = greyRange(picture.values, picture.columns);
    constexpr float steps = 10; // of a sigma
    picture.low = std::floor(picture.low * steps) / steps;
    picture.high = std::ceil(picture.high * steps) / steps;
    picture.isGrey = true;
    picture.firstX = plan.siderealTime;
    picture.lastX = plan.siderealTime + plan.points() * plan.hoursPerPoint();
    picture.xName = "sidereal time";
    picture.xText = [](double hours) {
        return Compare::siderealText(std::fmod(hours, 24)).section('.', 0, 0);
    };
    picture.scaleName = "sigma";
    return picture;
}

} // namespace Plot
