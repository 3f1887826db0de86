#include "analyses/days/powerstack.h"

#include "analyses/days/sigmatable.h"
#include "base/targetclones.h"
#include "calc/localmedian.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace Days {

namespace {

// Adds one day from the first to before the last bin, shifted by whole bins.
ZRT_TARGET_CLONES void addRun(const float *powers, double weight, double *sums, int count)
{
    for (int i = 0; i < count; ++i)
        sums[i] += weight * double(powers[i]);
}

// First bin at or after `from` whose shift is not that of `from`; `bins` if there is none. The
// shift k (ratio - 1) is monotonous, so the run's end is found by halving.
int endOfRun(int from, int bins, double ratio)
{
    const auto shiftAt = [ratio](int bin) { return int(std::floor(bin * ratio + 0.5)) - bin; };
    const int shift = shiftAt(from);
    int inside = from;
    int outside = bins;
    while (outside - inside > 1) {
        const int middle = inside + (outside - inside) / 2;
        (shiftAt(middle) == shift ? inside : outside) = middle;
    }
    return outside;
}

void addDay(const DayPowers &day, int bins, double *sums)
{
    for (int begin = 0; begin < bins;) {
        const int end = endOfRun(begin, bins, day.ratio);
        const int shift = int(std::floor(begin * day.ratio + 0.5)) - begin;
        // What would lie outside the day's spectrum is taken from its last or first bin.
        const int first = std::clamp(begin, std::min(end, -shift), end);
        const int last = std::clamp(bins - shift, first, end);
        for (int bin = begin; bin < first; ++bin)
            sums[bin] += day.weight * double(day.powers[0]);
        addRun(day.powers + first + shift, day.weight, sums + first, last - first);
        for (int bin = last; bin < end; ++bin)
            sums[bin] += day.weight * double(day.powers[bins - 1]);
        begin = end;
    }
}

// Where the nearest bin of a day changes, its next value begins: the steps there, of which the
// fine positions are the running sum. One step a bin instead of sixteen values.
void addSteps(const DayPowers &day, int bins, std::vector<double> &steps)
{
    const double positionsPerBin = finePerBin / day.ratio;
    const int positions = int(steps.size());
    steps[0] += day.weight * double(day.powers[0]);
    for (int bin = 1; bin < bins; ++bin) {
        const int position = int(std::ceil((bin - 0.5) * positionsPerBin));
        if (position >= positions)
            break;
        steps[std::size_t(position)] +=
            day.weight * (double(day.powers[bin]) - double(day.powers[bin - 1]));
    }
}

} // namespace

std::vector<double> stackDays(const std::vector<DayPowers> &days, int bins)
{
    std::vector<double> sums(std::size_t(std::max(0, bins)));
    for (const DayPowers &day : days)
        addDay(day, bins, sums.data());
    return sums;
}

std::vector<double> stackDaysFinely(const std::vector<DayPowers> &days, int bins,
                                    const std::function<bool()> &isStopped)
{
    std::vector<double> sums(static_cast<std::size_t>(std::max(0, bins)) * finePerBin);
    if (sums.empty())
        return sums;
    for (const DayPowers &day : days) {
        if (isStopped && isStopped())
            return sums;
        addSteps(day, bins, sums);
    }
    std::partial_sum(sums.begin(), sums.end(), sums.begin());
    return sums;
}

std::vector<double> levelOfStack(const std::vector<double> &stack, double expected, int window,
                                 int first)
{
    std::vector<double> level = Tools::localMedian(stack, window, std::size_t(first));
    for (double &value : level)
        value = value > 0 ? value / expected : 1;
    return level;
}

double countOfTrials(int bins, int harmonics)
{
    return std::max(1.0, bins * (1 + 0.6 * std::log2(harmonics)));
}

namespace {

void whitenFinely(std::vector<double> &fine, const std::vector<double> &level)
{
    for (std::size_t i = 0; i < fine.size(); ++i)
        fine[i] /= level[std::min((i + finePerBin / 2) / finePerBin, level.size() - 1)];
}

std::vector<double> harmonicSums(const std::vector<double> &whitened, int bins, int harmonics)
{
    std::vector<double> sums(static_cast<std::size_t>(bins));
    const int step = finePerBin / harmonics;
    for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
        for (int trial = 0; trial < bins; ++trial)
            sums[std::size_t(trial)] += whitened[std::size_t(trial) * std::size_t(harmonic * step)];
    }
    return sums;
}

std::vector<StackLine> strongestApart(std::vector<StackLine> lines)
{
    constexpr double closest = 1.5;
    std::sort(lines.begin(), lines.end(), [](const StackLine &a, const StackLine &b) {
        return a.sigma != b.sigma ? a.sigma > b.sigma : a.bin < b.bin;
    });
    std::vector<StackLine> kept;
    for (const StackLine &line : lines) {
        const bool isNew = std::none_of(kept.begin(), kept.end(), [&line](const StackLine &other) {
            return std::abs(other.bin - line.bin) < closest;
        });
        if (isNew)
            kept.push_back(line);
    }
    return kept;
}

} // namespace

std::vector<StackLine> findLines(std::vector<double> fine, const std::vector<double> &level,
                                 const LineSearch &search)
{
    const int bins = int(level.size());
    whitenFinely(fine, level);
    const double trials = countOfTrials(bins - search.lowestBin, search.harmonics);
    std::vector<StackLine> lines;
    for (int harmonics = 1; harmonics <= search.harmonics; harmonics *= 2) {
        const std::vector<double> sums = harmonicSums(fine, bins, harmonics);
        const double shape = search.shape * harmonics;
        const double lowest = Tools::powerAtSigma(shape, search.lowestSigma, trials);
        for (int trial = search.lowestBin * harmonics; trial < bins; ++trial) {
            const double power = sums[std::size_t(trial)];
            if (power < lowest || power < sums[std::size_t(trial - 1)] ||
                (trial + 1 < bins && power <= sums[std::size_t(trial + 1)]))
                continue;
            lines.push_back({double(trial) / harmonics, harmonics, power,
                             Tools::sigmaOfPower(shape, power, trials)});
        }
    }
    return strongestApart(std::move(lines));
}

std::vector<float> bestSigmas(std::vector<double> fine, const std::vector<double> &level,
                              const LineSearch &search)
{
    const int bins = int(level.size());
    whitenFinely(fine, level);
    std::vector<double> best(level.size(), -std::numeric_limits<double>::infinity());
    for (int harmonics = 1; harmonics <= search.harmonics; harmonics *= 2) {
        const std::vector<double> sums = harmonicSums(fine, bins, harmonics);
        const SigmaTable table(search.shape * harmonics);
        for (int trial = search.lowestBin * harmonics; trial < bins; ++trial) {
            double &most = best[std::size_t((trial + harmonics / 2) / harmonics)];
            most = std::max(most, table.at(sums[std::size_t(trial)]));
        }
    }
    const double trials = countOfTrials(1, search.harmonics);
    std::vector<float> sigmas(level.size(), std::numeric_limits<float>::quiet_NaN());
    for (std::size_t bin = 0; bin < best.size(); ++bin) {
        if (std::isfinite(best[bin]))
            sigmas[bin] = float(Tools::sigmaOfTail(
                Tools::logTailOfTrials(Tools::logNormalTail(best[bin]), trials)));
    }
    return sigmas;
}

} // namespace Days
