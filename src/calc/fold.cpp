#include "calc/fold.h"

#include "base/targetclones.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tools {

namespace {

// One of each per bin.
struct FoldSums {
    double *values;
    double *weights;
    double *squares;  // of the parts of samples
    double *products; // of the parts that a sample has in the bin and in the one before
};

// Adds every sample to the bins that it overlaps, and what its parts add to the noise of each bin
// and to what a bin shares with the one before.
ZRT_TARGET_CLONES
void addSamples(const double *samples, int count, double period, double firstSample, int bins,
                const FoldSums &sums)
{
    const double binsPerSample = bins / period;
    for (int i = 0; i < count; ++i) {
        // Phase of the sample's begin and end, in bins. The end may lie in the next period.
        const double time = firstSample + i;
        // The quotient may be rounded up to a whole number of periods that end after the sample.
        const double phase = std::max(0.0, time - std::floor(time / period) * period);
        const double begin = phase * binsPerSample;
        const double end = begin + binsPerSample;
        double before = 0; // part of the sample in the bin before
        for (double low = begin; low < end;) {
            const double bin = std::floor(low);
            const double high = std::min(end, bin + 1);
            // A sample is at most half a period long, so that it ends in the next one.
            const int b = int(bin) < bins ? int(bin) : int(bin) - bins;
            const double part = (high - low) / binsPerSample;
            sums.values[b] += part * samples[i];
            sums.weights[b] += part;
            sums.squares[b] += part * part;
            sums.products[b] += before * part;
            before = part;
            low = high;
        }
    }
}

} // namespace

FoldedProfile fold(const double *samples, int count, double period, int bins, double firstSample)
{
    FoldedProfile profile;
    const std::size_t size = std::size_t(bins);
    profile.bins.assign(size, 0.0);
    profile.weights.assign(size, 0.0);
    profile.variances.assign(size, 0.0);
    profile.covariances.assign(size, 0.0);
    profile.periods = count / period;
    addSamples(samples, count, period, firstSample, bins,
               {profile.bins.data(), profile.weights.data(), profile.variances.data(),
                profile.covariances.data()});
    for (std::size_t b = 0; b < size; ++b) {
        const double weight = profile.weights[b];
        if (!(weight > 0))
            continue;
        profile.bins[b] /= weight;
        profile.variances[b] /= weight * weight;
        const double product = weight * profile.weights[(b + size - 1) % size];
        profile.covariances[b] = product > 0 ? profile.covariances[b] / product : 0;
    }
    return profile;
}

namespace {

// Sums over runs of bins, read twice round.
class RunSums {
public:
    template <typename Term>
    RunSums(int bins, Term term) : sums(2 * std::size_t(bins) + 1, 0.0)
    {
        for (std::size_t i = 0; i + 1 < sums.size(); ++i)
            sums[i + 1] = sums[i] + term(i % std::size_t(bins));
    }

    double of(int begin, int width) const
    {
        return sums[std::size_t(begin) + std::size_t(width)] - sums[std::size_t(begin)];
    }

private:
    std::vector<double> sums;
};

} // namespace

std::vector<int> boxcarWidths(int bins)
{
    std::vector<int> widths;
    for (int w = 1; w <= bins / 2; w = std::max(w + 1, w * 11 / 10))
        widths.push_back(w);
    return widths;
}

std::vector<BoxcarPeak> boxcarPeaks(const FoldedProfile &profile, double sampleSigma)
{
    const int b = int(profile.bins.size());
    const std::vector<int> widths = boxcarWidths(b);
    std::vector<BoxcarPeak> peaks(widths.size());
    if (!(sampleSigma > 0))
        return peaks;
    const auto linkBehind = [&](std::size_t i) {
        return profile.covariances[(i + 1) % std::size_t(b)];
    };
    const RunSums values(b, [&](std::size_t i) { return profile.bins[i]; });
    // Variance of a run of bins but for the link of its first one to the bin before.
    const RunSums own(
        b, [&](std::size_t i) { return profile.variances[i] + 2 * profile.covariances[i]; });
    // Covariance with the total of all bins.
    const RunSums withTotal(b, [&](std::size_t i) {
        return profile.variances[i] + profile.covariances[i] + linkBehind(i);
    });
    const double total = values.of(0, b);
    const double totalVariance = withTotal.of(0, b);

    for (std::size_t k = 0; k < widths.size(); ++k) {
        const int w = widths[k];
        const double share = double(w) / b;
        double best = 0; // square of the S/N for samples of noise 1
        for (int i = 0; i < b; ++i) {
            const double excess = values.of(i, w) - share * total;
            const double variance = own.of(i, w) - 2 * profile.covariances[std::size_t(i)] +
                                    share * (share * totalVariance - 2 * withTotal.of(i, w));
            if (!(excess > 0) || !(excess * excess > best * variance) || !(variance > 0))
                continue;
            best = excess * excess / variance;
            const double centre = (i + w / 2.0) / b;
            peaks[k] = {std::sqrt(best) / sampleSigma, w, centre - std::floor(centre)};
        }
    }
    return peaks;
}

BoxcarPeak bestBoxcar(const FoldedProfile &profile, double sampleSigma)
{
    const std::vector<BoxcarPeak> peaks = boxcarPeaks(profile, sampleSigma);
    const auto best =
        std::max_element(peaks.begin(), peaks.end(),
                         [](const BoxcarPeak &a, const BoxcarPeak &b) { return a.snr < b.snr; });
    return best == peaks.end() ? BoxcarPeak() : *best;
}

double expectedNoisePeak(int bins)
{
    constexpr double expected = 0.5264;
    const double count = bins * (0.7 + 0.47 * std::log2(bins));
    const double tail = -std::expm1(std::log(expected) / count);
    return sigmaOfTail(std::log(tail));
}

} // namespace Tools
