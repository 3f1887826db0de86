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

/// Bytes that this takes at most.
qint64 bytesOf(const ProfilePlan &plan, int threads);

/// The parameters that days were folded by, with those of another request that need no folding.
ProfileParameters withAverageOf(ProfileParameters folded, const ProfileParameters &asked);

/// A choice that moves folded days to a period at the barycentre, s, and a dispersion, pc/cm^3,
/// near by. The phases in the middles of the days stay.
StackChoice movedTo(double period, double dispersion, const std::vector<ProfileDay> &days,
                    const ProfilePlan &plan, StackChoice choice);

/// The average and the arrival times of days, still without a scan. When stopped, the stack has no
/// days.
ProfileOutcome averageDays(const ProfileDays &days, const StackChoice &choice,
                           const Jobs::Control &control = {});

/// The S/N over periods and dispersions round those that the days of an average were folded at.
/// Empty when stopped.
ProfileScan scanOf(const ProfileOutcome &outcome, const ProfilePlan &plan,
                   const Jobs::Control &control = {});

} // namespace Profiles
