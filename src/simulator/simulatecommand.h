#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace Simulator {

/// How writing a simulated recording ended.
struct CommandEnd {
    int code = 0; ///< for the shell, of sysexits.h: 64 command line, 73 and 74 output, 75 stopped
    QString problem; ///< what went wrong, in plain words; empty when the file stands
};

/// Reads a command line and writes the recording it describes. Shows its manual or version and
/// leaves the program when that is asked for. Needs an application object.
///
/// @param arguments  the first is the program's name
/// @param progress   called with the percentage written, 0 to 100; false stops without a file
CommandEnd simulate(const QStringList &arguments, const std::function<bool(int)> &progress);

} // namespace Simulator
