#include "calc/ffasearch.h"

#include "calc/blockline.h"
#include "calc/problems.h"
#include "ffa/downsample.h"
#include "ffa/ffaplan.h"
#include "ffa/periodogram.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace Tools {

namespace {

constexpr double shortestPreset = 0.1; // s
constexpr double longestPreset = 30;   // s

// Times of one core at 3 GHz with AVX2, in ns: an addition of the transform, a bin of a profile
// to sum up, and a bin at one width.
constexpr double transformTime = 0.10;
constexpr double sumTime = 0.30;
constexpr double widthTime = 0.03;
// A series sample in one downsampling.
constexpr double downsamplingTime = 1.0;

// Rounded to so many significant digits, towards plus or minus.
double rounded(double value, int digits, bool up)
{
    const double unit = std::pow(10.0, std::floor(std::log10(value)) + 1 - digits);
    const double slack = 1e-9; // a value that has the digits stays
    return unit * (up ? std::ceil(value / unit - slack) : std::floor(value / unit + slack));
}

QString number(double value)
{
    return QString::number(value, 'g', 5);
}

// Standard deviations that differ by less count as one: a search has up to some ten thousand
// downsamplings with as many widths, and the maximum does not tell them apart.
constexpr double sigmaStep = 1.0 / 1024;
constexpr double largestNoise = 4; // those of a search lie close to 1
// A wide boxcar slides by single bins, which gives it more independent places than fit side by
// side; found on simulated noise.
constexpr double slidingGain = 1.5;

// Independent values of noise, gathered by their standard deviation.
class NoiseValues {
public:
    void add(double count, double sigma)
    {
        if (!(count > 0))
            return;
        Group &group = groups[std::size_t(std::clamp(sigma, 0.0, largestNoise) / sigmaStep)];
        group.count += count;
        group.sigma += (sigma - group.sigma) * count / group.count;
    }

    double expectedMaximum() const
    {
        double low = 0;
        double high = 100;
        for (int i = 0; i < 60; ++i) {
            const double middle = (low + high) / 2;
            double exponent = 0; // logarithm of the probability that all values are below
            for (const Group &group : groups) {
                if (!(group.count > 0))
                    continue;
                const double tail = std::erfc(middle / group.sigma / std::sqrt(2.0)) / 2;
                exponent += group.count * std::log1p(-tail);
            }
            (exponent < std::log(0.5264) ? low : high) = middle;
        }
        return (low + high) / 2;
    }

private:
    struct Group {
        double count = 0;
        double sigma = 0; // mean
    };
    std::vector<Group> groups = std::vector<Group>(std::size_t(largestNoise / sigmaStep) + 1);
};

// The values of one step of a search: in units of the S/N as it is told, and of the true one.
struct SearchNoise {
    NoiseValues told;
    NoiseValues real;

    // `profileBins` counts the bins of all its trial periods, `bins` those of a typical one.
    void add(const std::vector<qint32> &widths, int points, double f, double profileBins,
             double bins)
    {
        const double v = Ffa::downsampledVariance(quint64(points), f);
        const double oneValue = Ffa::trueVariance(quint64(points), f);
        const double factor = Ffa::snrFactor(quint64(points), f);
        for (const double w : widths) {
            const double variance = (w - 1) * f + oneValue - w * w * f / bins;
            const double sigma = std::sqrt(std::max(0.0, variance) / (v * w * (1 - w / bins)));
            const double count = (w > 1 ? slidingGain : 1) * profileBins / w;
            told.add(count, sigma);
            real.add(count, sigma * factor);
        }
    }
};

// Values of a moving window in two halves.
class MedianWindow {
public:
    void insert(double value)
    {
        (low.empty() || value <= *low.rbegin() ? low : high).insert(value);
        balance();
    }

    void remove(double value)
    {
        auto &half = value <= *low.rbegin() ? low : high;
        half.erase(half.find(value));
        balance();
    }

    double median() const { return *low.rbegin(); }

private:
    // The lower half is as large as the upper one or one larger.
    void balance()
    {
        if (low.size() > high.size() + 1)
            high.insert(low.extract(std::prev(low.end())));
        else if (low.size() < high.size())
            low.insert(high.extract(high.begin()));
    }

