#include "calc/pulsarcalculate.h"

#include "calc/approximation.h"
#include "calc/channelsum.h"
#include "calc/fold.h"
#include "calc/levelsteps.h"
#include "calc/reporttext.h"

#include <algorithm>
#include <cmath>

// The actions on one channel.

namespace {

constexpr int shortestStretch = 512;

} // namespace

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

bool PulsarCalculate::sumPeriod()
{
    const int count = channelPoints("sumPeriod");
    const double period = parameters.period / data.tresolution; // samples
    const float *const samples = bandSamples(parameters.channel - 1) + parameters.firstPoint;
    std::vector<double> series(samples, samples + count);
    std::vector<double> baseline(series.size());
    if (!goOn(10))
        return false;
    if (!channelBaseline(series, baseline.data()))
        return refuse("The noise base line cannot be computed.");
    if (!goOn(40))
        return false;
    removeBaseline(series, baseline);
    if (!goOn(50))
        return false;

    const int bins = int(std::round(period));
    const Tools::FoldedProfile profile = Tools::fold(series.data(), count, period, bins);
    if (!goOn(70))
        return false;
    addCurve(profile.bins, "sum on period");
    outcome.points = bins;
    outcome.stretch = count;
    outcome.axis = {PulsarAxis::Kind::Phase, 0, 1.0 / bins, parameters.period};

    // Mean samples per bin; shared ones count by their overlap.
    // Of a channel without noise, what rounding left of it is no noise either.
    const std::vector<float> noise(series.begin(), series.end());
    const bool hasNoise = Tools::robustSigma(samples, count) > 0;
    if (!goOn(85))
        return false;
    const double binSigma =
        hasNoise ? Tools::robustSigma(noise.data(), count) / std::sqrt(double(count) / bins) : 0;
    const Tools::BoxcarPeak peak = Tools::bestBoxcar(profile.bins, binSigma);
    outcome.description =
        "Summation on period\nPeriod = " + ReportText::general(parameters.period) + startText() +
        "\nNumber of points = " + QString::number(count) +
        QString("\nBins = %1\nPeriods folded = %2").arg(bins).arg(profile.periods, 0, 'f', 1);
    if (peak.width > 0)
        outcome.description +=
            QString("\nS/N = %1\nWidth = %2 bins, %3 ms\nPhase of peak = %4, %5 s")
                .arg(peak.snr, 0, 'f', 1)
                .arg(peak.width)
                .arg(peak.width * parameters.period / bins * 1000, 0, 'f', 2)
                .arg(peak.phase, 0, 'f', 4)
                .arg(peak.phase * parameters.period, 0, 'f', 4);
    else
        outcome.description += "\nS/N = -";
    outcome.remarks << "S/N is that of the best boxcar against the noise of the fold; noise alone "
                       "reaches 3 to 4.";
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

// "First point" as a line of a report, by number or by time as it was chosen.
QString PulsarCalculate::startText() const
{
    if (parameters.startTime.isEmpty())
        return "\nFirst point = " + QString::number(parameters.firstPoint);
    return "\nFirst point time = " + parameters.startTime;
}
