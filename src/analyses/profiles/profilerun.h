#pragma once

#include "analyses/profiles/profiletables.h"

/// From recordings to what is told of their profiles, in the steps that a form shows one by one.
namespace Profiles {

/// Folds all days of a plan, several side by side; a day that fails has a problem.
///
/// @param kept     folder that keeps products; empty: nothing is kept
/// @param threads  0: as many as the process may take
/// @return one per day of the plan; none when stopped
std::vector<ProfileDay> foldDays(const RecordingSet &set, const ProfilePlan &plan,
                                 const QString &kept, int threads,
                                 const Jobs::Control &control = {});

/// The average and the arrival times of days, still without a scan. When stopped, the stack has no
/// days.
ProfileOutcome averageDays(const ProfileDays &days, const StackChoice &choice,
                           const Jobs::Control &control = {});

/// The S/N over periods and dispersions round those that the days of an average were folded at.
/// Empty when stopped.
ProfileScan scanOf(const ProfileOutcome &outcome, const ProfilePlan &plan,
                   const Jobs::Control &control = {});

} // namespace Profiles
