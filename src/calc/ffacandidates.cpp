#include "calc/ffacandidates.h"

#include "calc/ffafold.h"
#include "calc/ffapeaks.h"
#include "calc/fold.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace Tools {

namespace {

constexpr float neighbourShare = 0.2F; // of a peak's S/N
constexpr double leastFold = 2.0 / 3;  // of the true S/N, which a pulsar folds to
constexpr int mostParts = 16;          // of the ratio of two harmonics
constexpr double noiseFold = 5;        // S/N that a fold of noise hardly reaches
constexpr double mainsTurns = 3;       // over the series, from a line to a harmonic of a period
constexpr double sampleSigma = 1;      // of the searched series

// Index of the best width of a trial; widths whose S/N is no number do not count.
int bestWidth(const Periodogram &periodogram, int trial)
{
    const std::size_t widths = std::size_t(periodogram.nwidths);
    const float *const snr = periodogram.snr.data() + std::size_t(trial) * widths;
    std::size_t best = 0;
    for (std::size_t j = 1; j < widths; ++j) {
        if (snr[j] > snr[best])
            best = j;
    }
    return int(best);
}

// Names the candidate as a harmonic of one of those before it that is none itself.
void nameHarmonic(FfaCandidate &candidate, const std::vector<FfaCandidate> &stronger, double length)
{
    int fewestParts = 2 * mostParts + 1;
    for (std::size_t k = 0; k < stronger.size(); ++k) {
        const FfaCandidate &base = stronger[k];
        if (base.base >= 0 || base.mains > 0)
            continue;
        // The candidate's period is p/q of the base's: p turns of its frequency are q of the
        // base's.
        for (int q = 1; q <= mostParts; ++q) {
            const int p = int(std::lround(q * candidate.period / base.period));
            if (p < 1 || p > mostParts || std::gcd(p, q) > 1 || p + q >= fewestParts)
                continue;
            if (candidate.strength() > 2 * base.strength() / std::sqrt(double(p * q)))
                continue;
            const double drift = std::abs(p / candidate.period - q / base.period) * length;
            const double resolved = p * candidate.dutyCycle() + q * base.dutyCycle();
            if (drift > resolved)
                continue;
            candidate.base = int(k);
            candidate.multiple = p;
            candidate.divisor = q;
            fewestParts = p + q;
        }
    }
}

// S/N of a series folded at exactly the period of a candidate.
double foldedSnr(const std::vector<double> &series, double tsamp, const FfaCandidate &candidate)
{
    const FoldedProfile profile =
        fold(series.data(), int(series.size()), candidate.period / tsamp, candidate.bins);
    return bestBoxcar(profile, sampleSigma).snr;
}

// The line that runs through a whole number of cycles in a period, the strongest of several, or
// of all where none does.
const MainsLine &mainsLine(const FfaResult &result, double period)
{
    const double turn = 1 / (double(result.series.size()) * result.tsamp);
    const auto fits = [=](const MainsLine &line) {
        const double nearest = std::round(line.frequency * period) / period;
        return std::abs(line.frequency - nearest) < (line.to - line.from) / 2 + mainsTurns * turn;
    };
    return *std::max_element(
        result.mains.begin(), result.mains.end(), [&](const MainsLine &a, const MainsLine &b) {
            return std::pair(fits(a), a.variance) < std::pair(fits(b), b.variance);
        });
}

// Tells mains hum from the rest by folding the series without it.
class HumTest {
public:
    explicit HumTest(const FfaResult &searched) : result(searched)
    {
        if (result.mains.empty())
            return;
        quiet = result.series;
        removeMains(quiet, result.tsamp, result.mains);
    }

    // Frequency of the hum that a candidate consists of, Hz; 0 where it folds without hum.
    double mainsOf(const FfaCandidate &candidate, double threshold) const
    {
        if (quiet.empty())
            return 0;
        const double snr = foldedSnr(quiet, result.tsamp, candidate);
        if (snr > std::max(threshold, noiseFold) || !isMostlyHum(candidate.foldSnr, snr))
            return 0;
        return mainsLine(result, candidate.period).frequency;
    }

private:
    const FfaResult &result;
    std::vector<double> quiet; // empty: there is no hum
};

FfaCandidate candidateAt(const Periodogram &periodogram, int trial)
{
    FfaCandidate candidate;
    const int best = bestWidth(periodogram, trial);
    const std::size_t row = std::size_t(trial) * std::size_t(periodogram.nwidths);
    candidate.period = periodogram.periods[std::size_t(trial)];
    candidate.snr = periodogram.snr[row + std::size_t(best)];
    candidate.width = int(periodogram.widths[std::size_t(best)]);
    candidate.bins = int(periodogram.foldbins[std::size_t(trial)]);
    return candidate;
}

} // namespace

