#include "ffa/ffaplan.h"

#include "base/debugline.h"
#include "ffa/downsample.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

namespace Ffa {

namespace {

constexpr double maxInt32 = std::numeric_limits<qint32>::max();

// A failed check: which parameter, and the message.
struct FailedCheck {
    const char *parameter;
    const char *message;
};

// Every check but the one of the shortest period. The comparisons are written so that a NaN
// fails them.
std::optional<FailedCheck> failedRangeCheck(quint64 size, double tsamp, double period_min,
                                            double period_max, qint32 bins_min, qint32 bins_max)
{
    if (size == 0)
        return FailedCheck{"size", "size must be > 0"};
    if (!(tsamp > 0))
        return FailedCheck{"tsamp", "tsamp must be > 0"};
    if (!(period_min > 0))
        return FailedCheck{"period_min", "period_min must be > 0"};
    if (!(period_min < period_max))
        return FailedCheck{"period_max", "period_max must be > period_min"};
    if (bins_min <= 1)
        return FailedCheck{"bins_min", "bins_min must be > 1"};
    if (bins_min > bins_max)
        return FailedCheck{"bins_max", "bins_max must be >= bins_min"};
    return std::nullopt;
}

// Counts up to here are exact in a double; no series is longer.
constexpr double maxSamples = 9007199254740992.0;

constexpr double leastWhole = 3; // below, the variance of a whole factor is right
constexpr int offeredDigits = 4; // of a shortest period
constexpr int mostOffers = 100;  // to either side

bool hasWholeFactor(quint64 size, const SearchPlan &plan)
{
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        if (snrFactor(size, step->factor) > 1)
            return true;
    }
    return false;
}

} // namespace

std::vector<qint32> trialWidths(qint32 bins_min, double ducy_max, double wtsp)
{
    // std::max and std::min keep their first argument against a NaN.
    const double bound = std::min(maxInt32, std::max(1.0, std::trunc(ducy_max * bins_min)));
    std::vector<qint32> widths;
    for (double width = 1; width <= bound;) {
        if (widths.size() == maxTrialWidths) {
            debugLine("Ffa::trialWidths(): too many widths, ducy_max=", ducy_max, " wtsp=", wtsp);
            return {};
        }
        widths.push_back(qint32(width));
        width = std::max(width + 1, std::trunc(width * wtsp));
    }
    return widths;
}

Refusal findRefusal(quint64 size, double tsamp, double period_min, double period_max,
                    qint32 bins_min, qint32 bins_max)
{
    if (const auto failed =
            failedRangeCheck(size, tsamp, period_min, period_max, bins_min, bins_max))
        return {QString::fromLatin1(failed->parameter), QString::fromLatin1(failed->message)};
    const double shortest = bins_min * tsamp;
    if (shortest > period_min)
        return {"period_min", QStringLiteral("Must have: period_min >= tsamp * bins_min (%1*%2=%3)")
                                  .arg(tsamp)
                                  .arg(bins_min)
                                  .arg(shortest)};
    return {};
}

QString validateParameters(quint64 size, double tsamp, double period_min, double period_max,
                           qint32 bins_min, qint32 bins_max)
{
    return findRefusal(size, tsamp, period_min, period_max, bins_min, bins_max).text;
}

void requireParameters(quint64 size, double tsamp, double period_min, double period_max,
                       qint32 bins_min, qint32 bins_max)
{
    if (const auto failed =
            failedRangeCheck(size, tsamp, period_min, period_max, bins_min, bins_max))
        throw std::invalid_argument(failed->message);
    if (bins_min * tsamp > period_min)
        throw std::invalid_argument("Must have: period_min >= tsamp * bins_min");
}

quint64 periodogramLength(quint64 size, double tsamp, double period_min, double period_max,
                          qint32 bins_min, qint32 bins_max)
{
    if (!validateParameters(size, tsamp, period_min, period_max, bins_min, bins_max).isEmpty())
        return 0;
    const SearchPlan plan(size, tsamp, period_min, period_max, bins_min, bins_max);
    quint64 length = 0;
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        for (qint64 bins = bins_min; bins <= step->binsLast; ++bins)
            length += step->fold(qint32(bins)).evaluated;
    }
    return length;
}

