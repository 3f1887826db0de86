#pragma once

#include "batch/failure.h"

#include <QStringList>

namespace Batch {

/// The files that a command line names.
struct InputList {
    QStringList paths; ///< absolute, each file once, in the order given
    Failure failure;   ///< a list or folder that cannot be read
};

/// Expands the arguments of a command line: "@list" stands for the files named in `list`, one a
/// line, with "#" before comments; "@-" reads that list from the standard input; a folder stands
/// for the recordings in it (".pnt" and ".pnthr"), by name. Everything else is a file, which need
/// not exist.
InputList expandInputs(const QStringList &arguments);

} // namespace Batch
