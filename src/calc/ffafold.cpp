#include "calc/ffafold.h"

#include "calc/fold.h"
#include "ffa/boxcar.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tools {

namespace {

constexpr int mostParts = 64;
constexpr int stepsPerBin = 8;
constexpr int refinedBins = 3; // of drift, to either side

// Noise of the mean of a bin, for samples of unit noise.
double binSigma(const FfaResult &result, int bins)
{
    return std::sqrt(double(bins) / double(result.series.size()));
}

int binsOf(const FfaResult &result, double period, int bins)
{
    return std::clamp(bins, 2, std::max(2, int(period / result.tsamp)));
}

} // namespace

FfaFold foldSeries(const FfaResult &result, double period, int wantedBins)
{
    FfaFold fold;
    fold.period = period;
    const int bins = binsOf(result, period, wantedBins);
    const int count = int(result.series.size());
    const double samples = period / result.tsamp;
    fold.profile = Tools::fold(result.series.data(), count, samples, bins).bins;

    fold.parts = std::clamp(int(count / samples), 1, mostParts);
    fold.picture.reserve(std::size_t(fold.parts) * std::size_t(bins));
    for (int part = 0; part < fold.parts; ++part) {
        const int begin = int(qint64(count) * part / fold.parts);
        const int end = int(qint64(count) * (part + 1) / fold.parts);
        const FoldedProfile row =
            Tools::fold(result.series.data() + begin, end - begin, samples, bins, begin);
        for (std::size_t b = 0; b < row.bins.size(); ++b)
            fold.picture.push_back(row.weights[b] > 0 ? float(row.bins[b])
                                                      : std::numeric_limits<float>::quiet_NaN());
    }

    std::vector<quint64> widths;
    for (int w = 1; w <= bins / 2; w = std::max(w + 1, w * 11 / 10))
        widths.push_back(quint64(w));
    const std::vector<float> profile(fold.profile.begin(), fold.profile.end());
    std::vector<float> snr(widths.size());
    Ffa::boxcarSnr(profile.data(), quint32(bins), widths.data(), widths.size(),
                   float(binSigma(result, bins)), snr.data());
    fold.widths.assign(widths.begin(), widths.end());
    fold.snr.assign(snr.begin(), snr.end());
    fold.best = int(std::max_element(snr.begin(), snr.end()) - snr.begin());
    fold.phase = bestBoxcar(fold.profile, binSigma(result, bins)).phase;
    return fold;
}

FfaRefinement refinePeriod(const FfaResult &result, double period, int wantedBins,
                           const std::function<bool(int percent)> &progress)
{
    const int bins = binsOf(result, period, wantedBins);
    const int count = int(result.series.size());
    const double length = count * result.tsamp;
    const double step = period * period / (bins * length * stepsPerBin);
    constexpr int last = refinedBins * stepsPerBin;
    FfaRefinement refined;
    BoxcarPeak best;
    for (int i = -last; i <= last; ++i) {
        if (progress && !progress(100 * (i + last) / (2 * last)))
            return {};
        const double trial = period + i * step;
        const auto profile =
            Tools::fold(result.series.data(), count, trial / result.tsamp, bins).bins;
        const BoxcarPeak peak = bestBoxcar(profile, binSigma(result, bins));
        if (peak.snr > best.snr) {
            best = peak;
            refined = {trial, 0, peak.snr};
        }
    }
    if (best.snr > 0) {
        const double width = best.width * refined.period / bins;
        refined.error = std::sqrt(12.0) * refined.period * width / (best.snr * length);
    }
    return refined;
}

} // namespace Tools
