#include "analyses/days/ffastack.h"

#include "analyses/days/daystacker.h"
#include "analyses/days/trialstack.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

namespace Days {

namespace {

constexpr double leastTurn = 1.0 / 3; // bins of drift over the series
constexpr int mostParts = 16;         // of the ratio of two harmonics
constexpr double largestDrift = 0.5;  // bins, from the nearest trial

class FfaStacker : private DayStacker {
public:
    FfaStacker(const std::vector<FourierDay> &allProducts, const FourierDaysChoice &wanted,
               const Jobs::Control &asked)
        : DayStacker(allProducts, wanted, asked)
    {}

    FourierStack stack()
    {
        if (prepare())
            describeLines();
        if (control.isStopped())
            result.problem = "Stopped.";
        return std::move(result);
    }

    FourierLine lineAt(double telescope)
    {
        if (!prepare())
            return {};
        const double period = result.isTurned ? result.ratio / telescope : 1 / telescope;
        const std::size_t trial = result.ffa->nearestTo(period);
        return described({int(trial), double(result.sigma[trial])});
    }

private:
    // Everything but the lines; false where there is nothing to look for them in.
    bool prepare()
    {
        selectDays([](const FourierDay &day) {
            const DayPeriodogram &own = day.periodogram;
            return own.trials ? Shape(own.snr.size(), own.trials->periods.front()) : Shape(0, 0);
        });
        if (!result.problem.isEmpty())
            return false;
        result.ffa = days.days.front()->periodogram.trials;
        count = std::size_t(result.ffa->count());
        result.binWidth = 1 / (2 * result.ffa->length());
        for (void (FfaStacker::*const part)() :
             {&FfaStacker::turnPeriods, &FfaStacker::sumDays, &FfaStacker::leaveOut,
              &FfaStacker::describeTrials}) {
            if (!control.isStopped())
                (this->*part)();
        }
        return !control.isStopped();
    }

    const float *snrOf(std::size_t day) const { return days.days[day]->periodogram.snr.data(); }
    std::size_t trialOf(std::size_t day, std::size_t trial) const
    {
        return nearest.empty() ? trial : std::size_t(nearest[day][trial]);
    }

    // The periods of a day at the barycentre are other ones than those of its trials.
    void turnPeriods()
    {
        const auto [least, most] = findRatios();
        if (!std::isfinite(result.ratio) || !choice.earthMotion)
            return;
        double drift = 0;
        for (std::size_t i = 0; i < count; ++i)
            drift =
                std::max(drift, result.ffa->driftBins(i, result.ffa->periods[i] * (most - least)));
        result.isTurned = drift > leastTurn;
        if (!result.isTurned)
            return;
        turnDays();
        for (const double ratio : days.ratios)
            nearest.push_back(nearestTrials(result.ffa->periods, ratio));
        result.remarks << QString("Each day gives its nearest trial: a pulse of 1 bin loses up to "
                                  "%1 % of its S/N, one of %2 bins up to %3 %.")
                              .arg(100 * lossOfDrift(largestDrift, 1), 0, 'f', 1)
                              .arg(result.ffa->widths.back())
                              .arg(100 * lossOfDrift(largestDrift, result.ffa->widths.back()), 0,
                                   'f', 1);
        std::vector<std::vector<float>> rows(products.size());
        for (std::size_t day = 0; day < days.days.size(); ++day) {
            const auto product = std::size_t(days.days[day] - products.data());
            const std::vector<float> &best = products[product].periodogram.best;
            rows[product].resize(count);
            for (std::size_t i = 0; i < count; ++i)
                rows[product][i] = best[std::size_t(nearest[day][i])];
        }
        result.rows = std::make_shared<const std::vector<std::vector<float>>>(std::move(rows));
    }

    void sumDays()
    {
        std::vector<DayTrials> summed;
        for (std::size_t i = 0; i < days.days.size(); ++i) {
            if (days.chosen[i])
                summed.push_back({snrOf(i), nearest.empty() ? nullptr : nearest[i].data()});
        }
        sums = stackTrials(summed, int(count), int(result.ffa->widths.size()));
        laws = lawsOfTrials(*result.ffa, result.days);
        levels = levelsOfTrials(sums, *result.ffa, laws);
    }