FfaSpectrum sortedSpectrum(const Periodogram &periodogram, int width)
{
    FfaSpectrum spectrum;
    const std::size_t length = std::size_t(periodogram.length);
    spectrum.trials.resize(length);
    std::iota(spectrum.trials.begin(), spectrum.trials.end(), 0);
    const auto &periods = periodogram.periods;
    std::stable_sort(spectrum.trials.begin(), spectrum.trials.end(), [&periods](int a, int b) {
        return periods[std::size_t(a)] < periods[std::size_t(b)];
    });
    spectrum.periods.reserve(length);
    spectrum.snr.reserve(length);
    for (const int trial : spectrum.trials) {
        const int column = width < 0 ? bestWidth(periodogram, trial) : width;
        spectrum.periods.push_back(periods[std::size_t(trial)]);
        spectrum.snr.push_back(
            periodogram
                .snr[std::size_t(trial) * std::size_t(periodogram.nwidths) + std::size_t(column)]);
    }
    return spectrum;
}

std::vector<float> snrFactors(const FfaSpectrum &spectrum,
                              const std::vector<Ffa::WholeFactorStep> &steps)
{
    std::vector<float> factors(spectrum.trials.size(), 1.0F);
    for (const Ffa::WholeFactorStep &step : steps) {
        for (std::size_t i = 0; i < factors.size(); ++i) {
            const auto trial = quint64(spectrum.trials[i]);
            if (trial >= step.firstTrial && trial < step.firstTrial + step.trials)
                factors[i] = float(step.snrFactor);
        }
    }
    return factors;
}

std::vector<FfaCandidate> findCandidates(const FfaResult &result, double threshold, int most,
                                         const std::function<bool(int percent)> &progress)
{
    FfaSpectrum spectrum = sortedSpectrum(result.periodogram);
    const std::vector<float> factors = snrFactors(spectrum, result.wholeFactors);
    for (std::size_t i = 0; i < factors.size(); ++i)
        spectrum.snr[i] *= factors[i];
    const auto isEnded = [&progress](int percent) { return progress && !progress(percent); };
    if (isEnded(0))
        return {};
    const HumTest hum(result);
    const double length = double(result.series.size()) * result.tsamp;
    std::vector<bool> taken(spectrum.snr.size());
    std::vector<FfaCandidate> candidates;
    for (const std::size_t peak : peaksAbove(spectrum.snr, threshold)) {
        if (int(candidates.size()) == most)
            break;
        if (taken[peak])
            continue;
        if (isEnded(int(100 * candidates.size() / std::size_t(most))))
            break;
        FfaCandidate candidate = candidateAt(result.periodogram, spectrum.trials[peak]);
        candidate.snrFactor = double(factors[peak]);
        const float lowest = std::max(float(threshold), neighbourShare * spectrum.snr[peak]);
        takeNeighbours(spectrum, peak, 1, lowest, length, taken);
        takeNeighbours(spectrum, peak, -1, lowest, length, taken);
        candidate.foldSnr = foldedSnr(result.series, result.tsamp, candidate);
        candidate.mains = hum.mainsOf(candidate, threshold);
        if (candidate.mains == 0)
            nameHarmonic(candidate, candidates, length);
        candidates.push_back(candidate);
    }
    return candidates;
}

bool refineCandidate(const FfaResult &result, FfaCandidate &candidate,
                     const std::function<bool(int percent)> &progress)
{
    const FfaRefinement refined = refinePeriod(result, candidate.period, candidate.bins, progress);
    if (!(refined.period > 0))
        return false;
    candidate.period = refined.period;
    candidate.periodError = refined.error;
    candidate.foldSnr = foldedSnr(result.series, result.tsamp, candidate);
    return true;
}

QString candidateRemark(const FfaCandidate &candidate, const QString &base)
{
    QStringList remarks;
    if (candidate.base >= 0) {
        QString ratio = QString::number(candidate.multiple);
        if (candidate.divisor > 1)
            ratio += "/" + QString::number(candidate.divisor);
        remarks << ratio + " x " +
                       (base.isEmpty() ? QString("no. %1").arg(candidate.base + 1) : base);
    }
    if (candidate.mains > 0)
        remarks << QString("%1 Hz mains").arg(candidate.mains, 0, 'f', 2);
    if (candidate.foldSnr < leastFold * candidate.strength())
        remarks << QString("folds to %1").arg(candidate.foldSnr, 0, 'f', 1);
    return remarks.join(", ");
}

Results::Candidate tableCandidate(const FfaCandidate &candidate, const QString &base)
{
    Results::Candidate row;
    row.peak = candidate;
    row.remark = candidateRemark(candidate, base);
    return row;
}

} // namespace Tools
