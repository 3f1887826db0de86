#include "calc/ffafold.h"

#include "calc/fold.h"
#include "ffa/normalise.h"

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
constexpr double curveShare = 0.82; // of it, down to which a parabola is fitted
constexpr int curveSteps = 2;       // to either side at least
constexpr double sampleDrift = 0.3; // samples of drift that a pulse of one sample leaves uncertain

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
        const std::vector<double> &series = quiet.empty() ? result.series : quiet;
        const int count = int(series.size());
        return bestBoxcar(Tools::fold(series.data(), count, period / result.tsamp, bins), sigma);
    }

private:
    const FfaResult &result;
    const int bins;
    std::vector<double> quiet;  // empty: the series as it was searched
    double sigma = sampleSigma; // of its samples
};

// Index of the centre of gravity of the S/N above three quarters of the highest, round it.
double centreOfGravity(const std::vector<BoxcarPeak> &peaks, int top)
{
    const double lowest = topShare * peaks[std::size_t(top)].snr;
    double weights = 0;
    double moment = 0;
    const auto add = [&](int i) {
        const double weight = peaks[std::size_t(i)].snr - lowest;
        if (!(weight > 0))
            return false;
        weights += weight;
        moment += weight * i;
        return true;
    };
    for (int i = top; i < int(peaks.size()) && add(i);)
        ++i;
    for (int i = top - 1; i >= 0 && add(i);)
        --i;
    return moment / weights;
}

// Coefficient c of the parabola a + b x + c x^2 through values at whole x from -half on.
double parabolaCurvature(const std::vector<double> &values)
{
    // Least squares with the polynomial x^2 - mean of x^2, which is orthogonal to lines.
    const double centre = (double(values.size()) - 1) / 2;
    double meanSquare = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        meanSquare += (double(i) - centre) * (double(i) - centre) / double(values.size());
    double moment = 0;
    double norm = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double x = double(i) - centre;
        moment += (x * x - meanSquare) * values[i];
        norm += (x * x - meanSquare) * (x * x - meanSquare);
    }
    return moment / norm;
}

// One sigma of the period at the highest of these peaks, in steps; all steps where they do not
// fall off. S^2 / 2 is the logarithm of the likelihood of a pulse found with the S/N S in unit
// noise.
double curveError(const std::vector<BoxcarPeak> &peaks, int top)
{
    const double lowest = curveShare * peaks[std::size_t(top)].snr;
    const auto belongs = [&](int i) {
        return i >= 0 && i < int(peaks.size()) &&
               (std::abs(i - top) <= curveSteps || peaks[std::size_t(i)].snr > lowest);
    };
    int first = top;
    while (belongs(first - 1))
        --first;
    std::vector<double> squares;
    for (int i = first; belongs(i); ++i)
        squares.push_back(peaks[std::size_t(i)].snr * peaks[std::size_t(i)].snr);
    return std::min(double(refineSteps), 1 / std::sqrt(std::max(0.0, -parabolaCurvature(squares))));
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
    FfaRefinement refined;
    refined.period = period + (centreOfGravity(peaks, top) - refineSteps) * step;
    const double seconds = best->width * refined.period / bins;
    const double sampled = sampleDrift * result.tsamp * result.tsamp / seconds;
    // Samples that neighbouring bins share lower the noise of a boxcar, but smear the pulse as
    // much, so that they tell nothing of its time.
    const double own = 1 - 1 / (3 * std::max(1.0, seconds / result.tsamp));
    refined.error = std::hypot(curveError(peaks, top) * step / std::sqrt(own),
                               sampled * refined.period / length);
    return refined;
}

} // namespace Tools
