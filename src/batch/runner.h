#pragma once

#include "batch/failure.h"
#include "jobs/control.h"

#include <QStringList>
#include <functional>

namespace Batch {

/// What the work on one input may ask and tell, from its own thread; remarks go to the standard
/// error.
struct Control : Jobs::Control {
    /// A text of the reader for the standard output.
    std::function<void(const QString &text)> print;
};

/// One subcommand at work on its inputs. Everything is called from several threads at once,
/// each with another input.
struct Work {
    QString command;
    /// Files that the work on an input makes.
    std::function<QStringList(const QString &input)> outputs;
    /// Whether they are there, made with the same parameters from the same file.
    std::function<bool(const QString &input)> isDone;
    /// Bytes of memory that the work takes at most; 0 where the input is unusable, which
    /// `run` then says.
    std::function<qint64(const QString &input)> memory;
    std::function<Failure(const QString &input, const Control &control)> run;
};

/// How the inputs are worked on.
struct RunOptions {
    bool force = false; ///< also what is done already
    bool quiet = false; ///< no progress, no texts of the reader, no summary
    QString jsonPath;   ///< file that gets one line per input; empty: none
    int jobs = 0;       ///< inputs side by side; 0: Jobs::threadCount()
    qint64 memory = 0;  ///< bytes that all works may take together; 0: what is available
    /// Hears the percentage of all inputs, one call at a time, and 100 at the very end. Not where
    /// `quiet`.
    std::function<void(int percent)> progress = [](int) {};
};

/// Works on all inputs. Failures and remarks go to the standard error.
///
/// @return the code of the first input, in their order, that failed; TryLater after a signal
ExitCode runWork(const Work &work, const QStringList &inputs, const RunOptions &options);

/// Writes one line, "zrt-batch: text", to the standard error.
void printError(const QString &text);

} // namespace Batch
