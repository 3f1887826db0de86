#include "calc/pulsar/pulsarcalculate.h"

#include "base/numbertext.h"
#include "calc/fold.h"
#include "calc/levelsteps.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr int fewestPeriods = 15; // that tell what other periods give
constexpr int mostTurns = 7;      // of the other periods against the folded one

} // namespace

bool PulsarCalculate::acceptFold()
{
    if (!acceptChannelSelection())
        return false;
    const int count = channelPoints("sumPeriod");
    const double period = parameters.period / data.tresolution; // samples
    if (period >= 2 && period <= count / 2.0)
        return true;
    return refuse(QString("Period %1 s cannot be folded.\nAllowed: %2 to %3 s (two samples to "
                          "half of the %4 points).")
                      .arg(ReportText::general(parameters.period),
                           ReportText::general(2 * data.tresolution),
                           ReportText::general(count / 2.0 * data.tresolution))
                      .arg(count),
                  "period");
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
    const double divisor = removeBaseline(series, baseline);
    if (!goOn(50))
        return false;

    const int bins = int(std::round(period));
    const Tools::FoldedProfile profile = Tools::fold(series.data(), count, period, bins);
    if (!goOn(60))
        return false;
    addCurve(profile.bins, "sum on period");
    outcome.points = bins;
    outcome.stretch = count;
    outcome.axis = {PulsarAxis::Kind::Phase, 0, 1.0 / bins, parameters.period};
    outcome.description = "Summation on period\nPeriod = " + exactText(parameters.period) +
                          startText() + "\nNumber of points = " + QString::number(count);
    // The samples as recorded tell their noise, the rest hides how coarse they are.
    if (!describeFold(series, profile, Tools::robustSigma(samples, count) / divisor))
        return false;
    remarkOnTimes(parameters.channel);
    markSteps();
    return true;
}

// The pulse of a profile, and what noise does in its place; false when the user wants to stop.
bool PulsarCalculate::describeFold(const std::vector<double> &series,
                                   const Tools::FoldedProfile &profile, double sampleSigma)
{
    const int bins = int(profile.bins.size());
    outcome.description +=
        QString("\nBins = %1\nPeriods folded = %2").arg(bins).arg(profile.periods, 0, 'f', 1);
    if (!(sampleSigma > 0)) {
        outcome.description += "\nS/N = -";
        outcome.remarks << "The channel holds no noise, so that there is no S/N.";
        return true;
    }
    const Tools::BoxcarPeak peak = Tools::bestBoxcar(profile, sampleSigma);
    outcome.description += QString("\nS/N = %1\nWidth = %2 bins, %3 ms\nPhase of peak = %4, %5 s")
                               .arg(peak.snr, 0, 'f', 1)
                               .arg(peak.width)
                               .arg(peak.width * parameters.period / bins * 1000, 0, 'f', 2)
                               .arg(peak.phase, 0, 'f', 4)
                               .arg(peak.phase * parameters.period, 0, 'f', 4);
    QString text =
        QString("S/N is that of the best boxcar, of 1 to %1 bins, against the noise of the "
                "samples. White noise alone would reach about %2 in this fold.")
            .arg(bins / 2)
            .arg(Tools::expectedNoisePeak(bins), 0, 'f', 1);
    std::vector<double> beside;
    if (!foldBeside(series, sampleSigma, beside))
        return false;
    if (beside.empty()) {
        outcome.remarks << text + QString(" What drift adds to that cannot be told from fewer than "
                                          "%1 periods.")
                                      .arg(fewestPeriods);
        return true;
    }
    const double mean = std::accumulate(beside.begin(), beside.end(), 0.0) / double(beside.size());
    const double length = profile.periods * parameters.period;
    outcome.remarks << text + QString(" At %1 other periods, %2 to %3 s, noise with what drift, "
                                      "interference and unsteady pulses add reaches %4 on average, "
                                      "%5 at most.")
                                  .arg(beside.size())
                                  .arg(length / (profile.periods + mostTurns), 0, 'g', 4)
                                  .arg(length / (profile.periods - mostTurns), 0, 'g', 4)
                                  .arg(mean, 0, 'f', 1)
                                  .arg(*std::max_element(beside.begin(), beside.end()), 0, 'f', 1);
    return true;
}

// S/N of the best boxcars at periods close to the folded one. Over the series they drift through
// whole turns against it, which spreads a steady pulse evenly over all bins. Nothing of few
// periods.
bool PulsarCalculate::foldBeside(const std::vector<double> &series, double sampleSigma,
                                 std::vector<double> &snr)
{
    const int count = int(series.size());
    const double periods = count * data.tresolution / parameters.period;
    if (periods < fewestPeriods)
        return true;
    for (const int turns : {-mostTurns, -6, -5, -4, 4, 5, 6, mostTurns}) {
        const double period = count / (periods + turns);
        if (period < 2)
            continue;
        const Tools::FoldedProfile profile =
            Tools::fold(series.data(), count, period, int(std::round(period)));
        snr.push_back(Tools::bestBoxcar(profile, sampleSigma).snr);
        if (!goOn(60 + 5 * int(snr.size())))
            return false;
    }
    return true;
}
