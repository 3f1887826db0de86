#pragma once

#include <QString>

namespace Batch {

/// How a run, or the work on one input, ended: the numbers of sysexits.h, which shells and batch
/// systems know.
enum class ExitCode {
    Done = 0,          ///< done, or skipped because it was done before
    Usage = 64,        ///< the command line
    BadData = 65,      ///< a file that is no usable recording, or parameters it cannot take
    NoInput = 66,      ///< a file that is missing or may not be read
    CannotCreate = 73, ///< an output that cannot be made
    InputOutput = 74,  ///< reading or writing failed on the way: a full disk, a broken device
    TryLater = 75,     ///< stopped by a signal, or too little memory at the moment
};

/// Why something was not done, in plain words with the file concerned; Done: nothing is wrong.
struct Failure {
    ExitCode code = ExitCode::Done;
    QString text;

    explicit operator bool() const { return code != ExitCode::Done; }
};

/// What work that was stopped by the user ends with.
inline Failure stopped()
{
    return {ExitCode::TryLater, "Stopped."};
}

} // namespace Batch
