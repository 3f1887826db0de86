#include "picture/whitenedplot.h"

#include "calc/whitening.h"
#include "picture/axistexts.h"
#include "picture/percentiles.h"
#include "picture/plotgeometry.h"

#include <algorithm>

namespace Plot {

namespace {

constexpr int window = 257; // lines

bool isLevel(const std::vector<float> &curve)
{
    return std::all_of(curve.begin(), curve.end(),
                       [&](float value) { return value == curve.front(); });
}

} // namespace

PlotData whitened(const PlotData &spectrum)
{
    const Tools::Whitening whitening(window);
    PlotData plot = spectrum;
    const std::size_t curves = std::max(plot.graphs.size(), plot.multiGraphs.size());
    plot.visible.resize(std::max(plot.visible.size(), curves), true);
    for (auto *set : {&plot.graphs, &plot.multiGraphs})
        for (std::size_t i = 0; i < set->size(); ++i) {
            std::vector<float> &curve = (*set)[i];
            if (curve.size() > 1 && !isLevel(curve)) {
                curve = whitening.powers(std::vector<double>(curve.begin(), curve.end()));
                continue;
            }
            plot.visible[i] = false;
            if (int(i) < plot.names.size())
                plot.names[int(i)].clear();
        }
    plot.yName = "power";
    plot.yUnit = "noise";
    const Range range = verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.yPrecision = labelDecimals(range.max - range.min);
    return plot;
}

double logarithmicFloor(const PlotData &data)
{
    constexpr double share = 0.01;
    double least = 0;
    for (const auto *set : {&data.graphs, &data.multiGraphs})
        for (std::size_t i = 0; i < set->size(); ++i) {
            if (!isVisible(data, int(i)))
                continue;
            std::vector<float> positive;
            std::copy_if((*set)[i].begin(), (*set)[i].end(), std::back_inserter(positive),
                         [](float value) { return value > 0; });
            const std::vector<float> low = percentiles(std::move(positive), {share});
            if (low.empty())
                continue;
            const double floor = double(low[0]) / 2;
            least = least > 0 ? std::min(least, floor) : floor;
        }
    return least;
}

} // namespace Plot
