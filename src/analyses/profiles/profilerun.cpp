#include "analyses/profiles/profilerun.h"

#include "jobs/items.h"

#include <algorithm>

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
    const std::vector<ProfileDay> &days = outcome.days();
    const auto first =
        std::find_if(days.begin(), days.end(), [](const ProfileDay &day) { return day.isWhole(); });
    if (first == days.end())
        return {};
    ScanRequest request;
    request.period = barycentricPeriod(plan.ephemeris, *first);
    request.dispersion = plan.folding.dispersion;
    return scanDays(days, outcome.choice, outcome.stack, request, control);
}

} // namespace Profiles
