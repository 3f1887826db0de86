#pragma once

#include <QString>
#include <QStringList>

/// What the arguments of the workbench ask for, those of the toolkit taken out. There are two
/// options, which print and end, and the files to open.
struct CommandLine {
    QString answer;    ///< of --help or --version, to be printed
    QString error;     ///< what is wrong, with what is allowed; else empty
    QStringList paths; ///< absolute
};

/// @param arguments  the name of the program first
CommandLine readCommandLine(const QStringList &arguments);

/// Whether --help or --version stands among the arguments: both answer without a display.
bool asksForText(int argc, char **argv);
