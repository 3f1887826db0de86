#include "analyses/days/ffaday.h"

#include "analyses/days/fourierdays.h"
#include "analyses/days/trialstack.h"
#include "ffa/normalise.h"
#include "ffa/periodogram.h"

#include <mutex>
#include <tuple>

namespace Days {

namespace {

bool areEqual(const FfaParameters &a, const FfaParameters &b)
{
    const auto tied = [](const FfaParameters &ffa) {
        return std::tie(ffa.period_min, ffa.period_max, ffa.bins_min, ffa.bins_max, ffa.ducy_max,
                        ffa.wtsp, ffa.deredden, ffa.rmed_width, ffa.rmed_minpts);
    };
    return tied(a) == tied(b);
}

FourierDay refused(FourierDay day, const QString &problem)
{
    day.powers.clear();
    day.problem = problem;
    return day;
}

} // namespace

std::shared_ptr<const FfaTrials> sharedTrials(const FfaParameters &ffa, int points, double tsamp)
{
    static std::mutex mutex;
    static std::shared_ptr<const FfaTrials> last;
    const std::lock_guard lock(mutex);
    if (!last || !areEqual(last->ffa, ffa) || last->points != points || last->tsamp != tsamp)
        last = ffaTrials(ffa, points, tsamp);
    return last;
}

std::vector<float> searchedTrials(std::vector<double> series, const FfaTrials &trials,
                                  QString &problem, const Jobs::Control &control)
{
    const FfaParameters &ffa = trials.ffa;
    if (ffa.deredden)
        Tools::deredden(series, ffa.rmed_width / trials.tsamp, ffa.rmed_minpts);
    Ffa::normalizeSeries(series.data(), int(series.size()));
    std::vector<float> searched(series.begin(), series.end());
    const Periodogram periodogram(searched.data(), searched.size(), trials.tsamp, ffa.period_min,
                                  ffa.period_max, 0, ffa.bins_min, ffa.bins_max, ffa.ducy_max,
                                  ffa.wtsp, true, [&control](int) { return !control.isStopped(); });
    problem = periodogram.error;
    return problem.isEmpty() ? standardisedTrials(periodogram.snr, trials) : std::vector<float>();
}

FourierDay ffaOfDay(const DayStretch &stretch, const FourierDaysParameters &parameters,
                    const Jobs::Control &control)
{
    FourierDay day = fourierOfDay(stretch, parameters, control);
    if (!day.isWhole())
        return day;
    const int points = int(stretch.series.front().sums.size());
    const FfaParameters ffa = ffaOfDays(parameters.ffa, points, stretch.tresolution);
    const std::vector<FieldProblem> problems = problemsOfTrials(ffa, points, stretch.tresolution);
    if (!problems.empty())
        return refused(day, problems.front().text);
    const PreparedSeries prepared =
        preparedSeries(stretch.series.front().sums, stretch.series.back().sums, parameters.noise);
    DayPeriodogram &made = day.periodogram;
    made.trials = sharedTrials(ffa, points, stretch.tresolution);
    QString problem;
    made.snr = searchedTrials(prepared.values, *made.trials, problem, control);
    day.wasStopped = control.isStopped();
    if (!problem.isEmpty())
        return refused(day, problem);
    made.best = bestOfWidths(made.snr, made.trials->count());
    return day;
}

qint64 periodogramBytes(const FfaParameters &ffa, int points, double tsamp)
{
    const auto trials = qint64(Ffa::periodogramLength(quint64(points), tsamp, ffa.period_min,
                                                      ffa.period_max, ffa.bins_min, ffa.bins_max));
    const auto widths = qint64(Ffa::trialWidths(ffa.bins_min, ffa.ducy_max, ffa.wtsp).size());
    return trials * (widths + 1) * qint64(sizeof(float));
}

} // namespace Days
