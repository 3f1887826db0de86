#include "calc/pulsar/actions.h"

#include "calc/approximation.h"
#include "calc/leveljumps.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/remarks.h"
#include "ffa/normalise.h"
#include "results/reporttext.h"

#include <algorithm>
#include <climits>
#include <cmath>

// The fast folding search of the sum of the bands.

namespace Pulsar {

namespace {

// Standard deviation of all S/N values.
double sigmaOf(const std::vector<float> &values)
{
    const double count = double(values.size());
    double sum = 0;
    for (const float value : values)
        sum += double(value);
    const double mean = sum / count;
    double squares = 0;
    for (const float value : values)
        squares += (double(value) - mean) * (double(value) - mean);
    return values.size() < 2 ? 0 : std::sqrt(squares / (count - 1));
}

// Share of the sigma of a series that its white noise has at least, without a remark.
constexpr double whitePart = 0.8;

const QString constantSum =
    "Error of calculating sigma: the sum of the bands is constant.\nThere is "
    "nothing to search; choose another module, ray or stretch.";

constexpr int mostLines = 3;            // of hum, in a remark
constexpr double leastHumFactor = 1.05; // of S/N, to be told

QString humText(std::vector<MainsLine> lines)
{
    std::sort(lines.begin(), lines.end(),
              [](const MainsLine &a, const MainsLine &b) { return a.variance > b.variance; });
    QStringList texts;
    for (const MainsLine &line : lines) {
        if (texts.size() < mostLines)
            texts << QString("%1 Hz (%2 %%3)")
                         .arg(line.frequency, 0, 'f', 2)
                         .arg(100 * line.variance, 0, 'g', 2)
                         .arg(texts.isEmpty() ? " of the variance" : "");
    }
    const int more = int(lines.size()) - texts.size();
    const double factor = 1 / Tools::sigmaWithoutMains(lines);
    return QString("Mains hum at %1%2%3. Candidates that consist of it are marked.")
        .arg(texts.join(", "), more > 0 ? QString(" and %1 more").arg(more) : QString(),
             factor < leastHumFactor
                 ? QString()
                 : QString(" makes every S/N %1 times lower").arg(factor, 0, 'f', 1));
}

// What makes the S/N of a search differ from that of white noise.
std::vector<Results::Report> noiseRemarks(const FfaResult &result)
{
    std::vector<Results::Report> remarks;
    // In white noise the differences of neighbours tell the noise of the series.
    const std::vector<float> samples(result.series.begin(), result.series.end());
    const double pointNoise = Tools::robustSigma(samples.data(), int(samples.size()));
    const double slow = pointNoise / Tools::sigmaWithoutMains(result.mains);
    if (slow < whitePart)
        remarks.emplace_back(QString("Drift or strong pulses make the sigma of the series %1 times "
                                     "its noise: every S/N is lower by this factor.")
                                 .arg(1 / slow, 0, 'f', 1));
    if (!result.mains.empty())
        remarks.emplace_back(humText(result.mains));
    if (!result.wholeFactors.empty())
        remarks.emplace_back(Tools::wholeFactorText(result.wholeFactors));
    return remarks;
}

constexpr double leastSigma = -100;
constexpr double largestSigma = 1000;

// What there is to search: the sum less its baseline and what is slow, normalised.
struct FfaSeries {
    std::vector<double> values;
    int wholeBands = 0;
    std::vector<CutBand> cut;
    QString problem; // why it is of no use
};

FfaSeries ffaSeries(const PreparedSamples &samples, const PulsarParameters &given,
                    const Control &control)
{
    const int count = samples.points;
    FfaSeries series;
    std::vector<double> &values = series.values;
    values.resize(std::size_t(count));
    const auto failed = [&series](const QString &problem) {
        series.problem = problem;
        return series;
    };
    series.wholeBands =
        sumChannels(samples.data, given, values.data(), count, given.dispersion, true);
    if (series.wholeBands == 0)
        return failed("The bands cannot be summed.");
    if (!goesOn(control, 0))
        return series;
    // What rounding leaves of it above the base line is no noise.
    const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
    if (*lowest == *highest)
        return failed(constantSum);
    std::vector<double> baseline(values.size());
    if (!sumBaseline(samples.data, given, values, given.dispersion, baseline.data()))
        return failed("The noise base line cannot be computed.\nIt needs more points, or choose "
                      "to search without noise deduction.");
    removeBaseline(given.normalise, baseline, values);
    if (!goesOn(control, 0))
        return series;
    series.cut =
        cutOut(given.cut, samples.data.tresolution, values, [&] { return goesOn(control, 0); });
    if (!goesOn(control, 0))
        return series;
    if (given.ffa.deredden)
        Tools::deredden(values, given.ffa.rmed_width / samples.data.tresolution,
                        given.ffa.rmed_minpts);
    if (!(Tools::sigma(values.data(), count) > 0))
        return failed(constantSum);
    Ffa::normalizeSeries(values.data(), count);
    return series;
}

Results::Report reportOf(const Periodogram &periodogram, const PulsarParameters &given, int count,
                         double sigma)
{
    Results::Report report("FFA SNR as one-dimension array");
    report.addValue("Dispersion", ReportText::general(given.dispersion));
    addStart(given, report);
    report.addValue("Number of points", QString::number(count));
    report.addValue("Periods", ReportText::general(given.ffa.period_min) + " to " +
                                   ReportText::general(given.ffa.period_max) + " s");
    report.addValue("Trial periods",
                    QString("%1, widths = %2").arg(periodogram.length).arg(periodogram.nwidths));
    report.addValue("Sigma of S/N", ReportText::general(sigma));
    return report;
}

} // namespace

int ffaPoints(const ObservationData &header, const PulsarParameters &given)
{
    if (given.points > 0)
        return given.points;
    if (int(header.fbands.size()) < sumBands)
        return 0;
    const Tools::BandDelays delays = bandDelays(header, given.dispersion);
    if (delays.highestWithoutShift() >= 0)
        return 0;
    const int longest = int(std::max(delays.longestLater(), delays.longestEarlier()));
    const qint64 left = qint64(header.npoints) - given.firstPoint - longest - 1;
    return int(std::clamp<qint64>(left, 0, std::max(header.npoints, 0)));
}

Problems checkFfa(const ObservationData &header, const PulsarParameters &given)
{
    // One point is what a first point must leave room for.
    const Problems problems = checkSumOf(1, header, given);
    if (!problems.empty())
        return problems;
    const int room = header.npoints - given.firstPoint - 1;
    if (given.points < 0 || given.points > room)
        return {{"points", QString("The recording has no %1 points after the first one.\nAllowed: "
                                   "1 to %2.")
                               .arg(given.points)
                               .arg(room)}};
    const int count = ffaPoints(header, given);
    if (count < 1)
        return {{"dispersion",
                 QString("Dispersion %1 delays a band beyond the end of the recording.\nNo "
                         "point has every band.")
                     .arg(ReportText::general(given.dispersion))}};
    return joinProblems({checkCut(header, given.cut),
                         Tools::findFfaProblems(given.ffa, count, header.tresolution)});
}

qint64 ffaBytes(const ObservationData &header, const PulsarParameters &given)
{
    const int points = ffaPoints(header, given);
    // First the series is made, then searched: of either there are copies, the spectrum that shows
    // its hum, and what it is without.
    const double series = 4.0 * sizeof(double) * points + (4 << 20);
    const double more = std::max(cutBytes(given.cut, points, header.tresolution),
                                 Tools::ffaBytes(given.ffa, points, header.tresolution));
    return qint64(std::min(series + more, 1e18));
}

AnalysisOutcome createFfa(const PreparedSamples &samples, const PulsarParameters &given,
                          const Control &control)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const FfaParameters &ffa = given.ffa;
    const int count = samples.points;
    const double tresolution = samples.data.tresolution;
    if (!goesOn(control, 0))
        return outcome;
    FfaSeries series = ffaSeries(samples, given, control);
    if (!series.problem.isEmpty())
        return refused(outcome, series.problem);
    if (control.isStopped())
        return outcome;
    std::vector<float> searched(series.values.begin(), series.values.end());
    Periodogram periodogram(searched.data(), searched.size(), tresolution, ffa.period_min,
                            ffa.period_max, 0, ffa.bins_min, ffa.bins_max, ffa.ducy_max, ffa.wtsp,
                            true, [&](int percent) { return goesOn(control, percent); });
    if (!periodogram.error.isEmpty())
        return refused(outcome, periodogram.error);
    if (!goesOn(control, 100))
        return outcome;
    const double sigma = sigmaOf(periodogram.snr);
    if (!(sigma >= leastSigma && sigma <= largestSigma))
        return refused(outcome, "Error of calculating sigma");

    result.curves.push_back(periodogram.snr);
    result.visible.push_back(true);
    result.names << "FFA SNR as one-dimension array";
    result.points = int(std::min<std::size_t>(periodogram.snr.size(), INT_MAX));
    result.axis.first = 0;
    result.report = reportOf(periodogram, given, count, sigma);
    std::vector<MainsLine> mains =
        Tools::findMains(Tools::powerSpectrum(series.values, tresolution));
    if (!goesOn(control, 100))
        return outcome;
    result.ffa = std::make_shared<const FfaResult>(
        FfaResult{std::move(series.values), tresolution, std::move(periodogram), std::move(mains),
                  Tools::wholeFactorSteps(ffa, count, tresolution)});
    result.cut = series.cut;
    append({cutReport(given.cut, series.cut)}, result);
    append(noiseRemarks(*result.ffa), result);
    append(bandRemarks({samples.data, given, count, given.dispersion}, series.wholeBands), result);
    result.times = timesText(samples.data, sumBands);
    return outcome;
}

} // namespace Pulsar