    std::multiset<double> low;
    std::multiset<double> high;
};

} // namespace

FfaParameters presetFfa(int points, double tsamp, FfaParameters ffa)
{
    const double shortest = std::max(ffa.bins_min * tsamp, shortestPreset);
    const double longest = std::min(points * tsamp / ffa.fpmin, longestPreset);
    if (!(tsamp > 0) || !(shortest < longest))
        return ffa;
    ffa.period_min = rounded(shortest, 2, true);
    ffa.period_max = rounded(longest, 3, false);
    ffa.rmed_width = rounded(3 * ffa.period_max, 2, true);
    if (findFfaProblems(ffa, points, tsamp).empty())
        ffa.period_min = periodMinWithoutWholeFactors(ffa, points, tsamp);
    return ffa;
}

double presetMedianWidth(double period_max, int points, double tsamp)
{
    return std::min(3 * period_max, points * tsamp);
}

std::vector<FieldProblem> findFfaProblems(const FfaParameters &ffa, int points, double tsamp)
{
    std::vector<FieldProblem> problems;
    const auto refuse = [&problems](const QString &parameter, const QString &text) {
        problems.push_back({parameter, text});
    };
    const Ffa::Refusal refusal =
        Ffa::findRefusal(quint64(std::max(points, 0)), tsamp, ffa.period_min, ffa.period_max,
                         ffa.bins_min, ffa.bins_max);
    if (!refusal.text.isEmpty())
        refuse(refusal.parameter, refusal.text);
    const double length = points * tsamp;
    if (ffa.fpmin < 1)
        refuse("fpmin", "fpmin must be > 0");
    else if (!(ffa.period_max <= length / ffa.fpmin))
        refuse(
            "period_max",
            QString("period_max must be <= length / fpmin = %1 s").arg(number(length / ffa.fpmin)));
    // A boxcar as wide as the profile has no S/N.
    if (!(ffa.ducy_max > 0 && ffa.ducy_max < 1))
        refuse("ducy_max", "ducy_max must be > 0 and < 1");
    if (!(ffa.wtsp >= 1) || std::isinf(ffa.wtsp))
        refuse("wtsp", "wtsp must be >= 1");
    if (ffa.deredden) {
        if (!(ffa.rmed_width >= 3 * tsamp && ffa.rmed_width <= length))
            refuse("rmed_width",
                   QString("rmed_width must be >= 3 points and <= length (%1 to %2 s)")
                       .arg(number(3 * tsamp), number(length)));
        if (ffa.rmed_minpts < 3)
            refuse("rmed_minpts", "rmed_minpts must be >= 3");
    }
    if (problems.empty() && Ffa::periodogramLength(quint64(points), tsamp, ffa.period_min,
                                                   ffa.period_max, ffa.bins_min, ffa.bins_max) == 0)
        refuse("period_max", "No fold has two periods: no trial periods");
    return joinProblems({problems});
}

std::vector<Ffa::WholeFactorStep> wholeFactorSteps(const FfaParameters &ffa, int points,
                                                   double tsamp)
{
    return Ffa::wholeFactorSteps(quint64(points), tsamp, ffa.period_min, ffa.period_max,
                                 ffa.bins_min, ffa.bins_max);
}

double periodMinWithoutWholeFactors(const FfaParameters &ffa, int points, double tsamp)
{
    return Ffa::periodMinWithoutWholeFactors(quint64(points), tsamp, ffa.period_min, ffa.period_max,
                                             ffa.bins_min, ffa.bins_max);
}

QString wholeFactorText(const std::vector<Ffa::WholeFactorStep> &steps)
{
    if (steps.empty())
        return {};
    constexpr std::size_t mostNamed = 3;
    const std::size_t named = std::min(steps.size(), mostNamed);
    QStringList ranges;
    QStringList factors;
    for (std::size_t i = 0; i < named; ++i) {
        ranges << QString("%1 to %2 s (%3 times)")
                      .arg(number(steps[i].shortest), number(steps[i].longest))
                      .arg(steps[i].snrFactor, 0, 'f', 1);
        factors << QString::number(std::floor(steps[i].factor));
    }
    const QString more =
        steps.size() > named ? QString(" and %1 more").arg(steps.size() - named) : QString();
    return QString(
               "S/N comes out too low at periods of %1%2, where the downsampling factor is whole "
               "(%3%2).")
        .arg(ranges.join(", "), more, factors.join(", "));
}

