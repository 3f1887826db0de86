#pragma once

#include "batch/failure.h"

#include <QByteArray>
#include <QStringList>

class QFile;

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

/// Opens an ordinary file for reading; anything else is refused before it is opened, for opening
/// a pipe waits for somebody who writes to it.
Failure openInput(QFile &file);

/// Reads an ordinary file whole, or what a pipe gives until it ends. A pipe that nobody writes to
/// is refused after a second.
///
/// @param most  bytes; what is longer is refused
Failure readInput(const QString &path, qint64 most, QByteArray &bytes);

} // namespace Batch
