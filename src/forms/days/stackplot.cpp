#include "forms/days/stackplot.h"

#include "calc/pulsar/pulsarresult.h"
#include "picture/resultplot.h"

#include <algorithm>
#include <limits>

PlotData stackPlot(const Days::FourierStack &stack, const QStringList &source)
{
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    constexpr char grey[] = "#a0a0a0";
    const auto ranked =
        std::min<std::ptrdiff_t>(Days::lowestBin, std::ptrdiff_t(stack.sigma.size()));
    std::vector<float> line = stack.sigma;
    std::vector<float> below = stack.sigma;
    std::fill(line.begin(), line.begin() + ranked, none);
    // They share a point, so that the curves meet.
    const auto shared = std::min<std::ptrdiff_t>(ranked + 1, std::ptrdiff_t(below.size()));
    std::fill(below.begin() + shared, below.end(), none);
    PulsarAxis axis;
    axis.kind = PulsarAxis::Kind::Frequency;
    axis.step = stack.binWidth;
    PlotData plot = Plot::curvePlot(
        axis, {std::move(line), std::move(below)},
        {stack.allDays == 1 ? QString("spectrum") : QString("stack of %1 days").arg(stack.days),
         "not ranked: leftovers of the base line"},
        {}, {});
    plot.colours = {plotColour(0).code, grey};
    plot.yName = "significance of one bin";
    plot.yUnit = "sigma";
    plot.source = source;
    return plot;
}
