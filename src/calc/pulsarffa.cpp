#include "calc/pulsarcalculate.h"

#include "base/systemmemory.h"
#include "calc/approximation.h"
#include "calc/channelsum.h"
#include "calc/levelsteps.h"
#include "calc/reporttext.h"
#include "ffa/normalise.h"

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

constexpr double leastSigma = -100;
constexpr double largestSigma = 1000;

} // namespace

int PulsarCalculate::ffaPoints() const
{
    if (parameters.points > 0)
        return parameters.points;
    if (int(data.fbands.size()) < sumBands)
        return 0;
    int longest = 0;
    for (int band = 0; band < sumBands - 1; ++band) {
        const double delay =
            Tools::dispersionDelay(data.fbands[std::size_t(band)], data.fbands[sumBands - 1],
                                   parameters.dispersion, data.tresolution);
        if (!Tools::isShift(delay))
            return 0;
        longest = std::max(longest, std::abs(Tools::stretchShift(delay)));
    }
    const qint64 left = qint64(data.npoints) - parameters.firstPoint - longest - 1;
    return int(std::clamp<qint64>(left, 0, std::max(data.npoints, 0)));
}

std::vector<FfaProblem> PulsarCalculate::findProblems()
{
    stretch = 1; // what a first point must leave room for
    if (!acceptSelection(parameters.dispersion) || !acceptDispersion(parameters.dispersion))
        return {{refusedParameter, refusal}};
    const int room = data.npoints - parameters.firstPoint - 1;
    if (parameters.points < 0 || parameters.points > room)
        return {{"points", QString("The recording has no %1 points after the first one.\nAllowed: "
                                   "1 to %2.")
                               .arg(parameters.points)
                               .arg(room)}};
    stretch = ffaPoints();
    if (stretch < 1)
        return {{"dispersion", QString("Dispersion %1 delays a band beyond the end of the "
                                       "recording.\nNo point has every band.")
                                   .arg(ReportText::general(parameters.dispersion))}};
    std::vector<FfaProblem> problems =
        Tools::findFfaProblems(parameters.ffa, stretch, data.tresolution);
    if (!problems.empty())
        return problems;
    const double bytes = Tools::estimateFfa(parameters.ffa, stretch, data.tresolution).bytes;
    constexpr double mebibyte = 1 << 20;
    if (!hasMemoryFor(bytes))
        problems.push_back(
            {"period_min", QString("The search needs %1 MiB of memory, %2 MiB are "
                                   "available.")
                               .arg(bytes / mebibyte, 0, 'f', 0)
                               .arg(double(availableMemory()) / mebibyte, 0, 'f', 0)});
    return problems;
}

bool PulsarCalculate::createFFA()
{
    const FfaParameters &ffa = parameters.ffa;
    const int count = stretch;
    if (!goOn(0))
        return false;

    std::vector<double> series(static_cast<std::size_t>(count));
    if (!sumWithoutNoise(series.data(), count, parameters.dispersion))
        return refuse("The noise base line cannot be computed.\nIt needs more points, or choose "
                      "to search without noise deduction.");
    fewestBands = completeBands;
    if (!goOn(0))
        return false;
    if (ffa.deredden)
        Tools::deredden(series, ffa.rmed_width / data.tresolution, ffa.rmed_minpts);
    if (!(Tools::sigma(series.data(), count) > 0))
        return refuse("Error of calculating sigma\nAll values of the sum are equal: there is "
                      "nothing to search.");
    Ffa::normalizeSeries(series.data(), count);

    std::vector<float> samples(series.begin(), series.end());
    Periodogram periodogram(samples.data(), samples.size(), data.tresolution, ffa.period_min,
                            ffa.period_max, 0, ffa.bins_min, ffa.bins_max, ffa.ducy_max, ffa.wtsp,
                            true, [this](int percent) { return goOn(percent); });
    if (!periodogram.error.isEmpty())
        return refuse(periodogram.error);
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
    outcome.ffa = std::make_shared<const FfaResult>(
        FfaResult{std::move(series), data.tresolution, std::move(periodogram)});
    markSteps();
    // Of white noise the difference of neighbours has the noise of the series.
    const double pointNoise = Tools::robustSigma(samples.data(), count);
    if (pointNoise < whitePart)
        outcome.remarks << QString("Drift or strong pulses make the sigma of the series %1 times "
                                   "its noise: every S/N is lower by this factor.")
                               .arg(1 / pointNoise, 0, 'f', 1);
    remarkOnBands();
    remarkOnTimes(sumBands);
    return true;
}
