#include "calc/turnsearch.h"

#include "base/targetclones.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>

namespace Tools {

namespace {

constexpr double turnsPerStep = 0.1; // from the first to the last time of the longest group
constexpr double driftSquares = 5e-4;
constexpr int exactEvery = 4096; // trials between two exact phases

double meanOf(const std::vector<double> &values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
}

// Sum of the squared distances from the means of the groups.
double scatterOf(const TimeGroups &groups)
{
    double sum = 0;
    for (const std::vector<double> &group : groups) {
        const double mean = meanOf(group);
        for (const double time : group)
            sum += (time - mean) * (time - mean);
    }
    return sum;
}

// Logarithm of the count for squares of 1.
double logUnitCount(const TimeGroups &groups, const PeriodRange &range)
{
    const double half = freedomOf(groups) / 2.0;
    double sum = std::log(1 / range.least - 1 / range.most) + std::log(scatterOf(groups)) / 2 +
                 half * std::log(std::numbers::pi) - std::lgamma(half + 1);
    for (const std::vector<double> &group : groups)
        sum += std::log(double(group.size())) / 2;
    return sum;
}

} // namespace

int countOf(const TimeGroups &groups)
{
    std::size_t count = 0;
    for (const std::vector<double> &group : groups)
        count += group.size();
    return int(count);
}

int freedomOf(const TimeGroups &groups)
{
    return countOf(groups) - int(groups.size()) - 1;
}

double longestOf(const TimeGroups &groups)
{
    double longest = 0;
    for (const std::vector<double> &group : groups)
        longest = std::max(longest, group.back() - group.front());
    return longest;
}

double logChanceCount(const TimeGroups &groups, const PeriodRange &range, double squares)
{
    return logUnitCount(groups, range) + freedomOf(groups) / 2.0 * std::log(squares);
}

namespace {

// The phases of all times at one trial frequency after the other.
class Phasors {
public:
    Phasors(const TimeGroups &groups, double firstFrequency, double frequencyStep)
        : first(firstFrequency), step(frequencyStep)
    {
        for (const std::vector<double> &group : groups) {
            const double mean = meanOf(group);
            for (const double time : group)
                times.push_back(time - mean);
            ends.push_back(times.size());
        }
        for (const double time : times) {
            const double turn = 2 * std::numbers::pi * step * time;
            turnRe.push_back(std::cos(turn));
            turnIm.push_back(std::sin(turn));
        }
        re.resize(times.size());
        im.resize(times.size());
    }

    // Sum of the squared distances, turns^2, of the phases from those of their groups, small angles
    // taken for their sines. To be asked for trial 0 first and then for the following ones.
    double squaresAt(qint64 trial)
    {
        if (trial % exactEvery == 0)
            setExactly(trial);
        else
            turn(re.data(), im.data(), turnRe.data(), turnIm.data(), re.size());
        double squares = 0;
        std::size_t i = 0;
        for (const std::size_t end : ends) {
            const auto count = double(end - i);
            double sumRe = 0;
            double sumIm = 0;
            for (; i < end; ++i) {
                sumRe += re[i];
                sumIm += im[i];
            }
            squares += count - (sumRe * sumRe + sumIm * sumIm) / count;
        }
        return squares / (4 * std::numbers::pi * std::numbers::pi);
    }

private:
    void setExactly(qint64 trial)
    {
        const double frequency = first + double(trial) * step;
        for (std::size_t i = 0; i < times.size(); ++i) {
            const double turns = frequency * times[i];
            const double angle = 2 * std::numbers::pi * (turns - std::round(turns));
            re[i] = std::cos(angle);
            im[i] = std::sin(angle);
        }
    }

    ZRT_TARGET_CLONES static void turn(double *re, double *im, const double *byRe,
                                       const double *byIm, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            const double was = re[i];
            re[i] = was * byRe[i] - im[i] * byIm[i];
            im[i] = was * byIm[i] + im[i] * byRe[i];
        }
    }

