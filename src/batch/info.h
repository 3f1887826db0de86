#pragma once

#include "batch/failure.h"
#include "results/resulttable.h"

#include <QStringList>

namespace Batch {

/// Prints what the passports say, and whether the sizes of the files agree, to the standard
/// output: a paragraph per recording as text, a row each as CSV and JSON.
ExitCode printInfo(const QStringList &names, Results::Format format);

} // namespace Batch
