#include "calc/ffafold.h"

#include "calc/fold.h"
#include "ffa/normalise.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Tools {

namespace {

constexpr int mostParts = 64;
constexpr int refineSteps = 24;    // to either side
constexpr double refineBins = 3;   // of drift there at least
constexpr double refineWidths = 2; // of the pulse
constexpr double topShare = 0.75;  // of the highest S/N
constexpr int refinedBins = 512;
constexpr double sampleDrift = 0.09; // samples of drift that a pulse of one sample leaves uncertain

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

    // Adds to one weight per sample by how much the S/N of the peak, `factor` times, grows with the
    // sample. That the best boxcar itself moves with the samples changes it in second order only.
    void addInfluence(double period, const BoxcarPeak &peak, double factor,
                      std::vector<double> &influence) const
    {
        const std::vector<double> &samples = series();
        const double turn = period / result.tsamp; // samples
        const double share = double(peak.width) / bins;
        const double opening = std::fmod(peak.phase - share / 2 + 1, 1.0) * turn;
        const double width = share * turn;
        const auto overlapAt = [=](std::size_t i) {
            // Begin of the sample after that of the boxcar before it.
            double after = std::fmod(double(i) - opening, turn);
            after += after < 0 ? turn : 0;
            return std::max(0.0, std::min(1.0, width - after)) + std::max(0.0, after + 1 - turn);
        };
        double sum = 0;
        for (std::size_t i = 0; i < samples.size(); ++i)
            sum += (overlapAt(i) - share) * samples[i];
        if (!(sum > 0))
            return;
        factor *= peak.snr / sum;
        for (std::size_t i = 0; i < samples.size(); ++i)
            influence[i] += factor * (overlapAt(i) - share);
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

// Centre of gravity of the S/N above three quarters of the highest, round it, as an index, and by
// how much it grows with each S/N.
struct Centre {
    double index = 0;
    std::vector<double> slopes;
};

Centre centreOfGravity(const std::vector<BoxcarPeak> &peaks, int top)
{
    const double lowest = topShare * peaks[std::size_t(top)].snr;
    const auto above = [&](int i) { return peaks[std::size_t(i)].snr - lowest; };
    int first = top;
    while (first > 0 && above(first - 1) > 0)
        --first;
    int last = top;
    while (last + 1 < int(peaks.size()) && above(last + 1) > 0)
        ++last;
    double weights = 0;
    Centre centre;
    for (int i = first; i <= last; ++i) {
        weights += above(i);
        centre.index += above(i) * i;
    }
    centre.index /= weights;
    centre.slopes.assign(peaks.size(), 0.0);
    for (int i = first; i <= last; ++i) {
        const double slope = (i - centre.index) / weights;
        centre.slopes[std::size_t(i)] += slope;
        centre.slopes[std::size_t(top)] -= topShare * slope;
    }
    return centre;
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
    const PeriodScan scan(result, period, bins);
    const double length = double(result.series.size()) * result.tsamp;
    const double width = double(scan.peakAt(period).width) / bins; // of a turn
    const double drift = std::max(refineBins / searchedBins, refineWidths * width);
    // A drift of d turns over the series belongs to a change of the period by d P^2 / T.
    const double step = drift / refineSteps * period * period / length;

    std::vector<BoxcarPeak> peaks;
    for (int i = -refineSteps; i <= refineSteps; ++i) {
        if (progress && !progress(100 * int(peaks.size()) / (2 * refineSteps + 1)))
            return {};
        peaks.push_back(scan.peakAt(period + i * step));
    }
    const auto best =
        std::max_element(peaks.begin(), peaks.end(),
                         [](const BoxcarPeak &a, const BoxcarPeak &b) { return a.snr < b.snr; });
    if (!(best->snr > 0))
        return {period, period};
    const int top = int(best - peaks.begin());
    const Centre centre = centreOfGravity(peaks, top);
    FfaRefinement refined;
    refined.period = period + (centre.index - refineSteps) * step;
    std::vector<double> influence(scan.series().size(), 0.0);
    for (std::size_t i = 0; i < peaks.size(); ++i) {
        if (centre.slopes[i] != 0)
            scan.addInfluence(period + (double(i) - refineSteps) * step, peaks[i], centre.slopes[i],
                              influence);
    }
    const double squares =
        std::inner_product(influence.begin(), influence.end(), influence.begin(), 0.0);
    const double noise = std::sqrt(squares * scan.restVariance(refined.period)) * step;
    const double seconds = best->width * refined.period / bins;
    const double sampled =
        sampleDrift * result.tsamp * result.tsamp / std::max(seconds, result.tsamp);
    refined.error = std::hypot(noise, sampled * refined.period / length);
    return refined;
}

} // namespace Tools
