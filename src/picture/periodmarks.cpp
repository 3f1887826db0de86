#include "picture/periodmarks.h"

#include <algorithm>

namespace Plot {

void markPeriods(PlotData &plot, double period)
{
    struct Multiple {
        double factor;
        MarkerStyle style;
    };
    static const Multiple multiples[] = {
        {0.5, {"1/2", {2, 3}}}, {1.0, {"1", {}}}, {2.0, {"2", {9, 4}}}, {3.0, {"3", {9, 3, 2, 3}}}};
    plot.markers.clear();
    plot.markerStyles.clear();
    const std::vector<double> &periods = plot.x.values;
    for (const auto &[factor, style] : multiples) {
        const double wanted = factor * period;
        if (periods.empty() || !(wanted >= periods.front()) || wanted > periods.back())
            continue;
        const auto after = std::lower_bound(periods.begin(), periods.end(), wanted);
        const bool earlier = after == periods.end() ||
                             (after != periods.begin() && wanted - *(after - 1) < *after - wanted);
        plot.markers.push_back(int(after - periods.begin()) - (earlier ? 1 : 0));
        plot.markerStyles.push_back(style);
    }
}

} // namespace Plot