    double first;
    double step;
    std::vector<double> times; // less the mean of the group
    std::vector<std::size_t> ends;
    std::vector<double> turnRe;
    std::vector<double> turnIm;
    std::vector<double> re;
    std::vector<double> im;
};

// Phase of a group, turns, that its times have in the mean at a frequency.
double phaseOf(const std::vector<double> &group, double frequency)
{
    double re = 0;
    double im = 0;
    for (const double time : group) {
        const double angle = 2 * std::numbers::pi * (frequency * (time - group.front()));
        re += std::cos(angle);
        im += std::sin(angle);
    }
    return std::atan2(im, re) / (2 * std::numbers::pi);
}

// Whole turns of all times at a frequency, those of each group since its first.
std::vector<qint64> turnsAt(const TimeGroups &groups, double frequency,
                            const std::vector<double> &phases)
{
    std::vector<qint64> turns;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        qint64 first = 0;
        for (const double time : groups[i]) {
            const qint64 turn = std::llround(frequency * (time - groups[i].front()) - phases[i]);
            if (time == groups[i].front())
                first = turn;
            turns.push_back(turn - first);
        }
    }
    return turns;
}

// Turns and times less the means of their groups, and those means.
struct Centred {
    std::vector<double> turns;
    std::vector<double> times; // s
    std::vector<double> meanTurns;
    std::vector<double> meanTimes; // s since the first of the group
};

Centred centredOf(const TimeGroups &groups, const std::vector<qint64> &turns)
{
    Centred centred;
    std::size_t at = 0;
    for (const std::vector<double> &group : groups) {
        const auto count = double(group.size());
        double meanTurn = 0;
        double meanTime = 0;
        for (std::size_t i = 0; i < group.size(); ++i) {
            meanTurn += double(turns[at + i]) / count;
            meanTime += (group[i] - group.front()) / count;
        }
        for (std::size_t i = 0; i < group.size(); ++i) {
            centred.turns.push_back(double(turns[at + i]) - meanTurn);
            centred.times.push_back(group[i] - group.front() - meanTime);
        }
        at += group.size();
        centred.meanTurns.push_back(meanTurn);
        centred.meanTimes.push_back(meanTime);
    }
    return centred;
}

// Least squares of the times over their turns; the period is 0 where there are no turns.
TurnSolution fittedTo(const TimeGroups &groups, const std::vector<qint64> &turns,
                      std::vector<double> &phases)
{
    TurnSolution solution;
    solution.turns = turns;
    const Centred centred = centredOf(groups, turns);
    double xx = 0;
    double xy = 0;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        xx += centred.turns[i] * centred.turns[i];
        xy += centred.turns[i] * centred.times[i];
    }
    if (!(xy > 0))
        return solution;
    solution.period = xy / xx;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        const double residual = centred.times[i] / solution.period - centred.turns[i];
        solution.squares += residual * residual;
    }
    for (std::size_t i = 0; i < groups.size(); ++i)
        phases[i] = centred.meanTimes[i] / solution.period - centred.meanTurns[i];
    return solution;
}

TurnSolution refined(const TimeGroups &groups, double frequency)
{
    constexpr int mostRounds = 10;
    std::vector<double> phases;
    for (const std::vector<double> &group : groups)
        phases.push_back(phaseOf(group, frequency));
    TurnSolution solution = fittedTo(groups, turnsAt(groups, frequency, phases), phases);
    for (int round = 0; round < mostRounds && solution.period > 0; ++round) {
        const std::vector<qint64> turns = turnsAt(groups, 1 / solution.period, phases);
        if (turns == solution.turns)
            break;
        solution = fittedTo(groups, turns, phases);
    }
    return solution;
}

// Frequencies of a range and the parts of the curve that they belong to.
struct TrialGrid {
    TrialGrid(const TimeGroups &groups, const PeriodRange &periodRange, int curveParts)
        : range(periodRange), first(1 / range.most), step(turnsPerStep / longestOf(groups)),
          trials(qint64(std::ceil((1 / range.least - first) / step)) + 1), parts(curveParts)
    {}

    double frequency(qint64 trial) const { return first + double(trial) * step; }

    std::size_t partOf(double period) const
    {
        const double share =
            std::log(period / range.least) / std::log(range.most / range.least) * parts;
        return std::size_t(std::clamp(share, 0.0, parts - 1.0));
    }

