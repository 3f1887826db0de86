#include "calc/ffafold.h"

#include "calc/fold.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tools {

namespace {

constexpr int mostParts = 64;
constexpr int refineSteps = 24;    // to either side
constexpr double refineBins = 3;   // of drift there at least
constexpr double refineWidths = 2; // of the pulse
constexpr double topShare = 0.75;  // of the highest S/N
constexpr int refinedBins = 512;

constexpr double sampleSigma = 1; // of the searched series

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
    const FoldedProfile profile = Tools::fold(result.series.data(), count, samples, bins);
    fold.profile = profile.bins;

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

    const std::vector<BoxcarPeak> peaks = boxcarPeaks(profile, sampleSigma);
    fold.widths = boxcarWidths(bins);
    for (const BoxcarPeak &peak : peaks)
        fold.snr.push_back(peak.snr);
    fold.best = int(std::max_element(fold.snr.begin(), fold.snr.end()) - fold.snr.begin());
    fold.phase = peaks[std::size_t(fold.best)].phase;
    return fold;
}

FfaRefinement refinePeriod(const FfaResult &result, double period, int searchedBins,
                           const std::function<bool(int percent)> &progress)
{
    const int bins = binsOf(result, period, refinedBins);
    const int count = int(result.series.size());
    const double length = count * result.tsamp;
    const auto peakAt = [&](double trial) {
        return bestBoxcar(Tools::fold(result.series.data(), count, trial / result.tsamp, bins),
                          sampleSigma);
    };
    const double width = double(peakAt(period).width) / bins; // of a turn
    const double drift = std::max(refineBins / searchedBins, refineWidths * width);
    // A drift of d turns over the series belongs to a change of the period by d P^2 / T.
    const double step = drift / refineSteps * period * period / length;

    std::vector<BoxcarPeak> peaks;
    for (int i = -refineSteps; i <= refineSteps; ++i) {
        if (progress && !progress(100 * int(peaks.size()) / (2 * refineSteps + 1)))
            return {};
        peaks.push_back(peakAt(period + i * step));
    }
    const auto best =
        std::max_element(peaks.begin(), peaks.end(),
                         [](const BoxcarPeak &a, const BoxcarPeak &b) { return a.snr < b.snr; });
    if (!(best->snr > 0))
        return {period, period, 0};
    const double lowest = topShare * best->snr;
    double weights = 0;
    double moment = 0;
    const int top = int(best - peaks.begin());
    const auto isAbove = [&](int i) { return peaks[std::size_t(i)].snr > lowest; };
    const auto add = [&](int i) {
        weights += peaks[std::size_t(i)].snr - lowest;
        moment += (peaks[std::size_t(i)].snr - lowest) * (i - refineSteps);
    };
    for (int i = top; i < int(peaks.size()) && isAbove(i); ++i)
        add(i);
    for (int i = top - 1; i >= 0 && isAbove(i); --i)
        add(i);
    FfaRefinement refined;
    refined.period = period + moment / weights * step;
    refined.snr = best->snr;
    const double seconds = best->width * refined.period / bins;
    refined.error = std::hypot(std::sqrt(12.0) * refined.period * seconds / (best->snr * length),
                               step / std::sqrt(12.0));
    return refined;
}

} // namespace Tools