    void leaveOut()
    {
        days.leftOut.assign(count, false);
        for (std::size_t i = 0; i < count && !choice.leftOut.empty(); ++i) {
            const double frequency =
                result.frequency(double(i)) * (result.isTurned ? result.ratio : 1);
            for (const Interference &entry : choice.leftOut)
                days.leftOut[i] =
                    days.leftOut[i] || foldsAt(entry, frequency, result.ffa->length());
        }
        result.leftOut = days.leftOut;
        const auto left = std::count(days.leftOut.begin(), days.leftOut.end(), true);
        if (left > 0)
            result.remarks
                << QString("%1 of %2 trials are left out as interference.").arg(left).arg(count);
    }

    void describeTrials()
    {
        TrialSignificance best = bestSignificance(sums, int(count), levels, laws);
        widths = std::move(best.width);
        result.sigma = std::move(best.sigma);
        result.powers.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = placeOf(i);
            const double excess = sums[place] - levels.level[place];
            result.powers[i] = float(excess / result.days);
            result.widths.push_back(result.ffa->widths[std::size_t(widths[i])]);
            if (days.leftOut[i])
                result.sigma[i] = result.powers[i] = 0;
        }
        result.trials = countOfPeriodTrials(*result.ffa, result.days);
    }

    std::size_t placeOf(std::size_t trial) const
    {
        return std::size_t(widths[trial]) * count + trial;
    }

    void describeLines()
    {
        const double lowest =
            Tools::sigmaOfTail(Tools::logNormalTail(choice.threshold) - std::log(result.trials));
        const std::vector<StackPeriod> periods =
            findPeriods(result.sigma, *result.ffa, lowest, std::max(0, choice.most));
        if (!periods.empty())
            findPulsars(result.ffa->length());
        for (const StackPeriod &period : periods) {
            if (control.isStopped())
                return;
            result.lines.push_back(described(period));
        }
        std::stable_partition(result.lines.begin(), result.lines.end(),
                              [](const FourierLine &line) { return !line.isFewDays; });
        for (int i = 1; i < int(result.lines.size()); ++i)
            relate(i);
    }

    FourierLine described(const StackPeriod &period)
    {
        const auto trial = std::size_t(period.trial);
        FourierLine line;
        line.bin = period.trial;
        line.width = result.ffa->widths[std::size_t(widths[trial])];
        line.foldBins = result.ffa->foldBins[trial];
        line.power = double(result.powers[trial]);
        findFrequencies(line);
        const std::vector<double> ofDay = valuesAt(trial);
        addEvidence(days, ofDay, lawAt(trial, ofDay), choice, result.trials, line);
        line.isHum = isHumOfPulse(hum(), line.telescope, line.width, line.foldBins, *result.ffa);
        markSky(line);
        return line;
    }

    // What each day has above the level, in its own scatters: the level is that of all days.
    std::vector<double> valuesAt(std::size_t trial) const
    {
        const std::size_t width = std::size_t(widths[trial]);
        const double excess = levels.level[placeOf(trial)] -
                              laws[width].median() * levels.scatter[width] / laws[width].scatter();
        const double widened = levels.scatter[width] / laws[width].scatter();
        std::vector<double> values(days.days.size());
        for (std::size_t day = 0; day < values.size(); ++day) {
            const double snr = double(snrOf(day)[width * count + trialOf(day, trial)]);
            values[day] = (snr - excess / result.days) / widened;
        }
        return values;
    }

