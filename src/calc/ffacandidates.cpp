#include "calc/ffacandidates.h"

#include "calc/fold.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace Tools {

namespace {

constexpr float neighbourShare = 0.2F; // of a peak's S/N
constexpr double gapTurns = 1;         // that ends the neighbourhood of a peak
constexpr int mostParts = 16;          // of the ratio of two harmonics
constexpr double mainsTolerance = 0.002;

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

// Marks the neighbours of a peak in one direction as taken.
void takeNeighbours(const FfaSpectrum &spectrum, std::size_t peak, int direction, float lowest,
                    double turnLength, std::vector<bool> &taken)
{
    double lastAbove = 1 / spectrum.periods[peak];
    const auto end = direction > 0 ? spectrum.periods.size() : std::size_t(-1);
    for (std::size_t i = peak; i != end; i += std::size_t(direction)) {
        const double frequency = 1 / spectrum.periods[i];
        if (std::abs(frequency - lastAbove) * turnLength > gapTurns)
            return;
        taken[i] = true;
        if (spectrum.snr[i] >= lowest)
            lastAbove = frequency;
    }
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
            if (candidate.snr > 2 * base.snr / std::sqrt(double(p * q)))
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

// Share of the variance of a profile that lies in one of its harmonics.
double harmonicShare(const std::vector<double> &profile, int harmonic)
{
    const double bins = double(profile.size());
    const double mean = std::accumulate(profile.begin(), profile.end(), 0.0) / bins;
    double cosine = 0;
    double sine = 0;
    double squares = 0;
    for (std::size_t b = 0; b < profile.size(); ++b) {
        const double angle = 2 * M_PI * harmonic * double(b) / bins;
        cosine += (profile[b] - mean) * std::cos(angle);
        sine += (profile[b] - mean) * std::sin(angle);
        squares += (profile[b] - mean) * (profile[b] - mean);
    }
    const double share = 2 * (cosine * cosine + sine * sine) / (bins * squares);
    return 2 * harmonic == int(profile.size()) ? share / 2 : share;
}

// Where a sine shows in samples of that rate.
double aliasOf(double frequency, double rate)
{
    return std::abs(frequency - std::round(frequency / rate) * rate);
}

// The mains frequency, or its double, that most of the folded power belongs to; 0: none.
double mainsOf(const FfaResult &result, double period)
{
    const double rate = 1 / result.tsamp;
    std::vector<double> profile;
    for (const double mains : {50.0, 60.0}) {
        double share = 0;
        double largest = 0;
        double strongest = 0;
        for (const double frequency : {mains, 2 * mains}) {
            const int harmonic = int(std::lround(aliasOf(frequency, rate) * period));
            const double off = std::abs(harmonic / period - aliasOf(frequency, rate));
            if (harmonic < 1 || off > mainsTolerance * frequency)
                continue;
            if (profile.empty())
                profile = fold(result.series.data(), int(result.series.size()), period * rate,
                               std::max(2, int(period * rate)))
                              .bins;
            if (2 * harmonic > int(profile.size()))
                continue;
            const double part = harmonicShare(profile, harmonic);
            share += part;
            if (part > largest) {
                largest = part;
                strongest = frequency;
            }
        }
        if (share > 0.5)
            return strongest;
    }
    return 0;
}

// S/N of the series folded at exactly the period of a candidate.
double foldedSnr(const FfaResult &result, const FfaCandidate &candidate)
{
    const FoldedProfile profile = fold(result.series.data(), int(result.series.size()),
                                       candidate.period / result.tsamp, candidate.bins);
    return bestBoxcar(profile, 1).snr; // the series has sigma 1
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

std::vector<FfaCandidate> findCandidates(const FfaResult &result, double threshold, int most,
                                         const std::function<bool(int percent)> &progress)
{
    const Periodogram &periodogram = result.periodogram;
    const FfaSpectrum spectrum = sortedSpectrum(periodogram);
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < spectrum.snr.size(); ++i) {
        if (double(spectrum.snr[i]) > threshold)
            order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(), [&spectrum](std::size_t a, std::size_t b) {
        return spectrum.snr[a] > spectrum.snr[b];
    });

    const double length = double(result.series.size()) * result.tsamp;
    std::vector<bool> taken(spectrum.snr.size());
    std::vector<FfaCandidate> candidates;
    for (const std::size_t peak : order) {
        if (int(candidates.size()) == most)
            break;
        if (taken[peak])
            continue;
        if (progress && !progress(int(100 * candidates.size() / std::size_t(most))))
            break;
        FfaCandidate candidate;
        const int trial = spectrum.trials[peak];
        candidate.period = spectrum.periods[peak];
        candidate.snr = spectrum.snr[peak];
        candidate.width = int(periodogram.widths[std::size_t(bestWidth(periodogram, trial))]);
        candidate.bins = int(periodogram.foldbins[std::size_t(trial)]);
        const float lowest = std::max(float(threshold), neighbourShare * candidate.snr);
        takeNeighbours(spectrum, peak, 1, lowest, length, taken);
        takeNeighbours(spectrum, peak, -1, lowest, length, taken);
        candidate.foldSnr = foldedSnr(result, candidate);
        candidate.mains = mainsOf(result, candidate.period);
        if (candidate.mains == 0)
            nameHarmonic(candidate, candidates, length);
        candidates.push_back(candidate);
    }
    return candidates;
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
        remarks << QString("%1 Hz mains").arg(candidate.mains);
    if (candidate.foldSnr < candidate.snr / 2)
        remarks << QString("folds to %1").arg(candidate.foldSnr, 0, 'f', 1);
    return remarks.join(", ");
}

QStringList candidateTitles()
{
    return {"no.",         "period, s", "S/N",     "remark",    "frequency, Hz",
            "width, bins", "width, ms", "duty, %", "fold, bins"};
}

QStringList candidateFields(const FfaCandidate &candidate, int number)
{
    return {QString::number(number),
            QString::number(candidate.period, 'f', 7),
            QString::number(double(candidate.snr), 'f', 1),
            candidateRemark(candidate),
            QString::number(1 / candidate.period, 'f', 6),
            QString::number(candidate.width),
            QString::number(1000 * candidate.widthSeconds(), 'f', 2),
            QString::number(100 * candidate.dutyCycle(), 'f', 1),
            QString::number(candidate.bins)};
}

} // namespace Tools
