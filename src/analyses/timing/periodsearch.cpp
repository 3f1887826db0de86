#include "analyses/timing/periodsearch.h"

#include "results/reporttext.h"

#include <QDate>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace Timing {

using Tools::TimeGroups;
using Tools::TurnSolution;

namespace {

constexpr double samePulse = 0.1;     // of the shortest period: nearer times are one pulse
constexpr double errorsPerPeriod = 5; // below so many errors whole turns cannot be counted
constexpr double mostSteps = 1e11;    // some minutes
constexpr double expectedKept = 30;   // solutions by chance that a search keeps

// The same error for all where one of them is unknown.
bool areErrorsKnown(const ArrivalTimes &times)
{
    return std::all_of(times.times.begin(), times.times.end(),
                       [](const ArrivalTime &time) { return time.error > 0; });
}

// Median of the errors, with what the last digit leaves open, s.
double typicalError(const ArrivalTimes &times)
{
    const double digit = times.resolution / std::sqrt(12.0);
    if (times.times.empty() || !areErrorsKnown(times))
        return digit;
    std::vector<double> errors;
    for (const ArrivalTime &time : times.times)
        errors.push_back(time.error);
    const auto middle = errors.begin() + std::ptrdiff_t(errors.size() / 2);
    std::nth_element(errors.begin(), middle, errors.end());
    return std::hypot(digit, *middle);
}

void joinNearTimes(double nearest, PeriodSearch &search)
{
    const std::vector<double> seconds = secondsOf(search.used);
    std::vector<ArrivalTime> kept;
    double last = 0;
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        if (!kept.empty() && seconds[i] - last < nearest)
            continue;
        kept.push_back(search.used.times[i]);
        last = seconds[i];
    }
    if (kept.size() < seconds.size())
        search.remarks << QString("%1 times are nearer than %2 s to the one before, a tenth of the "
                                  "shortest period: they are the same pulse and do not count.")
                              .arg(seconds.size() - kept.size())
                              .arg(nearest);
    search.used.times = kept;
}

QString dayName(const ArrivalTime &time, TimeScale scale, std::size_t group)
{
    constexpr qint64 mjdOfUnixEpoch = 40587;
    return scale == TimeScale::Seconds
               ? QString("group %1").arg(group + 1)
               : QDate(1970, 1, 1).addDays(time.day - mjdOfUnixEpoch).toString(Qt::ISODate);
}

void makeGroups(double gap, PeriodSearch &search)
{
    const std::vector<double> seconds = secondsOf(search.used);
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        if (i == 0 || seconds[i] - seconds[i - 1] > gap) {
            search.groupNames << dayName(search.used.times[i], search.used.scale,
                                         search.groups.size());
            search.groups.emplace_back();
        }
        search.groups.back().push_back(seconds[i]);
    }
}

// The periods that the times can tell.
void setRange(const PeriodParameters &parameters, PeriodSearch &search)
{
    search.range = {parameters.periodMin, parameters.periodMax};
    const double longest = Tools::longestOf(search.groups) / 2;
    const double shortest = errorsPerPeriod * typicalError(search.used);
    if (search.range.most > longest) {
        search.range.most = longest;
        search.remarks << QString("Periods are searched up to %1 s only: half of the time from "
                                  "first to last of the longest day.")
                              .arg(longest);
    }
    if (search.range.least < shortest) {
        search.range.least = shortest;
        search.remarks << QString("Periods are searched from %1 s on only: below %2 times the "
                                  "errors of the times whole turns cannot be counted.")
                              .arg(shortest)
                              .arg(errorsPerPeriod);
    }
}

QString problemOf(const PeriodSearch &search, const PeriodParameters &parameters)
{
    const int count = Tools::countOf(search.groups);
    if (Tools::freedomOf(search.groups) < 1)
        return QString("%1 on %2 cannot tell a period: each day has a phase of its own, so that "
                       "at least 3 times of one day, or 2 more than there are days, are needed. "
                       "Add times, or count turns over longer gaps (--day-gap, now %3 h).")
            .arg(ReportText::counted(count, "time"),
                 ReportText::counted(qint64(search.groups.size()), "day"))
            .arg(parameters.dayGap);
    if (!(search.range.least < search.range.most))
        return QString("The times cannot tell a period of %1 to %2 s: they allow %3 to %4 s.")
            .arg(parameters.periodMin)
            .arg(parameters.periodMax)
            .arg(errorsPerPeriod * typicalError(search.used))
            .arg(Tools::longestOf(search.groups) / 2);
    if (Tools::stepsOfSearch(search.groups, search.range) * (parameters.simulated + 1) > mostSteps)
        return QString("The search would take hours: %1 periods of %2, and as many for each of %3 "
                       "sets of random times. Raise the shortest period, lower the number of "
                       "sets, or part the days by smaller gaps.")
            .arg(Tools::stepsOfSearch(search.groups, search.range) / count, 0, 'g', 3)
            .arg(ReportText::counted(count, "time"))
            .arg(parameters.simulated);
    return {};
}