    LineLaw lawAt(std::size_t trial, const std::vector<double> &ofDay)
    {
        const int width = widths[trial];
        LineLaw law;
        law.noise = laws[std::size_t(width)].cut(0).mean;
        law.logTail = [this, width, &ofDay](const std::vector<std::size_t> &chosen) {
            double sum = 0;
            for (const std::size_t day : chosen)
                sum += ofDay[day];
            return lawOf(width, int(chosen.size())).logTail(sum);
        };
        // The sum of all but the k largest is that of min(x, q) less k q, see
        // logTailWithoutStrongest(); its shape is taken to be that of the whole sum.
        law.logTailWithoutStrongest = [this, width](std::vector<double> values, int leftOut) {
            std::sort(values.begin(), values.end());
            const double sum = std::accumulate(values.begin(), values.end() - leftOut, 0.0);
            const auto n = double(values.size());
            if (leftOut <= 0)
                return lawOf(width, int(values.size())).logTail(sum);
            const Tools::PhaseMaximum::Cut cut = laws[std::size_t(width)].cut(leftOut / n);
            const double mean = n * cut.mean - leftOut * cut.quantile;
            const Tools::PhaseMaximum &whole = lawOf(width, int(values.size()));
            const Tools::PhaseMaximum::Cut all = laws[std::size_t(width)].cut(0);
            const double scatters = (sum - mean) / std::sqrt(n * cut.variance);
            return whole.logTail(n * all.mean + scatters * std::sqrt(n * all.variance));
        };
        return law;
    }

    const Tools::PhaseMaximum &lawOf(int width, int dayCount)
    {
        const auto key = std::pair(width, dayCount);
        auto known = lawsOfDays.find(key);
        if (known == lawsOfDays.end())
            known =
                lawsOfDays
                    .emplace(key, Tools::PhaseMaximum(laws[std::size_t(width)].phases(), dayCount))
                    .first;
        return known->second;
    }

    // Pulses of p/q times the period share phases, within what their widths tell apart.
    void relate(int index)
    {
        FourierLine &line = result.lines[std::size_t(index)];
        const auto duty = [](const FourierLine &one) { return double(one.width) / one.foldBins; };
        for (int other = 0; other < index; ++other) {
            const FourierLine &stronger = result.lines[std::size_t(other)];
            if (stronger.relatedTo >= 0)
                continue;
            for (int q = 1; q <= mostParts; ++q) {
                const double own = line.telescope;
                const double base = stronger.telescope;
                const int p = int(std::lround(q * own / base));
                if (p < 1 || p > mostParts || std::gcd(p, q) > 1)
                    continue;
                const double drift = std::abs(q * own - p * base) * result.ffa->length();
                if (drift > q * duty(line) + p * duty(stronger))
                    continue;
                line.relatedTo = other;
                line.relatedP = p;
                line.relatedQ = q;
                return;
            }
        }
    }

    std::size_t count = 0;                 // of trials
    std::vector<std::vector<int>> nearest; // of each day; empty: the trials themselves
    std::vector<double> sums;              // [width][trial]
    std::vector<Tools::PhaseMaximum> laws; // of the chosen days, of each width
    TrialLevels levels;
    std::vector<int> widths; // index of the best one of each trial
    std::map<std::pair<int, int>, Tools::PhaseMaximum> lawsOfDays;
};

} // namespace

FourierStack combineFfaDays(const std::vector<FourierDay> &products,
                            const FourierDaysChoice &choice, const Jobs::Control &control)
{
    return FfaStacker(products, choice, control).stack();
}

FourierLine foldedLine(const std::vector<FourierDay> &products, const FourierDaysChoice &choice,
                       double telescope, const Jobs::Control &control)
{
    return FfaStacker(products, choice, control).lineAt(telescope);
}

bool foldsAt(const Interference &entry, double frequency, double length)
{
    const double slack = 1 / length;
    for (int harmonic = 1; harmonic <= entry.harmonics; ++harmonic) {
        const double from = entry.from(harmonic) - slack;
        const double to = entry.to(harmonic) + slack;
        const double turns = std::ceil(from / frequency);
        if (turns >= 1 && turns <= mostTurns && turns * frequency <= to)
            return true;
    }
    return false;
}

// A pulse has no harmonics beyond half of its bins over its width. The base frequency and its
// double, of which hum consists, are compared, so that few lines agree by chance.
bool isHumOfPulse(const std::vector<DayHum> &hum, double frequency, int width, int foldBins,
                  const FfaTrials &trials)
{
    const double tolerance = 0.5 / trials.length();
    const int harmonics = std::max(1, foldBins / (2 * width));
    for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
        if (isHumAt(hum, frequency * harmonic, 1 / trials.tsamp, tolerance, 2))
            return true;
    }
    return false;
}

double lossOfDrift(double drift, int width)
{
    return std::max(0.0, drift) / (4 * width);
}

} // namespace Days