FfaEstimate estimateFfa(const FfaParameters &ffa, int points, double tsamp)
{
    FfaEstimate estimate;
    const auto widths = Ffa::trialWidths(ffa.bins_min, ffa.ducy_max, ffa.wtsp);
    estimate.widths = int(widths.size());
    const double perBin = sumTime + widthTime * estimate.widths;
    double nanoseconds = 0;
    SearchNoise noise;
    const Ffa::SearchPlan plan(quint64(points), tsamp, ffa.period_min, ffa.period_max, ffa.bins_min,
                               ffa.bins_max);
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        nanoseconds += points * downsamplingTime;
        double profileBins = 0; // of all trial periods of the step
        for (int bins = ffa.bins_min; bins <= step->binsLast; ++bins) {
            const Ffa::PlanFold fold = step->fold(bins);
            const double rows = double(fold.rows);
            nanoseconds += rows * bins * std::log2(rows) * transformTime +
                           double(fold.evaluated) * bins * perBin;
            estimate.trials += fold.evaluated;
            profileBins += double(fold.evaluated) * bins;
        }
        noise.add(widths, points, step->factor, profileBins, (ffa.bins_min + step->binsLast) / 2.0);
    }
    estimate.seconds = nanoseconds * 1e-9;
    estimate.noiseMaximum = noise.told.expectedMaximum();
    estimate.noiseThreshold = noise.real.expectedMaximum();
    return estimate;
}

double ffaBytes(const FfaParameters &ffa, int points, double tsamp)
{
    const auto widths = Ffa::trialWidths(ffa.bins_min, ffa.ducy_max, ffa.wtsp);
    const quint64 trials = Ffa::periodogramLength(quint64(points), tsamp, ffa.period_min,
                                                  ffa.period_max, ffa.bins_min, ffa.bins_max);
    // The result holds the S/N values twice, in the periodogram and as a curve.
    return Ffa::searchBytes(quint64(points), tsamp, ffa.period_min, ffa.period_max, ffa.bins_min,
                            ffa.bins_max, {widths.begin(), widths.end()}) +
           double(trials) * double(widths.size()) * sizeof(float);
}

std::vector<double> runningMedian(const std::vector<double> &values, int window)
{
    const int count = int(values.size());
    const int half = window / 2;
    std::vector<double> medians(values.size());
    MedianWindow inside;
    for (int i = 0; i < std::min(half, count); ++i)
        inside.insert(values[std::size_t(i)]);
    for (int i = 0; i < count; ++i) {
        if (i < count - half)
            inside.insert(values[std::size_t(i) + std::size_t(half)]);
        if (i > half)
            inside.remove(values[std::size_t(i) - std::size_t(half) - 1]);
        medians[std::size_t(i)] = inside.median();
    }
    return medians;
}

bool deredden(std::vector<double> &values, double width, int minPoints)
{
    const int count = int(values.size());
    if (!std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); }))
        return false;
    if (count == 0)
        return true;
    width = std::clamp(width, 1.0, double(count));
    const int block = std::max(1, int(width / minPoints));
    const SeriesBlocks blocks = {count, block};
    std::vector<double> means(std::size_t(blocks.number()), 0.0);
    for (std::ptrdiff_t k = 0; k < blocks.number(); ++k) {
        for (std::ptrdiff_t i = k * block; i < blocks.endOf(k); ++i)
            means[std::size_t(k)] += values[std::size_t(i)];
        means[std::size_t(k)] /= double(blocks.endOf(k) - k * block);
    }
    const int window = int(width / block) | 1;
    const std::vector<double> level = runningMedian(means, window);
    BlockLine<double> slow(blocks, level);
    for (int i = 0; i < count; ++i)
        values[std::size_t(i)] -= slow.at(i);
    return true;
}

} // namespace Tools
