#include "picture/stackplot.h"

#include "calc/pulsar/pulsarresult.h"
#include "picture/resultplot.h"
#include "results/reporttext.h"

#include <algorithm>
#include <limits>

namespace Plot {

namespace {

// The bins one after the other, each from half a bin before to half a bin behind it.
std::vector<Range> leftOutOf(const Days::FourierStack &stack)
{
    std::vector<Range> parts;
    for (auto from = stack.leftOut.begin(); from != stack.leftOut.end();) {
        from = std::find(from, stack.leftOut.end(), true);
        const auto to = std::find(from, stack.leftOut.end(), false);
        if (to != from)
            parts.push_back({double(from - stack.leftOut.begin()) - 0.5,
                             double(to - stack.leftOut.begin()) - 0.5});
        from = to;
    }
    return parts;
}

QString nameOf(const Days::FourierStack &stack)
{
    return stack.allDays == 1 ? QString(stack.ffa ? "periodogram" : "spectrum")
                              : "stack of " + ReportText::counted(stack.days, "day");
}

PlotData ffaPlot(const Days::FourierStack &stack)
{
    PlotData plot = periodPlot(stack.ffa->periods, {stack.sigma}, {nameOf(stack)});
    plot.colours = {plotColour(0).code};
    plot.yName = "significance of one trial";
    plot.yUnit = "sigma";
    return plot;
}

PlotData spectrumPlot(const Days::FourierStack &stack)
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
    PlotData plot = curvePlot(axis, {std::move(line), std::move(below)},
                              {nameOf(stack), "not ranked: leftovers of the base line"}, {}, {});
    plot.colours = {plotColour(0).code, grey};
    plot.yName = "significance of one bin";
    plot.yUnit = "sigma";
    plot.hasAmplitudes = false;
    return plot;
}

} // namespace

PlotData stackPlot(const Days::FourierStack &stack, const QStringList &source)
{
    PlotData plot = stack.ffa ? ffaPlot(stack) : spectrumPlot(stack);
    plot.leftOut = leftOutOf(stack);
    plot.source = source;
    return plot;
}

} // namespace Plot
