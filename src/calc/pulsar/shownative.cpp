#include "calc/pulsar/actions.h"

#include "calc/baseline.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/remarks.h"

#include <algorithm>
#include <cmath>

namespace Pulsar {

namespace {

// What was recorded as no finite number is not drawn.
void leaveGaps(const float *recorded, std::vector<float> &curve)
{
    for (std::size_t i = 0; i < curve.size(); ++i) {
        if (!std::isfinite(recorded[i]))
            curve[i] = recorded[i];
    }
}

} // namespace

int screenPoints(const ObservationData &header, const PulsarParameters &given)
{
    return std::min(given.points > 0 ? given.points : fixedPoints,
                    header.npoints - given.firstPoint);
}

AnalysisOutcome showNative(const PreparedSamples &samples, const PulsarParameters &given,
                           const Control &control)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const float *const channel =
        channelSamples(samples.data, given, given.channel - 1) + given.firstPoint;
    const std::vector<double> series(channel, channel + samples.points);
    addCurve(result, series, QString("channel %1").arg(given.channel));
    if (!samples.nonFinite.isEmpty())
        leaveGaps(samples.recorded[given.module - 1][given.channel - 1][given.ray - 1] +
                      given.firstPoint,
                  result.curves.back());
    std::vector<double> baseline(series.size());
    if (!goesOn(control, 20))
        return outcome;
    if (!Tools::findBaseline(given.noise, series.data(), baseline.data(), int(series.size())))
        return refused(outcome, "The noise base line cannot be computed.");
    if (!goesOn(control, 80))
        return outcome;
    if (Tools::isBaseline(given.noise))
        addCurve(result, baseline, Tools::baselineCurveName(given.noise));

    result.report.addLine("Native data");
    addStart(given, result.report);
    result.report.addValue("Number of points", QString::number(samples.points));
    result.times = timesText(samples.data, given.channel);
    return outcome;
}

} // namespace Pulsar