// Squares that no luck makes smaller: times cannot be known better than half of their errors.
double leastSquaresOf(const PeriodSearch &search, double period)
{
    const double error = typicalError(search.used) / 2 / period;
    return Tools::freedomOf(search.groups) * error * error;
}

double expectedOf(const PeriodSearch &search, const TurnSolution &solution)
{
    const double squares = std::max(solution.squares, leastSquaresOf(search, solution.period));
    return std::exp(Tools::logChanceCount(search.groups, search.range, squares));
}

// Solutions of which one is expected in random times, by what the best of simulated ones are: the
// best of many is exponential.
double scaleOfChance(const PeriodParameters &parameters, const Jobs::Control &control,
                     PeriodSearch &search)
{
    std::vector<double> best;
    std::vector<double> rms;
    for (int i = 0; i < parameters.simulated; ++i) {
        if (control.isStopped())
            return 1;
        const TimeGroups random = Tools::randomTimes(search.groups, std::uint32_t(i + 1));
        const Tools::TurnSearch found = Tools::searchTurns(random, search.range, expectedKept, 0);
        if (!found.solutions.empty()) {
            const double squares = found.solutions.front().squares;
            best.push_back(std::exp(Tools::logChanceCount(random, search.range, squares)));
            rms.push_back(std::sqrt(squares / Tools::freedomOf(random)));
        }
        control.progress(20 + 80 * (i + 1) / parameters.simulated);
    }
    if (best.empty())
        return 1;
    std::sort(best.begin(), best.end());
    std::sort(rms.begin(), rms.end());
    search.chanceRms = rms[rms.size() / 2];
    search.rareChanceRms =
        search.chanceRms * std::pow(-std::log1p(-parameters.chance) / std::log(2.0),
                                    1.0 / Tools::freedomOf(search.groups));
    return best[best.size() / 2] / std::log(2.0);
}

// Whether turns are those of a longer period taken several times.
bool areMultiples(const std::vector<qint64> &turns, const std::vector<qint64> &ofLonger)
{
    qint64 factor = 0;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        if (ofLonger[i] == 0 ? turns[i] != 0 : turns[i] % ofLonger[i] != 0)
            return false;
        if (ofLonger[i] == 0)
            continue;
        if (factor == 0)
            factor = turns[i] / ofLonger[i];
        if (turns[i] / ofLonger[i] != factor)
            return false;
    }
    return factor > 1;
}

std::vector<double> errorsOf(const PeriodSearch &search)
{
    const bool areKnown = areErrorsKnown(search.used);
    std::vector<double> errors;
    for (const ArrivalTime &time : search.used.times)
        errors.push_back(areKnown ? time.error : 1);
    return errors;
}

// Phases of the day with the most times.
double hOf(const TimeGroups &groups, double period)
{
    const std::vector<double> &most =
        *std::max_element(groups.begin(), groups.end(),
                          [](const auto &a, const auto &b) { return a.size() < b.size(); });
    std::vector<double> phases;
    for (const double time : most)
        phases.push_back((time - most.front()) / period);
    return Tools::hOfPhases(phases);
}

PeriodFamily familyOf(const PeriodSearch &search, const TurnSolution &solution, double scale)
{
    PeriodFamily family;
    family.period = solution.period;
    family.rmsOverPeriod = std::sqrt(solution.squares / Tools::freedomOf(search.groups));
    family.rms = family.rmsOverPeriod * family.period;
    family.expected = expectedOf(search, solution) / scale;
    family.chance = -std::expm1(-family.expected);
    family.h = hOf(search.groups, family.period);
    family.turns = solution.turns;
    std::vector<Tools::CountedTime> times;
    const std::vector<double> errors = errorsOf(search);
    for (std::size_t group = 0; group < search.groups.size(); ++group) {
        for (const double time : search.groups[group])
            times.push_back({time, solution.turns[times.size()], int(group), errors[times.size()]});
    }
    const Tools::TurnFit fit = Tools::fitTurns(times, false);
    family.period = fit.period; // errors count
    family.error = fit.error;
    family.error95 = fit.error95;
    return family;
}

