#include "analyses/profiles/profilerun.h"

#include "calc/pulsar/bandsum.h"
#include "jobs/items.h"

namespace Profiles {

std::vector<ProfileDay> foldDays(const RecordingSet &set, const ProfilePlan &plan,
                                 const QString &kept, int threads, const Jobs::Control &control)
{
    const std::vector<Days::Day> &list = plan.days.list.days;
    std::vector<ProfileDay> days(list.size());
    const auto endings =
        Jobs::runItems(int(list.size()), threads, control, [&](int item, const Jobs::Control &own) {
            const auto at = std::size_t(item);
            days[at] =
                profileOfDay(set, plan.days, list[at], plan.folding, plan.ephemeris, kept, own);
        });
    for (std::size_t i = 0; i < endings.size(); ++i) {
        if (endings[i].kind == Jobs::Ending::Stopped || control.isStopped())
            return {};
        if (endings[i].kind == Jobs::Ending::Failed)
            days[i].problem = endings[i].problem;
    }
    return days;
}

qint64 bytesOf(const ProfilePlan &plan, int threads)
{
    const Days::DayChoice &choice = plan.days.choice;
    const qint64 ofDay =
        mostParts * plan.folding.bins * qint64(Pulsar::sumBands * sizeof(float) + sizeof(double));
    const qint64 points = qint64(choice.points) + choice.pointsAfter + choice.pointsBefore;
    const qint64 bands = qint64(plan.days.header.fbands.size()) + 1;
    const int side = threads > 0 ? threads : Jobs::threadCount();
    return qint64(plan.days.list.days.size()) * ofDay +
           2 * side * points * bands * qint64(sizeof(double));
}

ProfileParameters withAverageOf(ProfileParameters folded, const ProfileParameters &asked)
{
    folded.align = asked.align;
    folded.normalise = asked.normalise;
    folded.weight = asked.weight;
    folded.leastSnr = asked.leastSnr;
    folded.harmonics = asked.harmonics;
    folded.beginError = asked.beginError;
    folded.sefd = asked.sefd;
    folded.temperature = asked.temperature;
    folded.gain = asked.gain;
    folded.site = asked.site;
    return folded;
}

StackChoice movedTo(double period, double dispersion, const std::vector<ProfileDay> &days,
                    const ProfilePlan &plan, StackChoice choice)
{
    if (const ProfileDay *const first = firstWhole(days)) {
        const double folded = barycentricPeriod(plan.ephemeris, *first);
        choice.moreFrequency = first->phase.frequency * (folded / period - 1);
        choice.moreDispersion = dispersion - plan.folding.dispersion;
    }
    return choice;
}

ProfileOutcome averageDays(const ProfileDays &days, const StackChoice &choice,
                           const Jobs::Control &control)
{
    ProfileOutcome outcome;
    outcome.products = days;
    outcome.choice = choice;
    outcome.stack = stackDays(*days, choice, control);
    if (!outcome.stack.profile.empty())
        outcome.arrivals = arrivalsOf(*days, outcome.stack, choice);
    return outcome;
}

ProfileScan scanOf(const ProfileOutcome &outcome, const ProfilePlan &plan,
                   const Jobs::Control &control)
{
    const ProfileDay *const first = firstWhole(outcome.days());
    if (!first)
        return {};
    ScanRequest request;
    request.period = barycentricPeriod(plan.ephemeris, *first);
    request.dispersion = plan.folding.dispersion;
    return scanDays(outcome.days(), outcome.choice, outcome.stack, request, control);
}

} // namespace Profiles
