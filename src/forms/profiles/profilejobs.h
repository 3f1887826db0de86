#pragma once

#include "analyses/profiles/profilerun.h"
#include "data/recordingset.h"

#include <memory>

/// The reading of days and their average, as jobs that share nothing with the form but values that
/// nobody changes meanwhile.
struct ProfileReading {
    std::shared_ptr<const RecordingSet> recordings;
    QString directory;
    Profiles::ProfileParameters parameters;
};

/// The folded days of a directory.
struct ProfileProducts {
    Profiles::ProfilePlan plan;
    Profiles::ProfileDays days; ///< one per day of the plan
    Days::KeptFolder kept;
};

/// Finds the days and folds them, several side by side.
///
/// @return with the plan's problems alone where it has any; null when stopped
std::shared_ptr<const ProfileProducts> foldDays(const ProfileReading &reading,
                                                const Jobs::Control &control);
