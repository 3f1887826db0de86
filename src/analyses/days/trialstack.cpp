#include "analyses/days/trialstack.h"

#include "base/targetclones.h"
#include "calc/ffapeaks.h"
#include "calc/localmedian.h"
#include "calc/robuststatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

namespace Days {

namespace {

ZRT_TARGET_CLONES void addRun(const float *values, double *sums, int count)
{
    for (int i = 0; i < count; ++i)
        sums[i] += double(values[i]);
}

// Runs of trials with the same shift, so that they are added as straight runs.
void addDay(const DayTrials &day, int trials, int widths, double *sums)
{
    for (int begin = 0; begin < trials;) {
        const int from = day.nearest ? day.nearest[begin] : begin;
        int end = day.nearest ? begin + 1 : trials;
        while (end < trials && day.nearest[end] == from + end - begin)
            ++end;
        for (int width = 0; width < widths; ++width) {
            const qint64 row = qint64(width) * trials;
            addRun(day.snr + row + from, sums + row + begin, end - begin);
        }
        begin = end;
    }
}

template <typename Value>
double medianOf(std::vector<Value> &values)
{
    if (values.empty())
        return 0;
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return double(*middle);
}

// 1.4826 median absolute deviations of values around their levels.
template <typename Value>
double scatterOf(const Value *values, const std::vector<double> &levels)
{
    std::vector<double> deviations(levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i)
        deviations[i] = std::abs(double(values[i]) - levels[i]);
    return Tools::madToSigma * medianOf(deviations);
}

// A parabola through points of unequal weight.
class Parabola {
public:
    void add(double x, double y, double weight)
    {
        const std::array<double, 3> powers = {1, x, x * x};
        for (std::size_t i = 0; i < 3; ++i) {
            right[i] += weight * powers[i] * y;
            for (std::size_t j = 0; j < 3; ++j)
                normal[i][j] += weight * powers[i] * powers[j];
        }
        ++count;
    }

    // Gaussian elimination; what the points do not tell stays 0.
    std::array<double, 3> solve()
    {
        for (std::size_t i = 0; i < 3; ++i) {
            constexpr double least = 1e-9;
            if (!(normal[i][i] > least) || count <= i)
                continue;
            for (std::size_t j = 0; j < 3; ++j) {
                if (j == i)
                    continue;
                const double factor = normal[j][i] / normal[i][i];
                for (std::size_t k = 0; k < 3; ++k)
                    normal[j][k] -= factor * normal[i][k];
                right[j] -= factor * right[i];
            }
        }
        std::array<double, 3> coefficients = {};
        for (std::size_t i = 0; i < 3; ++i) {
            if (normal[i][i] > 1e-9 && count > i)
                coefficients[i] = right[i] / normal[i][i];
        }
        return coefficients;
    }

private:
    std::array<std::array<double, 3>, 3> normal = {};
    std::array<double, 3> right = {};
    std::size_t count = 0;
};

// The medians at every number of bins as a parabola over its logarithm.
std::vector<double> levelByBins(const double *stack, const FfaTrials &trials)
{
    std::map<int, std::vector<double>> byBins;
    for (std::size_t i = 0; i < trials.periods.size(); ++i)
        byBins[trials.foldBins[i]].push_back(stack[i]);
    const double middle = std::log(std::sqrt(double(trials.ffa.bins_min) * trials.ffa.bins_max));
    Parabola parabola;
    for (auto &[bins, values] : byBins) {
        const auto weight = double(values.size());
        parabola.add(std::log(bins) - middle, medianOf(values), weight);
    }
    const auto [a, b, c] = parabola.solve();
    std::map<int, double> levels;
    for (const auto &[bins, values] : byBins) {
        const double x = std::log(bins) - middle;
        levels[bins] = a + b * x + c * x * x;
    }
    std::vector<double> level(trials.periods.size());
    for (std::size_t i = 0; i < level.size(); ++i)
        level[i] = levels[trials.foldBins[i]];
    return level;
}

// The sigma of a sum is slow to compute; most trials are noise, where a table will do.
class LawTable {
public:
    explicit LawTable(const Tools::PhaseMaximum &sumLaw) : law(sumLaw)
    {
        for (double x = lowest; x <= highest; x += step)
            table.push_back(law.sigma(law.median() + x * law.scatter()));
    }