void makeFamilies(const std::vector<TurnSolution> &solutions, double scale, PeriodSearch &search)
{
    for (const TurnSolution &solution : solutions) {
        const auto longer = std::find_if(
            search.families.begin(), search.families.end(),
            [&](const PeriodFamily &family) { return areMultiples(solution.turns, family.turns); });
        if (longer != search.families.end())
            longer->submultiples.push_back(solution.period);
        else if (int(search.families.size()) < mostFamilies)
            search.families.push_back(familyOf(search, solution, scale));
    }
    std::stable_sort(
        search.families.begin(), search.families.end(),
        [](const PeriodFamily &a, const PeriodFamily &b) { return a.expected < b.expected; });
}

void makeCurve(const std::vector<double> &squares, double scale, PeriodSearch &search)
{
    constexpr double leastSquares = 1e-30; // of times without any residual
    constexpr double leastRank = -2;
    for (std::size_t i = 0; i < squares.size(); ++i) {
        const double share = (double(i) + 0.5) / double(squares.size());
        const double period =
            search.range.least * std::pow(search.range.most / search.range.least, share);
        search.curvePeriods.push_back(period);
        const double expected =
            expectedOf(search, {period, {}, std::max(squares[i], leastSquares)}) / scale;
        // A solution that is expected many times over says nothing.
        search.curveRanks.push_back(std::max(leastRank, -std::log10(expected)));
    }
}

QString shareText(double share)
{
    return share < 0.0001 ? QString("less than 0.01 %")
                          : QString::number(100 * share, 'g', 2) + " %";
}

void judge(const PeriodParameters &parameters, PeriodSearch &search)
{
    const PeriodFamily &first = search.families.front();
    const QString random = QString("random times of the same spread have one as good in %1 of "
                                   "cases")
                               .arg(shareText(first.chance));
    if (first.chance > parameters.chance) {
        search.verdict = QString("No period: the best one, %1 s, has rms / P %2, and %3.")
                             .arg(first.period, 0, 'g', 7)
                             .arg(first.rmsOverPeriod, 0, 'g', 2)
                             .arg(random);
        return;
    }
    if (search.families.size() > 1 && search.families[1].expected < leastOdds * first.expected) {
        search.verdict =
            QString("The times are not random, but which period they have is not told: %1 and %2 s "
                    "fit about as well, rms / P %3 and %4. More times are needed.")
                .arg(first.period, 0, 'g', 7)
                .arg(search.families[1].period, 0, 'g', 7)
                .arg(first.rmsOverPeriod, 0, 'g', 2)
                .arg(search.families[1].rmsOverPeriod, 0, 'g', 2);
        return;
    }
    search.isClaimed = true;
    search.verdict =
        QString("Period %1 s; rms / P %2, and %3.")
            .arg(ReportText::withError(search.count.fit.period, search.count.fit.error))
            .arg(first.rmsOverPeriod, 0, 'g', 2)
            .arg(random);
}

} // namespace

double PeriodFamily::rank() const
{
    return -std::log10(expected);
}

PeriodSearch searchPeriod(const ArrivalTimes &times, const PeriodParameters &parameters,
                          const Jobs::Control &control)
{
    PeriodSearch search;
    search.used = times;
    search.remarks = times.remarks;
    if (!times.times.empty()) {
        joinNearTimes(samePulse * parameters.periodMin, search);
        constexpr double secondsPerHour = 3600;
        makeGroups(parameters.dayGap * secondsPerHour, search);
        setRange(parameters, search);
    }
    search.problem = problemOf(search, parameters);
    if (!search.problem.isEmpty())
        return search;
    const Tools::TurnSearch found =
        Tools::searchTurns(search.groups, search.range, expectedKept, curveParts, [&](int percent) {
            control.progress(percent / 5);
            return !control.isStopped();
        });
    const double scale = found.isStopped ? 1 : scaleOfChance(parameters, control, search);
    search.isStopped = found.isStopped || control.isStopped();
    if (search.isStopped)
        return search;
    if (found.solutions.empty()) {
        search.problem = "No period of this range brings the times to whole turns.";
        return search;
    }
    makeFamilies(found.solutions, scale, search);
    makeCurve(found.curve, scale, search);
    search.count = connectedTurns(search.groups, search.families.front().turns, errorsOf(search),
                                  search.groupNames);
    judge(parameters, search);
    return search;
}

} // namespace Timing
