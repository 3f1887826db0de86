#pragma once

#include "analyses/profiles/profiletables.h"
#include "batch/tablework.h"

namespace Batch {

/// The curves of a table of profiles; a sentence in their place where there are none.
///
/// @param name  of what was averaged
Plot::PictureBytes profileCurves(const Results::ResultTable &table, const QString &what,
                                 const QString &name, const OutputOptions &output,
                                 const QString &key);

/// Days over phase, those in the average alone, each in units of its noise.
Plot::PictureBytes profileRows(const Profiles::ProfileOutcome &outcome, const QString &name,
                               const OutputOptions &output, const QString &key);

/// S/N over period and dispersion.
Plot::PictureBytes periodsAndDispersions(const Profiles::ProfileOutcome &outcome,
                                         const QString &name, const OutputOptions &output,
                                         const QString &key);

} // namespace Batch
