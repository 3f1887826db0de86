#include "calc/pulsar/pulsarcalculate.h"

#include <cmath>

bool PulsarCalculate::showNative()
{
    const int count = channelPoints("showNative");
    const float *const samples = bandSamples(parameters.channel - 1) + parameters.firstPoint;
    std::vector<double> series(samples, samples + count);
    addCurve(series, QString("channel %1").arg(parameters.channel));
    if (!outcome.nonFinite.isEmpty())
        leaveGaps(outcome.curves.back());
    std::vector<double> baseline(series.size());
    if (!goOn(20))
        return false;
    if (!channelBaseline(series, baseline.data()))
        return refuse("The noise base line cannot be computed.");
    if (!goOn(80))
        return false;
    if (parameters.noise == "polinom5")
        addCurve(baseline, "polinom5 approximation");
    else if (parameters.noise == "median")
        addCurve(baseline, "median line approximation");
    else if (parameters.noise == "backSum")
        addCurve(baseline, "noise approximation");

    outcome.points = count;
    outcome.stretch = count;
    outcome.description =
        "Native data" + startText() + "\nNumber of points = " + QString::number(count);
    remarkOnTimes(parameters.channel);
    markSteps();
    return true;
}

// What was recorded as no finite number is not drawn.
void PulsarCalculate::leaveGaps(std::vector<float> &curve) const
{
    const float *const recorded =
        data.samples[parameters.module - 1][parameters.channel - 1][parameters.ray - 1];
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const float sample = recorded[std::size_t(parameters.firstPoint) + i];
        if (!std::isfinite(sample))
            curve[i] = sample;
    }
}
