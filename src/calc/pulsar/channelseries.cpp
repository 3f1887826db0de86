#include "calc/pulsar/pulsarcalculate.h"

#include "calc/approximation.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

// What the actions on one channel share.

namespace {

constexpr int shortestStretch = 512;

} // namespace

// The selection of the actions that work on one channel.
bool PulsarCalculate::acceptChannelSelection()
{
    if (parameters.module < 1 || parameters.module > data.modules)
        return refuse("Error of module, must be: module <" + QString::number(data.modules + 1),
                      "module");
    if (parameters.channel < 1 || parameters.channel > data.channels)
        return refuse("Error of channel, must be: channels <" + QString::number(data.channels + 1),
                      "channel");
    if (parameters.ray < 1 || parameters.ray > data.rays)
        return refuse("Error ray, must be: rays <" + QString::number(data.rays + 1), "ray");
    if (data.npoints < shortestStretch)
        return refuse("Error of data! data.npoints=" + QString::number(data.npoints));
    if (!(data.tresolution > 0) || std::isinf(data.tresolution))
        return refuse(QString("The passport gives a step of %1 ms (tresolution): times cannot be "
                              "computed.")
                          .arg(data.tresolution * 1000));
    if (parameters.points > 0 && parameters.points < shortestStretch)
        return refuse(QString("%1 points are too few for a base line.\nAllowed: %2 and more.")
                          .arg(parameters.points)
                          .arg(shortestStretch));
    const int last = data.npoints - shortestStretch;
    if (parameters.firstPoint < 0 || parameters.firstPoint > last)
        return refuse(QString("First point %1 leaves too few points before the end of the "
                              "recording.\nAllowed: %2 to %3.")
                          .arg(pointText(parameters.firstPoint), pointText(0), pointText(last)),
                      "firstPoint");
    return true;
}

// Points of a channel that an action takes: those wanted, or else a screenful for a look and all
// to the end for a fold.
int PulsarCalculate::channelPoints(const QString &action) const
{
    const int rest = data.npoints - parameters.firstPoint;
    const int preset = action == "sumPeriod" ? rest : fixedPoints;
    return std::min(parameters.points > 0 ? parameters.points : preset, rest);
}

// Baseline of a single channel; the line through block means stands in for the back sum.
bool PulsarCalculate::channelBaseline(const std::vector<double> &samples, double *baseline) const
{
    Approximation approximation(samples.data(), baseline, int(samples.size()));
    if (parameters.noise == "polinom5")
        return approximation.polynomial(baselineDegree, false);
    if (parameters.noise == "median")
        return approximation.medianLine(baselineMedianBlock);
    if (parameters.noise == "backSum")
        return approximation.linearLine(baselineMeanBlock);
    std::fill_n(baseline, samples.size(), 0.0);
    return true;
}