    /// @param scatters  above the median
    double at(double scatters) const
    {
        const double place = std::max(0.0, (scatters - lowest) / step);
        if (place >= double(table.size() - 1))
            return law.sigma(law.median() + scatters * law.scatter());
        const auto node = std::size_t(place);
        return table[node] + (place - double(node)) * (table[node + 1] - table[node]);
    }

private:
    static constexpr double lowest = -6;
    static constexpr double highest = 10;
    static constexpr double step = 1.0 / 64;
    const Tools::PhaseMaximum &law;
    std::vector<double> table;
};

} // namespace

std::vector<float> standardisedTrials(const std::vector<float> &snr, const FfaTrials &trials)
{
    const std::size_t count = trials.periods.size();
    const std::size_t widths = trials.widths.size();
    std::vector<float> standardised(count * widths);
    std::vector<float> values(count);
    for (std::size_t width = 0; width < widths; ++width) {
        float *const row = standardised.data() + width * count;
        for (std::size_t i = 0; i < count; ++i)
            row[i] = snr[std::size_t(trials.places[i]) * widths + width] /
                     trials.noise[width * count + i];
        values.assign(row, row + count);
        const double median = medianOf(values);
        const double scatter = scatterOf(row, std::vector<double>(count, median));
        for (std::size_t i = 0; i < count; ++i)
            row[i] = scatter > 0 ? float((double(row[i]) - median) / scatter) : 0.0F;
    }
    return standardised;
}

std::vector<float> bestOfWidths(const std::vector<float> &snr, int trials)
{
    std::vector<float> best(snr.begin(), snr.begin() + trials);
    for (std::size_t row = std::size_t(trials); row < snr.size(); row += std::size_t(trials)) {
        for (std::size_t i = 0; i < best.size(); ++i)
            best[i] = std::max(best[i], snr[row + i]);
    }
    return best;
}

std::vector<double> stackTrials(const std::vector<DayTrials> &days, int trials, int widths)
{
    std::vector<double> sums(std::size_t(trials) * std::size_t(widths));
    for (const DayTrials &day : days)
        addDay(day, trials, widths, sums.data());
    return sums;
}

std::vector<Tools::PhaseMaximum> lawsOfTrials(const FfaTrials &trials, double days)
{
    constexpr double slidingGain = 1.75; // a wide boxcar slides by single bins
    const double bins = std::sqrt(double(trials.ffa.bins_min) * trials.ffa.bins_max);
    std::vector<Tools::PhaseMaximum> laws;
    for (const int width : trials.widths)
        laws.emplace_back(width > 1 ? slidingGain * bins / width : bins, days);
    return laws;
}

TrialLevels levelsOfTrials(const std::vector<double> &stack, const FfaTrials &trials,
                           const std::vector<Tools::PhaseMaximum> &laws)
{
    constexpr int window = 1001;
    const std::size_t count = trials.periods.size();
    TrialLevels levels;
    for (std::size_t width = 0; width < trials.widths.size(); ++width) {
        const double *const row = stack.data() + width * count;
        std::vector<double> level = levelByBins(row, trials);
        std::vector<double> rest(count);
        for (std::size_t i = 0; i < count; ++i)
            rest[i] = row[i] - level[i];
        const std::vector<double> slow =
            Tools::localMedian(rest, std::min(window, int(count) - 1) | 1);
        for (std::size_t i = 0; i < count; ++i)
            level[i] += slow[i];
        levels.scatter.push_back(std::max(scatterOf(row, level), laws[width].scatter()));
        levels.level.insert(levels.level.end(), level.begin(), level.end());
    }
    return levels;
}

TrialSignificance bestSignificance(const std::vector<double> &stack, int trials,
                                   const TrialLevels &levels,
                                   const std::vector<Tools::PhaseMaximum> &laws)
{
    TrialSignificance best;
    const auto count = std::size_t(trials);
    best.sigma.assign(count, -std::numeric_limits<float>::infinity());
    best.width.assign(count, 0);
    for (std::size_t width = 0; width < laws.size(); ++width) {
        const LawTable table(laws[width]);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = width * count + i;
            const auto sigma =
                float(table.at((stack[place] - levels.level[place]) / levels.scatter[width]));
            if (sigma > best.sigma[i]) {
                best.sigma[i] = sigma;
                best.width[i] = int(width);
            }
        }
    }
    return best;
}

double countOfPeriodTrials(const FfaTrials &trials, double days)
{
    const int widest = trials.widths.empty() ? 1 : trials.widths.back();
    const double perDoubling = 0.42 + 0.023 * std::sqrt(days);
    return std::max(1.0, trials.count() * (1 + perDoubling * std::log2(widest)));
}

PlaceEstimate placeOf(const std::vector<double> &places, const std::vector<double> &excesses,
                      std::size_t begin, std::size_t end, std::size_t best, double ofSpacing)
{
    const auto spacingAt = [&](std::size_t i) {
        const std::size_t below = i > begin ? i - 1 : i;
        const std::size_t above = i + 1 < end ? i + 1 : i;
        return above > below ? (places[above] - places[below]) / double(above - below) : 0;
    };
    double sum = 0;
    double mean = 0;
    double square = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const double excess = std::max(0.0, excesses[i]);
        const double weight =
            spacingAt(i) * std::exp((excess * excess - excesses[best] * excesses[best]) / 4);
        const double off = places[i] - places[best];
        sum += weight;
        mean += weight * off;
        square += weight * off * off;
    }
    if (!(sum > 0))
        return {places[best], std::numeric_limits<double>::quiet_NaN()};
    mean /= sum;
    const double between = ofSpacing * spacingAt(best);
    return {places[best] + mean,
            std::sqrt(std::max(0.0, square / sum - mean * mean) + between * between)};
}

std::vector<StackPeriod> findPeriods(const std::vector<float> &sigma, const FfaTrials &trials,
                                     double lowestSigma, int most)
{
    const FfaSpectrum spectrum = {trials.periods, sigma, {}};
    std::vector<StackPeriod> periods;
    std::vector<bool> taken(sigma.size());
    for (const std::size_t peak : Tools::peaksAbove(sigma, lowestSigma)) {
        if (int(periods.size()) == most)
            break;
        if (taken[peak])
            continue;
        for (const int direction : {1, -1})
            Tools::takeNeighbours(spectrum, peak, direction, float(lowestSigma), trials.length(),
                                  taken);
        periods.push_back({int(peak), double(sigma[peak])});
    }
    return periods;
}

} // namespace Days
