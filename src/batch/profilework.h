#pragma once

#include "analyses/profiles/profileparameters.h"
#include "batch/dayswork.h"

namespace Batch {

/// Profiles of the days of folders. Parameters are those of the form.
struct ProfileRequest {
    Profiles::ProfileParameters parameters;
    DaysRequest days; ///< folders, dates, kept, days off and output; its parameters are not used
};

/// Profiles of all days, their average and what follows from it: one item of work.
ExitCode profileDays(const ProfileRequest &request, const RunOptions &options);

} // namespace Batch