    // First trial of a shorter period than that part has.
    qint64 endOf(std::size_t part) const
    {
        const double shortest =
            range.least * std::pow(range.most / range.least, double(part) / parts);
        return part == 0 ? trials : qint64(std::ceil((1 / shortest - first) / step));
    }

    PeriodRange range;
    double first;
    double step;
    qint64 trials;
    int parts;
};

void keepDifferent(std::vector<TurnSolution> &solutions)
{
    std::sort(solutions.begin(), solutions.end(),
              [](const TurnSolution &a, const TurnSolution &b) { return a.turns < b.turns; });
    const auto last = std::unique(
        solutions.begin(), solutions.end(),
        [](const TurnSolution &a, const TurnSolution &b) { return a.turns == b.turns; });
    solutions.erase(last, solutions.end());
    std::sort(solutions.begin(), solutions.end(), [](const TurnSolution &a, const TurnSolution &b) {
        return a.squares != b.squares ? a.squares < b.squares : a.period > b.period;
    });
}

} // namespace

TurnSearch searchTurns(const TimeGroups &groups, const PeriodRange &range, double expected,
                       int parts, const std::function<bool(int percent)> &progress)
{
    constexpr double none = std::numeric_limits<double>::infinity();
    constexpr qint64 progressEvery = qint64(1) << 17;
    const TrialGrid grid(groups, range, parts);
    const double limit =
        std::exp((std::log(expected) - logUnitCount(groups, range)) * 2 / freedomOf(groups)) +
        driftSquares * countOf(groups);

    TurnSearch found;
    found.curve.assign(std::size_t(parts), none);
    Phasors phasors(groups, grid.first, grid.step);
    std::size_t part = std::size_t(std::max(parts, 1)) - 1;
    qint64 partEnd = parts > 0 ? grid.endOf(part) : grid.trials;
    std::vector<qint64> minima;
    double before = none;
    double last = none;
    double smallest = none;
    qint64 best = 0;
    for (qint64 trial = 0; trial <= grid.trials; ++trial) {
        const double squares = trial < grid.trials ? phasors.squaresAt(trial) : none;
        if (last <= limit && last <= before && last < squares)
            minima.push_back(trial - 1);
        before = last;
        last = squares;
        if (squares < smallest) {
            smallest = squares;
            best = trial;
        }
        for (; trial >= partEnd && part > 0; partEnd = grid.endOf(part))
            --part;
        if (parts > 0)
            found.curve[part] = std::min(found.curve[part], squares);
        if (trial % progressEvery == 0 && progress &&
            !progress(int(100 * trial / (grid.trials + 1)))) {
            found.isStopped = true;
            return found;
        }
    }
    minima.push_back(best);
    for (const qint64 trial : minima) {
        const TurnSolution solution = refined(groups, grid.frequency(trial));
        if (solution.period >= range.least && solution.period <= range.most)
            found.solutions.push_back(solution);
    }
    keepDifferent(found.solutions);
    for (const TurnSolution &solution : found.solutions) {
        if (parts > 0) {
            double &value = found.curve[grid.partOf(solution.period)];
            value = std::min(value, solution.squares);
        }
    }
    return found;
}

double stepsOfSearch(const TimeGroups &groups, const PeriodRange &range)
{
    return (1 / range.least - 1 / range.most) * longestOf(groups) / turnsPerStep * countOf(groups);
}

TimeGroups randomTimes(const TimeGroups &groups, std::uint32_t seed)
{
    std::mt19937 random(seed);
    TimeGroups made;
    for (const std::vector<double> &group : groups) {
        const double span = group.back() - group.front();
        const double beside = group.size() > 1 ? span / double(group.size() - 1) : 0;
        std::uniform_real_distribution<double> law(group.front() - beside, group.back() + beside);
        std::vector<double> times;
        for (std::size_t i = 0; i < group.size(); ++i)
            times.push_back(span > 0 ? law(random) : group.front());
        std::sort(times.begin(), times.end());
        made.push_back(times);
    }
    return made;
}

} // namespace Tools
