#pragma once

#include <QString>
#include <QStringList>

/// What the arguments of the workbench ask for. There are two options, which print and end, and the
/// files to open. Those of the toolkit are passed over.
struct CommandLine {
    QString answer;    ///< of --help or --version, to be printed
    QString error;     ///< what is wrong, with what is allowed; else empty
    QStringList paths; ///< absolute
};

/// Needs neither a display nor an application object.
///
/// @param arguments  the name of the program first
CommandLine readCommandLine(const QStringList &arguments);
