#include "calc/pulsar/foldreport.h"

#include "base/numbertext.h"
#include "calc/fold.h"
#include "calc/pulsar/remarks.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Pulsar {

namespace {

constexpr int fewestPeriods = 15; // that tell what other periods give
constexpr int mostTurns = 7;      // of the other periods against the folded one

// S/N of the best boxcars at periods close to the folded one. Over the series they drift through
// whole turns against it, which spreads a steady pulse evenly over all bins. None where there are
// few periods, or when the user wants to stop.
std::vector<double> foldBeside(const FoldedSeries &folded, double folding, const Control &control)
{
    std::vector<double> snr;
    const int count = int(folded.series.size());
    const double periods = count * folded.tresolution / folding;
    if (periods < fewestPeriods)
        return snr;
    for (const int turns : {-mostTurns, -6, -5, -4, 4, 5, 6, mostTurns}) {
        const double period = count / (periods + turns);
        if (period < 2)
            continue;
        const Tools::FoldedProfile profile =
            Tools::fold(folded.series.data(), count, period, int(std::round(period)));
        snr.push_back(Tools::bestBoxcar(profile, folded.sampleSigma).snr);
        if (!goesOn(control, 60 + 5 * int(snr.size())))
            return {};
    }
    return snr;
}

// What S/N noise reaches in the place of the pulse.
QString noiseText(const Tools::FoldedProfile &profile, double period,
                  const std::vector<double> &beside)
{
    const int bins = int(profile.bins.size());
    const QString text =
        QString("S/N is that of the best boxcar, of 1 to %1 bins, against the noise of the "
                "samples. White noise alone would reach about %2 in this fold.")
            .arg(bins / 2)
            .arg(Tools::expectedNoisePeak(bins), 0, 'f', 1);
    if (beside.empty())
        return text + QString(" What drift adds to that cannot be told from fewer than %1 periods.")
                          .arg(fewestPeriods);
    const double mean = std::accumulate(beside.begin(), beside.end(), 0.0) / double(beside.size());
    const double length = profile.periods * period;
    return text + QString(" At %1 other periods, %2 to %3 s, noise with what drift, interference "
                          "and unsteady pulses add reaches %4 on average, %5 at most.")
                      .arg(beside.size())
                      .arg(length / (profile.periods + mostTurns), 0, 'g', 4)
                      .arg(length / (profile.periods - mostTurns), 0, 'g', 4)
                      .arg(mean, 0, 'f', 1)
                      .arg(*std::max_element(beside.begin(), beside.end()), 0, 'f', 1);
}

// The pulse of a profile, and what noise does in its place.
void describeFold(const FoldedSeries &folded, double period, const Tools::FoldedProfile &profile,
                  const Control &control, PulsarResult &result)
{
    const int bins = int(profile.bins.size());
    Results::Report &report = result.report;
    report.addValue("Bins", QString::number(bins));
    report.addValue("Periods folded", QString::number(profile.periods, 'f', 1));
    if (!(folded.sampleSigma > 0)) {
        report.addValue("S/N", "-");
        result.remarks.emplace_back("The samples hold no noise, so that there is no S/N.");
        return;
    }
    const Tools::BoxcarPeak peak = Tools::bestBoxcar(profile, folded.sampleSigma);
    report.addValue("S/N", QString::number(peak.snr, 'f', 1));
    report.addValue("Width", QString("%1 bins, %2 ms")
                                 .arg(peak.width)
                                 .arg(peak.width * period / bins * 1000, 0, 'f', 2));
    report.addValue(
        "Phase of peak",
        QString("%1, %2 s").arg(peak.phase, 0, 'f', 4).arg(peak.phase * period, 0, 'f', 4));
    result.remarks.emplace_back(noiseText(profile, period, foldBeside(folded, period, control)));
}

} // namespace

Problems checkFoldPeriod(const ObservationData &header, const PulsarParameters &given, int count)
{
    const double period = given.period / header.tresolution; // samples
    if (period >= 2 && period <= count / 2.0)
        return {};
    return {{"period", QString("Period %1 s cannot be folded.\nAllowed: %2 to %3 s (two samples to "
                               "half of the %4 points).")
                           .arg(ReportText::general(given.period),
                                ReportText::general(2 * header.tresolution),
                                ReportText::general(count / 2.0 * header.tresolution))
                           .arg(count)}};
}

void addFold(const FoldedSeries &folded, const PulsarParameters &given, const Control &control,
             PulsarResult &result)
{
    const int count = int(folded.series.size());
    const double period = given.period / folded.tresolution; // samples
    const int bins = int(std::round(period));
    const Tools::FoldedProfile profile = Tools::fold(folded.series.data(), count, period, bins);
    if (!goesOn(control, 60))
        return;
    addCurve(result, profile.bins, "sum on period");
    result.points = bins;
    result.axis = {PulsarAxis::Kind::Phase, 0, 1.0 / bins, given.period};
    result.report.addValue("Period", exactText(given.period));
    addStart(given, result.report);
    result.report.addValue("Number of points", QString::number(count));
    describeFold(folded, given.period, profile, control, result);
}

} // namespace Pulsar
