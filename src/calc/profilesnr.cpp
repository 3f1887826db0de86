#include "calc/profilesnr.h"

#include "calc/profilemaxima.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>

namespace Tools {

namespace {

using Maxima::Places;
using Maxima::PlacesOfBins;

constexpr int fewestBins = 16;
constexpr double shareOfTable = 1.0 / 3; // bins of one sample, whose edges drift
constexpr double tableHeight = 4;

Places between(const Places &a, const Places &b, double part)
{
    return {a.at + part * (b.at - a.at), a.slope + part * (b.slope - a.slope)};
}

Places placesOf(const PlacesOfBins &table, int bins)
{
    const double last = double(table.size() - 1);
    const double position = std::clamp(std::log2(double(bins) / fewestBins), 0.0, last);
    const auto node = std::min(std::size_t(position), table.size() - 2);
    return between(table[node], table[node + 1], position - double(node));
}

} // namespace

double sigmaOfMaximum(ProfileMaximum kind, double snr, int bins, double shared)
{
    const bool isPeak = kind == ProfileMaximum::Peak;
    const Places apart = placesOf(isPeak ? Maxima::peaksApart : Maxima::boxcarsApart, bins);
    const Places sharing = placesOf(isPeak ? Maxima::peaksSharing : Maxima::boxcarsSharing, bins);
    const Places places = between(apart, sharing, std::clamp(shared / shareOfTable, 0.0, 1.0));
    const double trials = std::exp(places.at + places.slope * (snr - tableHeight));
    return sigmaOfTail(logTailOfTrials(logNormalTail(snr), std::max(1.0, trials)));
}

FoldedProfile foldedOf(const std::vector<double> &profile, const ProfileNoise &noise)
{
    FoldedProfile folded;
    folded.bins = profile;
    folded.weights.assign(profile.size(), 1.0);
    folded.variances.assign(profile.size(), noise.binVariance());
    folded.covariances.assign(profile.size(), noise.covariance());
    return folded;
}

double offPulseLevel(const std::vector<double> &profile, double phase, double width)
{
    double sum = 0;
    int count = 0;
    for (std::size_t i = 0; i < profile.size(); ++i) {
        const double away = (double(i) + 0.5) / double(profile.size()) - phase;
        if (std::abs(away - std::round(away)) <= width / 2)
            continue;
        sum += profile[i];
        ++count;
    }
    return count > 0 ? sum / count : 0;
}

namespace {

void measureEnergy(const std::vector<double> &profile, const ProfileNoise &noise, ProfileSnr &snr)
{
    constexpr int mostOfH = 20;
    constexpr double rateOfH = 0.4;
    const int bins = int(profile.size());
    const Harmonics harmonics = harmonicsOf(profile);
    const int below = bins / 2 - 1;
    snr.harmonics = std::min(snr.harmonics, below);
    double sum = 0;
    for (int k = 1; k <= std::min(below, std::max(mostOfH, snr.harmonics)); ++k) {
        sum += 2 * std::norm(harmonics[std::size_t(k)]) / noise.harmonicVariance(k, bins);
        if (k == snr.harmonics)
            snr.z2 = sum;
        if (k <= mostOfH)
            snr.h = std::max(snr.h, sum - 4 * k + 4);
    }
    snr.z2Sigma = sigmaOfPower(snr.harmonics, snr.z2 / 2);
    snr.hSigma = sigmaOfTail(-rateOfH * snr.h);
}

void measureArea(const std::vector<double> &profile, const ProfileNoise &noise, ProfileSnr &snr)
{
    const int bins = int(profile.size());
    const int width = snr.boxcar.width;
    if (width == 0)
        return;
    const double level =
        offPulseLevel(profile, snr.boxcar.phase, std::min(0.75, 2.0 * width / bins));
    const int first = int(std::lround(snr.boxcar.phase * bins - width / 2.0));
    for (int i = first; i < first + width; ++i)
        snr.area += profile[std::size_t((i + bins) % bins)] - level;
    const double highest = *std::max_element(profile.begin(), profile.end()) - level;
    if (!(snr.area > 0) || !(highest > 0))
        return;
    const double equivalentBins = snr.area / highest;
    snr.equivalentWidth = equivalentBins / bins;
    snr.equivalentSnr = snr.area / (noise.sigma * std::sqrt(equivalentBins));
}

} // namespace

ProfileSnr profileSnr(const std::vector<double> &profile, const ProfileNoise &noise, int harmonics)
{
    ProfileSnr snr;
    snr.harmonics = std::max(1, harmonics);
    if (!(noise.sigma > 0))
        return snr;
    const int bins = int(profile.size());
    const std::vector<BoxcarPeak> peaks = boxcarPeaks(foldedOf(profile, noise), 1);
    snr.boxcar =
        *std::max_element(peaks.begin(), peaks.end(),
                          [](const BoxcarPeak &a, const BoxcarPeak &b) { return a.snr < b.snr; });
    snr.peak = peaks.front().snr;
    snr.peakSigma = sigmaOfMaximum(ProfileMaximum::Peak, snr.peak, bins, noise.shared);
    snr.boxcarSigma = sigmaOfMaximum(ProfileMaximum::Boxcar, snr.boxcar.snr, bins, noise.shared);
    measureEnergy(profile, noise, snr);
    measureArea(profile, noise, snr);
    return snr;
}

ChiSquared chiSquaredOf(const double *samples, const double *phases, int count, int bins)
{
    const auto size = std::size_t(bins);
    std::vector<double> sums(size);
    std::vector<double> squares(size);
    std::vector<int> counts(size);
    for (int i = 0; i < count; ++i) {
        const double turn = phases[i] - std::floor(phases[i]);
        const auto bin = std::min(size - 1, std::size_t(turn * bins));
        sums[bin] += samples[i];
        squares[bin] += samples[i] * samples[i];
        ++counts[bin];
    }
    double total = 0;
    double between = 0;
    double within = 0;
    int filled = 0;
    for (std::size_t bin = 0; bin < size; ++bin) {
        if (counts[bin] == 0)
            continue;
        ++filled;
        total += sums[bin];
        between += sums[bin] * sums[bin] / counts[bin];
        within += squares[bin] - sums[bin] * sums[bin] / counts[bin];
    }
    ChiSquared result;
    if (filled < 2 || count <= filled || !(within > 0))
        return result;
    between -= total * total / count;
    result.degrees = filled - 1;
    const double chiSquared = between / (within / (count - filled));
    result.reduced = chiSquared / result.degrees;
    result.sigma = sigmaOfPower(result.degrees / 2.0, chiSquared / 2);
    return result;
}

} // namespace Tools