quint64 downsampledLength(quint64 size, double factor)
{
    return quint64(std::min(std::floor(double(size) / factor), maxSamples));
}

PlanFold PlanStep::fold(qint32 bins) const
{
    PlanFold fold;
    fold.bins = bins;
    fold.rows = samples / quint64(bins);
    // Rows beyond these would repeat periods of bins + 1 or exceed the longest period.
    const double rows = double(fold.rows);
    const double kept =
        std::ceil(bins * (rows - 1) * (1 - bins / std::min(double(bins) + 1, longest)));
    fold.evaluated = quint64(std::min(rows, kept));
    return fold;
}

SearchPlan::SearchPlan(quint64 dataSize, double interval, double shortest, double longest,
                       qint32 fewestBins, qint32 mostBins)
    : size(dataSize), tsamp(interval), period_max(longest), bins_min(fewestBins),
      bins_max(mostBins), firstFactor(shortest / (interval * fewestBins)),
      growth((double(mostBins) + 1) / fewestBins),
      steps(std::ceil(std::log(longest / shortest) / std::log(growth)))
{}

std::optional<PlanStep> SearchPlan::step(qint64 index) const
{
    if (!(double(index) < steps))
        return {};
    PlanStep step;
    step.factor = firstFactor * std::pow(growth, double(index));
    step.tau = tsamp * step.factor;
    step.samples = downsampledLength(size, step.factor);
    // A fold of one row keeps no rows, so bins end at half the samples. Without two rows of
    // the fewest bins the step is over, and the factor may be past the data.
    const quint64 half = step.samples / 2;
    if (half < quint64(bins_min))
        return {};
    step.longest = period_max / step.tau;
    const double last = std::min({double(half), double(bins_max), std::trunc(step.longest)});
    if (!(last >= bins_min))
        return {};
    step.binsLast = qint32(last);
    return step;
}

double snrFactor(quint64 size, double factor)
{
    const double whole = std::floor(factor);
    const bool isWhole =
        whole >= leastWhole && double(downsampledLength(size, factor)) * (factor - whole) <= 1;
    return isWhole ? std::sqrt(downsampledVariance(size, factor) / trueVariance(size, factor)) : 1;
}

std::vector<WholeFactorStep> wholeFactorSteps(quint64 size, double tsamp, double period_min,
                                              double period_max, qint32 bins_min, qint32 bins_max)
{
    std::vector<WholeFactorStep> found;
    const SearchPlan plan(size, tsamp, period_min, period_max, bins_min, bins_max);
    quint64 trials = 0;
    for (qint64 i = 0; const auto step = plan.step(i); ++i) {
        const quint64 firstTrial = trials;
        for (qint64 bins = bins_min; bins <= step->binsLast; ++bins)
            trials += step->fold(qint32(bins)).evaluated;
        const double loss = snrFactor(size, step->factor);
        if (loss > 1)
            found.push_back({step->factor, step->tau * bins_min,
                             std::min(step->tau * (step->binsLast + 1), period_max), firstTrial,
                             trials - firstTrial, loss});
    }
    return found;
}

double periodMinWithoutWholeFactors(quint64 size, double tsamp, double period_min,
                                    double period_max, qint32 bins_min, qint32 bins_max)
{
    const auto isGood = [=](double shortest) {
        return validateParameters(size, tsamp, shortest, period_max, bins_min, bins_max)
                   .isEmpty() &&
               !hasWholeFactor(size, {size, tsamp, shortest, period_max, bins_min, bins_max});
    };
    if (isGood(period_min))
        return period_min;
    // Quotients of whole numbers and powers of ten are the doubles of short decimals.
    const double scale = std::pow(10.0, offeredDigits - 1 - std::floor(std::log10(period_min)));
    for (int k = 1; k <= mostOffers; ++k) {
        const double lower = (std::ceil(period_min * scale) - k) / scale;
        const double upper = (std::floor(period_min * scale) + k) / scale;
        constexpr double slack = 1e-3; // of the rounding of equal distances
        const bool isLowerNearer = period_min - lower < (1 + slack) * (upper - period_min);
        for (const double shortest :
             {isLowerNearer ? lower : upper, isLowerNearer ? upper : lower}) {
            if (isGood(shortest))
                return shortest;
        }
    }
    return period_min;
}

} // namespace Ffa
