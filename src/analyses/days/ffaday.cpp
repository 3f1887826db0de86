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
                        ffa.wtsp);
    };
    return tied(a) == tied(b);
}

// The trials of all days are the same; finding them takes longer than the search of a day.
std::shared_ptr<const FfaTrials> trialsOf(const FfaParameters &ffa, int points, double tsamp)
{
    static std::mutex mutex;
    static std::shared_ptr<const FfaTrials> last;
    const std::lock_guard lock(mutex);
    if (!last || !areEqual(last->ffa, ffa) || last->points != points || last->tsamp != tsamp)
        last = ffaTrials(ffa, points, tsamp);
    return last;
}

FourierDay refused(FourierDay day, const QString &problem)
{
    day.powers.clear();
    day.problem = problem;
    return day;
}

} // namespace

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
    std::vector<double> series = prepared.values;
    if (ffa.deredden)
        Tools::deredden(series, ffa.rmed_width / stretch.tresolution, ffa.rmed_minpts);
    Ffa::normalizeSeries(series.data(), points);
    std::vector<float> searched(series.begin(), series.end());
    const Periodogram periodogram(searched.data(), searched.size(), stretch.tresolution,
                                  ffa.period_min, ffa.period_max, 0, ffa.bins_min, ffa.bins_max,
                                  ffa.ducy_max, ffa.wtsp, true,
                                  [&control](int) { return !control.isStopped(); });
    day.wasStopped = control.isStopped();
    if (!periodogram.error.isEmpty())
        return refused(day, periodogram.error);
    DayPeriodogram &made = day.periodogram;
    made.trials = trialsOf(ffa, points, stretch.tresolution);
    made.snr = standardisedTrials(periodogram.snr, *made.trials);
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
