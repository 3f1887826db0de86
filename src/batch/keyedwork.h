#pragma once

#include "batch/runner.h"
#include "batch/tablework.h"

namespace Batch {

/// Path of an output: in the folder of the outputs, or beside the input.
QString besideOrIn(const QString &input, const OutputOptions &output, const QString &name);

/// What is asked of a file as it is now.
std::vector<Results::HeaderLine> requestOf(const QString &command, const QString &input,
                                           const std::vector<Results::HeaderLine> &parameters);

/// A short text that stands for a request, for files without a header that could tell it:
/// "zrt-request-" and 24 hexadecimal digits of its SHA-256. Not longer than what a picture keeps as
/// plain text.
QString requestKey(const std::vector<Results::HeaderLine> &request);

/// Whether all of these files stand, and the table among them begins with the request.
bool areMade(const QStringList &paths, const QString &table,
             const std::vector<Results::HeaderLine> &request, Results::Format format);

/// Whether the begin of a file, where all kinds of ours have it, holds a key.
bool holdsKey(const QString &path, const QString &key);

/// Work whose outputs count as done when one of them holds the key of the request at its begin and
/// the others are there. `memory` is 0, `run` is left empty.
///
/// @param keyFile  the output of an input that holds the key
Work keyedWork(const QString &command, const std::vector<Results::HeaderLine> &parameters,
               const std::function<QStringList(const QString &input)> &outputs,
               const std::function<QString(const QString &input)> &keyFile);

} // namespace Batch
