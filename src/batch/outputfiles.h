#pragma once

#include "batch/failure.h"

#include <QByteArray>
#include <QSaveFile>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

namespace Batch {

/// One file that is written piece by piece and appears whole or not at all: under a temporary
/// name in its folder until commit(). Its folder is made where it is missing.
class OutputWriter {
public:
    Failure open(const QString &path);
    Failure write(const char *bytes, qint64 count);
    Failure write(const QByteArray &bytes) { return write(bytes.constData(), bytes.size()); }
    /// Everything is on the disk afterwards, still under the temporary name.
    Failure flush();
    /// Puts the file in its place. Without it nothing appears.
    Failure commit();

private:
    std::unique_ptr<QSaveFile> file;
};

struct OutputFile {
    QString path;
    QByteArray bytes;
    /// Writes what follows the bytes, piece by piece; empty: nothing does.
    std::function<Failure(OutputWriter &writer)> rest = {};
};

/// Writes files that belong together, each whole or not at all: all are on the disk under
/// temporary names before the first takes its place. The last one says that the others are
/// there: an older one of its name goes before the first new file comes.
Failure writeTogether(const std::vector<OutputFile> &files);

/// Removes what killed runs left behind of files that were written under temporary names beside
/// them. What a living process still writes is kept. Looks into each folder once.
void removeAbandoned(const QStringList &paths);

} // namespace Batch
