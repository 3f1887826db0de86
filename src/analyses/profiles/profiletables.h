#pragma once

#include "analyses/profiles/arrivals.h"
#include "analyses/profiles/profileparameters.h"
#include "analyses/profiles/profilescan.h"
#include "results/resulttable.h"

#include <memory>
#include <utility>

/// Profiles of days as tables: what the batch program writes and a form saves.
namespace Profiles {

/// The products of days, shared by all averages of them.
using ProfileDays = std::shared_ptr<const std::vector<ProfileDay>>;

/// All that was made of the days of a folder.
struct ProfileOutcome {
    ProfileDays products; ///< one per day of the plan
    StackChoice choice;
    ProfileStack stack;
    ProfileScan scan;
    std::vector<Arrival> arrivals;

    const std::vector<ProfileDay> &days() const { return *products; }
};

/// The parameters as lines of a header, those without a value left out.
std::vector<Results::HeaderLine> parameterLines(const ProfileParameters &parameters);

/// What was found out, as lines of a header.
std::vector<Results::HeaderLine> outcomeLines(const ProfileOutcome &outcome,
                                              const ProfilePlan &plan);

/// Phase, average with its error, and the halves of the time where there are any.
std::vector<Results::Column> profileColumns(const ProfileStack &stack);

/// The days with their S/N, widths, alignment and reasons.
std::vector<Results::Column> daysColumns(const ProfileOutcome &outcome);

/// S/N of the first days of the average, and what their number leads to expect.
std::vector<Results::Column> growthColumns(const ProfileStack &stack);

/// @param name, unit  of what was tried
std::vector<Results::Column> scanColumns(const ScanCurve &curve, const QString &name,
                                         const QString &unit);

std::vector<Results::Column> arrivalColumns(const ProfileOutcome &outcome, const QString &site);

/// The profiles of the days side by side, each in units of its noise: phase, then a column per day,
/// which has its name.
std::vector<Results::Column> dayProfileColumns(const ProfileOutcome &outcome);

/// All tables of an average and what each is called in the names of files.
///
/// @param request  lines of the header of each
std::vector<std::pair<QString, Results::ResultTable>>
profileTables(const std::vector<Results::HeaderLine> &request, const ProfileOutcome &outcome,
              const ProfilePlan &plan, const RecordingSet &set);

/// The arrival times as a .tim file.
QByteArray timBytes(const ProfileOutcome &outcome, const QString &site);

} // namespace Profiles
