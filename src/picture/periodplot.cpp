#include "picture/periodplot.h"

#include "picture/plotgeometry.h"

#include <algorithm>
#include <cmath>

namespace Plot {

namespace {

void setRange(PlotData &plot)
{
    const Range range = verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
}

} // namespace

PlotData periodRanks(const Timing::PeriodSearch &search, double chance)
{
    PlotData plot;
    const std::vector<double> periods = search.curvePeriods;
    const double claimed = -std::log10(-std::log1p(-chance));
    plot.graphs.emplace_back(search.curveRanks.begin(), search.curveRanks.end());
    plot.graphs.emplace_back(periods.size(), float(claimed));
    plot.names << "rank"
               << "least rank of a claim";
    plot.numPoints = int(periods.size());
    plot.x = {"period", "s", 0, 1, periods};
    plot.textX1 = [periods](int index) {
        const int last = int(periods.size()) - 1;
        return QString::number(periods[std::size_t(std::clamp(index, 0, last))], 'g', 5);
    };
    plot.rowNames << "period, s";
    plot.yName = "rank: -log10 of what is expected by chance";
    if (!search.families.empty()) {
        const double best = search.families.front().period;
        const auto at = std::lower_bound(periods.begin(), periods.end(), best);
        plot.markers = {int(
            std::min<std::ptrdiff_t>(at - periods.begin(), std::ptrdiff_t(periods.size()) - 1))};
        plot.markerStyles = {{QString::number(best, 'g', 7) + " s", {}}};
    }
    setRange(plot);
    plot.source = QStringList{search.verdict};
    return plot;
}

PlotData periodResiduals(const Timing::PeriodSearch &search)
{
    PlotData plot;
    const Tools::TurnFit &fit = search.count.fit;
    const auto rms = float(fit.rms() / fit.period);
    std::vector<float> phases;
    for (const double residual : fit.residuals)
        phases.push_back(float(residual / fit.period));
    const std::size_t count = phases.size();
    plot.graphs = {phases, std::vector<float>(count, rms), std::vector<float>(count, -rms)};
    plot.names << "residual"
               << "rms"
               << "-rms";
    plot.colours = {plotColour(0).code, plotColour(6).code, plotColour(6).code};
    plot.numPoints = int(count);
    const std::vector<Tools::CountedTime> times = search.count.times;
    plot.textX1 = [times](int index) {
        const int last = int(times.size()) - 1;
        return QString::number(times[std::size_t(std::clamp(index, 0, last))].turn);
    };
    plot.rowNames << "turn";
    plot.yName = "residual";
    plot.yUnit = "turns";
    setRange(plot);
    plot.source = QStringList{search.verdict};
    return plot;
}

} // namespace Plot
