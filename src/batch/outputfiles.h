#pragma once

#include "base/wholefile.h"
#include "batch/failure.h"

#include <vector>

namespace Batch {

/// A failure with its exit code, and what a user can do about it.
Failure failureOf(const WriteFailure &failure);

/// Makes the folder of an output where it is missing.
Failure makeFolderOf(const QString &path);

/// ::writeTogether() with the folders made.
Failure writeOutputs(const std::vector<FileContent> &files);

} // namespace Batch
