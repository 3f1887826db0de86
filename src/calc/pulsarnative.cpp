#include "calc/approximation.h"
#include "calc/fold.h"
#include "calc/pulsarcalculate.h"
#include "calc/pulsartext.h"

#include <algorithm>
#include <cmath>

// The actions on one channel, and the steps taken out of a working copy for all actions.

namespace {

constexpr int polynomialDegree = 5;
constexpr int medianBlock = 256; // points
constexpr int meanBlock = 128;   // points
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
    deleteSteps(parameters.firstPoint, parameters.firstPoint + count, parameters.channel - 1,
                parameters.channel);
    const float *const samples = bandSamples(parameters.channel - 1) + parameters.firstPoint;
    std::vector<double> series(samples, samples + count);
    addCurve(series, QString("channel %1").arg(parameters.channel));
    std::vector<double> baseline(series.size());
    if (!channelBaseline(series, baseline.data()))
        return refuse("The noise base line cannot be computed.");
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
    if (parameters.channel < data.channels && parameters.channel <= int(data.fbands.size()))
        outcome.remarks << QString("Times are topocentric, at %1 MHz (channel %2).")
                               .arg(data.fbands[std::size_t(parameters.channel - 1)])
                               .arg(parameters.channel);
    else
        outcome.remarks << QString("Channel %1 is no frequency band.").arg(parameters.channel);
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
                          .arg(PulsarText::general(parameters.period),
                               PulsarText::general(2 * data.tresolution),
                               PulsarText::general(count / 2.0 * data.tresolution))
                          .arg(count),
                      "period");
    deleteSteps(parameters.firstPoint, parameters.firstPoint + count, parameters.channel - 1,
                parameters.channel);

    const float *const samples = bandSamples(parameters.channel - 1) + parameters.firstPoint;
    std::vector<double> series(samples, samples + count);
    std::vector<double> baseline(series.size());
    if (!channelBaseline(series, baseline.data()))
        return refuse("The noise base line cannot be computed.");
    removeBaseline(series, baseline);
    if (!goOn(50))
        return false;

    const int bins = int(std::round(period));
    const Tools::FoldedProfile profile = Tools::fold(series.data(), count, period, bins);
    addCurve(profile.bins, "sum on period");
    outcome.points = bins;
    outcome.stretch = count;
    outcome.axis = {PulsarAxis::Kind::Phase, 0, 1.0 / bins, parameters.period};

    // Mean samples per bin; shared ones count by their overlap.
    const std::vector<float> noise(series.begin(), series.end());
    const double binSigma =
        Tools::robustSigma(noise.data(), count) / std::sqrt(double(count) / bins);
    const Tools::BoxcarPeak peak = Tools::bestBoxcar(profile.bins, binSigma);
    outcome.description =
        "Summation on period\nPeriod = " + PulsarText::general(parameters.period) + startText() +
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
                       "reaches 3 to 4. The period is topocentric.";
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
                              "recording.\nAllowed: 0 to %2.")
                          .arg(parameters.firstPoint)
                          .arg(last),
                      "firstPoint");
    return true;
}

// Baseline of a single channel; the line through block means stands in for the back sum.
bool PulsarCalculate::channelBaseline(const std::vector<double> &samples, double *baseline) const
{
    Approximation approximation(samples.data(), baseline, int(samples.size()));
    if (parameters.noise == "polinom5")
        return approximation.polynomial(polynomialDegree, false);
    if (parameters.noise == "median")
        return approximation.medianLine(medianBlock);
    if (parameters.noise == "backSum")
        return approximation.linearLine(meanBlock);
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
// other samples are zero and not to be read.
void PulsarCalculate::deleteSteps(int begin, int end, int firstChannel, int lastChannel)
{
    if (!parameters.deleteStep)
        return;
    const auto copy = SampleBlock::allocate(1, lastChannel, 1, data.npoints);
    if (!copy) {
        outcome.remarks << "There is no memory to delete steps; the data are as recorded.";
        return;
    }
    begin = std::max(0, begin - levelMargin);
    end = std::min(data.npoints, end + levelMargin);
    for (int channel = firstChannel; channel < lastChannel; ++channel) {
        const float *const recorded = bandSamples(channel);
        float *const corrected = copy->ray(0, channel, 0);
        std::copy(recorded + begin, recorded + end, corrected + begin);
        const std::vector<Tools::LevelStep> steps =
            Tools::findLevelSteps(corrected + begin, end - begin);
        Tools::removeLevelSteps(corrected + begin, end - begin, steps);
        for (const Tools::LevelStep &step : steps)
            stepPoints.push_back(begin + step.point);
        stepCount += int(steps.size());
    }
    workingCopy = copy;
}

void PulsarCalculate::deleteStepsForSums(double dispersion)
{
    const int reach = longestShift(dispersion);
    const int begin = std::max(0, parameters.firstPoint - reach);
    const qint64 end = qint64(parameters.firstPoint) + fixedPoints + reach;
    deleteSteps(begin, int(std::min<qint64>(end, data.npoints)), 0, sumBands);
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
