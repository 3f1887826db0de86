#include "calc/pulsar/pulsarcalculate.h"

#include "base/systemmemory.h"
#include "calc/approximation.h"
#include "calc/levelsteps.h"
#include "ffa/normalise.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

// The fast folding search of the sum of the bands.

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
QStringList noiseRemarks(const FfaResult &result)
{
    QStringList remarks;
    // In white noise the differences of neighbours tell the noise of the series.
    const std::vector<float> samples(result.series.begin(), result.series.end());
    const double pointNoise = Tools::robustSigma(samples.data(), int(samples.size()));
    const double slow = pointNoise / Tools::sigmaWithoutMains(result.mains);
    if (slow < whitePart)
        remarks << QString("Drift or strong pulses make the sigma of the series %1 times its "
                           "noise: every S/N is lower by this factor.")
                       .arg(1 / slow, 0, 'f', 1);
    if (!result.mains.empty())
        remarks << humText(result.mains);
    if (!result.wholeFactors.empty())
        remarks << Tools::wholeFactorText(result.wholeFactors);
    return remarks;
}

constexpr double leastSigma = -100;
constexpr double largestSigma = 1000;

} // namespace

int PulsarCalculate::ffaPoints() const
{
    if (parameters.points > 0)
        return parameters.points;
    if (int(data.fbands.size()) < sumBands)
        return 0;
    const Tools::BandDelays delays = bandDelays(parameters.dispersion);
    if (delays.highestWithoutShift() >= 0)
        return 0;
    const int longest = int(std::max(delays.longestLater(), delays.longestEarlier()));
    const qint64 left = qint64(data.npoints) - parameters.firstPoint - longest - 1;
    return int(std::clamp<qint64>(left, 0, std::max(data.npoints, 0)));
}

bool PulsarCalculate::acceptFfa()
{
    stretch = 1; // what a first point must leave room for
    const bool isSelected = acceptSelection(parameters.dispersion);
    if (!acceptDispersion(parameters.dispersion) || !isSelected)
        return false;
    const int room = data.npoints - parameters.firstPoint - 1;
    if (parameters.points < 0 || parameters.points > room)
        return refuse(QString("The recording has no %1 points after the first one.\nAllowed: "
                              "1 to %2.")
                          .arg(parameters.points)
                          .arg(room),
                      "points");
    stretch = ffaPoints();
    if (stretch < 1)
        return refuse(QString("Dispersion %1 delays a band beyond the end of the recording.\nNo "
                              "point has every band.")
                          .arg(ReportText::general(parameters.dispersion)),
                      "dispersion");
    for (const FieldProblem &problem :
         Tools::findFfaProblems(parameters.ffa, stretch, data.tresolution))
        refuse(problem.text, problem.field);
    return refusals.empty() && acceptFfaMemory();
}

// The size of a search without other problems.
bool PulsarCalculate::acceptFfaMemory()
{
    const double bytes = Tools::estimateFfa(parameters.ffa, stretch, data.tresolution).bytes;
    constexpr double mebibyte = 1 << 20;
    return hasMemoryFor(bytes) ||
           refuse(QString("The search needs %1 MiB of memory, %2 MiB are available.")
                      .arg(bytes / mebibyte, 0, 'f', 0)
                      .arg(double(availableMemory()) / mebibyte, 0, 'f', 0),
                  "period_min");
}

bool PulsarCalculate::createFFA()
{
    const FfaParameters &ffa = parameters.ffa;
    const int count = stretch;
    if (!goOn(0))
        return false;

    std::vector<double> series(static_cast<std::size_t>(count));
    if (!fillFfaSeries(series))
        return false;
    std::vector<float> samples(series.begin(), series.end());
    Periodogram periodogram(samples.data(), samples.size(), data.tresolution, ffa.period_min,
                            ffa.period_max, 0, ffa.bins_min, ffa.bins_max, ffa.ducy_max, ffa.wtsp,
                            true, [this](int percent) { return goOn(percent); });
    if (!periodogram.error.isEmpty())
        return refuse(periodogram.error);
    if (!goOn(100))
        return false;
    const double sigma = sigmaOf(periodogram.snr);
    if (!(sigma >= leastSigma && sigma <= largestSigma))
        return refuse("Error of calculating sigma");

    outcome.curves.push_back(periodogram.snr);
    outcome.visible.push_back(true);
    outcome.names << "FFA SNR as one-dimension array";
    outcome.points = int(std::min<std::size_t>(periodogram.snr.size(), INT_MAX));
    outcome.axis.first = 0;
    outcome.description =
        QString("FFA SNR as one-dimension array\nDispersion = %1%2\nNumber of points = %3\nPeriods "
                "= %4 to %5 s\nTrial periods = %6, widths = %7\nSigma of S/N = %8")
            .arg(ReportText::general(parameters.dispersion), startText())
            .arg(count)
            .arg(ReportText::general(ffa.period_min), ReportText::general(ffa.period_max))
            .arg(periodogram.length)
            .arg(periodogram.nwidths)
            .arg(ReportText::general(sigma));
    std::vector<MainsLine> mains = Tools::findMains(Tools::powerSpectrum(series, data.tresolution));
    if (!goOn(100))
        return false;
    outcome.ffa = std::make_shared<const FfaResult>(
        FfaResult{std::move(series), data.tresolution, std::move(periodogram), std::move(mains),
                  Tools::wholeFactorSteps(ffa, count, data.tresolution)});
    markSteps();
    outcome.remarks << noiseRemarks(*outcome.ffa);
    remarkOnBands();
    remarkOnTimes(sumBands);
    return true;
}

// The series that is searched: the sum less its baseline and what is slow, normalised.
bool PulsarCalculate::fillFfaSeries(std::vector<double> &series)
{
    const int count = int(series.size());
    if (!sumChannels(series.data(), count, parameters.dispersion, true))
        return refuse("The bands cannot be summed.");
    if (!goOn(0))
        return false;
    // What rounding leaves of it above the base line is no noise.
    const auto [lowest, highest] = std::minmax_element(series.begin(), series.end());
    if (*lowest == *highest)
        return refuse(constantSum);
    if (!sumWithoutNoise(series.data(), count, parameters.dispersion))
        return refuse("The noise base line cannot be computed.\nIt needs more points, or choose "
                      "to search without noise deduction.");
    fewestBands = completeBands;
    if (!goOn(0))
        return false;
    if (parameters.ffa.deredden)
        Tools::deredden(series, parameters.ffa.rmed_width / data.tresolution,
                        parameters.ffa.rmed_minpts);
    if (!(Tools::sigma(series.data(), count) > 0))
        return refuse(constantSum);
    Ffa::normalizeSeries(series.data(), count);
    return true;
}
