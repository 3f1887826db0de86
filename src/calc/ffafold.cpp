#include "calc/ffafold.h"

#include "calc/fold.h"
#include "calc/periodlikelihood.h"
#include "ffa/normalise.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Tools {

namespace {

constexpr int mostParts = 64;
constexpr int refineSteps = 24;      // to either side
constexpr double refineBins = 3;     // of drift there at least
constexpr double refineWidths = 2;   // of the pulse
constexpr double likelyWidths = 1.5; // of the pulse: drift to either side of the best
constexpr int coarsePart = 40;       // per cent of the work
constexpr int likelyPart = 60;
constexpr int refinedBins = 512;

constexpr double sampleSigma = 1; // of the searched series

int binsOf(const FfaResult &result, double period, int bins)
{
    return std::clamp(bins, 2, std::max(2, int(period / result.tsamp)));
}

// Folds at periods round one: of the series without its mains hum, which would move the peak and
// is no noise, unless the pulses are hum themselves.
class PeriodScan {
public:
    PeriodScan(const FfaResult &searched, double period, int foldBins)
        : result(searched), bins(foldBins)
    {
        if (result.mains.empty())
            return;
        const double snr = peakAt(period).snr;
        quiet = result.series;
        removeMains(quiet, result.tsamp, result.mains);
        if (isMostlyHum(snr, peakAt(period).snr))
            quiet.clear();
        else
            sigma = Ffa::sampleDeviation(quiet.data(), int(quiet.size()));
    }

    BoxcarPeak peakAt(double period) const
    {
        const std::vector<double> &samples = series();
        const int count = int(samples.size());
        return bestBoxcar(Tools::fold(samples.data(), count, period / result.tsamp, bins), sigma);
    }

    // Variance of what the mean pulse leaves of the samples.
    double restVariance(double period) const
    {
        const std::vector<double> &samples = series();
        const int count = int(samples.size());
        const FoldedProfile profile =
            Tools::fold(samples.data(), count, period / result.tsamp, bins);
        double squares = std::inner_product(samples.begin(), samples.end(), samples.begin(), 0.0);
        double left = count;
        for (std::size_t b = 0; b < profile.bins.size(); ++b) {
            squares -= profile.weights[b] * profile.bins[b] * profile.bins[b];
            left -= profile.weights[b] * profile.variances[b];
        }
        return left > 0 ? std::max(0.0, squares / left) : sigma * sigma;
    }

    const std::vector<double> &series() const { return quiet.empty() ? result.series : quiet; }

private:
    const FfaResult &result;
    const int bins;
    std::vector<double> quiet;  // empty: the series as it was searched
    double sigma = sampleSigma; // of its samples
};

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
    const PeriodScan scan(result, period, bins);
    const double length = double(result.series.size()) * result.tsamp;
    const double width = double(scan.peakAt(period).width) / bins; // of a turn
    const double drift = std::max(refineBins / searchedBins, refineWidths * width);
    // A drift of d turns over the series belongs to a change of the period by d P^2 / T.
    const double step = drift / refineSteps * period * period / length;

    std::vector<BoxcarPeak> peaks;
    for (int i = -refineSteps; i <= refineSteps; ++i) {
        if (progress && !progress(coarsePart * int(peaks.size()) / (2 * refineSteps + 1)))
            return {};
        peaks.push_back(scan.peakAt(period + i * step));
    }
    const auto best =
        std::max_element(peaks.begin(), peaks.end(),
                         [](const BoxcarPeak &a, const BoxcarPeak &b) { return a.snr < b.snr; });
    if (!(best->snr > 0))
        return {period, period};
    const double found = period + (double(best - peaks.begin()) - refineSteps) * step;
    const double turn = found / result.tsamp;
    const double middle = double(result.series.size()) / 2 / turn;
    const double phase = best->phase - middle;
    const double share = double(best->width) / bins;
    const LikelyPeriod likely =
        likelyPeriod(scan.series(), scan.restVariance(found),
                     {turn, phase - std::floor(phase), share, best->snr}, likelyWidths * share,
                     [&](int percent) {
                         return !progress || progress(coarsePart + likelyPart * percent / 100);
                     });
    return {likely.period * result.tsamp, likely.error * result.tsamp};
}

} // namespace Tools
