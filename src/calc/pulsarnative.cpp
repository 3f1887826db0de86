#include "calc/pulsarcalculate.h"

#include "calc/approximation.h"
#include "calc/channelsum.h"
#include "calc/fold.h"
#include "calc/levelsteps.h"
#include "calc/reporttext.h"

#include <algorithm>
#include <cmath>

// The actions on one channel, and the steps taken out of a working copy for all actions.

namespace {

constexpr int shortestStretch = 512;
// Samples beside a stretch that its levels are judged by.
constexpr int levelMargin = 1024;

} // namespace

bool PulsarCalculate::showNative()
{
    if (!acceptChannelSelection())
        return false;
    const int wanted = parameters.points > 0 ? parameters.points : fixedPoints;
    const int count = std::min(wanted, data.npoints - parameters.firstPoint);
    if (!deleteSteps(parameters.firstPoint, parameters.firstPoint + count, parameters.channel - 1,
                     parameters.channel))
        return false;
    const float *const samples = bandSamples(parameters.channel - 1) + parameters.firstPoint;
    std::vector<double> series(samples, samples + count);
    addCurve(series, QString("channel %1").arg(parameters.channel));
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
    if (!acceptChannelSelection())
        return false;
    const int rest = data.npoints - parameters.firstPoint;
    const int count = parameters.points > 0 ? std::min(parameters.points, rest) : rest;
    const double period = parameters.period / data.tresolution; // samples
    if (!(period >= 2) || period > count / 2.0)
        return refuse(QString("Period %1 s cannot be folded.\nAllowed: %2 to %3 s (two samples to "
                              "half of the %4 points).")
                          .arg(ReportText::general(parameters.period),
                               ReportText::general(2 * data.tresolution),
                               ReportText::general(count / 2.0 * data.tresolution))
                          .arg(count),
                      "period");
    if (!deleteSteps(parameters.firstPoint, parameters.firstPoint + count, parameters.channel - 1,
                     parameters.channel))
        return false;

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
    if (data.npoints < shortestStretch || data.samples == nullptr)
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

// Samples of a channel of the selected module and ray, indexed as in the recording.
const float *PulsarCalculate::bandSamples(int channel) const
{
    if (workingCopy)
        return workingCopy->ray(0, channel, 0);
    return data.samples[parameters.module - 1][channel][parameters.ray - 1];
}

// Makes the working copy of the samples from `begin` on and before `end`, of the channels from
// `firstChannel` on and before `lastChannel`, with the jumps of their levels taken out. Its
// other samples are zero and not to be read. A step of a band shows, in a sum, by the band's
// delay at `markDispersion` earlier. False when the user wants to stop.
bool PulsarCalculate::deleteSteps(int begin, int end, int firstChannel, int lastChannel,
                                  double markDispersion)
{
    if (!parameters.deleteStep)
        return true;
    const auto copy = SampleBlock::allocate(1, lastChannel, 1, data.npoints);
    if (!copy) {
        outcome.remarks << "There is no memory to delete steps; the data are as recorded.";
        return true;
    }
    begin = std::max(0, begin - levelMargin);
    end = std::min(data.npoints, end + levelMargin);
    for (int channel = firstChannel; channel < lastChannel; ++channel) {
        const float *const recorded = bandSamples(channel);
        float *const corrected = copy->ray(0, channel, 0);
        std::copy(recorded + begin, recorded + end, corrected + begin);
        const int percent = 100 * (channel - firstChannel) / (lastChannel - firstChannel);
        const std::vector<Tools::LevelStep> steps = Tools::findLevelSteps(
            corrected + begin, end - begin, [this, percent] { return goOn(percent); });
        Tools::removeLevelSteps(corrected + begin, end - begin, steps);
        const int shift = markDispersion > 0
                              ? Tools::stretchShift(Tools::dispersionDelay(
                                    data.fbands[std::size_t(channel)], data.fbands[sumBands - 1],
                                    markDispersion, data.tresolution))
                              : 0;
        for (const Tools::LevelStep &step : steps)
            stepPoints.push_back(begin + step.point - shift);
        stepCount += int(steps.size());
        if (!goOn(percent))
            return false;
    }
    workingCopy = copy;
    return true;
}

bool PulsarCalculate::deleteStepsForSums(double dispersion)
{
    const int reach = longestShift(dispersion);
    const int begin = std::max(0, parameters.firstPoint - reach);
    const qint64 end = qint64(parameters.firstPoint) + stretch + reach;
    return deleteSteps(begin, int(std::min<qint64>(end, data.npoints)), 0, sumBands, dispersion);
}

// Tells of the steps in the description and marks them where the X values are points.
void PulsarCalculate::markSteps()
{
    if (!parameters.deleteStep)
        return;
    std::sort(stepPoints.begin(), stepPoints.end());
    stepPoints.erase(std::unique(stepPoints.begin(), stepPoints.end()), stepPoints.end());
    outcome.description += "\nDeleted steps = " + QString::number(stepCount);
    if (outcome.axis.kind != PulsarAxis::Kind::Points)
        return;
    for (const int point : stepPoints) {
        const int index = int((point - outcome.axis.first) / outcome.axis.step);
        if (point >= outcome.axis.first && index < outcome.points)
            outcome.markers.push_back(index);
    }
}
