#include "calc/fold.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tools {

FoldedProfile fold(const double *samples, int count, double period, int bins, int firstSample)
{
    FoldedProfile profile;
    profile.bins.assign(std::size_t(bins), 0.0);
    profile.weights.assign(std::size_t(bins), 0.0);
    profile.periods = count / period;
    const double binsPerSample = bins / period;

    for (int i = 0; i < count; ++i) {
        // Phase of the sample's begin and end, in bins. The end may lie in the next period.
        const double time = double(firstSample) + i;
        // The quotient may be rounded up to a whole number of periods that end after the sample.
        const double phase = std::max(0.0, time - std::floor(time / period) * period);
        const double begin = phase * binsPerSample;
        const double end = begin + binsPerSample;
        for (double low = begin; low < end;) {
            const double bin = std::floor(low);
            const double high = std::min(end, bin + 1);
            const std::size_t b = std::size_t(bin) % std::size_t(bins);
            profile.bins[b] += (high - low) / binsPerSample * samples[i];
            profile.weights[b] += (high - low) / binsPerSample;
            low = high;
        }
    }
    for (std::size_t b = 0; b < profile.bins.size(); ++b) {
        if (profile.weights[b] > 0)
            profile.bins[b] /= profile.weights[b];
    }
    return profile;
}

BoxcarPeak bestBoxcar(const std::vector<double> &profile, double binSigma)
{
    BoxcarPeak peak;
    const int b = int(profile.size());
    if (b < 2 || !(binSigma > 0))
        return peak;
    // Sums of the first i bins, twice round.
    std::vector<double> sums(2 * profile.size() + 1, 0.0);
    for (int i = 0; i < 2 * b; ++i)
        sums[std::size_t(i) + 1] = sums[std::size_t(i)] + profile[std::size_t(i % b)];
    const double total = sums[std::size_t(b)];

    // Every width up to ten bins, then steps of a tenth: the S/N of a pulse hardly depends on
    // less, and a long period has too many bins to try them all.
    for (int w = 1; w <= b / 2; w = std::max(w + 1, w * 11 / 10)) {
        const double noise = binSigma * std::sqrt(double(w) * (b - w) / b);
        for (int i = 0; i < b; ++i) {
            const double sum = sums[std::size_t(i) + std::size_t(w)] - sums[std::size_t(i)];
            const double snr = (sum - w * total / b) / noise;
            if (snr > peak.snr) {
                const double centre = (i + w / 2.0) / b;
                peak = {snr, w, centre - std::floor(centre)};
            }
        }
    }
    return peak;
}

} // namespace Tools
